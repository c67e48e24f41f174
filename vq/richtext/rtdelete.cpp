// Selections and deletions.
#include <algorithm>

#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"

int VQRTContainerBody::IsSelectionValid(const VQRTCursor& start, const VQRTCursor& end, VQRTSelection* selection) {
  if (!selection || Closed || !start.IsValid(this) || !end.IsValid(this) || start > end) return 0;
  VQRTBaseContainerBody* container = start.GetElementBody()->GetParent();
  // Whole structures only: a range does not start in one container and end in another.
  if (!container || container != end.GetElementBody()->GetParent()) return 0;
  if (start.GetRTObject(&selection->Start) != VQ_OK || end.GetRTObject(&selection->End) != VQ_OK) return 0;
  selection->Container = container;
  return 1;
}

int VQRTContainerBody::IsSelectionValid(const VQRTCursor& start, unsigned long count, VQRTSelection* selection) {
  return start.IsValid(this) && IsSelectionValid(start, start + count, selection);
}

int VQRTContainerBody::IsSelectionValid(const VQRTCursor& start, VQRTTYPE type, VQRTSelection* selection) {
  if (!selection || !start.IsValid(this)) return 0;
  VQRTObject container;
  VQRTObjectBody* element = start.GetElementBody();
  return element->FindContainer(type, &container) == VQ_OK && IsSelectionValid(container, selection);
}

int VQRTContainerBody::IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) {
  return !object.IsNull() && Contains(object.GetRTObjectBody()) &&
         VQRTBaseContainerBody::IsSelectionValid(object, selection);
}

VQSTATUS VQRTContainerBody::Delete(VQRTCursor* start, VQRTCursor* end) {
  if (!start || !end) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!start->IsValid() || !end->IsValid()) return VQERR_CURSOR_INVALID;
  if (!Contains(start->GetElementBody()) || !Contains(end->GetElementBody())) return VQERR_RT_NOT_MEMBER;
  if (*start > *end) return VQERR_CURSOR_ORDER;
  if (*start == *end) return VQ_OK;
  const vq::TextPlace from(*start), to(*end);
  if (from.Node != to.Node || !from.Run()) {
    VQRTSelection selection;
    return IsSelectionValid(*start, *end, &selection) ? DeleteAcross(start, end) : VQERR_RT_SELECTION_INVALID;
  }
  const VQSTATUS status = from.Run()->RemoveText(from.Before + 1, to.Before - from.Before);
  if (status != VQ_OK) return status;
  // Behind the character that is left of the cut; before the first one when there is none.
  const VQSTATUS moved = start->Assign(from.Run(), from.Before == 0 ? 1 : from.Before, from.Before != 0);
  return moved != VQ_OK ? moved : end->Copy(*start);
}

namespace {

// The first object that goes, and the one behind the last.
struct Doomed {
  VQRTObjectBody* First;
  VQRTObjectBody* Behind;
};

// Cuts the ends of the range out of its outer runs.
VQSTATUS TrimRuns(const vq::TextPlace& from, const vq::TextPlace& to) {
  VQSTATUS status = VQ_OK;
  if (VQStylizedTextBody* run = from.Run()) {
    const unsigned long count = run->GetCharacterCount();
    if (count > from.Before) status = run->RemoveText(from.Before + 1, count - from.Before);
  }
  if (status == VQ_OK && to.Run() && to.Before > 0) status = to.Run()->RemoveText(1, to.Before);
  return status;
}

}  // namespace

