// The process's table of engine handles.
//
// A handle is 32 bits: 4 of kind, 7 of generation, 21 of slot. A slot holds its present handle as a whole, so one
// comparison tells a stale or foreign handle. Look-up takes no lock: the slots stay for the life of the process, and a
// freed slot is used again only behind kReuseDelay others, which keeps old handles stale for long.
//
//   31    28 27         21 20                      0
//   | kind  | generation  | slot                   |
//
// The table owns no object and knows nothing of what an object is. Insert and Remove are safe from any thread; that an
// object stays alive while another thread uses it is for its owner to see to, with pins or with a lock of its own.
#ifndef QUILLON_QCORE_HANDLES_HANDLES_H
#define QUILLON_QCORE_HANDLES_HANDLES_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "engine/types.h"

namespace qcore {

// Kinds up to kLastMemory can be locked through engine memory; their objects are blocks.
enum class Kind : std::uint32_t {
  kMemory = 1,
  kIdTable = 2,
  kLastMemory = kIdTable,
  kDatabase = 3,
  kSlate = 4,
  kLibrary = 5,
  kCharset = 6,
  kCollection = 7,
  kCompute = 8,
  kTextSearch = 9,
  kRender = 10,
};

// A number for the calling thread, never 0 and never used twice.
std::uint32_t NewThreadNumber();

// Threads take their number at their first insertion; 0 until then.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local std::uint32_t current_thread_number = 0;

class HandleTable {
 public:
  static constexpr std::uint32_t kSlotBits = 21;
  static constexpr std::uint32_t kGenerationBits = 7;
  static constexpr std::uint32_t kKindShift = kSlotBits + kGenerationBits;
  static constexpr std::uint32_t kSlots = 1u << kSlotBits;
  static constexpr std::uint32_t kReuseDelay = 256;

  // One live handle. `size` is free for the owner of the object.
  //
  // Pins are counted in two places: those of the thread that inserted, which need no locked instruction, and those of
  // all others. Only the sum means anything, since one thread may pin and another unpin.
  struct Slot {
    std::atomic<ENGHANDLE> handle{0};
    std::atomic<std::uint32_t> owner{0};
    std::atomic<std::int32_t> owner_pins{0};
    std::atomic<std::int32_t> other_pins{0};
    std::atomic<void*> object{nullptr};
    std::atomic<std::uint32_t> size{0};
    std::uint32_t link = 0;  // generation and, while free, the next free slot; guarded by the table

    std::int32_t Pins() const {
      return owner_pins.load(std::memory_order_relaxed) + other_pins.load(std::memory_order_acquire);
    }
    void Pin() {
      if (IsOwners()) [[likely]] {
        owner_pins.store(owner_pins.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
      } else {
        other_pins.fetch_add(1, std::memory_order_acq_rel);
      }
    }
    // False, and nothing changes, when there is no pin.
    bool Unpin() {
      const std::int32_t owners = owner_pins.load(std::memory_order_relaxed);
      if (owners + other_pins.load(std::memory_order_acquire) <= 0) [[unlikely]]
        return false;
      if (IsOwners()) [[likely]] {
        owner_pins.store(owners - 1, std::memory_order_relaxed);
      } else {
        other_pins.fetch_sub(1, std::memory_order_acq_rel);
      }
      return true;
    }

   private:
    bool IsOwners() const { return owner.load(std::memory_order_relaxed) == current_thread_number; }
  };

  constexpr HandleTable() = default;
  HandleTable(const HandleTable&) = delete;
  HandleTable& operator=(const HandleTable&) = delete;

  // 0 when all slots are taken. Throws std::bad_alloc.
  ENGHANDLE Insert(Kind kind, void* object, std::uint32_t size = 0);
  // The object that the handle stood for, null for a handle that is not live or of another kind. The caller destroys
  // the object; exactly one of several callers gets it.
  void* Remove(Kind kind, ENGHANDLE handle);

  void* Find(Kind kind, ENGHANDLE handle) const {
    const Slot* slot = FindSlot(kind, handle);
    return slot ? slot->object.load(std::memory_order_acquire) : nullptr;
  }
  template <typename T>
  T* FindAs(Kind kind, ENGHANDLE handle) const {
    return static_cast<T*>(Find(kind, handle));
  }

  Slot* FindSlot(Kind kind, ENGHANDLE handle) const { return KindOf(handle) == kind ? FindSlot(handle) : nullptr; }
  // Of whatever kind the handle says, which is one at least: a free slot would be found for handle 0.
  Slot* FindSlot(ENGHANDLE handle) const {
    Slot* slot = SlotAt(handle & (kSlots - 1));
    if (slot->handle.load(std::memory_order_acquire) != handle) [[unlikely]]
      return nullptr;
    return slot;
  }

  static Kind KindOf(ENGHANDLE handle) { return static_cast<Kind>(handle >> kKindShift); }

  std::vector<ENGHANDLE> All(Kind kind) const;
  std::uint32_t Live() const;

 private:
  static Slot* SlotAt(std::uint32_t index);
  bool TakeSlot(std::uint32_t* index);
  void ReleaseSlot(std::uint32_t index);

  mutable std::mutex mutex_;
  std::uint32_t used_ = 0;  // slots ever handed out
  std::uint32_t free_ = 0;  // of them, waiting in the queue
  std::uint32_t free_head_ = 0;
  std::uint32_t free_tail_ = 0;
};

// Hidden, so that look-up computes the addresses instead of loading them.
[[gnu::visibility("hidden")]] extern HandleTable handle_table;

// All slots, as one stretch of zero bytes: pages come into being as slots are used, and look-up needs no pointer.
[[gnu::visibility("hidden")]] extern unsigned char handle_slots[HandleTable::kSlots * sizeof(HandleTable::Slot)];

inline HandleTable::Slot* HandleTable::SlotAt(std::uint32_t index) {
  return reinterpret_cast<Slot*>(handle_slots) + index;
}

}  // namespace qcore

#endif
