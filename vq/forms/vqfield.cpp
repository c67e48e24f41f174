// VQFormField: handles, and the properties that every kind of field has.
#include "vq/forms/vqfield.h"

#include "vq/automation/formulacode.h"
#include "vq/forms/fieldaccess.h"
#include "vq/richtext/font.h"
#include "vq/store/storetext.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"

namespace {

constexpr unsigned kInputSeparators = 0x001F;
constexpr unsigned kLowDelimiters = 0x0FFF;
constexpr unsigned kDisplayShift = 12;
constexpr unsigned kMaximumDescription = 255;

// Values from the second on, by the top four bits of the delimiters.
constexpr unsigned short kDisplaySeparators[] = {VQVALUESEPARATOR_NONE,     VQVALUESEPARATOR_SPACE,
                                                 VQVALUESEPARATOR_COMMA,    VQVALUESEPARATOR_SEMICOLON,
                                                 VQVALUESEPARATOR_NEW_LINE, VQVALUESEPARATOR_BLANK_LINE};

constexpr unsigned kListBit = 0x0001;  // of a data type: many values

bool IsMultiValue(unsigned type) {
  return type == TYPE_TEXT_LIST || type == TYPE_TIME_RANGE || type == TYPE_NUMBER_RANGE;
}

struct ComputeBits {
  unsigned Clear;
  unsigned Set;
};
constexpr ComputeBits kComputeBits[] = {
    {FIELD_COMPUTED, FIELD_EDITABLE | FIELD_WHEN_COMPOSED},
    {FIELD_EDITABLE, FIELD_COMPUTED | FIELD_WHEN_COMPOSED},
    {FIELD_EDITABLE | FIELD_WHEN_COMPOSED, FIELD_COMPUTED},
    {FIELD_EDITABLE | FIELD_WHEN_COMPOSED | FIELD_COMPUTED, 0},
};

VQFormFieldBody* MakeField(const VQString& name, VQRTTYPE type, VQRTTYPE base) {
  if (!vq::IsRTTypeNumber(type) || !vq::IsRTType(type, base)) vq::Throw(VQERR_INVALID_PARAMETER);
  auto* body = new VQFormFieldBody(type);
  const VQSTATUS status = body->Create(vq::ViewOf(name));
  if (status == VQ_OK) return body;
  delete body;
  vq::Throw(status);
}

void CheckKind(const VQRTObjectBody* body, VQRTTYPE type) {
  if (body != nullptr && !body->IsType(type)) vq::Throw(VQERR_CONVERSION_FAILED);
}

}  // namespace

