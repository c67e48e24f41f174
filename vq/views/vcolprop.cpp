// VQVFColumn: what a column shows, how it looks and how it sorts.
#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "vq/richtext/font.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace {

constexpr unsigned long kEighths = 8;
constexpr unsigned kHeadingSortMask = 0x0B00;
constexpr unsigned kSeparatorMask = 0xF000;
constexpr unsigned kSecondMask = VIEWCOLUMN_SECOND_SORT | VIEWCOLUMN_SECOND_DESCENDING;
constexpr auto kFlags1 = &ViewColumnRecord::Flags1;
constexpr auto kFlags2 = &ViewColumnRecord::Flags2;
constexpr auto kListSeparator = &ViewColumnRecord::ListSeparator;

bool IsOneOf(unsigned value, std::initializer_list<unsigned> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

void Replace(std::uint16_t& word, unsigned mask, unsigned value) {
  word = static_cast<std::uint16_t>((word & ~mask) | value);
}

}  // namespace

template <typename Edit>
VQSTATUS VQVFColumn::Change(Kind kind, Edit edit) {
  VQVFColumnBody* body = nullptr;
  VQSTATUS status = Check(&body, kind);
  if (status == VQ_OK) status = edit(*body);
  if (status == VQ_OK) body->Touch();
  return vq::Apply(status);
}

int VQVFColumn::GetBit(Word word, unsigned mask) const { return (Require()->Record().*word & mask) != 0; }

VQSTATUS VQVFColumn::SetBits(Word word, unsigned mask, unsigned value, Kind kind) {
  return Change(kind, [=](VQVFColumnBody& body) {
    Replace(body.Record().*word, mask, value);
    return VQ_OK;
  });
}

VQSTATUS VQVFColumn::SetBit(Word word, unsigned mask, int flag, Kind kind) {
  return SetBits(word, mask, flag != 0 ? mask : 0, kind);
}

VQString VQVFColumn::GetTitle() const { return Require()->GetTitle(); }
VQSTATUS VQVFColumn::SetTitle(const VQString& title) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    body.SetTitle(title);
    return VQ_OK;
  });
}

unsigned long VQVFColumn::GetExactWidth() const { return Require()->Record().DisplayWidth; }
VQSTATUS VQVFColumn::SetExactWidth(unsigned long width) {
  return Change(Kind::Any, [=](VQVFColumnBody& body) {
    if (width < kEighths || width > 0xFFFF) return VQERR_OUT_OF_RANGE;
    body.Record().DisplayWidth = static_cast<std::uint16_t>(width);
    return VQ_OK;
  });
}
unsigned long VQVFColumn::GetWidthInCharacters() const { return GetExactWidth() / kEighths; }
VQSTATUS VQVFColumn::SetWidthInCharacters(unsigned long characters) {
  return SetExactWidth(characters <= 0xFFFF ? characters * kEighths : characters);
}

VQSTATUS VQVFColumn::GetFont(bool title, VQFontStyle* style) const {
  VQVFColumnBody* body = nullptr;
  VQSTATUS status = Check(&body);
  if (status != VQ_OK) return vq::Apply(status);
  return vq::Apply(body->GetOwner()->GetFont(title ? body->Extension().TitleFont : body->Record().FontID, style));
}
VQSTATUS VQVFColumn::SetFont(bool title, const VQFontStyle& style) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    std::uint32_t id = 0;
    if (VQSTATUS status = body.GetOwner()->RegisterFont(style, &id)) return status;
    (title ? body.Extension().TitleFont : body.Record().FontID) = id;
    return VQ_OK;
  });
}
VQSTATUS VQVFColumn::GetFontStyle(VQFontStyle* style) const { return GetFont(false, style); }
VQSTATUS VQVFColumn::SetFontStyle(const VQFontStyle& style) { return SetFont(false, style); }
VQSTATUS VQVFColumn::GetTitleFontStyle(VQFontStyle* style) const { return GetFont(true, style); }
VQSTATUS VQVFColumn::SetTitleFontStyle(const VQFontStyle& style) { return SetFont(true, style); }

