// ID tables: ordered sets of slate IDs in one lockable block. The rules for callers stand in engine/idtable.h.
//
//   u32 step | u16 runs | u16 flags | u32 IDs | u32 room for runs | runs of 5 bytes: extra, start
//
// Past 65,535 runs flag 0x8000 is set, the run count in the header is 0, and the true one stands in 32 bits before the
// runs.
#ifndef QUILLON_QCORE_IDTABLES_IDTABLE_H
#define QUILLON_QCORE_IDTABLES_IDTABLE_H

#include <cstdint>
#include <functional>
#include <span>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::idtable {

[[nodiscard]] ENGSTATUS Create(ENGHANDLE* table);
// A table of `ids`, which are in ascending order without doubles.
[[nodiscard]] ENGSTATUS Make(std::span<const std::uint32_t> ids, ENGHANDLE* table);
[[nodiscard]] ENGSTATUS Copy(ENGHANDLE table, ENGHANDLE* copy);
[[nodiscard]] ENGSTATUS Destroy(ENGHANDLE table);
bool IsTable(ENGHANDLE table);
std::uint32_t Entries(ENGHANDLE table);
// Changes are refused with ENG_ERR_MEMORY_LOCKED while the table is locked; a failed one leaves it as it was.
[[nodiscard]] ENGSTATUS Insert(ENGHANDLE table, std::uint32_t id, bool* changed);
[[nodiscard]] ENGSTATUS Delete(ENGHANDLE table, std::uint32_t id, bool* changed);
[[nodiscard]] ENGSTATUS InsertTable(ENGHANDLE table, ENGHANDLE other);
[[nodiscard]] ENGSTATUS DeleteTable(ENGHANDLE table, ENGHANDLE other);
// Makes the table hold `ids`, which are as for Make; `changed` tells whether it held others.
[[nodiscard]] ENGSTATUS Assign(ENGHANDLE table, std::span<const std::uint32_t> ids, bool* changed);
[[nodiscard]] ENGSTATUS DeleteAll(ENGHANDLE table);
bool Contains(ENGHANDLE table, std::uint32_t id);
// Another number for a table of other IDs, as good as always; 0 for no table.
std::uint64_t Fingerprint(ENGHANDLE table);
// The first ID that is not below `at_least`.
bool Next(ENGHANDLE table, std::uint32_t at_least, std::uint32_t* id);
// All IDs in order; ENG_ERR_INVALID_HANDLE.
[[nodiscard]] ENGSTATUS ForEach(ENGHANDLE table, const std::function<void(std::uint32_t)>& visit);

}  // namespace qcore::idtable

#endif
