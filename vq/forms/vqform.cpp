// VQForm: the handle, and the properties of the design.
#include <algorithm>
#include <iterator>

#include "engine/view.h"
#include "vq/automation/formulacode.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/forms/vqformfa.h"
#include "vq/richobjects/vqgraphic.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned long kColors = 240;
constexpr unsigned long kMaximumInheritName = 230;
constexpr unsigned long kMaximumObjectName = 32767;

// Info, first word.
enum FlagBit : unsigned {
  kInheritFormulaValues = 0x0001,
  kMailSendOnClose = 0x0002,
  kFormType2 = 0x0004,
  kFormType1 = 0x0008,
  kRefreshFields = 0x0010,
  kStoreForm = 0x0020,
  kHideGraphicIn16Colors = 0x2000,
  kVersioning = 0xC000,
};
// Info, second word.
enum Flag2Bit : unsigned {
  kInheritDocument = 0x0001,
  kInheritNotWhole = 0x0002,
  kInheritCollapsible = 0x0004,
  kInheritAll = 0x0007,
  kEditOnOpen = 0x0008,
  kContextPane = 0x0010,
  kContextParent = 0x0020,
  kVersionsAutomatically = 0x0040,
  kVersioning2 = 0x0080,
  kAnonymous = 0x0100,
  kNoFieldExchange = 0x0800,
};
constexpr unsigned kInPlace = 0x1;
constexpr unsigned kAsDialog = 0x2;
constexpr unsigned long kLegalLaunch = 0x07;
constexpr unsigned long kLegalHide = 0x3F;

constexpr auto kFlags = &FormInfoRecord::Flags;
constexpr auto kFlags2 = &FormInfoRecord::Flags2;

struct BitChange {
  unsigned Clear;
  unsigned Set;
};
constexpr BitChange kFormTypes[] = {{kFormType1 | kFormType2, 0}, {kFormType2, kFormType1}, {kFormType1, kFormType2}};
constexpr BitChange kContextPanes[] = {{kContextPane, 0}, {kContextParent, kContextPane}, {0, 0x0030}};
constexpr BitChange kInheritOptions[] = {{kInheritDocument, 0}, {0x0006, 0x0003}, {0, kInheritAll}, {0x0006, 0x0005}};

VQSTATUS CopyTexts(const VQText& source, VQText* copy) {
  std::vector<VQString> entries;
  VQText made;
  VQSTATUS status = VQ_OK;
  if (!source.IsNull()) status = static_cast<VQTextBody*>(source.GetItemBody())->ReadEntries(&entries);
  for (std::size_t i = 0; status == VQ_OK && i < entries.size(); ++i) {
    status = vq::Caught([&] { return made.Insert(static_cast<unsigned long>(i), entries[i]); });
  }
  if (status == VQ_OK) *copy = made;
  return status;
}

}  // namespace

VQForm::VQForm() = default;
VQForm::VQForm(VQDatabaseBody* database, unsigned long id) { Assign(database, id); }
VQForm::VQForm(const VQForm& other) = default;
VQForm::VQForm(const VQSlate& other) { *this = other; }
VQForm::VQForm(VQFormBody* body) : VQSlate(body) {}
VQForm::~VQForm() = default;

VQForm& VQForm::operator=(const VQForm& other) {
  VQSlate::operator=(other);
  return *this;
}
VQForm& VQForm::operator=(const VQSlate& other) {
  VQSlate::operator=(other);
  return *this;
}
VQForm& VQForm::operator=(VQSlateBody* body) {
  VQSlate::operator=(body);
  return *this;
}

VQCLASSID VQForm::GetClassID() const { return VQCLASSID_VQFORM; }

VQSTATUS VQForm::ValidateSlateType(const VQSlate& other) const {
  return other.IsNull() ? VQ_OK : ValidateSlateType(other.GetSlateType());
}
VQSTATUS VQForm::ValidateSlateType(const VQSlateBody* body) const {
  return body->GetClassID() == VQCLASSID_VQFORMBODY ? VQ_OK : VQERR_FORM_SLATE_ONLY;
}
// A deletion stub has no kind.
VQSTATUS VQForm::ValidateSlateType(unsigned long type) const {
  const unsigned long kind = type >> 16;
  const bool fits = (type & VQSLATECLASS_ALL) == VQSLATECLASS_FORM && (kind == VQDESIGNKIND_FORM || kind == 0);
  return fits ? VQ_OK : VQERR_FORM_SLATE_ONLY;
}

