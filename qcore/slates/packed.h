// The packed value of a slate row: every item with its small value, larger values by number.
//
//   u32 checksum of all behind it | u8 form | varint item count | records | bytes that are kept
//   record:  varint length | u8 head | varint name | u16 flags | [time] | value | bytes that are kept
//   head:    bit 0 the value stands aside, bit 1 the time is that of the record before
//   value:   varint size, type word and data;  aside: u16 type, varint value number, varint size
//
// Bytes behind what this engine knows, in a record or at the end, are read and written back as they are.
#ifndef QUILLON_QCORE_SLATES_PACKED_H
#define QUILLON_QCORE_SLATES_PACKED_H

#include <memory>

#include "qcore/store/store.h"

namespace qcore {

// Values up to this size stand in the row.
inline constexpr std::uint32_t kPackedValueLimit = 4096;
inline constexpr std::uint32_t kSmallestValue = 2;  // the type word

struct PackedItem {
  std::uint32_t name = 0;
  std::uint16_t flags = 0;
  std::uint16_t type = 0;
  TIMEDATE modified{};
  std::uint32_t size = 0;    // of the value, type word included
  Store::ValueId aside = 0;  // 0: `value` holds the bytes
  Bytes value;
  Bytes kept;
};

class PackedReader {
 public:
  // ENG_ERR_ITEM_DAMAGED for bytes that are no packed value of slate `id`.
  [[nodiscard]] ENGSTATUS Start(Bytes packed, std::uint32_t id);
  std::uint32_t count() const { return count_; }
  // Call count() times.
  [[nodiscard]] ENGSTATUS Next(PackedItem* item);
  // What is behind the last record.
  Bytes Rest() const { return packed_.subspan(at_); }

 private:
  Bytes packed_;
  std::size_t at_ = 0;
  std::uint32_t count_ = 0;
  TIMEDATE previous_{};
};

class PackedWriter {
 public:
  // `room`: about what the values and what is kept take.
  explicit PackedWriter(std::uint32_t count, std::size_t room = 0);
  void Add(const PackedItem& item);
  // The whole value, with its checksum.
  Bytes Finish(Bytes rest, std::uint32_t id);

 private:
  // Where the next bytes go, with room for so many.
  std::uint8_t* Room(std::size_t count) {
    if (count > capacity_ - size_) Enlarge(size_ + count);
    return packed_.get() + size_;
  }
  void Enlarge(std::size_t least);

  std::unique_ptr<std::uint8_t[]> packed_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  TIMEDATE previous_{};
};

}  // namespace qcore

#endif
