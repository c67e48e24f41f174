#include "vq/forms/vqsubfrm.h"

#include "engine/ods.h"
#include "engine/records.h"
#include "vq/forms/formtext.h"
#include "vq/richtext/signature.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned short kTitleFlags = VQITEMFLAGS_SIGN | VQITEMFLAGS_SUMMARY;
constexpr unsigned long kSubformType = VQSLATECLASS_FORM | VQDESIGNKIND_SUBFORM << 16;
constexpr std::uint16_t kHotspotSubform = 14;

// The hotspot that a subform is in the stream, its name in the data.
VQRTObjectBody* MakeElement(const std::string& name) {
  const std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  CDHOTSPOTBEGIN begin{};
  begin.Header.Signature = SIG_CD_HOTSPOTBEGIN;
  begin.Header.Length = static_cast<std::uint16_t>(fixed + name.size());
  begin.Type = kHotspotSubform;
  begin.DataLength = static_cast<std::uint16_t>(name.size());
  std::string record(fixed, '\0');
  void* cursor = record.data();
  vq::ThrowIfError(vq::FromEngine(EngOdsWrite(&cursor, ODS_CDHOTSPOTBEGIN, &begin, 1)));
  record += name;
  auto* element = new VQRTElementBody(VQRTTYPE_RT_SUBFORM, static_cast<unsigned short>(0));
  VQRTObject hold(element);
  vq::ThrowIfError(element->SetRecord(record.data(), static_cast<std::uint32_t>(record.size())));
  vq::ThrowIfError(element->Append(new VQRTObjectBody(VQRTTYPE_HOTSPOT_END, SIG_CD_HOTSPOTEND)));
  element->AddReference();
  return element;
}

}  // namespace

VQSubform::VQSubform() = default;
VQSubform::VQSubform(VQDatabaseBody* database, unsigned long id) { Assign(database, id); }
VQSubform::VQSubform(const VQSubform& other) = default;
VQSubform::VQSubform(const VQSlate& other) { *this = other; }
VQSubform::VQSubform(VQSubformBody* body) : VQSlate(body) {}
VQSubform::~VQSubform() = default;

VQSubform& VQSubform::operator=(const VQSubform& other) {
  VQSlate::operator=(other);
  return *this;
}
VQSubform& VQSubform::operator=(const VQSlate& other) {
  VQSlate::operator=(other);
  return *this;
}
VQSubform& VQSubform::operator=(VQSlateBody* body) {
  VQSlate::operator=(body);
  return *this;
}

VQCLASSID VQSubform::GetClassID() const { return VQCLASSID_VQSUBFORM; }

// A deletion stub has no kind.
VQSTATUS VQSubform::ValidateSlateType(unsigned long type) const {
  const unsigned long kind = type >> 16;
  const bool fits = (type & VQSLATECLASS_ALL) == VQSLATECLASS_FORM && (kind == VQDESIGNKIND_SUBFORM || kind == 0);
  return fits ? VQ_OK : VQERR_INCORRECT_SLATE_TYPE;
}

VQSubformBody* VQSubform::GetSubformSlateBody() const { return static_cast<VQSubformBody*>(Body); }

VQSTATUS VQSubform::SetName(const VQString& name) {
  VQSlateBody* body = nullptr;
  const VQSTATUS status = CheckOpen(&body);
  return vq::Apply(status == VQ_OK ? GetSubformSlateBody()->SetName(name) : status);
}

VQSTATUS VQSubform::GetSubformBody(VQRichText* text) const {
  VQSlateBody* body = nullptr;
  VQSTATUS status = CheckOpen(&body);
  if (status == VQ_OK && text == nullptr) status = VQERR_NULL_POINTER;
  VQRichTextBody* found = nullptr;
  if (status == VQ_OK) status = vq::FindOrMakeBodyText(body, &found);
  if (status == VQ_OK) *text = VQRichText(found);
  return vq::Apply(status);
}

VQSubformBody::VQSubformBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQSlateBody(database, type, handle) {}

VQCLASSID VQSubformBody::GetClassID() const { return VQCLASSID_VQSUBFORMBODY; }

VQSTATUS VQSubformBody::SetName(const VQString& name) {
  if (name.IsNull()) return VQERR_NULL_STRING;
  if (name.GetBufLength() >= vq::kTooLongName) return VQERR_SUBFORM_NAME_TOO_LONG;
  const std::vector<std::string> names = vq::SplitNames(vq::ViewOf(name));
  if (names.front().empty()) return VQERR_INVALID_PARAMETER;
  const VQSTATUS status =
      vq::CheckNamesAreFree(GetDatabaseBody(), kSubformType, GetID(), names, VQERR_SUBFORM_NOT_UNIQUE);
  if (status != VQ_OK) return status;
  const std::string value = vq::TextListValue(names);
  return CreateItem("$TITLE", TYPE_TEXT_LIST, value.data(), value.size(), kTitleFlags, VQITEMOPTION_REPLACE, nullptr);
}

