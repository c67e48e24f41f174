#include "vq/richtext/vqrtobjb.h"

#include <algorithm>
#include <cstring>

#include "engine/ods.h"
#include "vq/richtext/pabindex.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbase.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrtwrit.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/values/vqstring.h"

namespace vq {

RecordBytes::RecordBytes(const VQRTObjectBody& body, MemoryLock& lock) : Bytes(nullptr), Size(0) {
  if (body.Content.IsOwn()) {
    Bytes = body.Content.GetBytes();
    Size = body.Content.GetSize();
    return;
  }
  const RecordSource* source = body.Content.GetSource();
  if (!source) return;
  lock.Lock(source->GetPool());
  if (!lock.GetBytes()) return;
  Bytes = lock.GetBytes() + source->GetBase() + body.Content.GetOffset();
  Size = body.Content.GetLength();
}

}  // namespace vq

VQRTObjectBody::VQRTObjectBody(VQRTTYPE type, vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : Closed(false),
      HoldsChildren(false),
      WatchesChildren(false),
      Counted(false),
      Type(static_cast<unsigned char>(type)),
      RTObjectBodyFlags(0),
      IndexValue(static_cast<std::uint32_t>(VQRT_DETACHED_INDEX_VALUE)),
      Parent(nullptr),
      Previous(nullptr),
      Next(nullptr) {
  Content.Look(source, offset, length);
}

VQRTObjectBody::VQRTObjectBody(VQRTTYPE type, unsigned short signature) : VQRTObjectBody(type, nullptr, 0, 0) {
  if (signature == 0) return;
  const std::uint32_t size = vq::HeaderSize(signature);
  Content.Resize(size);
  vq::WriteRecordHeader(Content.GetBytes(), signature, size);
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, true);
}

VQRTObjectBody::~VQRTObjectBody() { VQRTObjectBody::Close(); }

VQSTATUS VQRTObjectBody::Close() {
  if (Closed) return VQWARN_NOT_OPEN;
  GiveUpContent();
  Closed = true;
  SetFlag(VQRTOBJECTBODY_DIRTY, false);
  if (Parent) Parent->Unlink(this);
  return VQ_OK;
}

VQCLASSID VQRTObjectBody::GetClassID() const { return VQCLASSID_VQRTOBJECTBODY; }

VQRTObjectBody* VQRTObjectBody::MakeSame() const {
  return new VQRTObjectBody(GetType(), static_cast<unsigned short>(0));
}

VQSTATUS VQRTObjectBody::ConvertLinks(VQRichText*, VQRichText*) { return VQ_OK; }
VQSTATUS VQRTObjectBody::ConvertObjects(VQRichText*, VQRichText*) { return VQ_OK; }
VQSTATUS VQRTObjectBody::CarryObjects(VQSlateBody*) { return VQ_OK; }
VQSTATUS VQRTObjectBody::FindTableFont(VQFontStyle*) { return VQWARN_NOT_FOUND; }
VQSTATUS VQRTObjectBody::ConvertFonts(VQItem*) { return VQ_OK; }
VQSTATUS VQRTObjectBody::ShiftLinkIndex(int, unsigned long) { return VQ_OK; }

VQSTATUS VQRTObjectBody::SetFontStyle(const VQRTCursor&, const VQRTCursor&, const VQFontStyle&, unsigned long) {
  return VQ_OK;
}
VQSTATUS VQRTObjectBody::SetFontStyle(const VQRTCursor&, const VQFontStyle&) { return VQ_OK; }

VQSTATUS VQRTObjectBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS) {
  if (!source || source == this) return VQERR_INVALID_PARAMETER;
  if (source->Closed) return VQERR_OBJECT_CLOSED;
  if (!source->IsType(GetType())) return VQERR_INAPPROPRIATE;
  TakeRecord(*source);
  Closed = false;
  Type = source->Type;
  MarkDirty();
  return VQ_OK;
}

