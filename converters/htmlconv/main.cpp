// The entry point of the HTML converter.
#include <filesystem>

#include "converters/html/reader.h"
#include "converters/html/writer.h"
#include "converters/parts/files.h"
#include "engine/status.h"

namespace {

class HtmlConversion : public conv::Conversion {
 public:
  ENGSTATUS Import(std::FILE* source, std::FILE* composite, std::uint32_t font, std::uint32_t) override {
    std::string html;
    if (ENGSTATUS status = conv::ReadAll(source, &html)) return status;
    conv::RecordOutput output(composite);
    return conv::ReadHtml(html, output, font, Losses);
  }
  ENGSTATUS Export(std::FILE* composite, std::FILE* target, const std::string& name, std::uint32_t) override {
    conv::Composite records;
    if (ENGSTATUS status = records.Open(composite)) return status;
    conv::HtmlWriter writer(target, Losses);
    writer.BeginPage(std::filesystem::path(name).stem().string());
    if (ENGSTATUS status = conv::Walker(records.Bytes(), writer, Losses).Run()) return status;
    return writer.Finish() ? ENG_OK : ENG_ERR_FILE_WRITE;
  }
  std::string Report() const override { return Losses.Text(); }

 private:
  conv::Report Losses;
};

}  // namespace

extern "C" ENG_API ENGSTATUS ConverterMain(ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t flags,
                                           const char* file, std::uint32_t options) {
  HtmlConversion conversion;
  return conv::RunConversion(conversion, buffer, mode, flags, file, options);
}
