// VQViewFolder: the properties of the design.
#include <algorithm>
#include <initializer_list>

#include "engine/view.h"
#include "vq/richtext/font.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace {

constexpr unsigned long kColors = 240;
constexpr unsigned long kMaximumComment = 256;
constexpr unsigned kWebHTML = 0x02;
constexpr unsigned kMinutes = 60;

enum TableBit : unsigned {
  kUnreadMarks = 0x0014,
  kOpenPosition = 0x0060,
  kOpenTop = 0x0020,
  kUseAlternateColor = 0x0080,
  kHeadingNone = 0x0100,
  kNoSelectionMargin = 0x0200,
  kHeadingSimple = 0x0400,
  kHeading = kHeadingNone | kHeadingSimple,
  kShrinkRows = 0x0800,
  kRefresh = 0x3000,
  kExtendLastColumn = 0x4000,
};

enum CalendarBit : unsigned { kShowConflicts = 0x0001, kTimeSlots = 0x0002, kTimeSlotsOnRequest = 0x0004 };

ViewTableRecord& RecordOf(VQViewFolderBody& body, ViewTableRecord*) { return body.Table(); }
ViewTableExtension& RecordOf(VQViewFolderBody& body, ViewTableExtension*) { return body.Extension(); }
ViewCalendarRecord& RecordOf(VQViewFolderBody& body, ViewCalendarRecord*) { return body.Calendar(); }

template <typename Record, typename Value>
Record* RecordType(Value Record::*);

// The record that a field is of, in a view.
template <auto Field>
auto& FieldOf(VQViewFolderBody& body) {
  return RecordOf(body, decltype(RecordType(Field)){nullptr}).*Field;
}

void Replace(std::uint16_t& word, unsigned mask, unsigned value) {
  word = static_cast<std::uint16_t>((word & ~mask) | value);
}

bool IsOneOf(unsigned long value, std::initializer_list<unsigned long> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace

template <typename Edit>
VQSTATUS VQViewFolder::Amend(Suits suits, Edit edit) {
  VQViewFolderBody* body = nullptr;
  VQSTATUS status = CheckDesign(&body, suits);
  if (status == VQ_OK) status = edit(*body);
  if (status == VQ_OK) body->SetState(VQViewFolderBody::kDesignChanged, true);
  return vq::Apply(status);
}

int VQViewFolder::GetTableBit(unsigned mask, Suits suits) const {
  return (RequireDesign(suits)->Table().Flags & mask) != 0;
}
VQSTATUS VQViewFolder::SetTableBits(unsigned mask, unsigned value, Suits suits) {
  return Amend(suits, [=](VQViewFolderBody& body) {
    Replace(body.Table().Flags, mask, value);
    return VQ_OK;
  });
}
VQSTATUS VQViewFolder::SetTableBit(unsigned mask, int flag, Suits suits) {
  return SetTableBits(mask, flag != 0 ? mask : 0, suits);
}
// Bits that decide what rows carry: a change makes $Formula anew, and none does nothing.
VQSTATUS VQViewFolder::SetRowBit(unsigned mask, bool on) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  if (status != VQ_OK || ((body->Table().Flags & mask) != 0) == on) return vq::Apply(status);
  body->SetState(VQViewFolderBody::kRebuildFormula, true);
  return SetTableBit(mask, on);
}
int VQViewFolder::GetLetter(char letter) const { return RequireDesign()->Letters().HasLetter(letter); }
VQSTATUS VQViewFolder::SetLetter(char letter, int flag) {
  return Amend(Suits::All, [=](VQViewFolderBody& body) {
    body.Letters().SetLetter(letter, flag != 0);
    return VQ_OK;
  });
}
int VQViewFolder::GetState(unsigned long mask) const { return RequireDesign()->HasState(mask); }
VQSTATUS VQViewFolder::SetState(unsigned long mask, int flag, unsigned long more) {
  return Amend(Suits::All, [=](VQViewFolderBody& body) {
    body.SetState(mask, flag != 0);
    body.SetState(more, true);
    return VQ_OK;
  });
}

