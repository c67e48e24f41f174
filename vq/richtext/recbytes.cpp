#include "vq/richtext/recbytes.h"

#include <algorithm>
#include <cstring>

namespace vq {

void RecordContent::Resize(std::uint32_t size) {
  if (!IsOwn()) {
    Clear();
    Parts.Inside.Kind = kInside;
  }
  const std::uint32_t present = GetSize();
  Reserve(size);
  if (size > present) std::memset(GetBytes() + present, 0, size - present);
  if (Kind() == kInside) {
    Parts.Inside.Size = static_cast<unsigned char>(size);
  } else {
    Parts.Outside.Size = size;
  }
}

void RecordContent::Reserve(std::uint32_t size) {
  if (Kind() == kInside ? size > kRoomInside : size > Parts.Outside.Room) Grow(size);
}

// A half more than there was, so that what grows a little at a time is not copied each time.
void RecordContent::Grow(std::uint32_t size) {
  const std::uint32_t present = GetSize();
  const std::uint32_t room = std::max(size, Kind() == kInside ? size : Parts.Outside.Room + Parts.Outside.Room / 2);
  auto* bytes = new unsigned char[room];
  std::memcpy(bytes, GetBytes(), present);
  if (Kind() == kOutside) delete[] Parts.Outside.Bytes;
  Parts.Outside = {kOutside, present, bytes, room};
}

void RecordContent::Splice(std::uint32_t offset, std::uint32_t oldBytes, std::uint32_t newBytes) {
  const std::uint32_t size = GetSize(), tail = size - offset - oldBytes;
  if (newBytes > oldBytes) Resize(size + newBytes - oldBytes);
  if (tail > 0) std::memmove(GetBytes() + offset + newBytes, GetBytes() + offset + oldBytes, tail);
  if (newBytes < oldBytes) Resize(size + newBytes - oldBytes);
}

}  // namespace vq
