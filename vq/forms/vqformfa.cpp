#include "vq/forms/vqformfa.h"

namespace {

VQFormFieldBody* AsField(VQQuillonClass* object) {
  return static_cast<VQFormFieldBody*>(static_cast<VQRTObjectBody*>(object));
}

}  // namespace

VQFormFieldArrayBody::VQFormFieldArrayBody(VQFormBody* formbody, VQRTTYPE type)
    : FieldList(nullptr), Type(type), LastField(nullptr), LastIndex(0), LastGeneration(0) {
  VQ_ASSERT_TEXT(formbody, "formbody", "VQFORMFA");
  Form = formbody;
  FieldList = &formbody->GetFieldList();
}

VQCLASSID VQFormFieldArrayBody::GetClassID() const { return VQCLASSID_VQFORMFIELDARRAYBODY; }

VQSTATUS VQFormFieldArrayBody::Refresh() const {
  VQFormBody* form = Form.GetFormSlateBody();
  if (!form->IsFormOpen()) return VQERR_FORM_NOT_OPEN;
  const VQSTATUS status = form->BuildFieldList();
  if (form->GetListGeneration() != LastGeneration) LastField = nullptr;
  LastGeneration = form->GetListGeneration();
  return status;
}

VQFormFieldBody* VQFormFieldArrayBody::Next(VQFormFieldBody* field) const {
  VQFormFieldBody* next = AsField(field != nullptr ? FieldList->GetNext(field) : FieldList->GetFirst());
  while (next != nullptr && !next->IsType(Type)) next = AsField(FieldList->GetNext(next));
  return next;
}

VQSTATUS VQFormFieldArrayBody::Count(unsigned long* count) const {
  if (VQSTATUS status = Refresh()) return status;
  *count = 0;
  for (VQFormFieldBody* field = Next(nullptr); field != nullptr; field = Next(field)) ++*count;
  return VQ_OK;
}

VQSTATUS VQFormFieldArrayBody::Find(unsigned long index, VQFormFieldBody** field) const {
  if (VQSTATUS status = Refresh()) return status;
  if (LastField == nullptr || index < LastIndex) {
    LastField = Next(nullptr);
    LastIndex = 0;
  }
  while (LastField != nullptr && LastIndex < index) {
    LastField = Next(LastField);
    ++LastIndex;
  }
  if (LastField == nullptr) return VQERR_BAD_SUBSCRIPT;
  *field = LastField;
  return VQ_OK;
}

VQFormFieldArray::VQFormFieldArray() = default;
VQFormFieldArray::VQFormFieldArray(const VQFormFieldArray& other) = default;
VQFormFieldArray& VQFormFieldArray::operator=(const VQFormFieldArray& other) = default;
VQCLASSID VQFormFieldArray::GetClassID() const { return VQCLASSID_VQFORMFIELDARRAY; }

VQFormField VQFormFieldArray::operator[](unsigned long index) const {
  if (Body == nullptr) vq::Throw(VQERR_BAD_SUBSCRIPT);
  VQFormFieldBody* field = nullptr;
  vq::ThrowIfError(static_cast<VQFormFieldArrayBody*>(Body)->Find(index, &field));
  return VQFormField(field);
}

unsigned long VQFormFieldArray::GetCount() const {
  if (Body == nullptr) return 0;
  unsigned long count = 0;
  vq::ThrowIfError(static_cast<VQFormFieldArrayBody*>(Body)->Count(&count));
  return count;
}

VQSTATUS VQFormFieldArray::Assign(VQFormBody* formbody, VQFormFieldArrayBody* body) {
  VQ_ASSERT_TEXT(formbody, "formbody", "VQFORMFA");
  VQSmartPtr::operator=(body);
  return VQ_OK;
}

VQCLASSID VQFormArray::GetClassID() const { return VQCLASSID_VQFORMARRAY; }
VQForm VQFormArray::operator[](unsigned long index) const { return VQForm(VQSlateArray::operator[](index)); }
