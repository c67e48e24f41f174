// Every property of a view and of its columns, against the bytes that it owns in the stored design.
#include <functional>

#include "tests/vq/support/property_rows.h"
#include "tests/vq/support/views_fixture.h"
#include "vq/richtext/font.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqnumber.h"

namespace {

using vqtest::Bytes;
using vqtest::ColumnBytes;
using vqtest::Each;
using vqtest::Of;
using vqtest::OffOn;
using vqtest::OnOff;
using vqtest::PropertyRow;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::StoredItem;
using vqtest::TextOf;
using vqtest::With;
using vqtest::Word;
using View = VQViewFolder;
using Column = VQVFColumn;

constexpr VQSTATUS kInvalid = VQERR_INVALID_PARAMETER;
constexpr VQSTATUS kRange = VQERR_OUT_OF_RANGE;

// A format of two columns: what stands where.
constexpr std::size_t kTableFlags = 6;
constexpr std::size_t kFirstColumn = 10;
constexpr std::size_t kData = 6;  // of both columns
constexpr std::size_t kExtension = kFirstColumn + 2 * 32 + kData;
constexpr std::size_t kColumnExtension = kExtension + 38;

std::string Format() { return vqtest::FormatBytes({ColumnBytes("A", "a1"), ColumnBytes("B", "b2")}); }
// All bits of the table's flags the same.
std::string FormatOf(bool high) {
  std::string format = Format();
  format.replace(kTableFlags, 2, Word(high ? 0xFFFF : 0));
  format[kExtension + 29] = static_cast<char>(high ? 0xFF : 0);
  return format;
}
// The defaults of a calendar, with all bits of its flags the same.
std::string CalendarOf(bool high) {
  return Bytes({1, 0xFF, 1, 0, 0, 8, 1, 0, 0, 8, 1, 1, 0, 10}) + Word(0) + Word(2) + Word(high ? 0xFFFF : 0) + Word(1) +
         Word(480) + Word(1080) + Word(60) + std::string(30, '\0');
}
StoredItem Letters(const std::string& letters) { return {"$Flags", 0x501, Word(1) + Word(letters.size()) + letters}; }

using Rows = std::vector<PropertyRow<View>>;

Rows AnyViewRows() {
  return {
      {"CollapseOnOpen", Of<&View::GetCollapseOnOpen, &View::SetCollapseOnOpen>(), 6, 0x01, OnOff(0x01), {}},
      {"ShowResponseHierarchy",
       Of<&View::GetShowResponseHierarchy, &View::SetShowResponseHierarchy>(),
       6,
       0x02,
       OffOn(0x02),
       {}},
      {"UnreadMarkDisplay",
       Of<&View::GetUnreadMarkDisplay, &View::SetUnreadMarkDisplay>(),
       6,
       0x14,
       Each({0, 4, 16}),
       {{20, kInvalid}, {1, kInvalid}, {0x10004, kInvalid}}},
      {"ShowReplicationConflicts",
       Of<&View::GetShowReplicationConflicts, &View::SetShowReplicationConflicts>(),
       6,
       0x08,
       OnOff(0x08),
       {}},
      {"OpenPosition",
       Of<&View::GetOpenPosition, &View::SetOpenPosition>(),
       6,
       0x60,
       Each({0, 32, 64}),
       {{96, kInvalid}, {1, kInvalid}}},
      {"ShowSelectionMargin",
       Of<&View::GetShowSelectionMargin, &View::SetShowSelectionMargin>(),
       6,
       0x200,
       OffOn(0x200),
       {}},
      {"ShrinkRows", Of<&View::GetShrinkRows, &View::SetShrinkRows>(), 6, 0x800, OnOff(0x800), {}},
      {"RefreshOption",
       Of<&View::GetRefreshOption, &View::SetRefreshOption>(),
       6,
       0x3000,
       Each({0, 0x1000, 0x2000, 0x3000}),
       {{0x4000, kInvalid}, {1, kInvalid}, {0x11000, kInvalid}}},
      {"ExtendLastColumn", Of<&View::GetExtendLastColumn, &View::SetExtendLastColumn>(), 6, 0x4000, OnOff(0x4000), {}},
      {"LinesPerRow",
       Of<&View::GetLinesPerRow, &View::SetLinesPerRow>(),
       kExtension + 24,
       0xFF,
       Each({1, 9}),
       {{0, kRange}, {10, kRange}, {257, kRange}}},
      {"RowSpacing",
       Of<&View::GetRowSpacing, &View::SetRowSpacing>(),
       kExtension + 25,
       0xFF,
       Each({0, 3, 4}),
       {{5, kRange}, {256, kRange}}},
      {"TreatContentsAsHTML",
       Of<&View::GetTreatContentsAsHTML, &View::SetTreatContentsAsHTML>(),
       kExtension + 29,
       0x02,
       OnOff(0x02),
       {}},
  };
}

Rows TableViewRows() {
  return {
      {"UseAlternateRowColor",
       Of<&View::GetUseAlternateRowColor, &View::SetUseAlternateRowColor>(),
       6,
       0x80,
       OnOff(0x80),
       {}},
      {"HeadingDisplay",
       Of<&View::GetHeadingDisplay, &View::SetHeadingDisplay>(),
       6,
       0x500,
       {{0, 0x100}, {1, 0x400}, {2, 0}},
       {{3, kInvalid}}},
      {"AlternateRowColor",
       Of<&View::GetAlternateRowColor, &View::SetAlternateRowColor>(),
       kExtension + 20,
       0xFFFF,
       Each({0, 239}),
       {{240, kInvalid}, {65535, kInvalid}}},
      {"LinesPerHeading",
       Of<&View::GetLinesPerHeading, &View::SetLinesPerHeading>(),
       kExtension + 28,
       0xFF,
       Each({1, 5}),
       {{0, kRange}, {6, kRange}, {258, kRange}}},
  };
}

Rows CalendarRows() {
  return {
      {"DaySeparatorColor",
       Of<&View::GetDaySeparatorColor, &View::SetDaySeparatorColor>(),
       14,
       0xFFFF,
       Each({0, 239}),
       {{240, kInvalid}}},
      {"TodayColor", Of<&View::GetTodayColor, &View::SetTodayColor>(), 16, 0xFFFF, Each({0, 239}), {{240, kInvalid}}},
      {"ShowCalendarConflicts",
       Of<&View::GetShowCalendarConflicts, &View::SetShowCalendarConflicts>(),
       18,
       0x01,
       OnOff(0x01),
       {}},
      {"TimeSlotDisplay",
       Of<&View::GetTimeSlotDisplay, &View::SetTimeSlotDisplay>(),
       18,
       0x06,
       {{0, 0}, {1, 2}, {2, 6}},
       {{3, kInvalid}}},
      {"BusyRowColor",
       Of<&View::GetBusyRowColor, &View::SetBusyRowColor>(),
       20,
       0xFFFF,
       Each({0, 239}),
       {{240, kInvalid}}},
      {"TimeSlotStartHour",
       Of<&View::GetTimeSlotStartHour, &View::SetTimeSlotStartHour>(),
       22,
       0xFFFF,
       {{0, 0}, {17, 1020}},
       {{18, VQERR_TIME_SLOTS_OVERLAP}, {23, VQERR_TIME_SLOTS_OVERLAP}, {24, kRange}, {0x10000, kRange}}},
      {"TimeSlotEndHour",
       Of<&View::GetTimeSlotEndHour, &View::SetTimeSlotEndHour>(),
       24,
       0xFFFF,
       {{9, 540}, {23, 1380}},
       {{8, VQERR_TIME_SLOTS_OVERLAP}, {0, VQERR_TIME_SLOTS_OVERLAP}, {24, kRange}}},
      {"TimeSlotDuration",
       Of<&View::GetTimeSlotDuration, &View::SetTimeSlotDuration>(),
       26,
       0xFFFF,
       Each({15, 30, 60, 120}),
       {{45, kInvalid}, {0, kInvalid}, {0x1000F, kInvalid}}},
  };
}

class ViewProperty : public vqtest::ViewsFixture {
 protected:
  void SetUp() override {
    ViewsFixture::SetUp();
    ASSERT_EQ(Session->GetDatabase(Db.GetFilepath(), &Other), VQ_OK);
    ASSERT_EQ(Other.Open(), VQ_OK);
  }
  void TearDown() override {
    Other = VQDatabase();
    ViewsFixture::TearDown();
  }
  // As another handle of the file reads it.
  VQViewFolder Elsewhere(const VQViewFolder& view) {
    VQViewFolder again;
    EXPECT_EQ(Other.GetViewFolder(view.GetSlateID(), &again), VQ_OK);
    EXPECT_EQ(again.Open(VQVFOPENFLAGS_DESIGN_ONLY), VQ_OK);
    return again;
  }
  VQViewFolder Table(const std::string& format = Format()) {
    return Stored({{"$ViewFormat", 5, format}, Letters("K")});
  }
  VQViewFolder Calendar(bool high = false) {
    VQViewFolder view = Stored({{"$ViewFormat", 5, Format()}, Letters("cK")});
    view.GetViewFolderBody()->Calendar().Flags = high ? 0xFFFF : 0;
    return view;
  }