VQSTATUS VQForm::Close() { return VQSlate::Close(); }

VQSTATUS VQForm::CreateSlateBody(unsigned long flags, unsigned long argument, int argument2) {
  const bool was_open = IsOpen() != 0;
  const VQSTATUS status = VQSlate::CreateSlateBody(flags, argument, argument2);
  if (status != VQ_OK || GetFormSlateBody()->IsFormOpen()) return status;
  const VQSTATUS opened = GetFormSlateBody()->Open(flags);
  if (opened == VQ_OK) return VQ_OK;
  // A slate that a handle had open has its changes.
  if (!was_open) VQSlate::Close();
  return vq::Apply(opened);
}

VQSTATUS VQForm::Open(unsigned long flags) {
  const bool was_open = IsOpen() != 0 && GetFormSlateBody()->IsFormOpen();
  return was_open ? VQWARN_ALREADY_OPEN : CreateSlateBody(flags, 0, 0);
}

VQSTATUS VQForm::CheckForm(VQFormBody** body) const {
  if (Body == nullptr) return VQERR_OBJECT_NOT_INITIALIZED;
  VQFormBody* form = GetFormSlateBody();
  if (VQSTATUS status = form->OpenNew()) return status;
  if (!form->IsFormOpen()) return VQERR_FORM_NOT_OPEN;
  *body = form;
  return VQ_OK;
}

VQFormBody* VQForm::RequireForm() const {
  VQFormBody* body = nullptr;
  vq::ThrowIfError(CheckForm(&body));
  return body;
}

VQSTATUS VQForm::Save(unsigned short flags) {
  VQFormBody* body = nullptr;
  const VQSTATUS status = CheckForm(&body);
  return status == VQ_OK ? VQSlate::Save(flags) : vq::Apply(status);
}

template <typename Edit>
VQSTATUS VQForm::Amend(int VQFormBody::*mark, Edit edit) {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK) status = edit(*body);
  if (status == VQ_OK && mark != nullptr) body->*mark = 1;
  return vq::Apply(status);
}

int VQForm::GetInfoBit(InfoWord word, unsigned mask) const { return (RequireForm()->Info.*word & mask) != 0; }
VQSTATUS VQForm::SetInfoBits(InfoWord word, unsigned clear, unsigned set) {
  return Amend(&VQFormBody::InfoDirty, [=](VQFormBody& body) {
    body.Info.*word = static_cast<std::uint16_t>((body.Info.*word & ~clear) | set);
    return VQ_OK;
  });
}
VQSTATUS VQForm::SetInfoBit(InfoWord word, unsigned mask, int flag) {
  return SetInfoBits(word, mask, flag != 0 ? mask : 0);
}
VQSTATUS VQForm::SetLaunchWord(LaunchWord word, unsigned long clear, unsigned long set) {
  return Amend(&VQFormBody::AutoLaunchDirty, [=](VQFormBody& body) {
    body.AutoLaunch.*word = static_cast<std::uint32_t>((body.AutoLaunch.*word & ~clear) | set);
    return VQ_OK;
  });
}
VQSTATUS VQForm::Refuse(VQSTATUS status) {
  return Amend(nullptr, [=](VQFormBody&) { return status; });
}
int VQForm::GetLetter(char letter) const { return RequireForm()->Flags.HasLetter(letter); }
VQSTATUS VQForm::SetLetter(char letter, int flag) {
  return Amend(nullptr, [=](VQFormBody& body) {
    body.Flags.SetLetter(letter, flag != 0);
    return VQ_OK;
  });
}
VQSTATUS VQForm::GetFormula(const VQFormula VQFormBody::*formula, VQFormula* copy) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && copy == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && !vq::HasCode(body->*formula)) status = VQWARN_NOT_FOUND;
  return vq::Apply(status == VQ_OK ? vq::CopyFormula(body->*formula, copy) : status);
}
VQSTATUS VQForm::SetFormula(VQFormula VQFormBody::*formula, int VQFormBody::*mark, const VQFormula& value) {
  return Amend(mark, [&](VQFormBody& body) { return vq::CopyFormula(value, &(body.*formula)); });
}
VQSTATUS VQForm::GetTexts(const VQText VQFormBody::*texts, VQText* copy) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && copy == nullptr) status = VQERR_NULL_POINTER;
  return vq::Apply(status == VQ_OK ? CopyTexts(body->*texts, copy) : status);
}
VQSTATUS VQForm::SetTexts(VQText VQFormBody::*texts, int VQFormBody::*mark, const VQText& value) {
  return Amend(mark, [&](VQFormBody& body) { return CopyTexts(value, &(body.*texts)); });
}
VQSTATUS VQForm::SetFlag(int VQFormBody::*value, int VQFormBody::*mark, int flag) {
  return Amend(mark, [=](VQFormBody& body) {
    body.*value = flag != 0;
    return VQ_OK;
  });
}
VQSTATUS VQForm::SetText(VQString VQFormBody::*text, int VQFormBody::*mark, const VQString& value,
                         unsigned long longest) {
  return Amend(mark, [&](VQFormBody& body) {
    if (value.GetBufLength() > longest) return VQERR_STRING_TOO_LONG;
    body.*text = value;
    return VQ_OK;
  });
}

