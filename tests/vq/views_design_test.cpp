// View designs: stored bytes in, a property changed, stored bytes out; and what stands in the way.
#include <algorithm>
#include <array>
#include <functional>
#include <random>

#include "tests/vq/support/views_fixture.h"
#include "vq/automation/formulacode.h"

namespace {

using vqtest::Bytes;
using vqtest::ColumnBytes;
using vqtest::ReturnedStatusOf;
using vqtest::StatusOf;
using vqtest::Store;
using vqtest::TextOf;

class ViewDesign : public vqtest::ViewsFixture {};

// A change of one field leaves every other byte, spare ones and unknown flags with them.
TEST_F(ViewDesign, AChangeTouchesItsOwnBytesAlone) {
  const std::string before = vqtest::FormatBytes({ColumnBytes("Subject", "Topic"), ColumnBytes("Size", "Bytes")});
  struct Row {
    const char* what;
    std::function<VQSTATUS(VQViewFolder&)> edit;
    std::size_t offset;
    std::string bytes;
  };
  const std::size_t columns = 10;
  const std::size_t extension = before.size() - 38 - 2 * 46;
  const std::size_t extensions = before.size() - 2 * 46;
  const Row rows[] = {
      {"collapse", [](VQViewFolder& v) { return v.SetCollapseOnOpen(1); }, 6, Bytes({0x09, 0x80})},
      {"margin", [](VQViewFolder& v) { return v.SetShowSelectionMargin(0); }, 6, Bytes({0x08, 0x82})},
      {"heading", [](VQViewFolder& v) { return v.SetHeadingDisplay(VQVFHEADINGDISPLAY_SIMPLE); }, 6,
       Bytes({0x08, 0x84})},
      {"refresh", [](VQViewFolder& v) { return v.SetRefreshOption(VQVFREFRESHOPTION_BOTTOM); }, 6, Bytes({0x08, 0xB0})},
      {"unread", [](VQViewFolder& v) { return v.SetUnreadMarkDisplay(VQVFUNREADMARKDISPLAY_DOCUMENTS); }, 6,
       Bytes({0x18, 0x80})},
      {"position", [](VQViewFolder& v) { return v.SetOpenPosition(VQVFOPENPOSITION_BOTTOM); }, 6, Bytes({0x48, 0x80})},
      {"background", [](VQViewFolder& v) { return v.SetBackgroundColor(35); }, extension + 26, Bytes({35, 0})},
      {"alternate", [](VQViewFolder& v) { return v.SetAlternateRowColor(239); }, extension + 20, Bytes({239, 0})},
      {"lines", [](VQViewFolder& v) { return v.SetLinesPerRow(9); }, extension + 24, Bytes({9})},
      {"html", [](VQViewFolder& v) { return v.SetTreatContentsAsHTML(1); }, extension + 29, Bytes({0x42})},
      {"width", [](VQViewFolder& v) { return v[0].SetWidthInCharacters(3); }, columns + 12, Bytes({24, 0})},
      {"separator", [](VQViewFolder& v) { return v[0].SetSeparator(VQVFSEPARATOR_NEW_LINE); }, columns + 30,
       Bytes({0x34, 0x42})},
      {"title side", [](VQViewFolder& v) { return v[1].SetTitleJustification(VQVFJUSTIFICATION_CENTER); },
       columns + 32 + 18, Bytes({0x80, 0x10})},
      {"icons", [](VQViewFolder& v) { return v[1].SetDisplayValuesAsIcons(1); }, columns + 32 + 2, Bytes({0x40, 0})},
      {"second", [](VQViewFolder& v) { return v[0].SetSecondarySortColumn(1); }, extensions + 22, Bytes({1, 0})},
  };
  for (const Row& row : rows) {
    VQViewFolder view = Stored({{"$ViewFormat", 5, before}});
    ASSERT_EQ(row.edit(view), VQ_OK) << row.what;
    ASSERT_EQ(view.Save(), VQ_OK) << row.what;
    std::string expected = before;
    expected.replace(row.offset, row.bytes.size(), row.bytes);
    if (std::string(row.what) == "background") expected.replace(extension + 2, 2, Bytes({3, 0}));
    if (std::string(row.what) == "second") expected.replace(columns + 2, 2, Bytes({0, 0x10}));
    EXPECT_EQ(StoredValue(view, "$ViewFormat"), expected) << row.what;
  }
}

TEST_F(ViewDesign, EveryCutOfAFormatGivesItsStatusOrLoads) {
  const std::string whole = vqtest::FormatBytes({ColumnBytes("A", "First"), ColumnBytes("B", "Second")});
  const std::size_t records = 10 + 2 * 32 + 2 + 11;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    VQSTATUS status = VQ_OK;
    VQViewFolder view = Stored({{"$ViewFormat", 5, whole.substr(0, size)}}, &status);
    ASSERT_EQ(status, size < records ? VQERR_INVALID_VIEW : VQ_OK) << size;
    ASSERT_EQ(ReturnedStatusOf([&] { return view.SetCollapseOnOpen(1); }), status) << size;
    if (status != VQ_OK) continue;
    EXPECT_EQ(view.GetColumnCount(), 2U);
    EXPECT_EQ(view.GetLinesPerRow(), size < records + 38 ? 1U : 2U) << size;
    EXPECT_EQ(view[1].GetTitleFontStyle(nullptr), VQERR_NULL_POINTER);
  }
}

