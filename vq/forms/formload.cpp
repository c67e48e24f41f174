// VQFormBody: reading the design items.
#include <algorithm>

#include "engine/memory.h"
#include "engine/ods.h"
#include "vq/automation/formulacode.h"
#include "vq/forms/formtext.h"
#include "vq/forms/vqformb.h"
#include "vq/richtext/signature.h"
#include "vq/richtext/vqrtinit.h"
#include "vq/store/storetext.h"

namespace {

constexpr std::size_t kTypeWord = 2;
constexpr unsigned kInherits = 0x0001;  // of Flags2: a field's name stands behind the record

// The fixed part, and what stands behind it in the record.
template <typename Record>
VQSTATUS Decode(const std::string& bytes, unsigned short code, Record* record, std::string* behind) {
  const std::size_t fixed = EngOdsLength(code);
  if (bytes.size() < fixed) return VQERR_CORRUPTED;
  void* cursor = const_cast<char*>(bytes.data());
  *behind = bytes.substr(fixed);
  return vq::FromEngine(EngOdsRead(&cursor, code, record, 1));
}

// A name at the front of the bytes, which keep what is behind it. The length of one that is not in use may be any.
VQSTATUS CutName(std::size_t length, bool used, std::string* bytes, std::string* name) {
  if (length > bytes->size()) return used ? VQERR_CORRUPTED : VQ_OK;
  *name = bytes->substr(0, length);
  bytes->erase(0, length);
  return VQ_OK;
}

}  // namespace

VQSTATUS VQFormBody::Load() {
  Reset();
  if (IsNew != 0) return LoadNew();
  const std::vector<std::string> names = NamesInTitle();
  if (!names.empty()) Name = vq::StringOf(names.front());
  std::string alias;
  for (std::size_t i = 1; i < names.size(); ++i) alias.append(i == 1 ? "" : "|").append(names[i]);
  Alias = vq::StringOf(alias);
  VQSTATUS status = Flags.Read(this);
  if (VQIsError(status)) return status;
  status = LoadFormula("$HTMLBodyTag", &HTMLAttributesFormula);
  if (status == VQ_OK) status = LoadFormula("$WEBQueryOpen", &WebQueryOpenFormula);
  if (status == VQ_OK) status = LoadFormula("$WEBQuerySave", &WebQuerySaveFormula);
  if (status == VQ_OK) status = LoadFormula("$WindowTitle", &WindowTitleFormula);
  if (status == VQ_OK) status = LoadInfo();
  if (status == VQ_OK) status = LoadAutoLaunch();
  return status == VQ_OK ? LoadRest() : status;
}

// Nothing is stored of it: all that is allowed where an item's absence says so.
VQSTATUS VQFormBody::LoadNew() {
  InfoDirty = NameDirty = 1;
  AllowAllAuthors = AllowAllReaders = UserCanOverrideBackground = 1;
  SetDirty();
  VQRichTextBody* text = nullptr;
  VQSTATUS status = vq::FindOrMakeBodyText(this, &text);
  if (status == VQ_OK) status = Flags.Read(this);
  if (!VQIsError(status)) status = Flags.Write(this);
  return status == VQ_OK ? SaveText("$$ScriptName", vq::ViewOf(Name), VQITEMFLAGS_SIGN) : status;
}

// The value without its type word; VQWARN_NOT_FOUND.
VQSTATUS VQFormBody::ReadItem(std::string_view item, unsigned short* type, std::string* value) const {
  vq::ItemPlace place;
  if (VQSTATUS status = PlaceOf(item, &place)) return status;
  *type = place.Type;
  if (place.Size < kTypeWord) return VQERR_CORRUPTED;
  const auto* bytes = static_cast<const char*>(EngMemLock(place.Value.Pool));
  if (bytes == nullptr) return VQERR_CORRUPTED;
  value->assign(bytes + place.Value.Block + kTypeWord, place.Size - kTypeWord);
  EngMemUnlock(place.Value.Pool);
  return VQ_OK;
}

VQSTATUS VQFormBody::LoadFormula(std::string_view item, VQFormula* formula) {
  unsigned short type = 0;
  std::string code;
  const VQSTATUS status = ReadItem(item, &type, &code);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  if (type != vq::kTypeFormula) return VQERR_CORRUPTED;
  return code.empty() ? VQ_OK : vq::TakeCode(code, formula);
}

