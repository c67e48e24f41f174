#include "qcore/records/layouts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <iterator>
#include <utility>

#include "engine/records.h"

namespace qcore::records {

namespace {

static_assert(std::endian::native == std::endian::little, "runs of bytes are copied as they are stored");

struct Field {
  std::size_t offset;
  std::size_t length;
};

template <std::size_t N>
struct Runs {
  std::array<Run, N> run{};
  std::size_t count = 0;
  std::uint16_t stored = 0;
};

template <std::size_t N>
consteval Runs<N> Join(const std::array<Field, N>& fields) {
  Runs<N> result;
  for (const Field& field : fields) {
    Run* last = result.count == 0 ? nullptr : &result.run[result.count - 1];
    if (last && last->host + last->length == field.offset) {
      last->length = static_cast<std::uint16_t>(last->length + field.length);
    } else {
      result.run[result.count++] = {static_cast<std::uint16_t>(field.offset), result.stored,
                                    static_cast<std::uint16_t>(field.length)};
    }
    result.stored = static_cast<std::uint16_t>(result.stored + field.length);
  }
  return result;
}

#define FIELD(structure, member) \
  Field { offsetof(structure, member), sizeof(std::declval<structure&>().member) }
#define HEADER(structure) FIELD(structure, Header.Signature), FIELD(structure, Header.Length)

// `length` is the number that the format gives, against which the fields are checked.
#define STORED(structure, size, ...)                                       \
  constexpr auto k##structure = Join(std::to_array<Field>({__VA_ARGS__})); \
  static_assert(k##structure.stored == (size), #structure " has lost a byte")

STORED(LIST, 2, FIELD(LIST, ListEntries));
STORED(RANGE, 4, FIELD(RANGE, ListCount), FIELD(RANGE, RangeCount));
STORED(TIMEDATE, 8, FIELD(TIMEDATE, TimeWord), FIELD(TIMEDATE, DateWord));
STORED(IDTABLEHEADER, 16, FIELD(IDTABLEHEADER, Step), FIELD(IDTABLEHEADER, RunCount), FIELD(IDTABLEHEADER, Flags),
       FIELD(IDTABLEHEADER, Count), FIELD(IDTABLEHEADER, Capacity));
STORED(CDPARAGRAPH, 2, HEADER(CDPARAGRAPH));
STORED(CDPABDEFINITION, 70, HEADER(CDPABDEFINITION), FIELD(CDPABDEFINITION, PABID), FIELD(CDPABDEFINITION, JustifyMode),
       FIELD(CDPABDEFINITION, LineSpacing), FIELD(CDPABDEFINITION, SpacingAbove), FIELD(CDPABDEFINITION, SpacingBelow),
       FIELD(CDPABDEFINITION, LeftMargin), FIELD(CDPABDEFINITION, RightMargin), FIELD(CDPABDEFINITION, FirstLineMargin),
       FIELD(CDPABDEFINITION, TabCount), FIELD(CDPABDEFINITION, Tabs), FIELD(CDPABDEFINITION, Flags),
       FIELD(CDPABDEFINITION, TabTypes), FIELD(CDPABDEFINITION, Flags2));
STORED(CDPABREFERENCE, 4, HEADER(CDPABREFERENCE), FIELD(CDPABREFERENCE, PABID));
STORED(CDPABFORMULAREF, 6, HEADER(CDPABFORMULAREF), FIELD(CDPABFORMULAREF, SourcePABID),
       FIELD(CDPABFORMULAREF, DestPABID));
STORED(CDPABHIDE, 14, HEADER(CDPABHIDE), FIELD(CDPABHIDE, PABID), FIELD(CDPABHIDE, Reserved));
STORED(CDTEXT, 8, HEADER(CDTEXT), FIELD(CDTEXT, FontID));
STORED(CDTEXTSTYLEEXT, 8, HEADER(CDTEXTSTYLEEXT), FIELD(CDTEXTSTYLEEXT, FontID));
STORED(CDSTYLENAME, 44, HEADER(CDSTYLENAME), FIELD(CDSTYLENAME, Flags), FIELD(CDSTYLENAME, PABID),
       FIELD(CDSTYLENAME, StyleName));
STORED(CDFONTTABLE, 6, HEADER(CDFONTTABLE), FIELD(CDFONTTABLE, Fonts));
STORED(CDFACE, 34, FIELD(CDFACE, Face), FIELD(CDFACE, Family), FIELD(CDFACE, Name));
STORED(CDTABLEBEGIN, 14, HEADER(CDTABLEBEGIN), FIELD(CDTABLEBEGIN, LeftMargin), FIELD(CDTABLEBEGIN, HorizCellSpace),
       FIELD(CDTABLEBEGIN, VertCellSpace), FIELD(CDTABLEBEGIN, V4HorizCellSpace), FIELD(CDTABLEBEGIN, V4VertCellSpace),
       FIELD(CDTABLEBEGIN, Flags));
STORED(CDTABLECELL, 18, HEADER(CDTABLECELL), FIELD(CDTABLECELL, Row), FIELD(CDTABLECELL, Column),
       FIELD(CDTABLECELL, LeftMargin), FIELD(CDTABLECELL, RightMargin), FIELD(CDTABLECELL, FractionalWidth),
       FIELD(CDTABLECELL, Border), FIELD(CDTABLECELL, Flags), FIELD(CDTABLECELL, BorderWidth),
       FIELD(CDTABLECELL, RowSpan), FIELD(CDTABLECELL, ColumnSpan), FIELD(CDTABLECELL, BackgroundColor));
STORED(CDTABLEEND, 6, HEADER(CDTABLEEND), FIELD(CDTABLEEND, Reserved));
STORED(CDHOTSPOTBEGIN, 12, HEADER(CDHOTSPOTBEGIN), FIELD(CDHOTSPOTBEGIN, Type), FIELD(CDHOTSPOTBEGIN, Flags),
       FIELD(CDHOTSPOTBEGIN, DataLength));
STORED(CDHOTSPOTEND, 2, HEADER(CDHOTSPOTEND));
STORED(CDACTIVEOBJECT, 6, FIELD(CDACTIVEOBJECT, Version), FIELD(CDACTIVEOBJECT, Type), FIELD(CDACTIVEOBJECT, Reserved));
STORED(ViewTableRecord, 10, FIELD(ViewTableRecord, Version), FIELD(ViewTableRecord, Style),
       FIELD(ViewTableRecord, Columns), FIELD(ViewTableRecord, ItemSequenceNumber), FIELD(ViewTableRecord, Flags),
       FIELD(ViewTableRecord, Spare));
STORED(ViewColumnRecord, 32, FIELD(ViewColumnRecord, Signature), FIELD(ViewColumnRecord, Flags1),
       FIELD(ViewColumnRecord, ItemNameSize), FIELD(ViewColumnRecord, TitleSize), FIELD(ViewColumnRecord, FormulaSize),
       FIELD(ViewColumnRecord, ConstantValueSize), FIELD(ViewColumnRecord, DisplayWidth),
       FIELD(ViewColumnRecord, FontID), FIELD(ViewColumnRecord, Flags2), FIELD(ViewColumnRecord, NumberFormat),
       FIELD(ViewColumnRecord, DatetimeFormat), FIELD(ViewColumnRecord, DataType),
       FIELD(ViewColumnRecord, ListSeparator));
STORED(ViewTableExtension, 38, FIELD(ViewTableExtension, Length), FIELD(ViewTableExtension, LegacyBackground),
       FIELD(ViewTableExtension, Spare1), FIELD(ViewTableExtension, BorderFont), FIELD(ViewTableExtension, UnreadFont),
       FIELD(ViewTableExtension, TotalsFont), FIELD(ViewTableExtension, Spare2),
       FIELD(ViewTableExtension, AlternateRowColor), FIELD(ViewTableExtension, Signature),
       FIELD(ViewTableExtension, LinesPerRow), FIELD(ViewTableExtension, RowSpacing),
       FIELD(ViewTableExtension, BackgroundColor), FIELD(ViewTableExtension, LinesPerHeading),
       FIELD(ViewTableExtension, WebFlags), FIELD(ViewTableExtension, Spare3));
STORED(ViewColumnExtension, 46, FIELD(ViewColumnExtension, Signature), FIELD(ViewColumnExtension, TitleFont),
       FIELD(ViewColumnExtension, HeadingSortView), FIELD(ViewColumnExtension, SecondarySortColumn),
       FIELD(ViewColumnExtension, Spare1), FIELD(ViewColumnExtension, Spare2));
STORED(ViewCalendarRecord, 58, FIELD(ViewCalendarRecord, Version), FIELD(ViewCalendarRecord, Spare1),
       FIELD(ViewCalendarRecord, DateFont), FIELD(ViewCalendarRecord, TimeSlotFont),
       FIELD(ViewCalendarRecord, HeaderFont), FIELD(ViewCalendarRecord, DaySeparatorColor),
       FIELD(ViewCalendarRecord, TodayColor), FIELD(ViewCalendarRecord, Flags), FIELD(ViewCalendarRecord, BusyRowColor),
       FIELD(ViewCalendarRecord, TimeSlotStart), FIELD(ViewCalendarRecord, TimeSlotEnd),
       FIELD(ViewCalendarRecord, TimeSlotDuration), FIELD(ViewCalendarRecord, Spare2),
       FIELD(ViewCalendarRecord, Spare3));
STORED(FILEOBJECT, 36, FIELD(FILEOBJECT, Header.ObjectType), FIELD(FILEOBJECT, Header.ObjectID),
       FIELD(FILEOBJECT, FileNameLength), FIELD(FILEOBJECT, HostType), FIELD(FILEOBJECT, CompressionType),
       FIELD(FILEOBJECT, FileAttributes), FIELD(FILEOBJECT, Flags), FIELD(FILEOBJECT, FileSize),
       FIELD(FILEOBJECT, FileCreated), FIELD(FILEOBJECT, FileModified));
STORED(CollationHeader, 6, FIELD(CollationHeader, BufferSize), FIELD(CollationHeader, Items),
       FIELD(CollationHeader, Flags), FIELD(CollationHeader, Signature));
STORED(CollationDescriptor, 7, FIELD(CollationDescriptor, Flags), FIELD(CollationDescriptor, Signature),
       FIELD(CollationDescriptor, KeyType), FIELD(CollationDescriptor, NameOffset),
       FIELD(CollationDescriptor, NameLength));
STORED(FormInfoRecord, 24, HEADER(FormInfoRecord), FIELD(FormInfoRecord, LegacyBackground),
       FIELD(FormInfoRecord, Flags), FIELD(FormInfoRecord, Spare1), FIELD(FormInfoRecord, Flags2),
       FIELD(FormInfoRecord, InheritFieldNameLength), FIELD(FormInfoRecord, BackgroundColor),
       FIELD(FormInfoRecord, Spare2));
STORED(FormAutoLaunchRecord, 50, HEADER(FormAutoLaunchRecord), FIELD(FormAutoLaunchRecord, ObjectType),
       FIELD(FormAutoLaunchRecord, HideWhenFlags), FIELD(FormAutoLaunchRecord, LaunchWhenFlags),
       FIELD(FormAutoLaunchRecord, OleFlags), FIELD(FormAutoLaunchRecord, CopyToFieldFlags),
       FIELD(FormAutoLaunchRecord, Spare1), FIELD(FormAutoLaunchRecord, Spare2),
       FIELD(FormAutoLaunchRecord, FieldNameLength), FIELD(FormAutoLaunchRecord, Spare3),
       FIELD(FormAutoLaunchRecord, Spare4), FIELD(FormAutoLaunchRecord, Spare5), FIELD(FormAutoLaunchRecord, Spare6));
STORED(FieldRecord, 36, HEADER(FieldRecord), FIELD(FieldRecord, Flags), FIELD(FieldRecord, DataType),
       FIELD(FieldRecord, ListDelimiters), FIELD(FieldRecord, NumberFormat), FIELD(FieldRecord, TimeFormat),
       FIELD(FieldRecord, FontID), FIELD(FieldRecord, DefaultValueLength), FIELD(FieldRecord, InputTranslationLength),
       FIELD(FieldRecord, TabOrder), FIELD(FieldRecord, InputValidationLength), FIELD(FieldRecord, NameLength),
       FIELD(FieldRecord, DescriptionLength), FIELD(FieldRecord, TextValueLength));
STORED(FieldExtensionRecord, 32, HEADER(FieldExtensionRecord), FIELD(FieldExtensionRecord, Flags1),
       FIELD(FieldExtensionRecord, Flags2), FIELD(FieldExtensionRecord, Kept),
       FIELD(FieldExtensionRecord, ChoicesViewColumnNumber), FIELD(FieldExtensionRecord, HTMLAttributesLength),
       FIELD(FieldExtensionRecord, ChoicesDatabaseLength), FIELD(FieldExtensionRecord, ChoicesViewLength),
       FIELD(FieldExtensionRecord, ChoicesFormulaLength), FIELD(FieldExtensionRecord, FieldLength),
       FIELD(FieldExtensionRecord, Spare));

constexpr Run kWordRun[] = {{0, 0, 2}};
constexpr Run kDwordRun[] = {{0, 0, 4}};

#define LAYOUT_OF(code, structure) \
  Layout { code, k##structure.stored, sizeof(structure), std::span(k##structure.run).first(k##structure.count) }
#define LAYOUT(structure) LAYOUT_OF(ODS_##structure, structure)

constexpr Layout kLayouts[] = {
    Layout{ODS_WORD, 2, 2, kWordRun},
    Layout{ODS_DWORD, 4, 4, kDwordRun},
    LAYOUT(TIMEDATE),
    LAYOUT(LIST),
    LAYOUT(RANGE),
    LAYOUT_OF(ODS_VIEWTABLE, ViewTableRecord),
    LAYOUT_OF(ODS_VIEWCOLUMN, ViewColumnRecord),
    LAYOUT(IDTABLEHEADER),
    LAYOUT_OF(ODS_VIEWTABLEEXTENSION, ViewTableExtension),
    LAYOUT(FILEOBJECT),
    LAYOUT_OF(ODS_COLLATION, CollationHeader),
    LAYOUT_OF(ODS_COLLATIONDESCRIPTOR, CollationDescriptor),
    LAYOUT(CDPARAGRAPH),
    LAYOUT(CDPABDEFINITION),
    LAYOUT(CDPABREFERENCE),
    LAYOUT(CDTEXT),
    LAYOUT_OF(ODS_FORMINFO, FormInfoRecord),
    LAYOUT_OF(ODS_FIELD, FieldRecord),
    LAYOUT(CDFONTTABLE),
    LAYOUT(CDFACE),
    LAYOUT(CDTABLEBEGIN),
    LAYOUT(CDTABLECELL),
    LAYOUT(CDTABLEEND),
    LAYOUT(CDSTYLENAME),
    LAYOUT(CDHOTSPOTBEGIN),
    LAYOUT(CDHOTSPOTEND),
    LAYOUT_OF(ODS_FIELDEXTENSION, FieldExtensionRecord),
    LAYOUT_OF(ODS_FORMAUTOLAUNCH, FormAutoLaunchRecord),
    LAYOUT(CDPABHIDE),
    LAYOUT(CDPABFORMULAREF),
    LAYOUT_OF(ODS_VIEWCOLUMNEXTENSION, ViewColumnExtension),
    LAYOUT(CDTEXTSTYLEEXT),
    LAYOUT_OF(ODS_VIEWCALENDAR, ViewCalendarRecord),
    LAYOUT(CDACTIVEOBJECT),
};
static_assert(std::ranges::is_sorted(kLayouts, std::ranges::less{}, &Layout::code));

// Each code's place among the layouts, from 1 on; every record that is read or written asks for one.
constexpr auto kPlaces = [] {
  static_assert(std::size(kLayouts) < 0x100);
  std::array<std::uint8_t, std::end(kLayouts)[-1].code + 1> places = {};
  for (std::size_t i = 0; i < std::size(kLayouts); ++i) places[kLayouts[i].code] = static_cast<std::uint8_t>(i + 1);
  return places;
}();

}  // namespace

const Layout* Find(std::uint16_t code) {
  const std::size_t place = code < kPlaces.size() ? kPlaces[code] : 0;
  return place > 0 ? &kLayouts[place - 1] : nullptr;
}

std::span<const Layout> All() { return kLayouts; }

void Read(const Layout& layout, const std::byte* stored, void* host, std::uint16_t count) {
  auto* target = static_cast<std::byte*>(host);
  for (; count > 0; --count) {
    for (const Run& run : layout.runs) std::memcpy(target + run.host, stored + run.stored, run.length);
    stored += layout.length;
    target += layout.host_size;
  }
}

void Write(const Layout& layout, const void* host, std::byte* stored, std::uint16_t count) {
  const auto* source = static_cast<const std::byte*>(host);
  for (; count > 0; --count) {
    for (const Run& run : layout.runs) std::memcpy(stored + run.stored, source + run.host, run.length);
    stored += layout.length;
    source += layout.host_size;
  }
}

}  // namespace qcore::records
