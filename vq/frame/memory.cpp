// The tracked heap: every body and plain object made with `new`, in one list, so that the last session's end finds what
// clients forgot.
//
// Small blocks that go wait for the next of their size: most objects are handles' bodies that live for one statement.
// They are given back when the last session ends.
#include <sys/single_threaded.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

#include "vq/frame/state.h"
#include "vq/frame/vqcommon.h"

namespace {

constexpr std::uint32_t kBlockMarker = 0x24F1;

// The marker is the word right in front of the object, which starts on 16 bytes.
struct alignas(16) BlockHeader {
  BlockHeader* Previous;
  BlockHeader* Next;
  std::uint32_t Size;  // of the whole block
  std::uint32_t Unused[2];
  std::uint32_t Marker;
};
static_assert(sizeof(BlockHeader) == 32 && offsetof(BlockHeader, Marker) == 28);

// A checker of memory is to see each block go.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VQ_MEMORY_IS_CHECKED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VQ_MEMORY_IS_CHECKED 1
#endif
#endif
#ifdef VQ_MEMORY_IS_CHECKED
constexpr unsigned kMostSpare = 0;
#else
constexpr unsigned kMostSpare = 16;
#endif

constexpr std::size_t kSizeStep = 32;
constexpr std::size_t kSizes = 12;

// Blocks of one size that wait, linked by Next.
struct SpareBlocks {
  BlockHeader* First = nullptr;
  unsigned Count = 0;
};

// The lock needs no start and no end, so that strings may live before the first session and after the last.
struct TrackedHeap {
  std::mutex Lock;
  SpareBlocks Spare[kSizes];
  BlockHeader* Head = nullptr;
  unsigned long Count = 0;
  bool DeleteAllRunning = false;
};
constinit TrackedHeap gHeap;

// A process with a single thread does without: no other can come up while this one is in here.
[[gnu::always_inline]] inline std::unique_lock<std::mutex> LockHeap() {
  if (__libc_single_threaded) return std::unique_lock(gHeap.Lock, std::defer_lock);
  return std::unique_lock(gHeap.Lock);
}

VQQuillonClass* ObjectBehind(BlockHeader* header) { return reinterpret_cast<VQQuillonClass*>(header + 1); }
BlockHeader* HeaderOf(void* object) { return static_cast<BlockHeader*>(object) - 1; }

// A stack object has no header: the word read there then lies outside any object on purpose.
__attribute__((no_sanitize("address", "undefined"), noinline)) bool HasMarker(const void* object) {
  return static_cast<const volatile std::uint32_t*>(object)[-1] == kBlockMarker;
}

// Small blocks come in steps, so that one fits many kinds of object.
std::size_t BlockSize(std::size_t size) {
  const std::size_t whole = sizeof(BlockHeader) + size;
  return whole <= kSizes * kSizeStep ? (whole + kSizeStep - 1) / kSizeStep * kSizeStep : whole;
}

SpareBlocks* SparesOf(std::size_t size) {
  return size <= kSizes * kSizeStep ? &gHeap.Spare[size / kSizeStep - 1] : nullptr;
}

// Under the lock, as the next three.
void Link(BlockHeader* header) {
  ++gHeap.Count;
  header->Marker = kBlockMarker;
  header->Previous = nullptr;
  header->Next = gHeap.Head;
  if (gHeap.Head != nullptr) gHeap.Head->Previous = header;
  gHeap.Head = header;
}

BlockHeader* TakeSpare(std::size_t size) {
  SpareBlocks* spares = SparesOf(size);
  if (spares == nullptr || spares->First == nullptr) return nullptr;
  BlockHeader* header = spares->First;
  spares->First = header->Next;
  --spares->Count;
  return header;
}

// False for a block that is to be freed. A block that waits has no marker.
bool KeepSpare(BlockHeader* header) {
  SpareBlocks* spares = SparesOf(header->Size);
  if (spares == nullptr || spares->Count == kMostSpare || !vq::IsInitialized()) return false;
  header->Marker = 0;
  header->Next = spares->First;
  spares->First = header;
  ++spares->Count;
  return true;
}

// A block that stands in no list any more passes through: the walk at the end takes out bodies that handles hold.
void Unlink(BlockHeader* header) {
  if (header->Previous != nullptr) {
    header->Previous->Next = header->Next;
  } else if (gHeap.Head == header) {
    gHeap.Head = header->Next;
  } else if (header->Next == nullptr) {
    return;
  } else {
    vq::AssertionFailed("header->Previous == 0", "MEMORY", 568);
  }
  if (header->Next != nullptr) header->Next->Previous = header->Previous;
  header->Previous = nullptr;
  header->Next = nullptr;
}

BlockHeader* ReadHead() {
  const std::unique_lock guard = LockHeap();
  return gHeap.Head;
}

void CloseOrDestroy(BlockHeader* header) {
  VQQuillonClass* object = ObjectBehind(header);
  auto* body = object->IsBody() ? static_cast<VQBody*>(object) : nullptr;
  if (body == nullptr || body->GetRefCount() == 0) {
    delete object;
  } else if (!body->ForceClose()) {
    const std::unique_lock guard = LockHeap();
    Unlink(header);
  }
}

struct DeleteAllScope {
  DeleteAllScope() { gHeap.DeleteAllRunning = true; }
  ~DeleteAllScope() { gHeap.DeleteAllRunning = false; }
};

}  // namespace

