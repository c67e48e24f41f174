#include "tests/qcore/fault_vfs.h"

#include <cstring>
#include <string_view>

namespace qtest {

FaultVfs::Hook FaultVfs::hook;

namespace {

sqlite3_vfs* Real(sqlite3_vfs* vfs) { return static_cast<sqlite3_vfs*>(vfs->pAppData); }

// The real file lies behind this one.
struct File {
  sqlite3_file base;
  FileKind kind;
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

File* Mine(sqlite3_file* file) { return reinterpret_cast<File*>(file); }
sqlite3_file* Real(sqlite3_file* file) { return Mine(file)->real(); }
const sqlite3_io_methods& Methods(sqlite3_file* file) { return *Real(file)->pMethods; }

int Ask(sqlite3_file* file, Operation operation) {
  return FaultVfs::hook ? FaultVfs::hook(operation, Mine(file)->kind) : SQLITE_OK;
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
  const int fault = Ask(file, Operation::kWrite);
  if (fault == SQLITE_OK) return Methods(file).xWrite(Real(file), bytes, count, offset);
  Methods(file).xWrite(Real(file), bytes, count / 2, offset);
  return fault;
}

int Sync(sqlite3_file* file, int flags) {
  const int fault = Ask(file, Operation::kSync);
  return fault == SQLITE_OK ? Methods(file).xSync(Real(file), flags) : fault;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  const int fault = Ask(file, Operation::kTruncate);
  return fault == SQLITE_OK ? Methods(file).xTruncate(Real(file), size) : fault;
}

const sqlite3_io_methods kMethods = {
    2,
    [](sqlite3_file* f) { return Methods(f).xClose(Real(f)); },
    [](sqlite3_file* f, void* b, int n, sqlite3_int64 o) { return Methods(f).xRead(Real(f), b, n, o); },
    Write,
    Truncate,
    Sync,
    [](sqlite3_file* f, sqlite3_int64* size) { return Methods(f).xFileSize(Real(f), size); },
    [](sqlite3_file* f, int lock) { return Methods(f).xLock(Real(f), lock); },
    [](sqlite3_file* f, int lock) { return Methods(f).xUnlock(Real(f), lock); },
    [](sqlite3_file* f, int* out) { return Methods(f).xCheckReservedLock(Real(f), out); },
    [](sqlite3_file* f, int op, void* arg) { return Methods(f).xFileControl(Real(f), op, arg); },
    [](sqlite3_file* f) { return Methods(f).xSectorSize(Real(f)); },
    [](sqlite3_file* f) { return Methods(f).xDeviceCharacteristics(Real(f)); },
    [](sqlite3_file* f, int page, int size, int extend, void volatile** out) {
      return Methods(f).xShmMap(Real(f), page, size, extend, out);
    },
    [](sqlite3_file* f, int offset, int n, int flags) { return Methods(f).xShmLock(Real(f), offset, n, flags); },
    [](sqlite3_file* f) { Methods(f).xShmBarrier(Real(f)); },
    [](sqlite3_file* f, int remove) { return Methods(f).xShmUnmap(Real(f), remove); },
    nullptr,
    nullptr,
};

int OpenFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out) {
  File* mine = Mine(file);
  std::memset(mine, 0, static_cast<std::size_t>(vfs->szOsFile));
  mine->kind = (flags & SQLITE_OPEN_MAIN_DB) != 0 ? FileKind::kStore
               : (flags & SQLITE_OPEN_WAL) != 0   ? FileKind::kLog
                                                  : FileKind::kOther;
  const int code = Real(vfs)->xOpen(Real(vfs), name, mine->real(), flags, out);
  if (code == SQLITE_OK) file->pMethods = &kMethods;
  return code;
}

}  // namespace

FaultVfs::FaultVfs() {
  sqlite3_vfs* real = sqlite3_vfs_find(nullptr);
  vfs_ = *real;
  vfs_.zName = "fault";
  vfs_.pAppData = real;
  vfs_.pNext = nullptr;
  vfs_.szOsFile = static_cast<int>(sizeof(File)) + real->szOsFile;
  vfs_.xOpen = OpenFile;
  vfs_.xDelete = [](sqlite3_vfs* v, const char* n, int d) { return Real(v)->xDelete(Real(v), n, d); };
  vfs_.xAccess = [](sqlite3_vfs* v, const char* n, int f, int* o) { return Real(v)->xAccess(Real(v), n, f, o); };
  vfs_.xFullPathname = [](sqlite3_vfs* v, const char* n, int s, char* o) {
    return Real(v)->xFullPathname(Real(v), n, s, o);
  };
  sqlite3_vfs_register(&vfs_, 1);
}

FaultVfs::~FaultVfs() {
  hook = nullptr;
  sqlite3_vfs_unregister(&vfs_);
  sqlite3_vfs_register(Real(&vfs_), 1);
}

}  // namespace qtest