  void CheckValues(const PropertyRow<View>& row, bool high) {
    for (const auto& [value, bits] : row.Values) {
      SCOPED_TRACE(value);
      VQViewFolder view = Table(FormatOf(high));
      ASSERT_EQ(row.Access.Set(view, value), VQ_OK);
      ASSERT_EQ(view.Save(), VQ_OK);
      EXPECT_EQ(StoredValue(view, "$ViewFormat"), With(FormatOf(high), {row.At, row.Mask, bits}));
      EXPECT_EQ(StoredText(view, "$Flags"), "K");
      EXPECT_EQ(row.Access.Get(Elsewhere(view)), value);
    }
  }
  void CheckCalendarValues(const PropertyRow<View>& row, bool high) {
    for (const auto& [value, bits] : row.Values) {
      SCOPED_TRACE(value);
      VQViewFolder view = Calendar(high);
      ASSERT_EQ(row.Access.Set(view, value), VQ_OK);
      EXPECT_EQ(row.Access.Get(view), value);
      ASSERT_EQ(view.Save(), VQ_OK);
      EXPECT_EQ(StoredValue(view, "$CalendarFormat"), With(CalendarOf(high), {row.At, row.Mask, bits}));
      EXPECT_EQ(StoredValue(view, "$ViewFormat"), Format());
    }
  }
  static void CheckRefused(const PropertyRow<View>& row, VQViewFolder view) {
    const unsigned long before = row.Access.Get(view);
    for (const auto& [value, status] : row.Refused) {
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(view, value); }), status) << value;
      EXPECT_EQ(row.Access.Get(view), before) << value;
      EXPECT_EQ(view.IsModified(), 0) << value;
    }
  }
  // A view that the property does not suit, or that is closed.
  static void CheckUnfit(const PropertyRow<View>& row, VQViewFolder view, VQSTATUS status) {
    const int modified = view.IsOpen() != 0 ? view.IsModified() : 0;
    for (const int throws : {0, 1}) {
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(StatusOf([&] { return row.Access.Get(view); }), status);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(view, row.Values[0].first); }), status);
      VQSetThrowAllErrors(0);
    }
    if (view.IsOpen() != 0) {
      EXPECT_EQ(view.IsModified(), modified);
    }
  }

  VQDatabase Other;
};

