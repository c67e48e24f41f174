// VQKeywordsField and VQNamesField: choices, and how they are shown.
#include <algorithm>

#include "vq/automation/formulacode.h"
#include "vq/forms/fieldaccess.h"
#include "vq/forms/formtext.h"
#include "vq/store/storetext.h"
#include "vq/values/vqtext.h"

namespace {

constexpr VQRTTYPE kKeywords = VQRTTYPE_KEYWORDS_FIELD;
constexpr VQRTTYPE kNames = VQRTTYPE_NAMES_FIELD;
constexpr unsigned long kMaximumView = 130;
constexpr unsigned long kMaximumColumn = 0xFFFF;
constexpr unsigned long kMaximumInterfaceColumns = 8;

// The number of entries, their lengths, their texts.
VQSTATUS ReadList(std::string_view value, std::vector<std::string_view>* entries) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(value.data());
  const std::size_t count = value.size() < 2 ? 0 : vq::LoadWord(bytes);
  std::size_t at = 2 + 2 * count;
  if (at > value.size()) return VQERR_CORRUPTED;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t length = vq::LoadWord(bytes + 2 + 2 * i);
    if (length > value.size() - at) return VQERR_CORRUPTED;
    entries->push_back(value.substr(at, length));
    at += length;
  }
  return VQ_OK;
}

}  // namespace

int VQFormField::GetListBit(VQRTTYPE type) const {
  return Get<int>(type, [](const vq::FieldView& field) {
    return (field.Fixed.Flags & vq::kFieldInterface) == vq::kFieldInterface;
  });
}
VQSTATUS VQFormField::SetListBit(VQRTTYPE type, int flag) {
  return Set(type, [=](vq::FieldView& field) {
    const unsigned rest = field.Fixed.Flags & ~vq::kFieldInterface;
    field.Fixed.Flags = static_cast<std::uint16_t>(flag != 0 ? rest | vq::kFieldInterface : rest);
    return VQ_OK;
  });
}
VQCHOICESOPTION VQFormField::GetChoices(VQRTTYPE type) const {
  VQFormFieldBody* body = nullptr;
  VQCHOICESOPTION option = VQCHOICESOPTION_NONE;
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK) status = body->GetChoicesOption(&option);
  vq::ThrowIfError(status);
  return option;
}
VQSTATUS VQFormField::SetChoices(VQRTTYPE type, VQCHOICESOPTION option, bool legal) {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK && !legal) status = VQERR_INVALID_PARAMETER;
  return vq::Apply(status == VQ_OK ? body->SelectChoices(option) : status);
}
VQString VQFormField::GetChoicesText(VQRTTYPE type, unsigned part) const {
  return GetExtended<VQString>(type, [=](const View& view) { return vq::StringOf(view.Parts[part]); });
}
// Naming a view makes the field take its choices from there.
VQSTATUS VQFormField::SetChoicesText(VQRTTYPE type, unsigned part, const VQString& text) {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, type);
  if (status == VQ_OK && part == vq::kExtensionView && text.GetBufLength() > kMaximumView) status = VQERR_OUT_OF_RANGE;
  if (status == VQ_OK) {
    status = body->EditExtension([&](View& view) {
      view.Parts[part] = vq::ViewOf(text);
      return VQ_OK;
    });
  }
  if (status == VQ_OK && !text.IsNull()) status = body->SelectChoices(VQCHOICESOPTION_VIEW);
  return vq::Apply(status);
}
unsigned long VQFormField::GetChoicesColumn(VQRTTYPE type) const {
  return GetExtended<unsigned long>(type, [](const View& view) { return view.Fixed.ChoicesViewColumnNumber; });
}
VQSTATUS VQFormField::SetChoicesColumn(VQRTTYPE type, unsigned long column) {
  return SetExtended(type, [=](View& view) {
    if (column > kMaximumColumn) return VQERR_OUT_OF_RANGE;
    view.Fixed.ChoicesViewColumnNumber = static_cast<std::uint16_t>(column);
    return VQ_OK;
  });
}

