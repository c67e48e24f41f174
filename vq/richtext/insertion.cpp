// Container operations that put whole rich texts in.
#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/objectguard.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqstyltx.h"

namespace pab = vq::pab;

namespace {

VQSTATUS CheckCursor(const VQRTBaseContainerBody& container, const VQRTCursor* cursor) {
  if (!cursor || cursor->IsNull()) return VQERR_INVALID_PARAMETER;
  if (!cursor->IsValid()) return VQERR_CURSOR_INVALID;
  return cursor->IsValid(&container) ? VQ_OK : VQERR_RT_NOT_MEMBER;
}

// Whether the container takes all that comes in.
VQSTATUS CheckTypes(const VQRTBaseContainerBody* around, const vq::TextFindings& found) {
  if (!around || !around->IsType(VQRTTYPE_CONTAINER)) return VQERR_CANT_INSERT_TYPE;
  const VQRTContainerBody& container = static_cast<const VQRTContainerBody&>(*around);
  for (std::size_t type = 0; type < found.Children.size(); ++type) {
    if (found.Children[type] && !container.CanInsertType(static_cast<VQRTTYPE>(type))) return VQERR_CANT_INSERT_TYPE;
  }
  return VQ_OK;
}

// What in `incoming` refers to its own tables refers to the target's afterwards, as far as those may be shared.
VQSTATUS Adapt(VQRichText& incoming, const vq::TextFindings& found, VQRTContainerBody& root) {
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  unsigned short highest = 0;
  VQSTATUS status = top.ReassignPABIDs(root.GetHighestPABID(), &highest, &root);
  if (status != VQ_OK) return status;
  if (VQRichTextBody* owner = root.GetRichTextBody()) {
    VQRichText target(owner);
    if (found.Fonts || found.Others) status = top.ConvertFonts(&target);
    if (status == VQ_OK && found.Others) status = top.ConvertObjects(&incoming, &target);
    if (status == VQ_OK && found.Others) status = top.ConvertLinks(&incoming, &target);
    if (status != VQ_OK) return status;
  }
  root.SetHighestPABID(highest);
  return VQ_OK;
}

// What an empty rich text was given to stand on: a reference and an empty run, neither of them styled yet.
std::vector<VQRTObjectBody*> StandIn(const VQRTContainerBody& root) {
  std::vector<VQRTObjectBody*> objects;
  VQRTObjectBody* child = root.GetFirstChild();
  if (child && child->IsType(VQRTTYPE_PAB_REFERENCE)) {
    objects.push_back(child);
    child = child->GetNext();
  }
  if (!child || child->GetNext() || child->GetType() != VQRTTYPE_STYLIZED_TEXT) return {};
  const VQStylizedTextBody& run = static_cast<const VQStylizedTextBody&>(*child);
  if (run.GetByteCount() > 0 || run.GetFontID() != vq::fontid::kDefault) return {};
  objects.push_back(child);
  return objects;
}

VQSTATUS DropStandIn(const std::vector<VQRTObjectBody*>& standIn, VQRTContainerBody& root) {
  for (VQRTObjectBody* object : standIn) {
    if (VQSTATUS status = object->Delete()) return status;
  }
  return standIn.empty() ? VQ_OK : root.RestoreParagraphs();
}

// Content behind the insertion keeps the style that it had: where the next paragraph relies on the reference in force,
// it gets one of its own.
VQSTATUS KeepStyleBehind(VQRTObjectBody* object, vq::PABIDs inForce) {
  while (object && !object->IsType(VQRTTYPE_NEW_PARAGRAPH) && !object->IsType(VQRTTYPE_PAB_REFERENCE)) {
    object = object->GetNext();
  }
  if (!object || object->IsType(VQRTTYPE_PAB_REFERENCE)) return VQ_OK;
  VQRTObjectBody* first = object->GetNext();
  while (first && first->IsType(VQRTTYPE_PAB_OBJECT) && !first->IsType(VQRTTYPE_PAB_REFERENCE))
    first = first->GetNext();
  if (!first || first->IsType(VQRTTYPE_PAB_REFERENCE)) return VQ_OK;
  return object->InsertNextSibling(vq::MakePABReference(inForce).GetRTObjectBody());
}

// Ends and parts of structures are none.
bool HoldsCursors(const VQRTObjectBody& object) {
  return object.IsType(VQRTTYPE_ELEMENT) || object.IsType(VQRTTYPE_CONTAINER);
}

// Behind what was put in: its last element, or what follows a last paragraph record; else the element before it. Where
// there is none the cursor stays.
VQSTATUS CursorBehind(VQRTContainerBody& root, VQRTObjectBody* last, VQRTCursor* cursor) {
  VQRTObjectBody* object = last;
  while (object && !HoldsCursors(*object)) object = object->GetNext();
  if (object) {
    const VQSTATUS status = pab::PutCursor(cursor, object, object == last);
    if (status != VQWARN_NOT_FOUND) return status;
  }
  // A container without content, such as a table without cells, is no place.
  object = root.PreviousOfType(last, VQRTTYPE_STYLIZED_TEXT);
  if (!object) object = root.PreviousOfType(last, VQRTTYPE_ELEMENT);
  return object ? pab::PutCursor(cursor, object, true) : VQ_OK;
}

}  // namespace

