#include "vq/forms/vqsharfl.h"

#include "vq/forms/formtext.h"
#include "vq/forms/vqfield.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned short kTitleFlags = VQITEMFLAGS_SIGN | VQITEMFLAGS_SUMMARY;

}  // namespace

VQSharedField::VQSharedField() = default;
VQSharedField::VQSharedField(VQDatabaseBody* database, unsigned long id) { Assign(database, id); }
VQSharedField::VQSharedField(const VQSharedField& other) = default;
VQSharedField::VQSharedField(const VQSlate& other) { *this = other; }
VQSharedField::VQSharedField(VQSharedFieldBody* body) : VQSlate(body) {}
VQSharedField::~VQSharedField() = default;

VQSharedField& VQSharedField::operator=(const VQSharedField& other) {
  VQSlate::operator=(other);
  return *this;
}
VQSharedField& VQSharedField::operator=(const VQSlate& other) {
  VQSlate::operator=(other);
  return *this;
}
VQSharedField& VQSharedField::operator=(VQSlateBody* body) {
  VQSlate::operator=(body);
  return *this;
}

VQCLASSID VQSharedField::GetClassID() const { return VQCLASSID_VQSHAREDFIELD; }

VQSTATUS VQSharedField::ValidateSlateType(unsigned long type) const {
  return (type & VQSLATECLASS_ALL) == VQSLATECLASS_FIELD ? VQ_OK : VQERR_INCORRECT_SLATE_TYPE;
}

VQSharedFieldBody* VQSharedField::GetSharedFieldBody() const { return static_cast<VQSharedFieldBody*>(Body); }

VQSTATUS VQSharedField::GetField(VQFormField* field) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && field == nullptr) status = VQERR_NULL_POINTER;
  VQFormFieldBody* found = nullptr;
  if (status == VQ_OK) status = GetSharedFieldBody()->FindField(&found);
  if (status == VQ_OK) status = field->CheckType(VQRTObject(found));
  if (status == VQ_OK) *field = found;
  return vq::Apply(status);
}

VQSTATUS VQSharedField::SetField(const VQFormField& field) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? GetSharedFieldBody()->SetField(field) : status);
}

VQSharedFieldBody::VQSharedFieldBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQSlateBody(database, type, handle) {}

VQCLASSID VQSharedFieldBody::GetClassID() const { return VQCLASSID_VQSHAREDFIELDBODY; }

VQSTATUS VQSharedFieldBody::FindField(VQFormFieldBody** field) {
  VQRichTextBody* text = nullptr;
  if (VQSTATUS status = vq::FindBodyText(this, &text)) return status;
  if (VQSTATUS status = text->Initialize()) return status;
  VQRTObjectBody* found = text->GetTop()->FirstOfType(VQRTTYPE_FORM_FIELD);
  if (found == nullptr) return VQWARN_NOT_FOUND;
  *field = static_cast<VQFormFieldBody*>(found);
  return VQ_OK;
}

VQSTATUS VQSharedFieldBody::SetField(const VQFormField& field) {
  if (field.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQFormFieldBody* source = field.GetFormFieldBody();
  std::string name;
  if (VQSTATUS status = source->ReadName(&name)) return status;
  if (source->IsSharedField()) return VQERR_INVALID_PARAMETER;
  VQSTATUS status =
      vq::CheckNamesAreFree(GetDatabaseBody(), VQSLATECLASS_FIELD, GetID(), {name}, VQERR_SHARED_FIELD_EXISTS);
  VQRichTextBody* text = nullptr;
  if (status == VQ_OK) status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) status = text->Initialize();
  if (status != VQ_OK) return status;
  VQFormFieldBody* present = nullptr;
  status = FindField(&present);
  if (status == VQWARN_NOT_FOUND) status = text->GetTop()->Append(VQFormField(source), nullptr);
  if (status == VQ_OK && present != nullptr && present != source) status = present->TakeDesign(*source);
  return status == VQ_OK ? SaveTitle(name) : status;
}

VQSTATUS VQSharedFieldBody::SaveTitle(const std::string& name) {
  return CreateItem("$TITLE", TYPE_TEXT, name.data(), name.size(), kTitleFlags, VQITEMOPTION_REPLACE, nullptr);
}

// The field may have been renamed since.
VQSTATUS VQSharedFieldBody::PrepareSave() {
  VQFormFieldBody* field = nullptr;
  std::string name;
  VQSTATUS status = IsOpen() ? FindField(&field) : VQWARN_NOT_FOUND;
  if (status == VQWARN_NOT_FOUND) return VQ_OK;
  if (status == VQ_OK) status = field->ReadName(&name);
  if (status != VQ_OK || TextOf("$TITLE") == name) return status;
  status = vq::CheckNamesAreFree(GetDatabaseBody(), VQSLATECLASS_FIELD, GetID(), {name}, VQERR_SHARED_FIELD_EXISTS);
  return status == VQ_OK ? SaveTitle(name) : status;
}

VQSTATUS VQSharedFieldBody::Save(unsigned short flags) {
  const VQSTATUS status = PrepareSave();
  return status == VQ_OK ? VQSlateBody::Save(flags) : status;
}

VQCLASSID VQSharedFieldArray::GetClassID() const { return VQCLASSID_VQSHAREDFIELDARRAY; }
VQSharedField VQSharedFieldArray::operator[](unsigned long index) const {
  return VQSharedField(VQSlateArray::operator[](index));
}
