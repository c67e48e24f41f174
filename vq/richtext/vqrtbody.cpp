#include "vq/richtext/vqrtbody.h"

#include "engine/memory.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/pabindex.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtinit.h"
#include "vq/richtext/vqrtwrit.h"
#include "vq/store/vqslate.h"

namespace vq {

VQItemBody* MakeRichTextBody(VQSlateBody* slate, std::string_view name, const ItemPlace& place) {
  return new VQRichTextBody(slate, name, place);
}

}  // namespace vq

namespace {

ENGHANDLE EmptyValue() {
  ENGHANDLE memory = 0;
  vq::ThrowIfError(vq::FromEngine(EngMemAlloc(16384, 2, &memory)));
  const vq::MemoryLock lock(memory);
  lock.GetBytes()[0] = 1;
  lock.GetBytes()[1] = 0;
  return memory;
}

}  // namespace

VQRichTextBody::VQRichTextBody() : VQRichTextBody(EmptyValue(), 2) {}

VQRichTextBody::VQRichTextBody(ENGHANDLE memory, unsigned long size)
    : VQCompositeItemBody(std::string_view(), 0, TYPE_COMPOSITE, BLOCKID{memory, 0}, size),
      Top(nullptr),
      InitState(kNotParsed) {
  SetState(kOwnsValue, true);
}

VQRichTextBody::VQRichTextBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : VQCompositeItemBody(slate, name, place), Top(nullptr), InitState(kNotParsed) {}

VQRichTextBody::~VQRichTextBody() { VQRichTextBody::Close(); }

VQSTATUS VQRichTextBody::Close() {
  if (InitState == kParsing) return VQERR_WRONG_SITUATION;  // by the parser's error handler
  const VQSTATUS status = VQCompositeItemBody::Close();
  if (status == VQWARN_NOT_OPEN) return status;
  DropTree();
  FreeExtraBlocks();
  return status;
}

VQCLASSID VQRichTextBody::GetClassID() const { return VQCLASSID_VQRICHTEXTBODY; }

VQSTATUS VQRichTextBody::Clear() {
  const VQSTATUS status = Initialize();
  return status != VQ_OK ? status : Top->DeleteAllChildren();
}

int VQRichTextBody::IsDirty() { return (Top && Top->IsDirty()) || VQCompositeItemBody::IsDirty(); }

VQSTATUS VQRichTextBody::Initialize() {
  if (InitState == kParsed) return VQ_OK;
  if ((State & kOpen) == 0) return VQERR_OBJECT_CLOSED;
  if (InitState == kParsing) return VQERR_WRONG_SITUATION;
  const VQSTATUS status = CheckValue();
  return status != VQ_OK ? status : Parse();
}

VQSTATUS VQRichTextBody::Parse() {
  InitState = kParsing;
  VQSTATUS status = VQ_OK;
  try {
    LoadBlocks();
    Top = new VQRTContainerBody(VQRTTYPE_RICH_TEXT, static_cast<unsigned short>(0));
    Top->AddReference();
    status = Top->SetTopContainer(this);
    if (status == VQ_OK) status = VQRichTextParser(*this).Run();
  } catch (...) {
    DropTree();
    throw;
  }
  // What a load takes out of the tree, by the error handler's leave, is no edit.
  if (status == VQ_OK && Top->IsDirty()) status = Top->SetDirty(0);
  if (status == VQ_OK) {
    InitState = kParsed;
    return VQ_OK;
  }
  DropTree();
  return status;
}

void VQRichTextBody::LoadBlocks() {
  const auto load = [this](const BLOCKID& value, std::uint32_t size) {
    auto* source = new vq::RecordSource(value.Pool, value.Block);
    source->AddReference();
    Blocks.push_back({source, size});
  };
  Blocks.reserve(Blocks.size() + 1 + GetExtraPlaces().size());
  load(GetValueBlock(), ValueSize);
  for (const vq::ItemPlace& place : GetExtraPlaces()) load(place.Value, place.Size);
}

void VQRichTextBody::ReleaseBlocks(std::vector<Loaded>& blocks) {
  for (const Loaded& block : blocks) block.Source->Release();
  blocks.clear();
}

vq::PABIndex& VQRichTextBody::GetPABIndex() {
  if (!Paragraphs) Paragraphs = std::make_unique<vq::PABIndex>(*Top);
  return *Paragraphs;
}

void VQRichTextBody::DropPABIndex() { Paragraphs.reset(); }

void VQRichTextBody::DropTree() {
  InitState = kNotParsed;
  NoteStructure();
  Paragraphs.reset();
  if (Top) {
    VQRTContainerBody* top = Top;
    vq::Edit::Abandon(*top);
    Top = nullptr;
    top->Close();
    top->Release();
  }
  ReleaseBlocks(Blocks);
}

