// Members of folders and unread lists of the SQLite store, and the version of the schema that brought them.
#include "qcore/store/checksum.h"
#include "qcore/store/sqlite_sql.h"

namespace qcore {

namespace {

Bytes AsBytes(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

}  // namespace

std::int64_t SqliteStore::Version() {
  // One that cannot be read fails in what is read next.
  if (version_ < kSchemaVersion && QueryNumber(connection_.get(), "PRAGMA user_version", &version_) != ENG_OK) {
    return kSchemaVersion;
  }
  return version_;
}

ENGSTATUS SqliteStore::Upgrade() {
  if (version_ == kSchemaVersion) return ENG_OK;
  ENGSTATUS status = QueryNumber(connection_.get(), "PRAGMA user_version", &version_);
  if (status != ENG_OK || version_ == kSchemaVersion) return status;
  if (version_ > kSchemaVersion) return ENG_ERR_DB_NEWER;
  std::vector<FeedRecord> feed;
  status = ReadIndexedFeed(0, &feed);
  if (status == ENG_OK) status = Execute(connection_.get(), kDropIndexes);
  if (status == ENG_OK && version_ == kOldestVersion) status = Execute(connection_.get(), kSchema2);
  if (status == ENG_OK) status = Execute(connection_.get(), kSchema3);
  if (status == ENG_OK) status = AppendToFeed(feed);
  if (status == ENG_OK) version_ = kSchemaVersion;
  return status;
}

ENGSTATUS SqliteStore::DropFromLists(std::uint32_t id) {
  for (Sql which : {Sql::kDropMember, Sql::kDropMembers}) {
    Use use = Start(which);
    use.Bind(1, id);
    const ENGSTATUS status = Finish(use);
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

ENGSTATUS SqliteStore::SetMember(std::uint32_t folder, std::uint32_t slate, std::uint64_t change, bool present) {
  Use use = Start(present ? Sql::kSetMember : Sql::kUnsetMember);
  use.Bind(1, folder);
  use.Bind(2, slate);
  use.Bind(3, change);
  use.Bind(4, present ? 1 : 0);
  return Finish(use);
}

ENGSTATUS SqliteStore::LastMemberChange(std::uint32_t folder, std::uint64_t* change) {
  *change = 0;
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kLastMemberChange);
  use.Bind(1, folder);
  if (use.Row()) *change = use.Number(0);
  return Result(use.code());
}

ENGSTATUS SqliteStore::ReadMembers(std::uint32_t folder, std::uint64_t behind, const MemberReader& reader) {
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kReadMembers);
  use.Bind(1, folder);
  use.Bind(2, behind);
  while (use.Row()) reader(static_cast<std::uint32_t>(use.Number(0)), use.Number(1) != 0);
  return Result(use.code());
}

ENGSTATUS SqliteStore::GetUnread(std::string_view user, UnreadList* list) {
  *list = {};
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kGetUnread);
  use.Bind(1, AsBytes(user));
  if (!use.Row()) return Result(use.code());
  const std::uint64_t number = use.Number(0);
  Bytes ids;
  if (!Unseal(use.Blob(2), number, &ids)) return ENG_ERR_DB_DAMAGED;
  list->user = static_cast<std::uint32_t>(number);
  list->feed = use.Number(1);
  list->ids.assign(ids.begin(), ids.end());
  return ENG_OK;
}

ENGSTATUS SqliteStore::PutUnread(std::string_view user, UnreadList* list) {
  if (list->user == 0) {
    Use use = Start(Sql::kAddUnread);
    use.Bind(1, AsBytes(user));
    use.Bind(2, list->feed);
    use.Bind(3, Bytes());  // its seal needs the number
    const ENGSTATUS status = Finish(use);
    if (status != ENG_OK) return status;
    list->user = static_cast<std::uint32_t>(sqlite3_last_insert_rowid(connection_.get()));
    unread_number_.reset();
  }
  const std::vector<std::uint8_t> sealed = Sealed(list->ids, list->user);
  {
    Use use = Start(Sql::kPutUnread);
    use.Bind(1, list->user);
    use.Bind(2, list->feed);
    use.Bind(3, Bytes(sealed));
    const ENGSTATUS status = Finish(use);
    if (status != ENG_OK) return status;
  }
  Use use = Start(Sql::kDropOwnSaves);
  use.Bind(1, list->user);
  use.Bind(2, list->feed);
  return Finish(use);
}

ENGSTATUS SqliteStore::UnreadNumber(std::string_view user, std::uint32_t* number) {
  if (!unread_number_ || unread_user_ != user) {
    UnreadList list;
    const ENGSTATUS status = GetUnread(user, &list);
    if (status != ENG_OK) return status;
    unread_user_ = user;
    unread_number_ = list.user;
  }
  *number = *unread_number_;
  return ENG_OK;
}

ENGSTATUS SqliteStore::NoteOwnSave(std::uint32_t user, std::uint32_t slate) {
  Use use = Start(Sql::kNoteOwnSave);
  use.Bind(1, user);
  use.Bind(2, slate);
  use.Bind(3, counters_.feed);
  return Finish(use);
}

ENGSTATUS SqliteStore::ReadOwnSaves(std::uint32_t user, const OwnSaveReader& reader) {
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kReadOwnSaves);
  use.Bind(1, user);
  while (use.Row()) reader(static_cast<std::uint32_t>(use.Number(0)), use.Number(1));
  return Result(use.code());
}

}  // namespace qcore