TEST_F(ViewProperty, OwnsItsBitsOfTheFormat) {
  VQViewFolder closed = Table();
  ASSERT_EQ(closed.Close(), VQ_OK);
  for (const Rows& rows : {AnyViewRows(), TableViewRows()}) {
    for (const PropertyRow<View>& row : rows) {
      SCOPED_TRACE(row.Name);
      for (const bool high : {false, true}) CheckValues(row, high);
      CheckRefused(row, Table());
      CheckUnfit(row, closed, VQERR_VIEW_NOT_OPEN);
    }
  }
  for (const PropertyRow<View>& row : AnyViewRows()) {
    SCOPED_TRACE(row.Name);
    VQViewFolder calendar = Calendar();
    ASSERT_EQ(row.Access.Set(calendar, row.Values[0].first), VQ_OK);
    EXPECT_EQ(row.Access.Get(calendar), row.Values[0].first);
  }
}

TEST_F(ViewProperty, OwnsItsBitsOfTheCalendar) {
  for (const PropertyRow<View>& row : CalendarRows()) {
    SCOPED_TRACE(row.Name);
    for (const bool high : {false, true}) CheckCalendarValues(row, high);
    CheckRefused(row, Calendar());
    CheckUnfit(row, Table(), VQERR_CALENDAR_ONLY);
  }
  for (const PropertyRow<View>& row : TableViewRows()) {
    SCOPED_TRACE(row.Name);
    CheckUnfit(row, Calendar(), VQERR_NOT_FOR_CALENDAR);
  }
}

TEST_F(ViewProperty, ABackgroundHasAnOlderNumberToo) {
  const auto background = Of<&View::GetBackgroundColor, &View::SetBackgroundColor>();
  VQViewFolder view = Table();
  EXPECT_EQ(background.Set(view, 240), kInvalid);
  EXPECT_EQ(view.IsModified(), 0);
  ASSERT_EQ(background.Set(view, 35), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  const std::string stored = With(With(Format(), {kExtension + 26, 0xFFFF, 35}), {kExtension + 2, 0xFFFF, 3});
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), stored);
  EXPECT_EQ(background.Get(Elsewhere(view)), 35U);
  EXPECT_EQ(view.GetVersion(), 1U);
}

struct FontRow {
  const char* name;
  VQSTATUS (VQViewFolder::*get)(VQFontStyle*) const;
  VQSTATUS (VQViewFolder::*set)(const VQFontStyle&);
  std::size_t at;
  unsigned long normal;
  bool calendar;
  bool table;
};

constexpr FontRow kFonts[] = {
    {"border", &View::GetBorderFontStyle, &View::SetBorderFontStyle, kExtension + 6, 0x08000101, false, false},
    {"unread", &View::GetUnreadFontStyle, &View::SetUnreadFontStyle, kExtension + 10, 0x0A000001, false, false},
    {"totals", &View::GetTotalsFontStyle, &View::SetTotalsFontStyle, kExtension + 14, 0x0A0E0101, false, true},
    {"date", &View::GetDateFontStyle, &View::SetDateFontStyle, 2, 0x08000001, true, false},
    {"slot", &View::GetTimeSlotFontStyle, &View::SetTimeSlotFontStyle, 6, 0x08000001, true, false},
    {"header", &View::GetCalendarHeaderFontStyle, &View::SetCalendarHeaderFontStyle, 10, 0x0A000101, true, false},
};

