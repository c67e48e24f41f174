// VQFormBody: opening, closing, names, and what stands in items of its own.
#include "vq/forms/vqformb.h"

#include <algorithm>

#include "engine/slate.h"
#include "vq/forms/formtext.h"
#include "vq/richobjects/vqgraphic.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/store/storetext.h"

namespace {

constexpr unsigned long kFormType = VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16;
constexpr unsigned long kDefaultFormType = kFormType | VQSLATECLASS_DEFAULT;
constexpr std::string_view kWebFlags = "$WebFlags";
constexpr char kHTMLLetter = 'H';
constexpr std::string_view kBackground = "$Background";
constexpr std::string_view kSubforms = "$SubForms";

std::size_t BytesOf(const std::vector<std::string>& parts) {
  std::size_t bytes = 0;
  for (const std::string& part : parts) bytes += part.size();
  return bytes;
}

std::string Joined(const std::vector<std::string>& parts, std::size_t from) {
  std::string joined;
  for (std::size_t i = from; i < parts.size(); ++i) joined.append(i == from ? "" : "|").append(parts[i]);
  return joined;
}

}  // namespace

VQFormBody::VQFormBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQSlateBody(database, type, handle),
      FieldList(this),
      ListText(nullptr),
      ListStructure(0),
      IsNew(0),
      FormOpen(0),
      HasSubforms(false),
      ListGeneration(0) {
  Reset();
}

VQFormBody::~VQFormBody() {
  ++RefCount;
  try {
    VQFormBody::Close();
  } catch (...) {
    // The status of a close that a destructor runs is lost.
  }
}

VQCLASSID VQFormBody::GetClassID() const { return VQCLASSID_VQFORMBODY; }

void VQFormBody::Reset() {
  FieldListBuilt = 0;
  AutoLaunchDirty = HTMLBodyTagDirty = WebQueryOpenDirty = WebQuerySaveDirty = WindowTitleDirty = NameDirty = 0;
  TemplateDirty = MergeReplicationConflicts = ConflictActionDirty = AuthorsDirty = AllowAllAuthors = 0;
  ReadersDirty = AllowAllReaders = PublicAccessDirty = AllowPublicAccessUsers = EncryptionKeysDirty = 0;
  KeepPrivateDirty = DisablePrintingAndCopying = BackgroundOverrideDirty = UserCanOverrideBackground = InfoDirty = 0;
  Info = {};
  Info.Header.Signature = kInfoSignature;
  Info.LegacyBackground = Info.BackgroundColor = 1;
  Info.Flags = 0x0080;
  ResetAutoLaunch();
  InfoTail.clear();
  AutoLaunchTail.clear();
  InfoAround = AutoLaunchAround = {};
  UnusedInheritName.clear();
  UnusedObjectName.clear();
}

void VQFormBody::ResetAutoLaunch() {
  AutoLaunch = {};
  AutoLaunch.Header.Signature = SIG_CD_FORMPART;
  AutoLaunch.HideWhenFlags = AutoLaunch.LaunchWhenFlags = 4;
  AutoLaunch.CopyToFieldFlags = VQCREATEOBJECTINFIELDOPTION_FIRST_RICH_TEXT;
  CreateObjectInFieldName = VQString();
}

VQSTATUS VQFormBody::OpenNew() { return FormOpen == 0 && VQSlateBody::IsOpen() && GetID() == 0 ? Open(0) : VQ_OK; }

VQSTATUS VQFormBody::Open(unsigned long flags) {
  if (FormOpen != 0) return VQWARN_ALREADY_OPEN;
  const VQSTATUS opened = VQSlateBody::Open(flags);
  if (opened != VQ_OK && opened != VQWARN_ALREADY_OPEN) return opened;
  IsNew = GetID() == 0;
  const VQSTATUS status = vq::Caught([&] { return Load(); });
  if (status == VQ_OK) {
    FormOpen = 1;
    return VQ_OK;
  }
  ReleaseDesign();
  // A slate that was open stays so.
  if (opened == VQ_OK) VQSlateBody::Close();
  return status;
}

void VQFormBody::ReleaseFieldList() {
  FieldList.RemoveAll();
  Subforms.clear();
  HasSubforms = false;
  FieldListBuilt = 0;
}

