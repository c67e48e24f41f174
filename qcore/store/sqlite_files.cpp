// Store files as wholes: identity, creation, deletion, compaction, size and check.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "qcore/settings/platform.h"
#include "qcore/store/sqlite_sql.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::size_t kFileHeaderSize = 100;
constexpr char kMagic[] = "SQLite format 3";  // with its terminator
constexpr char kFreeUnowned[] =
    "DELETE FROM chunk WHERE id>>16 IN (SELECT value FROM object WHERE slate=0);DELETE FROM object WHERE slate=0";
constexpr std::size_t kUserVersionAt = 60;
constexpr std::size_t kApplicationIdAt = 68;

std::uint32_t LoadBig(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 | at[3];
}

ENGSTATUS StatusOfErrno(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return ENG_ERR_DB_NOT_FOUND;
    case EACCES:
    case EPERM:
      return ENG_ERR_DB_NO_ACCESS;
    case EROFS:
      return ENG_ERR_DB_READ_ONLY;
    case ENOSPC:
    case EDQUOT:
      return ENG_ERR_DB_FULL;
    case EEXIST:
      return ENG_ERR_DB_EXISTS;
    default:
      return ENG_ERR_DB_IO;
  }
}

// Reads the file's first bytes through SQLite's own file layer, which keeps the process's locks when it closes.
ENGSTATUS ReadFileHeader(const std::string& file, std::uint8_t* header) {
  sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
  const char* name = sqlite3_create_filename(file.c_str(), "", "", 0, nullptr);
  if (!vfs || !name) return ENG_ERR_MEMORY;
  std::vector<std::uint64_t> space((static_cast<std::size_t>(vfs->szOsFile) + 7) / 8);
  auto* handle = reinterpret_cast<sqlite3_file*>(space.data());
  int code = vfs->xOpen(vfs, name, handle, SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READONLY, nullptr);
  if (code == SQLITE_OK) code = handle->pMethods->xRead(handle, header, kFileHeaderSize, 0);
  if (handle->pMethods) handle->pMethods->xClose(handle);
  sqlite3_free_filename(const_cast<char*>(name));
  if (code == SQLITE_IOERR_SHORT_READ) return ENG_ERR_DB_NOT_STORE;
  return (code & 0xFF) == SQLITE_CANTOPEN ? ENGSTATUS{ENG_ERR_DB_NO_ACCESS} : StatusOfSqlite(code);
}

void RemoveCompanions(const std::string& file) {
  for (const char* ending : {"-wal", "-shm", "-journal"}) unlink((file + ending).c_str());
}

ENGSTATUS SyncDirectoryOf(const std::string& file) {
  const std::string directory = std::filesystem::path(file).parent_path().string();
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return StatusOfErrno(errno);
  const int result = fsync(descriptor);
  const int error = errno;
  close(descriptor);
  return result == 0 ? ENGSTATUS{ENG_OK} : StatusOfErrno(error);
}

// While `connection` lives nobody else has the file open. The log is then part of the file.
ENGSTATUS HoldAlone(const std::string& file, Connection* connection) {
  ENGSTATUS status = OpenConnection(file, SQLITE_OPEN_READWRITE, connection);
  if (status != ENG_OK) return status;
  sqlite3_db_config(connection->get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  status = Execute(connection->get(),
                   "PRAGMA cell_size_check=ON;PRAGMA trusted_schema=OFF;PRAGMA synchronous=FULL;"
                   "PRAGMA locking_mode=EXCLUSIVE;PRAGMA journal_mode=DELETE;BEGIN EXCLUSIVE");
  return status;
}

std::string RandomName() {
  std::array<std::uint8_t, 8> bytes;
  CurrentPlatform().Random(bytes);
  return std::to_string(LoadLittle<std::uint64_t>(bytes.data()));
}

ENGSTATUS FileSize(sqlite3* connection, std::uint64_t* size) {
  std::int64_t pages = 0;
  std::int64_t page_size = 0;
  ENGSTATUS status = QueryNumber(connection, "PRAGMA page_count", &pages);
  if (status == ENG_OK) status = QueryNumber(connection, "PRAGMA page_size", &page_size);
  *size = static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page_size);
  return status;
}

}  // namespace

ENGSTATUS SqliteStore::CheckIdentity(const std::string& file) {
  struct stat facts;
  if (stat(file.c_str(), &facts) != 0) return StatusOfErrno(errno);
  if (S_ISDIR(facts.st_mode)) return ENG_ERR_DB_IS_DIRECTORY;
  if (!S_ISREG(facts.st_mode)) return ENG_ERR_DB_NOT_STORE;
  std::uint8_t header[kFileHeaderSize];
  const ENGSTATUS status = ReadFileHeader(file, header);
  if (status != ENG_OK) return status;
  if (std::memcmp(header, kMagic, sizeof kMagic) != 0) return ENG_ERR_DB_NOT_STORE;
  if (LoadBig(header + kApplicationIdAt) != kApplicationId) return ENG_ERR_DB_NOT_STORE;
  const std::uint32_t version = LoadBig(header + kUserVersionAt);
  if (version > kSchemaVersion) return ENG_ERR_DB_NEWER;
  return version >= kOldestVersion ? ENG_OK : ENG_ERR_DB_DAMAGED;
}

