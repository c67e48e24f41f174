// VQMemoryBlock: a piece of engine memory, or up to 24 bytes in the object itself.
//
// A block is empty, inline, owned or attached; attached memory stays good only as long as its owner keeps it.
// Locks do not nest, and operations that need the bytes lock for themselves.
#ifndef QUILLON_VQ_FRAME_VQMBLOCK_H
#define QUILLON_VQ_FRAME_VQMBLOCK_H

#include "vq/frame/vqcommon.h"

class VQ_API VQMemoryBlock {
 public:
  static constexpr unsigned long kInlineSize = 24;

  VQMemoryBlock();
  virtual ~VQMemoryBlock();
  VQMemoryBlock(const VQMemoryBlock&) = delete;
  VQMemoryBlock& operator=(const VQMemoryBlock&) = delete;

  // Unlocks, frees what this object owns, clears everything. Always 0.
  virtual VQSTATUS Reset();

  // Of an empty block; `engine_memory` keeps even few bytes out of the object, for memory that goes to the engine.
  // VQERR_MEMORY_ALREADY_ALLOCATED. The bytes are not cleared.
  VQSTATUS Allocate(unsigned long size, int engine_memory);
  // Memory that another lock still holds is refused with the engine's status and stays.
  VQSTATUS Free();
  // Looks at somebody else's memory. Size 0 changes nothing but the lock, which it takes off; Detach is that.
  VQSTATUS Attach(ENGHANDLE handle, unsigned long offset, unsigned long size);
  VQSTATUS Detach();
  // A window on a stretch of the source. An inline source is copied instead, from its start whatever the offset.
  VQSTATUS AttachPart(VQMemoryBlock& source, unsigned long size, unsigned long offset);
  // VQERR_WRONG_SITUATION for inline data, VQERR_OUT_OF_RANGE where the offset exceeds 16 bits.
  VQSTATUS GetBlockID(BLOCKID* blockid) const;
  // Gives engine memory that this object owns to the caller and becomes empty; 0 when it owns none.
  ENGHANDLE Release();

  int IsEmpty() const;
  int IsInline() const { return PoolHandle == 0; }
  int IsLocked() const { return Locked; }
  int OwnsMemory() const { return AllocatedByThisClass; }
  unsigned long GetSize() const { return Size; }
  ENGHANDLE GetPool() const { return PoolHandle; }
  unsigned long GetOffset() const { return BlockOffset; }

  // Throws VQERR_CORRUPTED for memory whose owner has freed it.
  void* Lock(unsigned long offset = 0);
  VQSTATUS Unlock();
  // No bytes or a null buffer give VQERR_INVALID_PARAMETER; past the end a read gives VQERR_RT_INVALID, anything that
  // writes VQERR_CORRUPTED. Nothing is copied then.
  VQSTATUS Read(unsigned long size, void* buffer, unsigned long offset);
  VQSTATUS Write(unsigned long size, const void* buffer, unsigned long offset);
  // One stored structure, from or to its host form.
  VQSTATUS ReadODS(unsigned short type, void* target, unsigned long offset);
  VQSTATUS WriteODS(unsigned short type, const void* source, unsigned long offset);
  // Shrinks only. Attached memory is cut with the block where the block is all of it; a window only narrows.
  VQSTATUS Resize(unsigned long new_size, int engine_memory);
  // Bytes within the block; the two stretches may overlap. VQERR_OUT_OF_RANGE for no bytes or no distance.
  VQSTATUS Move(unsigned long size, long delta, unsigned long offset);
  // From the start of the source to `offset`; size 0 takes the whole source.
  VQSTATUS CopyFrom(VQMemoryBlock& source, unsigned long offset, unsigned long size);
  VQSTATUS Swap(VQMemoryBlock& other);

 private:
  // Start of the data, locked; null, and not locked, for memory that is gone.
  unsigned char* LockData();
  bool IsInside(unsigned long offset, unsigned long size) const;
  void ClearPlace();
  [[nodiscard]] VQSTATUS ObtainMemory(unsigned long size);
  [[nodiscard]] VQSTATUS MoveInline(unsigned long new_size);
  [[nodiscard]] VQSTATUS MoveToEngine(unsigned long new_size);
  [[nodiscard]] VQSTATUS CutEngineMemory(unsigned long new_size);

  std::uint32_t PoolHandle;
  std::uint32_t BlockOffset;
  unsigned char InlineBuffer[kInlineSize];
  std::uint32_t Size;
  int Locked;
  int AllocatedByThisClass;
};

#endif
