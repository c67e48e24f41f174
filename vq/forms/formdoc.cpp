// VQDocument: the document's form.
#include "engine/compute.h"
#include "vq/forms/vqformb.h"
#include "vq/store/storetext.h"
#include "vq/store/vqdoc.h"

VQSTATUS VQDocument::GetFormSlate(VQForm* form) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status == VQ_OK && form == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  const std::string name = body->TextOf("Form");
  std::uint32_t id = 0;
  if (!name.empty()) {
    status = body->GetDatabaseBody()->FindReferenced(VQSLATECLASS_FORM, VQDESIGNKIND_FORM, name, &id);
  }
  if (status != VQ_OK && status != VQERR_NOT_FOUND) return vq::Apply(status);
  if (id != 0) return vq::Apply(form->BindTo(body->GetDatabaseBody(), id));
  *form = VQForm();
  return VQ_OK;
}

VQSTATUS VQDocument::ComputeWithForm(int continue_on_error) const {
  return ComputeWithForm(continue_on_error, nullptr, nullptr);
}

VQSTATUS VQDocument::ComputeWithForm(int continue_on_error, VQString* field, VQString* message) const {
  VQDocumentBody* body = nullptr;
  VQSTATUS status = CheckDocument(&body);
  if (status == VQ_OK) status = body->FlushItems();
  if (status != VQ_OK) return vq::Apply(status);
  ENGCOMPUTEFAILURE failure{};
  status = vq::FromEngine(EngSlateCompute(body->GetHandle(), 0, continue_on_error != 0, &failure, nullptr));
  if (field != nullptr) *field = vq::StringOf({reinterpret_cast<char*>(failure.Field), failure.FieldLength});
  if (message != nullptr) *message = vq::StringOf({reinterpret_cast<char*>(failure.Message), failure.MessageLength});
  const VQSTATUS read = body->RereadItems();
  return vq::Apply(status == VQ_OK ? read : status);
}
