// The entry point: opens and replaces files around the two conversions.
#include "converters/textconv/textconv.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
  // Among others' files, for the owner alone.
  explicit NewFile(std::string pattern) : Name(std::move(pattern)) { Take(mkstemp(Name.data())); }
  // Beside the file that it is to replace, with the mode that the process gives its files.
  explicit NewFile(const char* target) {
    constexpr int kMostTries = 100;
    for (int i = 0; i < kMostTries && !Made; ++i) {
      Name = std::string(target) + "." + std::to_string(getpid()) + "-" + std::to_string(i);
      Take(open(Name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
      if (!Made && errno != EEXIST) return;
    }
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
  void Take(int descriptor) {
    if (descriptor < 0) return;
    Made = true;
    Stream.reset(fdopen(descriptor, "wb"));
    if (!Stream) close(descriptor);
  }

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

// Devices, pipes and links are written through: what they stand for is not to be replaced by a plain file.
bool IsReplaceable(const char* file) {
  struct stat state;
  return lstat(file, &state) != 0 || S_ISREG(state.st_mode);
}

ENGSTATUS ExportThrough(std::FILE* composite, const char* file) {
  File text(std::fopen(file, "wb"));
  if (!text) return ENG_ERR_FILE_WRITE;
  if (ENGSTATUS status = WriteText(composite, text.get())) return status;
  return std::fclose(text.release()) == 0 ? ENG_OK : ENG_ERR_FILE_WRITE;
}

ENGSTATUS Export(const ENGCONVERTERBUFFER* buffer, const char* file) {
  File composite(std::fopen(buffer->FileName, "rb"));
  if (!composite) return ENG_ERR_FILE_OPEN;
  if (!IsReplaceable(file)) return ExportThrough(composite.get(), file);
  NewFile text(file);
  if (!text.Get()) return ENG_ERR_FILE_WRITE;
  ENGSTATUS status = WriteText(composite.get(), text.Get());
  if (status != ENG_OK) return status;
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
