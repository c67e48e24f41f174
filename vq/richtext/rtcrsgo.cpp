// Cursor motion: by type, by text, to the ends of containers.
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbase.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

VQSTATUS VQRTCursor::Arrive(VQSTATUS status, const VQRTObject& found, VQRTObject* object) {
  // A character is reported as its run.
  if (status == VQ_OK && object) {
    const VQRTObject reported(found.GetRTObjectBody());
    status = object->CheckType(reported);
    if (status == VQ_OK) *object = reported;
  }
  if (status == VQ_OK) Adopt(found);
  return vq::Apply(status);
}

VQSTATUS VQRTCursor::CheckMotion(VQRTTYPE type) const {
  if (!IsValid()) return VQERR_CURSOR_INVALID;
  if (!ScopeBody()) return VQERR_CURSOR_NO_PARENT;
  return vq::IsRTTypeNumber(type) ? VQ_OK : VQERR_OUT_OF_RANGE;
}

VQSTATUS VQRTCursor::GotoFirst(VQRTTYPE type, VQRTObject* object) {
  const VQSTATUS status = CheckMotion(type);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTObject found;
  // The first paragraph starts at the first element.
  const VQRTTYPE sought = type == VQRTTYPE_NEW_PARAGRAPH ? VQRTTYPE_ELEMENT : type;
  return Arrive(ScopeBody()->FindFirst(sought, &found), found, object);
}

VQSTATUS VQRTCursor::GotoLast(VQRTTYPE type, VQRTObject* object) {
  const VQSTATUS status = CheckMotion(type);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTObject found;
  return Arrive(ScopeBody()->FindLast(type, &found), found, object);
}

VQSTATUS VQRTCursor::GotoNext(VQRTTYPE type, VQRTObject* object) {
  const VQSTATUS status = CheckMotion(type);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTObject found;
  return Arrive(ScopeBody()->FindNext(GetCursorBody()->RTElement, type, &found), found, object);
}

VQSTATUS VQRTCursor::GotoPrevious(VQRTTYPE type, VQRTObject* object) {
  VQSTATUS status = CheckMotion(type);
  if (status != VQ_OK) return vq::Apply(status);
  VQRTBaseContainerBody* scope = ScopeBody();
  const VQRTElement element = GetCursorBody()->RTElement;
  VQRTObject found;
  status = scope->FindPrevious(element, type, &found);
  if (type != VQRTTYPE_NEW_PARAGRAPH) return Arrive(status, found, object);
  // A paragraph record stands for the element behind it: at a paragraph's start that is where the cursor is already.
  VQRTObject behind;
  if (status == VQ_OK && GetCursorBody()->RightEdge == 0 &&
      scope->FindNext(found, VQRTTYPE_ELEMENT, &behind) == VQ_OK && behind == element) {
    const VQRTObject here = found;
    status = scope->FindPrevious(here, type, &found);
  }
  if (status == VQWARN_NOT_FOUND) status = scope->FindFirst(VQRTTYPE_ELEMENT, &found);
  return Arrive(status, found, object);
}

