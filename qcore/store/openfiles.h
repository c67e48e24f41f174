// Which files of stores this process has open.
#ifndef QUILLON_QCORE_STORE_OPENFILES_H
#define QUILLON_QCORE_STORE_OPENFILES_H

#include <string>

namespace qcore {

// Stands for one store's file for as long as the store is open.
class OpenStoreFile {
 public:
  explicit OpenStoreFile(std::string path);
  ~OpenStoreFile();
  OpenStoreFile(const OpenStoreFile&) = delete;
  OpenStoreFile& operator=(const OpenStoreFile&) = delete;

 private:
  std::string path_;
};

// Whether the path, by whatever name or link, leads to such a file or to its log. Nothing else may open one, since
// closing any descriptor of it drops the process's locks, nor put another file in its place. Safe from any thread.
bool IsOfOpenStore(const std::string& path);

}  // namespace qcore

#endif