VQSTATUS VQRTContainerBody::Insert(const VQRichText& richText, VQRTCursor* cursor) {
  if (richText.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (VQSTATUS status = CheckCursor(*this, cursor)) return status;
  if (IsType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQRichText copy;
  vq::TextFindings found;
  if (VQSTATUS status = richText.GetRichTextBody()->CopyTo(&copy, &found)) return status;
  return TakeIn(copy, found, cursor, richText.GetRichTextBody());
}

VQSTATUS VQRTContainerBody::TakeIn(VQRichText& incoming, VQRTCursor* cursor) {
  if (VQSTATUS status = incoming.GetRichTextBody()->Initialize()) return status;
  return TakeIn(incoming, vq::Survey(*incoming.GetRichTextBody()->GetTop()), cursor, nullptr);
}

VQSTATUS VQRTContainerBody::TakeIn(VQRichText& incoming, const vq::TextFindings& found, VQRTCursor* cursor,
                                   VQRichTextBody* source) {
  if (VQSTATUS status = CheckCursor(*this, cursor)) return status;
  if (IsType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQRTContainerBody& root = pab::Root(*this);
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  if (top.GetChildCount() == 0) return VQ_OK;
  if (VQSTATUS status = CheckTypes(vq::EnclosingContainer(cursor->GetElementBody()), found)) return status;
  if (VQSTATUS status = vq::CheckAdmitted(root.GetRichTextBody(), top, source)) return status;
  vq::FontGuard fonts(root.GetRichTextBody());
  vq::ObjectGuard objects(root.GetRichTextBody());
  if (VQSTATUS status = Adapt(incoming, found, root)) return status;

  VQRTObjectBody* inForce = pab::ReferenceFor(root, cursor->GetElementBody());
  const std::vector<VQRTObjectBody*> standIn =
      top.FirstOfType(VQRTTYPE_STYLIZED_TEXT) ? StandIn(root) : std::vector<VQRTObjectBody*>();
  pab::Place place;
  if (VQSTATUS status = pab::SplitAt(*cursor, &place)) return status;
  if (inForce) {
    if (VQSTATUS status = KeepStyleBehind(place.Before, pab::IDsOf(*inForce))) return status;
  }
  const VQRTObject first(top.GetFirstChild()), last(top.GetLastChild());
  if (VQSTATUS status = incoming.GetRichTextBody()->MoveInto(*place.Parent, place.Before)) return status;
  if (VQSTATUS status = CursorBehind(root, last.GetRTObjectBody(), cursor)) return status;
  if (VQSTATUS status = first.GetRTObjectBody()->AdjustNeighbours(1, 0, nullptr)) return status;
  if (VQSTATUS status = last.GetRTObjectBody()->AdjustNeighbours(0, 1, cursor)) return status;
  if (VQSTATUS status = DropStandIn(standIn, root)) return status;
  fonts.Keep();
  objects.Keep();
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::Append(const VQRichText& richText) {
  if (richText.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (IsType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQRTCursor cursor;
  if (GetChildCount() > 0) {
    VQSTATUS status = GetEndCursor(&cursor);
    return status != VQ_OK ? status : Insert(richText, &cursor);
  }
  VQRichText incoming;
  vq::TextFindings found;
  if (VQSTATUS status = richText.GetRichTextBody()->CopyTo(&incoming, &found)) return status;
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  if (VQSTATUS status = CheckTypes(this, found)) return status;
  if (VQSTATUS status = vq::CheckAdmitted(GetRichTextBody(), top, richText.GetRichTextBody())) return status;
  vq::FontGuard fonts(GetRichTextBody());
  vq::ObjectGuard objects(GetRichTextBody());
  if (VQSTATUS status = Adapt(incoming, found, pab::Root(*this))) return status;
  const bool hasText = top.FirstOfType(VQRTTYPE_STYLIZED_TEXT) != nullptr;
  if (VQSTATUS status = incoming.GetRichTextBody()->MoveInto(*this, nullptr)) return status;
  if (VQSTATUS status = hasText ? RestoreParagraphs() : VQ_OK) return status;
  fonts.Keep();
  objects.Keep();
  return VQ_OK;
}