TEST_F(ViewProperty, FontsAreStoredAndKeepTheirFaces) {
  constexpr std::uint32_t kPlain = 0x0C050302;
  const VQFontStyle plain(kPlain, static_cast<const VQFontTable*>(nullptr));
  const VQFontStyle own(0x10, 2, Store("Fancy Face"), 1, 0);
  for (const FontRow& row : kFonts) {
    SCOPED_TRACE(row.name);
    VQViewFolder view = row.calendar ? Calendar() : Table();
    const std::string item = row.calendar ? "$CalendarFormat" : "$ViewFormat";
    const std::string before = row.calendar ? CalendarOf(false) : Format();
    VQFontStyle style;
    ASSERT_EQ((view.*row.get)(&style), VQ_OK);
    EXPECT_EQ(style.GetFontID(), row.normal);
    EXPECT_EQ((view.*row.get)(nullptr), VQERR_NULL_POINTER);
    EXPECT_EQ((view.*row.set)(VQFontStyle()), VQERR_UNINITIALIZED_ARGUMENT);
    EXPECT_EQ(view.IsModified(), 0);
    ASSERT_EQ((view.*row.set)(plain), VQ_OK);
    ASSERT_EQ(view.Save(), VQ_OK);
    EXPECT_EQ(StoredValue(view, item), With(before, {row.at, 0xFFFFFFFF, kPlain}));
    EXPECT_EQ(StoredFlags(view, "$Fonts"), -1) << "a face that every slate knows";
    ASSERT_EQ((view.*row.set)(own), VQ_OK);
    ASSERT_EQ((view.*row.get)(&style), VQ_OK);
    EXPECT_EQ(TextOf(style.GetFaceName()), "Fancy Face");
    ASSERT_EQ(view.Save(), VQ_OK);
    if (!row.calendar) {
      ASSERT_EQ((Elsewhere(view).*row.get)(&style), VQ_OK);
      EXPECT_EQ(TextOf(style.GetFaceName()), "Fancy Face");
    }
    EXPECT_NE(StoredFlags(view, "$Fonts"), -1);
    VQViewFolder wrong = row.calendar ? Table() : Calendar();
    const VQSTATUS unfit = row.calendar ? VQERR_CALENDAR_ONLY : row.table ? VQERR_NOT_FOR_CALENDAR : VQ_OK;
    EXPECT_EQ((wrong.*row.get)(&style), unfit);
    EXPECT_EQ((wrong.*row.set)(plain), unfit);
  }
}

struct LetterRow {
  const char* name;
  vqtest::Accessor<View> access;
  const char* letters;
  bool inverted;
};

TEST_F(ViewProperty, LettersGoAndComeAlone) {
  const LetterRow rows[] = {
      {"refresh", Of<&View::GetAllowDesignRefreshToModify, &View::SetAllowDesignRefreshToModify>(), "P", true},
      {"menu", Of<&View::GetShowInViewMenu, &View::SetShowInViewMenu>(), "Y", true},
      {"browsers", Of<&View::GetHideFromBrowsers, &View::SetHideFromBrowsers>(), "w", false},
      {"clients", Of<&View::GetHideFromClients, &View::SetHideFromClients>(), "n", false},
      {"R4", Of<&View::GetHideFromR4Clients, &View::SetHideFromR4Clients>(), "456789", false},
      {"default", Of<&View::GetIsDefaultDesign, &View::SetIsDefaultDesign>(), "d", false},
      {"style", Of<&View::GetStyle, &View::SetStyle>(), "c", false},
  };
  for (const LetterRow& row : rows) {
    SCOPED_TRACE(row.name);
    for (const unsigned long value : {1UL, 0UL}) {
      const bool there = (value != 0) != row.inverted;
      // From a design that has it the other way.
      VQViewFolder view = Stored({{"$ViewFormat", 5, Format()}, Letters(there ? "K" : row.letters + std::string("K"))});
      EXPECT_EQ(row.access.Get(view), 1 - value);
      ASSERT_EQ(row.access.Set(view, value), VQ_OK);
      EXPECT_EQ(view.IsModified(), 1);
      ASSERT_EQ(view.Save(), VQ_OK);
      EXPECT_EQ(StoredText(view, "$Flags"), there ? row.letters + std::string("K") : "K");
      EXPECT_EQ(StoredValue(view, "$ViewFormat"), Format());
      EXPECT_EQ(row.access.Get(Elsewhere(view)), value);
    }
  }
  VQViewFolder view = Table();
  EXPECT_EQ(view.SetStyle(static_cast<VQVFSTYLE>(2)), kInvalid);
  EXPECT_EQ(view.IsCalendar(), 0);
}

