// Column values as the rows of an index keep them, and entries of list values.
//
//   value of a row:  for each summary column  varint (size * 4 + form) | bytes
//   form 0: text without its type word   1: number   2: time   3: any value with its type word, of size 0 for none
#ifndef QUILLON_QCORE_INDEX_VALUES_H
#define QUILLON_QCORE_INDEX_VALUES_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qcore::index {

using Bytes = std::span<const std::uint8_t>;
// A value with its type word in front; empty for none.
using Value = std::vector<std::uint8_t>;

inline constexpr std::uint16_t kTypeNumber = 0x0300;
inline constexpr std::uint16_t kTypeNumberList = 0x0301;
inline constexpr std::uint16_t kTypeTime = 0x0400;
inline constexpr std::uint16_t kTypeTimeList = 0x0401;
inline constexpr std::uint16_t kTypeText = 0x0500;
inline constexpr std::uint16_t kTypeTextList = 0x0501;

std::uint16_t TypeOf(Bytes value);
Value TextValue(std::string_view text);
Value NumberValue(double number);
// The text of a single text value; nothing for another.
std::optional<std::string_view> TextOf(Bytes value);
// A number, or the sum of a list of numbers.
std::optional<double> NumberOf(Bytes value);
// Every entry of a list as a single value, of a range its lower end; a single value as it is; none of an empty one.
std::vector<Value> EntriesOf(Bytes value);

void AppendRowValue(Bytes value, std::vector<std::uint8_t>* row);

// Goes over the values of a row. Damaged bytes give no more values.
class RowValues {
 public:
  explicit RowValues(Bytes row) : row_(row) {}

  struct Item {
    std::uint16_t type = 0;  // 0 for no value
    Bytes data;              // behind the type word
  };
  bool Next(Item* item) {
    if (row_.empty()) return false;
    const std::size_t head = row_[0];
    const std::size_t size = head >> 2;
    if (head >= 0x80 || (head & 3) == kAnyForm || size >= row_.size()) return NextOfAny(item);
    item->type = kTypes[head & 3];
    item->data = row_.subspan(1, size);
    row_ = row_.subspan(1 + size);
    return true;
  }

 private:
  static constexpr std::uint16_t kTypes[] = {kTypeText, kTypeNumber, kTypeTime};
  static constexpr std::size_t kAnyForm = 3;
  bool NextOfAny(Item* item);

  Bytes row_;
};

}  // namespace qcore::index

#endif