TEST_F(ViewDesign, DamagedDesignsAreNamedAndKeepNothing) {
  const std::string good = vqtest::FormatBytes({ColumnBytes("A", "First")});
  const auto with = [&](std::size_t at, int byte) {
    std::string bytes = good;
    bytes[at] = static_cast<char>(byte);
    return bytes;
  };
  struct Row {
    const char* what;
    vqtest::StoredItem item;
    VQSTATUS status;
  };
  const Row rows[] = {
      {"another type", {"$ViewFormat", 0x500, good}, VQERR_INVALID_VIEW},
      {"version 2", {"$ViewFormat", 5, with(0, 2)}, VQERR_VIEW_VERSION},
      {"style 1", {"$ViewFormat", 5, with(1, 1)}, VQERR_VIEW_VERSION},
      {"more columns", {"$ViewFormat", 5, with(3, 0xFF)}, VQERR_INVALID_VIEW},
      {"column signature", {"$ViewFormat", 5, with(10, 0)}, VQERR_INVALID_VIEW},
      {"sizes", {"$ViewFormat", 5, with(19, 0xFF)}, VQERR_INVALID_VIEW},
      {"extension length", {"$ViewFormat", 5, with(10 + 32 + 6, 37)}, VQERR_INVALID_VIEW},
      {"column extension", {"$ViewFormat", 5, with(10 + 32 + 6 + 38, 0)}, VQERR_INVALID_VIEW},
      {"formula type", {"$Formula", 0x500, "x"}, VQERR_INVALID_VIEW},
      {"formula code", {"$Formula", 0x600, "no code at all"}, ENG_ERR_FORMULA_CODE},
      {"readers", {"$Readers", 0x300, std::string(8, '\0')}, VQERR_INVALID_VIEW},
      {"collation", {"$Collation", 2, Bytes({6, 0, 0})}, VQERR_INVALID_VIEW},
  };
  for (const Row& row : rows) {
    VQSTATUS status = VQ_OK;
    std::vector<vqtest::StoredItem> items{row.item};
    if (row.item.Name != "$ViewFormat") items.push_back({"$ViewFormat", 5, good});
    VQViewFolder view = Stored(items, &status);
    EXPECT_EQ(status, row.status) << row.what;
    EXPECT_EQ(StatusOf([&] { return view.GetColumnCount(); }), row.status) << row.what;
    EXPECT_EQ(view.GetViewFolderBody()->GetColumns().GetCount(), 0U) << row.what;
  }
}