ENGSTATUS SqliteStore::Fill(const std::string& file, const Creation& creation) {
  Connection connection;
  ENGSTATUS status =
      OpenConnection(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE, &connection);
  if (status != ENG_OK) return status;
  const std::string begin =
      "PRAGMA page_size=4096;PRAGMA synchronous=FULL;PRAGMA journal_mode=DELETE;BEGIN;"
      "PRAGMA application_id=" +
      std::to_string(kApplicationId) + ";" + kSchema + kSchema2 + kSchema3;
  status = Execute(connection.get(), begin.c_str());
  if (status != ENG_OK) return status;
  SqliteStore store(std::move(connection));
  std::vector<std::uint8_t> kind;
  WireWriter(&kind).Put(creation.database_class);
  std::vector<std::uint8_t> file_id;
  WireWriter(&file_id).PutTime(creation.file_id);
  std::vector<std::uint8_t> replica;
  WireWriter writer(&replica);
  writer.PutTime(creation.replica_id);
  writer.Put(std::uint16_t{0});   // flags
  writer.Put(std::uint16_t{90});  // cutoff interval in days
  writer.PutTime({0, 0});
  status = store.SetSetting(Setting::kClass, kind);
  if (status == ENG_OK) status = store.SetSetting(Setting::kFileId, file_id);
  if (status == ENG_OK) status = store.SetSetting(Setting::kReplica, replica);
  if (status == ENG_OK) status = Execute(store.connection_.get(), "COMMIT;PRAGMA journal_mode=WAL");
  return status;
}

ENGSTATUS SqliteStore::Replace(const std::string& fresh, const std::string& file) {
  Connection alone;
  const ENGSTATUS identity = CheckIdentity(file);
  if (identity == ENG_ERR_DB_IS_DIRECTORY) return identity;
  if (identity == ENG_OK || identity == ENG_ERR_DB_NEWER) {
    const ENGSTATUS held = HoldAlone(file, &alone);
    // What cannot be read any more can still be replaced.
    if (held != ENG_OK && held != ENG_ERR_DB_DAMAGED && held != ENG_ERR_DB_NOT_STORE) return held;
  }
  // A log of the old file must never meet the new one.
  RemoveCompanions(file);
  return rename(fresh.c_str(), file.c_str()) == 0 ? ENGSTATUS{ENG_OK} : StatusOfErrno(errno);
}

ENGSTATUS SqliteStore::Create(const std::string& file, const Creation& creation, bool overwrite) {
  struct stat facts;
  const std::string directory = std::filesystem::path(file).parent_path().string();
  if (stat(directory.c_str(), &facts) != 0) return StatusOfErrno(errno);
  const bool exists = stat(file.c_str(), &facts) == 0;
  if (exists && S_ISDIR(facts.st_mode)) return ENG_ERR_DB_IS_DIRECTORY;
  if (exists && !overwrite) return ENG_ERR_DB_EXISTS;
  if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return StatusOfErrno(errno);
  const std::string fresh = file + ".new-" + RandomName();
  ENGSTATUS status = Fill(fresh, creation);
  if (status == ENG_OK && exists) {
    status = Replace(fresh, file);
  } else if (status == ENG_OK) {
    RemoveCompanions(file);
    if (link(fresh.c_str(), file.c_str()) != 0) status = StatusOfErrno(errno);
  }
  unlink(fresh.c_str());
  RemoveCompanions(fresh);
  return status == ENG_OK ? SyncDirectoryOf(file) : status;
}

ENGSTATUS SqliteStore::Delete(const std::string& file) {
  const ENGSTATUS identity = CheckIdentity(file);
  if (identity != ENG_OK && identity != ENG_ERR_DB_NEWER && identity != ENG_ERR_DB_DAMAGED) return identity;
  Connection alone;
  const ENGSTATUS held = HoldAlone(file, &alone);
  if (held != ENG_OK && held != ENG_ERR_DB_DAMAGED && held != ENG_ERR_DB_NOT_STORE) return held;
  if (unlink(file.c_str()) != 0) return StatusOfErrno(errno);
  RemoveCompanions(file);
  return SyncDirectoryOf(file);
}