template <auto Field>
auto VQViewFolder::GetField(Suits suits) const {
  return FieldOf<Field>(*RequireDesign(suits));
}
template <auto Field>
VQSTATUS VQViewFolder::SetNumber(Suits suits, unsigned long value, unsigned long lowest, unsigned long highest,
                                 VQSTATUS wrong) {
  return Amend(suits, [=](VQViewFolderBody& body) {
    if (value < lowest || value > highest) return wrong;
    auto& field = FieldOf<Field>(body);
    field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    return VQ_OK;
  });
}
template <auto Field>
VQSTATUS VQViewFolder::GetFont(Suits suits, VQFontStyle* style) const {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body, suits);
  return vq::Apply(status == VQ_OK ? body->GetFont(FieldOf<Field>(*body), style) : status);
}
template <auto Field>
VQSTATUS VQViewFolder::SetFont(Suits suits, const VQFontStyle& style) {
  return Amend(suits, [&](VQViewFolderBody& body) { return body.RegisterFont(style, &FieldOf<Field>(body)); });
}

VQSTATUS VQViewFolder::SetTexts(VQText VQViewFolderBody::*texts, const VQText& value, Suits suits) {
  return Amend(suits, [&](VQViewFolderBody& body) {
    VQText copy;
    for (unsigned long i = 0; i < value.GetCount(); ++i) {
      if (VQSTATUS status = copy.Insert(i, VQString(value[i]))) return status;
    }
    body.*texts = copy;
    return VQ_OK;
  });
}

VQSTATUS VQViewFolder::CopyOut(const VQFormula& formula, VQFormula* copy) const {
  if (copy == nullptr) return VQERR_NULL_POINTER;
  return vq::viewdesign::HasCode(formula) ? vq::viewdesign::CopyFormula(formula, copy) : VQWARN_NOT_FOUND;
}

VQString VQViewFolder::GetName() const { return RequireDesign()->GetName(); }
VQSTATUS VQViewFolder::SetName(const VQString& name) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  return vq::Apply(status == VQ_OK ? body->SetName(name) : status);
}
VQString VQViewFolder::GetAlias() const { return RequireDesign()->GetAlias(); }
VQSTATUS VQViewFolder::SetAlias(const VQString& alias) {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  return vq::Apply(status == VQ_OK ? body->SetAlias(alias) : status);
}

int VQViewFolder::GetAllowAllAuthors() const { return GetState(VQViewFolderBody::kAllAuthors); }
VQSTATUS VQViewFolder::SetAllowAllAuthors(int flag) { return SetState(VQViewFolderBody::kAllAuthors, flag); }
int VQViewFolder::GetAllowAllReaders() const { return GetState(VQViewFolderBody::kAllReaders); }
VQSTATUS VQViewFolder::SetAllowAllReaders(int flag) { return SetState(VQViewFolderBody::kAllReaders, flag); }
int VQViewFolder::GetAllowDesignRefreshToModify() const { return GetLetter('P') == 0; }
VQSTATUS VQViewFolder::SetAllowDesignRefreshToModify(int flag) { return SetLetter('P', flag == 0); }
int VQViewFolder::GetAllowPublicAccessUsers() const { return GetState(VQViewFolderBody::kPublicAccess); }
VQSTATUS VQViewFolder::SetAllowPublicAccessUsers(int flag) { return SetState(VQViewFolderBody::kPublicAccess, flag); }

