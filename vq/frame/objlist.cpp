// Object lists, plain and sorted by key.
#include "vq/frame/objlist.h"

#include <memory>
#include <new>

namespace {

constexpr char kFile[] = "OBJLIST";

}  // namespace

VQElement::VQElement(VQQuillonClass* object)
    : Next(nullptr), Previous(nullptr), Object(object), ObjectList(nullptr), SortKey(0) {
  if (Object != nullptr) Object->Element = this;
}

VQElement::~VQElement() {
  if (Object != nullptr) Object->Element = nullptr;
}

VQObjectList::VQObjectList() : Count(0), First(nullptr), Last(nullptr), Spare(nullptr) {}

VQObjectList::~VQObjectList() {
  DeleteAllObjects();
  delete Spare;
}

VQElement* VQObjectList::MakeElement(VQQuillonClass* object) {
  VQElement* element = Spare;
  if (element == nullptr) return new (std::nothrow) VQElement(object);
  Spare = nullptr;
  return new (element) VQElement(object);
}

VQCLASSID VQObjectList::GetClassID() const { return VQCLASSID_VQOBJECTLIST; }

void VQObjectList::CheckInvariant() const {
  VQ_ASSERT_TEXT((Count && First && Last) || (Count == 0 && First == nullptr && Last == nullptr),
                 "(Count && First && Last) || (Count == 0 && First == 0 && Last == 0)", kFile);
}

VQSTATUS VQObjectList::CheckObject(const VQQuillonClass* object) const {
  if (object == nullptr) return VQERR_NULL_POINTER;
  if (object->Element != nullptr) return VQERR_ALREADY_IN_LIST;
  if (!object->IsOnHeap()) return VQERR_NOT_ON_HEAP;
  return VQ_OK;
}

VQSTATUS VQObjectList::AddObject(VQQuillonClass* object) {
  if (const VQSTATUS status = CheckObject(object)) return vq::Apply(status);
  VQElement* element = MakeElement(object);
  if (element == nullptr) return vq::Apply(VQERR_INSUFFICIENT_MEMORY);
  AddElement(element);
  return VQ_OK;
}

void VQObjectList::AddElement(VQElement* element) {
  VQ_ASSERT(element, kFile);
  CheckInvariant();
  element->Next = nullptr;
  element->Previous = Last;
  element->ObjectList = this;
  (Last != nullptr ? Last->Next : First) = element;
  Last = element;
  ++Count;
}

void VQObjectList::DeleteElement(VQElement* element) {
  VQ_ASSERT(element && element->ObjectList == this, kFile);
  CheckInvariant();
  (element->Previous != nullptr ? element->Previous->Next : First) = element->Next;
  (element->Next != nullptr ? element->Next->Previous : Last) = element->Previous;
  --Count;
  if (Spare != nullptr) {
    delete element;
    return;
  }
  element->~VQElement();
  Spare = new (element) VQElement(nullptr);
}

VQSTATUS VQObjectList::GetElement(const VQQuillonClass* object, VQElement** element) const {
  if (object == nullptr || element == nullptr) return VQERR_NULL_POINTER;
  if (object->Element == nullptr || object->Element->ObjectList != this) return VQERR_NOT_IN_LIST;
  *element = object->Element;
  return VQ_OK;
}

VQObjectList* VQObjectList::GetListOf(const VQQuillonClass* object) {
  return object == nullptr || object->Element == nullptr ? nullptr : object->Element->ObjectList;
}

VQQuillonClass* VQObjectList::GetFirst() const { return First == nullptr ? nullptr : First->Object; }

VQQuillonClass* VQObjectList::GetLast() const { return Last == nullptr ? nullptr : Last->Object; }

VQQuillonClass* VQObjectList::GetNext(const VQQuillonClass* object) const {
  if (object == nullptr) return GetFirst();
  VQElement* element;
  if (GetElement(object, &element) != VQ_OK || element->Next == nullptr) return nullptr;
  return element->Next->Object;
}

VQQuillonClass* VQObjectList::GetPrevious(const VQQuillonClass* object) const {
  if (object == nullptr) return GetLast();
  VQElement* element;
  if (GetElement(object, &element) != VQ_OK || element->Previous == nullptr) return nullptr;
  return element->Previous->Object;
}

VQSTATUS VQObjectList::RemoveObject(VQQuillonClass* object) {
  VQElement* element;
  if (const VQSTATUS status = GetElement(object, &element)) return vq::Apply(status);
  DeleteElement(element);
  return VQ_OK;
}