VQSTATUS VQSubformBody::PrepareSave() {
  return IsOpen() && NamesInTitle().empty() ? VQERR_SUBFORM_NAME_REQUIRED : VQ_OK;
}

VQSTATUS VQSubformBody::Save(unsigned short flags) {
  const VQSTATUS status = PrepareSave();
  return status == VQ_OK ? VQSlateBody::Save(flags) : status;
}

VQCLASSID VQSubformArray::GetClassID() const { return VQCLASSID_VQSUBFORMARRAY; }
VQSubform VQSubformArray::operator[](unsigned long index) const { return VQSubform(VQSlateArray::operator[](index)); }

VQRTSubform::VQRTSubform(const VQSubform& subform) {
  if (subform.IsNull()) vq::Throw(VQERR_UNINITIALIZED_ARGUMENT);
  VQSubform opened(subform);
  vq::ThrowIfError(opened.CreateSlateBody(0, 0, 0));
  const std::vector<std::string> names = opened.GetSlateBody()->NamesInTitle();
  if (names.empty()) vq::Throw(VQERR_SUBFORM_NAME_REQUIRED);
  VQRTObjectBody* element = MakeElement(names.front());
  Attach(element, 0);
  element->Release();
}

VQRTSubform::VQRTSubform(const VQRTObject& object) { *this = object; }

VQCLASSID VQRTSubform::GetClassID() const { return VQCLASSID_VQRTSUBFORM; }

void VQRTSubform::ValidateRTType(const VQRTObjectBody* body) const {
  if (body != nullptr && !body->IsType(VQRTTYPE_RT_SUBFORM)) vq::Throw(VQERR_CONVERSION_FAILED);
}

namespace vq {

VQSTATUS ReadSubformName(const VQRTObjectBody& element, std::string* name) {
  const RecordBytes bytes(element);
  const std::uint32_t fixed = EngOdsLength(ODS_CDHOTSPOTBEGIN);
  if (bytes.GetSize() < fixed) return VQERR_RT_INVALID;
  void* cursor = const_cast<unsigned char*>(bytes.Get());
  CDHOTSPOTBEGIN begin{};
  if (VQSTATUS status = FromEngine(EngOdsRead(&cursor, ODS_CDHOTSPOTBEGIN, &begin, 1))) return status;
  if (begin.DataLength > bytes.GetSize() - fixed) return VQERR_RT_INVALID;
  name->assign(reinterpret_cast<const char*>(bytes.Get()) + fixed, begin.DataLength);
  // Others end it as a text in memory ends.
  name->resize(std::min(name->find('\0'), name->size()));
  return VQ_OK;
}

VQSTATUS FindSubform(const VQRTObjectBody& element, VQSubform* subform) {
  const VQRichTextBody* text = element.GetRichTextBody();
  const VQSlateBody* slate = text != nullptr ? text->GetSlateBody() : nullptr;
  if (slate != nullptr) return FindSubformIn(slate->GetDatabaseBody(), element, subform);
  std::string name;
  const VQSTATUS status = ReadSubformName(element, &name);
  return status == VQ_OK ? VQERR_SUBFORM_NEEDS_DATABASE : status;
}

VQSTATUS FindSubformIn(VQDatabaseBody* database, const VQRTObjectBody& element, VQSubform* subform) {
  std::string name;
  if (VQSTATUS status = ReadSubformName(element, &name)) return status;
  std::uint32_t id = 0;
  const VQSTATUS status = database->FindReferenced(VQSLATECLASS_FORM, VQDESIGNKIND_SUBFORM, name, &id);
  if (status != VQ_OK) return status == VQERR_NOT_FOUND ? VQERR_NO_SUBFORM : status;
  return subform->BindTo(database, id);
}

}  // namespace vq

VQString VQRTSubform::GetSubformName() const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  std::string name;
  vq::ThrowIfError(vq::ReadSubformName(*GetRTObjectBody(), &name));
  return vq::StringOf(name);
}

VQSTATUS VQRTSubform::GetSubform(VQSubform* subform) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(subform == nullptr ? VQERR_NULL_POINTER : vq::FindSubform(*GetRTObjectBody(), subform));
}
