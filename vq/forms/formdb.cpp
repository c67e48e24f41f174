// VQDatabase: forms, subforms and shared fields.
#include "engine/database.h"
#include "engine/idtable.h"
#include "engine/status.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/store/desflags.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned long kFormType = VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16;
constexpr unsigned long kSubformType = VQSLATECLASS_FORM | VQDESIGNKIND_SUBFORM << 16;
constexpr unsigned long kSharedFieldType = VQSLATECLASS_FIELD;

// One that is damaged stays in the list: its own status is for those who bind it, and the others can be had.
VQSTATUS KeepKind(VQDatabaseBody* database, unsigned long type, ENGHANDLE all, ENGHANDLE kept) {
  VQSTATUS status = VQ_OK;
  std::uint32_t id = 0;
  for (int more = EngIdTableScan(all, 1, &id); status == VQ_OK && more != 0; more = EngIdTableScan(all, 0, &id)) {
    std::uint16_t kind = 0;
    status = vq::ReadDesignKind(database, id, static_cast<std::uint16_t>(type), &kind);
    const bool gone = status == ENG_ERR_SLATE_DELETED || status == ENG_ERR_NO_SLATE;
    const bool damaged = status == ENG_ERR_ITEM_DAMAGED;
    if (gone || damaged) status = VQ_OK;
    if (status == VQ_OK && !gone && (damaged || kind == type >> 16)) {
      status = vq::FromEngine(EngIdTableInsert(kept, id, nullptr));
    }
  }
  return status;
}

}  // namespace

VQSTATUS VQDatabase::ListDesigns(unsigned long type, VQSlateArray* slates) const {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && slates == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  const auto slate_class = static_cast<std::uint16_t>(type);
  ENGHANDLE all = 0;
  ENGHANDLE kept = 0;
  status = vq::FromEngine(EngDbSearchClass(body->GetHandle(), slate_class, nullptr, nullptr, &all));
  if (status == VQ_OK) status = vq::FromEngine(EngIdTableCreate(sizeof(std::uint32_t), &kept));
  if (status == VQ_OK) status = KeepKind(body, type, all, kept);
  if (all != 0) EngIdTableDestroy(all);
  if (status == VQ_OK) return vq::Apply(FillArray(kept, slate_class, slates));
  if (kept != 0) EngIdTableDestroy(kept);
  return vq::Apply(status);
}

VQSTATUS VQDatabase::GetForm(const unsigned long id, VQForm* form) const { return GetSlate(id, form); }
VQSTATUS VQDatabase::GetForm(const UNIVERSALSLATEID* universal, VQForm* form) const {
  return GetSlate(universal, form);
}
VQSTATUS VQDatabase::GetForm(void* handle, VQForm* form) const { return GetSlate(handle, form); }
VQSTATUS VQDatabase::GetForm(const VQString& name, VQForm* form) const { return GetDesignSlate(kFormType, name, form); }
VQSTATUS VQDatabase::GetForms(VQFormArray* forms) const { return ListDesigns(kFormType, forms); }

VQSTATUS VQDatabase::GetSubform(const unsigned long id, VQSubform* subform) const { return GetSlate(id, subform); }
VQSTATUS VQDatabase::GetSubform(const UNIVERSALSLATEID* universal, VQSubform* subform) const {
  return GetSlate(universal, subform);
}
VQSTATUS VQDatabase::GetSubform(void* handle, VQSubform* subform) const { return GetSlate(handle, subform); }
VQSTATUS VQDatabase::GetSubform(const VQString& name, VQSubform* subform) const {
  return GetDesignSlate(kSubformType, name, subform);
}
VQSTATUS VQDatabase::GetSubforms(VQSubformArray* subforms) const { return ListDesigns(kSubformType, subforms); }

VQSTATUS VQDatabase::GetSharedField(const unsigned long id, VQSharedField* field) const { return GetSlate(id, field); }
VQSTATUS VQDatabase::GetSharedField(const UNIVERSALSLATEID* universal, VQSharedField* field) const {
  return GetSlate(universal, field);
}
VQSTATUS VQDatabase::GetSharedField(void* handle, VQSharedField* field) const { return GetSlate(handle, field); }
VQSTATUS VQDatabase::GetSharedField(const VQString& name, VQSharedField* field) const {
  return GetDesignSlate(kSharedFieldType, name, field);
}
VQSTATUS VQDatabase::GetSharedFields(VQSharedFieldArray* fields) const { return ListDesigns(kSharedFieldType, fields); }