VQString VQForm::GetName() const { return RequireForm()->GetName(); }
VQSTATUS VQForm::SetName(const VQString& name) {
  return Amend(nullptr, [&](VQFormBody& body) { return body.SetName(name); });
}
VQString VQForm::GetAlias() const { return RequireForm()->GetAlias(); }
VQSTATUS VQForm::SetAlias(const VQString& alias) {
  return Amend(nullptr, [&](VQFormBody& body) { return body.SetAlias(alias); });
}

VQSTATUS VQForm::GetHTMLAttributesFormula(VQFormula* formula) const {
  return GetFormula(&VQFormBody::HTMLAttributesFormula, formula);
}
VQSTATUS VQForm::SetHTMLAttributesFormula(const VQFormula& formula) {
  return SetFormula(&VQFormBody::HTMLAttributesFormula, &VQFormBody::HTMLBodyTagDirty, formula);
}
VQSTATUS VQForm::GetWebQueryOpenFormula(VQFormula* formula) const {
  return GetFormula(&VQFormBody::WebQueryOpenFormula, formula);
}
VQSTATUS VQForm::SetWebQueryOpenFormula(const VQFormula& formula) {
  return SetFormula(&VQFormBody::WebQueryOpenFormula, &VQFormBody::WebQueryOpenDirty, formula);
}
VQSTATUS VQForm::GetWebQuerySaveFormula(VQFormula* formula) const {
  return GetFormula(&VQFormBody::WebQuerySaveFormula, formula);
}
VQSTATUS VQForm::SetWebQuerySaveFormula(const VQFormula& formula) {
  return SetFormula(&VQFormBody::WebQuerySaveFormula, &VQFormBody::WebQuerySaveDirty, formula);
}
VQSTATUS VQForm::GetWindowTitleFormula(VQFormula* formula) const {
  return GetFormula(&VQFormBody::WindowTitleFormula, formula);
}
VQSTATUS VQForm::SetWindowTitleFormula(const VQFormula& formula) {
  return SetFormula(&VQFormBody::WindowTitleFormula, &VQFormBody::WindowTitleDirty, formula);
}

