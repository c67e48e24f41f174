// Searches over the slates of a database: by class and time, special slates, design elements by name.
#ifndef QUILLON_QCORE_SLATES_SEARCH_H
#define QUILLON_QCORE_SLATES_SEARCH_H

#include <string>
#include <string_view>
#include <vector>

#include "qcore/store/database.h"

namespace qcore {

// Bit 0x8000 of a class marks the default design element of its class and takes no part in class masks.
inline constexpr std::uint16_t kDefaultDesign = 0x8000;

enum class DeletionStubs { kLeftOut, kListed };  // listed ones have bit 31 of their ID set

// See EngDbSearchClass and EngDbGetModifiedSlates. `until` may be null; the caller owns the table.
[[nodiscard]] ENGSTATUS SearchClass(Database& database, std::uint16_t mask, const TIMEDATE* since,
                                    DeletionStubs deleted, TIMEDATE* until, ENGHANDLE* table);
// The same in ascending order, without deletion stubs.
[[nodiscard]] ENGSTATUS ListClass(Database& database, std::uint16_t mask, const TIMEDATE* since, TIMEDATE* until,
                                  std::vector<std::uint32_t>* ids);
// Takes out of a table what is gone or may not be read by the engine's user. ENG_ERR_MEMORY_LOCKED.
[[nodiscard]] ENGSTATUS KeepReadable(Database& database, ENGHANDLE table);
// A selector is a class with bit 0x8000. Default form and view are the slates with just that class; of the icon, the
// about and the using document there is one each, and one without the bit is found too. Of several the last one saved
// under the lowest ID wins. ENG_ERR_NO_SPECIAL_SLATE.
[[nodiscard]] ENGSTATUS FindSpecialSlate(Database& database, std::uint16_t selector, std::uint32_t* id);
// The slate of a class bit in `slate_class` with `name` among the synonyms of its $TITLE; ENG_ERR_NO_DESIGN_ELEMENT.
[[nodiscard]] ENGSTATUS FindDesign(const std::shared_ptr<Database>& database, std::uint16_t slate_class,
                                   std::string_view name, std::uint32_t* id);
// Reads the store's pages and every slate. ENG_ERR_DB_DAMAGED with the first fault in `report`.
[[nodiscard]] ENGSTATUS CheckDatabase(Database& database, std::string* report);

}  // namespace qcore

#endif
