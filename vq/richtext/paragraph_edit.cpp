// Container operations that start and merge paragraphs.
#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqstyltx.h"

namespace pab = vq::pab;

namespace {

constexpr std::uint16_t kStandInPABID = 1;

bool IsText(const VQRTObjectBody* object) { return object && object->IsType(VQRTTYPE_STYLIZED_TEXT); }

bool IsEmptyText(const VQRTObjectBody* object) {
  return IsText(object) && static_cast<const VQStylizedTextBody*>(object)->GetByteCount() == 0;
}

// The reference of a new paragraph: a copy of the one in force.
VQRTObject ReferenceLike(const VQRTBaseContainerBody& root, VQRTObjectBody* object) {
  VQRTObjectBody* inForce = pab::ReferenceFor(root, object);
  return vq::MakePABReference(inForce ? pab::IDsOf(*inForce) : vq::PABIDs{kStandInPABID, kStandInPABID});
}

// Puts an empty run in the font of `beside` and gives it back.
VQSTATUS PutText(const pab::Place& place, const VQRTObjectBody* beside, VQRTObjectBody** text) {
  VQRTObject made;
  if (VQSTATUS status = pab::MakeEmptyText(beside, &made)) return status;
  *text = made.GetRTObjectBody();
  return pab::InsertAt(place, *text);
}

// Removes an empty run behind another run; the cursor that stood in it goes to the end of that one.
VQSTATUS DropEmptyText(VQRTObjectBody* text, VQRTCursor* cursor) {
  if (!IsEmptyText(text) || !IsText(text->GetPrevious())) return VQ_OK;
  VQRTObjectBody* previous = text->GetPrevious();
  if (VQSTATUS status = pab::PutCursor(cursor, previous, true)) return status;
  VQRTObject hold(text);
  return text->Delete();
}

// Paragraphs end with the cell that they stand in, but not with a hotspot.
VQRTBaseContainerBody& ParagraphsAround(VQRTBaseContainerBody& container, VQRTObjectBody* object) {
  for (; object && object != &container; object = object->GetParent()) {
    if (object->GetType() == VQRTTYPE_TABLE_CELL) return *object->AsBase();
  }
  return container;
}

bool IsWhole(const VQRTObjectBody& object) {
  return object.IsType(VQRTTYPE_ELEMENT) || object.GetType() == VQRTTYPE_TABLE;
}

// A step through the scope that passes tables and elements at once.
VQRTObjectBody* Following(const VQRTBaseContainerBody& scope, VQRTObjectBody* object) {
  if (!IsWhole(*object)) return scope.NextInTree(object);
  while (object != &scope && !object->GetNext()) object = object->GetParent();
  return object == &scope ? nullptr : object->GetNext();
}
VQRTObjectBody* Preceding(const VQRTBaseContainerBody& scope, VQRTObjectBody* object) {
  object = scope.PreviousInTree(object);
  for (VQRTObjectBody* around = object; around && around != &scope; around = around->GetParent()) {
    if (IsWhole(*around)) object = around;
  }
  return object;
}

// The first place behind the next paragraph record, or the last one in front of the previous record.
VQRTObjectBody* PlaceAcross(const VQRTBaseContainerBody& scope, VQRTObjectBody* object,
                            VQRTObjectBody* (*step)(const VQRTBaseContainerBody&, VQRTObjectBody*)) {
  while (object && !object->IsType(VQRTTYPE_NEW_PARAGRAPH)) object = step(scope, object);
  while (object && !IsText(object) && !IsWhole(*object)) object = step(scope, object);
  return object;
}

// The paragraph records and references between two objects of a scope.
VQSTATUS Separators(const VQRTBaseContainerBody& scope, VQRTObjectBody* first, VQRTObjectBody* last,
                    std::vector<VQRTObjectBody*>* found) {
  VQRTObjectBody* object = first;
  while (object && object != last) {
    object = Following(scope, object);
    if (!object) return VQERR_RT_SELECTION_INVALID;
    bool separates = object->IsType(VQRTTYPE_NEW_PARAGRAPH) || object->IsType(VQRTTYPE_PAB_REFERENCE);
    if (separates) found->push_back(object);
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQRTContainerBody::StartNewParagraph(VQRTCursor* cursor) {
  if (!cursor || cursor->IsNull()) return VQERR_INVALID_PARAMETER;
  if (!cursor->IsValid(this)) return VQERR_CURSOR_INVALID;
  VQRTObject reference = ReferenceLike(pab::Root(*this), cursor->GetElementBody());
  pab::Place place;
  if (VQSTATUS status = pab::SplitAt(*cursor, &place)) return status;
  VQRTObjectBody* text = nullptr;
  const VQRTObjectBody* left = place.Previous();
  if (!pab::IsContent(left)) {
    if (VQSTATUS status = PutText(place, place.Before, &text)) return status;
    left = text;
  }
  VQRTObject paragraph(new VQRTObjectBody(VQRTTYPE_NEW_PARAGRAPH, SIG_CD_PARAGRAPH));
  if (VQSTATUS status = pab::InsertAt(place, paragraph.GetRTObjectBody())) return status;
  if (VQSTATUS status = pab::InsertAt(place, reference.GetRTObjectBody())) return status;
  if (IsText(place.Before)) return pab::PutCursor(cursor, place.Before, false);
  if (VQSTATUS status = PutText(place, left, &text)) return status;
  return pab::PutCursor(cursor, text, false);
}

VQSTATUS VQRTContainerBody::MergeParagraphs(VQRTCursor* start, VQRTCursor* end) {
  if (!start || !end || start->IsNull() || end->IsNull()) return VQERR_INVALID_PARAMETER;
  if (!start->IsValid(this) || !end->IsValid(this)) return VQERR_CURSOR_INVALID;
  if (!(*end > *start)) return VQERR_INVALID_PARAMETER;
  VQRTObjectBody* first = start->GetElementBody();
  VQRTObjectBody* last = end->GetElementBody();
  const VQRTBaseContainerBody& scope = ParagraphsAround(*this, first);
  if (&scope != &ParagraphsAround(*this, last)) return VQERR_RT_SELECTION_INVALID;
  std::vector<VQRTObjectBody*> separators;
  if (VQSTATUS status = Separators(scope, first, last, &separators)) return status;
  if (separators.empty()) return VQWARN_NOT_FOUND;
  for (VQRTObjectBody* object : separators) {
    VQRTObject hold(object);
    if (VQSTATUS status = object->Delete()) return status;
  }
  if (VQSTATUS status = DropEmptyText(last, end)) return status;
  return DropEmptyText(first, start);
}

VQSTATUS VQRTContainerBody::MergeNextParagraph(VQRTCursor* cursor) {
  if (!cursor || cursor->IsNull()) return VQERR_INVALID_PARAMETER;
  if (!cursor->IsValid(this)) return VQERR_CURSOR_INVALID;
  VQRTObjectBody* object = cursor->GetElementBody();
  object = PlaceAcross(ParagraphsAround(*this, object), object, Following);
  if (!object) return VQWARN_NOT_FOUND;
  if (object->GetType() == VQRTTYPE_TABLE) return VQERR_RT_SELECTION_INVALID;
  VQRTCursor end;
  if (VQSTATUS status = pab::PutCursor(&end, object, false)) return status;
  return MergeParagraphs(cursor, &end);
}

VQSTATUS VQRTContainerBody::MergePreviousParagraph(VQRTCursor* cursor) {
  if (!cursor || cursor->IsNull()) return VQERR_INVALID_PARAMETER;
  if (!cursor->IsValid(this)) return VQERR_CURSOR_INVALID;
  VQRTObjectBody* object = cursor->GetElementBody();
  object = PlaceAcross(ParagraphsAround(*this, object), object, Preceding);
  if (!object) return VQWARN_NOT_FOUND;
  if (object->GetType() == VQRTTYPE_TABLE) return VQERR_RT_SELECTION_INVALID;
  VQRTCursor start;
  if (VQSTATUS status = pab::PutCursor(&start, object, true)) return status;
  return MergeParagraphs(&start, cursor);
}
