// Finds by type: walks through a tree in stream order, with the characters of runs as elements.
#include "vq/richtext/vqrtchar.h"
#include "vq/richtext/vqstyltx.h"

namespace {

bool WantsCharacters(VQRTTYPE type) { return type == VQRTTYPE_ELEMENT || type == VQRTTYPE_CHAR; }

VQRTObjectBody* LastInside(VQRTObjectBody* object, bool intoElements) {
  for (;;) {
    VQRTBaseContainerBody* container = object->AsBase();
    if (!container || !container->GetLastChild()) return object;
    if (!intoElements && object->IsType(VQRTTYPE_ELEMENT)) return object;
    object = container->GetLastChild();
  }
}

// The object behind one and all that is in it.
VQRTObjectBody* NextBehind(const VQRTObjectBody* object, const VQRTBaseContainerBody* scope) {
  while (object && object != scope) {
    if (object->GetNext()) return object->GetNext();
    object = object->GetParent();
  }
  return nullptr;
}

VQRTObjectBody* Following(const VQRTObjectBody* object, const VQRTBaseContainerBody* scope, bool intoElements) {
  const VQRTBaseContainerBody* container = object->AsBase();
  const bool closed = !intoElements && object != scope && object->IsType(VQRTTYPE_ELEMENT);
  if (container && container->GetFirstChild() && !closed) return container->GetFirstChild();
  return NextBehind(object, scope);
}

VQRTObjectBody* Preceding(const VQRTObjectBody* object, const VQRTBaseContainerBody* scope, bool intoElements) {
  if (object == scope) return nullptr;
  if (object->GetPrevious()) return LastInside(object->GetPrevious(), intoElements);
  VQRTBaseContainerBody* parent = object->GetParent();
  return parent == scope ? nullptr : parent;
}

VQStylizedTextBody* AsRun(VQRTObjectBody* object) {
  return object->GetType() == VQRTTYPE_STYLIZED_TEXT ? static_cast<VQStylizedTextBody*>(object) : nullptr;
}

// Whether the object, or a character of it, is an answer; `last` asks for the run's last character.
bool Take(VQRTObjectBody* object, VQRTTYPE type, bool last, VQRTObject* found) {
  if (WantsCharacters(type)) {
    if (VQStylizedTextBody* run = AsRun(object)) {
      const unsigned long count = last ? run->GetCharacterCount() : 1;
      *found = VQRTChar(run, count == 0 ? 1 : count);
      return true;
    }
  }
  if (!object->IsType(type)) return false;
  *found = object;
  return true;
}

}  // namespace

VQRTObjectBody* VQRTBaseContainerBody::NextInTree(const VQRTObjectBody* object) const {
  return Following(object, this, true);
}

VQRTObjectBody* VQRTBaseContainerBody::PreviousInTree(const VQRTObjectBody* object) const {
  return Preceding(object, this, true);
}

VQRTObjectBody* VQRTBaseContainerBody::NextOfType(const VQRTObjectBody* object, VQRTTYPE type) const {
  VQRTObjectBody* next = NextInTree(object);
  while (next && !next->IsType(type)) next = NextInTree(next);
  return next;
}

VQRTObjectBody* VQRTBaseContainerBody::PreviousOfType(const VQRTObjectBody* object, VQRTTYPE type) const {
  VQRTObjectBody* previous = PreviousInTree(object);
  while (previous && !previous->IsType(type)) previous = PreviousInTree(previous);
  return previous;
}

VQRTObjectBody* VQRTBaseContainerBody::FirstOfType(VQRTTYPE type) const { return NextOfType(this, type); }

VQRTObjectBody* VQRTBaseContainerBody::LastOfType(VQRTTYPE type) const {
  if (!LastChild) return nullptr;
  VQRTObjectBody* last = LastInside(LastChild, true);
  return last->IsType(type) ? last : PreviousOfType(last, type);
}

VQSTATUS VQRTBaseContainerBody::FindFirst(VQRTTYPE type, VQRTObject* found) {
  if (!found) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!vq::IsRTTypeNumber(type)) return VQERR_OUT_OF_RANGE;
  const bool inside = !WantsCharacters(type);
  for (VQRTObjectBody* object = FirstChild; object; object = Following(object, this, inside)) {
    if (Take(object, type, false, found)) return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQRTBaseContainerBody::FindLast(VQRTTYPE type, VQRTObject* found) {
  if (!found) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!vq::IsRTTypeNumber(type)) return VQERR_OUT_OF_RANGE;
  const bool inside = !WantsCharacters(type);
  VQRTObjectBody* object = LastChild ? LastInside(LastChild, inside) : nullptr;
  for (; object; object = Preceding(object, this, inside)) {
    if (Take(object, type, true, found)) return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

namespace {

VQSTATUS CheckFind(const VQRTBaseContainerBody& scope, const VQRTObject& from, VQRTTYPE type, VQRTObject* found) {
  if (!found || from.IsNull()) return VQERR_INVALID_PARAMETER;
  if (scope.IsClosed() || from.GetRTObjectBody()->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (!vq::IsRTTypeNumber(type)) return VQERR_OUT_OF_RANGE;
  return scope.Contains(from.GetRTObjectBody()) ? VQ_OK : VQERR_RT_NOT_MEMBER;
}

}  // namespace

VQSTATUS VQRTBaseContainerBody::FindNext(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) {
  const VQSTATUS status = CheckFind(*this, from, type, found);
  if (status != VQ_OK) return status;
  VQRTObjectBody* object = from.GetRTObjectBody();
  VQStylizedTextBody* run = AsRun(object);
  const bool inside = !WantsCharacters(type);
  if (run && from.HasOffset()) {
    if ((!inside || type == VQRTTYPE_OBJECT) && from.GetOffset() < run->GetCharacterCount()) {
      *found = VQRTChar(run, from.GetOffset() + 1);
      return VQ_OK;
    }
    object = NextBehind(object, this);
  } else if (run && !inside) {
    *found = VQRTChar(run, 1);
    return VQ_OK;
  } else {
    object = Following(object, this, inside);
  }
  for (; object; object = Following(object, this, inside)) {
    if (Take(object, type, false, found)) return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQRTBaseContainerBody::FindPrevious(const VQRTObject& from, VQRTTYPE type, VQRTObject* found) {
  const VQSTATUS status = CheckFind(*this, from, type, found);
  if (status != VQ_OK) return status;
  VQRTObjectBody* object = from.GetRTObjectBody();
  const bool inside = !WantsCharacters(type);
  if (from.GetOffset() > 1 && (!inside || type == VQRTTYPE_OBJECT)) {
    *found = VQRTChar(AsRun(object), from.GetOffset() - 1);
    return VQ_OK;
  }
  for (object = Preceding(object, this, inside); object; object = Preceding(object, this, inside)) {
    if (Take(object, type, true, found)) return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}
