// Opening, transactions, counters and checkpoints.
#include "qcore/store/sqlite_store.h"

#include <algorithm>

#include "qcore/settings/settings.h"
#include "qcore/store/checksum.h"
#include "qcore/store/sqlite_sql.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr long kBusyMilliseconds = 10000;
constexpr int kCheckpointFrames = 1000;
// The place of the write lock among the locks of the shared log index, as SQLite's file format lays it down.
constexpr int kLogWriteLock = 0;

bool IsInLogMode(sqlite3* connection) {
  Statement statement;
  const int prepared = statement.Prepare(connection, "PRAGMA journal_mode");
  Use use(statement.get(), prepared);
  if (!use.Row()) return false;
  const Bytes mode = use.Blob(0);
  return std::string_view(reinterpret_cast<const char*>(mode.data()), mode.size()) == "wal";
}

bool IsFailedSync(int code) { return code == SQLITE_IOERR_FSYNC || code == SQLITE_IOERR_DIR_FSYNC; }

}  // namespace

ENGSTATUS SqliteStore::Result(int code) {
  if (IsFailedSync(code)) sync_failed_ = true;
  return IsSound() ? StatusOfSqlite(code) : ENGSTATUS{ENG_ERR_DB_IN_USE};
}

Use SqliteStore::Start(Sql which) {
  if (!IsSound()) return Use(nullptr, SQLITE_BUSY);
  const auto index = static_cast<std::size_t>(which);
  const int code = statements_[index].Prepare(connection_.get(), kSql[index]);
  return Use(statements_[index].get(), code);
}

