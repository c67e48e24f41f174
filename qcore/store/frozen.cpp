#include "qcore/store/frozen.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace qcore {

namespace {

bool HasLog(const std::string& file) {
  struct stat facts;
  return stat((file + "-wal").c_str(), &facts) == 0 || errno != ENOENT;
}

bool IsSame(const struct timespec& one, const struct timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

}  // namespace

std::optional<FrozenFile> FrozenFile::Find(const std::string& file) {
  const std::string directory = std::filesystem::path(file).parent_path().string();
  if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return std::nullopt;
  struct stat facts;
  if (stat(file.c_str(), &facts) != 0 || HasLog(file)) return std::nullopt;
  return FrozenFile(file, facts);
}

std::string FrozenFile::Uri() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : file_) {
    if (c != '%' && c != '?' && c != '#') {
      uri += c;
      continue;
    }
    uri += '%';
    uri += kDigits[c >> 4];
    uri += kDigits[c & 15];
  }
  return uri + "?immutable=1";
}

bool FrozenFile::IsUnchanged() const {
  struct stat now;
  return !HasLog(file_) && stat(file_.c_str(), &now) == 0 && now.st_dev == facts_.st_dev &&
         now.st_ino == facts_.st_ino && now.st_size == facts_.st_size && IsSame(now.st_mtim, facts_.st_mtim) &&
         IsSame(now.st_ctim, facts_.st_ctim);
}

}  // namespace qcore
