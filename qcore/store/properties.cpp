#include "qcore/store/properties.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "qcore/settings/platform.h"
#include "qcore/settings/settings.h"
#include "qcore/store/info.h"
#include "qcore/store/moment.h"
#include "qcore/store/paths.h"
#include "qcore/store/sqlite_store.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

namespace fs = std::filesystem;

constexpr std::uint16_t kTemplates = 0x0001;
constexpr std::uint16_t kEverything = 0x0002;
constexpr std::uint16_t kGoDown = 0x2000;

ENGSTATUS Read(Database& database, Setting setting, std::vector<std::uint8_t>* value) {
  const std::lock_guard lock(database.mutex());
  return database.store().GetSetting(setting, value);
}

ENGSTATUS Write(Database& database, Setting setting, Bytes value) {
  const std::lock_guard lock(database.mutex());
  Change change(database);
  ENGSTATUS status = change.Begin();
  if (status == ENG_OK) status = database.store().SetSetting(setting, value);
  return status == ENG_OK ? change.Commit() : status;
}

// A replica identifier reads as a moment, so its words stay within a day and within the days that calendars know.
TIMEDATE RandomId() {
  constexpr std::uint32_t kTicksADay = 8640000;
  constexpr std::uint32_t kFirstDay = 2000000;
  constexpr std::uint32_t kDays = 1 << 20;
  std::array<std::uint8_t, 8> bytes;
  CurrentPlatform().Random(bytes);
  const TIMEDATE random = LoadTime(bytes.data());
  return {random.TimeWord % kTicksADay, kFirstDay + random.DateWord % kDays};
}

// One level of a directory in the order of names.
ENGSTATUS ListDirectory(const fs::path& place, std::vector<fs::directory_entry>* entries) {
  std::error_code error;
  for (fs::directory_iterator it(place, fs::directory_options::skip_permission_denied, error), end; !error && it != end;
       it.increment(error)) {
    entries->push_back(*it);
  }
  std::sort(entries->begin(), entries->end());
  return error ? ENG_ERR_DB_IO : ENG_OK;
}

ENGSTATUS OfferDatabase(const fs::path& file, const std::string& name, std::uint16_t flags,
                        const DatabaseFound& found) {
  std::unique_ptr<SqliteStore> store;
  if (SqliteStore::Open(file.string(), &store) != ENG_OK) return ENG_OK;
  std::vector<std::uint8_t> value;
  if (store->GetSetting(Setting::kInfo, &value) != ENG_OK) return ENG_OK;
  store.reset();
  const std::string info(value.begin(), value.end());
  const bool wanted = (flags & (kTemplates | kEverything)) != 0 || InfoField(info, ENG_INFO_TEMPLATE).empty();
  return wanted ? found(name, &info) : ENGSTATUS{ENG_OK};
}

// What is too long for a path, or would read as a server's, can't be asked for, nor can anything below it.
bool HasPath(const std::string& name) {
  PathParts parts;
  return SplitPath(name, &parts) == ENG_OK && parts.file == name;
}

ENGSTATUS SearchLevel(const fs::path& place, const fs::path& base, std::uint16_t flags, const DatabaseFound& found) {
  std::vector<fs::directory_entry> entries;
  ENGSTATUS status = ListDirectory(place, &entries);
  for (std::size_t i = 0; status == ENG_OK && i < entries.size(); ++i) {
    const fs::directory_entry& entry = entries[i];
    const std::string name = entry.path().lexically_relative(base).string();
    std::error_code error;
    if (!HasPath(name)) continue;
    if (entry.is_directory(error)) {
      if (flags & kEverything) status = found(name, nullptr);
      // A link may lead back up.
      if (status == ENG_OK && (flags & kGoDown) && !entry.is_symlink(error)) {
        status = SearchLevel(entry.path(), base, flags, found);
      }
    } else if (entry.path().extension() == ".vlt") {
      status = OfferDatabase(entry.path(), name, flags, found);
    }
  }
  return status;
}

}  // namespace

