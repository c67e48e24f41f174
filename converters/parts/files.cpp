#include "converters/parts/files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "engine/status.h"

namespace conv {

namespace {

// A new file that is removed again unless it is kept.
class NewFile {
 public:
  // Among others' files, for the owner alone.
  explicit NewFile(std::string pattern) : Name(std::move(pattern)) { Take(mkstemp(Name.data())); }
  // Beside the file that it is to replace, with that one's mode, or the one that the process gives its files.
  explicit NewFile(const char* target) {
    struct stat old;
    const bool replaces = stat(target, &old) == 0;
    const mode_t mode = replaces ? old.st_mode & 0777 : 0666;
    Folder.assign(target, std::string_view(target).rfind('/') + 1);
    // Where it can be it has no name until it is complete, so that nothing is left of it when the process is ended.
    Take(open(Folder.empty() ? "." : Folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
    if (Stream && access(OpenPath().c_str(), F_OK) != 0) Stream.reset();
    Made = false;
    if (!Stream) {
      MakeNamed([&](const char* name) {
        Take(open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        return Stream != nullptr;
      });
    }
    // The process may take bits away from a new file's mode.
    if (Stream && replaces && fchmod(fileno(Stream.get()), mode) != 0) Stream.reset();
  }
  ~NewFile() {
    if (Made) std::remove(Name.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  std::FILE* Get() const { return Stream.get(); }
  const std::string& GetName() const { return Name; }
  // Complete, and with a name.
  bool Finish() {
    bool complete = std::fflush(Stream.get()) == 0;
    if (complete && !Made) {
      const std::string open = OpenPath();
      complete = MakeNamed(
          [&](const char* name) { return linkat(AT_FDCWD, open.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0; });
      Made = complete;
    }
    return std::fclose(Stream.release()) == 0 && complete;
  }
  void Keep() { Made = false; }

 private:
  // Tries names that are not in use. They are short: the target's own may be as long as names can be.
  template <typename Make>
  bool MakeNamed(Make make) {
    constexpr int kMostTries = 100;
    for (int i = 0; i < kMostTries; ++i) {
      Name = Folder + ".quillon-" + std::to_string(getpid()) + "-" + std::to_string(i);
      if (make(Name.c_str())) return true;
      if (errno != EEXIST) return false;
    }
    return false;
  }
  std::string OpenPath() const { return "/proc/self/fd/" + std::to_string(fileno(Stream.get())); }
  void Take(int descriptor) {
    if (descriptor < 0) return;
    Made = true;
    Stream.reset(fdopen(descriptor, "wb"));
    if (!Stream) close(descriptor);
  }

  std::string Folder;
  std::string Name;
  File Stream;
  bool Made = false;  // under that name
};

std::string TemporaryPattern() {
  const char* directory = std::getenv("TMPDIR");
  return std::string(directory && *directory ? directory : "/tmp") + "/quillon-XXXXXX";
}

std::string ReportName(const std::string& composite) { return composite + ENG_CONVERTER_REPORT_SUFFIX; }

// Beside the composite file, whose name is nobody else's; for the owner alone.
ENGSTATUS WriteReport(const Conversion& conversion, const std::string& composite) {
  const std::string text = conversion.Report();
  if (text.empty()) return ENG_OK;
  const std::string name = ReportName(composite);
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return ENG_ERR_FILE_WRITE;
  const bool complete = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const bool closed = close(descriptor) == 0;
  if (complete && closed) return ENG_OK;
  std::remove(name.c_str());
  return ENG_ERR_FILE_WRITE;
}

ENGSTATUS Import(Conversion& conversion, ENGCONVERTERBUFFER* buffer, bool report, const char* file,
                 std::uint32_t options) {
  File source(std::fopen(file, "rb"));
  if (!source) return ENG_ERR_FILE_OPEN;
  NewFile composite(TemporaryPattern());
  if (!composite.Get() || composite.GetName().size() >= sizeof buffer->FileName) return ENG_ERR_FILE_WRITE;
  ENGSTATUS status = conversion.Import(source.get(), composite.Get(), buffer->FontID, options);
  if (status != ENG_OK) return status;
  if (!composite.Finish()) return ENG_ERR_FILE_WRITE;
  if (report) status = WriteReport(conversion, composite.GetName());
  if (status != ENG_OK) return status;
  std::memcpy(buffer->FileName, composite.GetName().c_str(), composite.GetName().size() + 1);
  composite.Keep();
  return ENG_OK;
}

// Devices and pipes are written through: they are not to be replaced by a plain file.
bool IsReplaceable(const char* file) {
  struct stat state;
  if (stat(file, &state) == 0) return S_ISREG(state.st_mode);
  return lstat(file, &state) != 0;  // a link to nothing makes what it leads to
}

// What a link leads to is replaced, the link stays.
std::string Resolved(const char* file) {
  const std::unique_ptr<char, void (*)(void*)> path(realpath(file, nullptr), std::free);
  return path ? path.get() : file;
}

ENGSTATUS ExportThrough(Conversion& conversion, std::FILE* composite, const char* file, std::uint32_t options) {
  File target(std::fopen(file, "wb"));
  if (!target) return ENG_ERR_FILE_WRITE;
  if (ENGSTATUS status = conversion.Export(composite, target.get(), file, options)) return status;
  return std::fclose(target.release()) == 0 ? ENG_OK : ENG_ERR_FILE_WRITE;
}

ENGSTATUS ExportInPlace(Conversion& conversion, std::FILE* composite, const char* file, std::uint32_t options) {
  const std::string place = Resolved(file);
  if (access(place.c_str(), F_OK) == 0 && access(place.c_str(), W_OK) != 0) return ENG_ERR_FILE_WRITE;
  NewFile target(place.c_str());
  if (!target.Get()) return ENG_ERR_FILE_WRITE;
  if (ENGSTATUS status = conversion.Export(composite, target.Get(), file, options)) return status;
  if (!target.Finish() || std::rename(target.GetName().c_str(), place.c_str()) != 0) return ENG_ERR_FILE_WRITE;
  target.Keep();
  return ENG_OK;
}

ENGSTATUS Export(Conversion& conversion, const ENGCONVERTERBUFFER* buffer, bool report, const char* file,
                 std::uint32_t options) {
  File composite(std::fopen(buffer->FileName, "rb"));
  if (!composite) return ENG_ERR_FILE_OPEN;
  const ENGSTATUS status = IsReplaceable(file) ? ExportInPlace(conversion, composite.get(), file, options)
                                               : ExportThrough(conversion, composite.get(), file, options);
  if (status != ENG_OK || !report) return status;
  return WriteReport(conversion, buffer->FileName);
}

}  // namespace

ENGSTATUS ReadAll(std::FILE* file, std::string* bytes) {
  char block[1 << 16];
  std::size_t count = 0;
  if (std::fseek(file, 0, SEEK_END) == 0) {
    const long size = std::ftell(file);
    if (size > 0) bytes->reserve(static_cast<std::size_t>(size));
    std::rewind(file);
  }
  while ((count = std::fread(block, 1, sizeof block, file)) > 0) bytes->append(block, count);
  return std::ferror(file) ? ENG_ERR_FILE_READ : ENG_OK;
}

ENGSTATUS Composite::Open(std::FILE* file) {
  struct stat state;
  if (fstat(fileno(file), &state) == 0 && S_ISREG(state.st_mode) && state.st_size > 0) {
    Size = static_cast<std::size_t>(state.st_size);
    void* mapped = mmap(nullptr, Size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fileno(file), 0);
    if (mapped != MAP_FAILED) {
      Mapped = mapped;
      return ENG_OK;
    }
  }
  const ENGSTATUS status = ReadAll(file, &Read);
  Size = Read.size();
  return status;
}

Composite::~Composite() {
  if (Mapped) munmap(Mapped, Size);
}

ENGSTATUS RunConversion(Conversion& conversion, ENGCONVERTERBUFFER* buffer, std::uint16_t mode, std::uint32_t flags,
                        const char* file, std::uint32_t options) {
  if (buffer == nullptr || file == nullptr) return ENG_ERR_ARGUMENT;
  if (std::memchr(buffer->FileName, 0, sizeof buffer->FileName) == nullptr) return ENG_ERR_ARGUMENT;
  const bool report = (flags & ENG_CONVERT_WITH_REPORT) != 0;
  try {
    if (mode == ENG_CONVERT_IMPORT) return Import(conversion, buffer, report, file, options);
    if (mode == ENG_CONVERT_EXPORT) return Export(conversion, buffer, report, file, options);
    return ENG_ERR_ARGUMENT;
  } catch (...) {
    return ENG_ERR_MEMORY;
  }
}

}  // namespace conv
