#include "engine/folder.h"

#include <string_view>

#include "qcore/abi/lookup.h"
#include "qcore/folders/folders.h"
#include "qcore/folders/unread.h"
#include "qcore/idtables/idtable.h"

using qcore::Database;
using qcore::abi::WithStore;

namespace {

std::string_view Text(const ENGCHAR* text, uint16_t length) { return {reinterpret_cast<const char*>(text), length}; }

}  // namespace

ENGSTATUS EngFolderCreate(ENGHANDLE db, ENGHANDLE, uint32_t format, ENGHANDLE format_db, const ENGCHAR* name,
                          uint16_t length, uint16_t sharing, uint32_t, uint32_t* id) {
  if (!name || !id || sharing > ENG_FOLDER_PRIVATE) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    std::shared_ptr<Database> source = database;
    const ENGSTATUS status = format_db == 0 ? ENGSTATUS{ENG_OK} : Database::FindStore(format_db, &source);
    if (status != ENG_OK) return status;
    return qcore::CreateFolder(database, source, format, Text(name, length), static_cast<qcore::FolderSharing>(sharing),
                               id);
  });
}

ENGSTATUS EngFolderCopy(ENGHANDLE db, ENGHANDLE, uint32_t folder, ENGHANDLE, const ENGCHAR* name, uint16_t length,
                        uint32_t, uint32_t* id) {
  if (!name || !id) return ENG_ERR_ARGUMENT;
  return WithStore(db,
                   [&](const auto& database) { return qcore::CopyFolder(database, folder, Text(name, length), id); });
}

ENGSTATUS EngFolderRename(ENGHANDLE db, ENGHANDLE, uint32_t folder, const ENGCHAR* name, uint16_t length, uint32_t) {
  if (!name) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::RenameFolder(database, folder, Text(name, length)); });
}

ENGSTATUS EngFolderClose(ENGHANDLE db, ENGHANDLE, uint32_t folder, uint32_t) {
  return WithStore(db, [&](const auto& database) { return qcore::CheckFolder(database, folder); });
}

ENGSTATUS EngFolderDocAdd(ENGHANDLE db, ENGHANDLE, uint32_t folder, ENGHANDLE table, uint32_t) {
  return WithStore(db, [&](const auto& database) { return qcore::AddToFolder(database, folder, table); });
}

ENGSTATUS EngFolderDocRemove(ENGHANDLE db, ENGHANDLE, uint32_t folder, ENGHANDLE table, uint32_t) {
  return WithStore(db, [&](const auto& database) { return qcore::RemoveFromFolder(database, folder, table); });
}

ENGSTATUS EngFolderDocRemoveAll(ENGHANDLE db, ENGHANDLE, uint32_t folder, uint32_t) {
  return WithStore(db, [&](const auto& database) { return qcore::EmptyFolder(database, folder); });
}

ENGSTATUS EngFolderGetTable(ENGHANDLE db, uint32_t folder, ENGHANDLE* table) {
  if (!table) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    ENGSTATUS status = qcore::CheckFolder(database, folder);
    std::vector<uint32_t> ids;
    if (status == ENG_OK) {
      const std::lock_guard lock(database->mutex());
      status = qcore::FolderMembers(*database, folder, &ids);
    }
    return status == ENG_OK ? qcore::idtable::Make(ids, table) : status;
  });
}

ENGSTATUS EngDbGetUnreadTable(ENGHANDLE db, const ENGCHAR* user, uint16_t user_length, int create, ENGHANDLE* table) {
  if (!user || !table) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) {
    return qcore::GetUnreadTable(*database, Text(user, user_length), create != 0, table);
  });
}

ENGSTATUS EngDbRefreshUnreadTable(ENGHANDLE db, ENGHANDLE table, int* changed) {
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    if (!qcore::idtable::IsTable(table)) return ENG_ERR_INVALID_HANDLE;
    bool is_changed = false;
    const ENGSTATUS status = qcore::RefreshUnread(*database, table, &is_changed);
    if (changed) *changed = is_changed ? 1 : 0;
    return status;
  });
}

ENGSTATUS EngDbSetUnreadTable(ENGHANDLE db, const ENGCHAR* user, uint16_t user_length, ENGHANDLE before,
                              ENGHANDLE after) {
  if (!user) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) {
    return qcore::SetUnreadTable(*database, Text(user, user_length), before, after);
  });
}
