// What is in a folder.
#include <algorithm>

#include "qcore/folders/folders.h"
#include "qcore/idtables/idtable.h"

namespace qcore {

namespace {

constexpr std::uint16_t kDocumentClass = 1;

using Ids = std::vector<std::uint32_t>;

ENGSTATUS ListIds(ENGHANDLE id_table, Ids* ids) {
  return idtable::ForEach(id_table, [ids](std::uint32_t id) { ids->push_back(id); });
}

// Another process may have deleted the folder since it was found to be one.
ENGSTATUS CheckStillThere(Store& store, std::uint32_t folder) {
  SlateHeader header;
  const ENGSTATUS status = store.ReadHeader(folder, &header);
  return status == ENG_OK && header.deleted ? ENGSTATUS{ENG_ERR_SLATE_DELETED} : status;
}

ENGSTATUS CheckDocuments(Store& store, const Ids& ids) {
  for (std::uint32_t id : ids) {
    SlateHeader header;
    const ENGSTATUS status = store.ReadHeader(id, &header);
    if (status != ENG_OK) return status;
    if (header.deleted) return ENG_ERR_SLATE_DELETED;
    if ((header.slate_class & kDocumentClass) == 0) return ENG_ERR_NOT_DOCUMENT;
  }
  return ENG_OK;
}

// One change for all of them.
ENGSTATUS SetMembers(Store& store, std::uint32_t folder, const Ids& ids, bool present) {
  std::uint64_t change = 0;
  ENGSTATUS status = store.LastMemberChange(folder, &change);
  for (std::size_t i = 0; status == ENG_OK && i < ids.size(); ++i) {
    status = store.SetMember(folder, ids[i], change + 1, present);
  }
  return status;
}

}  // namespace

ENGSTATUS AddToFolder(const std::shared_ptr<Database>& database, std::uint32_t folder, ENGHANDLE id_table) {
  Ids ids;
  ENGSTATUS status = ListIds(id_table, &ids);
  if (status == ENG_OK) status = CheckFolder(database, folder);
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database->mutex());
  Change change(*database);
  status = change.Begin();
  if (status == ENG_OK) status = CheckStillThere(database->store(), folder);
  if (status == ENG_OK) status = CheckDocuments(database->store(), ids);
  if (status == ENG_OK) status = SetMembers(database->store(), folder, ids, true);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS RemoveFromFolder(const std::shared_ptr<Database>& database, std::uint32_t folder, ENGHANDLE id_table) {
  Ids ids;
  ENGSTATUS status = ListIds(id_table, &ids);
  if (status == ENG_OK) status = CheckFolder(database, folder);
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database->mutex());
  Change change(*database);
  status = change.Begin();
  if (status == ENG_OK) status = SetMembers(database->store(), folder, ids, false);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS EmptyFolder(const std::shared_ptr<Database>& database, std::uint32_t folder) {
  ENGSTATUS status = CheckFolder(database, folder);
  if (status != ENG_OK) return status;
  const std::lock_guard lock(database->mutex());
  Change change(*database);
  status = change.Begin();
  Ids members;
  if (status == ENG_OK) status = FolderMembers(*database, folder, &members);
  if (status == ENG_OK) status = SetMembers(database->store(), folder, members, false);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS CopyMembers(Database& database, std::uint32_t from, std::uint32_t to) {
  const std::lock_guard lock(database.mutex());
  Change change(database);
  ENGSTATUS status = change.Begin();
  Ids members;
  if (status == ENG_OK) status = FolderMembers(database, from, &members);
  if (status == ENG_OK) status = SetMembers(database.store(), to, members, true);
  return status == ENG_OK ? change.Commit() : status;
}

ENGSTATUS FolderMembers(Database& database, std::uint32_t folder, std::vector<std::uint32_t>* ids) {
  Ids removed;
  return FolderChanges(database, folder, 0, ids, &removed);
}

ENGSTATUS FolderSequence(Database& database, std::uint32_t folder, std::uint64_t* sequence) {
  return database.store().LastMemberChange(folder, sequence);
}

ENGSTATUS FolderChanges(Database& database, std::uint32_t folder, std::uint64_t since,
                        std::vector<std::uint32_t>* added, std::vector<std::uint32_t>* removed) {
  added->clear();
  removed->clear();
  const ENGSTATUS status = database.store().ReadMembers(
      folder, since, [&](std::uint32_t id, bool present) { (present ? added : removed)->push_back(id); });
  std::sort(added->begin(), added->end());
  std::sort(removed->begin(), removed->end());
  return status;
}

}  // namespace qcore
