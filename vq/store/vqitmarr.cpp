// VQItemArray and its body.
#include <set>

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/vqcomposite.h"
#include "vq/store/vqslate.h"

VQItemArrayBody::VQItemArrayBody(VQSlateBody* slate, unsigned long flags) : VQItemArrayBody(slate, flags, 0, {}) {}

VQItemArrayBody::VQItemArrayBody(VQSlateBody* slate, unsigned short type, VQCLASSID bodyClass)
    : VQItemArrayBody(slate, 0, type, bodyClass) {}

VQItemArrayBody::VQItemArrayBody(VQSlateBody* slate, unsigned long flags, unsigned short type, VQCLASSID bodyClass)
    : Slate(slate) {
  VQ_ASSERT_TEXT(slate, "slatebody", "VQITEM");
  Slate->AddReference();
  try {
    TakeItems(flags, type, bodyClass);
  } catch (...) {
    ReleaseAll();
    throw;
  }
}

VQItemArrayBody::~VQItemArrayBody() { ReleaseAll(); }

VQCLASSID VQItemArrayBody::GetClassID() const { return VQCLASSID_VQITEMARRAYBODY; }

void VQItemArrayBody::ReleaseAll() {
  for (VQItemBody* item : Entries) item->Release();
  Entries.clear();
  if (Slate != nullptr) Slate->Release();
  Slate = nullptr;
}

void VQItemArrayBody::Take(VQItemBody* item) {
  VQ_ASSERT_TEXT(item, "itemb", "VQITEM");
  Entries.push_back(item);
  item->AddReference();
}

// The later items of a composite value belong to the body of its first.
void VQItemArrayBody::TakeItems(unsigned long flags, unsigned short type, VQCLASSID bodyClass) {
  std::set<std::uint16_t> gathered;
  const std::map<std::uint16_t, VQItemBody*> cached = Slate->CachedItems();
  std::string name(0xFFFF, '\0');
  const unsigned long count = Slate->ItemCount();
  for (unsigned long i = 0; i < count; ++i) {
    vq::ItemPlace place;
    std::uint16_t length = 0;
    std::uint16_t item_flags = 0;
    ENGSTATUS result = EngSlateItemAt(Slate->GetHandle(), static_cast<std::uint32_t>(i), &place.Item);
    if (result == ENG_OK) {
      result = EngItemQuery(Slate->GetHandle(), place.Item, reinterpret_cast<ENGCHAR*>(name.data()), 0xFFFF, &length,
                            &item_flags, &place.Type, &place.Value, &place.Size);
    }
    vq::ThrowIfError(vq::FromEngine(result));
    if ((flags != 0 && (item_flags & flags) == 0) || gathered.contains(place.Item.Block)) continue;
    if (type != 0 && place.Type != type) continue;
    const auto known = cached.find(place.Item.Block);
    VQItemBody* item = known != cached.end() ? known->second : nullptr;
    if (item == nullptr) vq::ThrowIfError(Slate->MakeBody({name.data(), length}, place, &item));
    const VQItem hold(item);
    if (type != 0 && item->GetClassID() != bodyClass) continue;
    Take(item);
    const auto* composite = dynamic_cast<const VQCompositeItemBody*>(item);
    if (composite == nullptr) continue;
    for (const vq::ItemPlace& later : composite->GetExtraPlaces()) gathered.insert(later.Item.Block);
  }
}

VQItemArray::VQItemArray() = default;
VQItemArray::VQItemArray(const VQItemArray& other) = default;
VQItemArray::VQItemArray(VQItemArrayBody* body) : VQSmartPtr(body) {}

VQItemArray& VQItemArray::operator=(const VQItemArray& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQItemArray& VQItemArray::operator=(VQItemArrayBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQItemArray::GetClassID() const { return VQCLASSID_VQITEMARRAY; }

VQItem VQItemArray::operator[](unsigned long index) const {
  if (index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return VQItem(static_cast<VQItemArrayBody*>(Body)->GetItemBody(index));
}

unsigned long VQItemArray::GetCount() const {
  return Body != nullptr ? static_cast<VQItemArrayBody*>(Body)->GetCount() : 0;
}

VQSlate VQItemArray::GetSlate() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return VQSlate(static_cast<VQItemArrayBody*>(Body)->GetSlateBody());
}
