#include "vq/richtext/vqrtwrit.h"

#include <algorithm>
#include <cstring>

namespace vq {

namespace {

constexpr std::uint16_t kMemoryFlags = 16384;
constexpr std::uint32_t kTypeWord = 2;

}  // namespace

RecordWriter::~RecordWriter() {
  if (Bytes) EngMemUnlock(Blocks.back().Memory);
  for (const ItemBlock& block : Blocks) {
    if (block.Memory) EngMemFree(block.Memory);
  }
}

VQSTATUS RecordWriter::Add(VQRTObjectBody& object) {
  const unsigned char* from = nullptr;
  std::uint32_t size = 0;
  if (object.Value) {
    from = object.Value->data();
    size = static_cast<std::uint32_t>(object.Value->size());
  } else if (object.Source) {
    Reading.Lock(object.Source->GetPool());
    if (!Reading.GetBytes()) return VQERR_ITEM_UNINITIALIZED;
    from = Reading.GetBytes() + object.Source->GetBase() + object.Offset;
    size = object.Length;
  }
  if (size == 0) return VQ_OK;  // an object that was made without a record
  const std::uint32_t padded = Padded(size);
  if (!Bytes || Used + padded > Allocated) {
    const VQSTATUS status = OpenBlock(padded);
    if (status != VQ_OK) return status;
  }
  std::memcpy(Bytes + Used, from, size);
  if (padded != size) Bytes[Used + size] = 0;
  Objects.push_back({&object, static_cast<std::uint32_t>(Blocks.size() - 1), Used, padded});
  Used += padded;
  Remaining -= std::min<unsigned long>(Remaining, padded);
  return VQ_OK;
}

VQSTATUS RecordWriter::OpenBlock(std::uint32_t size) {
  VQSTATUS status = CloseBlock();
  if (status != VQ_OK) return status;
  std::uint32_t room = Remaining < kItemTarget - 1 ? static_cast<std::uint32_t>(Remaining) + kTypeWord : kItemTarget;
  room = std::max(std::min(room, kItemTarget), size + kTypeWord);
  ItemBlock block;
  status = FromEngine(EngMemAlloc(kMemoryFlags, room, &block.Memory));
  if (status != VQ_OK) return status;
  Blocks.push_back(block);
  Bytes = static_cast<unsigned char*>(EngMemLock(block.Memory));
  if (!Bytes) return VQERR_INSUFFICIENT_MEMORY;
  Bytes[0] = 1;
  Bytes[1] = 0;
  Used = kTypeWord;
  Allocated = room;
  return VQ_OK;
}

VQSTATUS RecordWriter::CloseBlock() {
  if (!Bytes) return VQ_OK;
  ItemBlock& block = Blocks.back();
  Bytes = nullptr;
  EngMemUnlock(block.Memory);
  VQ_ASSERT_TEXT(Allocated >= Used, "sizeAllocated >= sizeUsed", "VQRTBODY");
  block.Size = Used;
  return Used == Allocated ? VQ_OK : FromEngine(EngMemRealloc(block.Memory, Used));
}

VQSTATUS RecordWriter::Finish() {
  if (Blocks.empty()) {
    const VQSTATUS status = OpenBlock(0);
    if (status != VQ_OK) return status;
  }
  Reading.Unlock();
  return CloseBlock();
}

void RecordWriter::Commit(const std::vector<RecordSource*>& sources) {
  for (const Placed& placed : Objects) placed.Object->Rebind(sources[placed.Block], placed.Offset, placed.Size);
}

}  // namespace vq