unsigned short VQViewFolder::GetAlternateRowColor() const {
  return GetField<&ViewTableExtension::AlternateRowColor>(Suits::NotCalendar);
}
VQSTATUS VQViewFolder::SetAlternateRowColor(unsigned short color) {
  return SetNumber<&ViewTableExtension::AlternateRowColor>(Suits::NotCalendar, color, 0, kColors - 1,
                                                           VQERR_INVALID_PARAMETER);
}
VQText VQViewFolder::GetAuthors() const { return RequireDesign(Suits::Folder)->Authors; }
VQSTATUS VQViewFolder::SetAuthors(const VQText& authors) {
  return SetTexts(&VQViewFolderBody::Authors, authors, Suits::Folder);
}
unsigned short VQViewFolder::GetBackgroundColor() const {
  return GetField<&ViewTableExtension::BackgroundColor>(Suits::All);
}
VQSTATUS VQViewFolder::SetBackgroundColor(unsigned short color) {
  return Amend(Suits::All, [=](VQViewFolderBody& body) {
    if (color >= kColors) return VQERR_INVALID_PARAMETER;
    std::uint16_t legacy = 0;
    if (VQSTATUS status = vq::FromEngine(EngColorToLegacy(color, &legacy))) return status;
    body.Extension().BackgroundColor = color;
    body.Extension().LegacyBackground = legacy;
    return VQ_OK;
  });
}
VQSTATUS VQViewFolder::GetBorderFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewTableExtension::BorderFont>(Suits::All, style);
}
VQSTATUS VQViewFolder::SetBorderFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewTableExtension::BorderFont>(Suits::All, style);
}
unsigned short VQViewFolder::GetBusyRowColor() const {
  return GetField<&ViewCalendarRecord::BusyRowColor>(Suits::Calendar);
}
VQSTATUS VQViewFolder::SetBusyRowColor(unsigned short color) {
  return SetNumber<&ViewCalendarRecord::BusyRowColor>(Suits::Calendar, color, 0, kColors - 1, VQERR_INVALID_PARAMETER);
}
VQSTATUS VQViewFolder::GetCalendarHeaderFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewCalendarRecord::HeaderFont>(Suits::Calendar, style);
}
VQSTATUS VQViewFolder::SetCalendarHeaderFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewCalendarRecord::HeaderFont>(Suits::Calendar, style);
}
int VQViewFolder::GetCollapseOnOpen() const { return GetTableBit(VIEWTABLE_COLLAPSE); }
VQSTATUS VQViewFolder::SetCollapseOnOpen(int flag) { return SetTableBit(VIEWTABLE_COLLAPSE, flag); }
VQString VQViewFolder::GetComment() const { return RequireDesign()->Comment; }
VQSTATUS VQViewFolder::SetComment(const VQString& comment) {
  return Amend(Suits::All, [&](VQViewFolderBody& body) {
    if (comment.GetBufLength() > kMaximumComment) return VQERR_STRING_TOO_LONG;
    body.Comment = comment;
    return VQ_OK;
  });
}
VQSTATUS VQViewFolder::GetDateFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewCalendarRecord::DateFont>(Suits::Calendar, style);
}
VQSTATUS VQViewFolder::SetDateFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewCalendarRecord::DateFont>(Suits::Calendar, style);
}
unsigned short VQViewFolder::GetDaySeparatorColor() const {
  return GetField<&ViewCalendarRecord::DaySeparatorColor>(Suits::Calendar);
}
VQSTATUS VQViewFolder::SetDaySeparatorColor(unsigned short color) {
  return SetNumber<&ViewCalendarRecord::DaySeparatorColor>(Suits::Calendar, color, 0, kColors - 1,
                                                           VQERR_INVALID_PARAMETER);
}
int VQViewFolder::GetExtendLastColumn() const { return GetTableBit(kExtendLastColumn); }
VQSTATUS VQViewFolder::SetExtendLastColumn(int flag) { return SetTableBit(kExtendLastColumn, flag); }

