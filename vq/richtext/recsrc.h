// The loaded block that the records of a rich text are views on.
#ifndef QUILLON_VQ_RICHTEXT_RECSRC_H
#define QUILLON_VQ_RICHTEXT_RECSRC_H

#include <cstdint>

#include "engine/memory.h"

class VQRTObjectBody;

namespace vq {

// One item's value, shared and counted by the objects that look into it. When the engine moves the value the
// owner of the items says so in one place, here, and not in every object.
//
// While the source is not outdated, its records stand in the tree as they stand in the value: in order, all of them,
// with nothing in between. The writer then leaves the value as it is.
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
  // The value belongs to no item any more: it goes with the last object that looks into it.
  void TakeValue() {
    Owned = true;
    Outdated = true;
  }
  bool IsOwned() const { return Owned; }
  ENGHANDLE GetPool() const { return Pool; }
  std::uint32_t GetBase() const { return Base; }
  void SetOutdated() { Outdated = true; }
  bool IsOutdated() const { return Outdated; }
  // The object of the last record, other than one that leads its object; of no meaning once outdated.
  void SetLast(VQRTObjectBody* last) { Last = last; }
  VQRTObjectBody* GetLast() const { return Last; }
  // Its records open no structure that they do not close, and stand in none.
  void SetBalanced(bool balanced) { Balanced = balanced; }
  bool IsBalanced() const { return Balanced; }

 private:
  ~RecordSource() {
    if (Owned) EngMemFree(Pool);
  }

  ENGHANDLE Pool;
  std::uint32_t Base;  // of the value, its type word first
  std::uint32_t Count = 0;
  bool Outdated = false;
  bool Balanced = false;
  bool Owned = false;
  VQRTObjectBody* Last = nullptr;
};

// A value that a tree looks into.
struct LoadedBlock {
  RecordSource* Source;  // counted
  std::uint32_t Size;
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
