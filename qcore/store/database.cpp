#include "qcore/store/database.h"

#include <array>

#include "engine/text.h"
#include "qcore/settings/platform.h"
#include "qcore/settings/settings.h"
#include "qcore/store/moment.h"
#include "qcore/store/paths.h"
#include "qcore/store/sqlite_store.h"
#include "qcore/store/wire.h"
#include "qcore/text/translate.h"

namespace qcore {

namespace {

using Holder = std::shared_ptr<Database>;

}  // namespace

ENGSTATUS Database::Open(const std::string& path, ENGHANDLE* handle) {
  std::string file;
  ENGSTATUS status = ResolvePath(path, &file);
  if (status != ENG_OK) return status;
  std::unique_ptr<SqliteStore> store;
  if (!IsDirectory(file)) status = SqliteStore::Open(file, &store);
  if (status != ENG_OK) return status;
  auto holder = std::make_unique<Holder>(std::make_shared<Database>(file, std::move(store)));
  *handle = handle_table.Insert(Kind::kDatabase, holder.get());
  if (*handle == 0) return ENG_ERR_TOO_MANY_HANDLES;
  (*holder)->handle_ = *handle;
  holder.release();
  return ENG_OK;
}

std::shared_ptr<Database> Database::Find(ENGHANDLE handle) {
  const auto* holder = handle_table.FindAs<Holder>(Kind::kDatabase, handle);
  return holder ? *holder : nullptr;
}

ENGSTATUS Database::FindStore(ENGHANDLE handle, std::shared_ptr<Database>* database) {
  *database = Find(handle);
  if (!*database) return ENG_ERR_INVALID_HANDLE;
  return (*database)->is_directory() ? ENG_ERR_DB_IS_DIRECTORY : ENG_OK;
}

ENGSTATUS Database::Close(ENGHANDLE handle) {
  const std::unique_ptr<Holder> holder(static_cast<Holder*>(handle_table.Remove(Kind::kDatabase, handle)));
  if (!holder) return ENG_ERR_INVALID_HANDLE;
  Database& database = **holder;
  if (!database.is_directory()) {
    if (database.transaction_ != 0) static_cast<void>(database.RollbackTransaction());
    database.CloseSlates();
    database.FreeReservedObjects();
  }
  return ENG_OK;
}

void Database::CloseAll() {
  for (ENGHANDLE handle : handle_table.All(Kind::kDatabase)) static_cast<void>(Close(handle));
}

Database::Database(std::string path, std::unique_ptr<Store> store)
    : path_(std::move(path)),
      store_(std::move(store)),
      user_(text::Translate(ENG_TRANSLATE_PLATFORM_TO_STORE, text::AsText(settings::UserName()), UINT16_MAX)) {
  if (store_) open_file_.emplace(path_);
}

Database::~Database() = default;

void Database::CloseSlates() {
  std::set<OpenSlate*> slates;
  {
    const std::lock_guard lock(mutex_);
    slates = slates_;
  }
  for (OpenSlate* slate : slates) slate->CloseWithDatabase();
}

void Database::FreeReservedObjects() {
  if (reserved_objects_.empty()) return;
  const std::lock_guard lock(mutex_);
  Change change(*this);
  if (change.Begin() != ENG_OK) return;  // a compaction removes what stays behind
  for (const auto& [object, claims] : reserved_objects_) {
    ObjectInfo info;
    if (store_->GetObject(object, &info) != ENG_OK || info.owner != 0) continue;
    if (store_->FreeObject(object) != ENG_OK) return;
  }
  static_cast<void>(change.Commit());
}

bool Database::Claim(std::uint32_t object) {
  const auto reserved = reserved_objects_.find(object);
  if (reserved == reserved_objects_.end()) return false;
  ++reserved->second;
  return true;
}

void Database::GiveUp(const std::vector<std::uint32_t>& objects) {
  const std::lock_guard lock(mutex_);
  std::vector<std::uint32_t> unneeded;
  for (std::uint32_t object : objects) {
    const auto reserved = reserved_objects_.find(object);
    if (reserved == reserved_objects_.end() || --reserved->second != 0) continue;
    ObjectInfo info{};
    const ENGSTATUS status = store_->GetObject(object, &info);
    if (status == ENG_OK && info.owner == 0) unneeded.push_back(object);
    // A rollback may still take it from its owner, or bring it back.
    const bool settled = transaction_ == 0 && (status == ENG_ERR_NO_OBJECT || (status == ENG_OK && info.owner != 0));
    if (settled) reserved_objects_.erase(reserved);
  }
  if (unneeded.empty()) return;
  Change change(*this);
  ENGSTATUS status = change.Begin();
  for (std::size_t i = 0; status == ENG_OK && i < unneeded.size(); ++i) status = store_->FreeObject(unneeded[i]);
  if (status == ENG_OK) status = change.Commit();
  if (status != ENG_OK || transaction_ != 0) return;
  for (std::uint32_t object : unneeded) reserved_objects_.erase(object);
}

ENGSTATUS Database::BeginTransaction() {
  const std::lock_guard lock(mutex_);
  if (transaction_ != 0) return ENG_ERR_DB_TRANSACTION;
  const ENGSTATUS status = store_->Begin();
  if (status != ENG_OK) return status;
  transaction_ = ++last_transaction_;
  names_at_begin_ = names_.stored();
  return ENG_OK;
}

ENGSTATUS Database::CommitTransaction() {
  const std::lock_guard lock(mutex_);
  if (transaction_ == 0) return ENG_ERR_DB_TRANSACTION;
  const bool running = store_->InTransaction();
  if (!running) store_->Rollback();
  const ENGSTATUS status = running ? store_->Commit() : ENGSTATUS{ENG_ERR_DB_TRANSACTION};
  if (status != ENG_OK) RevertMemory();
  transaction_ = 0;
  return status;
}

ENGSTATUS Database::RollbackTransaction() {
  const std::lock_guard lock(mutex_);
  if (transaction_ == 0) return ENG_ERR_DB_TRANSACTION;
  store_->Rollback();
  RevertMemory();
  transaction_ = 0;
  return ENG_OK;
}

void Database::RevertMemory() {
  names_.ForgetBehind(names_at_begin_);
  for (OpenSlate* slate : slates_) slate->RevertTo(transaction_);
}

ENGSTATUS Database::CreateObject(std::uint16_t object_class, std::uint32_t* object) {
  const std::lock_guard lock(mutex_);
  Change change(*this);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK) status = store_->CreateObject(object_class, object);
  if (status == ENG_OK) status = change.Commit();
  if (status == ENG_OK) NoteReserved(*object);
  return status;
}