VQFormField::VQFormField(const VQString& name, VQRTTYPE type) { Attach(MakeField(name, type, VQRTTYPE_FORM_FIELD), 0); }
VQFormField::VQFormField(const VQRTObject& object) {
  if (object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  VQRTObject::operator=(object);
}
VQFormField::VQFormField(VQFormFieldBody* body) { Attach(body, 0); }
VQCLASSID VQFormField::GetClassID() const { return VQCLASSID_VQFORMFIELD; }
VQFormFieldBody* VQFormField::GetFormFieldBody() const { return static_cast<VQFormFieldBody*>(GetRTObjectBody()); }
void VQFormField::ValidateRTType(const VQRTObjectBody* body) const { CheckKind(body, VQRTTYPE_FORM_FIELD); }

VQKeywordsField::VQKeywordsField(const VQString& name, VQRTTYPE type) {
  Attach(MakeField(name, type, VQRTTYPE_KEYWORDS_FIELD), 0);
}
VQKeywordsField::VQKeywordsField(const VQRTObject& object) {
  if (object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  VQRTObject::operator=(object);
}
VQKeywordsField::VQKeywordsField(VQFormFieldBody* body) {
  CheckKind(body, VQRTTYPE_KEYWORDS_FIELD);
  Attach(body, 0);
}
VQCLASSID VQKeywordsField::GetClassID() const { return VQCLASSID_VQKEYWORDSFIELD; }
void VQKeywordsField::ValidateRTType(const VQRTObjectBody* body) const { CheckKind(body, VQRTTYPE_KEYWORDS_FIELD); }

VQNamesField::VQNamesField(const VQString& name, VQRTTYPE type) {
  Attach(MakeField(name, type, VQRTTYPE_NAMES_FIELD), 0);
}
VQNamesField::VQNamesField(const VQRTObject& object) {
  if (object.HasOffset()) vq::Throw(VQERR_CONVERSION_FAILED);
  VQRTObject::operator=(object);
}
VQNamesField::VQNamesField(VQFormFieldBody* body) {
  CheckKind(body, VQRTTYPE_NAMES_FIELD);
  Attach(body, 0);
}
VQCLASSID VQNamesField::GetClassID() const { return VQCLASSID_VQNAMESFIELD; }
void VQNamesField::ValidateRTType(const VQRTObjectBody* body) const { CheckKind(body, VQRTTYPE_NAMES_FIELD); }

VQSTATUS VQFormField::Resolve(VQFormFieldBody** body, VQRTTYPE type) const {
  if (IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  if (VQSTATUS status = GetFormFieldBody()->Resolve(body)) return status;
  return (*body)->IsType(type) ? VQ_OK : VQERR_INAPPROPRIATE;
}

VQFormFieldBody* VQFormField::GetSharedFormFieldBody() const {
  VQFormFieldBody* body = nullptr;
  vq::ThrowIfError(Resolve(&body, VQRTTYPE_FORM_FIELD));
  return body;
}

int VQFormField::GetExtendedBit(VQRTTYPE type, unsigned long mask) const {
  return GetExtended<int>(type, [=](const View& view) { return (view.Fixed.Flags1 & mask) != 0; });
}
VQSTATUS VQFormField::SetExtendedBit(VQRTTYPE type, unsigned long mask, int flag) {
  return SetExtended(type, [=](View& view) {
    view.Fixed.Flags1 = static_cast<std::uint32_t>(flag != 0 ? view.Fixed.Flags1 | mask : view.Fixed.Flags1 & ~mask);
    return VQ_OK;
  });
}

VQSTATUS VQFormField::GetFormula(unsigned part, VQFormula* formula) const {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, VQRTTYPE_FORM_FIELD);
  if (status == VQ_OK && formula == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(body->WithField([&](const vq::FieldView& field) {
    const std::string_view code = field.Parts[part];
    return code.empty() ? VQSTATUS{VQWARN_NOT_FOUND} : vq::TakeCode(code, formula);
  }));
}
VQSTATUS VQFormField::SetFormula(unsigned part, const VQFormula& formula) {
  return Set(VQRTTYPE_FORM_FIELD, [&](vq::FieldView& field) {
    field.Parts[part] = vq::CodeOf(formula);
    return VQ_OK;
  });
}

VQString VQFormField::GetName() const {
  return Get<VQString>(VQRTTYPE_FORM_FIELD,
                       [](const vq::FieldView& field) { return vq::StringOf(field.Parts[vq::kFieldName]); });
}
VQSTATUS VQFormField::SetName(const VQString& name) {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(GetFormFieldBody()->Rename(vq::ViewOf(name)));
}
unsigned short VQFormField::GetDataType() const {
  return Get<unsigned short>(VQRTTYPE_FORM_FIELD, [](const vq::FieldView& field) { return field.Fixed.DataType; });
}
int VQFormField::GetAllowMultiValues() const { return IsMultiValue(GetDataType()); }
VQSTATUS VQFormField::SetAllowMultiValues(int flag) {
  return Set(VQRTTYPE_FORM_FIELD, [=](vq::FieldView& field) {
    if (field.Fixed.DataType == TYPE_COMPOSITE) return VQERR_INAPPROPRIATE;
    const unsigned single = field.Fixed.DataType & ~kListBit;
    field.Fixed.DataType = static_cast<std::uint16_t>(flag != 0 ? single | kListBit : single);
    return VQ_OK;
  });
}
int VQFormField::GetComputeAfterValidation() const {
  return GetExtendedBit(VQRTTYPE_FORM_FIELD, vq::kExtensionComputeLate);
}
VQSTATUS VQFormField::SetComputeAfterValidation(int flag) {
  return SetExtendedBit(VQRTTYPE_FORM_FIELD, vq::kExtensionComputeLate, flag);
}
VQCOMPUTEOPTION VQFormField::GetComputeOption() const {
  return Get<VQCOMPUTEOPTION>(VQRTTYPE_FORM_FIELD,
                              [](const vq::FieldView& field) { return vq::ComputeOptionOf(field.Fixed); });
}
VQSTATUS VQFormField::SetComputeOption(VQCOMPUTEOPTION option) {
  return Set(VQRTTYPE_FORM_FIELD, [=](vq::FieldView& field) {
    std::uint16_t& flags = field.Fixed.Flags;
    const bool rich = field.Fixed.DataType == TYPE_COMPOSITE;
    if (option > (rich ? VQCOMPUTEOPTION_WHEN_COMPOSED : VQCOMPUTEOPTION_FOR_DISPLAY)) return VQERR_INVALID_PARAMETER;
    ComputeBits bits = kComputeBits[option];
    if (rich)
      bits = option == VQCOMPUTEOPTION_EDITABLE ? ComputeBits{0, FIELD_EDITABLE} : ComputeBits{FIELD_EDITABLE, 0};
    flags = static_cast<std::uint16_t>((flags & ~bits.Clear) | bits.Set);
    return VQ_OK;
  });
}
VQSTATUS VQFormField::GetValueFormula(VQFormula* formula) const { return GetFormula(vq::kFieldValue, formula); }
VQSTATUS VQFormField::SetValueFormula(const VQFormula& formula) { return SetFormula(vq::kFieldValue, formula); }
VQVALUESEPARATOR VQFormField::GetDisplayValueSeparator() const {
  return Get<VQVALUESEPARATOR>(VQRTTYPE_FORM_FIELD, [](const vq::FieldView& field) {
    const unsigned top = field.Fixed.ListDelimiters >> kDisplayShift;
    return static_cast<VQVALUESEPARATOR>(top < std::size(kDisplaySeparators) ? kDisplaySeparators[top] : 0);
  });
}
VQSTATUS VQFormField::SetDisplayValueSeparator(VQVALUESEPARATOR separator) {
  return Set(VQRTTYPE_FORM_FIELD, [=](vq::FieldView& field) {
    unsigned top = 0;
    for (unsigned i = 1; i < std::size(kDisplaySeparators); ++i) {
      if (kDisplaySeparators[i] == separator) top = i;
    }
    field.Fixed.ListDelimiters =
        static_cast<std::uint16_t>((field.Fixed.ListDelimiters & kLowDelimiters) | top << kDisplayShift);
    return VQ_OK;
  });
}
unsigned short VQFormField::GetInputValueSeparators() const {
  return Get<unsigned short>(VQRTTYPE_FORM_FIELD, [](const vq::FieldView& field) {
    return static_cast<unsigned short>(field.Fixed.ListDelimiters & kInputSeparators);
  });
}
VQSTATUS VQFormField::SetInputValueSeparators(unsigned short separators) {
  return Set(VQRTTYPE_FORM_FIELD, [=](vq::FieldView& field) {
    field.Fixed.ListDelimiters =
        static_cast<std::uint16_t>((field.Fixed.ListDelimiters & ~kInputSeparators) | (separators & kInputSeparators));
    return VQ_OK;
  });
}
VQSTATUS VQFormField::GetFontStyle(VQFontStyle* style) const {
  VQFormFieldBody* body = nullptr;
  const VQSTATUS status = Resolve(&body, VQRTTYPE_FORM_FIELD);
  return vq::Apply(status == VQ_OK ? body->GetFont(style) : status);
}
VQSTATUS VQFormField::SetFontStyle(const VQFontStyle& style) {
  VQFormFieldBody* body = nullptr;
  const VQSTATUS status = Resolve(&body, VQRTTYPE_FORM_FIELD);
  return vq::Apply(status == VQ_OK ? body->SetFont(style) : status);
}
int VQFormField::GetGiveDefaultFocus() const { return GetExtendedBit(VQRTTYPE_FORM_FIELD, vq::kExtensionDefaultFocus); }
VQSTATUS VQFormField::SetGiveDefaultFocus(int flag) {
  return SetExtendedBit(VQRTTYPE_FORM_FIELD, vq::kExtensionDefaultFocus, flag);
}
VQString VQFormField::GetHelpDescription() const {
  return Get<VQString>(VQRTTYPE_FORM_FIELD,
                       [](const vq::FieldView& field) { return vq::StringOf(field.Parts[vq::kFieldDescription]); });
}
VQSTATUS VQFormField::SetHelpDescription(const VQString& description) {
  return Set(VQRTTYPE_FORM_FIELD, [&](vq::FieldView& field) {
    if (description.GetBufLength() > kMaximumDescription) return VQERR_OUT_OF_RANGE;
    field.Parts[vq::kFieldDescription] = vq::ViewOf(description);
    return VQ_OK;
  });
}
VQSTATUS VQFormField::GetHTMLAttributesFormula(VQFormula* formula) const {
  return GetExtensionFormula(VQRTTYPE_FORM_FIELD, vq::kExtensionHTMLAttributes, VQWARN_NOT_FOUND, formula);
}
VQSTATUS VQFormField::SetHTMLAttributesFormula(const VQFormula& formula) {
  return SetExtended(VQRTTYPE_FORM_FIELD, [&](View& view) {
    view.Parts[vq::kExtensionHTMLAttributes] = vq::CodeOf(formula);
    return VQ_OK;
  });
}
VQSTATUS VQFormField::GetExtensionFormula(VQRTTYPE type, unsigned part, VQSTATUS none, VQFormula* formula) const {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK && formula == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(body->WithExtension([&](const View& view) {
    const std::string_view code = view.Parts[part];
    return code.empty() ? none : vq::TakeCode(code, formula);
  }));
}
VQSTATUS VQFormField::GetInputTranslationFormula(VQFormula* formula) const {
  return GetFormula(vq::kFieldTranslation, formula);
}
VQSTATUS VQFormField::SetInputTranslationFormula(const VQFormula& formula) {
  return SetFormula(vq::kFieldTranslation, formula);
}
VQSTATUS VQFormField::GetInputValidationFormula(VQFormula* formula) const {
  return GetFormula(vq::kFieldValidation, formula);
}
VQSTATUS VQFormField::SetInputValidationFormula(const VQFormula& formula) {
  return SetFormula(vq::kFieldValidation, formula);
}
VQNumberFormat VQFormField::GetNumberFormat() const {
  return Get<VQNumberFormat>(VQRTTYPE_FORM_FIELD,
                             [](const vq::FieldView& field) { return VQNumberFormat(field.Fixed.NumberFormat); });
}
VQSTATUS VQFormField::SetNumberFormat(const VQNumberFormat& format) {
  return Set(VQRTTYPE_FORM_FIELD, [&](vq::FieldView& field) {
    field.Fixed.NumberFormat = *format.GetBlock();
    return VQ_OK;
  });
}
VQDatetimeFormat VQFormField::GetDatetimeFormat() const {
  return Get<VQDatetimeFormat>(VQRTTYPE_FORM_FIELD,
                               [](const vq::FieldView& field) { return VQDatetimeFormat(field.Fixed.TimeFormat); });
}
VQSTATUS VQFormField::SetDatetimeFormat(const VQDatetimeFormat& format) {
  return Set(VQRTTYPE_FORM_FIELD, [&](vq::FieldView& field) {
    field.Fixed.TimeFormat = *format.GetBlock();
    return VQ_OK;
  });
}
unsigned short VQFormField::GetSecurityFlags() const {
  return Get<unsigned short>(VQRTTYPE_FORM_FIELD, [](const vq::FieldView& field) {
    return static_cast<unsigned short>(field.Fixed.Flags & vq::kFieldSecurity);
  });
}
VQSTATUS VQFormField::SetSecurityFlags(unsigned short flags) {
  return Set(VQRTTYPE_FORM_FIELD, [=](vq::FieldView& field) {
    if ((flags & ~vq::kFieldSecurity) != 0) return VQERR_INVALID_PARAMETER;
    field.Fixed.Flags = static_cast<std::uint16_t>((field.Fixed.Flags & ~vq::kFieldSecurity) | flags);
    return VQ_OK;
  });
}

int VQFormField::IsShared() const {
  if (IsNull()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (GetFormFieldBody()->IsClosed()) vq::Throw(VQERR_OBJECT_CLOSED);
  return GetFormFieldBody()->IsSharedField();
}
VQSTATUS VQFormField::Share() {
  return vq::Apply(IsNull() ? VQERR_OBJECT_NOT_INITIALIZED : GetFormFieldBody()->Share());
}
VQSTATUS VQFormField::Unshare() {
  return vq::Apply(IsNull() ? VQERR_OBJECT_NOT_INITIALIZED : GetFormFieldBody()->Unshare());
}
VQSTATUS VQFormField::SetSharedField(const VQSharedField& shared) {
  return vq::Apply(IsNull() ? VQERR_OBJECT_NOT_INITIALIZED : GetFormFieldBody()->PointAt(shared));
}
VQSTATUS VQFormField::Validate() const {
  return vq::Apply(IsNull() ? VQERR_OBJECT_NOT_INITIALIZED : GetFormFieldBody()->Validate());
}