VQSTATUS VQViewFolder::GetFormFormula(VQFormula* formula) const {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body);
  return vq::Apply(status == VQ_OK ? CopyOut(body->FormFormula, formula) : status);
}
VQSTATUS VQViewFolder::SetFormFormula(const VQFormula& formula) {
  return Amend(Suits::All,
               [&](VQViewFolderBody& body) { return vq::viewdesign::CopyFormula(formula, &body.FormFormula); });
}
// The mark stands in the record of the sort order.
int VQViewFolder::GetGenerateUniqueKeys() const { return GetState(VQViewFolderBody::kUniqueKeys); }
VQSTATUS VQViewFolder::SetGenerateUniqueKeys(int flag) {
  return SetState(VQViewFolderBody::kUniqueKeys, flag, VQViewFolderBody::kColumnsChanged);
}
VQVFHEADINGDISPLAY VQViewFolder::GetHeadingDisplay() const {
  if (GetTableBit(kHeadingNone, Suits::NotCalendar) != 0) return VQVFHEADINGDISPLAY_NONE;
  return GetTableBit(kHeadingSimple) != 0 ? VQVFHEADINGDISPLAY_SIMPLE : VQVFHEADINGDISPLAY_BEVELED;
}
VQSTATUS VQViewFolder::SetHeadingDisplay(VQVFHEADINGDISPLAY display) {
  return Amend(Suits::NotCalendar, [=](VQViewFolderBody& body) {
    constexpr unsigned kBits[] = {kHeadingNone, kHeadingSimple, 0};
    if (display > VQVFHEADINGDISPLAY_BEVELED) return VQERR_INVALID_PARAMETER;
    Replace(body.Table().Flags, kHeading, kBits[display]);
    return VQ_OK;
  });
}
int VQViewFolder::GetHideFromBrowsers() const { return GetLetter('w'); }
VQSTATUS VQViewFolder::SetHideFromBrowsers(int flag) { return SetLetter('w', flag); }
int VQViewFolder::GetHideFromClients() const { return GetLetter('n'); }
VQSTATUS VQViewFolder::SetHideFromClients(int flag) { return SetLetter('n', flag); }
int VQViewFolder::GetHideFromR4Clients() const { return GetLetter('4'); }
VQSTATUS VQViewFolder::SetHideFromR4Clients(int flag) { return SetLetter('4', flag); }
VQString VQViewFolder::GetInheritsFromTemplateName() const { return RequireDesign()->InheritsFromTemplateName; }
VQSTATUS VQViewFolder::SetInheritsFromTemplateName(const VQString& name) {
  return Amend(Suits::All, [&](VQViewFolderBody& body) {
    body.InheritsFromTemplateName = name;
    return VQ_OK;
  });
}
int VQViewFolder::GetIsDefaultDesign() const { return GetLetter('d'); }
VQSTATUS VQViewFolder::SetIsDefaultDesign(int flag) { return SetLetter('d', flag); }
int VQViewFolder::GetIsDefaultViewFolder() const { return GetState(VQViewFolderBody::kDefault); }
// No view opens that is both private and the default.
VQSTATUS VQViewFolder::SetIsDefaultViewFolder(int flag) {
  return Amend(Suits::All, [=](VQViewFolderBody& body) {
    if (flag != 0 && (body.GetSlateClass() & VQSLATECLASS_PRIVATE) != 0) return VQERR_INCORRECT_SLATE_TYPE;
    body.SetState(VQViewFolderBody::kDefault, flag != 0);
    return VQ_OK;
  });
}
unsigned long VQViewFolder::GetLinesPerHeading() const {
  return GetField<&ViewTableExtension::LinesPerHeading>(Suits::NotCalendar);
}
VQSTATUS VQViewFolder::SetLinesPerHeading(unsigned long lines) {
  return SetNumber<&ViewTableExtension::LinesPerHeading>(Suits::NotCalendar, lines, 1, 5, VQERR_OUT_OF_RANGE);
}
unsigned long VQViewFolder::GetLinesPerRow() const { return GetField<&ViewTableExtension::LinesPerRow>(Suits::All); }
VQSTATUS VQViewFolder::SetLinesPerRow(unsigned long lines) {
  return SetNumber<&ViewTableExtension::LinesPerRow>(Suits::All, lines, 1, 9, VQERR_OUT_OF_RANGE);
}
VQVFOPENPOSITION VQViewFolder::GetOpenPosition() const {
  if (GetTableBit(kOpenTop) != 0) return VQVFOPENPOSITION_TOP;
  return GetTableBit(kOpenPosition) != 0 ? VQVFOPENPOSITION_BOTTOM : VQVFOPENPOSITION_LAST;
}
VQSTATUS VQViewFolder::SetOpenPosition(VQVFOPENPOSITION position) {
  if (!IsOneOf(position, {0, 32, 64})) return Amend(Suits::All, [](auto&) { return VQERR_INVALID_PARAMETER; });
  return SetTableBits(kOpenPosition, position);
}
VQText VQViewFolder::GetReaders() const { return RequireDesign()->Readers; }
VQSTATUS VQViewFolder::SetReaders(const VQText& readers) {
  return SetTexts(&VQViewFolderBody::Readers, readers, Suits::All);
}
VQVFREFRESHOPTION VQViewFolder::GetRefreshOption() const {
  return static_cast<VQVFREFRESHOPTION>(RequireDesign()->Table().Flags & kRefresh);
}
VQSTATUS VQViewFolder::SetRefreshOption(VQVFREFRESHOPTION option) {
  if ((option & ~kRefresh) != 0) return Amend(Suits::All, [](auto&) { return VQERR_INVALID_PARAMETER; });
  return SetTableBits(kRefresh, option);
}
VQVFROWSPACING VQViewFolder::GetRowSpacing() const {
  return static_cast<VQVFROWSPACING>(GetField<&ViewTableExtension::RowSpacing>(Suits::All));
}
VQSTATUS VQViewFolder::SetRowSpacing(VQVFROWSPACING spacing) {
  return SetNumber<&ViewTableExtension::RowSpacing>(Suits::All, spacing, 0, VQVFROWSPACING_DOUBLE, VQERR_OUT_OF_RANGE);
}
VQSTATUS VQViewFolder::GetSelectionFormula(VQFormula* formula) const {
  VQViewFolderBody* body = nullptr;
  const VQSTATUS status = CheckDesign(&body, Suits::View);
  return vq::Apply(status == VQ_OK ? CopyOut(body->SelectionFormula, formula) : status);
}
VQSTATUS VQViewFolder::SetSelectionFormula(const VQFormula& formula) {
  return Amend(Suits::View, [&](VQViewFolderBody& body) {
    if (!vq::viewdesign::HasCode(formula)) return VQERR_INVALID_PARAMETER;
    if (VQSTATUS status = vq::viewdesign::CopyFormula(formula, &body.SelectionFormula)) return status;
    body.SetState(VQViewFolderBody::kSelectionChanged, true);
    return VQ_OK;
  });
}
VQVFSHARINGOPTION VQViewFolder::GetSharingOption() const {
  const VQDesignFlags& letters = RequireDesign()->Letters();
  if (letters.HasLetter('V')) return VQVFSHARINGOPTION_PRIVATE;
  if (!letters.HasLetter('p')) return VQVFSHARINGOPTION_SHARED;
  return letters.HasLetter('o') ? VQVFSHARINGOPTION_PRIVATE_ON_FIRST_USE_DESKTOP
                                : VQVFSHARINGOPTION_PRIVATE_ON_FIRST_USE;
}
int VQViewFolder::GetShowCalendarConflicts() const {
  return (GetField<&ViewCalendarRecord::Flags>(Suits::Calendar) & kShowConflicts) != 0;
}
VQSTATUS VQViewFolder::SetShowCalendarConflicts(int flag) {
  return Amend(Suits::Calendar, [=](VQViewFolderBody& body) {
    Replace(body.Calendar().Flags, kShowConflicts, flag != 0 ? kShowConflicts : 0U);
    return VQ_OK;
  });
}
int VQViewFolder::GetShowInViewMenu() const { return GetLetter('Y') == 0; }
VQSTATUS VQViewFolder::SetShowInViewMenu(int flag) { return SetLetter('Y', flag == 0); }
int VQViewFolder::GetShowReplicationConflicts() const { return GetTableBit(VIEWTABLE_CONFLICTS); }
VQSTATUS VQViewFolder::SetShowReplicationConflicts(int flag) { return SetRowBit(VIEWTABLE_CONFLICTS, flag != 0); }
int VQViewFolder::GetShowResponseHierarchy() const { return GetTableBit(VIEWTABLE_FLAT) == 0; }
VQSTATUS VQViewFolder::SetShowResponseHierarchy(int flag) { return SetRowBit(VIEWTABLE_FLAT, flag == 0); }
int VQViewFolder::GetShowSelectionMargin() const { return GetTableBit(kNoSelectionMargin) == 0; }
VQSTATUS VQViewFolder::SetShowSelectionMargin(int flag) { return SetTableBit(kNoSelectionMargin, flag == 0); }
int VQViewFolder::GetShrinkRows() const { return GetTableBit(kShrinkRows); }
VQSTATUS VQViewFolder::SetShrinkRows(int flag) { return SetTableBit(kShrinkRows, flag); }
VQVFSTYLE VQViewFolder::GetStyle() const { return IsCalendar() != 0 ? VQVFSTYLE_CALENDAR : VQVFSTYLE_STANDARD; }
VQSTATUS VQViewFolder::SetStyle(VQVFSTYLE style) {
  if (style > VQVFSTYLE_CALENDAR) return Amend(Suits::All, [](auto&) { return VQERR_INVALID_PARAMETER; });
  return SetLetter('c', style == VQVFSTYLE_CALENDAR);
}
VQVFTIMESLOTDISPLAY VQViewFolder::GetTimeSlotDisplay() const {
  const unsigned flags = GetField<&ViewCalendarRecord::Flags>(Suits::Calendar);
  if ((flags & kTimeSlots) == 0) return VQVFTIMESLOTDISPLAY_NONE;
  return (flags & kTimeSlotsOnRequest) != 0 ? VQVFTIMESLOTDISPLAY_SHOWN_ON_REQUEST : VQVFTIMESLOTDISPLAY_SHOWN;
}
VQSTATUS VQViewFolder::SetTimeSlotDisplay(VQVFTIMESLOTDISPLAY display) {
  return Amend(Suits::Calendar, [=](VQViewFolderBody& body) {
    constexpr unsigned kBits[] = {0, kTimeSlots, kTimeSlots | kTimeSlotsOnRequest};
    if (display > VQVFTIMESLOTDISPLAY_SHOWN_ON_REQUEST) return VQERR_INVALID_PARAMETER;
    Replace(body.Calendar().Flags, kTimeSlots | kTimeSlotsOnRequest, kBits[display]);
    return VQ_OK;
  });
}
unsigned long VQViewFolder::GetTimeSlotDuration() const {
  const unsigned long minutes = GetField<&ViewCalendarRecord::TimeSlotDuration>(Suits::Calendar);
  return IsOneOf(minutes, {15, 30, 120}) ? minutes : kMinutes;
}
VQSTATUS VQViewFolder::SetTimeSlotDuration(unsigned long minutes) {
  return Amend(Suits::Calendar, [=](VQViewFolderBody& body) {
    if (!IsOneOf(minutes, {15, 30, 60, 120})) return VQERR_INVALID_PARAMETER;
    body.Calendar().TimeSlotDuration = static_cast<std::uint16_t>(minutes);
    return VQ_OK;
  });
}
VQSTATUS VQViewFolder::SetHour(unsigned long hour, bool end) {
  return Amend(Suits::Calendar, [=](VQViewFolderBody& body) {
    if (hour >= 24) return VQERR_OUT_OF_RANGE;
    ViewCalendarRecord& record = body.Calendar();
    const auto minutes = static_cast<std::uint16_t>(hour * kMinutes);
    if (end ? minutes <= record.TimeSlotStart : minutes >= record.TimeSlotEnd) return VQERR_TIME_SLOTS_OVERLAP;
    (end ? record.TimeSlotEnd : record.TimeSlotStart) = minutes;
    return VQ_OK;
  });
}
unsigned long VQViewFolder::GetTimeSlotEndHour() const {
  return GetField<&ViewCalendarRecord::TimeSlotEnd>(Suits::Calendar) / kMinutes;
}
VQSTATUS VQViewFolder::SetTimeSlotEndHour(unsigned long hour) { return SetHour(hour, true); }
unsigned long VQViewFolder::GetTimeSlotStartHour() const {
  return GetField<&ViewCalendarRecord::TimeSlotStart>(Suits::Calendar) / kMinutes;
}
VQSTATUS VQViewFolder::SetTimeSlotStartHour(unsigned long hour) { return SetHour(hour, false); }
VQSTATUS VQViewFolder::GetTimeSlotFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewCalendarRecord::TimeSlotFont>(Suits::Calendar, style);
}
VQSTATUS VQViewFolder::SetTimeSlotFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewCalendarRecord::TimeSlotFont>(Suits::Calendar, style);
}
unsigned short VQViewFolder::GetTodayColor() const {
  return GetField<&ViewCalendarRecord::TodayColor>(Suits::Calendar);
}
VQSTATUS VQViewFolder::SetTodayColor(unsigned short color) {
  return SetNumber<&ViewCalendarRecord::TodayColor>(Suits::Calendar, color, 0, kColors - 1, VQERR_INVALID_PARAMETER);
}
VQSTATUS VQViewFolder::GetTotalsFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewTableExtension::TotalsFont>(Suits::NotCalendar, style);
}
VQSTATUS VQViewFolder::SetTotalsFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewTableExtension::TotalsFont>(Suits::NotCalendar, style);
}
int VQViewFolder::GetTreatContentsAsHTML() const {
  return (GetField<&ViewTableExtension::WebFlags>(Suits::All) & kWebHTML) != 0;
}
VQSTATUS VQViewFolder::SetTreatContentsAsHTML(int flag) {
  return Amend(Suits::All, [=](VQViewFolderBody& body) {
    std::uint8_t& flags = body.Extension().WebFlags;
    flags = static_cast<std::uint8_t>(flag != 0 ? flags | kWebHTML : flags & ~kWebHTML);
    return VQ_OK;
  });
}
VQSTATUS VQViewFolder::GetUnreadFontStyle(VQFontStyle* style) const {
  return GetFont<&ViewTableExtension::UnreadFont>(Suits::All, style);
}
VQSTATUS VQViewFolder::SetUnreadFontStyle(const VQFontStyle& style) {
  return SetFont<&ViewTableExtension::UnreadFont>(Suits::All, style);
}
VQVFUNREADMARKDISPLAY VQViewFolder::GetUnreadMarkDisplay() const {
  return static_cast<VQVFUNREADMARKDISPLAY>(RequireDesign()->Table().Flags & kUnreadMarks);
}
VQSTATUS VQViewFolder::SetUnreadMarkDisplay(VQVFUNREADMARKDISPLAY display) {
  if (!IsOneOf(display, {0, 4, 16})) return Amend(Suits::All, [](auto&) { return VQERR_INVALID_PARAMETER; });
  return SetTableBits(kUnreadMarks, display);
}
int VQViewFolder::GetUseAlternateRowColor() const { return GetTableBit(kUseAlternateColor, Suits::NotCalendar); }
VQSTATUS VQViewFolder::SetUseAlternateRowColor(int flag) {
  return SetTableBit(kUseAlternateColor, flag, Suits::NotCalendar);
}
unsigned long VQViewFolder::GetVersion() const { return GetField<&ViewTableRecord::Version>(Suits::All); }
