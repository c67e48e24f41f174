#include "vq/richtext/pabtree.h"

#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqstyltx.h"

namespace vq::pab {

VQRTContainerBody& Root(VQRTContainerBody& container) {
  VQRTBaseContainerBody* top = container.GetTop();
  return top && top->IsType(VQRTTYPE_CONTAINER) ? static_cast<VQRTContainerBody&>(*top) : container;
}

PABIDs IDsOf(const VQRTObjectBody& object) {
  PABIDs ids;
  return ReadPABIDs(object, &ids) == VQ_OK ? ids : PABIDs{};
}

VQRTObjectBody* ReferenceFor(const VQRTBaseContainerBody& root, VQRTObjectBody* object) {
  if (!object || object->IsType(VQRTTYPE_PAB_REFERENCE)) return object;
  return root.PreviousOfType(object, VQRTTYPE_PAB_REFERENCE);
}

IndexOf::IndexOf(const VQRTBaseContainerBody& root) {
  VQRichTextBody* owner = root.GetRichTextBody();
  Index = owner ? &owner->GetPABIndex() : &Own.emplace(root);
}

VQRTObjectBody* FindLeft(const VQRTBaseContainerBody& root, VQRTObjectBody* from, VQRTTYPE type, std::uint16_t pabid) {
  return IndexOf(root)->FindLeft(from, type, pabid);
}

VQRTObjectBody* FindByPABID(const VQRTBaseContainerBody& root, VQRTObjectBody* from, VQRTTYPE type,
                            std::uint16_t pabid) {
  return IndexOf(root)->Find(from, type, pabid);
}

VQRTObjectBody* Companion(const VQRTObjectBody& definition) {
  VQRTObjectBody* next = definition.GetNext();
  if (!next || (!next->IsType(VQRTTYPE_PAB_HIDE) && !next->IsType(VQRTTYPE_PAB_STYLE_NAME))) return nullptr;
  return IDsOf(*next).First == IDsOf(definition).First ? next : nullptr;
}

VQRTObjectBody* NamedBy(const VQRTObjectBody& name) {
  VQRTObjectBody* previous = name.GetPrevious();
  bool defines = previous && previous->IsType(VQRTTYPE_PAB_DEFINITION);
  return defines && IDsOf(*previous).First == IDsOf(name).First ? previous : nullptr;
}

VQSTATUS SplitAt(const VQRTCursor& cursor, Place* place) {
  if (!cursor.IsValid()) return VQERR_CURSOR_INVALID;
  TextPlace text(cursor);
  VQRTObjectBody* node = text.Node;
  if (!node->GetParent()) return VQERR_CURSOR_NO_PARENT;
  bool behind = text.Before > 0 || node->IsType(VQRTTYPE_RT_SUBFORM);
  if (VQStylizedTextBody* run = text.Run()) {
    unsigned long count = run->GetCharacterCount();
    behind = text.Before > 0 || count == 0;
    if (text.Before > 0 && text.Before < count) {
      if (VQSTATUS status = run->SplitText(text.Before + 1)) return status;
    }
  }
  *place = {node->GetParent(), behind ? node->GetNext() : node};
  return VQ_OK;
}

VQSTATUS InsertAt(const Place& place, VQRTObjectBody* object) {
  return place.Before ? place.Before->InsertPreviousSibling(object) : place.Parent->Append(object);
}

VQSTATUS MakeEmptyText(const VQRTObjectBody* beside, VQRTObject* text) {
  VQStylizedTextBody* run = new VQStylizedTextBody;
  *text = VQRTObject(run);
  if (!beside || !beside->IsType(VQRTTYPE_STYLIZED_TEXT)) return VQ_OK;
  return run->SetFontID(static_cast<const VQStylizedTextBody*>(beside)->GetFontID());
}

bool IsContent(const VQRTObjectBody* object) {
  return object && !object->IsType(VQRTTYPE_PAB_OBJECT) && !object->IsType(VQRTTYPE_NEW_PARAGRAPH);
}

VQSTATUS PutCursor(VQRTCursor* cursor, VQRTObjectBody* element, bool atEnd) {
  if (element->IsType(VQRTTYPE_CONTAINER) && !element->IsType(VQRTTYPE_STYLIZED_TEXT)) {
    auto* container = static_cast<VQRTContainerBody*>(element);
    return atEnd ? container->GetEndCursor(cursor) : container->GetCursor(cursor);
  }
  if (!element->IsType(VQRTTYPE_STYLIZED_TEXT)) {
    return cursor->Assign(VQRTElement(VQRTObject(element)), atEnd);
  }
  VQStylizedTextBody* run = static_cast<VQStylizedTextBody*>(element);
  unsigned long count = run->GetCharacterCount();
  bool right = atEnd && count > 0;
  return cursor->Assign(run, right ? count : 1, right);
}

VQSTATUS CopyOf(VQRTObjectBody* source, VQRTObject* copy) {
  *copy = VQRTObject();
  return copy->CopyRTObject(VQRTObject(source), VQRTCOPYOPTIONS_DEEP);
}

}  // namespace vq::pab