TEST_F(ViewDesign, WhatANewViewStores) {
  VQViewFolder view;
  ASSERT_EQ(Db.CreateSlate(0xE0008, &view), VQ_OK);
  EXPECT_EQ(view.Save(), VQERR_VIEW_NAME_REQUIRED);
  ASSERT_EQ(view.SetName(Store("By size|Sizes|dropped")), VQ_OK);
  VQVFColumn column;
  ASSERT_EQ(view.AppendColumn(&column), VQ_OK);
  ASSERT_EQ(column.SetTitle(Store("Size")), VQ_OK);
  ASSERT_EQ(column.SetFormula(VQFormula(VQString("Size * 2"))), VQ_OK);
  ASSERT_EQ(column.SetSortOption(VQVFSORTOPTION_DESCENDING), VQ_OK);
  ASSERT_EQ(column.SetTotalsOption(VQVFTOTALSOPTION_TOTAL), VQ_OK);
  ASSERT_EQ(column.SetHeadingSortOption(VQVFHEADINGSORTOPTION_BOTH), VQ_OK);
  ASSERT_EQ(view.SetShowInViewMenu(1), VQ_OK);
  ASSERT_EQ(view.SetGenerateUniqueKeys(1), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredText(view, "$TITLE"), "By size|Sizes");
  EXPECT_EQ(StoredText(view, "$FormulaClass"), "1");
  EXPECT_EQ(StoredText(view, "$Totals"), "1");
  EXPECT_EQ(StoredValue(view, "$FormulaTV"), "-");
  EXPECT_EQ(StoredValue(view, "$Collation"), Bytes({15, 0, 1, 0, 1, 0x44, 1, 0x66, 0, 0, 0, 2, 0}) + "$0");
  EXPECT_EQ(StoredValue(view, "$Collation1"), Bytes({15, 0, 1, 0, 0, 0x44, 0, 0x66, 0, 0, 0, 2, 0}) + "$0");
  EXPECT_EQ(StoredValue(view, "$Collation2"), Bytes({15, 0, 1, 0, 0, 0x44, 1, 0x66, 0, 0, 0, 2, 0}) + "$0");
  VQViewFolder again = Reopened(view);
  EXPECT_EQ(again.GetGenerateUniqueKeys(), 1);
  EXPECT_EQ(again.GetShowInViewMenu(), 1);
  EXPECT_EQ(TextOf(again.GetAlias()), "Sizes");
  EXPECT_EQ(TextOf(again[0].GetInternalName()), "$0");
  VQFormula formula;
  ASSERT_EQ(again[0].GetFormula(&formula), VQ_OK);
  EXPECT_EQ(TextOf(formula.GetText()), "Size * 2");
  ASSERT_EQ(again.GetSelectionFormula(&formula), VQ_OK);
}

// Names that rows carry: what columns and table flags ask for, or a placeholder.
TEST_F(ViewDesign, TheSelectionCarriesWhatTheRowsNeed) {
  struct Row {
    const char* what;
    std::function<void(VQViewFolder&)> edit;
    std::string names;
  };
  const Row rows[] = {
      {"as made", [](VQViewFolder&) {}, "$Conflict|$REF"},
      {"flat", [](VQViewFolder& v) { v.SetShowResponseHierarchy(0); }, "$Conflict"},
      {"nothing", [](VQViewFolder& v) { v.SetShowResponseHierarchy(0), v.SetShowReplicationConflicts(0); }, "$$$$"},
      {"field",
       [](VQViewFolder& v) {
         v.AppendColumns(1);
         v[0].SetFieldName("Subject");
       },
       "Subject|$Conflict|$REF"},
      {"formula and a name",
       [](VQViewFolder& v) {
         v.AppendColumns(2);
         v[0].SetFormula(VQFormula(VQString("1")));
         v[1].SetFormula(VQFormula(VQString("2")));
         v[1].SetInternalName("Two");
       },
       "$0|Two|$Conflict|$REF"},
      {"constant",
       [](VQViewFolder& v) {
         v.AppendColumns(1);
         v[0].SetFieldName("Subject");
         v[0].GetColumnBody()->SetDirtyFlags(0);
         v[0].GetColumnBody()->ConstantValue() = Bytes({0, 5}) + "same";
       },
       "$Conflict|$REF"},
  };
  for (const Row& row : rows) {
    VQViewFolder view = NewView("V");
    row.edit(view);
    ASSERT_EQ(view.Save(), VQ_OK) << row.what;
    EXPECT_EQ(SummaryNames(view), row.names) << row.what;
    // Made anew from what was stored, it comes out the same.
    const std::string first = StoredValue(view, "$Formula");
    VQViewFolder again = Reopened(view);
    again.GetViewFolderBody()->SetState(
        VQViewFolderBody::kDesignChanged | VQViewFolderBody::kRebuildFormula | VQViewFolderBody::kNoFormulaTV, true);
    ASSERT_EQ(again.Save(), VQ_OK);
    EXPECT_EQ(StoredValue(again, "$Formula"), first) << row.what;
  }
}

