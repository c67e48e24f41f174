#include "vq/richtext/linktable.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "engine/records.h"
#include "engine/slate.h"
#include "vq/richtext/recsrc.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/store/vqslate.h"

namespace vq {

namespace {

constexpr std::string_view kLinks = "$Links";
constexpr std::string_view kFormLinks = "$FormLinks";
constexpr std::uint32_t kTypeWord = 2;
constexpr std::uint32_t kLinkPosition = 4;      // in a link's record
constexpr std::uint32_t kHotspotPosition = 12;  // in a link hotspot's
// Of a link that leads nowhere; links stand in lower ones.
constexpr std::size_t kNowhere = 0xFFFF;

std::string_view NameIn(const VQSlateBody& slate) {
  const bool form = (slate.GetSlateClass() & VQSLATECLASS_FORM) != 0 &&
                    (slate.GetDesignKind() == VQDESIGNKIND_FORM || slate.GetDesignKind() == VQDESIGNKIND_SUBFORM);
  return form ? kFormLinks : kLinks;
}

bool PointsIntoTable(const VQRTObjectBody& object) {
  return object.IsType(VQRTTYPE_LINK) || object.GetType() == VQRTTYPE_LINK_HOTSPOT;
}

// False for a record that ends before its position, which leads nowhere.
bool ReadPosition(const VQRTObjectBody& link, std::uint32_t offset, std::size_t* position) {
  const RecordBytes bytes(link);
  RecordHeader header;
  if (!ReadRecordHeader(bytes.Get(), bytes.GetSize(), &header)) return false;
  const std::uint32_t length = std::min(header.Length, bytes.GetSize());
  if (length < offset + 2) return false;
  *position = LoadWord(bytes.Get() + offset);
  return true;
}

// Objects of a tree that have a position of their own.
template <typename Work>
VQSTATUS ForEachLink(VQRTObjectBody& object, Work work) {
  const VQRTBaseContainerBody* container = object.AsBase();
  for (VQRTObjectBody* each = &object; each; each = container ? container->NextInTree(each) : nullptr) {
    if (!PointsIntoTable(*each)) continue;
    const bool hotspot = each->GetType() == VQRTTYPE_LINK_HOTSPOT;
    if (hotspot && each->AsBase()->FirstOfType(VQRTTYPE_LINK)) continue;
    const std::uint32_t offset = hotspot ? kHotspotPosition : kLinkPosition;
    std::size_t position = kNowhere;
    if (!ReadPosition(*each, offset, &position)) continue;
    if (VQSTATUS status = work(*each, offset, position)) return status;
  }
  return VQ_OK;
}

VQSTATUS WritePosition(VQRTObjectBody& link, std::uint32_t offset, std::size_t position) {
  const unsigned char word[] = {static_cast<unsigned char>(position), static_cast<unsigned char>(position >> 8)};
  return link.WriteRecord(offset, word, sizeof word);
}

}  // namespace

VQSTATUS LinkTable::GetLinks(std::vector<std::string>* links) const {
  for (const Part& part : Parts) {
    if (part.Type != TYPE_COMPOSITE) return VQERR_WRONG_SITUATION;
    const auto* bytes = reinterpret_cast<const unsigned char*>(part.Data.data());
    const auto size = static_cast<std::uint32_t>(part.Data.size());
    for (std::uint32_t at = 0; at < size;) {
      RecordHeader header;
      if (!ReadRecordHeader(bytes + at, size - at, &header) || header.Length > size - at) return VQERR_WRONG_SITUATION;
      links->push_back(part.Data.substr(at, header.Length));
      at += Padded(header.Length);
    }
  }
  return links->size() < kNowhere ? VQ_OK : VQERR_OUT_OF_RANGE;
}

LinkTable LinkTable::Of(const std::string& records) {
  LinkTable table;
  table.Parts.push_back({TYPE_COMPOSITE, 0, records});
  return table;
}

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

VQSTATUS LinkTable::Write(VQSlateBody& slate, std::vector<BLOCKID>* items) const {
  const std::string_view name = NameIn(slate);
  std::vector<BLOCKID> made;
  made.reserve(Parts.size());
  for (const Part& part : Parts) {
    ItemPlace place;
    VQSTATUS status = Caught(
        [&] { return slate.AppendItem(name, part.Type, part.Data.data(), part.Data.size(), part.Flags, &place); });
    if (status == VQ_OK) {
      made.push_back(place.Item);
      continue;
    }
    for (const BLOCKID& each : made) EngItemDelete(slate.GetHandle(), each);
    return status;
  }
  if (items) items->swap(made);
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

namespace {

// Positions in a table for the links of another one, which are put behind its own where they are new.
class Joining {
 public:
  VQSTATUS Start(const LinkTable& theirs, const LinkTable& ours) {
    std::vector<std::string> present;
    VQSTATUS status = theirs.GetLinks(&Theirs);
    if (status == VQ_OK) status = ours.GetLinks(&present);
    for (std::string& link : present) Ours.try_emplace(std::move(link), Count++);
    return status;
  }
  std::size_t PositionOf(std::size_t old) {
    if (old >= Theirs.size()) return kNowhere;
    const auto [link, isNew] = Ours.try_emplace(Theirs[old], Count);
    if (!isNew) return link->second;
    Added += Theirs[old];
    Added.resize(Padded(static_cast<std::uint32_t>(Added.size())));
    return Count++;
  }
  bool Fits() const { return Count < kNowhere; }
  const std::string& GetAdded() const { return Added; }

 private:
  std::vector<std::string> Theirs;
  std::unordered_map<std::string, std::size_t> Ours;  // their first positions
  std::size_t Count = 0;
  std::string Added;
};

}  // namespace

VQSTATUS BringLinks(VQRTObjectBody& object, VQRichTextBody* source, VQRichTextBody* target) {
  if (!source || !target || source == target || !HoldsLinks(object)) return VQ_OK;
  if (source->IsSlateItem() && source->GetSlateBody() == target->GetSlateBody()) return VQ_OK;
  LinkTable theirs, ours;
  VQSTATUS status = source->FindLinks(&theirs);
  if (status == VQ_OK) status = target->FindLinks(&ours);
  if (status != VQ_OK || theirs == ours) return status;
  // What has led nowhere, for want of a table, does not come to lead into the other text's.
  if (theirs.IsEmpty()) return LoseLinks(object);
  if (ours.IsEmpty()) {
    status = LoseLinks(*target->GetTop());
    return status == VQ_OK ? target->TakeLinks(theirs) : status;
  }
  Joining joining;
  status = joining.Start(theirs, ours);
  if (status != VQ_OK) return status;
  status = ForEachLink(object, [&](VQRTObjectBody&, std::uint32_t, std::size_t old) {
    joining.PositionOf(old);
    return joining.Fits() ? VQ_OK : VQERR_OUT_OF_RANGE;
  });
  if (status == VQ_OK && !joining.GetAdded().empty()) status = target->TakeLinks(LinkTable::Of(joining.GetAdded()));
  if (status != VQ_OK) return status;
  return ForEachLink(object, [&](VQRTObjectBody& link, std::uint32_t offset, std::size_t old) {
    return WritePosition(link, offset, joining.PositionOf(old));
  });
}

VQSTATUS LoseLinks(VQRTObjectBody& object) {
  return ForEachLink(object, [&](VQRTObjectBody& link, std::uint32_t offset, std::size_t old) {
    return old == kNowhere ? VQ_OK : WritePosition(link, offset, kNowhere);
  });
}

VQSTATUS ShiftLinks(VQRTObjectBody& object, unsigned long distance) {
  VQSTATUS status = ForEachLink(object, [&](VQRTObjectBody&, std::uint32_t, std::size_t old) {
    return old == kNowhere || old + distance < kNowhere ? VQ_OK : VQERR_OUT_OF_RANGE;
  });
  if (status != VQ_OK) return status;
  return ForEachLink(object, [&](VQRTObjectBody& link, std::uint32_t offset, std::size_t old) {
    return old == kNowhere ? VQ_OK : WritePosition(link, offset, old + distance);
  });
}

}  // namespace vq

VQSTATUS VQRichTextBody::FindLinks(vq::LinkTable* links) {
  if (IsSlateItem()) return links->Read(*GetSlateBody());
  *links = OwnLinks ? *OwnLinks : vq::LinkTable();
  return VQ_OK;
}

namespace {

// Of an edit: what it added to a link table goes again.
class AddedLinks : public vq::Change {
 public:
  explicit AddedLinks(VQRichTextBody& text) : Text(&text) {}
  void Undo() override {
    if (VQSlateBody* slate = Items.empty() ? nullptr : Text.GetRichTextBody()->GetSlateBody()) {
      for (const BLOCKID& item : Items) EngItemDelete(slate->GetHandle(), item);
    }
    if (Own) *Own = std::move(Before);
  }

  VQRichText Text;
  std::vector<BLOCKID> Items;
  vq::LinkTable* Own = nullptr;
  vq::LinkTable Before;
};

}  // namespace

VQSTATUS VQRichTextBody::TakeLinks(const vq::LinkTable& links) {
  vq::Edit* edit = Top ? vq::Edit::Of(*Top) : nullptr;
  auto made = std::make_unique<AddedLinks>(*this);
  AddedLinks& added = *made;
  if (edit) edit->Add(std::move(made));
  if (IsSlateItem()) return links.Write(*GetSlateBody(), &added.Items);
  if (!OwnLinks) OwnLinks = std::make_unique<vq::LinkTable>();
  vq::LinkTable all = *OwnLinks;
  all.Add(links);
  added.Before = std::exchange(*OwnLinks, std::move(all));
  added.Own = OwnLinks.get();
  return VQ_OK;
}
