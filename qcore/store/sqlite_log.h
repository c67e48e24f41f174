// What the shared index of SQLite's write-ahead log says about the last commit.
#ifndef QUILLON_QCORE_STORE_SQLITE_LOG_H
#define QUILLON_QCORE_STORE_SQLITE_LOG_H

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <optional>

namespace qcore {

// The index header: change counter, frames, checksum and salts. It differs after every commit of any connection.
using LogState = std::array<std::uint32_t, 12>;

// Takes no lock and makes no system call. Nothing while a commit is changing the header. Only for connections that have
// read the database in log mode before.
std::optional<LogState> ReadLogState(sqlite3* connection);

}  // namespace qcore

#endif
