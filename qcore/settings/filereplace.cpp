#include "qcore/settings/filereplace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace qcore {

namespace {

constexpr off_t kLargestFile = 16 << 20;

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }

 private:
  int fd_;
};

std::optional<std::string> ReadAll(int fd) {
  struct stat info {};
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size > kLargestFile) return std::nullopt;
  std::string bytes(static_cast<std::size_t>(info.st_size), '\0');
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = pread(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  bytes.resize(done);
  return bytes;
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = write(fd, bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string Resolved(const std::string& path) {
  char* real = realpath(path.c_str(), nullptr);
  if (!real) return path;
  std::string result(real);
  std::free(real);
  return result;
}

// The open file, with its lock held. The lock may have been waited for while another process renamed a new file into
// place; then the lock is on a file that has no name any more, and the new one is tried.
Descriptor OpenLocked(const std::string& path) {
  for (;;) {
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) return file;
    while (flock(file.get(), LOCK_EX) != 0) {
      if (errno != EINTR) return Descriptor(-1);
    }
    struct stat opened {};
    struct stat named {};
    if (fstat(file.get(), &opened) != 0 || stat(path.c_str(), &named) != 0) return Descriptor(-1);
    if (opened.st_ino == named.st_ino && opened.st_dev == named.st_dev) return file;
  }
}

// Only root may give a file to its old owner; others keep what they write.
bool TakeOver(int fd, const struct stat& old) {
  const bool owned = fchown(fd, old.st_uid, old.st_gid) == 0 || errno == EPERM;
  return owned && fchmod(fd, old.st_mode & 07777) == 0;
}

bool ReplaceBytes(const std::string& path, std::string_view bytes, const struct stat& old) {
  const std::string folder = FolderOf(path);
  std::string aside = folder + "/.quillon-XXXXXX";
  const Descriptor file(mkostemp(aside.data(), O_CLOEXEC));
  if (!file) return false;
  const bool written = TakeOver(file.get(), old) && WriteAll(file.get(), bytes) && fsync(file.get()) == 0;
  if (!written || rename(aside.c_str(), path.c_str()) != 0) {
    unlink(aside.c_str());
    return false;
  }
  const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Some file systems can't sync a directory; the new file is in place then all the same.
  return directory && (fsync(directory.get()) == 0 || errno == EINVAL);
}

}  // namespace

std::optional<std::string> ReadSmallFile(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return file ? ReadAll(file.get()) : std::nullopt;
}

ReplaceResult ChangeFile(const std::string& path, const std::function<bool(std::string&)>& change) {
  const std::string target = Resolved(path);
  const Descriptor file = OpenLocked(target);
  if (!file) return ReplaceResult::kFailed;
  std::optional<std::string> bytes = ReadAll(file.get());
  struct stat info {};
  if (!bytes || fstat(file.get(), &info) != 0) return ReplaceResult::kFailed;
  if (!change(*bytes)) return ReplaceResult::kRefused;
  return ReplaceBytes(target, *bytes, info) ? ReplaceResult::kDone : ReplaceResult::kFailed;
}

}  // namespace qcore
