// VQItem: the handle's checks and the throw rule.
#include "vq/store/vqitem.h"

#include "engine/slate.h"
#include "engine/status.h"
#include "vq/store/makers.h"
#include "vq/store/storetext.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqdtime.h"

VQItem::VQItem() = default;
VQItem::VQItem(const VQItem& other) = default;
VQItem::VQItem(VQItemBody* body) : VQSmartPtr(body) {}

VQItem& VQItem::operator=(const VQItem& other) {
  VQSmartPtr::operator=(other);
  return *this;
}

VQItem& VQItem::operator=(VQItemBody* body) {
  VQSmartPtr::operator=(body);
  return *this;
}

VQCLASSID VQItem::GetClassID() const { return VQCLASSID_VQITEM; }

VQItemBody* VQItem::RequireBody() const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return GetItemBody();
}

VQSTATUS VQItem::Alloc(unsigned long size, unsigned long offset) {
  if (!VQIsQuillonInitialized()) return vq::Apply(VQERR_NOT_INITIALIZED);
  if (Body != nullptr) return vq::Apply(GetItemBody()->Allocate(size, offset));
  const vq::ItemKindRow* kind = vq::FindItemKind(GetClassID());
  if (kind != nullptr && kind->MakeEmpty == nullptr) return vq::Apply(VQERR_INCORRECT_ITEM_TYPE);
  VQItem fresh(kind != nullptr ? kind->MakeEmpty() : new VQItemBody());
  const VQSTATUS status = fresh.GetItemBody()->Allocate(size, offset);
  if (status == VQ_OK) VQSmartPtr::operator=(fresh.Body);
  return vq::Apply(status);
}

VQSTATUS VQItem::Assign(VQSlateBody* slate, VQItemBody* body) {
  if (body != nullptr) {
    if (body->GetSlateBody() != slate) return vq::Apply(VQERR_INVALID_PARAMETER);
    if (!vq::AcceptsItemBody(GetClassID(), body->GetClassID())) return vq::Apply(VQERR_INCORRECT_ITEM_TYPE);
  }
  VQSmartPtr::operator=(body);
  return VQ_OK;
}

VQSTATUS VQItem::Expand(unsigned long offset, unsigned long size) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetItemBody()->Expand(offset, size));
}

VQSTATUS VQItem::Shorten(unsigned long offset, unsigned long size) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetItemBody()->Shorten(offset, size));
}

VQString VQItem::GetName() const { return vq::StringOf(RequireBody()->GetNameText()); }
unsigned long VQItem::GetType() const { return RequireBody()->GetType(); }
unsigned short VQItem::GetFlags() const { return RequireBody()->GetFlags(); }
unsigned long VQItem::GetValueSize() const { return RequireBody()->GetValueSize(); }

VQSlate VQItem::GetSlate() const {
  VQItemBody* body = RequireBody();
  if (body->GetSlateBody() == nullptr) vq::Throw(VQERR_NOT_IN_SLATE);
  return VQSlate(body->GetSlateBody());
}

VQDatetime VQItem::GetLastModified() const {
  VQItemBody* body = RequireBody();
  if (!body->IsSlateItem()) vq::Throw(VQERR_NOT_IN_SLATE);
  vq::ThrowIfError(body->CheckValue());
  TIMEDATE modified{};
  const ENGSTATUS result = EngItemGetModified(body->GetSlateBody()->GetHandle(), body->GetItemBlock(), &modified);
  vq::ThrowIfError(vq::FromEngine(result));
  return VQDatetime(modified);
}

int VQItem::GetExpandOnSave() const { return (RequireBody()->GetState() & VQItemBody::kExpandOnSave) != 0; }

VQSTATUS VQItem::SetExpandOnSave(int flag) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  GetItemBody()->SetState(VQItemBody::kExpandOnSave, flag != 0);
  if (flag != 0) GetItemBody()->SetDirty(1);
  return VQ_OK;
}

int VQItem::IsDeleted() const { return (RequireBody()->GetState() & VQItemBody::kDeleted) != 0; }
int VQItem::IsDirty() const { return RequireBody()->IsDirty(); }
int VQItem::IsSlateItem() const { return RequireBody()->IsSlateItem(); }
int VQItem::IsType(unsigned long type) const { return RequireBody()->GetType() == type; }

VQSTATUS VQItem::Read(unsigned long offset, unsigned long size, void* buffer) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (buffer == nullptr && size != 0) return vq::Apply(VQERR_NULL_POINTER);
  return vq::Apply(GetItemBody()->Read(offset, size, buffer));
}

VQSTATUS VQItem::ReadODS(unsigned long offset, unsigned short type, void* target) const {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (target == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  return vq::Apply(GetItemBody()->ReadODS(offset, type, target));
}

VQSTATUS VQItem::Write(unsigned long offset, unsigned long size, const void* data) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (data == nullptr && size != 0) return vq::Apply(VQERR_NULL_POINTER);
  return vq::Apply(GetItemBody()->Write(offset, size, data));
}

VQSTATUS VQItem::WriteODS(unsigned long offset, unsigned short type, const void* source) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (source == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  return vq::Apply(GetItemBody()->WriteODS(offset, type, source));
}
