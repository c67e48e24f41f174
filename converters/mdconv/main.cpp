// The entry point of the Markdown converter.
#include "converters/markdown/markdown.h"
#include "converters/parts/files.h"
#include "engine/status.h"

namespace {

class MarkdownConversion : public conv::Conversion {
 public:
  ENGSTATUS Import(std::FILE* source, std::FILE* composite, std::uint32_t font, std::uint32_t options) override {
    std::string text;
    if (ENGSTATUS status = conv::ReadAll(source, &text)) return status;
    conv::RecordOutput output(composite);
    return conv::ReadMarkdown(text, output, font, options, Losses);
  }
  ENGSTATUS Export(std::FILE* composite, std::FILE* target, const std::string&, std::uint32_t) override {
    conv::Composite records;
    if (ENGSTATUS status = records.Open(composite)) return status;
    std::string text;
    if (ENGSTATUS status = conv::WriteMarkdown(records.Bytes(), &text, Losses)) return status;
    return std::fwrite(text.data(), 1, text.size(), target) == text.size() ? ENG_OK : ENG_ERR_FILE_WRITE;
  }
  std::string Report() const override { return Losses.Text(); }

 private:
  conv::Report Losses;
};

}  // namespace

extern "C" ENG_API ENGSTATUS ConverterMain(ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t flags,
                                           const char* file, std::uint32_t options) {
  MarkdownConversion conversion;
  return conv::RunConversion(conversion, buffer, mode, flags, file, options);
}