void* VQNew(unsigned int size) {
  if (gHeap.DeleteAllRunning) vq::Throw(VQERR_CANT_ALLOCATE_IN_DELETE_ALL);
  const std::size_t whole = BlockSize(size);
  {
    const std::unique_lock guard = LockHeap();
    if (BlockHeader* header = TakeSpare(whole)) {
      Link(header);
      return header + 1;
    }
  }
  void* memory = ::operator new(whole, std::nothrow);
  if (memory == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  auto* header = static_cast<BlockHeader*>(memory);
  header->Size = static_cast<std::uint32_t>(std::min<std::size_t>(whole, std::numeric_limits<std::uint32_t>::max()));
  const std::unique_lock guard = LockHeap();
  Link(header);
  return header + 1;
}

void VQDelete(void* object) {
  if (object == nullptr) return;
  if (!HasMarker(object)) vq::Throw(VQERR_NOT_ALLOCATED_BY_VQNEW);
  BlockHeader* header = HeaderOf(object);
  {
    const std::unique_lock guard = LockHeap();
    Unlink(header);
    --gHeap.Count;
    if (KeepSpare(header)) return;
  }
  ::operator delete(header);
}

int VQQuillonClass::IsOnHeap() const { return HasMarker(this); }

void* VQQuillonClass::operator new(std::size_t size) {
  if (size > std::numeric_limits<unsigned int>::max()) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  return VQNew(static_cast<unsigned int>(size));
}

void VQQuillonClass::operator delete(void* object) { VQDelete(object); }

namespace vq {

namespace {

void FreeSpares() {
  const std::unique_lock guard = LockHeap();
  for (SpareBlocks& spares : gHeap.Spare) {
    while (spares.First != nullptr) ::operator delete(std::exchange(spares.First, spares.First->Next));
    spares.Count = 0;
  }
}

}  // namespace

unsigned long VQDeleteAllObjects() {
  if (gHeap.DeleteAllRunning) return 0;
  const DeleteAllScope scope;
  unsigned long found = 0;
  for (BlockHeader* header = ReadHead(); header != nullptr; header = ReadHead()) {
    CloseOrDestroy(header);
    ++found;
  }
  FreeSpares();
  return found;
}

unsigned long CountTrackedObjects() {
  const std::unique_lock guard = LockHeap();
  return gHeap.Count;
}

}  // namespace vq