VQNumberFormat VQVFColumn::GetNumberFormat() const { return VQNumberFormat(Require()->Record().NumberFormat); }
VQSTATUS VQVFColumn::SetNumberFormat(const VQNumberFormat& format) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    body.Record().NumberFormat = *format.GetBlock();
    return VQ_OK;
  });
}
VQDatetimeFormat VQVFColumn::GetDatetimeFormat() const { return VQDatetimeFormat(Require()->Record().DatetimeFormat); }
VQSTATUS VQVFColumn::SetDatetimeFormat(const VQDatetimeFormat& format) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    body.Record().DatetimeFormat = *format.GetBlock();
    return VQ_OK;
  });
}

VQVFSEPARATOR VQVFColumn::GetSeparator() const {
  return static_cast<VQVFSEPARATOR>(Require()->Record().ListSeparator & kSeparatorMask);
}
VQSTATUS VQVFColumn::SetSeparator(VQVFSEPARATOR separator) {
  return Change(Kind::Any, [=](VQVFColumnBody& body) {
    if (!IsOneOf(separator, {0, 0x1000, 0x2000, 0x3000, 0x4000})) return VQERR_INVALID_PARAMETER;
    Replace(body.Record().*kListSeparator, kSeparatorMask, separator);
    return VQ_OK;
  });
}

VQVFJUSTIFICATION VQVFColumn::GetJustification() const {
  return static_cast<VQVFJUSTIFICATION>(Require()->Record().Flags2 & VIEWCOLUMN_JUSTIFY_MASK);
}
VQSTATUS VQVFColumn::SetJustification(VQVFJUSTIFICATION justification) {
  return Change(Kind::Any, [=](VQVFColumnBody& body) {
    if (justification > VQVFJUSTIFICATION_CENTER) return VQERR_INVALID_PARAMETER;
    Replace(body.Record().*kFlags2, VIEWCOLUMN_JUSTIFY_MASK, justification);
    return VQ_OK;
  });
}
VQVFJUSTIFICATION VQVFColumn::GetTitleJustification() const {
  const unsigned bits = Require()->Record().Flags2 & VIEWCOLUMN_TITLE_JUSTIFY_MASK;
  return static_cast<VQVFJUSTIFICATION>(bits >> VIEWCOLUMN_TITLE_JUSTIFY_SHIFT);
}
VQSTATUS VQVFColumn::SetTitleJustification(VQVFJUSTIFICATION justification) {
  return Change(Kind::Any, [=](VQVFColumnBody& body) {
    if (justification > VQVFJUSTIFICATION_CENTER) return VQERR_INVALID_PARAMETER;
    Replace(body.Record().*kFlags2, VIEWCOLUMN_TITLE_JUSTIFY_MASK, justification << VIEWCOLUMN_TITLE_JUSTIFY_SHIFT);
    return VQ_OK;
  });
}

VQString VQVFColumn::GetFieldName() const { return Require()->GetFieldName(); }
VQSTATUS VQVFColumn::SetFieldName(const VQString& name) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    if (name.IsNull()) return VQERR_NULL_STRING;
    body.SetFieldName(name);
    body.SetInternalName(name);
    body.Formula() = VQFormula();
    body.Touch(VQVFColumnBody::kRecompile | VQVFColumnBody::kDropConstant);
    body.GetOwner()->SetState(VQViewFolderBody::kRebuildFormula, true);
    return VQ_OK;
  });
}

VQSTATUS VQVFColumn::GetFormula(VQFormula* formula) const {
  VQVFColumnBody* body = nullptr;
  VQSTATUS status = Check(&body);
  if (status == VQ_OK && formula == nullptr) status = VQERR_NULL_POINTER;
  if (status == VQ_OK && !body->HasFormula()) status = VQWARN_NOT_FOUND;
  return vq::Apply(status == VQ_OK ? vq::viewdesign::CopyFormula(body->Formula(), formula) : status);
}
VQSTATUS VQVFColumn::SetFormula(const VQFormula& formula) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    if (!vq::viewdesign::HasCode(formula)) return VQERR_INVALID_PARAMETER;
    if (VQSTATUS status = vq::viewdesign::CopyFormula(formula, &body.Formula())) return status;
    body.SetFieldName(VQString());
    body.Touch(VQVFColumnBody::kRecompile | VQVFColumnBody::kDropConstant | VQVFColumnBody::kGenerateName);
    body.GetOwner()->SetState(VQViewFolderBody::kRebuildFormula, true);
    return VQ_OK;
  });
}

