// The loaded block that the records of a rich text are views on.
#ifndef QUILLON_VQ_RICHTEXT_RECSRC_H
#define QUILLON_VQ_RICHTEXT_RECSRC_H

#include <cstdint>

#include "engine/memory.h"

namespace vq {

// One item's value, shared and counted by the objects that look into it. When the engine moves the value the
// owner of the items says so in one place, here, and not in every object.
class RecordSource {
 public:
  RecordSource(ENGHANDLE pool, std::uint32_t base) : Pool(pool), Base(base) {}
  RecordSource(const RecordSource&) = delete;
  RecordSource& operator=(const RecordSource&) = delete;

  void AddReference(std::uint32_t count = 1) { Count += count; }
  void Release() {
    if (--Count == 0) delete this;
  }
  void Move(ENGHANDLE pool, std::uint32_t base) {
    Pool = pool;
    Base = base;
  }
  ENGHANDLE GetPool() const { return Pool; }
  std::uint32_t GetBase() const { return Base; }

 private:
  ~RecordSource() = default;

  ENGHANDLE Pool;
  std::uint32_t Base;  // of the value, its type word first
  std::uint32_t Count = 0;
};

// A locked engine block; Bytes is null when the handle is no good.
class MemoryLock {
 public:
  MemoryLock() = default;
  explicit MemoryLock(ENGHANDLE pool) { Lock(pool); }
  ~MemoryLock() { Unlock(); }
  MemoryLock(const MemoryLock&) = delete;
  MemoryLock& operator=(const MemoryLock&) = delete;

  void Lock(ENGHANDLE pool) {
    if (pool == Pool && Bytes) return;
    Unlock();
    Bytes = static_cast<unsigned char*>(EngMemLock(pool));
    Pool = pool;
  }
  void Unlock() {
    if (Bytes) EngMemUnlock(Pool);
    Bytes = nullptr;
  }
  unsigned char* GetBytes() const { return Bytes; }

 private:
  ENGHANDLE Pool = 0;
  unsigned char* Bytes = nullptr;
};

}  // namespace vq

#endif
