// VQSubform: a part of a form that stands in a slate of its own. VQRTSubform: the place where a form inserts one.
#ifndef QUILLON_VQ_FORMS_VQSUBFRM_H
#define QUILLON_VQ_FORMS_VQSUBFRM_H

#include "vq/richtext/vqrtobj.h"
#include "vq/store/vqidtab.h"
#include "vq/store/vqslate.h"

class VQRichText;
class VQSubformBody;

// Binds, opens and saves as any slate (vq/store/vqslate.h). Its rich text holds fields as a form's does. A slate of
// another kind is refused with VQERR_INCORRECT_SLATE_TYPE.
class VQ_API VQSubform : public VQSlate {
 public:
  VQSubform();
  VQSubform(VQDatabaseBody* database, unsigned long id);
  VQSubform(const VQSubform& other);
  explicit VQSubform(const VQSlate& other);
  explicit VQSubform(VQSubformBody* body);
  ~VQSubform();
  VQSubform& operator=(const VQSubform& other);
  VQSubform& operator=(const VQSlate& other);
  VQSubform& operator=(VQSlateBody* body);
  VQCLASSID GetClassID() const override;
  using VQSlate::ValidateSlateType;
  VQSTATUS ValidateSlateType(unsigned long type) const override;

  // Name and alias, split at bars, in $TITLE. VQERR_NULL_STRING, VQERR_INVALID_PARAMETER for an empty first part,
  // VQERR_SUBFORM_NAME_TOO_LONG from 130 bytes on, VQERR_SUBFORM_NOT_UNIQUE when another subform has the name.
  VQSTATUS SetName(const VQString& name);
  // The rich text, made when there is none.
  VQSTATUS GetSubformBody(VQRichText* body) const;

  VQSubformBody* GetSubformSlateBody() const;
};

class VQ_API VQSubformBody : public VQSlateBody {
 public:
  VQSubformBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  VQCLASSID GetClassID() const override;
  // A subform without a name gives VQERR_SUBFORM_NAME_REQUIRED.
  VQSTATUS Save(unsigned short flags) override;
  VQSTATUS PrepareSave() override;
  VQSTATUS AdmitObjects(VQRichTextBody& text, const VQRTObjectBody& incoming, const VQSlateBody* from) override;

  [[nodiscard]] VQSTATUS SetName(const VQString& name);
};

class VQ_API VQSubformArray : public VQSlateArray {
 public:
  using VQSlateArray::VQSlateArray;
  VQCLASSID GetClassID() const override;
  VQSubform operator[](unsigned long index) const;
};

// An element that stands for a subform, which it names.
class VQ_API VQRTSubform : public VQRTElement {
 public:
  VQRTSubform() = default;
  // An element that stands alone. VQERR_UNINITIALIZED_ARGUMENT for a null subform; thrown.
  explicit VQRTSubform(const VQSubform& subform);
  VQRTSubform(const VQRTObject& object);
  VQRTSubform(const VQRTSubform& other) : VQRTElement(other) {}
  using VQRTObject::operator=;
  VQRTSubform& operator=(const VQRTSubform& other) = default;
  VQCLASSID GetClassID() const override;

  VQString GetSubformName() const;
  // Bound, not opened. VQERR_SUBFORM_NEEDS_DATABASE for an element outside a slate, VQERR_NO_SUBFORM.
  VQSTATUS GetSubform(VQSubform* subform) const;

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

namespace vq {

// The name in the begin record of a subform; VQERR_RT_INVALID for one that is cut off.
[[nodiscard]] VQSTATUS ReadSubformName(const VQRTObjectBody& element, std::string* name);
// As VQRTSubform::GetSubform.
[[nodiscard]] VQSTATUS FindSubform(const VQRTObjectBody& element, VQSubform* subform);
// The one that an element of any rich text would stand for in that database; VQERR_NO_SUBFORM.
[[nodiscard]] VQSTATUS FindSubformIn(VQDatabaseBody* database, const VQRTObjectBody& element, VQSubform* subform);

}  // namespace vq

#endif
