// VQViewFolderBody: opening, closing and saving.
#include "vq/views/viewbody.h"

#include <algorithm>

#include "engine/database.h"
#include "engine/folder.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/store/storetext.h"
#include "vq/views/vdesign.h"

namespace {

constexpr unsigned long kLegalOpenFlags = 0x30007;
constexpr unsigned long kMaximumName = 64;

bool IsViewType(unsigned long type) { return type == 0xE0008 || type == 0xE1008 || type == 0xE8008; }

bool SameTime(const TIMEDATE& a, const TIMEDATE& b) { return a.TimeWord == b.TimeWord && a.DateWord == b.DateWord; }

}  // namespace

VQViewFolderBody::VQViewFolderBody(VQDatabaseBody* database, unsigned long type, ENGHANDLE handle)
    : VQSlateBody(database, type, handle),
      CalendarRecord(vq::viewdesign::DefaultCalendar()),
      LoadStatus(IsViewType(type) ? VQERR_VIEW_NOT_OPEN : VQERR_INCORRECT_SLATE_TYPE),
      Columns(this),
      EntryDatabase(database),
      ResponsesColumn(kNoResponsesColumn),
      DesignFlags(kClassChecked),
      NavigatorStatus(LoadStatus),
      Type(VQVFTYPE_UNKNOWN),
      OpenFlags(0),
      TableRecord(vq::viewdesign::DefaultTable()),
      TableExtension{} {}

VQViewFolderBody::~VQViewFolderBody() {
  ++RefCount;
  try {
    VQViewFolderBody::Close();
  } catch (...) {
    // The status of a close that a destructor runs is lost.
  }
}

VQCLASSID VQViewFolderBody::GetClassID() const { return VQCLASSID_VQVIEWFOLDERBODY; }

void VQViewFolderBody::SetState(unsigned long mask, bool on) {
  DesignFlags = static_cast<std::uint32_t>(on ? DesignFlags | mask : DesignFlags & ~mask);
}

VQSTATUS VQViewFolderBody::Fail(VQSTATUS status) {
  LoadStatus = NavigatorStatus = status;
  return status;
}

VQSTATUS VQViewFolderBody::CheckFlags(unsigned long flags, const VQDatabase& entries) const {
  if ((flags & ~kLegalOpenFlags) != 0) return VQERR_INVALID_PARAMETER;
  if ((flags & VQVFOPENFLAGS_DESIGN_ONLY) != 0 && flags != VQVFOPENFLAGS_DESIGN_ONLY) return VQERR_INVALID_PARAMETER;
  return entries.IsNull() ? VQERR_UNINITIALIZED_ARGUMENT : VQ_OK;
}

VQSTATUS VQViewFolderBody::OpenNew() {
  const bool untouched = !IsDesignOpen() && LoadStatus == VQERR_VIEW_NOT_OPEN;
  return untouched && VQSlateBody::IsOpen() && GetID() == 0 ? Open(VQVFOPENFLAGS_DESIGN_ONLY) : VQ_OK;
}

VQSTATUS VQViewFolderBody::Open(unsigned long flags) { return Open(flags, VQDatabase(GetDatabaseBody())); }

