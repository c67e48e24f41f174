#include "vq/richtext/vqhotspot.h"

#include <vector>

#include "engine/ods.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rttext.h"

namespace pab = vq::pab;

namespace {

const VQRTObjectBody& Open(const VQRTObject& object) {
  if (object.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (object.GetRTObjectBody()->IsClosed()) vq::Throw(VQERR_OBJECT_CLOSED);
  return *object.GetRTObjectBody();
}

CDHOTSPOTBEGIN BeginOf(const VQRTObject& hotspot) {
  CDHOTSPOTBEGIN record{};
  vq::ThrowIfError(Open(hotspot).ReadODS(ODS_CDHOTSPOTBEGIN, &record, 0));
  return record;
}

// Whether a hotspot's child is content that stays without it.
bool IsShown(const VQRTObjectBody& child) {
  switch (child.GetType()) {
    case VQRTTYPE_HOTSPOT_END:
    case VQRTTYPE_ACTION_PART:
    case VQRTTYPE_BUTTON_PART:
    case VQRTTYPE_ACTIVE_PART:
      return false;
    default:
      return !child.IsType(VQRTTYPE_LINK);
  }
}

// The end of a link that goes on in later cells of its table stands in the last of them.
VQRTObjectBody* EndInLaterCell(VQRTObjectBody& hotspot) {
  const VQRTObjectBody* table = vq::EnclosingTable(&hotspot);
  const VQRTObjectBody* last = hotspot.AsBase()->GetLastChild();
  if (hotspot.GetType() != VQRTTYPE_LINK_HOTSPOT || !table) return nullptr;
  if (last && last->GetType() == VQRTTYPE_HOTSPOT_END) return nullptr;
  const VQRTBaseContainerBody& scope = *table->AsBase();
  VQRTObjectBody* end = scope.NextOfType(&hotspot, VQRTTYPE_HOTSPOT_END);
  while (end && !end->GetParent()->IsType(VQRTTYPE_TABLE_CELL)) end = scope.NextOfType(end, VQRTTYPE_HOTSPOT_END);
  return end;
}

VQSTATUS Unwrap(VQRTObjectBody& hotspot) {
  bool shows = pab::IsContent(hotspot.GetPrevious());
  VQRTObjectBody* next = nullptr;
  for (VQRTObjectBody* child = hotspot.AsBase()->GetFirstChild(); child; child = next) {
    next = child->GetNext();
    if (!IsShown(*child)) continue;
    const VQRTObject hold(child);
    if (VQSTATUS status = child->RemoveThis(1)) return status;
    if (VQSTATUS status = hotspot.InsertPreviousSibling(child)) return status;
    shows = shows || pab::IsContent(child);
  }
  if (!shows) {  // a paragraph keeps a text run
    VQRTObject text;
    if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
    if (VQSTATUS status = hotspot.InsertPreviousSibling(text.GetRTObjectBody())) return status;
  }
  if (VQRTObjectBody* end = EndInLaterCell(hotspot)) {
    if (VQSTATUS status = end->Delete()) return status;
  }
  return hotspot.Delete();
}

}  // namespace

VQSTATUS VQRTContainerBody::ClearHotspot(VQRTObject* hotspot) {
  if (!hotspot || hotspot->IsNull()) return VQERR_INVALID_PARAMETER;
  VQRTObjectBody* body = hotspot->GetRTObjectBody();
  if (Closed || body->IsClosed()) return VQERR_OBJECT_CLOSED;
  if (hotspot->HasOffset() || !body->IsType(VQRTTYPE_HOTSPOT)) return VQERR_INAPPROPRIATE;
  if (!Contains(body) || body == this) return VQERR_RT_NOT_MEMBER;
  if (VQSTATUS status = Unwrap(*body)) return status;
  hotspot->DeleteBody();
  return VQ_OK;
}

VQSTATUS VQRTContainerBody::ClearHotspotRange(const VQRTCursor& start, const VQRTCursor& end) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!start.IsValid() || !end.IsValid()) return VQERR_CURSOR_INVALID;
  if (!Contains(start.GetElementBody()) || !Contains(end.GetElementBody())) return VQERR_RT_NOT_MEMBER;
  if (start > end) return VQERR_CURSOR_ORDER;
  std::vector<VQRTObject> hotspots;
  VQRTObjectBody* first = start.GetElementBody();
  for (VQRTObjectBody* around = first->GetParent(); around && around != this; around = around->GetParent()) {
    if (around->IsType(VQRTTYPE_HOTSPOT)) hotspots.emplace_back(around);
  }
  const VQRTObjectBody* behind = NextInTree(end.GetElementBody());
  for (VQRTObjectBody* object = NextInTree(first); object && object != behind; object = NextInTree(object)) {
    if (object->IsType(VQRTTYPE_HOTSPOT)) hotspots.emplace_back(object);
  }
  for (VQRTObject& hotspot : hotspots) {
    if (VQSTATUS status = Unwrap(*hotspot.GetRTObjectBody())) return status;
  }
  return hotspots.empty() ? VQWARN_NOT_FOUND : VQ_OK;
}

VQHotspot::VQHotspot(const VQRTObject& object) { *this = object; }

VQCLASSID VQHotspot::GetClassID() const { return VQCLASSID_VQHOTSPOT; }

void VQHotspot::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && !body->IsType(VQRTTYPE_HOTSPOT)) vq::Throw(VQERR_CONVERSION_FAILED);
}

unsigned short VQHotspot::GetCDSignature() const { return Open(*this).GetCDSignature(); }
unsigned short VQHotspot::GetHotspotType() const { return BeginOf(*this).Type; }
unsigned long VQHotspot::GetHotspotFlags() const { return BeginOf(*this).Flags; }

unsigned long VQHotspot::GetDataLength() const {
  unsigned long length = BeginOf(*this).Header.Length;
  unsigned long fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  return length > fixed ? length - fixed : 0;
}

VQSTATUS VQHotspot::ReadData(unsigned long offset, void* buffer, unsigned long size) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  const VQRTObjectBody& body = *GetRTObjectBody();
  CDHOTSPOTBEGIN record{};
  if (VQSTATUS status = body.ReadODS(ODS_CDHOTSPOTBEGIN, &record, 0)) return vq::Apply(status);
  std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  if (record.Header.Length < fixed) return vq::Apply(VQERR_RT_INVALID);
  unsigned long length = record.Header.Length - fixed;
  if (offset > length || size > length - offset) return vq::Apply(VQERR_RT_INVALID);
  return vq::Apply(
      body.ReadRecord(fixed + static_cast<std::uint32_t>(offset), buffer, static_cast<std::uint32_t>(size)));
}

VQHotspotEnd::VQHotspotEnd(unsigned short signature) {
  bool legal = signature == SIG_CD_HOTSPOTEND || signature == SIG_CD_HOTSPOTEND_OLD;
  if (!legal) vq::Throw(VQERR_INVALID_PARAMETER);
  Attach(new VQRTObjectBody(VQRTTYPE_HOTSPOT_END, signature), 0);
}

VQHotspotEnd::VQHotspotEnd(const VQRTObject& object) { *this = object; }

VQCLASSID VQHotspotEnd::GetClassID() const { return VQCLASSID_VQHOTSPOTEND; }

void VQHotspotEnd::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && body->GetType() != VQRTTYPE_HOTSPOT_END) vq::Throw(VQERR_CONVERSION_FAILED);
}

unsigned short VQHotspotEnd::GetCDSignature() const { return Open(*this).GetCDSignature(); }
