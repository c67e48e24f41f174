// VQFormFieldBody: shared fields, and what a form's Save asks of a field.
#include "vq/forms/fieldedit.h"
#include "vq/forms/vqformb.h"
#include "vq/richtext/font.h"
#include "vq/store/storetext.h"

VQDatabaseBody* VQFormFieldBody::GetDatabaseBody() const {
  const VQRichTextBody* text = GetRichTextBody();
  VQSlateBody* slate = text != nullptr ? text->GetSlateBody() : nullptr;
  return slate != nullptr ? slate->GetDatabaseBody() : nullptr;
}

// The flags alone: every operation asks. What else the record says is checked by what reads it.
bool VQFormFieldBody::IsSharedField() const {
  constexpr std::uint32_t kFlags = 4;
  if (IsClosed()) return false;
  const vq::RecordBytes bytes(*this);
  return bytes.GetSize() >= kFlags + 2 && (vq::LoadWord(bytes.Get() + kFlags) & FIELD_REFERENCE) != 0;
}

// The definition is the stored slate of the field's name; one that was deleted meanwhile is none.
VQSTATUS VQFormFieldBody::OpenDefinition() {
  std::string name;
  if (VQSTATUS status = ReadName(&name)) return status;
  return vq::Caught([&]() -> VQSTATUS {
    if (SharedField.IsOpen() && SharedField.IsDeleted() == 0) return VQ_OK;
    VQDatabaseBody* database = SharedField.IsNull() ? GetDatabaseBody() : SharedField.GetDatabaseBody();
    SharedField = static_cast<VQSlateBody*>(nullptr);
    if (database == nullptr || !database->IsOpen()) return VQERR_NO_SHARED_FIELD;
    std::uint32_t id = 0;
    VQSTATUS status = database->FindDesign(VQSLATECLASS_FIELD, 0, name, &id);
    if (status == VQERR_NOT_FOUND) return VQERR_NO_SHARED_FIELD;
    if (status == VQ_OK) status = SharedField.BindTo(database, id);
    return status == VQ_OK ? SharedField.CreateSlateBody(0, 0, 0) : status;
  });
}

VQSTATUS VQFormFieldBody::Resolve(VQFormFieldBody** body) {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  *body = this;
  if (!IsSharedField()) return VQ_OK;
  if (VQSTATUS status = OpenDefinition()) return status;
  VQFormFieldBody* definition = nullptr;
  const VQSTATUS status = SharedField.GetSharedFieldBody()->FindField(&definition);
  if (status == VQWARN_NOT_FOUND || (status == VQ_OK && definition->IsSharedField())) return VQERR_NO_SHARED_FIELD;
  if (status == VQ_OK) *body = definition;
  return status;
}

VQSTATUS VQFormFieldBody::TakeDesign(const VQFormFieldBody& source) {
  const vq::RecordBytes bytes(source);
  vq::FieldView field{};
  std::string record;
  VQSTATUS status = vq::ReadField(bytes.Get(), bytes.GetSize(), &field);
  field.Fixed.Flags &= static_cast<std::uint16_t>(~FIELD_REFERENCE);
  if (status == VQ_OK) status = vq::BuildField(field, &record);
  VQFontStyle font;
  if (status == VQ_OK) status = source.GetFont(&font);
  std::string extension;
  if (const VQRTObjectBody* object = source.FindExtension()) {
    const vq::RecordBytes extended(*object);
    extension.assign(reinterpret_cast<const char*>(extended.Get()), extended.GetSize());
  }
  if (status != VQ_OK) return status;
  if (VQRTObjectBody* present = extension.empty() ? FindExtension() : nullptr) {
    if (VQSTATUS deleted = present->Delete()) return deleted;
  }
  SetType(source.GetType());
  status = StoreRecords(record, extension);
  return status == VQ_OK ? SetFont(font) : status;
}

VQSTATUS VQFormFieldBody::Share() {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  if (IsSharedField()) return VQWARN_FIELD_SHARED;
  VQDatabaseBody* database = GetDatabaseBody();
  if (database == nullptr) return VQERR_WRONG_SITUATION;
  VQSharedField made;
  VQDatabase owner(database);
  VQSTATUS status = vq::Caught([&] { return owner.CreateSharedField(VQFormField(this), &made); });
  if (status == VQ_OK) status = CutToName();
  if (status == VQ_OK) SharedField = made;
  return status;
}

VQSTATUS VQFormFieldBody::Unshare() {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  if (!IsSharedField()) return VQWARN_FIELD_NOT_SHARED;
  VQFormFieldBody* definition = nullptr;
  VQSTATUS status = Resolve(&definition);
  if (status == VQ_OK) status = TakeDesign(*definition);
  if (status == VQ_OK) SharedField = static_cast<VQSlateBody*>(nullptr);
  return status;
}

