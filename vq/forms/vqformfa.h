// VQFormFieldArray: the fields of a form, or those of one kind.
#ifndef QUILLON_VQ_FORMS_VQFORMFA_H
#define QUILLON_VQ_FORMS_VQFORMFA_H

#include "vq/forms/vqformb.h"

// A view of the form's list of fields, not a copy: fields that are added or removed come and go in it. Keeps the form.
class VQ_API VQFormFieldArrayBody : public VQBody {
 public:
  VQFormFieldArrayBody(VQFormBody* formbody, VQRTTYPE type);
  VQCLASSID GetClassID() const override;

  [[nodiscard]] VQSTATUS Count(unsigned long* count) const;
  // VQERR_BAD_SUBSCRIPT.
  [[nodiscard]] VQSTATUS Find(unsigned long index, VQFormFieldBody** field) const;

 private:
  [[nodiscard]] VQSTATUS Refresh() const;
  // The next field of the type in the list; null behind the last.
  VQFormFieldBody* Next(VQFormFieldBody* field) const;

  VQForm Form;
  const VQObjectList* FieldList;  // the form's
  VQRTTYPE Type;
  // Where the last search ended, so that a walk by index is one walk of the list.
  mutable VQFormFieldBody* LastField;
  mutable unsigned long LastIndex;
  mutable unsigned long LastGeneration;  // of the list
};

// A null array has no entries.
class VQ_API VQFormFieldArray : public VQSmartPtr {
 public:
  VQFormFieldArray();
  VQFormFieldArray(const VQFormFieldArray& other);
  VQFormFieldArray& operator=(const VQFormFieldArray& other);
  VQCLASSID GetClassID() const override;

  // Throws VQERR_BAD_SUBSCRIPT.
  VQFormField operator[](unsigned long index) const;
  unsigned long GetCount() const;

  // For the library's own code. A null form fails the assertion "formbody".
  VQSTATUS Assign(VQFormBody* formbody, VQFormFieldArrayBody* body);
};

#endif
