// Memory blocks.
#include "vq/frame/vqmblock.h"

#include <cstring>
#include <limits>
#include <utility>

#include "engine/engine.h"

namespace {

constexpr char kFile[] = "VQMBLOCK";

}  // namespace

VQMemoryBlock::VQMemoryBlock()
    : PoolHandle(0), BlockOffset(0), InlineBuffer{}, Size(0), Locked(0), AllocatedByThisClass(0) {}

VQMemoryBlock::~VQMemoryBlock() { VQMemoryBlock::Reset(); }

void VQMemoryBlock::ClearPlace() {
  PoolHandle = 0;
  BlockOffset = 0;
  AllocatedByThisClass = 0;
}

VQSTATUS VQMemoryBlock::Reset() {
  // Memory that went with the engine is no failure here: a destructor runs this.
  if (Locked && !IsInline()) EngMemUnlock(PoolHandle);
  Locked = 0;
  if (AllocatedByThisClass && PoolHandle != 0) EngMemFree(PoolHandle);
  ClearPlace();
  Size = 0;
  std::memset(InlineBuffer, 0, sizeof InlineBuffer);
  return VQ_OK;
}

int VQMemoryBlock::IsEmpty() const {
  if (!IsInline()) return 0;
  VQ_ASSERT(!AllocatedByThisClass, kFile);
  return Size == 0;
}

