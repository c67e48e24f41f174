// Engine memory: blocks known by handle, with an address only while locked.
//
// Look-up is lock-free, so a block may be locked from any thread; the bytes are the callers' to guard.
// A stale, foreign or zero handle gives ENG_ERR_INVALID_HANDLE, or null from EngMemLock.
#ifndef QUILLON_ENGINE_MEMORY_H
#define QUILLON_ENGINE_MEMORY_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ENG_MEM_ZERO 0x0001    // fill with zero bytes
#define ENG_MEM_SHARED 0x4000  // the class library's item values ask for this; any bit is accepted

// Size 0 is legal. Failure: ENG_ERR_MEMORY, and *handle is 0.
ENG_API ENGSTATUS EngMemAlloc(uint16_t flags, uint32_t size, ENGHANDLE* handle);
// A locked block is refused with ENG_ERR_MEMORY_LOCKED and stays.
ENG_API ENGSTATUS EngMemFree(ENGHANDLE handle);
ENG_API ENGSTATUS EngMemGetSize(ENGHANDLE handle, uint32_t* size);
// Locks nest. The address stays good until the last unlock.
ENG_API void* EngMemLock(ENGHANDLE handle);
// Keeps the handle and the bytes up to the smaller size. Refused while locked; on failure nothing moves.
ENG_API ENGSTATUS EngMemRealloc(ENGHANDLE handle, uint32_t new_size);
ENG_API ENGSTATUS EngMemUnlock(ENGHANDLE handle);

// What is live in the process, for leak checks: blocks and bytes of engine memory, and handles of every kind.
ENG_API void EngMemStatistics(uint32_t* blocks, uint64_t* bytes, uint32_t* handles);

#ifdef __cplusplus
}
#endif

#endif