VQSTATUS VQRTContainerBody::DeleteAcross(VQRTCursor* start, VQRTCursor* end) {
  const vq::TextPlace from(*start), to(*end);
  auto* container = static_cast<VQRTBaseContainerBody*>(from.Node->GetParent());
  // A run that loses its end stays, empty if need be; one that loses all from its start goes unless it is the first.
  const bool startStays = from.Run() || from.Before == 1;
  const bool endGoes = to.Run() ? startStays && to.Before >= to.Run()->GetCharacterCount() : to.Before == 1;
  Doomed doomed = {startStays ? from.Node->GetNext() : from.Node, endGoes ? to.Node->GetNext() : to.Node};
  const VQRTObject keepFrom(from.Node), keepTo(to.Node);

  VQSTATUS status = VQ_OK;
  std::vector<VQRTObjectBody*> going, moved;
  for (VQRTObjectBody* object = doomed.First; object && object != doomed.Behind; object = object->GetNext()) {
    going.push_back(object);
  }
  if (!going.empty()) status = DeleteRepairLinks(doomed.First, doomed.Behind, &moved);
  if (status == VQ_OK) status = TrimRuns(from, to);
  if (status != VQ_OK) return status;
  for (VQRTObjectBody* object : going) {
    if (std::ranges::find(moved, object) != moved.end()) continue;
    status = object->Delete();
    if (status != VQ_OK) return status;
  }
  if (container->IsType(VQRTTYPE_CONTAINER)) status = static_cast<VQRTContainerBody*>(container)->RestoreParagraphs();
  if (status == VQ_OK && container != this) status = RestoreParagraphs();
  if (status != VQ_OK) return status;

  if (startStays && !from.Node->IsClosed()) {
    VQStylizedTextBody* run = from.Run();
    status = run ? start->Assign(run, from.Before == 0 ? 1 : from.Before, from.Before != 0)
                 : start->Assign(VQRTElement(keepFrom), 1);
  } else if (!endGoes && !to.Node->IsClosed()) {
    status = to.Run() ? start->Assign(to.Run(), 1, 0) : start->Assign(VQRTElement(keepTo), 0);
  } else {
    VQRTObject element;
    const VQRTObject behind(doomed.Behind);
    if (!behind.IsNull() && container->FindNext(behind, VQRTTYPE_ELEMENT, &element) == VQ_OK) {
      status = start->Assign(VQRTElement(element), 0);
    } else {
      const bool editable = container->IsType(VQRTTYPE_CONTAINER);
      status = (editable ? static_cast<VQRTContainerBody*>(container) : this)->GetEndCursor(start);
    }
  }
  return status != VQ_OK ? status : end->Copy(*start);
}

VQSTATUS VQRTContainerBody::Delete(VQRTCursor* start, unsigned long count) {
  if (!start) return VQERR_INVALID_PARAMETER;
  if (!start->IsValid()) return VQERR_CURSOR_INVALID;
  VQRTCursor end = *start + count;
  return Delete(start, &end);
}

VQSTATUS VQRTContainerBody::Delete(VQRTObject* object) {
  if (!object || object->IsNull()) return VQERR_INVALID_PARAMETER;
  if (Closed || object->GetRTObjectBody()->IsClosed()) return VQERR_OBJECT_CLOSED;
  VQRTObjectBody* body = object->GetRTObjectBody();
  if (!Contains(body) || (body == this && !object->HasOffset())) return VQERR_RT_NOT_MEMBER;
  if (object->HasOffset()) {
    auto* run = static_cast<VQStylizedTextBody*>(body);
    return run->GetByteCount() == 0 ? VQ_OK : run->RemoveText(object->GetOffset(), 1);
  }
  if (body->IsType(VQRTTYPE_PAB_OBJECT)) return VQERR_WRONG_SITUATION;
  // The end of a structure goes with it, cells go by rows and columns.
  if (body->GetType() == VQRTTYPE_TABLE_END || body->GetType() == VQRTTYPE_HOTSPOT_END ||
      body->GetType() == VQRTTYPE_OLE_OBJECT_END || body->GetType() == VQRTTYPE_TABLE_CELL) {
    return VQERR_INAPPROPRIATE;
  }
  VQSTATUS status = DeleteRepairLinks(body, body->GetNext());
  if (status == VQ_OK) status = body->Delete();
  if (status == VQ_OK) object->DeleteBody();
  return status;
}
