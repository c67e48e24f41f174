// VQFormBody: writing the design items that have changed.
#include <algorithm>

#include "engine/ods.h"
#include "vq/automation/formulacode.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/frame/throwrule.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned short kSummary = VQITEMFLAGS_SUMMARY;
constexpr std::size_t kLargestByteForm = 0xFF;
constexpr std::size_t kLargestWordForm = 0xFFFF;

// When a document is made, edited and read: the bit of the launch flags, the mirrors of launching and of hiding in the
// form's flags, and the hide bits of the document and of the closed object.
struct Moment {
  unsigned Launch;
  unsigned LaunchMirror;
  unsigned HideMirror;
  unsigned LowHide;
  unsigned HighHide;
};
constexpr Moment kMoments[] = {
    {0x1, 0x0100, 0x0800, 0x1, 0x8},
    {0x2, 0x0200, 0x1000, 0x2, 0x10},
    {0x4, 0x0400, 0x2000, 0x4, 0x20},
};
constexpr unsigned kAllHidden = 0x3F;
constexpr unsigned kInPlace = 0x1;
constexpr unsigned kAsDialog = 0x2;

void SetBits(std::uint16_t& word, unsigned bits, bool on) {
  word = static_cast<std::uint16_t>(on ? word | bits : word & ~bits);
}

template <typename Record>
VQSTATUS Encode(const Record& record, unsigned short code, std::string* bytes) {
  bytes->assign(EngOdsLength(code), '\0');
  void* cursor = bytes->data();
  return vq::FromEngine(EngOdsWrite(&cursor, code, &record, 1));
}

}  // namespace

VQSTATUS VQFormBody::Save(unsigned short flags) {
  if (FormOpen == 0) return VQSlateBody::Save(flags);
  std::vector<VQSlateBody*> slates;
  VQSTATUS status = SaveDesign();
  if (status == VQ_OK) status = vq::Caught([&] { return PrepareReferenced(&slates); });
  slates.push_back(this);
  if (status == VQ_OK) status = SaveTogether(slates, flags);
  if (!VQIsError(status)) IsNew = 0;
  return status;
}

VQSTATUS VQFormBody::FlushDesign() {
  const bool changed = IsModified() != 0 || (HTMLBodyTagDirty | WebQueryOpenDirty | WebQuerySaveDirty) != 0;
  return FormOpen != 0 && changed ? SaveDesign() : VQ_OK;
}

VQSTATUS VQFormBody::SaveDesign() {
  const vq::OwnThrowRule throwing(true);
  return vq::Caught([&] { return SaveChanges(); });
}

VQSTATUS VQFormBody::SaveChanges() {
  VQSTATUS status = SaveFields();
  if (status == VQ_OK && NameDirty != 0) status = SaveTitle();
  if (status == VQ_OK && Flags.IsDirty()) status = Flags.Write(this);
  if (status == VQ_OK) status = SaveFormulas();
  if (status == VQ_OK && AutoLaunchDirty != 0) status = SaveAutoLaunch();
  if (status == VQ_OK) {
    status = SaveMark("$ConflictAction", MergeReplicationConflicts, kSummary, &ConflictActionDirty);
  }
  if (status == VQ_OK && TemplateDirty != 0) status = SaveTemplate();
  if (status == VQ_OK) status = SaveTexts("$FormUsers", Authors, AllowAllAuthors, &AuthorsDirty);
  if (status == VQ_OK) status = SaveTexts("$Readers", Readers, AllowAllReaders, &ReadersDirty);
  if (status == VQ_OK) status = SaveMark("$PublicAccess", AllowPublicAccessUsers, kSummary, &PublicAccessDirty);
  if (status == VQ_OK && EncryptionKeysDirty != 0) status = SaveEncryptionKeys();
  if (status == VQ_OK) status = SaveMark("$KeepPrivate", DisablePrintingAndCopying, kSignedSummary, &KeepPrivateDirty);
  if (status == VQ_OK) {
    status = SaveMark("$NoBackgroundOverride", UserCanOverrideBackground == 0, kSummary, &BackgroundOverrideDirty);
  }
  return status == VQ_OK && InfoDirty != 0 ? SaveInfo() : status;
}

VQSTATUS VQFormBody::SaveValue(std::string_view item, unsigned short type, std::string_view value,
                               unsigned short flags) {
  return CreateItem(item, type, value.data(), value.size(), flags, VQITEMOPTION_REPLACE, nullptr);
}