VQINCLUDEINMENUOPTION VQForm::GetIncludeInMenuOption() const {
  if (GetLetter('C') != 0) return VQINCLUDEINMENUOPTION_OTHER_DIALOG;
  return GetLetter('H') != 0 ? VQINCLUDEINMENUOPTION_NONE : VQINCLUDEINMENUOPTION_CREATE_MENU;
}
VQSTATUS VQForm::SetIncludeInMenuOption(VQINCLUDEINMENUOPTION option) {
  return Amend(nullptr, [=](VQFormBody& body) {
    if (option > VQINCLUDEINMENUOPTION_OTHER_DIALOG) return VQERR_INVALID_PARAMETER;
    body.Flags.SetLetter('C', option == VQINCLUDEINMENUOPTION_OTHER_DIALOG);
    body.Flags.SetLetter('H', option == VQINCLUDEINMENUOPTION_NONE);
    return VQ_OK;
  });
}
VQFORMTYPE VQForm::GetFormType() const {
  if (GetInfoBit(kFlags, kFormType1) != 0) return VQFORMTYPE_RESPONSE;
  return GetInfoBit(kFlags, kFormType2) != 0 ? VQFORMTYPE_RESPONSE_TO_RESPONSE : VQFORMTYPE_DOCUMENT;
}
VQSTATUS VQForm::SetFormType(VQFORMTYPE type) {
  if (type >= std::size(kFormTypes)) return Refuse(VQERR_INVALID_PARAMETER);
  return SetInfoBits(kFlags, kFormTypes[type].Clear, kFormTypes[type].Set);
}
int VQForm::GetIncludeInSearchBuilder() const { return GetLetter('D') == 0; }
VQSTATUS VQForm::SetIncludeInSearchBuilder(int flag) { return SetLetter('D', flag == 0); }
int VQForm::GetAllowDesignRefreshToModify() const { return GetLetter('P') == 0; }
// The template's name is stored only while it is allowed.
VQSTATUS VQForm::SetAllowDesignRefreshToModify(int flag) {
  return Amend(&VQFormBody::TemplateDirty, [=](VQFormBody& body) {
    body.Flags.SetLetter('P', flag == 0);
    return VQ_OK;
  });
}
int VQForm::GetHideFromBrowsers() const { return GetLetter('w'); }
VQSTATUS VQForm::SetHideFromBrowsers(int flag) { return SetLetter('w', flag); }
int VQForm::GetHideFromClients() const { return GetLetter('n'); }
VQSTATUS VQForm::SetHideFromClients(int flag) { return SetLetter('n', flag); }
int VQForm::GetHideFromR4Clients() const { return GetLetter('4'); }
VQSTATUS VQForm::SetHideFromR4Clients(int flag) { return SetLetter('4', flag); }
int VQForm::GetIsAnonymousForm() const { return GetInfoBit(kFlags2, kAnonymous); }
VQSTATUS VQForm::SetIsAnonymousForm(int flag) { return SetInfoBit(kFlags2, kAnonymous, flag); }
int VQForm::GetCreateVersionsAutomatically() const { return GetInfoBit(kFlags2, kVersionsAutomatically); }
VQSTATUS VQForm::SetCreateVersionsAutomatically(int flag) { return SetInfoBit(kFlags2, kVersionsAutomatically, flag); }
int VQForm::GetDisableFieldExchange() const { return GetInfoBit(kFlags2, kNoFieldExchange); }
VQSTATUS VQForm::SetDisableFieldExchange(int flag) { return SetInfoBit(kFlags2, kNoFieldExchange, flag); }
int VQForm::GetEditOnOpen() const { return GetInfoBit(kFlags2, kEditOnOpen); }
VQSTATUS VQForm::SetEditOnOpen(int flag) { return SetInfoBit(kFlags2, kEditOnOpen, flag); }
int VQForm::GetMergeReplicationConflicts() const { return RequireForm()->MergeReplicationConflicts; }
VQSTATUS VQForm::SetMergeReplicationConflicts(int flag) {
  return SetFlag(&VQFormBody::MergeReplicationConflicts, &VQFormBody::ConflictActionDirty, flag);
}
VQVERSIONINGOPTION VQForm::GetVersioningOption() const {
  const FormInfoRecord& info = RequireForm()->Info;
  if ((info.Flags2 & kVersioning2) != 0) return VQVERSIONINGOPTION_SIBLINGS;
  if ((info.Flags & VQVERSIONINGOPTION_UPDATES_ARE_RESPONSES) != 0) return VQVERSIONINGOPTION_UPDATES_ARE_RESPONSES;
  return static_cast<VQVERSIONINGOPTION>(info.Flags & VQVERSIONINGOPTION_PRIORS_ARE_RESPONSES);
}
VQSTATUS VQForm::SetVersioningOption(VQVERSIONINGOPTION option) {
  return Amend(&VQFormBody::InfoDirty, [=](VQFormBody& body) {
    const unsigned long legal[] = {0, VQVERSIONINGOPTION_SIBLINGS, VQVERSIONINGOPTION_UPDATES_ARE_RESPONSES,
                                   VQVERSIONINGOPTION_PRIORS_ARE_RESPONSES};
    if (std::find(std::begin(legal), std::end(legal), option) == std::end(legal)) return VQERR_INVALID_PARAMETER;
    body.Info.Flags = static_cast<std::uint16_t>((body.Info.Flags & ~kVersioning) | (unsigned{option} & kVersioning));
    body.Info.Flags2 =
        static_cast<std::uint16_t>((body.Info.Flags2 & ~kVersioning2) | (unsigned{option} & kVersioning2));
    return VQ_OK;
  });
}
int VQForm::GetRefreshFieldsAutomatically() const { return GetInfoBit(kFlags, kRefreshFields); }
VQSTATUS VQForm::SetRefreshFieldsAutomatically(int flag) { return SetInfoBit(kFlags, kRefreshFields, flag); }
int VQForm::GetInheritFormulaValues() const { return GetInfoBit(kFlags, kInheritFormulaValues); }
VQSTATUS VQForm::SetInheritFormulaValues(int flag) { return SetInfoBit(kFlags, kInheritFormulaValues, flag); }
int VQForm::GetShowMailSendOnClose() const { return GetInfoBit(kFlags, kMailSendOnClose); }
VQSTATUS VQForm::SetShowMailSendOnClose(int flag) { return SetInfoBit(kFlags, kMailSendOnClose, flag); }
int VQForm::GetStoreFormInDocument() const { return GetInfoBit(kFlags, kStoreForm); }
VQSTATUS VQForm::SetStoreFormInDocument(int flag) { return SetInfoBit(kFlags, kStoreForm, flag); }
VQCONTEXTPANEOPTION VQForm::GetContextPaneOption() const {
  if (GetInfoBit(kFlags2, kContextPane) == 0) return VQCONTEXTPANEOPTION_NONE;
  return GetInfoBit(kFlags2, kContextParent) != 0 ? VQCONTEXTPANEOPTION_PARENT : VQCONTEXTPANEOPTION_LINK;
}
VQSTATUS VQForm::SetContextPaneOption(VQCONTEXTPANEOPTION option) {
  if (option >= std::size(kContextPanes)) return Refuse(VQERR_INVALID_PARAMETER);
  return SetInfoBits(kFlags2, kContextPanes[option].Clear, kContextPanes[option].Set);
}
VQINHERITDOCOPTION VQForm::GetInheritDocumentOption() const {
  const unsigned flags = RequireForm()->Info.Flags2;
  if ((flags & kInheritDocument) == 0) return VQINHERITDOCOPTION_NONE;
  if ((flags & kInheritNotWhole) == 0) return VQINHERITDOCOPTION_RICH_TEXT;
  return (flags & kInheritCollapsible) != 0 ? VQINHERITDOCOPTION_COLLAPSIBLE_RICH_TEXT : VQINHERITDOCOPTION_LINK;
}
VQSTATUS VQForm::SetInheritDocumentOption(VQINHERITDOCOPTION option) {
  if (option >= std::size(kInheritOptions)) return Refuse(VQERR_INVALID_PARAMETER);
  return SetInfoBits(kFlags2, kInheritOptions[option].Clear, kInheritOptions[option].Set);
}
VQString VQForm::GetInheritDocumentFieldName() const { return RequireForm()->InheritDocumentFieldName; }
VQSTATUS VQForm::SetInheritDocumentFieldName(const VQString& name) {
  return SetText(&VQFormBody::InheritDocumentFieldName, &VQFormBody::InfoDirty, name, kMaximumInheritName);
}
int VQForm::GetIsDefaultForm() const {
  return RequireForm()->GetType() == (VQSLATECLASS_FORM | VQSLATECLASS_DEFAULT | VQDESIGNKIND_FORM << 16);
}
VQSTATUS VQForm::SetIsDefaultForm(int flag) {
  return Amend(nullptr, [=](VQFormBody& body) { return body.SetIsDefaultForm(flag); });
}
int VQForm::GetTreatContentsAsHTML() const { return RequireForm()->GetTreatContentsAsHTML(); }
VQSTATUS VQForm::SetTreatContentsAsHTML(int flag) {
  return Amend(nullptr, [=](VQFormBody& body) { return body.SetTreatContentsAsHTML(flag); });
}
VQString VQForm::GetInheritsFromTemplateName() const { return RequireForm()->InheritsFromTemplateName; }
VQSTATUS VQForm::SetInheritsFromTemplateName(const VQString& name) {
  return SetText(&VQFormBody::InheritsFromTemplateName, &VQFormBody::TemplateDirty, name, ~0UL);
}

