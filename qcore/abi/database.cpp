#include "engine/database.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "qcore/abi/lookup.h"
#include "qcore/settings/settings.h"
#include "qcore/slates/search.h"
#include "qcore/store/info.h"
#include "qcore/store/paths.h"
#include "qcore/store/properties.h"

using qcore::Database;
using qcore::PathParts;
using qcore::abi::Guard;
using qcore::abi::WithStore;

namespace {

constexpr uint16_t kAgentClass = 0x0200;
constexpr uint16_t kBuild = 1;

std::string_view Text(const ENGCHAR* text) { return reinterpret_cast<const char*>(text); }

// At most `limit` bytes up to a NUL.
std::string_view Text(const ENGCHAR* text, size_t limit) {
  return {reinterpret_cast<const char*>(text), strnlen(reinterpret_cast<const char*>(text), limit)};
}

void CopyOut(std::string_view text, char* target) {
  if (target) qcore::settings::CopyText(text, target, ENG_PATH_SIZE);
}

ENGSTATUS Search(ENGHANDLE db, uint16_t class_mask, const TIMEDATE* since, qcore::DeletionStubs deleted,
                 TIMEDATE* until, ENGHANDLE* id_table) {
  if (!id_table) return ENG_ERR_ARGUMENT;
  *id_table = 0;
  return WithStore(db, [&](const auto& database) {
    return qcore::SearchClass(*database, class_mask, since, deleted, until, id_table);
  });
}

}  // namespace

ENGSTATUS EngPathBuild(const char* port, const char* server, const char* file, char* path) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    std::string built;
    const PathParts parts{port ? port : "", server ? server : "", file ? file : ""};
    const ENGSTATUS status = qcore::BuildPath(parts, &built);
    if (status == ENG_OK) CopyOut(built, path);
    return status;
  });
}

ENGSTATUS EngPathSplit(const char* path, char* port, char* server, char* file) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    PathParts parts;
    const ENGSTATUS status = qcore::SplitPath(path, &parts);
    if (status != ENG_OK) return status;
    CopyOut(parts.port, port);
    CopyOut(parts.server, server);
    CopyOut(parts.file, file);
    return ENG_OK;
  });
}

ENGSTATUS EngDbCreate(const char* path, uint16_t db_class, uint16_t options) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&] { return qcore::CreateDatabase(path, db_class, (options & ENG_CREATE_OVERWRITE) != 0); });
}

ENGSTATUS EngDbDelete(const char* path) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&] { return qcore::DeleteDatabase(path); });
}

ENGSTATUS EngDbCompact(const char* path, uint16_t, uint32_t statistics[2]) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    std::array<uint64_t, 2> sizes{};
    const ENGSTATUS status = qcore::CompactDatabase(path, &sizes);
    if (status != ENG_OK || !statistics) return status;
    for (size_t i = 0; i < sizes.size(); ++i) {
      statistics[i] = static_cast<uint32_t>(std::min<uint64_t>(sizes[i], UINT32_MAX));
    }
    return ENG_OK;
  });
}

ENGSTATUS EngDbOpen(const char* path, ENGHANDLE* db) { return EngDbOpenExtended(path, 0, 0, 0, db, nullptr, nullptr); }

ENGSTATUS EngDbOpenExtended(const char* path, uint32_t, uint32_t, uint32_t, ENGHANDLE* db, TIMEDATE* data_modified,
                            TIMEDATE* design_modified) {
  if (!path || !db) return ENG_ERR_ARGUMENT;
  *db = 0;
  ENGHANDLE opened = 0;
  ENGSTATUS status = Guard([&] { return Database::Open(path, &opened); });
  uint16_t kind = 0;
  if (status == ENG_OK && (data_modified || design_modified)) status = EngDbGetKind(opened, &kind);
  if (status == ENG_OK && kind == ENG_DB_KIND_DATABASE) {
    status = EngDbGetModifiedTime(opened, data_modified, design_modified);
  }
  if (status == ENG_OK) {
    *db = opened;
  } else if (opened != 0) {
    EngDbClose(opened);
  }
  return status;
}

