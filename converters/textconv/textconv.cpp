// The entry point: opens and replaces files around the two conversions.
#include "converters/textconv/textconv.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/converter.h"
#include "engine/status.h"

namespace textconv {

namespace {

// A new file that is removed again unless it is kept.
class NewFile {
 public:
  explicit NewFile(std::string pattern) : Name(std::move(pattern)) {
    int descriptor = mkstemp(Name.data());
    if (descriptor < 0) return;
    Stream.reset(fdopen(descriptor, "wb"));
    if (!Stream) close(descriptor);
    Made = true;
  }
  ~NewFile() {
    if (Made) std::remove(Name.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  std::FILE* Get() const { return Stream.get(); }
  const std::string& GetName() const { return Name; }
  bool Finish() { return std::fclose(Stream.release()) == 0; }
  void Keep() { Made = false; }

 private:
  std::string Name;
  File Stream;
  bool Made = false;
};

std::string TemporaryPattern() {
  const char* directory = std::getenv("TMPDIR");
  return std::string(directory && *directory ? directory : "/tmp") + "/quillon-XXXXXX";
}

ENGSTATUS Import(ENGCONVERTERBUFFER* buffer, const char* file, std::uint32_t options) {
  File text(std::fopen(file, "rb"));
  if (!text) return ENG_ERR_FILE_OPEN;
  NewFile composite(TemporaryPattern());
  if (!composite.Get() || composite.GetName().size() >= sizeof buffer->FileName) return ENG_ERR_FILE_WRITE;
  ENGSTATUS status = WriteRecords(text.get(), composite.Get(), buffer->FontID, options);
  if (status != ENG_OK) return status;
  if (!composite.Finish()) return ENG_ERR_FILE_WRITE;
  std::memcpy(buffer->FileName, composite.GetName().c_str(), composite.GetName().size() + 1);
  composite.Keep();
  return ENG_OK;
}

// What a file that fopen makes would have.
void UseDefaultMode(std::FILE* file) {
  mode_t mask = umask(0);
  umask(mask);
  fchmod(fileno(file), 0666 & ~mask);
}

ENGSTATUS Export(const ENGCONVERTERBUFFER* buffer, const char* file) {
  File composite(std::fopen(buffer->FileName, "rb"));
  if (!composite) return ENG_ERR_FILE_OPEN;
  NewFile text(std::string(file) + ".XXXXXX");
  if (!text.Get()) return ENG_ERR_FILE_WRITE;
  ENGSTATUS status = WriteText(composite.get(), text.Get());
  if (status != ENG_OK) return status;
  UseDefaultMode(text.Get());
  if (!text.Finish() || std::rename(text.GetName().c_str(), file) != 0) return ENG_ERR_FILE_WRITE;
  text.Keep();
  return ENG_OK;
}

}  // namespace

}  // namespace textconv

extern "C" ENG_API ENGSTATUS ConverterMain(ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t,
                                           const char* file, std::uint32_t options) {
  if (buffer == nullptr || file == nullptr) return ENG_ERR_ARGUMENT;
  if (std::memchr(buffer->FileName, 0, sizeof buffer->FileName) == nullptr) return ENG_ERR_ARGUMENT;
  try {
    if (mode == ENG_CONVERT_IMPORT) return textconv::Import(buffer, file, options);
    if (mode == ENG_CONVERT_EXPORT) return textconv::Export(buffer, file);
    return ENG_ERR_ARGUMENT;
  } catch (...) {
    return ENG_ERR_MEMORY;
  }
}