void VQRichTextBody::FreeExtraBlocks() {
  if (IsSlateItem()) return;
  for (const vq::ItemPlace& place : GetExtraPlaces()) EngMemFree(place.Value.Pool);
  VQCompositeItemBody::Rebound();
}

void VQRichTextBody::MoveBlock(std::size_t index, const BLOCKID& value, std::uint32_t size) {
  if (Blocks.empty()) return;
  if (index < Blocks.size() && Blocks[index].Size == size) {
    Blocks[index].Source->Move(value.Pool, value.Block);
  } else {
    DropTree();
  }
}

VQSTATUS VQRichTextBody::Rebound() {
  // Pending changes are gone when an item is read back; a save leaves none.
  if (!Blocks.empty() && Top && Top->IsDirty()) DropTree();
  MoveBlock(0, GetValueBlock(), ValueSize);
  return VQCompositeItemBody::Rebound();
}

void VQRichTextBody::MarkDeleted() {
  VQCompositeItemBody::MarkDeleted();
  DropTree();
}

VQSTATUS VQRichTextBody::AddBlockID(const BLOCKID& item, const BLOCKID& value, unsigned long size) {
  const VQSTATUS status = VQCompositeItemBody::AddBlockID(item, value, size);
  if (status == VQ_OK) MoveBlock(GetExtraPlaces().size(), value, static_cast<std::uint32_t>(size));
  return status;
}

VQSTATUS VQRichTextBody::Flush() {
  if (!Top || !Top->IsDirty()) return IsSlateItem() ? VQCompositeItemBody::Flush() : VQ_OK;
  return StoreTree();
}

VQSTATUS VQRichTextBody::StoreTree() {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  // Values that this body owns alone are all made anew.
  vq::RecordWriter writer(*Top, IsSlateItem() ? std::span<const Loaded>(Blocks) : std::span<const Loaded>());
  status = writer.Check();
  if (status == VQ_OK) status = writer.Write();
  if (status != VQ_OK) return status;

  // The old blocks are set aside: while the new ones are bound there is no tree to move.
  std::vector<Loaded> old;
  old.swap(Blocks);
  try {
    status = IsSlateItem() ? StoreBlocks(writer.GetBlocks()) : TakeBlocks(writer.GetBlocks());
  } catch (...) {
    Blocks.swap(old);
    throw;
  }
  if (status != VQ_OK) {
    Blocks.swap(old);
    return status;
  }
  try {
    LoadBlocks();
  } catch (...) {
    // All is stored, and can be read from there.
    ReleaseBlocks(old);
    DropTree();
    throw;
  }
  writer.Commit(Blocks);
  Top->SetFlag(VQRTOBJECTBODY_DIRTY, false);  // the one object without a record
  ReleaseBlocks(old);
  SetState(kDirty, false);
  return VQ_OK;
}

VQSTATUS VQRichTextBody::TakeBlocks(std::vector<vq::ItemBlock>& blocks) {
  FreeExtraBlocks();
  const VQSTATUS status = Free();
  if (status != VQ_OK) return status;
  ValueBlockID = BLOCKID{blocks[0].Memory, 0};
  ValueSize = blocks[0].Size;
  SetState(kOwnsValue, true);
  blocks[0].Memory = 0;
  for (std::size_t i = 1; i < blocks.size(); ++i) {
    const VQSTATUS added = VQCompositeItemBody::AddBlockID(BLOCKID{}, BLOCKID{blocks[i].Memory, 0}, blocks[i].Size);
    if (added != VQ_OK) return added;
    blocks[i].Memory = 0;
  }
  return VQ_OK;
}

VQSTATUS VQRichTextBody::WriteBlocks(std::vector<vq::ItemBlock>* blocks) {
  if (!blocks) return VQERR_INVALID_PARAMETER;
  VQSTATUS status = Initialize();
  if (status != VQ_OK) return status;
  vq::RecordWriter writer(*Top, {});
  status = writer.Check();
  if (status == VQ_OK) status = writer.Write();
  if (status == VQ_OK) blocks->swap(writer.GetBlocks());
  return status;
}

VQSTATUS VQRichTextBody::MoveInto(VQRTBaseContainerBody& container, VQRTObjectBody* before) {
  VQSTATUS status = Initialize();
  if (status != VQ_OK) return status;
  if (IsSlateItem() || (State & kOwnsValue) == 0) return VQERR_WRONG_SITUATION;
  const ENGHANDLE empty = EmptyValue();
  // The values go with the objects that look into them.
  for (const Loaded& block : Blocks) block.Source->TakeValue();
  ReleaseBlocks(Blocks);
  VQCompositeItemBody::Rebound();
  SetState(kOwnsValue, false);
  status = Free();
  ValueBlockID = BLOCKID{empty, 0};
  ValueSize = 2;
  SetState(kOwnsValue, true);
  return status != VQ_OK ? status : container.TakeChildren(*Top, before);
}