VQSTATUS VQRTCursor::GotoObject(const VQRTObject& object) {
  if (IsNull()) return vq::Apply(VQERR_CURSOR_INVALID);
  if (object.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQRTObjectBody* body = object.GetRTObjectBody();
  if (body->IsClosed()) return vq::Apply(VQERR_OBJECT_CLOSED);
  const VQRTContainer& scope = GetCursorBody()->Scope;
  VQRTBaseContainerBody* top = scope.IsNull() ? body->GetTop() : scope.GetRTContainerBody();
  if (!top || !top->Contains(body)) return vq::Apply(VQERR_RT_NOT_MEMBER);
  VQRTObject element = object;
  if (object.IsType(VQRTTYPE_CONTAINER)) {
    const VQSTATUS status = body->AsBase()->FindFirst(VQRTTYPE_ELEMENT, &element);
    if (status != VQ_OK) return vq::Apply(status);
  } else if (!object.IsType(VQRTTYPE_ELEMENT)) {
    const VQSTATUS status = top->FindNext(object, VQRTTYPE_ELEMENT, &element);
    if (status != VQ_OK) return vq::Apply(status);
  }
  GetCursorBody()->RTElement = element;
  GetCursorBody()->RightEdge = 0;
  return VQ_OK;
}

VQSTATUS VQRTCursor::GotoContainerEnd(VQRTObjectBody* container, bool end) {
  const VQRTContainer& scope = GetCursorBody()->Scope;
  if (!scope.IsNull() && !scope.GetRTContainerBody()->Contains(container)) return VQERR_RT_NOT_MEMBER;
  VQRTObject found;
  VQRTBaseContainerBody* base = container->AsBase();
  const VQSTATUS status = end ? base->FindLast(VQRTTYPE_ELEMENT, &found) : base->FindFirst(VQRTTYPE_ELEMENT, &found);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQERR_RT_NOT_MEMBER : status;
  GetCursorBody()->RTElement = found;
  GetCursorBody()->RightEdge = end && !AtEmptyText();
  return VQ_OK;
}

VQSTATUS VQRTCursor::GotoTypeEnd(VQRTTYPE type, bool end) {
  const VQSTATUS status = CheckMotion(type);
  if (status != VQ_OK) return status;
  VQRTCursorBody& cursor = *GetCursorBody();
  if (cursor.RTElement.IsType(type)) {
    cursor.RightEdge = end && !AtEmptyText();
    return VQ_OK;
  }
  VQRTObject container;
  const VQSTATUS found = cursor.RTElement.GetRTObjectBody()->FindContainer(type, &container);
  return found != VQ_OK ? found : GotoContainerEnd(container.GetRTObjectBody(), end);
}

VQSTATUS VQRTCursor::GotoEnd(VQRTTYPE type) { return vq::Apply(GotoTypeEnd(type, true)); }
VQSTATUS VQRTCursor::GotoStart(VQRTTYPE type) { return vq::Apply(GotoTypeEnd(type, false)); }

VQSTATUS VQRTCursor::GotoEnd(const VQRTContainer& container) {
  if (IsNull()) return vq::Apply(VQERR_CURSOR_INVALID);
  if (container.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(GotoContainerEnd(container.GetRTObjectBody(), true));
}

VQSTATUS VQRTCursor::GotoStart(const VQRTContainer& container) {
  if (IsNull()) return vq::Apply(VQERR_CURSOR_INVALID);
  if (container.IsNull()) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(GotoContainerEnd(container.GetRTObjectBody(), false));
}

VQSTATUS VQRTCursor::SearchFrom(VQRTObjectBody* object, const VQString& text, unsigned long start, bool backwards) {
  VQRTBaseContainerBody* scope = ScopeBody();
  while (object) {
    if (object->GetType() == VQRTTYPE_STYLIZED_TEXT) {
      auto* run = static_cast<VQStylizedTextBody*>(object);
      unsigned long offset = 0;
      const VQSTATUS status = run->FindText(text, GetCursorBody()->SearchOptions, start, backwards, &offset);
      if (status == VQ_OK) return Assign(run, offset, 0);
      if (status != VQWARN_NOT_FOUND) return status;
      start = backwards ? ~0U : 1;
    }
    object = backwards ? scope->PreviousInTree(object) : scope->NextInTree(object);
  }
  return VQWARN_NOT_FOUND;
}

VQSTATUS VQRTCursor::CheckSearch(const VQString& text) const {
  if (!IsValid()) return VQERR_CURSOR_INVALID;
  if (!ScopeBody()) return VQERR_CURSOR_NO_PARENT;
  return text.GetBufLength() == 0 ? VQERR_INVALID_PARAMETER : VQ_OK;
}

VQSTATUS VQRTCursor::GotoFirst(const VQString& text) {
  const VQSTATUS status = CheckSearch(text);
  return vq::Apply(status != VQ_OK ? status : SearchFrom(ScopeBody(), text, 1, false));
}

VQSTATUS VQRTCursor::GotoLast(const VQString& text) {
  const VQSTATUS status = CheckSearch(text);
  if (status != VQ_OK) return vq::Apply(status);
  const VQRTBaseContainerBody* scope = ScopeBody();
  VQRTObjectBody* last =
      scope->GetType() == VQRTTYPE_STYLIZED_TEXT ? ScopeBody() : scope->LastOfType(VQRTTYPE_STYLIZED_TEXT);
  return vq::Apply(SearchFrom(last, text, ~0U, true));
}

VQSTATUS VQRTCursor::GotoNext(const VQString& text) {
  const VQSTATUS status = CheckSearch(text);
  if (status != VQ_OK) return vq::Apply(status);
  const VQRTCursorBody& cursor = *GetCursorBody();
  const bool here = (cursor.SearchOptions & VQRTSEARCH_FROM_CURSOR) != 0 && !cursor.RightEdge;
  const unsigned long start = cursor.RTElement.GetOffset() + (here ? 0 : 1);
  return vq::Apply(SearchFrom(GetElementBody(), text, start, false));
}

VQSTATUS VQRTCursor::GotoPrevious(const VQString& text) {
  const VQSTATUS status = CheckSearch(text);
  if (status != VQ_OK) return vq::Apply(status);
  const vq::TextPlace place(*this);
  if (place.Run() && place.Before > 0) return vq::Apply(SearchFrom(place.Node, text, place.Before, true));
  return vq::Apply(SearchFrom(ScopeBody()->PreviousInTree(place.Node), text, ~0U, true));
}

VQSTATUS VQRTCursor::GotoFirst(char character) { return GotoFirst(VQString(&character, 1)); }
VQSTATUS VQRTCursor::GotoLast(char character) { return GotoLast(VQString(&character, 1)); }
VQSTATUS VQRTCursor::GotoNext(char character) { return GotoNext(VQString(&character, 1)); }
VQSTATUS VQRTCursor::GotoPrevious(char character) { return GotoPrevious(VQString(&character, 1)); }