TEST_F(ViewProperty, LettersTellWhoseAViewIs) {
  const std::pair<const char*, unsigned> rows[] = {{"K", 0}, {"V", 1}, {"poV", 1}, {"p", 2}, {"op", 3}, {"o", 0}};
  for (const auto& [letters, option] : rows) {
    const VQViewFolder view = Stored({{"$ViewFormat", 5, Format()}, Letters(letters)});
    EXPECT_EQ(view.GetSharingOption(), option) << letters;
    EXPECT_EQ(view.IsPrivate(), option == VQVFSHARINGOPTION_PRIVATE) << letters;
  }
}

struct ItemRow {
  const char* what;
  std::function<VQSTATUS(VQViewFolder&)> edit;
  const char* item;
  const char* text;  // "-" for no item
  int flags;
};

VQText People() {
  VQText people;
  people << Store("Ann") << Store("Bob");
  return people;
}

TEST_F(ViewProperty, ItemsOfTheirOwn) {
  const ItemRow rows[] = {
      {"comment", [](View& v) { return v.SetComment("note"); }, "$Comment", "note", 5},
      {"public", [](View& v) { return v.SetAllowPublicAccessUsers(7); }, "$PublicAccess", "1", 4},
      {"private", [](View& v) { return v.SetAllowPublicAccessUsers(0); }, "$PublicAccess", "-", -1},
      {"template", [](View& v) { return v.SetInheritsFromTemplateName("T"); }, "$Class", "T", 4},
      {"kept back", [](View& v) { return v.SetAllowDesignRefreshToModify(0); }, "$Class", "-", -1},
      {"allowed again", [](View& v) { return v.SetAllowDesignRefreshToModify(1); }, "$Class", "T", 4},
      {"no template", [](View& v) { return v.SetInheritsFromTemplateName(VQString()); }, "$Class", "-", -1},
      {"all may read", [](View& v) { return v.SetReaders(People()); }, "$Readers", "-", -1},
      {"some may", [](View& v) { return v.SetAllowAllReaders(0); }, "$Readers", "Ann|Bob", 0x0405},
      {"nobody named", [](View& v) { return v.SetReaders(VQText()); }, "$Readers", "", 0x0405},
      {"all again", [](View& v) { return v.SetAllowAllReaders(1); }, "$Readers", "-", -1},
      {"authors", [](View& v) { return v.SetAuthors(People()); }, "$Updaters", "-", -1},
      {"some", [](View& v) { return v.SetAllowAllAuthors(0); }, "$Updaters", "Ann|Bob", 0x0025},
      {"no comment", [](View& v) { return v.SetComment(VQString()); }, "$Comment", "", 5},
  };
  VQViewFolder folder;
  ASSERT_EQ(Db.CreateFolder("People", VQVFSHARINGOPTION_SHARED, nullptr, &folder), VQ_OK);
  for (const ItemRow& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_EQ(row.edit(folder), VQ_OK);
    ASSERT_EQ(folder.Save(), VQ_OK);
    EXPECT_EQ(StoredText(folder, row.item), row.text);
    EXPECT_EQ(StoredFlags(folder, row.item), row.flags);
  }
  const VQViewFolder read = Elsewhere(folder);
  EXPECT_EQ(read.GetAllowAllAuthors(), 0);
  EXPECT_EQ(read.GetAllowAllReaders(), 1);
  EXPECT_EQ(read.GetAllowPublicAccessUsers(), 0);
  EXPECT_EQ(read.GetAuthors().GetCount(), 2U);
  EXPECT_EQ(read.GetReaders().GetCount(), 0U);
  EXPECT_EQ(TextOf(read.GetInheritsFromTemplateName()), "");
  EXPECT_EQ(folder.SetComment(Store(std::string(257, 'c'))), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(folder.SetComment(Store(std::string(256, 'c'))), VQ_OK);
  VQViewFolder view = Table();
  EXPECT_EQ(view.SetAuthors(People()), VQERR_FOLDER_ONLY);
  EXPECT_EQ(StatusOf([&] { return view.GetAuthors(); }), VQERR_FOLDER_ONLY);
}

TEST_F(ViewProperty, TheFormFormulaIsCode) {
  VQViewFolder view = Table();
  VQFormula formula;
  EXPECT_EQ(view.GetFormFormula(&formula), VQWARN_NOT_FOUND);
  EXPECT_EQ(view.GetFormFormula(nullptr), VQERR_NULL_POINTER);
  for (const std::size_t length : {1UL, 2000UL}) {
    const std::string text = "\"" + std::string(length, 'F') + "\"";
    ASSERT_EQ(view.SetFormFormula(VQFormula(Store(text))), VQ_OK);
    ASSERT_EQ(view.Save(), VQ_OK);
    EXPECT_EQ(StoredFlags(view, "$FormFormula"), length == 1 ? 5 : 1);
    ASSERT_EQ(Elsewhere(view).GetFormFormula(&formula), VQ_OK);
    EXPECT_EQ(TextOf(formula.GetText()), text);
  }
  ASSERT_EQ(view.SetFormFormula(VQFormula()), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredFlags(view, "$FormFormula"), -1);
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), Format());
}

