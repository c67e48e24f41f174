// VQSlateBody: the item cache and the items of the open slate.
#include "engine/memory.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "engine/text.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqcomposite.h"
#include "vq/store/vqslate.h"

namespace {

constexpr unsigned long kTypeWord = 2;

bool IsComposite(std::uint16_t type) { return type == TYPE_COMPOSITE; }

VQSTATUS FoundOr(ENGSTATUS result) {
  return (result & ENG_ERROR_MASK) == ENG_ERR_NO_ITEM ? VQWARN_NOT_FOUND : vq::FromEngine(result);
}

VQSTATUS CheckName(std::string_view name) {
  if (name.empty()) return VQERR_NAME_REQUIRED;
  return name.size() > 0xFFFF ? VQERR_INVALID_PARAMETER : VQ_OK;
}

std::uint16_t Length(std::string_view name) { return static_cast<std::uint16_t>(name.size()); }

// Bytes of engine memory while they are looked at.
class LockedValue {
 public:
  explicit LockedValue(const BLOCKID& block) : Pool(block.Pool) {
    auto* start = static_cast<const unsigned char*>(EngMemLock(Pool));
    if (start != nullptr) Bytes = start + block.Block;
  }
  ~LockedValue() {
    if (Bytes != nullptr) EngMemUnlock(Pool);
  }
  LockedValue(const LockedValue&) = delete;
  LockedValue& operator=(const LockedValue&) = delete;
  const unsigned char* Value() const { return Bytes; }

 private:
  ENGHANDLE Pool;
  const unsigned char* Bytes = nullptr;
};

}  // namespace

VQSTATUS VQSlateBody::PlaceOf(std::string_view name, vq::ItemPlace* place) const {
  if (name.empty() || name.size() > 0xFFFF) return VQWARN_NOT_FOUND;
  vq::ItemPlace found;
  const ENGSTATUS result = EngSlateGetItemInfo(SlateHandle, vq::EngineText(name), Length(name), &found.Item,
                                               &found.Type, &found.Value, &found.Size);
  if (result != ENG_OK) return FoundOr(result);
  if (place != nullptr) *place = found;
  return VQ_OK;
}

VQSTATUS VQSlateBody::NextPlaceOf(std::string_view name, const BLOCKID& item, vq::ItemPlace* place) const {
  return FoundOr(EngSlateGetNextItemInfo(SlateHandle, item, vq::EngineText(name), Length(name), &place->Item,
                                         &place->Type, &place->Value, &place->Size));
}

