// Room for the small new values of an open slate: blocks of engine memory that many values share, so that a value needs
// no allocation and no handle of its own.
//
// Values never move here, and their bytes stay until the room goes. The newest one can grow where it is, which most do:
// they are made empty and get their content next. What shrinks or is dropped leaves its place unused; the room takes a
// bounded number of bytes in all.
#ifndef QUILLON_QCORE_SLATES_VALUE_ROOM_H
#define QUILLON_QCORE_SLATES_VALUE_ROOM_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "qcore/memory/memory.h"

namespace qcore {

class ValueRoom {
 public:
  ValueRoom() = default;
  ValueRoom(const ValueRoom&) = delete;
  ValueRoom& operator=(const ValueRoom&) = delete;
  ~ValueRoom() {
    for (ENGHANDLE block : blocks_) memory::Release(Kind::kMemory, block);
  }

  // The place of `size` bytes of no content. Null when a value of that size gets a block of its own.
  std::uint8_t* Take(std::uint32_t size, ENGHANDLE* pool, std::uint16_t* offset) {
    if (size > kLargestValue) return nullptr;
    if (size > size_ - used_ && !AddBlock(size)) return nullptr;
    const std::span<std::uint8_t> block = memory::BytesOf(blocks_.back());
    if (block.size() < size_) return nullptr;
    *pool = blocks_.back();
    *offset = static_cast<std::uint16_t>(used_);
    used_ += size;
    return block.data() + *offset;
  }

  bool Holds(ENGHANDLE pool) const { return std::find(blocks_.begin(), blocks_.end(), pool) != blocks_.end(); }

  // Whether a value that the room holds has its new size now, where it is.
  bool Resize(ENGHANDLE pool, std::uint16_t offset, std::uint32_t size, std::uint32_t new_size) {
    const bool newest = pool == blocks_.back() && offset + size == used_;
    if (newest && new_size <= size_ - offset) used_ = offset + new_size;
    return new_size <= size || (newest && new_size <= size_ - offset);
  }

 private:
  static constexpr std::uint32_t kFirstBlock = 504;  // most open slates get a value or two
  static constexpr std::uint32_t kBlockSize = 2040;
  static constexpr std::uint32_t kLargestValue = 1024;
  static constexpr std::size_t kMostBlocks = 16;

  bool AddBlock(std::uint32_t least) {
    if (blocks_.size() == kMostBlocks) return false;
    blocks_.reserve(blocks_.size() + 1);
    ENGHANDLE block = 0;
    const std::uint32_t size = blocks_.empty() && least <= kFirstBlock ? kFirstBlock : kBlockSize;
    if (memory::Allocate(Kind::kMemory, size, memory::Fill::kNone, &block) != ENG_OK) return false;
    blocks_.push_back(block);
    size_ = size;
    used_ = 0;
    return true;
  }

  std::vector<ENGHANDLE> blocks_;
  std::uint32_t size_ = 0;  // of the last block
  std::uint32_t used_ = 0;  // of that
};

}  // namespace qcore

#endif
