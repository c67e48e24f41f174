// Copies of ranges.
#include "vq/richtext/rttext.h"
#include "vq/richtext/vqrtbase.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqstyltx.h"

namespace {

enum class Overlap { kNone, kPart, kWhole };

Overlap OverlapOf(const VQRTObjectBody& object, const vq::TextPlace* from, const vq::TextPlace* to) {
  const VQRTBaseContainerBody* inside = object.AsBase();
  bool whole = true;
  for (const vq::TextPlace* place : {from, to}) {
    if (!place) continue;
    if (place->Node == &object || (inside && inside->Contains(place->Node))) {
      whole = false;
    } else if (place == from ? object.IsLeftOf(place->Node) : place->Node->IsLeftOf(&object)) {
      return Overlap::kNone;
    }
  }
  return whole ? Overlap::kWhole : Overlap::kPart;
}

// Whether a leaf that an end of the range stands on lies between the ends.
bool LeafInside(const VQRTObjectBody& object, const vq::TextPlace* from, const vq::TextPlace* to) {
  if (from && from->Node == &object && from->Before == 1) return false;
  return !(to && to->Node == &object && to->Before == 0);
}

// Records without which what is left of a container would not be one.
bool HoldsTogether(const VQRTObjectBody& object) {
  switch (object.GetType()) {
    case VQRTTYPE_TABLE_END:
    case VQRTTYPE_HOTSPOT_END:
    case VQRTTYPE_ACTION_PART:
    case VQRTTYPE_BUTTON_PART:
    case VQRTTYPE_ACTIVE_PART:
      return true;
    default:
      return false;
  }
}

}  // namespace

VQSTATUS VQRTBaseContainerBody::CopyChildren(const VQRTCursor& start, const VQRTCursor& end,
                                             VQRTBaseContainerBody* source, VQRTObject* before) {
  if (!source || source == this) return VQERR_INVALID_PARAMETER;
  if (Closed || source->Closed) return VQERR_OBJECT_CLOSED;
  if ((!start.IsNull() && !start.IsValid()) || (!end.IsNull() && !end.IsValid())) return VQERR_CURSOR_INVALID;
  if (before && (before->IsNull() || before->GetRTObjectBody()->GetParent() != this)) return VQERR_RT_NOT_MEMBER;
  const vq::TextPlace startPlace(start), endPlace(end);
  const vq::TextPlace* from = start.IsNull() ? nullptr : &startPlace;
  const vq::TextPlace* to = end.IsNull() ? nullptr : &endPlace;
  for (VQRTObjectBody* child = source->FirstChild; child; child = child->GetNext()) {
    const Overlap overlap = OverlapOf(*child, from, to);
    if (overlap == Overlap::kNone && !HoldsTogether(*child)) continue;
    VQRTObjectBody* copy = child->MakeSame();
    const VQRTObject hold(copy);
    VQSTATUS status = VQ_OK;
    if (overlap != Overlap::kPart || !child->AsBase() || child->IsType(VQRTTYPE_ELEMENT)) {
      if (overlap == Overlap::kPart && !LeafInside(*child, from, to)) continue;
      status = copy->Copy(child, VQRTCOPYOPTIONS_DEEP);
    } else if (child->GetType() == VQRTTYPE_STYLIZED_TEXT) {
      status = copy->AsBase()->CopyChildren(start, end, child->AsBase(), nullptr);
    } else {
      status = copy->Copy(child, VQRTCOPYOPTIONS_SHALLOW);
      if (status == VQ_OK) status = copy->AsBase()->CopyChildren(start, end, child->AsBase(), nullptr);
    }
    if (status == VQ_OK) status = before ? before->GetRTObjectBody()->InsertPreviousSibling(copy) : Append(copy);
    if (status != VQ_OK) return status;
  }
  return VQ_OK;
}
