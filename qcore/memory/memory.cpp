#include "qcore/memory/memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace qcore::memory {

namespace {

// Small blocks can grow where they are, since most are made empty and get one short value. A sanitizer is to see their
// real ends; none is of no bytes, for which the allocator may answer null.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint32_t kSmallestAllocation = 1;
constexpr std::size_t kMostSpare = 0;
#else
constexpr std::uint32_t kSmallestAllocation = 56;
constexpr std::size_t kMostSpare = 512;
#endif
std::size_t AllocationSize(std::uint32_t size) { return std::max(size, kSmallestAllocation); }

ENGSTATUS Publish(Kind kind, void* bytes, std::uint32_t size, ENGHANDLE* handle) {
  try {
    *handle = handle_table.Insert(kind, bytes, size);
  } catch (const std::bad_alloc&) {
    return ENG_ERR_MEMORY;
  }
  return *handle != 0 ? ENG_OK : ENG_ERR_TOO_MANY_HANDLES;
}

// Nothing for a handle that is not live.
void Discard(Kind kind, ENGHANDLE handle) { std::free(handle_table.Remove(kind, handle)); }

}  // namespace

ENGSTATUS Allocate(Kind kind, std::uint32_t size, Fill fill, ENGHANDLE* handle) {
  *handle = 0;
  void* bytes = fill == Fill::kZero ? std::calloc(1, AllocationSize(size)) : std::malloc(AllocationSize(size));
  if (!bytes) return ENG_ERR_MEMORY;
  const ENGSTATUS status = memory::Publish(kind, bytes, size, handle);
  if (status != ENG_OK) std::free(bytes);
  return status;
}

Draft::~Draft() { std::free(bytes_); }

void Draft::Reserve(std::size_t capacity) {
  capacity = std::max<std::size_t>(capacity, kSmallestAllocation);
  void* bytes = std::realloc(bytes_, capacity);
  if (!bytes) throw std::bad_alloc();
  bytes_ = static_cast<unsigned char*>(bytes);
  capacity_ = capacity;
}

ENGSTATUS Draft::Publish(Kind kind, ENGHANDLE* handle) {
  *handle = 0;
  if (capacity_ - size_ > kMostSpare) Reserve(size_);  // the rest goes back
  const ENGSTATUS status = memory::Publish(kind, bytes_, size_, handle);
  if (status != ENG_OK) return status;
  bytes_ = nullptr;
  capacity_ = size_ = 0;
  return ENG_OK;
}

ENGSTATUS Free(Kind kind, ENGHANDLE handle) {
  const HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  if (slot->Pins() > 0) return ENG_ERR_MEMORY_LOCKED;
  Discard(kind, handle);
  return ENG_OK;
}

void Release(Kind kind, ENGHANDLE handle) { Discard(kind, handle); }

ENGSTATUS Resize(Kind kind, ENGHANDLE handle, std::uint32_t size) {
  HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  if (slot->Pins() > 0) return ENG_ERR_MEMORY_LOCKED;
  if (AllocationSize(size) != AllocationSize(slot->size.load(std::memory_order_relaxed))) {
    void* bytes = std::realloc(slot->object.load(std::memory_order_relaxed), AllocationSize(size));
    if (!bytes) return ENG_ERR_MEMORY;
    slot->object.store(bytes, std::memory_order_release);
  }
  slot->size.store(size, std::memory_order_relaxed);
  return ENG_OK;
}

void FreeAll() {
  for (Kind kind : {Kind::kMemory, Kind::kIdTable}) {
    for (ENGHANDLE handle : handle_table.All(kind)) Discard(kind, handle);
  }
}

// Counted when asked for: counters would cost every allocation more than the rest of it.
Statistics Live() {
  Statistics live{0, 0};
  for (Kind kind : {Kind::kMemory, Kind::kIdTable}) {
    for (ENGHANDLE handle : handle_table.All(kind)) {
      std::uint32_t size = 0;
      if (Size(handle, &size) != ENG_OK) continue;
      ++live.blocks;
      live.bytes += size;
    }
  }
  return live;
}

}  // namespace qcore::memory
