// VQSharedField: the design of a field that fields of many forms point at, a slate of its own.
#ifndef QUILLON_VQ_FORMS_VQSHARFL_H
#define QUILLON_VQ_FORMS_VQSHARFL_H

#include "vq/store/vqidtab.h"
#include "vq/store/vqslate.h"

class VQFormField;
class VQFormFieldBody;
class VQSharedFieldBody;

// Binds, opens and saves as any slate (vq/store/vqslate.h). Its name is that of its field. A slate of another class is
// refused with VQERR_INCORRECT_SLATE_TYPE.
class VQ_API VQSharedField : public VQSlate {
 public:
  VQSharedField();
  VQSharedField(VQDatabaseBody* database, unsigned long id);
  VQSharedField(const VQSharedField& other);
  explicit VQSharedField(const VQSlate& other);
  explicit VQSharedField(VQSharedFieldBody* body);
  ~VQSharedField();
  VQSharedField& operator=(const VQSharedField& other);
  VQSharedField& operator=(const VQSlate& other);
  VQSharedField& operator=(VQSlateBody* body);
  VQCLASSID GetClassID() const override;
  using VQSlate::ValidateSlateType;
  VQSTATUS ValidateSlateType(unsigned long type) const override;

  // The field itself, so that changes are saved with the slate, where a name that another one has is refused as by
  // SetField. VQWARN_NOT_FOUND for a slate without one.
  VQSTATUS GetField(VQFormField* field) const;
  // A copy of the field becomes the definition, and its name the slate's. VQERR_SHARED_FIELD_EXISTS when another shared
  // field has the name, VQERR_INVALID_PARAMETER for a shared field.
  VQSTATUS SetField(const VQFormField& field);

  VQSharedFieldBody* GetSharedFieldBody() const;
};

class VQ_API VQSharedFieldBody : public VQSlateBody {
 public:
  VQSharedFieldBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle);
  VQCLASSID GetClassID() const override;
  VQSTATUS Save(unsigned short flags) override;
  VQSTATUS PrepareSave() override;

  // VQWARN_NOT_FOUND.
  [[nodiscard]] VQSTATUS FindField(VQFormFieldBody** field);
  [[nodiscard]] VQSTATUS SetField(const VQFormField& field);

 private:
  [[nodiscard]] VQSTATUS SaveTitle(const std::string& name);
};

class VQ_API VQSharedFieldArray : public VQSlateArray {
 public:
  using VQSlateArray::VQSlateArray;
  VQCLASSID GetClassID() const override;
  VQSharedField operator[](unsigned long index) const;
};

#endif