VQString VQVFColumn::GetInternalName() const { return Require()->GetInternalName(); }
VQSTATUS VQVFColumn::SetInternalName(const VQString& name) {
  return Change(Kind::Any, [&](VQVFColumnBody& body) {
    if (!body.GetFieldName().IsNull()) return VQERR_COLUMN_NAME_IS_FIELD;
    body.SetInternalName(name);
    body.Touch(VQVFColumnBody::kRecompile | VQVFColumnBody::kGenerateName);
    // Rows carry the value under this name.
    body.GetOwner()->SetState(VQViewFolderBody::kRebuildFormula, true);
    return VQ_OK;
  });
}

VQVFSORTOPTION VQVFColumn::GetSortOption() const {
  if (GetBit(kFlags1, VIEWCOLUMN_SORTED) == 0) return VQVFSORTOPTION_NONE;
  return GetBit(kFlags1, VIEWCOLUMN_DESCENDING) != 0 ? VQVFSORTOPTION_DESCENDING : VQVFSORTOPTION_ASCENDING;
}
VQSTATUS VQVFColumn::SetSortOption(VQVFSORTOPTION option) {
  return Change(Kind::Any, [=](VQVFColumnBody& body) {
    if (option > VQVFSORTOPTION_DESCENDING) return VQERR_INVALID_PARAMETER;
    const unsigned bits = option == VQVFSORTOPTION_NONE         ? 0
                          : option == VQVFSORTOPTION_DESCENDING ? VIEWCOLUMN_SORTED | VIEWCOLUMN_DESCENDING
                                                                : VIEWCOLUMN_SORTED;
    Replace(body.Record().*kFlags1, VIEWCOLUMN_SORTED | VIEWCOLUMN_DESCENDING, bits);
    return VQ_OK;
  });
}
int VQVFColumn::IsSortCaseInsensitive() const { return GetBit(kFlags1, VIEWCOLUMN_CASE_INSENSITIVE); }
VQSTATUS VQVFColumn::SetIsSortCaseInsensitive(int flag) { return SetBit(kFlags1, VIEWCOLUMN_CASE_INSENSITIVE, flag); }
int VQVFColumn::IsSortAccentInsensitive() const { return GetBit(kFlags1, VIEWCOLUMN_ACCENT_INSENSITIVE); }
VQSTATUS VQVFColumn::SetIsSortAccentInsensitive(int flag) {
  return SetBit(kFlags1, VIEWCOLUMN_ACCENT_INSENSITIVE, flag);
}

VQVFHEADINGSORTOPTION VQVFColumn::GetHeadingSortOption() const {
  return static_cast<VQVFHEADINGSORTOPTION>(Require()->Record().Flags1 & kHeadingSortMask);
}
VQSTATUS VQVFColumn::SetHeadingSortOption(VQVFHEADINGSORTOPTION option) {
  return Change(Kind::NotCalendar, [=](VQVFColumnBody& body) {
    if (!IsOneOf(option, {0, 0x100, 0x200, 0x300, 0x800})) return VQERR_INVALID_PARAMETER;
    Replace(body.Record().*kFlags1, kHeadingSortMask, option);
    return VQ_OK;
  });
}

