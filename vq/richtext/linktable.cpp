#include "vq/richtext/linktable.h"

#include "engine/slate.h"
#include "vq/richtext/recsrc.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/vqslate.h"

namespace vq {

namespace {

constexpr std::string_view kLinks = "$Links";
constexpr std::string_view kFormLinks = "$FormLinks";
constexpr std::uint32_t kTypeWord = 2;

std::string_view NameIn(const VQSlateBody& slate) {
  const bool form = (slate.GetSlateClass() & VQSLATECLASS_FORM) != 0 &&
                    (slate.GetDesignKind() == VQDESIGNKIND_FORM || slate.GetDesignKind() == VQDESIGNKIND_SUBFORM);
  return form ? kFormLinks : kLinks;
}

bool PointsIntoTable(const VQRTObjectBody& object) {
  return object.IsType(VQRTTYPE_LINK) || object.GetType() == VQRTTYPE_LINK_HOTSPOT;
}

}  // namespace

bool IsLinkTableName(std::string_view name) { return name == kLinks || name == kFormLinks; }

VQSTATUS LinkTable::Read(VQSlateBody& slate) {
  Parts.clear();
  if (!slate.IsOpen()) return VQERR_SLATE_NOT_OPEN;
  const std::string_view name = NameIn(slate);
  ItemPlace place;
  VQSTATUS status = slate.PlaceOf(name, &place);
  while (status == VQ_OK) {
    std::uint16_t flags = 0;
    status =
        FromEngine(EngItemQuery(slate.GetHandle(), place.Item, nullptr, 0, nullptr, &flags, nullptr, nullptr, nullptr));
    if (status != VQ_OK) return status;
    const MemoryLock lock(place.Value.Pool);
    if (!lock.GetBytes() || place.Size < kTypeWord) return VQERR_ITEM_UNINITIALIZED;
    const char* value = reinterpret_cast<const char*>(lock.GetBytes()) + place.Value.Block;
    Parts.push_back({place.Type, flags, std::string(value + kTypeWord, place.Size - kTypeWord)});
    const BLOCKID item = place.Item;
    status = slate.NextPlaceOf(name, item, &place);
  }
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQSTATUS LinkTable::Write(VQSlateBody& slate) const {
  const std::string_view name = NameIn(slate);
  for (const Part& part : Parts) {
    VQSTATUS status = slate.AppendItem(name, part.Type, part.Data.data(), part.Data.size(), part.Flags, nullptr);
    if (status == VQ_OK) continue;
    // What was appended goes; the first failure is what counts.
    static_cast<void>(slate.DeleteItems(name));
    return status;
  }
  return VQ_OK;
}

bool HoldsLinks(const VQRTObjectBody& object) {
  if (PointsIntoTable(object)) return true;
  const VQRTBaseContainerBody* container = object.AsBase();
  if (!container) return false;
  const VQRTObjectBody* inside = container->NextInTree(container);
  while (inside && !PointsIntoTable(*inside)) inside = container->NextInTree(inside);
  return inside != nullptr;
}

VQSTATUS BringLinks(const VQRTObjectBody& object, VQRichTextBody* source, VQRichTextBody* target) {
  if (!source || !target || source == target || !HoldsLinks(object)) return VQ_OK;
  if (source->IsSlateItem() && source->GetSlateBody() == target->GetSlateBody()) return VQ_OK;
  LinkTable theirs, ours;
  VQSTATUS status = source->FindLinks(&theirs);
  if (status == VQ_OK && !theirs.IsEmpty()) status = target->FindLinks(&ours);
  if (status != VQ_OK || theirs.IsEmpty() || theirs == ours) return status;
  return ours.IsEmpty() ? target->TakeLinks(theirs) : VQERR_WRONG_SITUATION;
}

}  // namespace vq

VQSTATUS VQRichTextBody::FindLinks(vq::LinkTable* links) {
  if (IsSlateItem()) return links->Read(*GetSlateBody());
  *links = OwnLinks ? *OwnLinks : vq::LinkTable();
  return VQ_OK;
}

VQSTATUS VQRichTextBody::TakeLinks(const vq::LinkTable& links) {
  if (IsSlateItem()) return links.Write(*GetSlateBody());
  OwnLinks = std::make_unique<vq::LinkTable>(links);
  return VQ_OK;
}