VQSTATUS VQDatabase::CreateForm(const VQString& name, VQForm* form) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && form == nullptr) status = VQERR_NULL_POINTER;
  VQSlateBody* slate = nullptr;
  if (status == VQ_OK) status = body->CreateSlate(kFormType, &slate);
  if (status != VQ_OK) return vq::Apply(status);
  auto* made = static_cast<VQFormBody*>(slate);
  const VQForm hold(made);
  std::vector<std::string> parts;
  status = made->CheckName(name, &parts);
  if (status == VQ_OK) {
    made->TakeName(vq::StringOf(parts.front()));
    status = made->Open(0);
  }
  if (status == VQ_OK) status = made->SetName(name);
  if (status == VQ_OK) *form = hold;
  return vq::Apply(status);
}

// In its own database the source stays the default form.
VQSTATUS VQDatabase::CreateForm(VQForm& source, VQForm* form) {
  const bool same = source.GetDatabaseBody() == GetDatabaseBody();
  return vq::Apply(CopyInto(source, same ? VQSLATECLASS_FORM : 0, form));
}

VQSTATUS VQDatabase::DeleteForm(VQForm* form) { return DeleteSlate(form); }
VQSTATUS VQDatabase::DeleteForm(const VQString& name) {
  VQForm form;
  const VQSTATUS status = GetForm(name, &form);
  return status == VQ_OK ? DeleteSlate(&form) : status;
}

VQSTATUS VQDatabase::CreateSubform(const VQString& name, VQSubform* subform) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && subform == nullptr) status = VQERR_NULL_POINTER;
  VQSlateBody* slate = nullptr;
  if (status == VQ_OK) status = body->CreateSlate(kSubformType, &slate);
  if (status != VQ_OK) return vq::Apply(status);
  auto* made = static_cast<VQSubformBody*>(slate);
  const VQSubform hold(made);
  status = made->SetName(name);
  if (status == VQ_OK) *subform = hold;
  return vq::Apply(status);
}

VQSTATUS VQDatabase::CreateSubform(VQSubform& source, VQSubform* subform) {
  return vq::Apply(CopyInto(source, 0, subform));
}
VQSTATUS VQDatabase::DeleteSubform(VQSubform* subform) { return DeleteSlate(subform); }
VQSTATUS VQDatabase::DeleteSubform(const VQString& name) {
  VQSubform subform;
  const VQSTATUS status = GetSubform(name, &subform);
  return status == VQ_OK ? DeleteSlate(&subform) : status;
}

VQSTATUS VQDatabase::CreateSharedField(const VQFormField& field, VQSharedField* shared) {
  VQDatabaseBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  VQSlateBody* slate = nullptr;
  if (status == VQ_OK) status = body->CreateSlate(kSharedFieldType, &slate);
  if (status != VQ_OK) return vq::Apply(status);
  auto* made = static_cast<VQSharedFieldBody*>(slate);
  VQSharedField hold(made);
  status = made->SetField(field);
  if (status == VQ_OK) status = made->Save(0);
  if (status != VQ_OK) return vq::Apply(status);
  VQSharedField saved;
  status = saved.BindTo(body, made->GetID());
  if (status == VQ_OK && shared != nullptr) *shared = saved;
  return vq::Apply(status);
}

VQSTATUS VQDatabase::CreateSharedField(VQSharedField& source, VQSharedField* shared) {
  return vq::Apply(CopyInto(source, 0, shared));
}
VQSTATUS VQDatabase::DeleteSharedField(VQSharedField* field) { return DeleteSlate(field); }
VQSTATUS VQDatabase::DeleteSharedField(const VQString& name) {
  VQSharedField field;
  const VQSTATUS status = GetSharedField(name, &field);
  return status == VQ_OK ? DeleteSlate(&field) : status;
}