VQAUTOLAUNCHOBJECTTYPE VQForm::GetAutoLaunchObjectType() const {
  return static_cast<VQAUTOLAUNCHOBJECTTYPE>(RequireForm()->AutoLaunch.ObjectType);
}
VQSTATUS VQForm::SetAutoLaunchObjectType(VQAUTOLAUNCHOBJECTTYPE type) {
  const unsigned long legal[] = {0, 2, 4, 8};
  if (std::find(std::begin(legal), std::end(legal), type) == std::end(legal)) return Refuse(VQERR_INVALID_PARAMETER);
  return SetLaunchWord(&FormAutoLaunchRecord::ObjectType, ~0UL, type);
}
int VQForm::GetLaunchOLEObjectInPlace() const { return (RequireForm()->AutoLaunch.OleFlags & kInPlace) != 0; }
VQSTATUS VQForm::SetLaunchOLEObjectInPlace(int flag) {
  return SetLaunchWord(&FormAutoLaunchRecord::OleFlags, flag != 0 ? kAsDialog : kInPlace, flag != 0 ? kInPlace : 0);
}
int VQForm::GetPresentDocumentAsDialog() const { return (RequireForm()->AutoLaunch.OleFlags & kAsDialog) != 0; }
VQSTATUS VQForm::SetPresentDocumentAsDialog(int flag) {
  return SetLaunchWord(&FormAutoLaunchRecord::OleFlags, flag != 0 ? kInPlace : kAsDialog, flag != 0 ? kAsDialog : 0);
}
VQCREATEOBJECTINFIELDOPTION VQForm::GetCreateObjectInFieldOption() const {
  return static_cast<VQCREATEOBJECTINFIELDOPTION>(RequireForm()->AutoLaunch.CopyToFieldFlags);
}
VQSTATUS VQForm::SetCreateObjectInFieldOption(VQCREATEOBJECTINFIELDOPTION option) {
  if (option != 1 && option != 2 && option != 4) return Refuse(VQERR_INVALID_PARAMETER);
  return SetLaunchWord(&FormAutoLaunchRecord::CopyToFieldFlags, ~0UL, option);
}
VQString VQForm::GetCreateObjectInFieldName() const { return RequireForm()->CreateObjectInFieldName; }
VQSTATUS VQForm::SetCreateObjectInFieldName(const VQString& name) {
  return SetText(&VQFormBody::CreateObjectInFieldName, &VQFormBody::AutoLaunchDirty, name, kMaximumObjectName);
}
unsigned long VQForm::GetLaunchObjectWhenFlags() const { return RequireForm()->AutoLaunch.LaunchWhenFlags; }
VQSTATUS VQForm::SetLaunchObjectWhenFlags(unsigned long flags) {
  if ((flags & ~kLegalLaunch) != 0) return Refuse(VQERR_INVALID_PARAMETER);
  return SetLaunchWord(&FormAutoLaunchRecord::LaunchWhenFlags, ~0UL, flags);
}
unsigned long VQForm::GetHideDocumentWhenFlags() const { return RequireForm()->AutoLaunch.HideWhenFlags; }
VQSTATUS VQForm::SetHideDocumentWhenFlags(unsigned long flags) {
  if ((flags & ~kLegalHide) != 0) return Refuse(VQERR_INVALID_PARAMETER);
  return SetLaunchWord(&FormAutoLaunchRecord::HideWhenFlags, ~0UL, flags);
}

