#include "vq/store/vqcomposite.h"

#include <algorithm>

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"

VQCLASSID VQCompositeItemBody::GetClassID() const { return VQCLASSID_VQCOMPOSITEITEMBODY; }

unsigned long VQCompositeItemBody::GetEntryCount() { return GetValueSize() > 2 ? 1 : 0; }
VQSTATUS VQCompositeItemBody::Collapse() { return VQ_OK; }
VQSTATUS VQCompositeItemBody::MakeList() { return VQ_OK; }

VQSTATUS VQCompositeItemBody::Rebound() {
  ExtraPlaces.clear();
  return VQ_OK;
}

VQSTATUS VQCompositeItemBody::AddBlockID(const BLOCKID& item, const BLOCKID& value, unsigned long size) {
  ExtraPlaces.push_back({item, value, static_cast<std::uint32_t>(size), TYPE_COMPOSITE});
  return VQ_OK;
}

VQSTATUS VQCompositeItemBody::CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                       vq::ItemPlace* first) {
  VQSTATUS status = VQItemBody::CopyInto(slate, name, flags, first);
  for (std::size_t i = 0; status == VQ_OK && i < ExtraPlaces.size(); ++i) {
    status = slate->AppendCopy(name, flags, ExtraPlaces[i]);
  }
  return status;
}

VQSTATUS VQCompositeItemBody::PlaceOf(const BLOCKID& item, vq::ItemPlace* place) const {
  place->Item = item;
  return vq::FromEngine(
      EngItemQuery(Slate->GetHandle(), item, nullptr, 0, nullptr, nullptr, &place->Type, &place->Value, &place->Size));
}

VQSTATUS VQCompositeItemBody::AppendBlocks(std::span<vq::ItemBlock> blocks, std::vector<vq::ItemPlace>& appended) {
  const unsigned short flags = GetFlags();
  const std::string name(GetNameText());
  for (vq::ItemBlock& block : blocks) {
    vq::ItemPlace place;
    const ENGSTATUS result =
        EngItemAppendBlock(Slate->GetHandle(), flags, vq::EngineText(name), static_cast<std::uint16_t>(name.size()),
                           block.Memory, block.Size, &place.Item);
    if (result != ENG_OK) return vq::FromEngine(result);
    block.Memory = 0;
    appended.push_back(place);
  }
  return VQ_OK;
}

VQSTATUS VQCompositeItemBody::ReplaceBlocks(std::span<vq::ItemBlock> blocks, std::span<const vq::ItemPlace> places) {
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (blocks[i].Kept) continue;
    const ENGSTATUS result = EngItemReplaceBlock(Slate->GetHandle(), places[i].Item, blocks[i].Memory, blocks[i].Size);
    if (result != ENG_OK) return vq::FromEngine(result);
    blocks[i].Memory = 0;
  }
  return VQ_OK;
}

VQSTATUS VQCompositeItemBody::StoreBlocks(std::span<vq::ItemBlock> blocks) {
  VQSTATUS status = CheckValue();
  if (status != VQ_OK) return status;
  if (Slate == nullptr) return VQERR_NOT_IN_SLATE;
  if (blocks.empty()) return VQERR_INVALID_PARAMETER;
  while (LockCount > 0) Unlock();
  std::vector<vq::ItemPlace> places{{ItemBlockID, {}, 0, 0}};
  places.insert(places.end(), ExtraPlaces.begin(), ExtraPlaces.end());
  const std::size_t replaced = std::min(places.size(), blocks.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (i >= replaced || !blocks[i].Kept) Slate->NoteShown(places[i].Item);
  }
  for (const vq::ItemBlock& block : blocks) {
    if (!block.Kept) Slate->NoteShown(block);
  }
  // New items first: they are what can fail, and they can be taken away again.
  std::vector<vq::ItemPlace> appended;
  status = AppendBlocks(blocks.subspan(replaced), appended);
  if (status == VQ_OK) status = ReplaceBlocks(blocks.first(replaced), places);
  if (status != VQ_OK) {
    for (const vq::ItemPlace& made : appended) EngItemDelete(Slate->GetHandle(), made.Item);
    return status;
  }
  while (places.size() > replaced) {
    status = vq::FromEngine(EngItemDelete(Slate->GetHandle(), places.back().Item));
    if (status != VQ_OK) return status;
    places.pop_back();
    ExtraPlaces.pop_back();
  }
  places.insert(places.end(), appended.begin(), appended.end());
  return BindPlaces(places);
}

VQSTATUS VQCompositeItemBody::BindPlaces(std::span<vq::ItemPlace> places) {
  for (vq::ItemPlace& place : places) {
    const VQSTATUS status = PlaceOf(place.Item, &place);
    if (status != VQ_OK) return status;
  }
  VQSTATUS status = Rebind(places.front());
  for (std::size_t i = 1; status == VQ_OK && i < places.size(); ++i) {
    status = AddBlockID(places[i].Item, places[i].Value, places[i].Size);
  }
  return status;
}
