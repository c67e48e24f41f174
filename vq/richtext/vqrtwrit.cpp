#include "vq/richtext/vqrtwrit.h"

#include <algorithm>
#include <cstring>

namespace vq {

namespace {

constexpr std::uint16_t kMemoryFlags = 16384;
constexpr std::uint32_t kTypeWord = 2;
constexpr unsigned long kUsualRecord = 32;  // bytes, as a first guess of how many come

}  // namespace

RecordWriter::RecordWriter(unsigned long total) : Remaining(total) { Objects.reserve(total / kUsualRecord); }

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
  Objects.push_back(&object);
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
  FirstObjects.push_back(Objects.size());
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
  for (std::size_t block = 0, i = 0; block < FirstObjects.size(); ++block) {
    const std::size_t end = block + 1 < FirstObjects.size() ? FirstObjects[block + 1] : Objects.size();
    for (std::uint32_t offset = kTypeWord; i < end; ++i) {
      const std::uint32_t size = Padded(Objects[i]->GetRecordSize());
      Objects[i]->Rebind(sources[block], offset, size);
      offset += size;
    }
  }
}

}  // namespace vq
