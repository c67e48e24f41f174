// The entry point.
#include "converters/parts/files.h"
#include "converters/textconv/textconv.h"

namespace {

class TextConversion : public conv::Conversion {
 public:
  ENGSTATUS Import(std::FILE* source, std::FILE* composite, std::uint32_t font, std::uint32_t options) override {
    return textconv::WriteRecords(source, composite, font, options, Losses);
  }
  ENGSTATUS Export(std::FILE* composite, std::FILE* target, const std::string&, std::uint32_t) override {
    conv::Composite records;
    if (ENGSTATUS status = records.Open(composite)) return status;
    return textconv::WriteText(records.Bytes(), target, Losses);
  }
  std::string Report() const override { return Losses.Text(); }

 private:
  conv::Report Losses;
};

}  // namespace

extern "C" ENG_API ENGSTATUS ConverterMain(ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t flags,
                                           const char* file, std::uint32_t options) {
  TextConversion conversion;
  return conv::RunConversion(conversion, buffer, mode, flags, file, options);
}