// The design items that a save owns are written in one way; all else is as it was, whatever it is.
TEST_F(ViewDesign, AnyDesignComesBackBitForBit) {
  std::mt19937 random(6101);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  const auto bytes = [&](std::size_t size) {
    std::string made(size, 0);
    for (char& byte : made) byte = static_cast<char>(random());
    return made;
  };
  const VQFormula formula(VQString("SELECT Size = 1"));
  const std::string selection(vq::CodeOf(formula));
  for (int round = 0; round < 40; ++round) {
    const unsigned count = below(5);
    std::string records, data, extensions;
    for (unsigned i = 0; i < count; ++i) {
      const std::size_t sizes[] = {1 + below(6), below(9), below(2) * below(9), below(2) * below(9)};
      records += vqtest::Word(0x4356) + bytes(2);
      for (const std::size_t size : sizes) records += vqtest::Word(size), data += bytes(size);
      records += bytes(20);
      extensions += vqtest::Word(0x4357) + bytes(44);
    }
    const std::string format = Bytes({1, 0}) + vqtest::Word(count) + bytes(6) + records + data + vqtest::Word(38) +
                               bytes(20) + vqtest::Word(0x2BAD) + bytes(14) + extensions + bytes(below(2) * below(40));
    const std::string odd = bytes(below(30));
    VQViewFolder view = Stored(
        {{"$ViewFormat", 5, format}, {"$Formula", 0x600, selection}, {"$Collation7", 2, odd}, {"$Odd", 0x77, odd}});
    ASSERT_EQ(view.SetShrinkRows(1 - view.GetShrinkRows()), VQ_OK);
    ASSERT_EQ(view.Save(), VQ_OK) << round;
    std::string expected = format;
    expected[7] = static_cast<char>(expected[7] ^ 0x08);
    ASSERT_EQ(StoredValue(view, "$ViewFormat"), expected) << round;
    EXPECT_EQ(StoredValue(view, "$Formula"), selection);
    EXPECT_EQ(StoredValue(view, "$Collation7"), odd);
    EXPECT_EQ(StoredValue(view, "$Odd"), odd);
  }
}

