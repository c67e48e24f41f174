// The record side of VQRTObjectBody: reading and writing its bytes.
#include <algorithm>
#include <cstring>

#include "engine/ods.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtobjb.h"

unsigned short VQRTObjectBody::GetCDSignature() const {
  const vq::RecordBytes bytes(*this);
  if (bytes.GetSize() < 2) return 0;
  const std::uint16_t word = vq::LoadWord(bytes.Get());
  return (word >> 8) == 0xFF ? word : static_cast<unsigned short>(word & 0xFF);
}

std::uint32_t VQRTObjectBody::GetRecordSize() const {
  if (Content.IsOwn()) return Content.GetSize();
  return Content.GetSource() ? Content.GetLength() : 0;
}

VQSTATUS VQRTObjectBody::ReadRecord(std::uint32_t offset, void* buffer, std::uint32_t size) const {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!buffer) return VQERR_INVALID_PARAMETER;
  const vq::RecordBytes bytes(*this);
  if (offset > bytes.GetSize() || size > bytes.GetSize() - offset) return VQERR_RT_INVALID;
  std::memcpy(buffer, bytes.Get() + offset, size);
  return VQ_OK;
}

VQSTATUS VQRTObjectBody::ReadODS(unsigned short code, void* target, std::uint32_t offset) const {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const std::uint32_t size = EngOdsLength(code);
  if (!target || size == 0) return VQERR_INVALID_PARAMETER;
  const vq::RecordBytes bytes(*this);
  if (offset > bytes.GetSize() || size > bytes.GetSize() - offset) return VQERR_RT_INVALID;
  void* cursor = const_cast<unsigned char*>(bytes.Get() + offset);
  return vq::FromEngine(EngOdsRead(&cursor, code, target, 1));
}

VQSTATUS VQRTObjectBody::WriteRecord(std::uint32_t offset, const void* bytes, std::uint32_t size) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!bytes && size > 0) return VQERR_INVALID_PARAMETER;
  if (offset > GetRecordSize() || size > vq::kRecordLimit) return VQERR_INVALID_PARAMETER;
  NoteWrite(offset, size);
  MakeValue(offset + size);
  if (size > 0) std::memcpy(Content.GetBytes() + offset, bytes, size);
  return VQ_OK;
}

VQSTATUS VQRTObjectBody::WriteODS(unsigned short code, const void* source, std::uint32_t offset) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  const std::uint32_t size = EngOdsLength(code);
  if (!source || size == 0 || offset > GetRecordSize()) return VQERR_INVALID_PARAMETER;
  NoteWrite(offset, size);
  MakeValue(offset + size);
  void* cursor = Content.GetBytes() + offset;
  return vq::FromEngine(EngOdsWrite(&cursor, code, source, 1));
}

VQSTATUS VQRTObjectBody::SetRecord(const void* bytes, std::uint32_t length) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!bytes || length < 2 || length > vq::kRecordLimit) return VQERR_INVALID_PARAMETER;
  vq::RecordContent content;
  content.Resize(vq::Padded(length));
  std::memcpy(content.GetBytes(), bytes, length);
  GiveUpContent();
  Content = std::move(content);
  Counted = false;
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, true);
  MarkDirty();
  return VQ_OK;
}

void VQRTObjectBody::MakeValue(std::uint32_t size) {
  if (!Content.IsOwn()) TakeRecord(*this);
  if (!Content.IsOwn() || Content.GetSize() < size) Content.Resize(vq::Padded(size));
  Counted = false;
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, true);
  MarkDirty();
}

void VQRTObjectBody::KeepContent() {
  if (Content.GetSource()) TakeRecord(*this);
}

void VQRTObjectBody::Rebind(vq::RecordSource* source, std::uint32_t offset, std::uint32_t size) {
  source->AddReference();  // it may be the present one
  DropContent();
  Content.Look(source, offset, size);
  source->Release();
  SetFlag(VQRTOBJECTBODY_DIRTY, false);
}

// A view is kept as a whole when it goes.
void VQRTObjectBody::NoteWrite(std::uint32_t offset, std::uint32_t size) {
  vq::Edit* edit = Content.IsOwn() ? vq::Edit::Of(*this) : nullptr;
  if (edit) edit->Writes(*this, offset, size);
}

void VQRTObjectBody::GiveUpContent() {
  if (vq::Edit* edit = vq::Edit::Of(*this)) edit->TakesContent(*this);
  DropContent();
}

void VQRTObjectBody::DropContent() {
  SetFlag(VQRTOBJECTBODY_CDOUTDATED, false);
  if (vq::RecordSource* source = Content.GetSource()) source->SetOutdated();
  Content.Clear();
}