void VQFormBody::ReleaseDesign() {
  ReleaseFieldList();
  Name = Alias = InheritDocumentFieldName = InheritsFromTemplateName = VQString();
  HTMLAttributesFormula = WebQueryOpenFormula = WebQuerySaveFormula = WindowTitleFormula = VQFormula();
  Authors = Readers = DefaultEncryptionKeys = VQText();
  Reset();
}

VQSTATUS VQFormBody::Close() {
  FormOpen = 0;
  FormerSubforms.clear();
  ReleaseDesign();
  return VQSlateBody::Close();
}

VQString VQFormBody::GetName() {
  if (FormOpen == 0) return VQSlateBody::GetName();
  return Name;
}

VQString VQFormBody::GetAlias() {
  if (FormOpen == 0) return VQSlateBody::GetAlias();
  return Alias;
}

int VQFormBody::IsModified() {
  if (FormOpen == 0) return VQSlateBody::IsModified();
  const int marks = AutoLaunchDirty | WindowTitleDirty | NameDirty | TemplateDirty | ConflictActionDirty |
                    AuthorsDirty | ReadersDirty | PublicAccessDirty | EncryptionKeysDirty | KeepPrivateDirty |
                    BackgroundOverrideDirty | InfoDirty;
  if (marks != 0 || Flags.IsDirty()) return 1;
  if (GetKeptItem() != nullptr && GetKeptItem()->IsDirty() != 0) return 1;
  return VQSlateBody::IsModified();
}

VQSTATUS VQFormBody::CheckFree(const std::vector<std::string>& names) {
  return vq::CheckNamesAreFree(GetDatabaseBody(), kFormType, GetID(), names, VQERR_FORM_EXISTS);
}

// A name without synonyms keeps the alias. What the form is called already is not asked again: a copy has its source's
// names until each is given another.
VQSTATUS VQFormBody::CheckName(const VQString& name, std::vector<std::string>* parts) {
  if (name.IsNull()) return VQERR_NULL_STRING;
  *parts = vq::SplitNames(vq::ViewOf(name));
  const std::vector<std::string> given = *parts;
  if (parts->size() == 1 && !Alias.IsNull()) {
    for (std::string& alias : vq::SplitNames(vq::ViewOf(Alias))) parts->push_back(std::move(alias));
  }
  if (BytesOf(*parts) >= vq::kTooLongName) return VQERR_FORM_NAME_TOO_LONG;
  return parts->front().empty() ? VQERR_INVALID_PARAMETER : CheckFree(given);
}

VQSTATUS VQFormBody::SetName(const VQString& name) {
  std::vector<std::string> parts;
  if (VQSTATUS status = CheckName(name, &parts)) return status;
  Name = vq::StringOf(parts.front());
  Alias = vq::StringOf(Joined(parts, 1));
  NameDirty = 1;
  return VQ_OK;
}

VQSTATUS VQFormBody::SetAlias(const VQString& alias) {
  std::vector<std::string> names;
  if (!alias.IsNull()) names = vq::SplitNames(vq::ViewOf(alias));
  if (vq::ViewOf(Name).size() + BytesOf(names) >= vq::kTooLongName) return VQERR_FORM_NAME_TOO_LONG;
  if (!names.empty() && names.front().empty()) return VQERR_INVALID_PARAMETER;
  if (VQSTATUS status = CheckFree(names)) return status;
  Alias = vq::StringOf(Joined(names, 0));
  NameDirty = 1;
  return VQ_OK;
}

VQSTATUS VQFormBody::SetIsDefaultForm(int flag) {
  const auto slate_class = static_cast<std::uint16_t>(flag != 0 ? kDefaultFormType : kFormType);
  SetDirty();
  const VQSTATUS status = vq::FromEngine(EngSlateSetHeader(GetHandle(), ENG_SLATE_CLASS, &slate_class));
  return status == VQ_OK ? ReadHeader() : status;
}

// For one that is about to be written anew: what is no text, or can't be read, is refused.
VQSTATUS VQFormBody::ReadTextItem(std::string_view item, std::vector<std::string>* texts) const {
  constexpr std::uint32_t kEmptyList = 4;
  vq::ItemPlace place;
  const VQSTATUS status = PlaceOf(item, &place);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  if (place.Type != TYPE_TEXT && place.Type != TYPE_TEXT_LIST) return VQERR_INCORRECT_ITEM_TYPE;
  ReadTexts(item, texts);
  return texts->empty() && place.Size > kEmptyList ? VQERR_CORRUPTED : VQ_OK;
}

int VQFormBody::GetTreatContentsAsHTML() const { return TextOf(kWebFlags).find(kHTMLLetter) != std::string::npos; }