unsigned short VQForm::GetBackgroundColor() const { return RequireForm()->Info.BackgroundColor; }
VQSTATUS VQForm::SetBackgroundColor(unsigned short color) {
  return Amend(&VQFormBody::InfoDirty, [=](VQFormBody& body) {
    if (color >= kColors) return VQERR_INVALID_PARAMETER;
    std::uint16_t legacy = 0;
    if (VQSTATUS status = vq::FromEngine(EngColorToLegacy(color, &legacy))) return status;
    body.Info.BackgroundColor = color;
    body.Info.LegacyBackground = legacy;
    return VQ_OK;
  });
}
VQSTATUS VQForm::GetBackgroundGraphic(VQGraphic* graphic) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && graphic == nullptr) status = VQERR_NULL_POINTER;
  return vq::Apply(status == VQ_OK ? body->GetBackgroundGraphic(graphic) : status);
}
VQSTATUS VQForm::SetBackgroundGraphic(const VQGraphic& graphic) {
  return Amend(nullptr, [&](VQFormBody& body) { return body.SetBackgroundGraphic(graphic); });
}
VQSTATUS VQForm::RemoveBackgroundGraphic() {
  return Amend(nullptr, [](VQFormBody& body) { return body.RemoveBackgroundGraphic(); });
}
int VQForm::GetHideBackgroundGraphicIn16ColorMode() const { return GetInfoBit(kFlags, kHideGraphicIn16Colors); }
VQSTATUS VQForm::SetHideBackgroundGraphicIn16ColorMode(int flag) {
  return SetInfoBit(kFlags, kHideGraphicIn16Colors, flag);
}
int VQForm::GetUserCanOverrideBackground() const { return RequireForm()->UserCanOverrideBackground; }
VQSTATUS VQForm::SetUserCanOverrideBackground(int flag) {
  return SetFlag(&VQFormBody::UserCanOverrideBackground, &VQFormBody::BackgroundOverrideDirty, flag);
}