TEST_F(ViewProperty, TheDefaultViewIsABitOfItsClass) {
  VQViewFolder view = Table();
  for (const int on : {1, 0}) {
    ASSERT_EQ(view.SetIsDefaultViewFolder(on * 7), VQ_OK);
    ASSERT_EQ(view.Save(), VQ_OK);
    const VQViewFolder read = Elsewhere(view);
    EXPECT_EQ(read.GetSlateType(), on != 0 ? 0xE8008U : 0xE0008U);
    EXPECT_EQ(read.GetIsDefaultViewFolder(), on);
  }
}

// A column's bits of a kind: all the same, but for those that another property's getter goes by.
struct ColumnRow : PropertyRow<Column> {
  bool NotCalendar = false;
  unsigned Clear = 0;
};

std::string ColumnFormatOf(bool high, unsigned clear) {
  std::string format = Format();
  format.replace(kFirstColumn + 2, 2, Word(high ? 0xFFFFU & ~clear : 0));
  format.replace(kFirstColumn + 18, 2, Word(high ? 0xFFFF : 0));
  format.replace(kFirstColumn + 30, 2, Word(high ? 0xFFFF : 0));
  return format.replace(kColumnExtension + 22, 2, Word(1));
}

constexpr std::size_t kFlags1 = kFirstColumn + 2;
constexpr std::size_t kFlags2 = kFirstColumn + 18;
constexpr std::size_t kWidth = kFirstColumn + 12;

std::vector<ColumnRow> ColumnRows() {
  return {
      {{"exact width",
        Of<&Column::GetExactWidth, &Column::SetExactWidth>(),
        kWidth,
        0xFFFF,
        Each({8, 81, 0xFFFF}),
        {{7, kRange}, {0x10000, kRange}}}},
      {{"characters",
        Of<&Column::GetWidthInCharacters, &Column::SetWidthInCharacters>(),
        kWidth,
        0xFFFF,
        {{1, 8}, {8191, 65528}},
        {{0, kRange}, {8192, kRange}, {0x20000001, kRange}}}},
      {{"separator",
        Of<&Column::GetSeparator, &Column::SetSeparator>(),
        kFirstColumn + 30,
        0xF000,
        Each({0, 0x1000, 0x2000, 0x3000, 0x4000}),
        {{0x5000, kInvalid}, {1, kInvalid}}}},
      {{"side",
        Of<&Column::GetJustification, &Column::SetJustification>(),
        kFlags2,
        0x03,
        Each({0, 1, 2}),
        {{3, kInvalid}}}},
      {{"title side",
        Of<&Column::GetTitleJustification, &Column::SetTitleJustification>(),
        kFlags2,
        0xC0,
        {{0, 0}, {1, 0x40}, {2, 0x80}},
        {{3, kInvalid}}}},
      {{"sort",
        Of<&Column::GetSortOption, &Column::SetSortOption>(),
        kFlags1,
        0x05,
        {{0, 0}, {1, 1}, {2, 5}},
        {{3, kInvalid}}}},
      {{"case",
        Of<&Column::IsSortCaseInsensitive, &Column::SetIsSortCaseInsensitive>(),
        kFlags1,
        0x4000,
        OnOff(0x4000),
        {}}},
      {{"accents",
        Of<&Column::IsSortAccentInsensitive, &Column::SetIsSortAccentInsensitive>(),
        kFlags1,
        0x8000,
        OnOff(0x8000),
        {}}},
      {{"heading",
        Of<&Column::GetHeadingSortOption, &Column::SetHeadingSortOption>(),
        kFlags1,
        0x0B00,
        Each({0, 0x100, 0x200, 0x300, 0x800}),
        {{0x900, kInvalid}, {0x400, kInvalid}, {1, kInvalid}}},
       true},
      {{"second",
        Of<&Column::GetSecondarySortOption, &Column::SetSecondarySortOption>(),
        kFlags1,
        0x3000,
        {{0, 0}, {1, 0x1000}, {2, 0x3000}},
        {{3, kInvalid}}},
       true},
      {{"totals",
        Of<&Column::GetTotalsOption, &Column::SetTotalsOption>(),
        kFlags2,
        0x3C,
        Each({0, 4, 8, 12, 16, 20}),
        {{24, kInvalid}, {2, kInvalid}}},
       true},
      {{"hide detail", Of<&Column::GetHideDetailRows, &Column::SetHideDetailRows>(), kFlags1, 0x20, OnOff(0x20), {}},
       true},
      {{"separate",
        Of<&Column::GetSeparateMultipleValues, &Column::SetSeparateMultipleValues>(),
        kFlags2,
        0x100,
        OnOff(0x100),
        {}},
       false,
       0x02},
      {{"responses",
        Of<&Column::GetShowResponsesOnly, &Column::SetShowResponsesOnly>(),
        kFlags1,
        0x10,
        OnOff(0x10),
        {}},
       true},
      {{"twistie", Of<&Column::GetShowTwistie, &Column::SetShowTwistie>(), kFlags1, 0x400, OnOff(0x400), {}}, true},
      {{"hidden", Of<&Column::IsHidden, &Column::SetIsHidden>(), kFlags1, 0x08, OnOff(0x08), {}}},
      {{"resizable", Of<&Column::IsResizable, &Column::SetIsResizable>(), kFlags1, 0x80, OffOn(0x80), {}}, true},
      {{"icons",
        Of<&Column::GetDisplayValuesAsIcons, &Column::SetDisplayValuesAsIcons>(),
        kFlags1,
        0x40,
        OnOff(0x40),
        {}}},
      {{"links",
        Of<&Column::GetShowValuesAsLinks, &Column::SetShowValuesAsLinks>(),
        kFlags2,
        0x2000,
        OnOff(0x2000),
        {}}},
  };
}

