// Reading and changing the records of a field.
#ifndef QUILLON_VQ_FORMS_FIELDEDIT_H
#define QUILLON_VQ_FORMS_FIELDEDIT_H

#include "vq/forms/fieldrec.h"
#include "vq/forms/vqfield.h"

namespace vq {

// As the record's data type and flags say it together.
constexpr VQCOMPUTEOPTION ComputeOptionOf(const FieldRecord& field) {
  const bool editable = (field.Flags & FIELD_EDITABLE) != 0;
  if (editable) return VQCOMPUTEOPTION_EDITABLE;
  if (field.DataType == TYPE_COMPOSITE) return VQCOMPUTEOPTION_WHEN_COMPOSED;
  if ((field.Flags & FIELD_COMPUTED) == 0) return VQCOMPUTEOPTION_FOR_DISPLAY;
  return (field.Flags & FIELD_WHEN_COMPOSED) != 0 ? VQCOMPUTEOPTION_WHEN_COMPOSED : VQCOMPUTEOPTION_COMPUTED;
}

}  // namespace vq

template <typename Read>
VQSTATUS VQFormFieldBody::WithField(Read read) const {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  const vq::RecordBytes bytes(*this);
  vq::FieldView field;
  const VQSTATUS status = ReadOwnRecord(bytes, &field);
  return status == VQ_OK ? read(field) : status;
}

template <typename Read>
VQSTATUS VQFormFieldBody::WithExtension(Read read) const {
  std::uint32_t length = 0;
  VQSTATUS status = WithField([&](const vq::FieldView& field) {
    length = field.Fixed.Header.Length;
    return VQ_OK;
  });
  if (status != VQ_OK) return status;
  const VQRTObjectBody* object = FindExtension();
  vq::FieldExtensionView extension;
  if (object == nullptr) {
    status = ReadOwnExtension(nullptr, length, &extension);
    return status == VQ_OK ? read(extension) : status;
  }
  const vq::RecordBytes bytes(*object);
  status = ReadOwnExtension(&bytes, length, &extension);
  return status == VQ_OK ? read(extension) : status;
}

template <typename Edit>
VQSTATUS VQFormFieldBody::EditField(Edit edit) {
  std::string record;
  std::string extension;
  const VQSTATUS status = WithField([&](const vq::FieldView& field) {
    vq::FieldView edited = field;
    if (VQSTATUS refused = edit(edited)) return refused;
    return BuildRecords(field, edited, &record, &extension);
  });
  return status == VQ_OK ? StoreRecords(record, extension) : status;
}

template <typename Edit>
VQSTATUS VQFormFieldBody::EditExtension(Edit edit) {
  std::string record;
  const VQSTATUS status = WithExtension([&](const vq::FieldExtensionView& extension) {
    vq::FieldExtensionView edited = extension;
    if (VQSTATUS refused = edit(edited)) return refused;
    return vq::BuildExtension(edited, &record);
  });
  return status == VQ_OK ? StoreExtension(record) : status;
}

#endif