// Line breaks are zero bytes in stored text.
VQSTATUS VQFormBody::SaveText(std::string_view item, std::string_view text, unsigned short flags) {
  std::string value(text);
  std::replace(value.begin(), value.end(), '\n', '\0');
  return SaveValue(item, TYPE_TEXT, value, flags);
}

VQSTATUS VQFormBody::Remove(std::string_view item) {
  const VQSTATUS status = DeleteItems(item);
  return status == VQWARN_NOT_FOUND ? VQ_OK : status;
}

VQSTATUS VQFormBody::SaveMark(std::string_view item, int on, unsigned short flags, int* mark) {
  if (*mark == 0) return VQ_OK;
  VQSTATUS status = VQ_OK;
  if (on == 0) {
    status = Remove(item);
  } else if (!HasItem(item)) {
    status = SaveText(item, "1", flags);
  }
  if (status == VQ_OK) *mark = 0;
  return status;
}

VQSTATUS VQFormBody::SaveTitle() {
  if (Name.IsNull()) return VQERR_FORM_NAME_REQUIRED;
  std::vector<std::string> names{std::string(vq::ViewOf(Name))};
  if (!Alias.IsNull()) {
    for (std::string& alias : vq::SplitNames(vq::ViewOf(Alias))) names.push_back(std::move(alias));
  }
  VQSTATUS status = SaveValue("$TITLE", TYPE_TEXT_LIST, vq::TextListValue(names), kSignedSummary);
  if (status == VQ_OK) NameDirty = 0;
  return status == VQ_OK ? SaveText("$$ScriptName", names.back(), VQITEMFLAGS_SIGN) : status;
}

VQSTATUS VQFormBody::SaveFormula(std::string_view item, const VQFormula& formula, int* mark) {
  if (*mark == 0) return VQ_OK;
  const std::string_view code = vq::CodeOf(formula);
  const VQSTATUS status = code.empty() ? Remove(item) : SaveValue(item, vq::kTypeFormula, code, VQITEMFLAGS_SIGN);
  if (status == VQ_OK) *mark = 0;
  return status;
}

VQSTATUS VQFormBody::SaveFormulas() {
  VQSTATUS status = SaveFormula("$HTMLBodyTag", HTMLAttributesFormula, &HTMLBodyTagDirty);
  if (status == VQ_OK) status = SaveFormula("$WEBQueryOpen", WebQueryOpenFormula, &WebQueryOpenDirty);
  if (status == VQ_OK) status = SaveFormula("$WEBQuerySave", WebQuerySaveFormula, &WebQuerySaveDirty);
  return status == VQ_OK ? SaveFormula("$WindowTitle", WindowTitleFormula, &WindowTitleDirty) : status;
}

// An object that opens in its place leaves nothing to hide; one that is not launched at a moment hides nothing then.
void VQFormBody::ReconcileOLE() {
  if ((AutoLaunch.OleFlags & kInPlace) != 0) {
    AutoLaunch.LaunchWhenFlags &= ~std::uint32_t{VQLAUNCHWHEN_READING};
    AutoLaunch.HideWhenFlags = 0;
  }
  for (const Moment& moment : kMoments) {
    const bool launches = (AutoLaunch.LaunchWhenFlags & moment.Launch) != 0;
    const bool shown = launches && (AutoLaunch.HideWhenFlags & moment.LowHide) == 0;
    SetBits(Info.Flags, moment.LaunchMirror, launches);
    SetBits(Info.Flags, moment.HideMirror, shown);
    if (!launches) AutoLaunch.HideWhenFlags &= ~(moment.LowHide | moment.HighHide);
    if (shown) AutoLaunch.HideWhenFlags &= ~moment.HighHide;
  }
  if (AutoLaunch.HideWhenFlags == kAllHidden) AutoLaunch.OleFlags &= ~std::uint32_t{kAsDialog};
}

void VQFormBody::ReconcileAutoLaunch() {
  const std::uint16_t before = Info.Flags;
  const std::uint32_t type = AutoLaunch.ObjectType;
  if (type == VQAUTOLAUNCHOBJECTTYPE_OLE_OBJECT) {
    ReconcileOLE();
    if (Info.Flags != before) InfoDirty = 1;
  } else if (type == VQAUTOLAUNCHOBJECTTYPE_4 || type == VQAUTOLAUNCHOBJECTTYPE_8) {
    ResetAutoLaunch();
    UnusedObjectName.clear();
    AutoLaunch.ObjectType = type;
    Info.Flags |= kMoments[2].LaunchMirror;
    InfoDirty = 1;
  } else {
    AutoLaunch.ObjectType = VQAUTOLAUNCHOBJECTTYPE_NONE;
  }
}

