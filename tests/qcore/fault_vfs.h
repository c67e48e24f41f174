// SQLite's own file layer with a place for faults: every write and sync of a store can be watched and failed.
#ifndef QUILLON_TESTS_QCORE_FAULT_VFS_H
#define QUILLON_TESTS_QCORE_FAULT_VFS_H

#include <sqlite3.h>

#include <functional>

namespace qtest {

enum class Operation { kWrite, kSync, kTruncate };
enum class FileKind { kStore, kLog, kOther };

// While it lives, stores are opened through it. Close them first.
class FaultVfs {
 public:
  // Gives SQLITE_OK to let the operation through, or the code to fail it with. A failed write has written half.
  using Hook = std::function<int(Operation, FileKind)>;

  FaultVfs();
  ~FaultVfs();
  FaultVfs(const FaultVfs&) = delete;
  FaultVfs& operator=(const FaultVfs&) = delete;

  static Hook hook;

 private:
  sqlite3_vfs vfs_;
};

}  // namespace qtest

#endif