ENGSTATUS SqliteStore::Compact(const std::string& file, std::array<std::uint64_t, 2>* sizes) {
  const ENGSTATUS identity = CheckIdentity(file);
  if (identity != ENG_OK) return identity;
  Connection alone;
  ENGSTATUS status = HoldAlone(file, &alone);
  // Nobody has it open, so that an object without an owner is left from a process that died.
  if (status == ENG_OK) status = Execute(alone.get(), kFreeUnowned);
  if (status == ENG_OK) status = FileSize(alone.get(), &(*sizes)[0]);
  if (status == ENG_OK) status = Execute(alone.get(), "COMMIT;VACUUM");
  if (status == ENG_OK) status = FileSize(alone.get(), &(*sizes)[1]);
  alone.reset();
  if (status != ENG_OK) return status;
  // Back to the log form; a crash before this is made good by the next open.
  std::unique_ptr<SqliteStore> store;
  return Open(file, &store);
}

ENGSTATUS SqliteStore::GetSpace(std::uint64_t* used, std::uint64_t* unused) {
  std::uint64_t size = 0;
  std::int64_t free_pages = 0;
  std::int64_t page_size = 0;
  ENGSTATUS status = FileSize(connection_.get(), &size);
  if (status == ENG_OK) status = QueryNumber(connection_.get(), "PRAGMA freelist_count", &free_pages);
  if (status == ENG_OK) status = QueryNumber(connection_.get(), "PRAGMA page_size", &page_size);
  if (status != ENG_OK) return status;
  *unused = static_cast<std::uint64_t>(free_pages) * static_cast<std::uint64_t>(page_size);
  *used = size - *unused;
  return ENG_OK;
}

ENGSTATUS SqliteStore::Check(std::string* report) {
  const ENGSTATUS words = UseTokenizer();  // later releases of SQLite look into the full-text index too
  if (words != ENG_OK) return words;
  Statement pages;
  const int prepared = pages.Prepare(connection_.get(), "PRAGMA integrity_check(1)");
  Use use(pages.get(), prepared);
  if (!use.Row()) {
    *report = sqlite3_errmsg(connection_.get());
    return Result(use.code());
  }
  const Bytes text = use.Blob(0);
  report->assign(text.begin(), text.end());
  if (*report != "ok") return ENG_ERR_DB_DAMAGED;
  report->clear();
  const ENGSTATUS feed = CheckFeed(report);
  return feed == ENG_OK ? CheckObjects(report) : feed;
}

ENGSTATUS SqliteStore::CheckObjects(std::string* report) {
  std::vector<std::uint32_t> objects;
  {
    Statement statement;
    const int prepared = statement.Prepare(connection_.get(), "SELECT id FROM object");
    Use use(statement.get(), prepared);
    while (use.Row()) objects.push_back(static_cast<std::uint32_t>(use.Number(0)));
    if (use.code() != SQLITE_OK) return Result(use.code());
  }
  for (std::uint32_t object : objects) {
    ObjectRow row;
    ENGSTATUS status = ReadObjectRow(object, &row);
    std::vector<std::uint8_t> chunk;
    for (std::size_t at = 0; status == ENG_OK && at < row.info.size; at += kChunkSize) {
      status = ReadChunk(row.value, static_cast<std::uint32_t>(at / kChunkSize), &chunk);
      if (status == ENG_OK && chunk.size() != std::min<std::size_t>(kChunkSize, row.info.size - at)) {
        status = ENG_ERR_DB_DAMAGED;
      }
    }
    if (status == ENG_OK) continue;
    *report = "object " + std::to_string(object);
    return status;
  }
  return ENG_OK;
}

ENGSTATUS SqliteStore::CheckOwners(const std::set<ValueId>& known, std::string* report) {
  Statement objects;
  const int objects_prepared = objects.Prepare(
      connection_.get(),
      "SELECT id FROM object WHERE slate<>0 AND slate NOT IN (SELECT id FROM slate WHERE packed IS NOT NULL)");
  Use object(objects.get(), objects_prepared);
  if (object.Row()) {
    *report = "object " + std::to_string(object.Number(0)) + " has no slate";
    return ENG_ERR_DB_DAMAGED;
  }
  if (object.code() != SQLITE_OK) return Result(object.code());
  std::vector<ValueId> values;
  const ENGSTATUS status = FindUnowned(known, &values);
  if (status != ENG_OK || values.empty()) return status;
  *report = "value " + std::to_string(values.front()) + " has no owner";
  return ENG_ERR_DB_DAMAGED;
}

ENGSTATUS SqliteStore::FindUnowned(const std::set<ValueId>& known, std::vector<ValueId>* values) {
  Statement statement;
  const int prepared = statement.Prepare(
      connection_.get(), "SELECT DISTINCT id>>16 FROM chunk WHERE id>>16 NOT IN (SELECT value FROM object)");
  Use value(statement.get(), prepared);
  while (value.Row()) {
    if (!known.contains(value.Number(0))) values->push_back(value.Number(0));
  }
  return Result(value.code());
}

ENGSTATUS SqliteStore::FreeUnowned(const std::set<ValueId>& known) {
  std::vector<ValueId> values;
  ENGSTATUS status = FindUnowned(known, &values);
  for (std::size_t i = 0; status == ENG_OK && i < values.size(); ++i) status = FreeValue(values[i]);
  return status;
}

}  // namespace qcore