ENGSTATUS CreateDatabase(std::string_view path, std::uint16_t database_class, bool overwrite) {
  std::string file;
  const ENGSTATUS status = ResolvePath(path, &file);
  if (status != ENG_OK) return status;
  // The identifier of a file is its time of creation.
  return SqliteStore::Create(file, {database_class, Now(), RandomId()}, overwrite);
}

ENGSTATUS DeleteDatabase(std::string_view path) {
  std::string file;
  const ENGSTATUS status = ResolvePath(path, &file);
  return status == ENG_OK ? SqliteStore::Delete(file) : status;
}

ENGSTATUS CompactDatabase(std::string_view path, std::array<std::uint64_t, 2>* sizes) {
  std::string file;
  const ENGSTATUS status = ResolvePath(path, &file);
  return status == ENG_OK ? SqliteStore::Compact(file, sizes) : status;
}

ENGSTATUS GetDatabaseClass(Database& database, std::uint16_t* database_class) {
  std::vector<std::uint8_t> value;
  const ENGSTATUS status = Read(database, Setting::kClass, &value);
  if (status != ENG_OK) return status;
  if (value.size() < sizeof *database_class) return ENG_ERR_DB_DAMAGED;
  *database_class = LoadLittle<std::uint16_t>(value.data());
  return ENG_OK;
}

ENGSTATUS GetDatabaseId(Database& database, TIMEDATE* id) {
  std::vector<std::uint8_t> value;
  const ENGSTATUS status = Read(database, Setting::kFileId, &value);
  if (status != ENG_OK) return status;
  if (value.size() < 8) return ENG_ERR_DB_DAMAGED;
  *id = LoadTime(value.data());
  return ENG_OK;
}

ENGSTATUS GetInfoText(Database& database, std::string* info) {
  std::vector<std::uint8_t> value;
  const ENGSTATUS status = Read(database, Setting::kInfo, &value);
  if (status != ENG_OK) return status;
  info->assign(value.begin(), value.end());
  info->resize(std::min(info->size(), kInfoLimit));
  return ENG_OK;
}

ENGSTATUS SetInfoText(Database& database, std::string_view info) {
  info = CutText(info, kInfoLimit);
  return Write(database, Setting::kInfo, Bytes(reinterpret_cast<const std::uint8_t*>(info.data()), info.size()));
}

ENGSTATUS GetReplicaInfo(Database& database, REPLICAINFO* info) {
  std::vector<std::uint8_t> value;
  const ENGSTATUS status = Read(database, Setting::kReplica, &value);
  if (status != ENG_OK) return status;
  if (value.size() < 20) return ENG_ERR_DB_DAMAGED;
  const std::uint8_t* at = value.data();
  *info = {LoadTime(at), LoadLittle<std::uint16_t>(at + 8), LoadLittle<std::uint16_t>(at + 10), LoadTime(at + 12)};
  return ENG_OK;
}

ENGSTATUS SetReplicaInfo(Database& database, const REPLICAINFO& info) {
  std::vector<std::uint8_t> value;
  WireWriter writer(&value);
  writer.PutTime(info.ID);
  writer.Put(info.Flags);
  writer.Put(info.CutoffInterval);
  writer.PutTime(info.Cutoff);
  return Write(database, Setting::kReplica, value);
}

ENGSTATUS GetModifiedTimes(Database& database, TIMEDATE* data, TIMEDATE* design) {
  TIMEDATE created{};
  ENGSTATUS status = GetDatabaseId(database, &created);
  const std::lock_guard lock(database.mutex());
  if (status == ENG_OK) status = database.store().LastChange(Store::Part::kData, data);
  if (status == ENG_OK) status = database.store().LastChange(Store::Part::kDesign, design);
  for (TIMEDATE* moment : {data, design}) {
    if (Pack(*moment) == 0) *moment = created;
  }
  return status;
}

ENGSTATUS SearchDirectory(const Database& directory, std::uint16_t flags, const DatabaseFound& found) {
  return SearchLevel(directory.path(), settings::DataDirectory(), flags, found);
}

}  // namespace qcore