VQSTATUS VQSlateBody::PlacesOf(std::string_view name, std::vector<vq::ItemPlace>* places) const {
  vq::ItemPlace place;
  VQSTATUS status = PlaceOf(name, &place);
  while (status == VQ_OK) {
    places->push_back(place);
    status = NextPlaceOf(name, places->back().Item, &place);
  }
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQItemBody* VQSlateBody::CachedItem(const BLOCKID& item) const {
  for (const VQElement* e = Items.GetFirstElement(); e != nullptr; e = e->Next) {
    auto* body = static_cast<VQItemBody*>(e->Object);
    if (body != nullptr && vq::SameBlock(body->GetItemBlock(), item)) return body;
  }
  return nullptr;
}

VQSTATUS VQSlateBody::FindItem(std::string_view name, VQItemBody** body) {
  vq::ItemPlace place;
  const VQSTATUS status = PlaceOf(name, &place);
  return status == VQ_OK ? BodyFor(name, place, body) : status;
}

VQSTATUS VQSlateBody::BodyFor(std::string_view name, const vq::ItemPlace& place, VQItemBody** body) {
  *body = CachedItem(place.Item);
  return *body != nullptr ? VQ_OK : MakeBody(name, place, body);
}

VQSTATUS VQSlateBody::MakeBody(std::string_view name, const vq::ItemPlace& place, VQItemBody** body) {
  VQItemBody* item = vq::MakeItemBody(this, name, place);
  VQSTATUS status = AddItem(item);
  if (status != VQ_OK) return status;
  status = GatherMore(item);
  if (status != VQ_OK) {
    delete item;
    return status;
  }
  *body = item;
  return VQ_OK;
}

std::map<std::uint16_t, VQItemBody*> VQSlateBody::CachedItems() const {
  std::map<std::uint16_t, VQItemBody*> items;
  for (const VQElement* e = Items.GetFirstElement(); e != nullptr; e = e->Next) {
    auto* item = static_cast<VQItemBody*>(e->Object);
    if (item != nullptr) items.emplace(item->GetItemBlock().Block, item);
  }
  return items;
}

VQSTATUS VQSlateBody::AddItem(VQItemBody* item) {
  const VQSTATUS status = Items.AddObject(item);
  if (status != VQ_OK) {
    delete item;
    return status;
  }
  if (item->GetClassID() == VQCLASSID_VQATTACHMENTBODY) ++AttachmentCount;
  if (item->GetClassID() == VQCLASSID_VQOLEOBJECTBODY) ++OLEObjectCount;
  return VQ_OK;
}

void VQSlateBody::RemoveItem(VQItemBody* item) {
  VQElement* element = nullptr;
  if (Items.GetElement(item, &element) == VQ_OK) Items.DeleteElement(element);
  if (FontTable == item) FontTable = nullptr;
}

// A long composite value goes on in the later items of its name.
VQSTATUS VQSlateBody::GatherMore(VQItemBody* item) {
  if (!IsComposite(item->GetType())) return VQ_OK;
  auto* composite = dynamic_cast<VQCompositeItemBody*>(item);
  if (composite == nullptr) return VQ_OK;
  std::string name;
  vq::ItemPlace place;
  VQSTATUS status = vq::Caught([&] {
    name = item->GetNameText();
    return NextPlaceOf(name, item->GetItemBlock(), &place);
  });
  while (status == VQ_OK) {
    if (IsComposite(place.Type)) status = composite->AddBlockID(place.Item, place.Value, place.Size);
    const BLOCKID previous = place.Item;
    if (status == VQ_OK) status = NextPlaceOf(name, previous, &place);
  }
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQSTATUS VQSlateBody::AppendItem(std::string_view name, unsigned short type, const void* data, unsigned long size,
                                 unsigned short flags, vq::ItemPlace* place) {
  if (size > UINT32_MAX - kTypeWord) return VQERR_INVALID_PARAMETER;
  vq::ItemPlace made;
  made.Size = static_cast<std::uint32_t>(kTypeWord + size);
  made.Type = type;
  const ENGSTATUS result = EngItemAppend(SlateHandle, flags, vq::EngineText(name), Length(name), type, data,
                                         static_cast<std::uint32_t>(size), &made.Item, &made.Value);
  if (result != ENG_OK) return vq::FromEngine(result);
  Dirty = 1;
  if (place != nullptr) *place = made;
  return VQ_OK;
}

VQSTATUS VQSlateBody::AppendCopy(std::string_view name, unsigned short flags, const vq::ItemPlace& source) {
  const LockedValue value(source.Value);
  if (value.Value() == nullptr || source.Size < kTypeWord) return VQERR_ITEM_UNINITIALIZED;
  return AppendItem(name, vq::LoadWord(value.Value()), value.Value() + kTypeWord, source.Size - kTypeWord, flags,
                    nullptr);
}

// What CreateItem does about items of the name that are there. `join` is set when the new value belongs to the one
// item that is.
VQSTATUS VQSlateBody::ResolveOption(std::string_view name, VQITEMOPTION option, std::vector<vq::ItemPlace>* present,
                                    bool* join) const {
  VQSTATUS status = CheckName(name);
  if (status == VQ_OK) status = PlacesOf(name, present);
  if (status != VQ_OK) return status;
  *join = false;
  switch (option) {
    case VQITEMOPTION_APPEND:
      *join = present->size() == 1;
      return present->size() > 1 ? VQERR_ITEM_EXISTS : VQ_OK;
    case VQITEMOPTION_REPLACE:
      return VQ_OK;
    case VQITEMOPTION_UNIQUE:
      return present->empty() ? VQ_OK : VQERR_ITEM_EXISTS;
  }
  return VQERR_INVALID_PARAMETER;
}

// The old items go once the new one stands.
VQSTATUS VQSlateBody::DropItems(const std::vector<vq::ItemPlace>& places) {
  for (const vq::ItemPlace& place : places) {
    if (VQSTATUS status = DropItem(place)) return status;
  }
  return VQ_OK;
}

VQSTATUS VQSlateBody::DropItem(const vq::ItemPlace& place) {
  VQItemBody* body = CachedItem(place.Item);
  NoteShown(place.Item);
  const ENGSTATUS result = EngItemDelete(SlateHandle, place.Item);
  if (result != ENG_OK) return vq::FromEngine(result);
  Dirty = 1;
  if (body == nullptr) return VQ_OK;
  body->MarkDeleted();
  RemoveItem(body);
  return VQ_OK;
}

VQSTATUS VQSlateBody::TakeItemsAside(unsigned long first, unsigned long count) {
  std::vector<VQItemBody*> bodies;
  if (Items.GetCount() > 0) {
    for (unsigned long i = first; i < first + count; ++i) {
      BLOCKID item{};
      const ENGSTATUS result = EngSlateItemAt(SlateHandle, static_cast<std::uint32_t>(i), &item);
      if (result != ENG_OK) return vq::FromEngine(result);
      if (VQItemBody* body = CachedItem(item)) bodies.push_back(body);
    }
  }
  const ENGSTATUS result =
      EngSlateSetItemsAside(SlateHandle, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(count));
  if (result != ENG_OK) return vq::FromEngine(result);
  Dirty = 1;
  for (VQItemBody* body : bodies) {
    body->MarkDeleted();
    RemoveItem(body);
  }
  return VQ_OK;
}

VQSTATUS VQSlateBody::RestoreItems() {
  const ENGSTATUS result = EngSlateRestoreItems(SlateHandle);
  if (result == ENG_OK) Dirty = 1;
  return vq::FromEngine(result);
}

VQSTATUS VQSlateBody::CreateItem(std::string_view name, unsigned short type, const void* data, unsigned long size,
                                 unsigned short flags, VQITEMOPTION option, vq::ItemPlace* place) {
  std::vector<vq::ItemPlace> present;
  bool join = false;
  VQSTATUS status = ResolveOption(name, option, &present, &join);
  if (status != VQ_OK) return status;
  if (join) return JoinItem(name, present.front(), type, data, size, place);
  status = AppendItem(name, type, data, size, flags, place);
  return status == VQ_OK ? DropItems(present) : status;
}

VQSTATUS VQSlateBody::CreateCopy(std::string_view name, VQItemBody* source, unsigned short flags, VQITEMOPTION option,
                                 vq::ItemPlace* place) {
  VQSTATUS status = source->CheckValue();
  if (status == VQ_OK && source->IsDirty()) status = source->Flush();
  if (status != VQ_OK) return status;
  std::vector<vq::ItemPlace> present;
  bool join = false;
  status = ResolveOption(name, option, &present, &join);
  if (status != VQ_OK) return status;
  if (join && present.front().Type == TYPE_COMPOSITE) {
    VQItemBody* body = nullptr;
    status = BodyFor(name, present.front(), &body);
    if (status != VQ_OK) return status;
    const VQItem hold(body);
    status = body->Join(source);
    return status == VQ_OK && place != nullptr ? PlaceOf(name, place) : status;
  }
  if (join) {
    // Bytes of its own, since the source may be the item that grows.
    std::vector<unsigned char> value(source->GetValueSize() - kTypeWord);
    status = source->Read(0, value.size(), value.data());
    if (status != VQ_OK) return status;
    return JoinItem(name, present.front(), source->GetType(), value.data(), value.size(), place);
  }
  status = source->CopyInto(this, name, flags, place);
  if (status == VQ_OK) return DropItems(present);
  // Half a copy is none.
  std::vector<vq::ItemPlace> now;
  if (PlacesOf(name, &now) == VQ_OK && now.size() > present.size()) {
    now.erase(now.begin(), now.begin() + static_cast<std::ptrdiff_t>(present.size()));
    DropItems(now);
  }
  return status;
}

VQSTATUS VQSlateBody::DeleteItems(std::string_view name) {
  std::vector<vq::ItemPlace> places;
  const VQSTATUS status = PlacesOf(name, &places);
  if (status != VQ_OK) return status;
  return places.empty() ? VQWARN_NOT_FOUND : DropItems(places);
}

VQSTATUS VQSlateBody::DeleteOneItem(VQItemBody* item) {
  const VQSTATUS status = item->CheckValue();
  if (status != VQ_OK) return status;
  std::vector<vq::ItemPlace> places{{item->GetItemBlock(), {}, 0, 0}};
  if (auto* composite = dynamic_cast<VQCompositeItemBody*>(item)) {
    const std::vector<vq::ItemPlace>& more = composite->GetExtraPlaces();
    places.insert(places.end(), more.begin(), more.end());
  }
  return DropItems(places);
}

VQSTATUS VQSlateBody::DeleteAllItems() {
  std::vector<vq::ItemPlace> places;
  const unsigned long count = ItemCount();
  for (unsigned long i = 0; i < count; ++i) {
    vq::ItemPlace place;
    const ENGSTATUS result = EngSlateItemAt(SlateHandle, static_cast<std::uint32_t>(i), &place.Item);
    if (result != ENG_OK) return vq::FromEngine(result);
    places.push_back(place);
  }
  return DropItems(places);
}

VQSTATUS VQSlateBody::DeleteItemsOfType(unsigned short type) {
  std::vector<vq::ItemPlace> places;
  const unsigned long count = ItemCount();
  for (unsigned long i = 0; i < count; ++i) {
    vq::ItemPlace place;
    ENGSTATUS result = EngSlateItemAt(SlateHandle, static_cast<std::uint32_t>(i), &place.Item);
    if (result == ENG_OK) {
      result = EngItemQuery(SlateHandle, place.Item, nullptr, 0, nullptr, nullptr, &place.Type, nullptr, nullptr);
    }
    if (result != ENG_OK) return vq::FromEngine(result);
    if (place.Type == type) places.push_back(place);
  }
  return DropItems(places);
}

unsigned long VQSlateBody::ItemCount() const {
  std::uint32_t count = 0;
  vq::ThrowIfError(vq::FromEngine(EngSlateItemCount(SlateHandle, &count)));
  return count;
}

// One item is renamed in place; of several, which the engine could not tell apart halfway, copies take the new name.
VQSTATUS VQSlateBody::RenameItems(std::string_view name, std::string_view new_name) {
  VQSTATUS status = CheckName(new_name);
  std::vector<vq::ItemPlace> places;
  if (status == VQ_OK) status = PlacesOf(name, &places);
  if (status != VQ_OK) return status;
  if (places.empty()) return VQWARN_NOT_FOUND;
  VQItemBody* cached = CachedItem(places.front().Item);
  if (places.size() > 1) return RenameSeveral(places, cached, new_name);
  if (cached != nullptr) return RenameOneItem(cached, new_name);
  const ENGSTATUS result = EngItemRename(SlateHandle, places.front().Item, vq::EngineText(new_name), Length(new_name));
  if ((result & ENG_ERROR_MASK) == ENG_ERR_ITEM_EXISTS) return VQERR_ITEM_EXISTS;
  if (result == ENG_OK) Dirty = 1;
  return vq::FromEngine(result);
}

// The pieces of a long composite value stay together.
VQSTATUS VQSlateBody::RenameOneItem(VQItemBody* item, std::string_view new_name) {
  VQSTATUS status = item->CheckValue();
  if (status == VQ_OK) status = CheckName(new_name);
  if (status != VQ_OK) return status;
  const auto* composite = dynamic_cast<const VQCompositeItemBody*>(item);
  if (composite != nullptr && !composite->GetExtraPlaces().empty()) {
    return RenameItems(std::string(item->GetNameText()), new_name);
  }
  status = item->SetName(new_name);
  if (status == VQ_OK) Dirty = 1;
  return status;
}

VQSTATUS VQSlateBody::RenameSeveral(const std::vector<vq::ItemPlace>& places, VQItemBody* first,
                                    std::string_view new_name) {
  if (PlaceOf(new_name, nullptr) == VQ_OK) return VQERR_ITEM_EXISTS;
  VQSTATUS status = first != nullptr && first->IsDirty() ? first->Flush() : VQ_OK;
  for (std::size_t i = 0; status == VQ_OK && i < places.size(); ++i) {
    std::uint16_t flags = 0;
    vq::ItemPlace source = places[i];
    status = vq::FromEngine(
        EngItemQuery(SlateHandle, source.Item, nullptr, 0, nullptr, &flags, &source.Type, &source.Value, &source.Size));
    if (status == VQ_OK) status = AppendCopy(new_name, flags, source);
  }
  if (status != VQ_OK) {
    DeleteItems(new_name);
    return status;
  }
  vq::ItemPlace place;
  status = PlaceOf(new_name, &place);
  if (status == VQ_OK && first != nullptr) {
    first->TakeName(new_name);
    status = first->Rebind(place);
    if (status == VQ_OK) status = GatherMore(first);
  }
  return status == VQ_OK ? DropItems(places) : status;
}

VQSTATUS VQSlateBody::ForEachItem(VQSTATUS (VQSlateBody::*step)(VQItemBody*)) {
  for (VQElement* e = Items.GetFirstElement(); e != nullptr;) {
    VQElement* next = e->Next;
    if (e->Object != nullptr) {
      auto* item = static_cast<VQItemBody*>(e->Object);
      const VQSTATUS status = vq::Caught([&] { return (this->*step)(item); });
      if (VQIsError(status)) return status;
    }
    e = next;
  }
  return VQ_OK;
}

VQSTATUS VQSlateBody::FlushOne(VQItemBody* item) {
  return item != FontTable && item->IsDirty() ? item->Flush() : VQ_OK;
}

VQSTATUS VQSlateBody::PrepareOne(VQItemBody* item) {
  return (item->GetState() & VQItemBody::kDeleted) != 0 ? VQ_OK : item->PrepareForSave();
}

VQSTATUS VQSlateBody::RebindOne(VQItemBody* item) {
  vq::ItemPlace place;
  place.Item = item->GetItemBlock();
  const ENGSTATUS result =
      EngItemQuery(SlateHandle, place.Item, nullptr, 0, nullptr, nullptr, &place.Type, &place.Value, &place.Size);
  if ((result & ENG_ERROR_MASK) == ENG_ERR_NO_ITEM) {
    item->MarkDeleted();
    return VQ_OK;
  }
  if (result != ENG_OK) return vq::FromEngine(result);
  item->SetDirty(0);
  const VQSTATUS status = item->Rebind(place);
  return status == VQ_OK ? GatherMore(item) : status;
}

VQSTATUS VQSlateBody::RereadOne(VQItemBody* item) {
  item->ForgetContent();
  return RebindOne(item);
}

// Writing rich text may add fonts, so that their table comes last.
VQSTATUS VQSlateBody::FlushItems() {
  VQSTATUS status = ForEachItem(&VQSlateBody::FlushOne);
  if (status == VQ_OK) status = vq::Caught([&] { return SettleShown(); });
  if (status != VQ_OK || FontTable == nullptr || !FontTable->IsDirty()) return status;
  return vq::Caught([&] { return FontTable->Flush(); });
}

VQSTATUS VQSlateBody::PrepareItems() { return ForEachItem(&VQSlateBody::PrepareOne); }
VQSTATUS VQSlateBody::RebindItems() { return ForEachItem(&VQSlateBody::RebindOne); }
VQSTATUS VQSlateBody::RereadItems() { return ForEachItem(&VQSlateBody::RereadOne); }

// The entries of a text item; none for an item of another type or with a damaged list.
void VQSlateBody::ReadTexts(std::string_view name, std::vector<std::string>* texts) const {
  vq::ItemPlace place;
  const VQSTATUS status = PlaceOf(name, &place);
  vq::ThrowIfError(status);
  if (status != VQ_OK || place.Size <= kTypeWord) return;
  const LockedValue value(place.Value);
  if (value.Value() == nullptr) return;
  const auto* bytes = reinterpret_cast<const char*>(value.Value());
  if (place.Type == TYPE_TEXT) texts->emplace_back(bytes + kTypeWord, place.Size - kTypeWord);
  if (place.Type != TYPE_TEXT_LIST || EngTextListVerify(bytes, 1, place.Size) != ENG_OK) return;
  const std::uint16_t count = EngTextListCount(bytes, 1);
  const ENGCHAR* text = nullptr;
  std::uint16_t length = 0;
  if (count == 0 || EngTextListGetEntry(bytes, 1, 0, &text, &length) != ENG_OK) return;
  texts->reserve(texts->size() + count);
  // The texts stand one behind the other.
  const unsigned char* lengths = value.Value() + 2 * kTypeWord;
  for (std::uint16_t i = 0; i < count; ++i) {
    length = vq::LoadWord(lengths + 2 * i);
    texts->emplace_back(reinterpret_cast<const char*>(text), length);
    text += length;
  }
}
