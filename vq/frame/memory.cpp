// The tracked heap: every body and plain object made with `new`, in one list, so that the last session's end finds what
// clients forgot.
#include <sys/single_threaded.h>

#include <cstdint>
#include <limits>
#include <mutex>
#include <new>

#include "vq/frame/state.h"
#include "vq/frame/vqcommon.h"

namespace {

constexpr std::uint32_t kBlockMarker = 0x24F1;

// The marker is the word right in front of the object, which starts on 16 bytes.
struct alignas(16) BlockHeader {
  BlockHeader* Previous;
  BlockHeader* Next;
  std::uint32_t Unused[3];
  std::uint32_t Marker;
};
static_assert(sizeof(BlockHeader) == 32 && offsetof(BlockHeader, Marker) == 28);

// The lock needs no start and no end, so that strings may live before the first session and after the last.
struct TrackedHeap {
  std::mutex Lock;
  BlockHeader* Head = nullptr;
  unsigned long Count = 0;
  bool DeleteAllRunning = false;
};
constinit TrackedHeap gHeap;

// A process with a single thread does without: no other can come up while this one is in here.
std::unique_lock<std::mutex> LockHeap() {
  if (__libc_single_threaded) return std::unique_lock(gHeap.Lock, std::defer_lock);
  return std::unique_lock(gHeap.Lock);
}

VQQuillonClass* ObjectBehind(BlockHeader* header) { return reinterpret_cast<VQQuillonClass*>(header + 1); }
BlockHeader* HeaderOf(void* object) { return static_cast<BlockHeader*>(object) - 1; }

// A stack object has no header: the word read there then lies outside any object on purpose.
__attribute__((no_sanitize("address", "undefined"), noinline)) bool HasMarker(const void* object) {
  return static_cast<const volatile std::uint32_t*>(object)[-1] == kBlockMarker;
}

void Link(BlockHeader* header) {
  const std::unique_lock guard = LockHeap();
  ++gHeap.Count;
  header->Previous = nullptr;
  header->Next = gHeap.Head;
  if (gHeap.Head != nullptr) gHeap.Head->Previous = header;
  gHeap.Head = header;
}

// Under the lock. A block that stands in no list any more passes through: the walk at the end takes out bodies that
// handles hold.
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
  void* memory = ::operator new(sizeof(BlockHeader) + size, std::nothrow);
  if (memory == nullptr) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  auto* header = static_cast<BlockHeader*>(memory);
  header->Marker = kBlockMarker;
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

unsigned long VQDeleteAllObjects() {
  if (gHeap.DeleteAllRunning) return 0;
  const DeleteAllScope scope;
  unsigned long found = 0;
  for (BlockHeader* header = ReadHead(); header != nullptr; header = ReadHead()) {
    CloseOrDestroy(header);
    ++found;
  }
  return found;
}

unsigned long CountTrackedObjects() {
  const std::unique_lock guard = LockHeap();
  return gHeap.Count;
}

}  // namespace vq