VQSTATUS VQMemoryBlock::ObtainMemory(unsigned long size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) return VQERR_INSUFFICIENT_MEMORY;
  ENGHANDLE handle = 0;
  if (const VQSTATUS status = vq::FromEngine(EngMemAlloc(0, static_cast<std::uint32_t>(size), &handle))) return status;
  if (handle == 0) vq::Throw(VQERR_INSUFFICIENT_MEMORY);
  PoolHandle = handle;
  BlockOffset = 0;
  AllocatedByThisClass = 1;
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::Allocate(unsigned long size, int engine_memory) {
  if (AllocatedByThisClass) return vq::Apply(VQERR_MEMORY_ALREADY_ALLOCATED);
  VQ_ASSERT(IsEmpty(), kFile);
  VQ_ASSERT(!IsLocked(), kFile);
  VQ_ASSERT(size > 0, kFile);
  if (engine_memory || size > kInlineSize) {
    if (const VQSTATUS status = ObtainMemory(size)) return vq::Apply(status);
  }
  Size = static_cast<std::uint32_t>(size);
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::Free() {
  VQ_ASSERT(!IsEmpty(), kFile);
  VQ_ASSERT(!IsLocked(), kFile);
  const ENGSTATUS freed = IsInline() ? ENGSTATUS{ENG_OK} : EngMemFree(PoolHandle);
  if (freed == ENG_ERR_MEMORY_LOCKED) return vq::Apply(freed);
  ClearPlace();
  Size = 0;
  return vq::Apply(vq::FromEngine(freed));
}

VQSTATUS VQMemoryBlock::Attach(ENGHANDLE handle, unsigned long offset, unsigned long size) {
  if (Size > 0) VQ_ASSERT(!AllocatedByThisClass, kFile);
  if (AllocatedByThisClass) return vq::Apply(VQERR_CORRUPTED);
  if (size == 0) return Locked ? Unlock() : VQ_OK;
  VQ_ASSERT(!IsLocked(), kFile);
  constexpr unsigned long kMost = std::numeric_limits<std::uint32_t>::max();
  if (handle == 0 || offset > kMost || size > kMost) return vq::Apply(VQERR_CORRUPTED);
  PoolHandle = handle;
  BlockOffset = static_cast<std::uint32_t>(offset);
  Size = static_cast<std::uint32_t>(size);
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::Detach() { return Attach(0, 0, 0); }

VQSTATUS VQMemoryBlock::AttachPart(VQMemoryBlock& source, unsigned long size, unsigned long offset) {
  if (!source.IsInside(offset, size)) return vq::Apply(VQERR_CORRUPTED);
  if (!source.IsInline()) return Attach(source.PoolHandle, source.BlockOffset + offset, size);
  if (const VQSTATUS status = Detach()) return status;
  ClearPlace();
  std::memmove(InlineBuffer, source.InlineBuffer, size);
  Size = static_cast<std::uint32_t>(size);
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::GetBlockID(BLOCKID* blockid) const {
  VQ_ASSERT(blockid, kFile);
  if (IsInline() && Size != 0) return vq::Apply(VQERR_WRONG_SITUATION);
  if (BlockOffset >= 0x10000) return vq::Apply(VQERR_OUT_OF_RANGE);
  blockid->Pool = PoolHandle;
  blockid->Block = static_cast<std::uint16_t>(BlockOffset);
  return VQ_OK;
}

ENGHANDLE VQMemoryBlock::Release() {
  VQ_ASSERT(!IsLocked(), kFile);
  if (!AllocatedByThisClass) return 0;
  const ENGHANDLE handle = PoolHandle;
  ClearPlace();
  Size = 0;
  return handle;
}

unsigned char* VQMemoryBlock::LockData() {
  VQ_ASSERT(!IsLocked(), kFile);
  unsigned char* data = InlineBuffer;
  if (!IsInline()) {
    data = static_cast<unsigned char*>(EngMemLock(PoolHandle));
    if (data == nullptr) return nullptr;
    data += BlockOffset;
  }
  Locked = 1;
  return data;
}

void* VQMemoryBlock::Lock(unsigned long offset) {
  unsigned char* data = LockData();
  if (data == nullptr) vq::Throw(VQERR_CORRUPTED);
  return data + offset;
}

VQSTATUS VQMemoryBlock::Unlock() {
  VQ_ASSERT(IsLocked(), kFile);
  Locked = 0;
  return IsInline() ? VQ_OK : vq::Apply(vq::FromEngine(EngMemUnlock(PoolHandle)));
}

bool VQMemoryBlock::IsInside(unsigned long offset, unsigned long size) const {
  return offset <= Size && size <= Size - offset;
}

VQSTATUS VQMemoryBlock::Read(unsigned long size, void* buffer, unsigned long offset) {
  if (size == 0 || buffer == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsInside(offset, size)) return vq::Apply(VQERR_RT_INVALID);
  const unsigned char* data = LockData();
  if (data == nullptr) return vq::Apply(VQERR_CORRUPTED);
  std::memcpy(buffer, data + offset, size);
  return Unlock();
}

VQSTATUS VQMemoryBlock::Write(unsigned long size, const void* buffer, unsigned long offset) {
  if (size == 0 || buffer == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsInside(offset, size)) return vq::Apply(VQERR_CORRUPTED);
  unsigned char* data = LockData();
  if (data == nullptr) return vq::Apply(VQERR_CORRUPTED);
  std::memmove(data + offset, buffer, size);
  return Unlock();
}

VQSTATUS VQMemoryBlock::ReadODS(unsigned short type, void* target, unsigned long offset) {
  const unsigned long size = EngOdsLength(type);
  if (size == 0 || target == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsInside(offset, size)) return vq::Apply(VQERR_RT_INVALID);
  unsigned char* data = LockData();
  if (data == nullptr) return vq::Apply(VQERR_CORRUPTED);
  void* cursor = data + offset;
  const VQSTATUS read = vq::FromEngine(EngOdsRead(&cursor, type, target, 1));
  const VQSTATUS unlocked = Unlock();
  return read != VQ_OK ? vq::Apply(read) : unlocked;
}

VQSTATUS VQMemoryBlock::WriteODS(unsigned short type, const void* source, unsigned long offset) {
  const unsigned long size = EngOdsLength(type);
  if (size == 0 || source == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsInside(offset, size)) return vq::Apply(VQERR_CORRUPTED);
  unsigned char* data = LockData();
  if (data == nullptr) return vq::Apply(VQERR_CORRUPTED);
  void* cursor = data + offset;
  const VQSTATUS written = vq::FromEngine(EngOdsWrite(&cursor, type, source, 1));
  const VQSTATUS unlocked = Unlock();
  return written != VQ_OK ? vq::Apply(written) : unlocked;
}

VQSTATUS VQMemoryBlock::MoveInline(unsigned long new_size) {
  const unsigned char* data = LockData();
  if (data == nullptr) return VQERR_CORRUPTED;
  unsigned char kept[kInlineSize];
  std::memcpy(kept, data, new_size);
  Unlock();
  if (const VQSTATUS status = vq::FromEngine(EngMemFree(PoolHandle))) return status;
  ClearPlace();
  std::memcpy(InlineBuffer, kept, new_size);
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::MoveToEngine(unsigned long new_size) {
  if (const VQSTATUS status = ObtainMemory(new_size)) return status;
  unsigned char* data = LockData();
  if (data == nullptr) return VQERR_CORRUPTED;
  std::memcpy(data, InlineBuffer, new_size);
  return Unlock();
}

// Bytes of the owner's that lie outside an attached window are not this block's to cut.
VQSTATUS VQMemoryBlock::CutEngineMemory(unsigned long new_size) {
  if (!AllocatedByThisClass) {
    std::uint32_t whole = 0;
    if (const VQSTATUS status = vq::FromEngine(EngMemGetSize(PoolHandle, &whole))) return status;
    if (BlockOffset != 0 || whole != Size) return VQ_OK;
  }
  return vq::FromEngine(EngMemRealloc(PoolHandle, static_cast<std::uint32_t>(new_size)));
}

VQSTATUS VQMemoryBlock::Resize(unsigned long new_size, int engine_memory) {
  VQ_ASSERT(!IsEmpty(), kFile);
  VQ_ASSERT_TEXT(new_size > 0, "newSize > 0", kFile);
  VQ_ASSERT_TEXT(new_size <= Size, "newSize <= Size", kFile);
  if (new_size == Size) return VQ_OK;
  if (Locked) Unlock();
  VQSTATUS status = VQ_OK;
  if (!IsInline()) {
    const bool fits = !engine_memory && new_size <= kInlineSize && AllocatedByThisClass;
    status = fits ? MoveInline(new_size) : CutEngineMemory(new_size);
  } else if (engine_memory) {
    status = MoveToEngine(new_size);
  }
  if (status != VQ_OK) return vq::Apply(status);
  Size = static_cast<std::uint32_t>(new_size);
  return VQ_OK;
}

VQSTATUS VQMemoryBlock::Move(unsigned long size, long delta, unsigned long offset) {
  if (size == 0 || delta == 0) return vq::Apply(VQERR_OUT_OF_RANGE);
  const bool starts_inside = delta > 0 || offset >= 0 - static_cast<unsigned long>(delta);
  if (!IsInside(offset, size) || !starts_inside || !IsInside(offset + delta, size)) return vq::Apply(VQERR_CORRUPTED);
  unsigned char* data = LockData();
  if (data == nullptr) return vq::Apply(VQERR_CORRUPTED);
  std::memmove(data + offset + delta, data + offset, size);
  return Unlock();
}

VQSTATUS VQMemoryBlock::CopyFrom(VQMemoryBlock& source, unsigned long offset, unsigned long size) {
  if (size > source.Size || &source == this) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (size == 0) size = source.Size;
  if (!IsInside(offset, size)) return vq::Apply(VQERR_CORRUPTED);
  if (size == 0) return VQ_OK;
  VQ_ASSERT(!IsLocked(), kFile);
  const unsigned char* from = source.LockData();
  if (from == nullptr) return vq::Apply(VQERR_CORRUPTED);
  unsigned char* to = LockData();
  if (to != nullptr) {
    std::memcpy(to + offset, from, size);
    Unlock();
  }
  source.Unlock();
  return to != nullptr ? VQ_OK : vq::Apply(VQERR_CORRUPTED);
}

VQSTATUS VQMemoryBlock::Swap(VQMemoryBlock& other) {
  std::swap(PoolHandle, other.PoolHandle);
  std::swap(BlockOffset, other.BlockOffset);
  std::swap(InlineBuffer, other.InlineBuffer);
  std::swap(Size, other.Size);
  std::swap(Locked, other.Locked);
  std::swap(AllocatedByThisClass, other.AllocatedByThisClass);
  return VQ_OK;
}
