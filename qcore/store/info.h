// The info text of a database: four fields in one buffer of 128 bytes.
//
// Fields stand one behind the other, each but the last with a line feed behind it; empty fields at the end are left
// out. A line feed inside a field is stored as a space.
#ifndef QUILLON_QCORE_STORE_INFO_H
#define QUILLON_QCORE_STORE_INFO_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qcore {

inline constexpr std::size_t kInfoFields = 4;
inline constexpr std::size_t kInfoLimit = 127;  // bytes without the terminator

std::string_view InfoField(std::string_view info, std::size_t field);
// The info text with one field replaced; the new value is cut, at a character, to what the other fields leave.
std::string ChangeInfo(std::string_view info, std::size_t field, std::string_view value);
// The longest start of `text` of at most `limit` bytes that ends between characters.
std::string_view CutText(std::string_view text, std::size_t limit);

}  // namespace qcore

#endif