VQSTATUS VQVFColumn::GetHeadingSortViewFolder(VQViewFolder* view) const {
  VQVFColumnBody* body = nullptr;
  VQSTATUS status = Check(&body);
  if (status == VQ_OK && view == nullptr) status = VQERR_NULL_POINTER;
  if (status != VQ_OK) return vq::Apply(status);
  const UNIVERSALSLATEID target = body->Extension().HeadingSortView;
  const UNIVERSALSLATEID none{};
  VQDatabaseBody* database = body->GetOwner()->GetDatabaseBody();
  const VQViewFolder hold(body->GetOwner());
  if (std::memcmp(&target, &none, sizeof target) == 0) {
    *view = VQViewFolder();
    return VQWARN_NOT_FOUND;
  }
  status = view->BindTo(database, &target);
  return status == VQ_OK ? view->Open() : vq::Apply(status);
}
VQSTATUS VQVFColumn::SetHeadingSortViewFolder(const VQViewFolder& view) {
  return Change(Kind::NotCalendar, [&](VQVFColumnBody& body) {
    if (view.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
    const UNIVERSALSLATEID target = *view.GetUniversalID();
    const ORIGINATORID& own = body.GetOwner()->GetOriginator();
    const UNIVERSALSLATEID self{own.File, own.Slate};
    if (std::memcmp(&target, &self, sizeof target) == 0) return VQERR_HEADING_SORT_CURRENT_VIEW;
    body.Extension().HeadingSortView = target;
    return VQ_OK;
  });
}

unsigned long VQVFColumn::GetSecondarySortColumn() const {
  VQVFColumnBody* body = Require(Kind::NotCalendar);
  return body->HasFlag(VIEWCOLUMN_SECOND_SORT) ? body->Extension().SecondarySortColumn : 0;
}

VQSTATUS VQVFColumn::PointSecondarySort(VQVFColumnBody* body, unsigned long index) {
  const std::uint32_t count = body->GetOwner()->GetColumns().GetCount();
  if (count < 2) return VQERR_NO_SECONDARY_SORT;
  if (index == body->GetNumber()) return VQERR_SECONDARY_SORT_CURRENT;
  if (index >= count) return VQERR_OUT_OF_RANGE;
  body->Extension().SecondarySortColumn = static_cast<std::uint16_t>(index);
  body->Record().Flags1 |= VIEWCOLUMN_SECOND_SORT;
  return VQ_OK;
}
VQSTATUS VQVFColumn::SetSecondarySortColumn(unsigned long index) {
  return Change(Kind::NotCalendar, [=, this](VQVFColumnBody& body) { return PointSecondarySort(&body, index); });
}
VQSTATUS VQVFColumn::SetSecondarySortColumn(const VQString& title) {
  return Change(Kind::NotCalendar, [&, this](VQVFColumnBody& body) {
    std::uint32_t index = 0;
    const VQSTATUS found = body.GetOwner()->GetColumns().Find(title, &index);
    if (found != VQ_OK) return found == VQERR_NOT_FOUND ? VQWARN_NOT_FOUND : found;
    return PointSecondarySort(&body, index);
  });
}

VQVFSORTOPTION VQVFColumn::GetSecondarySortOption() const {
  const VQVFColumnBody* body = Require(Kind::NotCalendar);
  if (!body->HasFlag(VIEWCOLUMN_SECOND_SORT)) return VQVFSORTOPTION_NONE;
  return body->HasFlag(VIEWCOLUMN_SECOND_DESCENDING) ? VQVFSORTOPTION_DESCENDING : VQVFSORTOPTION_ASCENDING;
}
VQSTATUS VQVFColumn::SetSecondarySortOption(VQVFSORTOPTION option) {
  return Change(Kind::NotCalendar, [=, this](VQVFColumnBody& body) {
    if (option > VQVFSORTOPTION_DESCENDING) return VQERR_INVALID_PARAMETER;
    if (option == VQVFSORTOPTION_NONE) {
      Replace(body.Record().*kFlags1, kSecondMask, 0);
      return VQ_OK;
    }
    if (!body.HasFlag(VIEWCOLUMN_SECOND_SORT)) {
      if (VQSTATUS status = PointSecondarySort(&body, body.GetNumber() == 0 ? 1 : 0)) return status;
    }
    const bool descending = option == VQVFSORTOPTION_DESCENDING;
    Replace(body.Record().*kFlags1, VIEWCOLUMN_SECOND_DESCENDING, descending ? VIEWCOLUMN_SECOND_DESCENDING : 0);
    return VQ_OK;
  });
}

VQVFTOTALSOPTION VQVFColumn::GetTotalsOption() const {
  return static_cast<VQVFTOTALSOPTION>(Require()->Record().Flags2 & VIEWCOLUMN_TOTAL_MASK);
}
VQSTATUS VQVFColumn::SetTotalsOption(VQVFTOTALSOPTION option) {
  return Change(Kind::NotCalendar, [=](VQVFColumnBody& body) {
    if (!IsOneOf(option, {0, 4, 8, 12, 16, 20})) return VQERR_INVALID_PARAMETER;
    Replace(body.Record().*kFlags2, VIEWCOLUMN_TOTAL_MASK, option);
    body.Touch(VQVFColumnBody::kDropConstant);
    // Without its constant value the column takes part in the selection's rows.
    if (!body.ConstantValue().empty()) body.GetOwner()->SetState(VQViewFolderBody::kRebuildFormula, true);
    return VQ_OK;
  });
}

int VQVFColumn::GetHideDetailRows() const { return GetBit(kFlags1, VIEWCOLUMN_HIDE_DETAIL); }
VQSTATUS VQVFColumn::SetHideDetailRows(int flag) {
  return SetBit(kFlags1, VIEWCOLUMN_HIDE_DETAIL, flag, Kind::NotCalendar);
}
int VQVFColumn::IsCategorized() const { return GetBit(kFlags1, VIEWCOLUMN_CATEGORIZED); }
VQSTATUS VQVFColumn::SetIsCategorized(int flag) {
  return Change(Kind::NotCalendar, [=](VQVFColumnBody& body) {
    Replace(body.Record().*kFlags1, VIEWCOLUMN_CATEGORIZED, flag != 0 ? VIEWCOLUMN_CATEGORIZED : 0);
    if (flag != 0) body.Record().Flags2 |= VIEWCOLUMN_SEPARATE_VALUES;
    return VQ_OK;
  });
}
int VQVFColumn::GetSeparateMultipleValues() const {
  return GetBit(kFlags2, VIEWCOLUMN_SEPARATE_VALUES) != 0 || IsCategorized() != 0;
}
VQSTATUS VQVFColumn::SetSeparateMultipleValues(int flag) { return SetBit(kFlags2, VIEWCOLUMN_SEPARATE_VALUES, flag); }
int VQVFColumn::GetShowResponsesOnly() const { return GetBit(kFlags1, VIEWCOLUMN_RESPONSES_ONLY); }
VQSTATUS VQVFColumn::SetShowResponsesOnly(int flag) {
  return Change(Kind::NotCalendar, [=](VQVFColumnBody& body) {
    Replace(body.Record().*kFlags1, VIEWCOLUMN_RESPONSES_ONLY, flag != 0 ? VIEWCOLUMN_RESPONSES_ONLY : 0);
    body.GetOwner()->SetState(VQViewFolderBody::kResponsesColumnKnown, false);
    return VQ_OK;
  });
}
int VQVFColumn::GetShowTwistie() const { return GetBit(kFlags1, VIEWCOLUMN_TWISTIE); }
VQSTATUS VQVFColumn::SetShowTwistie(int flag) { return SetBit(kFlags1, VIEWCOLUMN_TWISTIE, flag, Kind::NotCalendar); }
int VQVFColumn::IsHidden() const { return GetBit(kFlags1, VIEWCOLUMN_HIDDEN); }
VQSTATUS VQVFColumn::SetIsHidden(int flag) { return SetBit(kFlags1, VIEWCOLUMN_HIDDEN, flag); }
int VQVFColumn::IsResizable() const { return GetBit(kFlags1, VIEWCOLUMN_FIXED_WIDTH) == 0; }
VQSTATUS VQVFColumn::SetIsResizable(int flag) {
  return SetBit(kFlags1, VIEWCOLUMN_FIXED_WIDTH, flag == 0, Kind::NotCalendar);
}
int VQVFColumn::GetDisplayValuesAsIcons() const { return GetBit(kFlags1, VIEWCOLUMN_ICONS); }
VQSTATUS VQVFColumn::SetDisplayValuesAsIcons(int flag) { return SetBit(kFlags1, VIEWCOLUMN_ICONS, flag); }
int VQVFColumn::GetShowValuesAsLinks() const { return GetBit(kFlags2, VIEWCOLUMN_LINKS); }
VQSTATUS VQVFColumn::SetShowValuesAsLinks(int flag) { return SetBit(kFlags2, VIEWCOLUMN_LINKS, flag); }