namespace {

bool IsHeld(const VQQuillonClass* object) {
  return object->IsBody() && static_cast<const VQBody*>(object)->GetRefCount() > 0;
}

}  // namespace

VQSTATUS VQObjectList::DeleteObject(VQQuillonClass* object) {
  if (const VQSTATUS status = RemoveObject(object)) return status;
  if (!IsHeld(object)) delete object;
  return VQ_OK;
}

void VQObjectList::DeleteAllObjects() {
  while (Last != nullptr) {
    VQQuillonClass* object = Last->Object;
    DeleteElement(Last);
    if (object == nullptr) continue;
    if (IsHeld(object)) {
      static_cast<VQBody*>(object)->ForceClose();
    } else {
      delete object;
    }
  }
  if (Count != 0 || First != nullptr) vq::AssertionFailed("Count == 0 && First == 0", kFile, 365);
}

VQCLASSID VQSortedObjectList::GetClassID() const { return VQCLASSID_VQSORTEDOBJECTLIST; }

VQSTATUS VQSortedObjectList::AddObject(VQQuillonClass*) { return vq::Apply(VQERR_SORT_KEY_REQUIRED); }

VQSTATUS VQSortedObjectList::AddObject(VQQuillonClass* object, unsigned long key) {
  if (const VQSTATUS status = CheckObject(object)) return vq::Apply(status);
  if (key > 0xFFFFFFFFUL) return vq::Apply(VQERR_OUT_OF_RANGE);
  VQElement* element = MakeElement(object);
  if (element == nullptr) return vq::Apply(VQERR_INSUFFICIENT_MEMORY);
  element->SortKey = static_cast<std::uint32_t>(key);
  InsertElement(element);
  return VQ_OK;
}

void VQSortedObjectList::InsertElement(VQElement* element) {
  CheckInvariant();
  if (Last == nullptr || element->SortKey >= Last->SortKey) {
    AddElement(element);
    return;
  }
  VQElement* p = First;
  while (p != nullptr && p->SortKey < element->SortKey) p = p->Next;
  VQ_ASSERT_TEXT(p != nullptr, "p != 0", kFile);
  if (p->Previous == nullptr) VQ_ASSERT(First == p, kFile);
  element->ObjectList = this;
  element->Next = p;
  element->Previous = p->Previous;
  (p->Previous != nullptr ? p->Previous->Next : First) = element;
  p->Previous = element;
  ++Count;
}

VQElement* VQSortedObjectList::FindElement(unsigned long key) const {
  CheckInvariant();
  if (Last == nullptr || key > Last->SortKey) return nullptr;
  VQElement* element = First;
  while (element != nullptr && element->SortKey != key) element = element->Next;
  return element;
}

VQQuillonClass* VQSortedObjectList::FindObject(unsigned long key) const {
  const VQElement* element = FindElement(key);
  return element == nullptr ? nullptr : element->Object;
}

VQSTATUS VQSortedObjectList::DeleteElementByKey(unsigned long key) {
  VQElement* element = FindElement(key);
  if (element == nullptr) return VQWARN_NOT_FOUND;
  DeleteElement(element);
  return VQ_OK;
}

VQSTATUS VQSortedObjectList::DeleteObjectByKey(unsigned long key) {
  VQElement* element = FindElement(key);
  if (element == nullptr) return VQWARN_NOT_FOUND;
  VQQuillonClass* object = element->Object;
  DeleteElement(element);
  if (object != nullptr && !IsHeld(object)) delete object;
  return VQ_OK;
}

VQSTATUS VQSortedObjectList::GetKey(const VQQuillonClass* object, unsigned long* key) const {
  if (key == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQElement* element;
  if (const VQSTATUS status = GetElement(object, &element)) return vq::Apply(status);
  *key = element->SortKey;
  return VQ_OK;
}

unsigned long VQSortedObjectList::GetGreatestKey() const { return Last == nullptr ? 0 : Last->SortKey; }

VQSTATUS VQSortedObjectList::SetKey(const VQQuillonClass* object, unsigned long key) {
  VQElement* element;
  if (const VQSTATUS status = GetElement(object, &element)) return vq::Apply(status);
  const bool above_next = element->Next != nullptr && key > element->Next->SortKey;
  const bool below_previous = element->Previous != nullptr && key < element->Previous->SortKey;
  if (above_next || below_previous || key > 0xFFFFFFFFUL) return vq::Apply(VQERR_OUT_OF_RANGE);
  element->SortKey = static_cast<std::uint32_t>(key);
  return VQ_OK;
}
