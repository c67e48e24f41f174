#include "qcore/store/openfiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <mutex>
#include <set>

namespace qcore {

namespace {

struct OpenFiles {
  std::mutex mutex;
  std::multiset<std::string> paths;
};

// Never destroyed: a client's static handles close their databases at the end of the process.
OpenFiles& TheFiles() {
  static OpenFiles& files = *new OpenFiles;
  return files;
}

bool IsSameFile(const std::string& path, const struct stat& facts) {
  struct stat present {};
  return stat(path.c_str(), &present) == 0 && present.st_dev == facts.st_dev && present.st_ino == facts.st_ino;
}

}  // namespace

OpenStoreFile::OpenStoreFile(std::string path) : path_(std::move(path)) {
  OpenFiles& files = TheFiles();
  const std::lock_guard lock(files.mutex);
  files.paths.insert(path_);
}

OpenStoreFile::~OpenStoreFile() {
  OpenFiles& files = TheFiles();
  const std::lock_guard lock(files.mutex);
  files.paths.erase(files.paths.find(path_));
}

bool IsOfOpenStore(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) return false;
  OpenFiles& files = TheFiles();
  const std::lock_guard lock(files.mutex);
  return std::ranges::any_of(files.paths, [&facts](const std::string& open) {
    return IsSameFile(open, facts) || IsSameFile(open + "-wal", facts) || IsSameFile(open + "-shm", facts);
  });
}

}  // namespace qcore