VQSTATUS VQFormFieldBody::PointAt(const VQSharedField& shared) {
  if (IsClosed()) return VQERR_OBJECT_CLOSED;
  if (shared.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (shared.GetSlateID() == 0) return VQERR_SLATE_NOT_SAVED;
  const VQDatabaseBody* database = GetDatabaseBody();
  if (database != nullptr && shared.GetDatabaseBody() != database) return VQERR_SHARED_FIELD_OTHER_DATABASE;
  VQSharedField opened(shared);
  VQFormFieldBody* definition = nullptr;
  VQSTATUS status = vq::Caught([&] { return opened.CreateSlateBody(0, 0, 0); });
  if (status == VQ_OK) status = opened.GetSharedFieldBody()->FindField(&definition);
  std::string name;
  if (status == VQ_OK) status = definition->ReadName(&name);
  if (status == VQ_OK) status = CheckNewName(name);
  if (status == VQ_OK) status = TakeDesign(*definition);
  if (status == VQ_OK) status = CutToName();
  if (status == VQ_OK) SharedField = opened;
  return status == VQWARN_NOT_FOUND ? VQERR_NO_SHARED_FIELD : status;
}

VQSTATUS VQFormFieldBody::Rename(std::string_view name) {
  VQFormFieldBody* definition = nullptr;
  if (VQSTATUS status = Resolve(&definition)) return status;
  if (definition == this) return SetName(name);
  VQSTATUS status = CheckNewName(name);
  if (status != VQ_OK) return status;
  std::uint32_t id = 0;
  status = SharedField.GetDatabaseBody()->FindDesign(VQSLATECLASS_FIELD, 0, name, &id);
  if (status == VQ_OK && id != SharedField.GetSlateBody()->GetID()) return VQERR_SHARED_FIELD_EXISTS;
  if (status != VQ_OK && status != VQERR_NOT_FOUND) return status;
  status = definition->SetName(name);
  return status == VQ_OK ? SetName(name) : status;
}

VQSTATUS VQFormFieldBody::ReadFacts(Facts* facts) const {
  return WithField([&](const vq::FieldView& field) {
    facts->Name = field.Parts[vq::kFieldName];
    facts->Type = field.Fixed.DataType;
    facts->Shared = (field.Fixed.Flags & FIELD_REFERENCE) != 0;
    facts->HasValue = !field.Parts[vq::kFieldValue].empty();
    facts->HasList = !field.Parts[vq::kFieldTextValue].empty();
    facts->Computed = vq::ComputeOptionOf(field.Fixed) != VQCOMPUTEOPTION_EDITABLE;
    return VQ_OK;
  });
}

// A record that could be read has a length that fits: setters refuse what would not. Of other programs' names, those
// that no item can have would stop a save half way.
VQSTATUS VQFormFieldBody::Check(const Facts& facts) const {
  if (facts.Name.empty() || facts.Name.find('\0') != std::string::npos) return VQERR_FIELD_NAME_CHARACTERS;
  if (facts.Computed && !facts.HasValue) return VQERR_NO_COMPUTED_FORMULA;
  if (!IsType(VQRTTYPE_KEYWORDS_FIELD)) return VQ_OK;
  VQCHOICESOPTION option = VQCHOICESOPTION_NONE;
  if (VQSTATUS status = GetChoicesOption(&option)) return status;
  if (option == VQCHOICESOPTION_LIST) return facts.HasList ? VQ_OK : VQERR_NO_CHOICES_LIST;
  if (option != VQCHOICESOPTION_FORMULA) return VQ_OK;
  return WithExtension([](const vq::FieldExtensionView& extension) {
    return extension.Parts[vq::kExtensionChoicesFormula].empty() ? VQERR_NO_CHOICES_FORMULA : VQ_OK;
  });
}

VQSTATUS VQFormFieldBody::Validate() {
  VQFormFieldBody* design = nullptr;
  if (VQSTATUS status = Resolve(&design)) return status;
  Facts facts;
  const VQSTATUS status = design->ReadFacts(&facts);
  return status == VQ_OK ? design->Check(facts) : status;
}

// One look at the record tells most fields all.
VQSTATUS VQFormFieldBody::PrepareSave(std::string* name, unsigned short* type) {
  VQFormFieldBody* design = this;
  Facts facts;
  VQSTATUS status = ReadFacts(&facts);
  if (status == VQ_OK && facts.Shared) {
    *name = std::move(facts.Name);
    status = Resolve(&design);
    if (status == VQ_OK) status = design->ReadFacts(&facts);
  }
  if (status == VQ_OK) status = design->Check(facts);
  if (status != VQ_OK) return status;
  *type = facts.Type;
  if (design == this) *name = std::move(facts.Name);
  return VQ_OK;
}

VQSlateBody* VQFormFieldBody::GetChangedDefinition() const {
  VQSlateBody* definition = SharedField.IsOpen() != 0 ? SharedField.GetSlateBody() : nullptr;
  return definition != nullptr && definition->IsModified() != 0 ? definition : nullptr;
}

bool VQFormFieldBody::HasStaleDefinition() const {
  return SharedField.IsOpen() != 0 && !SharedField.GetSlateBody()->IsCurrent();
}