VQSTATUS VQFormBody::SaveRecord(std::string_view item, const std::string& record, const Surroundings& around) {
  std::string value = around.Ahead + record;
  if ((value.size() & 1) != 0) value.push_back('\0');
  value += around.Behind;
  return SaveValue(item, TYPE_COMPOSITE, value, VQITEMFLAGS_SIGN);
}

VQSTATUS VQFormBody::SaveAutoLaunch() {
  VQSTATUS status = VQ_OK;
  if (AutoLaunch.ObjectType == VQAUTOLAUNCHOBJECTTYPE_NONE) {
    status = Remove("$AUTOLAUNCH");
  } else {
    ReconcileAutoLaunch();
    const bool named = (AutoLaunch.CopyToFieldFlags & VQCREATEOBJECTINFIELDOPTION_NAMED_FIELD) != 0;
    std::string name(vq::ViewOf(CreateObjectInFieldName));
    if (name.empty() && !named) name = UnusedObjectName;
    const std::size_t size = EngOdsLength(ODS_FORMAUTOLAUNCH) + name.size() + AutoLaunchTail.size();
    if (size > kLargestWordForm) return VQERR_STRING_TOO_LONG;
    AutoLaunch.FieldNameLength = static_cast<std::uint16_t>(name.size());
    AutoLaunch.Header.Length = static_cast<std::uint16_t>(size);
    std::string record;
    status = Encode(AutoLaunch, ODS_FORMAUTOLAUNCH, &record);
    if (status == VQ_OK) status = SaveRecord("$AUTOLAUNCH", record + name + AutoLaunchTail, AutoLaunchAround);
  }
  if (status == VQ_OK) AutoLaunchDirty = 0;
  return status;
}

VQSTATUS VQFormBody::SaveTemplate() {
  const bool keep = !Flags.HasLetter('P') && !InheritsFromTemplateName.IsNull();
  const VQSTATUS status = keep ? SaveText("$Class", vq::ViewOf(InheritsFromTemplateName), kSummary) : Remove("$Class");
  if (status == VQ_OK) TemplateDirty = 0;
  return status;
}

// A list of nobody is written as one empty entry.
VQSTATUS VQFormBody::SaveTexts(std::string_view item, const VQText& texts, int everybody, int* mark) {
  if (*mark == 0) return VQ_OK;
  VQSTATUS status = VQ_OK;
  if (everybody != 0) {
    status = Remove(item);
  } else {
    std::vector<std::string> entries;
    status = vq::ReadTextEntries(texts, &entries);
    if (entries.empty()) entries.emplace_back();
    if (status == VQ_OK) status = SaveValue(item, TYPE_TEXT_LIST, vq::TextListValue(entries), kSummary);
  }
  if (status == VQ_OK) *mark = 0;
  return status;
}

VQSTATUS VQFormBody::SaveEncryptionKeys() {
  std::vector<std::string> keys;
  VQSTATUS status = vq::ReadTextEntries(DefaultEncryptionKeys, &keys);
  if (status != VQ_OK) return status;
  status = keys.empty() ? Remove("SecretEncryptionKeys")
                        : SaveValue("SecretEncryptionKeys", TYPE_TEXT_LIST, vq::TextListValue(keys), kSummary);
  if (status == VQ_OK) EncryptionKeysDirty = 0;
  return status;
}

VQSTATUS VQFormBody::SaveInfo() {
  constexpr unsigned kInherits = 0x0001;
  std::string name(vq::ViewOf(InheritDocumentFieldName));
  if (name.empty() && (Info.Flags2 & kInherits) == 0) name = UnusedInheritName;
  const std::size_t size = EngOdsLength(ODS_FORMINFO) + name.size() + InfoTail.size();
  if (size >= kLargestByteForm) return VQERR_STRING_TOO_LONG;
  Info.InheritFieldNameLength = static_cast<std::uint16_t>(name.size());
  Info.Header.Length = static_cast<std::uint8_t>(size);
  std::string record;
  VQSTATUS status = Encode(Info, ODS_FORMINFO, &record);
  if (status == VQ_OK) status = SaveRecord("$Info", record + name + InfoTail, InfoAround);
  if (status == VQ_OK) InfoDirty = 0;
  return status;
}
