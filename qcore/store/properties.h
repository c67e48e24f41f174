// What a database says of itself, and databases as files.
#ifndef QUILLON_QCORE_STORE_PROPERTIES_H
#define QUILLON_QCORE_STORE_PROPERTIES_H

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "qcore/store/database.h"

namespace qcore {

[[nodiscard]] ENGSTATUS CreateDatabase(std::string_view path, std::uint16_t database_class, bool overwrite);
[[nodiscard]] ENGSTATUS DeleteDatabase(std::string_view path);
[[nodiscard]] ENGSTATUS CompactDatabase(std::string_view path, std::array<std::uint64_t, 2>* sizes);

[[nodiscard]] ENGSTATUS GetDatabaseClass(Database& database, std::uint16_t* database_class);
[[nodiscard]] ENGSTATUS GetDatabaseId(Database& database, TIMEDATE* id);
[[nodiscard]] ENGSTATUS GetInfoText(Database& database, std::string* info);
[[nodiscard]] ENGSTATUS SetInfoText(Database& database, std::string_view info);
[[nodiscard]] ENGSTATUS GetReplicaInfo(Database& database, REPLICAINFO* info);
[[nodiscard]] ENGSTATUS SetReplicaInfo(Database& database, const REPLICAINFO& info);
// The time of creation where there has been no change.
[[nodiscard]] ENGSTATUS GetModifiedTimes(Database& database, TIMEDATE* data, TIMEDATE* design);

// The entries of a directory, by name; `info` is null for a directory. A file that cannot be read as a store is passed
// over. A status other than 0 from `found` ends the search.
using DatabaseFound = std::function<ENGSTATUS(const std::string& path, const std::string* info)>;
[[nodiscard]] ENGSTATUS SearchDirectory(const Database& directory, std::uint16_t flags, const DatabaseFound& found);

}  // namespace qcore

#endif