ENGSTATUS SqliteStore::Finish(Use& use) {
  while (use.Row()) {
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::Run(Sql which) {
  Use use = Start(which);
  return Finish(use);
}

int SqliteStore::BusyMilliseconds() {
  return static_cast<int>(std::clamp(settings::GetInt("StoreBusyTimeout", kBusyMilliseconds), 0L, 3600000L));
}

ENGSTATUS SqliteStore::Configure() {
  sqlite3* connection = connection_.get();
  sqlite3_busy_timeout(connection, BusyMilliseconds());
  sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  // The cell check must be on before the first page is read.
  ENGSTATUS status = Execute(connection,
                             "PRAGMA cell_size_check=ON;PRAGMA trusted_schema=OFF;PRAGMA mmap_size=0;"
                             "PRAGMA temp_store=MEMORY;PRAGMA cache_size=-16000;PRAGMA wal_autocheckpoint=0;"
                             "PRAGMA journal_size_limit=16777216;PRAGMA synchronous=FULL");
  if (status != ENG_OK) return status;
  if (!ReadOnly()) {
    status = Execute(connection, "PRAGMA journal_mode=WAL");
    if (status != ENG_OK) return status;
  }
  sqlite3_wal_hook(connection, &SqliteStore::OnCommit, this);
  // A trigger or a view would run within our statements, and this engine makes none.
  std::int64_t foreign = 0;
  status = QueryNumber(connection, "SELECT count(*) FROM sqlite_schema WHERE type IN ('trigger','view')", &foreign);
  if (status == ENG_OK && foreign != 0) return ENG_ERR_DB_DAMAGED;
  // A file cut short or a damaged schema shows here at the latest.
  std::int64_t tables = 0;
  if (status == ENG_OK) {
    status = QueryNumber(connection, "SELECT count(*) FROM sqlite_schema WHERE type='table'", &tables);
  }
  if (status == ENG_OK && tables < kTables) status = ENG_ERR_DB_DAMAGED;
  has_log_ = status == ENG_OK && IsInLogMode(connection);
  return status == ENG_ERR_DB_NOT_STORE ? ENG_ERR_DB_DAMAGED : status;
}

ENGSTATUS SqliteStore::Open(const std::string& file, std::unique_ptr<SqliteStore>* store) {
  const ENGSTATUS identity = CheckIdentity(file);
  if (identity != ENG_OK) return identity;
  std::optional<FrozenFile> frozen = FrozenFile::Find(file);
  Connection connection;
  const ENGSTATUS opened = frozen ? OpenConnection(frozen->Uri(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, &connection)
                                  : OpenConnection(file, SQLITE_OPEN_READWRITE, &connection);
  if (opened != ENG_OK) return opened;
  std::unique_ptr<SqliteStore> made(new SqliteStore(std::move(connection)));
  made->frozen_ = std::move(frozen);
  const ENGSTATUS status = made->Configure();
  if (status == ENG_OK) *store = std::move(made);
  // A file that can only be read opens; what is missing is the right to share its log in the directory.
  return status == ENG_ERR_DB_READ_ONLY ? ENGSTATUS{ENG_ERR_DB_NO_ACCESS} : status;
}

ENGSTATUS SqliteStore::Begin() {
  if (sync_failed_) return ENG_ERR_DB_FAILED_SYNC;
  // SQLite would begin a transaction that can only read.
  if (ReadOnly()) return ENG_ERR_DB_READ_ONLY;
  ENGSTATUS status = Run(Sql::kBegin);
  if (status != ENG_OK) return status;
  writing_ = true;
  floors_changed_ = false;
  waiting_.clear();
  marked_.reset();
  status = Upgrade();
  if (status == ENG_OK) status = LoadCounters();
  if (status != ENG_OK) {
    Rollback();
    return status;
  }
  own_.Begin(counters_.feed);
  text_end_.reset();
  return ENG_OK;
}

ENGSTATUS SqliteStore::LoadCounters() {
  {
    Use version = Start(Sql::kDataVersion);
    if (!version.Row()) return Result(version.code());
    const auto now = static_cast<std::int64_t>(version.Number(0));
    if (counters_known_ && now == seen_version_) return ENG_OK;
    seen_version_ = now;
    unread_number_.reset();
  }
  Use use = Start(Sql::kCounters);
  if (!use.Row()) return Result(use.code());
  // Numbers given out by this handle and rolled back are not given out again.
  counters_.slate = std::max(counters_.slate, use.Number(0));
  counters_.feed = std::max(counters_.feed, use.Number(1));
  counters_.here = Unpack(std::max(Pack(counters_.here), use.Number(2)));
  counters_.value = std::max(counters_.value, use.Number(3) >> 16);
  counters_.object = std::max(counters_.object, use.Number(4));
  ENGSTATUS status = ENG_OK;
  if (!use.IsNull(5)) {
    Bytes floors;
    const bool good = Unseal(use.Blob(5), static_cast<std::uint64_t>(Setting::kFloors), &floors);
    status = good ? ReadFloors(floors) : ENGSTATUS{ENG_ERR_DB_DAMAGED};
  }
  counters_.trimmed = 0;
  if (!use.IsNull(6)) {
    Bytes trimmed;
    const bool good = Unseal(use.Blob(6), static_cast<std::uint64_t>(Setting::kTrimmed), &trimmed);
    if (!good) return ENG_ERR_DB_DAMAGED;
    counters_.trimmed = WireReader(trimmed).Take<std::uint64_t>();
  }
  counters_known_ = status == ENG_OK;
  return status;
}

ENGSTATUS SqliteStore::ReadFloors(Bytes floors) {
  WireReader reader(floors);
  counters_.slate = std::max(counters_.slate, reader.Take<std::uint64_t>());
  counters_.feed = std::max(counters_.feed, reader.Take<std::uint64_t>());
  counters_.value = std::max(counters_.value, reader.Take<std::uint64_t>());
  counters_.object = std::max(counters_.object, reader.Take<std::uint64_t>());
  counters_.removed_data = Unpack(reader.Take<std::uint64_t>());
  counters_.removed_design = Unpack(reader.Take<std::uint64_t>());
  return reader.good() ? ENG_OK : ENG_ERR_DB_DAMAGED;
}

ENGSTATUS SqliteStore::WriteFloors() {
  std::vector<std::uint8_t> floors;
  WireWriter writer(&floors);
  for (std::uint64_t value : {counters_.slate, counters_.feed, counters_.value, counters_.object,
                              Pack(counters_.removed_data), Pack(counters_.removed_design)}) {
    writer.Put(value);
  }
  return SetSetting(Setting::kFloors, floors);
}

ENGSTATUS SqliteStore::Commit() {
  ENGSTATUS status = floors_changed_ ? WriteFloors() : ENGSTATUS{ENG_OK};
  if (status == ENG_OK) status = WriteFeed();
  if (status == ENG_OK) status = TrimFeedWhenDue();
  if (status == ENG_OK) status = Run(Sql::kCommit);
  if (status != ENG_OK) {
    Rollback();
    return status;
  }
  writing_ = false;
  own_.End();
  CheckpointWhenDue();
  return ENG_OK;
}

void SqliteStore::Rollback() {
  // A failed rollback leaves no way to go on with what was written: SQLite has then ended the transaction by itself.
  if (InTransaction()) static_cast<void>(Run(Sql::kRollback));
  writing_ = false;
  own_.End();
  waiting_.clear();
  marked_.reset();
  text_end_.reset();
  counters_known_ = false;
  version_ = 0;
  unread_number_.reset();
}

ENGSTATUS SqliteStore::Mark() {
  const ENGSTATUS status = Run(Sql::kMark);
  if (status == ENG_OK) marked_ = waiting_.size();
  return status;
}

ENGSTATUS SqliteStore::ReleaseMark() {
  const ENGSTATUS status = Run(Sql::kReleaseMark);
  if (status == ENG_OK) marked_.reset();
  return status;
}

void SqliteStore::RollbackToMark() {
  if (!InTransaction()) return;
  unread_number_.reset();
  own_.Begin(counters_.feed);
  if (marked_) waiting_.resize(*marked_);
  marked_.reset();
  text_end_.reset();
  if (Run(Sql::kRollbackToMark) != ENG_OK || Run(Sql::kReleaseMark) != ENG_OK) Rollback();
}

bool SqliteStore::ReadOnly() const { return sqlite3_db_readonly(connection_.get(), "main") != 0; }

bool SqliteStore::InTransaction() const { return sqlite3_get_autocommit(connection_.get()) == 0; }

ENGSTATUS SqliteStore::BeginRead() { return InTransaction() ? ENGSTATUS{ENG_OK} : Run(Sql::kBeginRead); }

void SqliteStore::EndRead() {
  if (!writing_ && InTransaction()) static_cast<void>(Run(Sql::kCommit));
}

int SqliteStore::OnCommit(void* store, sqlite3*, const char*, int frames) {
  static_cast<SqliteStore*>(store)->log_frames_ = frames;
  return SQLITE_OK;
}

// What is committed is durable in the log, so that a checkpoint that fails or finds readers in its way is only late.
void SqliteStore::CheckpointWhenDue() {
  if (log_frames_ < kCheckpointFrames) return;
  log_frames_ = 0;
  if (IsFailedSync(CheckpointAlone())) sync_failed_ = true;
}

int SqliteStore::CheckpointAlone() {
  sqlite3_file* file = nullptr;
  const int code = sqlite3_file_control(connection_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (code != SQLITE_OK) return code;
  const sqlite3_io_methods* methods = file->pMethods;
  if (!methods || methods->iVersion < 2) return SQLITE_CANTOPEN;
  // Taken as SQLite's own writers take it: no connection can start a write or restart the log until it is let go.
  const int locked = methods->xShmLock(file, kLogWriteLock, 1, SQLITE_SHM_LOCK | SQLITE_SHM_EXCLUSIVE);
  if (locked != SQLITE_OK) return locked;
  const int done = sqlite3_wal_checkpoint_v2(connection_.get(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  methods->xShmLock(file, kLogWriteLock, 1, SQLITE_SHM_UNLOCK | SQLITE_SHM_EXCLUSIVE);
  return done;
}

ENGSTATUS SqliteStore::GetSetting(Setting setting, std::vector<std::uint8_t>* value) {
  value->clear();
  const auto key = static_cast<std::uint64_t>(setting);
  Use use = Start(Sql::kGetSetting);
  use.Bind(1, key);
  if (!use.Row()) return Result(use.code());
  Bytes bytes;
  if (!Unseal(use.Blob(0), key, &bytes)) return ENG_ERR_DB_DAMAGED;
  value->assign(bytes.begin(), bytes.end());
  return ENG_OK;
}

ENGSTATUS SqliteStore::SetSetting(Setting setting, Bytes value) {
  const auto key = static_cast<std::uint64_t>(setting);
  const std::vector<std::uint8_t> sealed = Sealed(value, key);
  Use use = Start(Sql::kSetSetting);
  use.Bind(1, key);
  use.Bind(2, Bytes(sealed));
  return Finish(use);
}

ENGSTATUS SqliteStore::ReadNames(std::uint32_t first, const NameReader& reader) {
  Use use = Start(Sql::kReadNames);
  use.Bind(1, first);
  while (use.Row()) {
    Bytes text;
    if (!Unseal(use.Blob(1), use.Number(0), &text)) return ENG_ERR_DB_DAMAGED;
    reader(static_cast<std::uint32_t>(use.Number(0)),
           std::string_view(reinterpret_cast<const char*>(text.data()), text.size()));
  }
  return Result(use.code());
}

ENGSTATUS SqliteStore::AddName(std::uint32_t number, std::string_view name) {
  const std::vector<std::uint8_t> sealed =
      Sealed(Bytes(reinterpret_cast<const std::uint8_t*>(name.data()), name.size()), number);
  Use use = Start(Sql::kAddName);
  use.Bind(1, number);
  use.Bind(2, Bytes(sealed));
  return Finish(use);
}

}  // namespace qcore