class ColumnProperty : public ViewProperty {
 protected:
  void CheckColumn(const ColumnRow& row, bool high) {
    const std::string before = ColumnFormatOf(high, row.Clear);
    for (const auto& [value, bits] : row.Values) {
      SCOPED_TRACE(value);
      VQViewFolder view = Table(before);
      VQVFColumn column = view[0];
      ASSERT_EQ(row.Access.Set(column, value), VQ_OK);
      EXPECT_EQ(view.IsModified(), 1);
      ASSERT_EQ(view.Save(), VQ_OK);
      EXPECT_EQ(StoredValue(view, "$ViewFormat"), With(before, {row.At, row.Mask, bits}));
      EXPECT_EQ(row.Access.Get(Elsewhere(view)[0]), value);
    }
  }
};

TEST_F(ColumnProperty, OwnsItsBitsOfTheFormat) {
  for (const ColumnRow& row : ColumnRows()) {
    SCOPED_TRACE(row.Name);
    for (const bool high : {false, true}) CheckColumn(row, high);
    VQViewFolder view = Table();
    VQVFColumn column = view[0];
    const unsigned long before = row.Access.Get(column);
    for (const auto& [value, status] : row.Refused) {
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(column, value); }), status) << value;
      EXPECT_EQ(row.Access.Get(column), before) << value;
    }
    EXPECT_EQ(view.IsModified(), 0);
    VQViewFolder calendar = Calendar();
    VQVFColumn there = calendar[0];
    const VQSTATUS unfit = row.NotCalendar ? VQERR_NOT_FOR_CALENDAR : VQ_OK;
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(there, row.Values[0].first); }), unfit);
    EXPECT_EQ(calendar.IsModified(), row.NotCalendar ? 0 : 1);
    ASSERT_EQ(view.Close(), VQ_OK);
    EXPECT_EQ(StatusOf([&] { return row.Access.Get(column); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(column, row.Values[0].first); }),
              VQERR_OBJECT_NOT_INITIALIZED);
  }
}

TEST_F(ColumnProperty, CategoriesSeparateTheirValues) {
  VQViewFolder view = Table(ColumnFormatOf(false, 0));
  ASSERT_EQ(view[0].SetIsCategorized(7), VQ_OK);
  EXPECT_EQ(view.IsCategorized(), 1);
  ASSERT_EQ(view.Save(), VQ_OK);
  std::string stored = With(With(ColumnFormatOf(false, 0), {kFlags1, 0x02, 0x02}), {kFlags2, 0x100, 0x100});
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), stored);
  ASSERT_EQ(view[0].SetSeparateMultipleValues(0), VQ_OK);
  EXPECT_EQ(view[0].GetSeparateMultipleValues(), 1);
  ASSERT_EQ(view[0].SetIsCategorized(0), VQ_OK);
  EXPECT_EQ(view[0].GetSeparateMultipleValues(), 0);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), ColumnFormatOf(false, 0));
  EXPECT_EQ(Elsewhere(view).IsCategorized(), 0);
}