// Records of a design have no class in a rich text.
VQSTATUS VQFormBody::ReadRecordOf(std::string_view item, std::string* record, Surroundings* around) const {
  unsigned short type = 0;
  std::string value;
  const VQSTATUS status = ReadItem(item, &type, &value);
  if (status != VQ_OK) return status;
  if (type != TYPE_COMPOSITE) return VQERR_NOT_FOUND;
  const auto* bytes = reinterpret_cast<const unsigned char*>(value.data());
  for (std::size_t at = 0; at < value.size();) {
    vq::RecordHeader header;
    const std::size_t left = value.size() - at;
    if (!vq::ReadRecordHeader(bytes + at, static_cast<std::uint32_t>(left), &header)) return VQERR_CORRUPTED;
    if (header.Length > left) return VQERR_CORRUPTED;
    const std::size_t next = std::min<std::size_t>(vq::Padded(header.Length), left);
    if (!VQRichTextParser::HasClass(header.Signature)) {
      *record = value.substr(at, header.Length);
      *around = {value.substr(0, at), value.substr(at + next)};
      return VQ_OK;
    }
    at += next;
  }
  return VQERR_NOT_FOUND;
}

VQSTATUS VQFormBody::LoadInfo() {
  std::string record;
  const VQSTATUS found = ReadRecordOf("$Info", &record, &InfoAround);
  if (found != VQ_OK) return found == VQWARN_NOT_FOUND ? VQERR_NOT_FOUND : found;
  if (static_cast<unsigned char>(record[0]) != kInfoSignature || record.size() < 2) return VQERR_NOT_FOUND;
  if (record[1] == '\0' || record[1] == '\xFF') return VQERR_NOT_FOUND;  // of another form than byte form
  VQSTATUS status = Decode(record, ODS_FORMINFO, &Info, &InfoTail);
  const bool used = (Info.Flags2 & kInherits) != 0;
  std::string name;
  if (status == VQ_OK) status = CutName(Info.InheritFieldNameLength, used, &InfoTail, &name);
  if (status != VQ_OK) return status;
  if (used) {
    InheritDocumentFieldName = vq::StringOf(name);
  } else {
    UnusedInheritName = name;
  }
  return VQ_OK;
}

VQSTATUS VQFormBody::LoadAutoLaunch() {
  std::string record;
  const VQSTATUS found = ReadRecordOf("$AUTOLAUNCH", &record, &AutoLaunchAround);
  if (found != VQ_OK) return found == VQWARN_NOT_FOUND ? VQ_OK : found;
  const auto* bytes = reinterpret_cast<const unsigned char*>(record.data());
  if (record.size() < 4 || vq::LoadWord(bytes) != SIG_CD_FORMPART) return VQERR_NOT_FOUND;
  VQSTATUS status = Decode(record, ODS_FORMAUTOLAUNCH, &AutoLaunch, &AutoLaunchTail);
  const bool used = (AutoLaunch.CopyToFieldFlags & VQCREATEOBJECTINFIELDOPTION_NAMED_FIELD) != 0;
  std::string name;
  if (status == VQ_OK) status = CutName(AutoLaunch.FieldNameLength, used, &AutoLaunchTail, &name);
  if (status != VQ_OK) return status;
  if (used) {
    CreateObjectInFieldName = vq::StringOf(name);
  } else {
    UnusedObjectName = name;
  }
  return VQ_OK;
}

// A list that can't be read must not look like none: saving would take the protection away.
VQSTATUS VQFormBody::LoadTexts(std::string_view item, VQText* texts, int* absent) {
  VQItemBody* body = nullptr;
  VQSTATUS status = FindItem(item, &body);
  *absent = status == VQWARN_NOT_FOUND;
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  const VQItem hold(body);
  if (body->GetClassID() != VQCLASSID_VQTEXTBODY) return VQERR_CORRUPTED;
  std::vector<VQString> entries;
  status = static_cast<VQTextBody*>(body)->ReadEntries(&entries);
  for (std::size_t i = 0; status == VQ_OK && i < entries.size(); ++i) {
    status = texts->Insert(static_cast<unsigned long>(i), entries[i]);
  }
  return status;
}

VQSTATUS VQFormBody::LoadRest() {
  MergeReplicationConflicts = HasItem("$ConflictAction");
  VQSTATUS status = LoadTexts("$FormUsers", &Authors, &AllowAllAuthors);
  if (status == VQ_OK) status = LoadTexts("$Readers", &Readers, &AllowAllReaders);
  AllowPublicAccessUsers = HasItem("$PublicAccess");
  InheritsFromTemplateName = vq::StringOf(TextOf("$Class"));
  int no_keys = 0;
  if (status == VQ_OK) status = LoadTexts("SecretEncryptionKeys", &DefaultEncryptionKeys, &no_keys);
  DisablePrintingAndCopying = HasItem("$KeepPrivate");
  UserCanOverrideBackground = !HasItem("$NoBackgroundOverride");
  return status;
}