ENGSTATUS EngDbClose(ENGHANDLE db) {
  return Guard([&] { return Database::Close(db); });
}

ENGSTATUS EngDbBegin(ENGHANDLE db) {
  return WithStore(db, [](const auto& database) { return database->BeginTransaction(); });
}

ENGSTATUS EngDbCommit(ENGHANDLE db) {
  return WithStore(db, [](const auto& database) { return database->CommitTransaction(); });
}

ENGSTATUS EngDbRollback(ENGHANDLE db) {
  return WithStore(db, [](const auto& database) { return database->RollbackTransaction(); });
}

ENGSTATUS EngDbGetClass(ENGHANDLE db, uint16_t* db_class) {
  if (!db_class) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::GetDatabaseClass(*database, db_class); });
}

ENGSTATUS EngDbGetFullPath(ENGHANDLE db, uint16_t, char* path) {
  if (!path) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::shared_ptr<Database> database = Database::Find(db);
    if (!database) return ENG_ERR_INVALID_HANDLE;
    if (database->path().size() >= ENG_PATH_SIZE) return ENG_ERR_PATH;
    CopyOut(database->path(), path);
    return ENG_OK;
  });
}

ENGSTATUS EngDbGetID(ENGHANDLE db, TIMEDATE* id) {
  if (!id) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::GetDatabaseId(*database, id); });
}

ENGSTATUS EngDbGetInfo(ENGHANDLE db, ENGCHAR* buffer) {
  if (!buffer) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    std::string info;
    const ENGSTATUS status = qcore::GetInfoText(*database, &info);
    if (status == ENG_OK) std::memcpy(buffer, info.c_str(), info.size() + 1);
    return status;
  });
}

ENGSTATUS EngDbSetInfo(ENGHANDLE db, const ENGCHAR* buffer) {
  if (!buffer) return ENG_ERR_ARGUMENT;
  return WithStore(db,
                   [&](const auto& database) { return qcore::SetInfoText(*database, Text(buffer, ENG_INFO_SIZE)); });
}

ENGSTATUS EngDbGetKind(ENGHANDLE db, uint16_t* kind) {
  if (!kind) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::shared_ptr<Database> database = Database::Find(db);
    if (!database) return ENG_ERR_INVALID_HANDLE;
    *kind = database->is_directory() ? ENG_DB_KIND_DIRECTORY : ENG_DB_KIND_DATABASE;
    return ENG_OK;
  });
}

ENGSTATUS EngDbGetModifiedTime(ENGHANDLE db, TIMEDATE* data, TIMEDATE* design) {
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    TIMEDATE times[2] = {};
    const ENGSTATUS status = qcore::GetModifiedTimes(*database, &times[0], &times[1]);
    if (status != ENG_OK) return status;
    if (data) *data = times[0];
    if (design) *design = times[1];
    return ENG_OK;
  });
}

ENGSTATUS EngDbGetReplicaInfo(ENGHANDLE db, REPLICAINFO* info) {
  if (!info) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::GetReplicaInfo(*database, info); });
}

ENGSTATUS EngDbSetReplicaInfo(ENGHANDLE db, const REPLICAINFO* info) {
  if (!info) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::SetReplicaInfo(*database, *info); });
}

ENGSTATUS EngDbGetSpace(ENGHANDLE db, uint64_t* used, uint64_t* unused) {
  if (!used || !unused) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) {
    const std::lock_guard lock(database->mutex());
    return database->store().GetSpace(used, unused);
  });
}

ENGSTATUS EngDbGetBuild(ENGHANDLE db, uint16_t* build) {
  if (!build) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto&) -> ENGSTATUS {
    *build = kBuild;
    return ENG_OK;
  });
}

