#include "vq/richobjects/vqgraphic.h"

#include <algorithm>

#include "vq/richtext/rtcheck.h"
#include "vq/richtext/vqrtbody.h"

namespace {

constexpr unsigned long kTypeWord = 2;

VQRTBaseContainerBody& Open(const VQRTObject& object) {
  if (object.IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (object.GetRTObjectBody()->IsClosed()) vq::Throw(VQERR_OBJECT_CLOSED);
  return *object.GetRTBaseContainerBody();
}

const VQRTBaseContainerBody* PictureOf(const VQRTBaseContainerBody& graphic) {
  for (const VQRTObjectBody* child = graphic.GetFirstChild(); child; child = child->GetNext()) {
    if (vq::IsGraphicHeader(child->GetType())) return child->AsBase();
  }
  return nullptr;
}

// The record of an object and those of its children, in stream order.
VQSTATUS Gather(const VQRTObjectBody& object, unsigned char* target, unsigned long* at) {
  const std::uint32_t size = object.GetRecordSize();
  if (VQSTATUS status = object.ReadRecord(0, target + *at, size)) return status;
  *at += size;
  const VQRTBaseContainerBody* inside = object.AsBase();
  for (const VQRTObjectBody* child = inside ? inside->GetFirstChild() : nullptr; child; child = child->GetNext()) {
    if (VQSTATUS status = Gather(*child, target, at)) return status;
  }
  return VQ_OK;
}

// The records as a rich text that stands alone.
VQSTATUS Load(const void* records, unsigned long size, VQRichText* text) {
  constexpr unsigned char typeWord[kTypeWord] = {1, 0};
  ENGHANDLE memory = 0;
  if (VQSTATUS status = vq::FromEngine(EngMemAlloc(0, static_cast<std::uint32_t>(size + kTypeWord), &memory))) {
    return status;
  }
  {
    const vq::MemoryLock lock(memory);
    std::copy_n(typeWord, kTypeWord, lock.GetBytes());
    std::copy_n(static_cast<const unsigned char*>(records), size, lock.GetBytes() + kTypeWord);
  }
  *text = VQRichText(new VQRichTextBody(memory, size + kTypeWord));
  return text->GetRichTextBody()->Initialize();
}

}  // namespace

VQGraphic::VQGraphic(const VQRTObject& object) { *this = object; }

VQCLASSID VQGraphic::GetClassID() const { return VQCLASSID_VQGRAPHIC; }

void VQGraphic::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && body->GetType() != VQRTTYPE_GRAPHIC) vq::Throw(VQERR_CONVERSION_FAILED);
}

unsigned short VQGraphic::GetCDSignature() const { return Open(*this).GetCDSignature(); }

VQRTTYPE VQGraphic::GetPictureType() const {
  const VQRTBaseContainerBody* picture = PictureOf(Open(*this));
  return picture ? picture->GetType() : VQRTTYPE_NONE;
}

unsigned long VQGraphic::GetPartCount() const {
  const VQRTBaseContainerBody* picture = PictureOf(Open(*this));
  return picture ? picture->GetChildCount() : 0;
}

VQSTATUS VQGraphic::GetRecords(void* buffer, unsigned long size) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (GetRTObjectBody()->IsClosed()) return vq::Apply(VQERR_OBJECT_CLOSED);
  if (!buffer || size != GetSize()) return vq::Apply(VQERR_INVALID_PARAMETER);
  unsigned long at = 0;
  return vq::Apply(Gather(*GetRTObjectBody(), static_cast<unsigned char*>(buffer), &at));
}

VQSTATUS VQGraphic::SetRecords(const void* records, unsigned long size) {
  if (!records || size == 0 || size > UINT32_MAX - kTypeWord) return vq::Apply(VQERR_INVALID_PARAMETER);
  VQRichText text;
  if (VQSTATUS status = vq::Caught([&] { return Load(records, size, &text); })) {
    return vq::Apply(status == VQERR_INSUFFICIENT_MEMORY ? status : VQERR_RT_GRAPHIC_INVALID);
  }
  VQRTObjectBody* only = text.GetRichTextBody()->GetTop()->GetFirstChild();
  if (!only || only->GetNext() || only->GetType() != VQRTTYPE_GRAPHIC) return vq::Apply(VQERR_RT_GRAPHIC_INVALID);
  const VQRTObject copy(only->MakeSame());
  if (VQSTATUS status = copy.GetRTObjectBody()->Copy(only, VQRTCOPYOPTIONS_DEEP)) return vq::Apply(status);
  Attach(copy.GetRTObjectBody(), 0);
  return VQ_OK;
}