void VQRTObjectBody::TakeRecord(const VQRTObjectBody& source) {
  Counted = false;
  vq::RecordContent taken;
  {
    // A value that goes with its last view must not be locked then.
    const vq::RecordBytes bytes(source);
    if (bytes.GetSize() != 0) {
      taken.Resize(vq::Padded(bytes.GetSize()));
      std::memcpy(taken.GetBytes(), bytes.Get(), bytes.GetSize());
    }
  }
  GiveUpContent();
  if (!taken.IsOwn()) return;
  Content = std::move(taken);
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, true);
}

VQSTATUS VQRTObjectBody::Delete() {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const VQRTObject hold(this);
  return Close();
}

VQSTATUS VQRTObjectBody::FindContainer(VQRTTYPE type, VQRTObject* container) {
  if (!container) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!vq::IsRTTypeNumber(type)) return VQERR_OUT_OF_RANGE;
  for (VQRTObjectBody* object = this; object; object = object->Parent) {
    if (!object->HoldsChildren || !object->IsType(type)) continue;
    *container = object;
    return VQ_OK;
  }
  return VQWARN_NOT_FOUND;
}

unsigned long VQRTObjectBody::GetEndIndexValue() const { return IndexValue; }
unsigned long VQRTObjectBody::GetIndexCount() const { return 1; }
unsigned long VQRTObjectBody::GetIndexValue() const { return IndexValue; }
void VQRTObjectBody::SetIndexValue(unsigned long value) { IndexValue = static_cast<std::uint32_t>(value); }

VQSTATUS VQRTObjectBody::GetRichText(VQRichText* richText) {
  if (!richText) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  VQRichTextBody* owner = GetRichTextBody();
  if (!owner) return VQWARN_NOT_FOUND;
  *richText = VQRichText(owner);
  return VQ_OK;
}

VQRTBaseContainerBody* VQRTObjectBody::GetTop() const {
  VQRTBaseContainerBody* top = Parent;
  while (top && top->Parent) top = top->Parent;
  return top;
}

VQRichTextBody* VQRTObjectBody::GetRichTextBody() const {
  const VQRTObjectBody* top = this;
  while (top->Parent) top = top->Parent;
  return top->HoldsChildren ? static_cast<const VQRTBaseContainerBody*>(top)->RichText : nullptr;
}

VQSTATUS VQRTObjectBody::GetText(VQString* text) {
  if (!text) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  *text = VQString(Type == VQRTTYPE_NEW_PARAGRAPH ? "\n" : "");
  return VQ_OK;
}

VQSTATUS VQRTObjectBody::GetText(const VQRTCursor&, const VQRTCursor&, VQString* text) { return GetText(text); }

int VQRTObjectBody::IsClosable() const { return !Closed && RefCount < 2; }

int VQRTObjectBody::IsSelectionValid(const VQRTObject& object, VQRTSelection* selection) {
  if (!selection || object.IsNull()) return 0;
  selection->Start = object;
  selection->End = object;
  VQRTObjectBody* body = object.GetRTObjectBody();
  selection->Container = object.HasOffset() ? body : static_cast<VQRTObjectBody*>(body->Parent);
  return 1;
}

VQSTATUS VQRTObjectBody::RemoveThis(int) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!Parent) return VQERR_RT_NOT_MEMBER;
  KeepContent();
  Parent->Unlink(this);
  return VQ_OK;
}

unsigned long VQRTObjectBody::GetSize() const { return GetRecordSize(); }

int VQRTObjectBody::IsValid() const {
  if (Closed) return 0;
  const vq::RecordBytes bytes(*this);
  if (bytes.GetSize() == 0) return Content.GetSource() == nullptr;
  vq::RecordHeader header;
  return vq::ReadRecordHeader(bytes.Get(), bytes.GetSize(), &header) && header.Length <= bytes.GetSize();
}

VQSTATUS VQRTObjectBody::SetDirty(int dirty) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (dirty) {
    MarkDirty();
    return VQ_OK;
  }
  SetFlag(VQRTOBJECTBODY_DIRTY, false);
  if ((RTObjectBodyFlags & VQRTOBJECTBODY_CDOUTDATED) && Parent) Parent->MarkDirty();
  return VQ_OK;
}

