// The records of a rich text value, as they are stored: framing, names and fields.
#ifndef QUILLON_TOOLS_QUILLON_RECORDS_H
#define QUILLON_TOOLS_QUILLON_RECORDS_H

#include <cstdint>
#include <span>
#include <string_view>

namespace tool {

using Bytes = std::span<const unsigned char>;

struct Record {
  std::uint32_t offset;     // in the value, whose type word stands at 0
  std::uint16_t signature;  // 0xFFnn in the word form, else the low byte
  Bytes bytes;              // header included, padding byte not
};

enum class FieldKind { kUnsigned, kSigned, kHex, kName };

struct Field {
  std::string_view name;
  std::uint16_t offset;
  std::uint16_t width;  // of one element
  FieldKind kind;
  std::uint16_t count = 1;
};

struct RecordKind {
  std::uint16_t signature;
  std::string_view name;
  std::uint16_t fixed;  // bytes that such a record has at least
  std::span<const Field> fields;
  bool text = false;  // characters behind the fixed part
};

// Null for a signature without a name.
const RecordKind* FindRecordKind(std::uint16_t signature);

// One little-endian number; 0 where the record ends before it.
std::uint32_t ReadNumber(Bytes bytes, std::size_t offset, std::size_t width);

// Walks the records of one value.
class RecordWalk {
 public:
  explicit RecordWalk(Bytes value) : value_(value) {}
  // False at the end and at damage.
  bool Next(Record* record);
  // What is wrong at offset(), null if nothing is.
  const char* damage() const { return damage_; }
  std::size_t offset() const { return offset_; }

 private:
  bool Refuse(const char* what);

  Bytes value_;
  std::size_t offset_ = 2;
  const char* damage_ = nullptr;
};

}  // namespace tool

#endif
