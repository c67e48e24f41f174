#include "qcore/slates/packed.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"

namespace qcore {

namespace {

constexpr std::size_t kSumSize = 4;
constexpr std::uint8_t kForm = 1;
constexpr std::uint8_t kAside = 0x01;
constexpr std::uint8_t kSameTime = 0x02;
// The shortest record: length, head, name, flags, a value of two bytes.
constexpr std::size_t kShortestRecord = 8;

}  // namespace

ENGSTATUS PackedReader::Start(Bytes packed, std::uint32_t id) {
  if (packed.size() <= kSumSize) return ENG_ERR_ITEM_DAMAGED;
  if (Checksum(packed.subspan(kSumSize), id) != LoadLittle<std::uint32_t>(packed.data())) return ENG_ERR_ITEM_DAMAGED;
  WireReader reader(packed.subspan(kSumSize));
  if (reader.Take<std::uint8_t>() != kForm) return ENG_ERR_ITEM_DAMAGED;
  const std::uint64_t count = reader.TakeVarint();
  if (!reader.good() || count > packed.size() / kShortestRecord) return ENG_ERR_ITEM_DAMAGED;
  packed_ = packed;
  at_ = kSumSize + reader.position();
  count_ = static_cast<std::uint32_t>(count);
  return ENG_OK;
}

ENGSTATUS PackedReader::Next(PackedItem* item) {
  WireReader outer(packed_.subspan(at_));
  const std::uint64_t length = outer.TakeVarint();
  const std::uint8_t* start = outer.Skip(static_cast<std::size_t>(length));
  if (!start) return ENG_ERR_ITEM_DAMAGED;
  const Bytes record(start, static_cast<std::size_t>(length));
  WireReader reader(record);
  const auto head = reader.Take<std::uint8_t>();
  item->name = static_cast<std::uint32_t>(reader.TakeVarint());
  item->flags = reader.Take<std::uint16_t>();
  if ((head & kSameTime) == 0) {
    previous_.TimeWord = reader.Take<std::uint32_t>();
    previous_.DateWord = reader.Take<std::uint32_t>();
  }
  item->modified = previous_;
  std::uint64_t size = 0;
  if (head & kAside) {
    item->type = reader.Take<std::uint16_t>();
    item->aside = reader.TakeVarint();
    size = reader.TakeVarint();
    item->value = {};
    if (item->aside == 0 || size > UINT32_MAX) return ENG_ERR_ITEM_DAMAGED;
  } else {
    size = reader.TakeVarint();
    const std::uint8_t* value = reader.Skip(static_cast<std::size_t>(size));
    if (!value || size > UINT32_MAX) return ENG_ERR_ITEM_DAMAGED;
    item->aside = 0;
    item->value = Bytes(value, static_cast<std::size_t>(size));
    item->type = size >= kSmallestValue ? LoadLittle<std::uint16_t>(value) : std::uint16_t{0};
  }
  if (!reader.good() || size < kSmallestValue) return ENG_ERR_ITEM_DAMAGED;
  item->size = static_cast<std::uint32_t>(size);
  item->kept = record.subspan(reader.position());
  at_ += outer.position();
  return ENG_OK;
}

namespace {

constexpr std::size_t kLongestVarint = 10;
// What stands in front of a record's value: that of one aside, with a time.
constexpr std::size_t kLongestHead = 1 + 5 + 2 + 8 + 2 + kLongestVarint + 5;

// Writes where there is room for all that comes.
class RoomWriter {
 public:
  explicit RoomWriter(std::uint8_t* at) : at_(at) {}
  template <typename T>
  void Put(T value) {
    StoreLittle(at_, value);
    at_ += sizeof value;
  }
  void PutVarint(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) *at_++ = static_cast<std::uint8_t>(value | 0x80);
    *at_++ = static_cast<std::uint8_t>(value);
  }
  void PutBytes(Bytes bytes) {
    if (!bytes.empty()) std::memcpy(at_, bytes.data(), bytes.size());
    at_ += bytes.size();
  }
  std::uint8_t* at() const { return at_; }

 private:
  std::uint8_t* at_;
};

}  // namespace

PackedWriter::PackedWriter(std::uint32_t count, std::size_t room) {
  constexpr std::size_t kHead = kSumSize + 1 + kLongestVarint;
  Enlarge(kHead + count * (kLongestHead + kLongestVarint) + room);
  RoomWriter writer(packed_.get() + kSumSize);
  writer.Put(kForm);
  writer.PutVarint(count);
  size_ = static_cast<std::size_t>(writer.at() - packed_.get());
}

void PackedWriter::Enlarge(std::size_t least) {
  const std::size_t capacity = std::max(least, 2 * capacity_);
  auto grown = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
  std::copy_n(packed_.get(), size_, grown.get());
  packed_ = std::move(grown);
  capacity_ = capacity;
}

void PackedWriter::Add(const PackedItem& item) {
  const bool same_time = SameTime(item.modified, previous_);
  std::array<std::uint8_t, kLongestHead> head;
  RoomWriter record(head.data());
  record.Put(static_cast<std::uint8_t>((item.aside ? kAside : 0) | (same_time ? kSameTime : 0)));
  record.PutVarint(item.name);
  record.Put(item.flags);
  if (!same_time) {
    record.Put(item.modified.TimeWord);
    record.Put(item.modified.DateWord);
  }
  previous_ = item.modified;
  if (item.aside) {
    record.Put(item.type);
    record.PutVarint(item.aside);
    record.PutVarint(item.size);
  } else {
    record.PutVarint(item.value.size());
  }
  const Bytes written = Bytes(head).first(static_cast<std::size_t>(record.at() - head.data()));
  const std::size_t length = written.size() + item.value.size() + item.kept.size();
  RoomWriter writer(Room(kLongestVarint + length));
  writer.PutVarint(length);
  writer.PutBytes(written);
  writer.PutBytes(item.value);
  writer.PutBytes(item.kept);
  size_ = static_cast<std::size_t>(writer.at() - packed_.get());
}

Bytes PackedWriter::Finish(Bytes rest, std::uint32_t id) {
  RoomWriter writer(Room(rest.size()));
  writer.PutBytes(rest);
  size_ += rest.size();
  const Bytes packed(packed_.get(), size_);
  StoreLittle(packed_.get(), Checksum(packed.subspan(kSumSize), id));
  return packed;
}

}  // namespace qcore