void VQRTObjectBody::MarkDirty() {
  for (VQRTObjectBody* object = this; object; object = object->Parent) {
    object->SetFlag(VQRTOBJECTBODY_DIRTY, true);
    // The write that takes the dirty mark off must come by.
    if (vq::RecordSource* source = object->Content.GetSource()) source->SetOutdated();
  }
  if (!vq::PABIndex::Holds(GetType())) return;
  VQRichTextBody* owner = GetRichTextBody();
  if (vq::PABIndex* index = owner ? owner->FindPABIndex() : nullptr) index->Take(*this);
}

VQSTATUS VQRTObjectBody::Update(vq::RecordWriter& writer) { return writer.Add(*this); }

VQSTATUS VQRTObjectBody::WriteValueBlock() {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!Content.IsOwn()) return VQERR_WRONG_SITUATION;
  MarkDirty();
  return VQ_OK;
}

int VQRTObjectBody::IsLeftOf(const VQRTObjectBody* other) const {
  if (!other) return 1;
  const unsigned long objectIndexValue = other->GetIndexValue();
  const unsigned long endIndexValue = GetEndIndexValue();
  VQ_ASSERT_TEXT(objectIndexValue >= VQRT_MIN_INDEX_VALUE, "objectIndexValue >= VQRT_MIN_INDEX_VALUE", "VQRTOBJB");
  VQ_ASSERT_TEXT(objectIndexValue <= VQRT_MAX_INDEX_VALUE, "objectIndexValue <= VQRT_MAX_INDEX_VALUE", "VQRTOBJB");
  VQ_ASSERT_TEXT(endIndexValue >= VQRT_MIN_INDEX_VALUE, "endIndexValue >= VQRT_MIN_INDEX_VALUE", "VQRTOBJB");
  VQ_ASSERT_TEXT(endIndexValue <= VQRT_MAX_INDEX_VALUE, "endIndexValue <= VQRT_MAX_INDEX_VALUE", "VQRTOBJB");
  return endIndexValue < objectIndexValue;
}

VQSTATUS VQRTObjectBody::InsertNextSibling(VQRTObjectBody* object) {
  if (!object) return VQERR_INVALID_PARAMETER;
  if (Closed || object->Closed) return VQERR_OBJECT_CLOSED;
  if (!Parent) return VQERR_RT_NOT_MEMBER;
  return Parent->Link(object, this, Next, false);
}

VQSTATUS VQRTObjectBody::InsertPreviousSibling(VQRTObjectBody* object) {
  if (!object) return VQERR_INVALID_PARAMETER;
  if (Closed || object->Closed) return VQERR_OBJECT_CLOSED;
  if (!Parent) return VQERR_RT_NOT_MEMBER;
  return Parent->Link(object, Previous, this, true);
}

namespace {

// An empty run beside an object that must not touch its neighbour.
VQSTATUS AddEmptyText(VQRTObjectBody* object, bool behind, VQRTCursor* cursor) {
  auto* text = new VQStylizedTextBody();
  const VQRTObject hold(text);
  const VQSTATUS status = behind ? object->InsertNextSibling(text) : object->InsertPreviousSibling(text);
  if (status == VQ_OK && cursor) return cursor->Assign(text, 1, 0);
  return status;
}

}  // namespace

VQSTATUS VQRTObjectBody::AdjustNeighbours(int before, int after, VQRTCursor* cursor) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const bool reference = IsType(VQRTTYPE_PAB_REFERENCE);
  if (before && (reference || Type == VQRTTYPE_PAB_DEFINITION) && Previous &&
      Previous->IsType(VQRTTYPE_PAB_REFERENCE)) {
    const VQSTATUS status = AddEmptyText(this, false, nullptr);
    if (status != VQ_OK) return status;
  }
  if (after && reference && (!Next || Next->IsType(VQRTTYPE_PAB_REFERENCE) || Next->Type == VQRTTYPE_PAB_DEFINITION)) {
    return AddEmptyText(this, true, cursor);
  }
  return VQ_OK;
}