TEST_F(ColumnProperty, FormatsAreFourBytesEach) {
  VQViewFolder view = Table();
  VQVFColumn column = view[0];
  EXPECT_EQ(column.GetNumberFormat().GetDigits(), 1U);
  ASSERT_EQ(column.SetNumberFormat(vqtest::OtherNumberFormat()), VQ_OK);
  ASSERT_EQ(column.SetDatetimeFormat(vqtest::OtherDatetimeFormat()), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  std::string stored = Format();
  stored.replace(kFirstColumn + 20, vqtest::kFormatsSize, vqtest::kOtherFormats, vqtest::kFormatsSize);
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), stored);
  const VQVFColumn read = Elsewhere(view)[0];
  EXPECT_EQ(StatusOf([&] { return read.GetTitle(); }), VQERR_OBJECT_NOT_INITIALIZED) << "its view is gone";
  const VQViewFolder again = Elsewhere(view);
  EXPECT_EQ(again[0].GetNumberFormat().GetParentheses(), 1);
  EXPECT_EQ(again[0].GetNumberFormat().GetFormat(), VQNUMBERFORMAT_CURRENCY);
  EXPECT_EQ(again[0].GetDatetimeFormat().GetTimeZoneDisplay(), VQTIMEZONEDISPLAY_ALWAYS);
  EXPECT_EQ(again[0].GetDatetimeFormat().GetDateFormat(), VQDATEFORMAT_MONTH_DAY);
}

TEST_F(ColumnProperty, AHeadingOpensAnotherView) {
  VQViewFolder target = NewView("Target");
  ASSERT_EQ(target.Save(), VQ_OK);
  VQViewFolder view = Table();
  VQViewFolder found(target);
  EXPECT_EQ(view[0].GetHeadingSortViewFolder(&found), VQWARN_NOT_FOUND);
  EXPECT_EQ(found.IsNull(), 1);
  EXPECT_EQ(view[0].GetHeadingSortViewFolder(nullptr), VQERR_NULL_POINTER);
  ASSERT_EQ(view[0].SetHeadingSortViewFolder(target), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  std::string stored = Format();
  stored.replace(kColumnExtension + 6, 16, reinterpret_cast<const char*>(target.GetUniversalID()), 16);
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), stored);
  VQViewFolder again = Elsewhere(view);
  ASSERT_EQ(again[0].GetHeadingSortViewFolder(&found), VQ_OK);
  EXPECT_EQ(TextOf(found.GetName()), "Target");
  VQViewFolder calendar = Calendar();
  EXPECT_EQ(calendar[0].SetHeadingSortViewFolder(target), VQERR_NOT_FOR_CALENDAR);
  EXPECT_EQ(calendar[0].SetSecondarySortColumn(1), VQERR_NOT_FOR_CALENDAR);
  EXPECT_EQ(calendar[0].SetSecondarySortColumn(Store("b2")), VQERR_NOT_FOR_CALENDAR);
  EXPECT_EQ(StatusOf([&] { return calendar[0].GetSecondarySortColumn(); }), VQERR_NOT_FOR_CALENDAR);
  EXPECT_EQ(StatusOf([&] { return calendar[0].GetSecondarySortOption(); }), VQERR_NOT_FOR_CALENDAR);
  // Binding another view to the handle that names this column's own view.
  EXPECT_TRUE(VQIsError(ReturnedStatusOf([&] { return again[0].SetHeadingSortViewFolder(again); })));
}

TEST_F(ColumnProperty, ColumnsAreFoundByNumberAndTitle) {
  VQViewFolder view = Table();
  VQVFColumn column;
  struct Row {
    const char* what;
    std::function<VQSTATUS()> find;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"second", [&] { return view.GetColumn(1, &column); }, VQ_OK},
      {"third", [&] { return view.GetColumn(2, &column); }, VQERR_OUT_OF_RANGE},
      {"a title in another case", [&] { return view.GetColumn(Store("B2"), &column); }, VQ_OK},
      {"no such title", [&] { return view.GetColumn(Store("c3"), &column); }, VQWARN_NOT_FOUND},
      {"no target", [&] { return view.GetColumn(0, nullptr); }, VQERR_NULL_POINTER},
      {"no target by title", [&] { return view.GetColumn(Store("b2"), nullptr); }, VQERR_NULL_POINTER},
      {"title of none", [&] { return view.GetColumnTitle(2), VQ_OK; }, VQERR_OUT_OF_RANGE},
      {"subscript of none", [&] { return view[2].GetTitle(), VQ_OK; }, VQERR_BAD_SUBSCRIPT},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(StatusOf(row.find), row.status) << row.what;
    ASSERT_EQ(column.IsNull(), 0);
    EXPECT_EQ(TextOf(column.GetTitle()), "b2") << row.what;
  }
  EXPECT_EQ(TextOf(view.GetColumnTitle(0)), "a1");
  EXPECT_EQ(TextOf(column.GetFieldName()), "B");
  VQViewFolder of;
  ASSERT_EQ(column.GetViewFolder(&of), VQ_OK);
  EXPECT_EQ(of.GetSlateID(), view.GetSlateID());
  EXPECT_EQ(column.GetColumnCount(), 2U);
}

}  // namespace
