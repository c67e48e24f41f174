#include "vq/richtext/vqrtcrsr.h"

#include "vq/richtext/font.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbase.h"
#include "vq/richtext/vqrtchar.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQCLASSID VQRTCursorBody::GetClassID() const { return VQCLASSID_VQRTCURSORBODY; }

void VQRTCursorBody::Element::MoveTo(unsigned long offset, int rightEdge) {
  VQRTElement::MoveTo(offset, rightEdge);
  *RightEdge = rightEdge;
}

VQRTCursor::VQRTCursor(const VQRTElement& element, int rightEdge) { vq::ThrowIfError(Assign(element, rightEdge)); }

VQRTCursor::VQRTCursor(VQStylizedTextBody* body, unsigned long offset, int rightEdge) {
  vq::ThrowIfError(Assign(body, offset, rightEdge));
}

VQRTCursor& VQRTCursor::operator=(const VQRTCursor& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQCLASSID VQRTCursor::GetClassID() const { return VQCLASSID_VQRTCURSOR; }

VQRTCursorBody* VQRTCursor::GetCursorBody() const { return static_cast<VQRTCursorBody*>(Body); }

VQRTObjectBody* VQRTCursor::GetElementBody() const {
  return IsNull() ? nullptr : GetCursorBody()->RTElement.GetRTObjectBody();
}

VQSTATUS VQRTCursor::Assign(VQStylizedTextBody* body, unsigned long offset, int rightEdge) {
  if (!body || body->IsClosed()) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQRTElement element;
  const VQSTATUS status = element.SetRTChar(body, offset);
  return status != VQ_OK ? status : Assign(element, rightEdge);
}

VQSTATUS VQRTCursor::Assign(const VQRTElement& element, int rightEdge) {
  if (element.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (IsNull()) VQSmartPtr::operator=(new VQRTCursorBody());
  GetCursorBody()->RTElement = element;
  GetCursorBody()->RightEdge = rightEdge != 0;
  return VQ_OK;
}

VQSTATUS VQRTCursor::Copy(const VQRTCursor& other) {
  if (!other.IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  VQRTCursor copy;
  copy.VQSmartPtr::operator=(new VQRTCursorBody());
  VQRTCursorBody& body = *copy.GetCursorBody();
  const VQRTCursorBody& from = *other.GetCursorBody();
  body.RTElement = from.RTElement;
  body.Scope = from.Scope;
  body.SearchOptions = from.SearchOptions;
  body.RightEdge = from.RightEdge;
  VQSmartPtr::operator=(copy);
  return VQ_OK;
}

int VQRTCursor::IsValid() const {
  if (IsNull()) return 0;
  const VQRTElement& element = GetCursorBody()->RTElement;
  const VQRTObjectBody* body = element.GetRTObjectBody();
  if (!body || body->IsClosed()) return 0;
  // A run without a character is no place; its character has gone.
  if (!element.HasOffset() && !body->IsType(VQRTTYPE_ELEMENT)) return 0;
  const VQRTContainer& scope = GetCursorBody()->Scope;
  return scope.IsNull() || (!scope.GetRTContainerBody()->IsClosed() && scope.GetRTContainerBody()->Contains(body));
}

int VQRTCursor::IsValid(const VQRTObject& container) const {
  return IsValid() && container.GetRTBaseContainerBody() &&
         container.GetRTBaseContainerBody()->Contains(GetElementBody());
}

int VQRTCursor::IsValid(const VQRTBaseContainerBody* container) const {
  return IsValid() && container && container->Contains(GetElementBody());
}

VQRTBaseContainerBody* VQRTCursor::ScopeBody() const {
  const VQRTContainer& scope = GetCursorBody()->Scope;
  if (!scope.IsNull()) return scope.GetRTContainerBody();
  VQRTObjectBody* body = GetElementBody();
  VQRTBaseContainerBody* top = body->GetTop();
  return top ? top : body->AsBase();
}

void VQRTCursor::Require() const {
  if (!IsValid()) vq::Throw(VQERR_CURSOR_INVALID);
}

bool VQRTCursor::AtEmptyText() const {
  const VQRTElement& element = GetCursorBody()->RTElement;
  return element.HasOffset() && static_cast<VQStylizedTextBody*>(element.GetRTObjectBody())->GetByteCount() == 0;
}

bool VQRTCursor::OnAttachment() const {
  const VQRTElement& element = GetCursorBody()->RTElement;
  return !element.HasOffset() && element.IsType(VQRTTYPE_ATTACHMENT);
}

void VQRTCursor::Normalize() const {
  VQRTCursorBody& cursor = *GetCursorBody();
  if (!cursor.RightEdge) return;
  VQRTBaseContainerBody* scope = ScopeBody();
  VQRTObject next;
  if (!scope || scope->FindNext(cursor.RTElement, VQRTTYPE_ELEMENT, &next) != VQ_OK) return;
  // A paragraph record or a container's border between the two keeps them apart.
  if (Crosses(*scope, cursor.RTElement.GetRTObjectBody(), next.GetRTObjectBody())) return;
  cursor.RTElement = next;
  cursor.RightEdge = 0;
}

void VQRTCursor::Adopt(const VQRTObject& object) {
  VQRTCursorBody& cursor = *GetCursorBody();
  VQRTBaseContainerBody* scope = ScopeBody();
  VQRTObject element = object;
  int rightEdge = 0;
  if (object.HasOffset() || object.IsType(VQRTTYPE_ELEMENT)) {
    element = object;
  } else if (object.IsType(VQRTTYPE_CONTAINER) &&
             object.GetRTBaseContainerBody()->FindFirst(VQRTTYPE_ELEMENT, &element) == VQ_OK) {
    rightEdge = 0;
  } else if (object.IsType(VQRTTYPE_NEW_PARAGRAPH)) {
    if (scope->FindNext(object, VQRTTYPE_ELEMENT, &element) != VQ_OK) {
      if (scope->FindPrevious(object, VQRTTYPE_ELEMENT, &element) != VQ_OK) return;
      rightEdge = 1;
    }
  } else if (scope->FindPrevious(object, VQRTTYPE_ELEMENT, &element) == VQ_OK) {
    rightEdge = 1;
  } else if (scope->FindNext(object, VQRTTYPE_ELEMENT, &element) != VQ_OK) {
    return;
  }
  cursor.RTElement = element;
  cursor.RightEdge = rightEdge && !AtEmptyText();
}

VQRTCursor& VQRTCursor::operator++() {
  Require();
  Normalize();
  VQRTCursorBody& cursor = *GetCursorBody();
  const bool emptyText = AtEmptyText();
  if (!OnAttachment() && !cursor.RightEdge && !emptyText) {
    cursor.RightEdge = 1;
    return *this;
  }
  VQRTObject next;
  VQRTBaseContainerBody* scope = ScopeBody();
  if (!scope || scope->FindNext(cursor.RTElement, VQRTTYPE_ELEMENT, &next) != VQ_OK) {
    cursor.RightEdge = !emptyText;
    return *this;
  }
  Adopt(next);
  return *this;
}

VQRTCursor& VQRTCursor::operator--() {
  Require();
  VQRTCursorBody& cursor = *GetCursorBody();
  if (cursor.RightEdge) {
    cursor.RightEdge = 0;
    return *this;
  }
  VQRTObject previous;
  VQRTBaseContainerBody* scope = ScopeBody();
  if (!scope || scope->FindPrevious(cursor.RTElement, VQRTTYPE_ELEMENT, &previous) != VQ_OK) return *this;
  const bool crossing = Crosses(*scope, previous.GetRTObjectBody(), cursor.RTElement.GetRTObjectBody());
  Adopt(previous);
  if (crossing && !AtEmptyText() && !OnAttachment()) cursor.RightEdge = 1;
  return *this;
}

bool VQRTCursor::Crosses(const VQRTBaseContainerBody& scope, const VQRTObjectBody* left, VQRTObjectBody* right) {
  if (left == right) return false;
  if (left->GetParent() != right->GetParent()) return true;
  for (VQRTObjectBody* object = scope.PreviousInTree(right); object && object != left;
       object = scope.PreviousInTree(object)) {
    if (object->GetType() == VQRTTYPE_NEW_PARAGRAPH) return true;
  }
  return false;
}

VQRTCursor VQRTCursor::operator++(int) {
  VQRTCursor before;
  vq::ThrowIfError(before.Copy(*this));
  ++*this;
  return before;
}

VQRTCursor VQRTCursor::operator--(int) {
  VQRTCursor before;
  vq::ThrowIfError(before.Copy(*this));
  --*this;
  return before;
}

VQRTCursor& VQRTCursor::operator+=(unsigned long count) {
  Require();
  for (; count > 0; --count) ++*this;
  return *this;
}

VQRTCursor& VQRTCursor::operator-=(unsigned long count) {
  Require();
  for (; count > 0; --count) --*this;
  return *this;
}

VQRTCursor VQRTCursor::operator+(unsigned long count) const {
  VQRTCursor moved;
  vq::ThrowIfError(moved.Copy(*this));
  return moved += count;
}

VQRTCursor VQRTCursor::operator-(unsigned long count) const {
  VQRTCursor moved;
  vq::ThrowIfError(moved.Copy(*this));
  return moved -= count;
}

long VQRTCursor::operator-(const VQRTCursor& other) const {
  if (*this == other) return 0;
  VQRTCursor walker;
  vq::ThrowIfError(walker.Copy(*this));
  const bool right = *this > other;
  for (long count = 1;; ++count) {
    VQRTCursor before;
    vq::ThrowIfError(before.Copy(walker));
    if (right) {
      --walker;
    } else {
      ++walker;
    }
    if (walker == other) return right ? count : -count;
    // Another tree, or a scope that keeps the walk from the other position.
    if (walker == before) vq::Throw(VQERR_CURSOR_INVALID);
  }
}

int VQRTCursor::operator==(const VQRTCursor& other) const {
  Require();
  other.Require();
  Normalize();
  other.Normalize();
  const VQRTCursorBody &a = *GetCursorBody(), &b = *other.GetCursorBody();
  return a.RightEdge == b.RightEdge && a.RTElement == b.RTElement;
}

int VQRTCursor::operator<(const VQRTCursor& other) const {
  Require();
  other.Require();
  Normalize();
  other.Normalize();
  const VQRTCursorBody &a = *GetCursorBody(), &b = *other.GetCursorBody();
  if (a.RTElement == b.RTElement) return !a.RightEdge && b.RightEdge;
  return a.RTElement.IsLeftOf(b.RTElement);
}

int VQRTCursor::operator<=(const VQRTCursor& other) const { return *this < other || *this == other; }
int VQRTCursor::operator>(const VQRTCursor& other) const { return !(*this <= other); }
int VQRTCursor::operator>=(const VQRTCursor& other) const { return !(*this < other); }
int VQRTCursor::operator!=(const VQRTCursor& other) const { return !(*this == other); }

unsigned long VQRTCursor::GetOffset() const {
  Require();
  return GetCursorBody()->RTElement.GetOffset();
}

int VQRTCursor::GetRightEdge() const {
  Require();
  return GetCursorBody()->RightEdge;
}

VQSTATUS VQRTCursor::GetRTObject(VQRTObject* object) const {
  if (!object) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  return vq::Apply(vq::Returned([&] {
    *object = GetCursorBody()->RTElement;
    return VQ_OK;
  }));
}

int VQRTCursor::IsAtEnd() const {
  Require();
  Normalize();
  if (!GetCursorBody()->RightEdge && !AtEmptyText()) return 0;
  VQRTObject next;
  VQRTBaseContainerBody* scope = ScopeBody();
  return !scope || scope->FindNext(GetCursorBody()->RTElement, VQRTTYPE_ELEMENT, &next) != VQ_OK;
}

int VQRTCursor::IsAtStart() const {
  Require();
  if (GetCursorBody()->RightEdge) return 0;
  VQRTObject previous;
  VQRTBaseContainerBody* scope = ScopeBody();
  return !scope || scope->FindPrevious(GetCursorBody()->RTElement, VQRTTYPE_ELEMENT, &previous) != VQ_OK;
}

int VQRTCursor::IsInsertablePosition(VQRTTYPE type) const {
  Require();
  if (!vq::IsRTTypeNumber(type)) vq::Throw(VQERR_OUT_OF_RANGE);
  if (IsAtStart() || IsAtEnd()) return 1;
  if (vq::IsRTType(type, VQRTTYPE_TABLE) && vq::EnclosingTable(GetElementBody())) return 0;
  VQRTObject next;
  return GetNextObject(&next) != VQ_OK || next.IsNull() || !next.IsType(VQRTTYPE_RT_SUBFORM);
}

namespace {

// Null where there is none.
VQSTATUS Give(VQRTObjectBody* body, VQRTObject* object) {
  return vq::Apply(vq::Returned([&] {
    *object = body;
    return body ? VQ_OK : VQWARN_NOT_FOUND;
  }));
}

}  // namespace

VQSTATUS VQRTCursor::GetNextObject(VQRTObject* object) const {
  if (!object) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  Normalize();
  const VQRTCursorBody& cursor = *GetCursorBody();
  VQRTObjectBody* body = cursor.RTElement.GetRTObjectBody();
  if (!cursor.RightEdge) return Give(body, object);
  // At a right edge after normalizing, a run is at its end.
  VQRTBaseContainerBody* scope = ScopeBody();
  while (body && body != scope && !body->GetNext()) body = body->GetParent();
  return Give(body && body != scope ? body->GetNext() : nullptr, object);
}

VQSTATUS VQRTCursor::GetPreviousObject(VQRTObject* object) const {
  if (!object) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  const VQRTCursorBody& cursor = *GetCursorBody();
  VQRTObjectBody* body = cursor.RTElement.GetRTObjectBody();
  if (!cursor.RightEdge && cursor.RTElement.GetOffset() <= 1) {
    const VQRTBaseContainerBody* scope = ScopeBody();
    body = scope ? scope->PreviousInTree(body) : nullptr;
    // The parts of a run or an element are no places.
    for (VQRTObjectBody* owner = body; owner && !IsValid(owner->AsBase()); owner = owner->GetParent()) {
      if (owner->IsType(VQRTTYPE_ELEMENT) || owner->GetType() == VQRTTYPE_STYLIZED_TEXT) body = owner;
    }
  }
  return Give(body, object);
}

VQSTATUS VQRTCursor::GetParentContainer(VQRTTYPE type, VQRTContainer* container) const {
  if (!container) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  return vq::Apply(vq::Returned([&] {
    VQRTObject found;
    const VQSTATUS status = GetCursorBody()->RTElement.GetParentContainer(type, &found);
    if (status == VQ_OK) *container = VQRTContainer(found);
    return status;
  }));
}

VQSTATUS VQRTCursor::GetFontStyle(VQFontStyle* style) const {
  if (!style) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  VQRTObject object = GetCursorBody()->RTElement;
  if (!object.HasOffset()) {
    VQRTObject run;
    VQRTBaseContainerBody* scope = ScopeBody();
    if (!scope || scope->FindPrevious(object, VQRTTYPE_STYLIZED_TEXT, &run) != VQ_OK) {
      *style = VQFontStyle();
      return vq::Apply(style->SetDefaults());
    }
    object = run;
  }
  return vq::Apply(static_cast<VQStylizedTextBody*>(object.GetRTObjectBody())->GetFontStyle(style));
}

VQSTATUS VQRTCursor::RemoveScope() {
  if (IsNull()) return vq::Apply(VQERR_CURSOR_INVALID);
  GetCursorBody()->Scope = VQRTContainer();
  return VQ_OK;
}

VQSTATUS VQRTCursor::SetScope(const VQRTContainer& container) {
  if (!IsValid()) return vq::Apply(VQERR_CURSOR_INVALID);
  if (container.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!container.GetRTContainerBody()->Contains(GetElementBody())) return vq::Apply(VQERR_RT_NOT_MEMBER);
  GetCursorBody()->Scope = container;
  return VQ_OK;
}

VQSTATUS VQRTCursor::SetSearchOptions(unsigned long options) {
  if (IsNull()) return vq::Apply(VQERR_CURSOR_INVALID);
  GetCursorBody()->SearchOptions = options;
  return VQ_OK;
}
