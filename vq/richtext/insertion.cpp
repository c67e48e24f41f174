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
VQSTATUS CheckTypes(const VQRTBaseContainerBody* around, const VQRTContainerBody& incoming) {
  if (!around || !around->IsType(VQRTTYPE_CONTAINER)) return VQERR_CANT_INSERT_TYPE;
  const VQRTContainerBody& container = static_cast<const VQRTContainerBody&>(*around);
  for (const VQRTObjectBody* child = incoming.GetFirstChild(); child; child = child->GetNext()) {
    if (!container.CanInsertType(child->GetType())) return VQERR_CANT_INSERT_TYPE;
  }
  return VQ_OK;
}

// A rich text that stands alone, with copies of all that the source's top holds and the source's tables.
VQSTATUS CopyWhole(const VQRichText& source, VQRichText* copy) {
  VQRichTextBody* from = source.GetRichTextBody();
  if (VQSTATUS status = from->Initialize()) return status;
  VQRichTextBody* body = new VQRichTextBody;
  *copy = VQRichText(body);
  if (VQSTATUS status = body->Initialize()) return status;
  std::vector<VQRTObject> objects;
  objects.reserve(from->GetTop()->GetChildCount());
  for (VQRTObjectBody* child = from->GetTop()->GetFirstChild(); child; child = child->GetNext()) {
    if (VQSTATUS status = pab::CopyOf(child, &objects.emplace_back())) return status;
  }
  if (VQSTATUS status = body->GetTop()->LinkAll(objects, nullptr)) return status;
  return body->TakeTables(*from);
}

// What in `incoming` refers to its own tables refers to the target's afterwards, as far as those may be shared.
VQSTATUS Adapt(VQRichText& incoming, VQRTContainerBody& root) {
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  unsigned short highest = 0;
  VQSTATUS status = top.ReassignPABIDs(root.GetHighestPABID(), &highest, &root);
  if (status != VQ_OK) return status;
  if (VQRichTextBody* owner = root.GetRichTextBody()) {
    VQRichText target(owner);
    if ((status = top.ConvertFonts(&target)) != VQ_OK) return status;
    if ((status = top.ConvertLinks(&incoming, &target)) != VQ_OK) return status;
    if ((status = top.ConvertObjects(&incoming, &target)) != VQ_OK) return status;
    if ((status = vq::BringLinks(top, incoming.GetRichTextBody(), owner)) != VQ_OK) return status;
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
VQSTATUS KeepStyleBehind(const VQRTObjectBody* last, vq::PABIDs inForce) {
  VQRTObjectBody* object = last->GetNext();
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

VQSTATUS MoveIn(VQRTContainerBody& incoming, const pab::Place& place, VQRTObject* first, VQRTObject* last) {
  std::vector<VQRTObject> objects;
  objects.reserve(incoming.GetChildCount());
  while (VQRTObjectBody* child = incoming.GetFirstChild()) {
    objects.emplace_back(child);
    if (VQSTATUS status = child->RemoveThis(1)) return status;
  }
  if (objects.empty()) return VQ_OK;
  *first = objects.front();
  *last = objects.back();
  return place.Parent->LinkAll(objects, place.Before);
}

// Behind what was put in: its last element, or what follows a last paragraph record.
VQSTATUS CursorBehind(VQRTContainerBody& root, VQRTObjectBody* last, VQRTCursor* cursor) {
  VQRTObjectBody* object = last;
  while (object && !pab::IsContent(object)) object = object->GetNext();
  if (object == last || !object) {
    if (!object) object = root.PreviousOfType(last, VQRTTYPE_STYLIZED_TEXT);
    if (!object) return VQERR_RT_INVALID;
    const VQSTATUS status = pab::PutCursor(cursor, object, true);
    if (status != VQWARN_NOT_FOUND) return status;
    // A container without content, such as a table without cells: the cursor stays in front of it.
    object = root.PreviousOfType(last, VQRTTYPE_STYLIZED_TEXT);
    return object ? pab::PutCursor(cursor, object, true) : VQ_OK;
  }
  return pab::PutCursor(cursor, object, false);
}

}  // namespace

VQSTATUS VQRTContainerBody::Insert(const VQRichText& richText, VQRTCursor* cursor) {
  if (richText.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (VQSTATUS status = CheckCursor(*this, cursor)) return status;
  if (IsType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  VQRichText copy;
  if (VQSTATUS status = CopyWhole(richText, &copy)) return status;
  return TakeIn(copy, cursor, richText.GetRichTextBody());
}

VQSTATUS VQRTContainerBody::TakeIn(VQRichText& incoming, VQRTCursor* cursor, VQRichTextBody* source) {
  if (VQSTATUS status = CheckCursor(*this, cursor)) return status;
  if (IsType(VQRTTYPE_STYLIZED_TEXT)) return VQERR_CANT_INSERT_TYPE;
  if (VQSTATUS status = incoming.GetRichTextBody()->Initialize()) return status;
  VQRTContainerBody& root = pab::Root(*this);
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  if (top.GetChildCount() == 0) return VQ_OK;
  if (VQSTATUS status = CheckTypes(vq::EnclosingContainer(cursor->GetElementBody()), top)) return status;
  if (VQSTATUS status = vq::CheckAdmitted(root.GetRichTextBody(), top, source)) return status;
  vq::FontGuard fonts(root.GetRichTextBody());
  vq::ObjectGuard objects(root.GetRichTextBody());
  if (VQSTATUS status = Adapt(incoming, root)) return status;

  VQRTObjectBody* inForce = pab::ReferenceFor(root, cursor->GetElementBody());
  const std::vector<VQRTObjectBody*> standIn =
      top.FirstOfType(VQRTTYPE_STYLIZED_TEXT) ? StandIn(root) : std::vector<VQRTObjectBody*>();
  pab::Place place;
  if (VQSTATUS status = pab::SplitAt(*cursor, &place)) return status;
  fonts.Keep();
  objects.Keep();
  VQRTObject first, last;
  if (VQSTATUS status = MoveIn(top, place, &first, &last)) return status;
  if (inForce) {
    if (VQSTATUS status = KeepStyleBehind(last.GetRTObjectBody(), pab::IDsOf(*inForce))) return status;
  }
  if (VQSTATUS status = CursorBehind(root, last.GetRTObjectBody(), cursor)) return status;
  if (VQSTATUS status = first.GetRTObjectBody()->AdjustNeighbours(1, 0, nullptr)) return status;
  if (VQSTATUS status = last.GetRTObjectBody()->AdjustNeighbours(0, 1, cursor)) return status;
  return DropStandIn(standIn, root);
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
  if (VQSTATUS status = CopyWhole(richText, &incoming)) return status;
  VQRTContainerBody& top = *incoming.GetRichTextBody()->GetTop();
  if (VQSTATUS status = CheckTypes(this, top)) return status;
  if (VQSTATUS status = vq::CheckAdmitted(GetRichTextBody(), top, richText.GetRichTextBody())) return status;
  vq::FontGuard fonts(GetRichTextBody());
  vq::ObjectGuard objects(GetRichTextBody());
  if (VQSTATUS status = Adapt(incoming, pab::Root(*this))) return status;
  fonts.Keep();
  objects.Keep();
  VQRTObject first, last;
  return MoveIn(top, {this, nullptr}, &first, &last);
}