VQSTATUS VQViewFolderBody::Open(unsigned long flags, const VQDatabase& entries) {
  if (VQSTATUS status = CheckFlags(flags, entries)) return status;
  if (!IsViewType(VQSlateBody::GetType())) return Fail(VQERR_INCORRECT_SLATE_TYPE);
  const bool design_is_open = IsDesignOpen();
  const bool stays_design = (OpenFlags & VQVFOPENFLAGS_DESIGN_ONLY) == 0 || flags == VQVFOPENFLAGS_DESIGN_ONLY;
  if (design_is_open && stays_design) return VQWARN_ALREADY_OPEN;
  EntryDatabase = entries;
  if (!design_is_open) SetState(kNew, GetID() == 0);
  if (VQSTATUS status = OpenEntries(flags)) return design_is_open ? status : Fail(status);
  OpenFlags = static_cast<std::uint32_t>(flags);
  if (design_is_open) return VQ_OK;
  if (VQSTATUS status = OpenDesign()) {
    CloseEntries();
    return Fail(status);
  }
  SetState(kOpen | kClassChecked, true);
  if (HasState(kNew)) SetDirty();
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::OpenEntries(unsigned long flags) {
  if (flags == VQVFOPENFLAGS_DESIGN_ONLY || HasState(kNew)) {
    NavigatorStatus = flags == VQVFOPENFLAGS_DESIGN_ONLY ? VQERR_DESIGN_ONLY : VQERR_VIEW_NOT_SAVED;
    return VQ_OK;
  }
  if (!EntryDatabase.IsOpen()) {
    if (VQSTATUS status = EntryDatabase.GetDatabaseBody()->Open(VQDBOPENFLAGS_OF_SESSION)) return status;
    SetState(kOwnsEntryDatabase, true);
  }
  const VQSTATUS status = OpenCollection(flags);
  if (status == VQ_OK) return VQ_OK;
  NavigatorStatus = status;
  CloseEntries();
  return status;
}

VQSTATUS VQViewFolderBody::StoredTime(TIMEDATE* modified) const {
  return vq::FromEngine(
      EngDbGetSlateInfo(GetDatabaseBody()->GetHandle(), GetID(), nullptr, modified, nullptr, nullptr));
}

// An index is not built from a design that is about to change.
VQSTATUS VQViewFolderBody::OpenCollection(unsigned long flags) {
  const bool slate_is_open = VQSlateBody::IsOpen();
  const bool modified = slate_is_open && IsModified() != 0;
  const unsigned long engine_flags = modified ? flags | VQVFOPENFLAGS_NO_CREATE : flags;
  VQSTATUS status = VQ_OK;
  VQVFNavigator opened(new VQVFNavigatorBody(this, nullptr, 0, static_cast<std::uint32_t>(engine_flags), &status));
  if (vq::EngineError(status) == ENG_ERR_NO_COLLECTION && status <= 0xFFFF) {
    // The engine says the same of a view that is gone.
    const VQSTATUS there = StoredTime(nullptr);
    if (there != VQ_OK) return there;
    return (flags & VQVFOPENFLAGS_NO_CREATE) != 0 ? VQERR_COLLECTION_NO_CREATE : VQERR_VIEW_NOT_SAVED;
  }
  if (status != VQ_OK) return status;
  Navigator = opened.GetNavigatorBody();
  NavigatorStatus = VQ_OK;
  if (!slate_is_open || modified) return VQ_OK;
  // The engine may have changed the slate on the way.
  TIMEDATE now{};
  status = StoredTime(&now);
  return status != VQ_OK || SameTime(now, GetModified()) ? status : ReopenSlate();
}

VQSTATUS VQViewFolderBody::ReopenSlate() {
  const int delete_on_close = GetDeleteOnClose();
  VQIDTable* table = GetTable();
  SetDeleteOnClose(0);
  VQSTATUS status = VQSlateBody::Close();
  if (status == VQ_OK) status = VQSlateBody::Open(0);
  SetDeleteOnClose(delete_on_close);
  if (status == VQ_OK && table != nullptr) status = table->AddBody(this);
  return status;
}

VQSTATUS VQViewFolderBody::ReopenUnmodified() {
  if (!VQSlateBody::IsOpen() || IsModified() != 0) return VQ_OK;
  return ReopenSlate();
}

VQSTATUS VQViewFolderBody::OpenDesign() {
  const bool opens_slate = !VQSlateBody::IsOpen();
  if (opens_slate) {
    if (VQSTATUS status = VQSlateBody::Open(0)) return status;
  }
  SetState(kClassChecked, false);
  const VQSTATUS status = LoadDesign();
  if (status == VQ_OK) return VQ_OK;
  ReleaseDesign();
  if (opens_slate) VQSlateBody::Close();
  return status;
}

void VQViewFolderBody::CloseEntries() {
  if (!Navigator.IsNull()) Navigator.GetNavigatorBody()->Close();
  Navigator = static_cast<VQVFNavigatorBody*>(nullptr);
  if (HasState(kOwnsEntryDatabase) && EntryDatabase.IsOpen()) EntryDatabase.GetDatabaseBody()->Close();
  SetState(kOwnsEntryDatabase, false);
}

void VQViewFolderBody::ReleaseDesign() {
  Columns.Release();
  OpenObjects.DeleteAllObjects();
  Name = Alias = Comment = InheritsFromTemplateName = VQString();
  Readers = Authors = VQText();
  SelectionFormula = FormFormula = VQFormula();
  ForgetTrailer();
  DesignFlags = 0;
}

VQSTATUS VQViewFolderBody::Close() {
  const bool was_folder = Type == VQVFTYPE_FOLDER && VQSlateBody::IsOpen() && GetID() != 0;
  if (IsDesignOpen()) CloseEntries();
  ReleaseDesign();
  Fail(VQERR_VIEW_NOT_OPEN);
  OpenFlags = 0;
  const std::uint32_t id = GetID();
  const VQSTATUS status = VQSlateBody::Close();
  // What the engine says to this is of no use to anyone.
  if (was_folder && GetDatabaseBody()->IsOpen()) EngFolderClose(GetDatabaseBody()->GetHandle(), 0, id, 0);
  return status;
}

VQString VQViewFolderBody::GetName() {
  if (!IsDesignOpen()) vq::Throw(LoadStatus);
  return Name;
}

VQString VQViewFolderBody::GetAlias() {
  if (!IsDesignOpen()) vq::Throw(LoadStatus);
  return Alias;
}

int VQViewFolderBody::IsModified() {
  if (IsDesignOpen() && (HasState(kDesignChanged) || Flags.IsDirty())) return 1;
  return VQSlateBody::IsModified();
}

// A slate whose design nobody has asked for is saved as it stands.
VQSTATUS VQViewFolderBody::Save(unsigned short flags) {
  if (!IsDesignOpen()) return LoadStatus == VQERR_VIEW_NOT_OPEN ? VQSlateBody::Save(flags) : LoadStatus;
  VQSTATUS status = SaveDesign();
  if (status == VQ_OK) status = VQSlateBody::Save(flags);
  if (status == VQ_OK && HasState(kNameChanged)) {
    if (Type == VQVFTYPE_FOLDER) status = FinishRename(flags);
    // A folder that still has its temporary title is not saved.
    SetState(status == VQ_OK ? kNameChanged : kDesignChanged, status != VQ_OK);
  }
  if (status != VQ_OK || !HasState(kNew)) return status;
  SetState(kNew, false);
  return OpenEntries(OpenFlags);
}

// From the temporary title to the true one. After a failure the name stays marked, so that a later save goes on here.
VQSTATUS VQViewFolderBody::FinishRename(unsigned short flags) {
  const std::string_view name = vq::ViewOf(Name);
  VQSTATUS status = vq::FromEngine(EngFolderRename(GetDatabaseBody()->GetHandle(), 0, GetID(), vq::EngineText(name),
                                                   static_cast<std::uint16_t>(name.size()), 0));
  if (status == VQ_OK) status = ReopenSlate();
  if (status == VQ_OK) status = SaveTitle(false);
  return status == VQ_OK ? VQSlateBody::Save(flags) : status;
}

void VQViewFolderBody::BecomeView() {
  Flags.SetLetter('F', false);
  Flags.SetLetter('3', false);
  Type = VQVFTYPE_VIEW;
  SetState(kDesignChanged | kColumnsChanged | kRebuildFormula, true);
}

VQSTATUS VQViewFolderBody::SetName(const VQString& name) {
  if (!IsDesignOpen()) return LoadStatus;
  if (name.IsNull()) return VQERR_NULL_STRING;
  if (name.GetBufLength() + Alias.GetBufLength() >= kMaximumName) return VQERR_VIEW_NAME_TOO_LONG;
  const std::string_view text = vq::ViewOf(name);
  const std::size_t bar = std::min(text.find('|'), text.size());
  if (bar == 0) return VQERR_INVALID_PARAMETER;
  if (bar < text.size()) {
    const std::string_view rest = text.substr(bar + 1);
    Alias = vq::StringOf(rest.substr(0, rest.find('|')));
  }
  Name = vq::StringOf(text.substr(0, bar));
  SetState(kNameChanged | kDesignChanged, true);
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::SetAlias(const VQString& alias) {
  if (!IsDesignOpen()) return LoadStatus;
  if (alias.GetBufLength() + Name.GetBufLength() >= kMaximumName) return VQERR_VIEW_NAME_TOO_LONG;
  Alias = alias;
  SetState(kDesignChanged, true);
  return VQ_OK;
}

VQSTATUS VQViewFolderBody::GetType(VQVFTYPE* type) {
  VQSTATUS status = VQ_OK;
  if (Type == VQVFTYPE_UNKNOWN) {
    const bool opens_slate = !VQSlateBody::IsOpen();
    if (opens_slate) status = VQSlateBody::Open(0);
    VQDesignFlags letters;
    if (status == VQ_OK) status = letters.Read(this);
    if (opens_slate && VQSlateBody::IsOpen()) VQSlateBody::Close();
    if (VQIsError(status)) return status;
    Type = letters.HasLetter('F') ? VQVFTYPE_FOLDER : VQVFTYPE_VIEW;
  }
  *type = Type;
  return VQ_OK;
}

std::uint32_t VQViewFolderBody::GetResponsesColumn() {
  if (HasState(kResponsesColumnKnown)) return ResponsesColumn;
  ResponsesColumn = kNoResponsesColumn;
  for (std::uint32_t i = Columns.GetCount(); i-- > 0;) {
    if (Columns[i]->HasFlag(VIEWCOLUMN_RESPONSES_ONLY)) ResponsesColumn = i;
  }
  SetState(kResponsesColumnKnown, true);
  return ResponsesColumn;
}

VQSTATUS VQViewFolderBody::GetFont(std::uint32_t font_id, VQFontStyle* style) {
  if (style == nullptr) return VQERR_NULL_POINTER;
  VQFontTable table;
  const VQSTATUS status = vq::FindFontTable(this, &table);
  if (VQIsError(status)) return status;
  VQFontStyle made;
  const VQSTATUS assigned = made.Assign(font_id, status == VQ_OK ? &table : nullptr);
  if (VQIsError(assigned)) return assigned;
  *style = made;
  return VQ_OK;
}

// A face of the table gets the number that it has in this slate; the client's style stays as it is.
VQSTATUS VQViewFolderBody::RegisterFont(const VQFontStyle& style, std::uint32_t* font_id) {
  if (style.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQFontStyle own;
  VQSTATUS status = own.Copy(style);
  if (status == VQ_OK && vq::fontid::IsTableFace(own.GetFaceID())) {
    VQFontTable table;
    status = vq::FindOrMakeFontTable(this, &table);
    if (status == VQ_OK) status = vq::ConvertFont(own, &table);
  }
  if (status == VQ_OK) *font_id = static_cast<std::uint32_t>(own.GetFontID());
  return status;
}

VQSTATUS VQViewFolderBody::TakeFonts(VQViewFolderBody* source, VQVFColumnBody* column) {
  if (source == nullptr || source == this) return VQ_OK;
  VQSTATUS status = VQ_OK;
  for (std::uint32_t* font : {&column->Record().FontID, &column->Extension().TitleFont}) {
    VQFontStyle style;
    if (status == VQ_OK) status = source->GetFont(*font, &style);
    if (status == VQ_OK) status = RegisterFont(style, font);
  }
  return status;
}
