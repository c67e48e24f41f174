#include "vq/richtext/vqrtwrit.h"

#include <algorithm>
#include <cstring>

#include "vq/richtext/rtcheck.h"
#include "vq/richtext/vqrtbase.h"

namespace vq {

namespace {

constexpr std::uint16_t kMemoryFlags = 16384;
constexpr std::uint32_t kTypeWord = 2;
constexpr unsigned long kRoom = kItemTarget - kTypeWord;

// Records that lead an object are its first children; those of the whole tree stand for themselves.
bool LeadsIn(const VQRTObjectBody& object, const VQRTBaseContainerBody& top) {
  if (object.GetParent() == &top) return false;
  const VQRTObjectBody* at = &object;
  while (at && at->LeadsParent()) at = at->GetPrevious();
  return at == nullptr;
}

// The object and what leads it.
unsigned long BytesOf(const VQRTObjectBody& object) {
  unsigned long bytes = Padded(object.GetRecordSize());
  const VQRTBaseContainerBody* container = object.AsBase();
  for (const VQRTObjectBody* child = container ? container->GetFirstChild() : nullptr; child && child->LeadsParent();
       child = child->GetNext()) {
    bytes += Padded(child->GetRecordSize());
  }
  return bytes;
}

}  // namespace

RecordWriter::RecordWriter(VQRTBaseContainerBody& top, std::span<const LoadedBlock> loaded)
    : Top(top), Loaded(loaded), Stretches(FindStretches()) {}

RecordWriter::~RecordWriter() {
  if (Bytes) EngMemUnlock(Blocks.back().Memory);
  for (const ItemBlock& block : Blocks) {
    if (block.Memory) EngMemFree(block.Memory);
  }
}

VQSTATUS RecordWriter::Check() const {
  StreamCheck check;
  for (const Stretch& stretch : Stretches) {
    if (stretch.Kept && stretch.Kept->Source->IsBalanced() && check.IsOutside()) continue;
    for (const VQRTObjectBody* object = stretch.First; object != stretch.End; object = Top.NextInTree(object)) {
      const VQSTATUS status = check.Take(*object);
      if (status != VQ_OK) return status;
    }
  }
  return check.IsClosed() ? VQ_OK : VQERR_RT_INVALID;
}

VQSTATUS RecordWriter::Write() {
  FillRoom();
  for (std::size_t i = 0; i < Stretches.size(); ++i) {
    const Stretch& stretch = Stretches[i];
    if (!stretch.Kept && (i == 0 || Stretches[i - 1].Kept)) {
      for (std::size_t j = i; j < Stretches.size() && !Stretches[j].Kept; ++j) Remaining += Stretches[j].Bytes;
    }
    const VQSTATUS status = stretch.Kept ? Keep(*stretch.Kept) : WriteStretch(stretch);
    if (status != VQ_OK) return status;
  }
  if (Blocks.empty()) {
    const VQSTATUS status = OpenBlock(0);
    if (status != VQ_OK) return status;
  }
  Reading.Unlock();
  return CloseBlock();
}

VQRTObjectBody* RecordWriter::NextObject(const VQRTObjectBody* object) const {
  VQRTObjectBody* next = Top.NextInTree(object);
  while (next && next->LeadsParent() && LeadsIn(*next, Top)) next = Top.NextInTree(next);
  return next;
}

std::vector<RecordWriter::Stretch> RecordWriter::FindStretches() const {
  std::vector<Stretch> stretches;
  std::size_t next = 0;
  for (VQRTObjectBody* object = NextObject(&Top); object;) {
    if (const LoadedBlock* block = UnchangedBlock(*object, &next)) {
      VQRTObjectBody* end = NextObject(block->Source->GetLast());
      stretches.push_back({object, end, block->Size - kTypeWord, block});
      object = end;
      continue;
    }
    if (stretches.empty() || stretches.back().Kept) stretches.push_back({object, nullptr, 0, nullptr});
    stretches.back().Bytes += BytesOf(*object);
    object = NextObject(object);
    stretches.back().End = object;
  }
  return stretches;
}

const LoadedBlock* RecordWriter::UnchangedBlock(const VQRTObjectBody& object, std::size_t* next) const {
  const VQRTBaseContainerBody* container = object.AsBase();
  const VQRTObjectBody* first = &object;
  if (container && container->GetFirstChild() && container->GetFirstChild()->LeadsParent()) {
    first = container->GetFirstChild();
  }
  const RecordSource* source = first->Content.GetSource();
  if (!source || source->IsOutdated() || first->Content.GetOffset() != kTypeWord || !source->GetLast()) return nullptr;
  for (std::size_t i = *next; i < Loaded.size(); ++i) {
    if (Loaded[i].Source != source) continue;
    if (Loaded[i].Size > kItemTarget) return nullptr;
    *next = i + 1;
    return &Loaded[i];
  }
  return nullptr;
}

// Else many small edits would leave many small blocks behind.
void RecordWriter::FillRoom() {
  for (std::size_t i = 0; i < Stretches.size(); ++i) {
    if (Stretches[i].Kept) continue;
    unsigned long last = Stretches[i].Bytes % kRoom;
    if (i > 0 && Stretches[i - 1].Bytes + Stretches[i].Bytes <= kRoom) {
      Stretches[i - 1].Kept = nullptr;
      last += Stretches[i - 1].Bytes;
    }
    if (i + 1 < Stretches.size() && last + Stretches[i + 1].Bytes <= kRoom) Stretches[++i].Kept = nullptr;
  }
}

VQSTATUS RecordWriter::WriteStretch(const Stretch& stretch) {
  for (VQRTObjectBody* object = stretch.First; object != stretch.End; object = NextObject(object)) {
    const VQSTATUS status = object->Update(*this);
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}

VQSTATUS RecordWriter::Keep(const LoadedBlock& block) {
  VQSTATUS status = CloseBlock();
  if (status != VQ_OK) return status;
  const bool moved = Blocks.size() != static_cast<std::size_t>(&block - Loaded.data());
  ItemBlock& kept = AddBlock(block.Source);
  kept = {0, block.Size, true};
  if (moved) {
    Reading.Lock(block.Source->GetPool());
    if (!Reading.GetBytes()) return VQERR_ITEM_UNINITIALIZED;
    status = FromEngine(EngMemAlloc(kMemoryFlags, block.Size, &kept.Memory));
    if (status != VQ_OK) return status;
    const MemoryLock copy(kept.Memory);
    std::memcpy(copy.GetBytes(), Reading.GetBytes() + block.Source->GetBase(), block.Size);
    kept.Kept = false;
  }
  return VQ_OK;
}

// Its memory comes afterwards, when it has an owner.
ItemBlock& RecordWriter::AddBlock(RecordSource* kept) {
  KeptSources.push_back(kept);
  FirstObjects.push_back(Objects.size());
  Blocks.emplace_back();
  return Blocks.back();
}

VQSTATUS RecordWriter::Add(VQRTObjectBody& object) {
  const unsigned char* from = nullptr;
  std::uint32_t size = 0;
  const RecordContent& content = object.Content;
  if (content.IsOwn()) {
    from = content.GetBytes();
    size = content.GetSize();
  } else if (const RecordSource* source = content.GetSource()) {
    Reading.Lock(source->GetPool());
    if (!Reading.GetBytes()) return VQERR_ITEM_UNINITIALIZED;
    from = Reading.GetBytes() + source->GetBase() + content.GetOffset();
    size = content.GetLength();
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
  ItemBlock& block = AddBlock(nullptr);
  status = FromEngine(EngMemAlloc(kMemoryFlags, room, &block.Memory));
  if (status != VQ_OK) return status;
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

void RecordWriter::Commit(std::span<LoadedBlock> stored) {
  for (std::size_t block = 0; block < Blocks.size(); ++block) {
    RecordSource* source = stored[block].Source;
    if (RecordSource* kept = KeptSources[block]) {
      kept->Move(source->GetPool(), source->GetBase());
      kept->AddReference();
      source->Release();
      stored[block].Source = kept;
      continue;
    }
    const std::size_t end = block + 1 < Blocks.size() ? FirstObjects[block + 1] : Objects.size();
    std::uint32_t offset = kTypeWord;
    source->SetBalanced(true);
    for (std::size_t i = FirstObjects[block]; i < end; ++i) {
      const std::uint32_t size = Padded(Objects[i]->GetRecordSize());
      Objects[i]->Rebind(source, offset, size);
      offset += size;
      source->SetLast(Objects[i]);
      if (ChangesNesting(StreamType(*Objects[i]))) source->SetBalanced(false);
    }
    // What leads an object of the next block is written with it.
    if (end > FirstObjects[block] && end < Objects.size() && LeadsIn(*Objects[end - 1], Top)) {
      source->SetOutdated();
      stored[block + 1].Source->SetOutdated();
    }
  }
}

}  // namespace vq
