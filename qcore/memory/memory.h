// Engine memory: blocks behind handles. The rules for callers stand in engine/memory.h.
//
// A block's bytes are one heap allocation; its size and its locks stand in the handle's slot, so that a lock touches
// one cache line and never memory that another thread frees.
#ifndef QUILLON_QCORE_MEMORY_MEMORY_H
#define QUILLON_QCORE_MEMORY_MEMORY_H

#include <cstdint>
#include <span>
#include <utility>

#include "engine/status.h"
#include "engine/types.h"
#include "qcore/handles/handles.h"

namespace qcore::memory {

enum class Fill { kNone, kZero };

// `kind` is kMemory, or another kind up to kLastMemory whose blocks clients may lock but not free.
[[nodiscard]] ENGSTATUS Allocate(Kind kind, std::uint32_t size, Fill fill, ENGHANDLE* handle);
// Bytes that are to become a block: room that grows without a handle, and without being cleared.
class Draft {
 public:
  Draft() = default;
  Draft(Draft&& other) noexcept { *this = std::move(other); }
  Draft& operator=(Draft&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(capacity_, other.capacity_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~Draft();

  // Room for so many bytes in all; throws std::bad_alloc.
  void Reserve(std::size_t capacity);
  std::size_t capacity() const { return capacity_; }
  unsigned char* data() const { return bytes_; }
  // How many are written, at most the capacity.
  void SetSize(std::uint32_t size) { size_ = size; }
  std::uint32_t size() const { return size_; }
  std::span<const unsigned char> written() const { return {bytes_, size_}; }
  // What is written becomes a block, and the draft is empty; on failure it stays.
  [[nodiscard]] ENGSTATUS Publish(Kind kind, ENGHANDLE* handle);

 private:
  unsigned char* bytes_ = nullptr;
  std::size_t capacity_ = 0;
  std::uint32_t size_ = 0;
};

[[nodiscard]] ENGSTATUS Free(Kind kind, ENGHANDLE handle);
// Frees a block of the engine's own, locked or not; passes over a handle that is not live.
void Release(Kind kind, ENGHANDLE handle);
// Never gives up the handle; on failure the block is as it was.
[[nodiscard]] ENGSTATUS Resize(Kind kind, ENGHANDLE handle, std::uint32_t size);
// Frees every block of every memory kind, locked or not.
void FreeAll();

struct Statistics {
  std::uint32_t blocks;
  std::uint64_t bytes;
};
Statistics Live();

// Whether the kind, which no handle has as 0, is kMemory up to kLastMemory: one comparison.
inline bool IsMemoryKind(ENGHANDLE handle) {
  constexpr std::uint32_t kFirst = static_cast<std::uint32_t>(Kind::kMemory) << HandleTable::kKindShift;
  constexpr std::uint32_t kEnd = (static_cast<std::uint32_t>(Kind::kLastMemory) + 1) << HandleTable::kKindShift;
  return handle - kFirst < kEnd - kFirst;
}

inline HandleTable::Slot* FindBlock(ENGHANDLE handle) {
  return IsMemoryKind(handle) ? handle_table.FindSlot(handle) : nullptr;
}

inline void* Lock(ENGHANDLE handle) {
  HandleTable::Slot* slot = FindBlock(handle);
  if (!slot) return nullptr;
  slot->Pin();
  return slot->object.load(std::memory_order_relaxed);
}

// ENG_ERR_ARGUMENT for a block that is not locked.
[[nodiscard]] inline ENGSTATUS Unlock(ENGHANDLE handle) {
  HandleTable::Slot* slot = FindBlock(handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  return slot->Unpin() ? ENG_OK : ENG_ERR_ARGUMENT;
}

[[nodiscard]] inline ENGSTATUS Size(ENGHANDLE handle, std::uint32_t* size) {
  const HandleTable::Slot* slot = FindBlock(handle);
  if (!slot) return ENG_ERR_INVALID_HANDLE;
  *size = slot->size.load(std::memory_order_relaxed);
  return ENG_OK;
}

// The bytes of a block, for an owner that knows that nobody frees it meanwhile; none for a handle that is not live.
inline std::span<unsigned char> BytesOf(ENGHANDLE handle) {
  const HandleTable::Slot* slot = FindBlock(handle);
  if (!slot) return {};
  return {static_cast<unsigned char*>(slot->object.load(std::memory_order_acquire)),
          slot->size.load(std::memory_order_relaxed)};
}

// Holds a block locked. `bytes()` is null when the handle is not a live block.
class LockedBlock {
 public:
  explicit LockedBlock(ENGHANDLE handle) : handle_(handle), slot_(FindBlock(handle)) {
    if (!slot_) return;
    slot_->Pin();
    bytes_ = static_cast<unsigned char*>(slot_->object.load(std::memory_order_relaxed));
    size_ = slot_->size.load(std::memory_order_relaxed);
  }
  // Slots outlive their handles; one that has lost the handle has lost the lock with it.
  ~LockedBlock() {
    if (slot_ && slot_->handle.load(std::memory_order_acquire) == handle_) slot_->Unpin();
  }
  LockedBlock(const LockedBlock&) = delete;
  LockedBlock& operator=(const LockedBlock&) = delete;

  unsigned char* bytes() const { return bytes_; }
  std::uint32_t size() const { return size_; }

 private:
  ENGHANDLE handle_;
  HandleTable::Slot* slot_;
  unsigned char* bytes_ = nullptr;
  std::uint32_t size_ = 0;
};

}  // namespace qcore::memory

#endif