ENGSTATUS EngDbGetSpecialSlate(ENGHANDLE db, uint16_t selector, uint32_t* id) {
  static constexpr uint16_t kSelectors[] = {ENG_SPECIAL_ABOUT, ENG_SPECIAL_FORM, ENG_SPECIAL_VIEW, ENG_SPECIAL_ICON,
                                            ENG_SPECIAL_USING};
  if (!id || std::find(std::begin(kSelectors), std::end(kSelectors), selector) == std::end(kSelectors)) {
    return ENG_ERR_ARGUMENT;
  }
  return WithStore(db, [&](const auto& database) { return qcore::FindSpecialSlate(*database, selector, id); });
}

ENGSTATUS EngDbNewOrigin(ENGHANDLE db, ORIGINATORID* origin) {
  if (!origin) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) -> ENGSTATUS {
    *origin = database->NewOrigin();
    return ENG_OK;
  });
}

void EngDbInfoParse(const ENGCHAR* buffer, uint16_t selector, ENGCHAR* output, uint16_t limit) {
  if (!output || limit == 0) return;
  output[0] = 0;
  if (!buffer || selector >= qcore::kInfoFields) return;
  const std::string_view field = qcore::InfoField(Text(buffer, ENG_INFO_SIZE), selector);
  qcore::settings::CopyText(field, reinterpret_cast<char*>(output), limit);
}

void EngDbInfoModify(ENGCHAR* buffer, uint16_t selector, const ENGCHAR* value) {
  if (!buffer || !value || selector >= qcore::kInfoFields) return;
  qcore::abi::GuardValue(0, [&] {
    const std::string changed = qcore::ChangeInfo(Text(buffer, ENG_INFO_SIZE), selector, Text(value));
    std::memcpy(buffer, changed.c_str(), changed.size() + 1);
    return 0;
  });
}

ENGSTATUS EngDbSearchClass(ENGHANDLE db, uint16_t class_mask, const TIMEDATE* since, TIMEDATE* until,
                           ENGHANDLE* id_table) {
  return Search(db, class_mask, since, qcore::DeletionStubs::kLeftOut, until, id_table);
}

ENGSTATUS EngDbKeepReadable(ENGHANDLE db, ENGHANDLE id_table) {
  return WithStore(db, [&](const auto& database) { return qcore::KeepReadable(*database, id_table); });
}

ENGSTATUS EngDbGetModifiedSlates(ENGHANDLE db, uint16_t class_mask, const TIMEDATE* since, TIMEDATE* until,
                                 ENGHANDLE* id_table) {
  return Search(db, class_mask, since, qcore::DeletionStubs::kListed, until, id_table);
}

ENGSTATUS EngDbSearch(ENGHANDLE directory, uint16_t flags, ENGDBFOUND callback, void* context) {
  if (!callback) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::shared_ptr<Database> database = Database::Find(directory);
    if (!database) return ENG_ERR_INVALID_HANDLE;
    if (!database->is_directory()) return ENG_ERR_ARGUMENT;
    return qcore::SearchDirectory(*database, flags, [&](const std::string& path, const std::string* info) {
      return callback(context, path.c_str(), info ? 0 : 1,
                      info ? reinterpret_cast<const ENGCHAR*>(info->c_str()) : nullptr);
    });
  });
}

ENGSTATUS EngDesignFind(ENGHANDLE db, uint16_t slate_class, const ENGCHAR* name, uint32_t* id) {
  if (!name || !id) return ENG_ERR_ARGUMENT;
  return WithStore(db, [&](const auto& database) { return qcore::FindDesign(database, slate_class, Text(name), id); });
}

ENGSTATUS EngDesignFindAgent(ENGHANDLE db, const ENGCHAR* name, uint32_t* id) {
  return EngDesignFind(db, kAgentClass, name, id);
}

ENGSTATUS EngDbCheck(ENGHANDLE db, char* report, uint16_t size) {
  return WithStore(db, [&](const auto& database) {
    std::string text;
    const ENGSTATUS status = qcore::CheckDatabase(*database, &text);
    qcore::settings::CopyText(text, report, size);
    return status;
  });
}