int VQKeywordsField::GetAllowValuesNotInList() const { return GetListBit(kKeywords); }
VQSTATUS VQKeywordsField::SetAllowValuesNotInList(int flag) { return SetListBit(kKeywords, flag); }
VQINTERFACEOPTION VQKeywordsField::GetInterfaceOption() const {
  return Get<VQINTERFACEOPTION>(kKeywords, [](const vq::FieldView& field) {
    if ((field.Fixed.Flags & vq::kFieldInterface1) != 0) return VQINTERFACEOPTION_CHECK_BOXES;
    return (field.Fixed.Flags & vq::kFieldInterface2) != 0 ? VQINTERFACEOPTION_RADIO_BUTTONS
                                                           : VQINTERFACEOPTION_DIALOG_LIST;
  });
}
VQSTATUS VQKeywordsField::SetInterfaceOption(VQINTERFACEOPTION option) {
  return Set(kKeywords, [=](vq::FieldView& field) {
    constexpr unsigned kBits[] = {0, vq::kFieldInterface1, vq::kFieldInterface2};
    if (option > VQINTERFACEOPTION_RADIO_BUTTONS) return VQERR_INVALID_PARAMETER;
    field.Fixed.Flags = static_cast<std::uint16_t>((field.Fixed.Flags & ~vq::kFieldInterface) | kBits[option]);
    return VQ_OK;
  });
}
VQCHOICESOPTION VQKeywordsField::GetChoicesOption() const { return GetChoices(kKeywords); }
VQSTATUS VQKeywordsField::SetChoicesOption(VQCHOICESOPTION option) {
  return SetChoices(kKeywords, option, option >= VQCHOICESOPTION_LIST && option <= VQCHOICESOPTION_VIEW);
}
VQSTATUS VQKeywordsField::GetChoicesList(VQText* choices) const {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, kKeywords);
  if (status == VQ_OK && choices == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  VQText read;
  status = body->WithField([&](const vq::FieldView& field) {
    const std::string_view value = field.Parts[vq::kFieldTextValue];
    if (value.empty()) return VQERR_NO_CHOICES_LIST;
    std::vector<std::string_view> entries;
    VQSTATUS listed = ReadList(value, &entries);
    for (std::size_t i = 0; listed == VQ_OK && i < entries.size(); ++i) {
      std::string entry(entries[i]);
      std::replace(entry.begin(), entry.end(), '\0', '\n');
      listed = read.Insert(static_cast<unsigned long>(i), vq::StringOf(entry));
    }
    return listed;
  });
  if (status == VQ_OK) *choices = read;
  return vq::Apply(status);
}
VQSTATUS VQKeywordsField::SetChoicesList(const VQText& choices) {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, kKeywords);
  std::vector<std::string> entries;
  std::string value;
  if (status == VQ_OK) status = vq::ReadTextEntries(choices, &entries);
  if (status == VQ_OK && !entries.empty()) value = vq::TextListValue(entries);
  if (status == VQ_OK) status = body->WithExtension([](const View&) { return VQ_OK; });
  if (status == VQ_OK) {
    status = body->EditField([&](vq::FieldView& field) {
      field.Parts[vq::kFieldTextValue] = value;
      return VQ_OK;
    });
  }
  if (status == VQ_OK && !entries.empty()) status = body->SelectChoices(VQCHOICESOPTION_LIST);
  return vq::Apply(status);
}
VQSTATUS VQKeywordsField::GetChoicesFormula(VQFormula* formula) const {
  return GetExtensionFormula(kKeywords, vq::kExtensionChoicesFormula, VQERR_NO_CHOICES_FORMULA, formula);
}
VQSTATUS VQKeywordsField::SetChoicesFormula(const VQFormula& formula) {
  VQFormFieldBody* body = nullptr;
  VQSTATUS status = Resolve(&body, kKeywords);
  if (status == VQ_OK) {
    status = body->EditExtension([&](View& view) {
      view.Parts[vq::kExtensionChoicesFormula] = vq::CodeOf(formula);
      return VQ_OK;
    });
  }
  if (status == VQ_OK && vq::HasCode(formula)) status = body->SelectChoices(VQCHOICESOPTION_FORMULA);
  return vq::Apply(status);
}
VQString VQKeywordsField::GetChoicesView() const { return GetChoicesText(kKeywords, vq::kExtensionView); }
VQSTATUS VQKeywordsField::SetChoicesView(const VQString& view) {
  return SetChoicesText(kKeywords, vq::kExtensionView, view);
}
VQString VQKeywordsField::GetChoicesViewDatabase() const { return GetChoicesText(kKeywords, vq::kExtensionDatabase); }
VQSTATUS VQKeywordsField::SetChoicesViewDatabase(const VQString& path) {
  return SetChoicesText(kKeywords, vq::kExtensionDatabase, path);
}
unsigned long VQKeywordsField::GetChoicesViewColumnNumber() const { return GetChoicesColumn(kKeywords); }
VQSTATUS VQKeywordsField::SetChoicesViewColumnNumber(unsigned long column) {
  return SetChoicesColumn(kKeywords, column);
}
int VQKeywordsField::GetDontDisplayHelperButton() const { return GetExtendedBit(kKeywords, vq::kExtensionNoHelper); }
VQSTATUS VQKeywordsField::SetDontDisplayHelperButton(int flag) {
  return SetExtendedBit(kKeywords, vq::kExtensionNoHelper, flag);
}
unsigned long VQKeywordsField::GetInterfaceColumnCount() const {
  return GetExtended<unsigned long>(kKeywords, [](const View& view) {
    return ((view.Fixed.Flags1 & vq::kExtensionColumns) >> vq::kExtensionColumnShift) + 1;
  });
}
VQSTATUS VQKeywordsField::SetInterfaceColumnCount(unsigned long count) {
  return SetExtended(kKeywords, [=](View& view) {
    if (count == 0 || count > kMaximumInterfaceColumns) return VQERR_OUT_OF_RANGE;
    view.Fixed.Flags1 = static_cast<std::uint32_t>((view.Fixed.Flags1 & ~vq::kExtensionColumns) |
                                                   (count - 1) << vq::kExtensionColumnShift);
    return VQ_OK;
  });
}
VQINTERFACEFRAMEOPTION VQKeywordsField::GetInterfaceFrameOption() const {
  const auto bits =
      GetExtended<std::uint32_t>(kKeywords, [](const View& view) { return view.Fixed.Flags1 & vq::kExtensionFrame; });
  if (bits == 0) return VQINTERFACEFRAMEOPTION_SINGLE;
  if (bits == vq::kExtensionFrameInset) return VQINTERFACEFRAMEOPTION_INSET;
  if (bits == vq::kExtensionFrameNone) return VQINTERFACEFRAMEOPTION_NONE;
  vq::Throw(VQERR_INVALID_PARAMETER);
}
VQSTATUS VQKeywordsField::SetInterfaceFrameOption(VQINTERFACEFRAMEOPTION option) {
  return SetExtended(kKeywords, [=](View& view) {
    constexpr std::uint32_t kBits[] = {vq::kExtensionFrameNone, 0, vq::kExtensionFrameInset};
    if (option > VQINTERFACEFRAMEOPTION_INSET) return VQERR_INVALID_PARAMETER;
    view.Fixed.Flags1 = (view.Fixed.Flags1 & ~vq::kExtensionFrame) | kBits[option];
    return VQ_OK;
  });
}
int VQKeywordsField::GetLookUpNames() const { return GetExtendedBit(kKeywords, vq::kExtensionLookUpNames); }
VQSTATUS VQKeywordsField::SetLookUpNames(int flag) {
  return SetExtendedBit(kKeywords, vq::kExtensionLookUpNames, flag);
}
int VQKeywordsField::GetRefreshChoicesOnDocRefresh() const {
  return GetExtended<int>(kKeywords,
                          [](const View& view) { return (view.Fixed.Flags2 & vq::kExtensionRefreshChoices) != 0; });
}
VQSTATUS VQKeywordsField::SetRefreshChoicesOnDocRefresh(int flag) {
  return SetExtended(kKeywords, [=](View& view) {
    const std::uint32_t rest = view.Fixed.Flags2 & ~vq::kExtensionRefreshChoices;
    view.Fixed.Flags2 = flag != 0 ? rest | vq::kExtensionRefreshChoices : rest;
    return VQ_OK;
  });
}
int VQKeywordsField::GetRefreshFieldsOnChange() const { return GetExtendedBit(kKeywords, vq::kExtensionRefreshFields); }
VQSTATUS VQKeywordsField::SetRefreshFieldsOnChange(int flag) {
  return SetExtendedBit(kKeywords, vq::kExtensionRefreshFields, flag);
}

