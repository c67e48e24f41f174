#include "qcore/memory/memory.h"

#include <algorithm>
#include <cstdlib>

namespace qcore::memory {

namespace {

// Small blocks can grow where they are, since most are made empty and get one short value. A sanitizer is to see their
// real ends; none is of no bytes, for which the allocator may answer null.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint32_t kSmallestAllocation = 1;
#else
constexpr std::uint32_t kSmallestAllocation = 56;
#endif
std::size_t AllocationSize(std::uint32_t size) { return std::max(size, kSmallestAllocation); }

// Nothing for a handle that is not live.
void Discard(Kind kind, ENGHANDLE handle) { std::free(handle_table.Remove(kind, handle)); }

}  // namespace

ENGSTATUS Allocate(Kind kind, std::uint32_t size, Fill fill, ENGHANDLE* handle) {
  *handle = 0;
  void* bytes = fill == Fill::kZero ? std::calloc(1, AllocationSize(size)) : std::malloc(AllocationSize(size));
  if (!bytes) return ENG_ERR_MEMORY;
  try {
    *handle = handle_table.Insert(kind, bytes, size);
  } catch (...) {
    std::free(bytes);
    throw;
  }
  if (*handle == 0) {
    std::free(bytes);
    return ENG_ERR_TOO_MANY_HANDLES;
  }
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