TEST_F(ViewDesign, ADesignWithoutAFormatShowsRowNumbers) {
  NewDocument("d");
  const VQFormula formula(VQString("SELECT @All"));
  VQViewFolder view = Stored({{"$Formula", 0x600, std::string(vq::CodeOf(formula))}});
  ASSERT_EQ(view.GetColumnCount(), 1U);
  EXPECT_EQ(view.IsModified(), 0);
  ASSERT_EQ(view.SetComment("seen"), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(SummaryNames(view), "$0|$Conflict|$REF");
  EXPECT_EQ(TextOf(Reopened(view)[0].GetInternalName()), "$0");
}

TEST_F(ViewDesign, AReSortHasASecondColumn) {
  VQViewFolder view = NewView("V");
  ASSERT_EQ(view.AppendColumns(2), VQ_OK);
  ASSERT_EQ(view[0].SetFieldName("Aa"), VQ_OK);
  ASSERT_EQ(view[1].SetFieldName("B"), VQ_OK);
  ASSERT_EQ(view[0].SetHeadingSortOption(VQVFHEADINGSORTOPTION_DESCENDING), VQ_OK);
  ASSERT_EQ(view[0].SetSecondarySortOption(VQVFSORTOPTION_DESCENDING), VQ_OK);
  ASSERT_EQ(view[0].SetIsSortCaseInsensitive(1), VQ_OK);
  ASSERT_EQ(view[1].SetIsCategorized(1), VQ_OK);
  ASSERT_EQ(view[1].SetHeadingSortOption(VQVFHEADINGSORTOPTION_ASCENDING), VQ_OK);
  ASSERT_EQ(view[0].SetTotalsOption(VQVFTOTALSOPTION_TOTAL), VQ_OK);
  ASSERT_EQ(view[1].SetTotalsOption(VQVFTOTALSOPTION_AVERAGE_PER_DOCUMENT), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(view, "$Collation"), "-");
  EXPECT_EQ(StoredValue(view, "$Collation1"),
            Bytes({23, 0, 2, 0, 0, 0x44, 3, 0x66, 0, 0, 0, 2, 0, 9, 0x66, 7, 2, 0, 1, 0}) + "AaB");
  EXPECT_EQ(StoredValue(view, "$Collation2"), Bytes({14, 0, 1, 0, 0, 0x44, 8, 0x66, 7, 0, 0, 1, 0}) + "B");
  EXPECT_EQ(StoredText(view, "$Totals"), "1|5");
  ASSERT_EQ(view[0].SetHeadingSortOption(VQVFHEADINGSORTOPTION_NONE), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(view, "$Collation1"), Bytes({14, 0, 1, 0, 0, 0x44, 8, 0x66, 7, 0, 0, 1, 0}) + "B");
  EXPECT_EQ(StoredValue(view, "$Collation2"), "-");
}

// From 1024 bytes of code on.
TEST_F(ViewDesign, LongCodeLosesItsPlaceInTheSummary) {
  VQViewFolder form = NewView("Form");
  int found = 0;
  for (std::size_t length = 980; length < 1024; ++length) {
    const VQFormula formula(Store("\"" + std::string(length, 'F') + "\""));
    const std::size_t size = vq::CodeOf(formula).size();
    if (size < 1022 || size > 1025) continue;
    ++found;
    ASSERT_EQ(form.SetFormFormula(formula), VQ_OK);
    ASSERT_EQ(form.Save(), VQ_OK);
    EXPECT_EQ(StoredFlags(form, "$FormFormula"), size < 1024 ? 5 : 1) << size;
  }
  EXPECT_GT(found, 1);

  for (const bool is_long : {false, true}) {
    VQViewFolder view = NewView("V");
    std::string text = "SELECT Subject = \"" + std::string(is_long ? 2000 : 10, 'x') + "\"";
    ASSERT_EQ(view.SetSelectionFormula(VQFormula(Store(text))), VQ_OK);
    ASSERT_EQ(view.Save(), VQ_OK);
    EXPECT_EQ(StoredFlags(view, "$Formula"), is_long ? 1 : 5);
    EXPECT_EQ(StoredValue(view, "$FormulaTV"), "");
  }
}

TEST_F(ViewDesign, WhatIsNotUnderstoodStays) {
  const std::string tail = "written by a later release";
  const std::string format = vqtest::FormatBytes({ColumnBytes("A", std::string("two\0lines", 9))}) + tail;
  VQViewFolder view = Stored({{"$ViewFormat", 5, format},
                              {"$Flags", 0x501, Bytes({1, 0, 3, 0}) + "FK5"},
                              {"$TITLE", 0x500, "One|Two|Three"},
                              {"$Viewer", 0x77, "opaque"}});
  EXPECT_EQ(TextOf(view[0].GetTitle()), "two\nlines");
  EXPECT_EQ(view.IsFolder(), 1);
  ASSERT_EQ(view.SetShrinkRows(1), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  std::string expected = format;
  expected[7] = static_cast<char>(0x88);
  EXPECT_EQ(StoredValue(view, "$ViewFormat"), expected);
  EXPECT_EQ(StoredValue(view, "$Flags"), Bytes({1, 0, 2, 0}) + "FK");
  EXPECT_EQ(StoredValue(view, "$Viewer"), "opaque");
  EXPECT_EQ(StoredText(view, "$TITLE"), "One|Two|Three");
  ASSERT_EQ(view.SetAlias("Four"), VQ_OK);
  ASSERT_EQ(view.Save(), VQ_OK);
  EXPECT_EQ(StoredText(view, "$TITLE"), "One|Four");
}

TEST_F(ViewDesign, ACalendarsSettingsStartFromTheDefaultsAgain) {
  VQViewFolder view = NewView("Calendar");
  EXPECT_EQ(view.SetTimeSlotStartHour(9), VQERR_CALENDAR_ONLY);
  ASSERT_EQ(view.SetStyle(VQVFSTYLE_CALENDAR), VQ_OK);
  ASSERT_EQ(view.SetTimeSlotStartHour(9), VQ_OK);
  EXPECT_EQ(view.SetTimeSlotStartHour(18), VQERR_TIME_SLOTS_OVERLAP);
  EXPECT_EQ(view.SetTimeSlotEndHour(24), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(view.SetAlternateRowColor(1), VQERR_NOT_FOR_CALENDAR);
  ASSERT_EQ(view.Save(), VQ_OK);
  const std::string stored = StoredValue(view, "$CalendarFormat");
  ASSERT_EQ(stored.size(), 58U);
  EXPECT_EQ(stored.substr(22, 6), Bytes({0x1C, 2, 0x38, 4, 60, 0}));
  VQViewFolder again = Reopened(view);
  EXPECT_EQ(again.GetTimeSlotStartHour(), 8U);
  again.GetViewFolderBody()->Calendar().TimeSlotDuration = 45;
  EXPECT_EQ(again.GetTimeSlotDuration(), 60U);
  ASSERT_EQ(again.SetStyle(VQVFSTYLE_STANDARD), VQ_OK);
  ASSERT_EQ(again.Save(), VQ_OK);
  EXPECT_EQ(StoredValue(again, "$CalendarFormat"), "-");
}

}  // namespace
