// Text list values.
//
//   [0x0501] | count | length of entry 0 | ... | entry 0 | entry 1 | ...      words are little-endian
//
// The type word is there when the value is prefixed. Bytes behind the last entry are no part of the value.
#ifndef QUILLON_QCORE_TEXT_TEXTLIST_H
#define QUILLON_QCORE_TEXT_TEXTLIST_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "qcore/text/utf8.h"

namespace qcore::text {

inline constexpr std::uint16_t kTextListType = 0x0501;
inline constexpr std::size_t kLargestList = 65535;

enum class Prefix { kNone, kType };

using Entries = std::vector<std::string_view>;

// Nothing for a value whose counts or lengths lead out of it. The views stay inside `value`.
std::optional<Entries> ReadList(Text value, Prefix prefix);
// Whether ReadList would give something.
bool IsList(Text value, Prefix prefix);
// Nothing for a value above kLargestList bytes or an entry count above 16 bits.
std::optional<std::string> WriteList(const Entries& entries, Prefix prefix);

// For a value whose extent the caller vouches for.
std::uint16_t ListCount(const ENGCHAR* value, Prefix prefix);
// 0 for one that would be above kLargestList bytes.
std::uint16_t ListSize(const ENGCHAR* value, Prefix prefix);
std::optional<std::string_view> ListEntry(const ENGCHAR* value, Prefix prefix, std::uint16_t index);

// Changes the list in a block of engine memory that no one has locked; *size is the value's size before and after. On
// failure block and size are as they were. `edit` gives the status that stops it.
[[nodiscard]] ENGSTATUS EditList(ENGHANDLE block, Prefix prefix, std::uint16_t* size,
                                 const std::function<ENGSTATUS(Entries&)>& edit);

}  // namespace qcore::text

#endif
