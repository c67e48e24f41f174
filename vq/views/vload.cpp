// VQViewFolderBody: reading the design items.
#include "engine/memory.h"
#include "engine/slate.h"
#include "vq/store/storetext.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace design = vq::viewdesign;

namespace {

constexpr std::size_t kTypeWord = 2;

}  // namespace

void VQViewFolderBody::SetDefaults() {
  TableRecord = design::DefaultTable();
  TableExtension = {};
  // A record of no length takes its defaults.
  VQ_ASSERT_TEXT(design::CompleteExtension(&TableExtension) == VQ_OK, "error == 0", "VDESIGN");
  CalendarRecord = design::DefaultCalendar();
  // Not in the view menu until told otherwise.
  Flags.Parse("Y");
  SetState(kAllAuthors | kAllReaders, true);
}

VQSTATUS VQViewFolderBody::LoadDesign() {
  SetDefaults();
  VQSTATUS status = VQ_OK;
  try {
    status = LoadFormat();
    if (status == VQ_OK) status = LoadFlags();
    if (status == VQ_OK && IsCalendar()) status = LoadCalendar();
    if (status == VQ_OK) status = LoadItems();
  } catch (VQSTATUS thrown) {
    status = thrown;
  }
  if (status != VQ_OK) Columns.Release();
  return status;
}

// The value without its type word; VQWARN_NOT_FOUND. `type` may be null.
VQSTATUS VQViewFolderBody::ReadItem(std::string_view item, unsigned short* type, std::string* value) const {
  vq::ItemPlace place;
  if (VQSTATUS status = PlaceOf(item, &place)) return status;
  *type = place.Type;
  const auto* bytes = static_cast<const char*>(EngMemLock(place.Value.Pool));
  if (bytes == nullptr) return VQERR_VIEW_DESIGN_READ;
  value->assign(bytes + place.Value.Block + kTypeWord, place.Size - kTypeWord);
  EngMemUnlock(place.Value.Pool);
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::LoadFormat() {
  unsigned short type = 0;
  std::string value;
  const VQSTATUS status = ReadItem("$ViewFormat", &type, &value);
  if (status == VQWARN_NOT_FOUND) return HasState(kNew) ? VQ_OK : AppendDefaultColumn();
  if (status != VQ_OK) return status;
  if (type != design::kTypeViewFormat) return VQERR_INVALID_VIEW;
  return design::ReadFormat(value, Format(), this);
}

design::Format VQViewFolderBody::Format() { return {&TableRecord, &TableExtension, &Columns, &FormatTrailer}; }

// A design that lost its format still shows something: the number of the row.
VQSTATUS VQViewFolderBody::AppendDefaultColumn() {
  const VQVFColumn column(new VQVFColumnBody(this));
  VQVFColumnBody* body = column.GetColumnBody();
  if (design::CompileFormula(VQString("@@146@@"), &body->Formula()) != VQ_OK) return VQERR_VIEW_INIT;
  body->SetDirtyFlags(VQVFColumnBody::kGenerateName);
  SetState(kRebuildFormula, true);
  return Columns.Load(body) == VQ_OK ? VQ_OK : VQERR_VIEW_INIT;
}

VQSTATUS VQViewFolderBody::LoadFlags() {
  const VQSTATUS status = Flags.Read(this);
  if (VQIsError(status)) return status;
  SetState(kFlagsRead, true);
  if (!HasState(kNew) || status == VQ_OK) {
    Type = Flags.HasLetter('F') ? VQVFTYPE_FOLDER : VQVFTYPE_VIEW;
    return VQ_OK;
  }
  if (Type == VQVFTYPE_UNKNOWN) Type = VQVFTYPE_VIEW;
  Flags.SetLetter('F', Type == VQVFTYPE_FOLDER);
  return VQ_OK;
}

// The record is looked for in the item of the view format, as it has always been: in practice a calendar starts from
// the defaults.
VQSTATUS VQViewFolderBody::LoadCalendar() {
  unsigned short type = 0;
  std::string value;
  const VQSTATUS status = ReadItem("$ViewFormat", &type, &value);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  return type == design::kTypeCalendar ? design::ReadCalendar(value, &CalendarRecord) : VQ_OK;
}

VQSTATUS VQViewFolderBody::LoadItems() {
  SetState(kDefault, (GetSlateClass() & VQSLATECLASS_DEFAULT) != 0);
  Name = VQSlateBody::GetName();
  Alias = VQSlateBody::GetAlias();
  if (TextOf("$PublicAccess").find('1') != std::string::npos) SetState(kPublicAccess, true);
  VQSTATUS status = LoadTexts("$Readers", &Readers, kAllReaders);
  if (status == VQ_OK && Type == VQVFTYPE_FOLDER) status = LoadTexts("$Updaters", &Authors, kAllAuthors);
  if (status != VQ_OK) return status;
  Comment = vq::StringOf(TextOf("$Comment"));
  status = LoadFormula("$Formula", true, &SelectionFormula);
  if (status == VQ_OK) status = LoadFormula("$FormFormula", false, &FormFormula);
  if (status == VQ_OK) status = LoadUniqueKeys();
  if (status == VQ_OK && !Flags.HasLetter('P')) InheritsFromTemplateName = vq::StringOf(TextOf("$Class"));
  return status;
}

// A list that can't be read must not look like none: saving would take the protection away.
VQSTATUS VQViewFolderBody::LoadTexts(std::string_view item, VQText* texts, unsigned long state) {
  VQItemBody* body = nullptr;
  VQSTATUS status = FindItem(item, &body);
  if (status == VQWARN_NOT_FOUND) return VQ_OK;
  if (status != VQ_OK) return status;
  const VQItem hold(body);
  if (body->GetClassID() != VQCLASSID_VQTEXTBODY) return VQERR_INVALID_VIEW;
  std::vector<VQString> entries;
  status = static_cast<VQTextBody*>(body)->ReadEntries(&entries);
  for (std::size_t i = 0; status == VQ_OK && i < entries.size(); ++i) {
    status = texts->Insert(static_cast<unsigned long>(i), entries[i]);
  }
  if (status == VQ_OK) SetState(state, false);
  return status;
}

VQSTATUS VQViewFolderBody::LoadFormula(std::string_view item, bool selection, VQFormula* formula) {
  unsigned short type = 0;
  std::string code;
  const VQSTATUS status = ReadItem(item, &type, &code);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  if (type != design::kTypeFormula) return VQERR_INVALID_VIEW;
  return design::LoadFormula(code, selection, formula);
}

VQSTATUS VQViewFolderBody::LoadUniqueKeys() {
  unsigned short type = 0;
  std::string value;
  const VQSTATUS status = ReadItem("$Collation", &type, &value);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  if (type != design::kTypeCollation) return VQ_OK;
  CollationHeader header{};
  if (VQSTATUS read = design::ReadCollation(value, &header)) return read;
  SetState(kUniqueKeys, (header.Flags & COLLATION_UNIQUE) != 0);
  return VQ_OK;
}
