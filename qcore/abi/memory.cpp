#include "engine/memory.h"

#include "qcore/abi/guard.h"
#include "qcore/memory/memory.h"

using qcore::Kind;
using qcore::abi::Guard;
namespace memory = qcore::memory;

ENGSTATUS EngMemAlloc(uint16_t flags, uint32_t size, ENGHANDLE* handle) {
  if (!handle) return ENG_ERR_ARGUMENT;
  *handle = 0;
  const memory::Fill fill = flags & ENG_MEM_ZERO ? memory::Fill::kZero : memory::Fill::kNone;
  return Guard([&] { return memory::Allocate(Kind::kMemory, size, fill, handle); });
}

ENGSTATUS EngMemFree(ENGHANDLE handle) {
  return Guard([&] { return memory::Free(Kind::kMemory, handle); });
}

ENGSTATUS EngMemGetSize(ENGHANDLE handle, uint32_t* size) {
  return size ? memory::Size(handle, size) : ENGSTATUS{ENG_ERR_ARGUMENT};
}

void* EngMemLock(ENGHANDLE handle) { return memory::Lock(handle); }

ENGSTATUS EngMemRealloc(ENGHANDLE handle, uint32_t new_size) {
  return Guard([&] { return memory::Resize(Kind::kMemory, handle, new_size); });
}

ENGSTATUS EngMemUnlock(ENGHANDLE handle) { return memory::Unlock(handle); }

void EngMemStatistics(uint32_t* blocks, uint64_t* bytes, uint32_t* handles) {
  const memory::Statistics live = memory::Live();
  if (blocks) *blocks = live.blocks;
  if (bytes) *bytes = live.bytes;
  if (handles) *handles = qcore::handle_table.Live();
}