int VQForm::GetAllowAllAuthors() const { return RequireForm()->AllowAllAuthors; }
VQSTATUS VQForm::SetAllowAllAuthors(int flag) {
  return SetFlag(&VQFormBody::AllowAllAuthors, &VQFormBody::AuthorsDirty, flag);
}
int VQForm::GetAllowAllReaders() const { return RequireForm()->AllowAllReaders; }
VQSTATUS VQForm::SetAllowAllReaders(int flag) {
  return SetFlag(&VQFormBody::AllowAllReaders, &VQFormBody::ReadersDirty, flag);
}
int VQForm::GetAllowPublicAccessUsers() const { return RequireForm()->AllowPublicAccessUsers; }
VQSTATUS VQForm::SetAllowPublicAccessUsers(int flag) {
  return SetFlag(&VQFormBody::AllowPublicAccessUsers, &VQFormBody::PublicAccessDirty, flag);
}
VQSTATUS VQForm::GetAuthors(VQText* authors) const { return GetTexts(&VQFormBody::Authors, authors); }
VQSTATUS VQForm::SetAuthors(const VQText& authors) {
  return SetTexts(&VQFormBody::Authors, &VQFormBody::AuthorsDirty, authors);
}
VQSTATUS VQForm::GetReaders(VQText* readers) const { return GetTexts(&VQFormBody::Readers, readers); }
VQSTATUS VQForm::SetReaders(const VQText& readers) {
  return SetTexts(&VQFormBody::Readers, &VQFormBody::ReadersDirty, readers);
}
VQSTATUS VQForm::GetDefaultEncryptionKeys(VQText* keys) const {
  return GetTexts(&VQFormBody::DefaultEncryptionKeys, keys);
}
VQSTATUS VQForm::SetDefaultEncryptionKeys(const VQText& keys) {
  return SetTexts(&VQFormBody::DefaultEncryptionKeys, &VQFormBody::EncryptionKeysDirty, keys);
}
int VQForm::GetDisablePrintingAndCopying() const { return RequireForm()->DisablePrintingAndCopying; }
VQSTATUS VQForm::SetDisablePrintingAndCopying(int flag) {
  return SetFlag(&VQFormBody::DisablePrintingAndCopying, &VQFormBody::KeepPrivateDirty, flag);
}

VQSTATUS VQForm::GetFormBody(VQRichText* text) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && text == nullptr) status = VQERR_NULL_POINTER;
  return vq::Apply(status == VQ_OK ? body->GetFormBody(text) : status);
}
VQSTATUS VQForm::GetFormField(const VQString& name, VQFormField* field) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && field == nullptr) status = VQERR_NULL_POINTER;
  VQFormFieldBody* found = nullptr;
  if (status == VQ_OK) status = body->FindField(name, &found);
  if (status == VQ_OK) status = field->CheckType(VQRTObject(found));
  if (status == VQ_OK) *field = found;
  return vq::Apply(status);
}
int VQForm::HasFormField(const VQString& name) const {
  VQFormFieldBody* found = nullptr;
  const VQSTATUS status = RequireForm()->FindField(name, &found);
  vq::ThrowIfError(status);
  return status == VQ_OK;
}
VQSTATUS VQForm::GetFormFields(VQFormFieldArray* fields, VQRTTYPE type) const {
  VQFormBody* body = nullptr;
  VQSTATUS status = CheckForm(&body);
  if (status == VQ_OK && fields == nullptr) status = VQERR_NULL_POINTER;
  const bool legal = vq::IsRTTypeNumber(type) && vq::IsRTType(type, VQRTTYPE_FORM_FIELD);
  if (status == VQ_OK && !legal) status = VQERR_INVALID_PARAMETER;
  if (status == VQ_OK) status = body->BuildFieldList();
  return vq::Apply(status == VQ_OK ? fields->Assign(body, new VQFormFieldArrayBody(body, type)) : status);
}