// The letter stands in the first entry, beside others and ahead of other entries.
VQSTATUS VQFormBody::SetTreatContentsAsHTML(int flag) {
  if (!HasItem(kWebFlags)) return flag != 0 ? SaveText(kWebFlags, std::string(1, kHTMLLetter), kSignedSummary) : VQ_OK;
  std::vector<std::string> texts;
  if (VQSTATUS status = ReadTextItem(kWebFlags, &texts)) return flag != 0 ? status : VQ_OK;
  if (texts.empty()) texts.emplace_back();
  std::string& first = texts.front();
  const bool there = first.find(kHTMLLetter) != std::string::npos;
  if (there == (flag != 0)) return VQ_OK;
  if (flag != 0) {
    first.push_back(kHTMLLetter);
  } else {
    std::erase(first, kHTMLLetter);
  }
  if (texts.size() == 1) return first.empty() ? Remove(kWebFlags) : SaveText(kWebFlags, first, kSignedSummary);
  return SaveValue(kWebFlags, TYPE_TEXT_LIST, vq::TextListValue(texts), kSignedSummary);
}

VQSTATUS VQFormBody::GetBackgroundGraphic(VQGraphic* graphic) {
  VQItemBody* item = nullptr;
  VQSTATUS status = FindItem(kBackground, &item);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQERR_NOT_FOUND : status;
  const VQItem hold(item);
  if (item->GetClassID() != VQCLASSID_VQRICHTEXTBODY) return VQERR_NOT_FOUND;
  auto* text = static_cast<VQRichTextBody*>(item);
  status = text->Initialize();
  if (status != VQ_OK) return status;
  VQRTCursor cursor;
  VQRTObject found;
  status = text->GetTop()->GetCursor(&cursor);
  if (status == VQ_OK) status = vq::Caught([&] { return cursor.GotoFirst(VQRTTYPE_GRAPHIC, &found); });
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQERR_NOT_FOUND : status;
  VQGraphic copy;
  status = vq::Caught([&] { return copy.CopyRTObject(found, VQRTCOPYOPTIONS_DEEP); });
  if (status == VQ_OK) *graphic = copy;
  return status;
}

VQSTATUS VQFormBody::SetBackgroundGraphic(const VQGraphic& graphic) {
  if (graphic.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  auto* made = new VQRichTextBody;
  const VQItem hold(made);
  VQSTATUS status = made->Initialize();
  if (status == VQ_OK) status = made->GetTop()->Append(graphic, nullptr);
  if (status == VQ_OK) status = made->Flush();
  return status == VQ_OK ? CreateCopy(kBackground, made, VQITEMFLAGS_SIGN, VQITEMOPTION_REPLACE, nullptr) : status;
}

VQSTATUS VQFormBody::RemoveBackgroundGraphic() { return Remove(kBackground); }

VQSTATUS VQFormBody::AddSubform(const VQSubform& subform) {
  if (FormOpen == 0) return VQERR_FORM_NOT_OPEN;
  if (subform.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQSubform opened(subform);
  if (VQSTATUS status = vq::Caught([&] { return opened.CreateSlateBody(0, 0, 0); })) return status;
  const std::vector<std::string> title = opened.GetSlateBody()->NamesInTitle();
  if (title.empty() || title.front().empty()) return VQERR_SUBFORM_NAME_REQUIRED;
  const std::string& added = title.front();
  std::vector<std::string> names;
  if (VQSTATUS status = ReadTextItem(kSubforms, &names)) return status;
  if (std::find(names.begin(), names.end(), added) != names.end()) return VQ_OK;
  names.push_back(added);
  return SaveValue(kSubforms, TYPE_TEXT_LIST, vq::TextListValue(names), VQITEMFLAGS_SUMMARY);
}

VQSTATUS VQFormBody::RemoveSubform(const VQString& name) {
  if (FormOpen == 0) return VQERR_FORM_NOT_OPEN;
  std::vector<std::string> names;
  ReadTexts(kSubforms, &names);
  const auto found = std::find(names.begin(), names.end(), vq::ViewOf(name));
  if (found == names.end()) return VQERR_NOT_FOUND;
  names.erase(found);
  if (names.empty()) return Remove(kSubforms);
  return SaveValue(kSubforms, TYPE_TEXT_LIST, vq::TextListValue(names), VQITEMFLAGS_SUMMARY);
}
