#include "qcore/store/sqlite_log.h"

#include <algorithm>

namespace qcore {

namespace {

constexpr int kRegionSize = 32768;  // of the index, as SQLite's file format lays it down

}  // namespace

// The header stands in the index twice. Writers write the second first, so that readers read the first first.
std::optional<LogState> ReadLogState(sqlite3* connection) {
  sqlite3_file* file = nullptr;
  if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK) return std::nullopt;
  const sqlite3_io_methods* methods = file->pMethods;
  if (!methods || methods->iVersion < 2) return std::nullopt;
  void volatile* region = nullptr;
  if (methods->xShmMap(file, 0, kRegionSize, 0, &region) != SQLITE_OK || !region) return std::nullopt;
  const auto* words = static_cast<const volatile std::uint32_t*>(region);
  LogState first;
  LogState second;
  std::copy_n(words, first.size(), first.begin());
  methods->xShmBarrier(file);
  std::copy_n(words + first.size(), second.size(), second.begin());
  if (first != second) return std::nullopt;
  return first;
}

}  // namespace qcore
