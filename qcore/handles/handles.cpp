#include "qcore/handles/handles.h"

#include "qcore/handles/sole_thread.h"

namespace qcore {

constinit HandleTable handle_table;
alignas(64) unsigned char handle_slots[HandleTable::kSlots * sizeof(HandleTable::Slot)];

namespace {

constexpr std::uint32_t kSlotMask = HandleTable::kSlots - 1;
constexpr std::uint32_t kGenerationMask = (1u << HandleTable::kGenerationBits) - 1;

std::uint32_t GenerationOf(std::uint32_t link) { return link >> HandleTable::kSlotBits & kGenerationMask; }

}  // namespace

std::uint32_t NewThreadNumber() {
  static std::atomic<std::uint32_t> last{0};
  return ++last;
}

bool HandleTable::TakeSlot(std::uint32_t* index) {
  if (free_ > kReuseDelay || (used_ == kSlots && free_ > 0)) {
    *index = free_head_;
    free_head_ = SlotAt(free_head_)->link & kSlotMask;
    --free_;
    return true;
  }
  if (used_ == kSlots) return false;
  *index = used_++;
  return true;
}

void HandleTable::ReleaseSlot(std::uint32_t index) {
  Slot* slot = SlotAt(index);
  slot->link = ((GenerationOf(slot->link) + 1) & kGenerationMask) << kSlotBits;
  if (free_ == 0) {
    free_head_ = index;
  } else {
    Slot* tail = SlotAt(free_tail_);
    tail->link = (tail->link & ~kSlotMask) | index;
  }
  free_tail_ = index;
  ++free_;
}

ENGHANDLE HandleTable::Insert(Kind kind, void* object, std::uint32_t size) {
  if (current_thread_number == 0) current_thread_number = NewThreadNumber();
  const std::unique_lock lock = LockIfThreaded(mutex_);
  std::uint32_t index = 0;
  if (!TakeSlot(&index)) return 0;
  Slot* slot = SlotAt(index);
  slot->owner.store(current_thread_number, std::memory_order_relaxed);
  slot->owner_pins.store(0, std::memory_order_relaxed);
  slot->other_pins.store(0, std::memory_order_relaxed);
  slot->object.store(object, std::memory_order_relaxed);
  slot->size.store(size, std::memory_order_relaxed);
  const ENGHANDLE handle =
      static_cast<std::uint32_t>(kind) << kKindShift | GenerationOf(slot->link) << kSlotBits | index;
  slot->handle.store(handle, std::memory_order_release);
  return handle;
}

void* HandleTable::Remove(Kind kind, ENGHANDLE handle) {
  const std::unique_lock lock = LockIfThreaded(mutex_);
  Slot* slot = FindSlot(kind, handle);
  if (!slot) return nullptr;
  void* object = slot->object.load(std::memory_order_relaxed);
  slot->handle.store(0, std::memory_order_release);
  slot->object.store(nullptr, std::memory_order_relaxed);
  ReleaseSlot(handle & kSlotMask);
  return object;
}

std::vector<ENGHANDLE> HandleTable::All(Kind kind) const {
  const std::unique_lock lock = LockIfThreaded(mutex_);
  std::vector<ENGHANDLE> result;
  for (std::uint32_t i = 0; i < used_; ++i) {
    const ENGHANDLE handle = SlotAt(i)->handle.load(std::memory_order_relaxed);
    if (handle != 0 && KindOf(handle) == kind) result.push_back(handle);
  }
  return result;
}

std::uint32_t HandleTable::Live() const {
  const std::unique_lock lock = LockIfThreaded(mutex_);
  return used_ - free_;
}

}  // namespace qcore