int VQNamesField::GetAllowValuesNotInList() const { return GetListBit(kNames); }
VQSTATUS VQNamesField::SetAllowValuesNotInList(int flag) { return SetListBit(kNames, flag); }
VQCHOICESOPTION VQNamesField::GetChoicesOption() const { return GetChoices(kNames); }
VQSTATUS VQNamesField::SetChoicesOption(VQCHOICESOPTION option) {
  return SetChoices(kNames, option, option == VQCHOICESOPTION_NONE || option == VQCHOICESOPTION_VIEW);
}
int VQNamesField::GetLookUpNames() const { return GetExtendedBit(kNames, vq::kExtensionLookUpNames); }
VQSTATUS VQNamesField::SetLookUpNames(int flag) { return SetExtendedBit(kNames, vq::kExtensionLookUpNames, flag); }
VQString VQNamesField::GetChoicesViewDatabase() const { return GetChoicesText(kNames, vq::kExtensionDatabase); }
VQSTATUS VQNamesField::SetChoicesViewDatabase(const VQString& path) {
  return SetChoicesText(kNames, vq::kExtensionDatabase, path);
}
VQString VQNamesField::GetChoicesView() const { return GetChoicesText(kNames, vq::kExtensionView); }
VQSTATUS VQNamesField::SetChoicesView(const VQString& view) { return SetChoicesText(kNames, vq::kExtensionView, view); }
unsigned long VQNamesField::GetChoicesViewColumnNumber() const { return GetChoicesColumn(kNames); }
VQSTATUS VQNamesField::SetChoicesViewColumnNumber(unsigned long column) { return SetChoicesColumn(kNames, column); }
int VQNamesField::GetDontDisplayHelperButton() const { return GetExtendedBit(kNames, vq::kExtensionNoHelper); }
VQSTATUS VQNamesField::SetDontDisplayHelperButton(int flag) {
  return SetExtendedBit(kNames, vq::kExtensionNoHelper, flag);
}