ORIGINATORID Database::NewOrigin() {
  const std::lock_guard lock(mutex_);
  const TIMEDATE now = Now();
  if (Pack(origin_file_) == 0) {
    std::array<std::uint8_t, 8> bytes;
    CurrentPlatform().Random(bytes);
    origin_file_ = LoadTime(bytes.data());
  }
  if (Pack(now) <= Pack(last_origin_)) origin_file_ = Unpack(Pack(origin_file_) + 1);
  last_origin_ = now;
  return {origin_file_, now, 0, {0, 0}};
}

Change::~Change() {
  if (!open_) return;
  if (database_.transaction_ == 0) {
    database_.store_->Rollback();
  } else if (marked_) {
    database_.store_->RollbackToMark();
  }
  database_.names_.ForgetBehind(names_);
}

ENGSTATUS Change::Begin(Extent extent) {
  Store& store = *database_.store_;
  ENGSTATUS status = ENG_ERR_DB_TRANSACTION;
  if (database_.transaction_ == 0) {
    status = store.Begin();
  } else if (store.InTransaction()) {
    marked_ = extent == Extent::kSeveral;
    status = marked_ ? store.Mark() : ENGSTATUS{ENG_OK};
  }
  open_ = status == ENG_OK;
  names_ = database_.names_.stored();
  return status;
}

ENGSTATUS Change::Commit() {
  ENGSTATUS status = ENG_OK;
  if (database_.transaction_ == 0) {
    status = database_.store_->Commit();
  } else if (marked_) {
    status = database_.store_->ReleaseMark();
  }
  // A commit that failed has already undone the transaction.
  if (status == ENG_OK || database_.transaction_ == 0) open_ = false;
  if (status != ENG_OK) database_.names_.ForgetBehind(names_);
  return status;
}

}  // namespace qcore
