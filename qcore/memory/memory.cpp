#include "qcore/memory/memory.h"

#include <atomic>
#include <cstdlib>

namespace qcore::memory {

namespace {

std::atomic<std::uint32_t> live_blocks{0};
std::atomic<std::uint64_t> live_bytes{0};

// The allocator may answer null for no bytes, which would read as a failure.
std::size_t AllocationSize(std::uint32_t size) { return size == 0 ? 1 : size; }

void Discard(Kind kind, ENGHANDLE handle, std::uint32_t size) {
  void* bytes = handle_table.Remove(kind, handle);
  if (!bytes) return;
  std::free(bytes);
  --live_blocks;
  live_bytes -= size;
}

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
  ++live_blocks;
  live_bytes += size;
  return ENG_OK;
}

ENGSTATUS Free(Kind kind, ENGHANDLE handle) {
  const HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  if (slot->Pins() > 0) return ENG_ERR_MEMORY_LOCKED;
  Discard(kind, handle, slot->size.load(std::memory_order_relaxed));
  return ENG_OK;
}

void Release(Kind kind, ENGHANDLE handle) {
  const HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
  if (slot) Discard(kind, handle, slot->size.load(std::memory_order_relaxed));
}

ENGSTATUS Resize(Kind kind, ENGHANDLE handle, std::uint32_t size) {
  HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  if (slot->Pins() > 0) return ENG_ERR_MEMORY_LOCKED;
  void* bytes = std::realloc(slot->object.load(std::memory_order_relaxed), AllocationSize(size));
  if (!bytes) return ENG_ERR_MEMORY;
  live_bytes += std::uint64_t{size} - slot->size.load(std::memory_order_relaxed);
  slot->object.store(bytes, std::memory_order_release);
  slot->size.store(size, std::memory_order_relaxed);
  return ENG_OK;
}

void FreeAll() {
  for (Kind kind : {Kind::kMemory, Kind::kIdTable}) {
    for (ENGHANDLE handle : handle_table.All(kind)) {
      const HandleTable::Slot* slot = handle_table.FindSlot(kind, handle);
      if (slot) Discard(kind, handle, slot->size.load(std::memory_order_relaxed));
    }
  }
}

Statistics Live() { return {live_blocks.load(), live_bytes.load()}; }

}  // namespace qcore::memory
