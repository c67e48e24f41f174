// The door that every getter and setter of a field goes through.
#ifndef QUILLON_VQ_FORMS_FIELDACCESS_H
#define QUILLON_VQ_FORMS_FIELDACCESS_H

#include <optional>

#include "vq/forms/fieldedit.h"

template <typename Value, typename Read>
Value VQFormField::Get(VQRTTYPE type, Read read) const {
  VQFormFieldBody* body = nullptr;
  std::optional<Value> value;
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK) {
    status = body->WithField([&](const vq::FieldView& field) {
      value.emplace(read(field));
      return VQ_OK;
    });
  }
  vq::ThrowIfError(status);
  return value ? *value : Value{};
}

template <typename Edit>
VQSTATUS VQFormField::Set(VQRTTYPE type, Edit edit) {
  VQFormFieldBody* body = nullptr;
  const VQSTATUS status = Resolve(&body, type);
  return vq::Apply(status == VQ_OK ? body->EditField(edit) : status);
}

template <typename Value, typename Read>
Value VQFormField::GetExtended(VQRTTYPE type, Read read) const {
  VQFormFieldBody* body = nullptr;
  Value value{};
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK) {
    status = body->WithExtension([&](const View& view) {
      value = read(view);
      return VQ_OK;
    });
  }
  vq::ThrowIfError(status);
  return value;
}

template <typename Edit>
VQSTATUS VQFormField::SetExtended(VQRTTYPE type, Edit edit) {
  VQFormFieldBody* body = nullptr;
  const VQSTATUS status = Resolve(&body, type);
  return vq::Apply(status == VQ_OK ? body->EditExtension(edit) : status);
}

#endif
