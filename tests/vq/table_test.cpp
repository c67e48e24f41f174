// Tables: their records, what each operation refuses, identifiers, neighbours, styles and texts.
#include <functional>
#include <set>

#include "tests/vq/support/records.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rthistory.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrttabl.h"

namespace {

using namespace vqtest;

class Table : public EngineFixture {};

VQTable TableIn(VQRichText& text, unsigned long rows, unsigned long columns) {
  VQRTCursor cursor = At(text, 0);
  VQTable table;
  EXPECT_EQ(text.CreateTable(rows, columns, &cursor, &table), VQ_OK);
  EXPECT_EQ(table.SetUnits(VQUNITS_TWIPS), VQ_OK);
  return table;
}

VQRichText NewText() {
  VQRichText text;
  EXPECT_EQ(text.Create(), VQ_OK);
  return text;
}

void Write(const VQTable& table, unsigned long row, unsigned long column, const std::string& text) {
  VQTableCell cell = table(row, column);
  EXPECT_EQ(cell.Append(Store(text)), VQ_OK);
}

std::vector<VQRTTYPE> TypesIn(const VQRTObject& container) {
  std::vector<VQRTTYPE> types;
  const VQRTBaseContainerBody* body = container.GetRTBaseContainerBody();
  for (const VQRTObjectBody* child = body->GetFirstChild(); child; child = child->GetNext()) {
    types.push_back(child->GetType());
  }
  return types;
}

// The identifiers of a kind of paragraph record in stream order.
std::vector<int> IDs(const VQRTObject& container, VQRTTYPE type) {
  std::vector<int> ids;
  const VQRTBaseContainerBody* body = container.GetRTBaseContainerBody();
  for (const VQRTObjectBody* object = body->FirstOfType(type); object; object = body->NextOfType(object, type)) {
    ids.push_back(vq::pab::IDsOf(*object).Second);
  }
  return ids;
}

std::string Words(std::initializer_list<int> values) {
  std::string bytes;
  for (const int value : values) bytes += Bytes({value & 255, value >> 8});
  return bytes;
}

std::string CellRecord(int row, int column, int left, int right, int fraction) {
  return Record(SIG_CD_TABLECELL, Bytes({row, column}) + Words({left, right, fraction}) + Bytes({0x55, 2}) +
                                      Words({0x1111}) + Bytes({1, 1}) + Words({0}));
}

std::string Definition(int pabid, int left, int right) {
  std::string fields = Words({pabid, 0, 0, 0, 0, left, right, left, 0, 720});
  fields.resize(58);
  return Record(SIG_CD_PABDEFINITION, fields + Words({0x0186}) + std::string(6, '\0'));
}

TEST_F(Table, WritesTheRecordsOfANewOne) {
  VQRichText text = NewText();
  TableIn(text, 2, 2);
  const std::string begin = Record(SIG_CD_TABLEBEGIN, Words({1440, 40, 60, 0, 0, 3}));
  const std::string rest = Paragraph(), empty = Text("");
  EXPECT_EQ(Written(text),
            Reference(1) + empty + rest + begin +                                                                    //
                CellRecord(0, 0, 1440, 15840, 14400) + Definition(2, 1440, 15840) + rest + Reference(2) + empty +    //
                CellRecord(0, 1, 15840, 30240, 14400) + Definition(3, 15840, 30240) + rest + Reference(3) + empty +  //
                CellRecord(1, 0, 1440, 15840, 14400) + rest + Reference(2) + empty +                                 //
                CellRecord(1, 1, 15840, 30240, 14400) + rest + Reference(3) + empty +                                //
                TableEnd() + rest + Reference(1) + empty);
  EXPECT_EQ(text.Update(), VQ_OK);
}

TEST_F(Table, GivesItsText) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 2, 2);
  Write(table, 0, 0, "a");
  Write(table, 0, 1, "b1\nb2");
  Write(table, 1, 1, "d");
  EXPECT_EQ(Plain(text), "\na\tb1\nb2\t\n\td\t\n\n");
  VQString string;
  ASSERT_EQ(table.GetText(&string), VQ_OK);
  EXPECT_EQ(TextOf(string), "a\tb1\nb2\t\n\td\t\n");
  VQRichText again = RichText(Written(text));
  EXPECT_EQ(Plain(again), Plain(text));
  VQRTObject found;
  ASSERT_EQ(again.FindFirst(VQRTTYPE_TABLE, &found), VQ_OK);
  EXPECT_EQ(VQTable(found).GetRowCount(), 2u);
  EXPECT_EQ(VQTable(found).GetColumnCount(), 2u);
}

struct RefusedRow {
  const char* What;
  std::function<VQSTATUS(VQTable&)> Run;
  VQSTATUS Status;
};

// On a table of 2 rows and 3 columns.
std::vector<RefusedRow> RefusedRows() {
  return {
      {"no rows", [](VQTable& t) { return t.AppendRows(0); }, VQERR_ZERO_ROWS_COLUMNS},
      {"no columns", [](VQTable& t) { return t.InsertColumns(0, 0); }, VQERR_ZERO_ROWS_COLUMNS},
      {"254 rows more", [](VQTable& t) { return t.AppendRows(254); }, VQERR_ROW_COUNT_SUM},
      {"254 rows between", [](VQTable& t) { return t.InsertRows(9, 254); }, VQERR_ROW_COUNT_SUM},
      {"62 columns more", [](VQTable& t) { return t.AppendColumns(62); }, VQERR_COLUMN_COUNT_SUM},
      {"as many as there can be", [](VQTable& t) { return t.AppendColumns(~0UL); }, VQERR_COLUMN_COUNT_SUM},
      {"rows behind the last", [](VQTable& t) { return t.InsertRows(2, 1); }, VQERR_ROW_POSITION},
      {"columns behind the last", [](VQTable& t) { return t.InsertColumns(3, 1); }, VQERR_COLUMN_POSITION},
      {"no columns go", [](VQTable& t) { return t.DeleteColumns(7, 0); }, VQERR_ZERO_ROWS_COLUMNS},
      {"columns above the limit", [](VQTable& t) { return t.DeleteColumns(1, 64); }, VQERR_COLUMN_COUNT_SUM},
      {"a column that is not there", [](VQTable& t) { return t.DeleteColumns(3, 1); }, VQERR_COLUMN_POSITION},
      {"all columns", [](VQTable& t) { return t.DeleteColumns(0, 3); }, VQERR_DELETE_ALL_CELLS},
      {"up to the last column", [](VQTable& t) { return t.DeleteColumns(1, 2); }, VQERR_CELL_POSITION_COUNT},
      {"a row that is not there", [](VQTable& t) { return t.DeleteRows(2, 1); }, VQERR_ROW_POSITION},
      {"all rows", [](VQTable& t) { return t.DeleteRows(0, 2); }, VQERR_DELETE_ALL_CELLS},
      {"the last row", [](VQTable& t) { return t.DeleteRows(1, 1); }, VQERR_CELL_POSITION_COUNT},
      {"width of no column", [](VQTable& t) { return t.SetColumnWidth(3, 1000); }, VQERR_COLUMN_POSITION},
      {"a width above all", [](VQTable& t) { return t.SetColumnWidth(0, 32761); }, VQERR_CELL_SPACING},
      {"a width above the table's", [](VQTable& t) { return t.SetColumnWidth(0, 28801); }, VQERR_COLUMN_WIDTH_TABLE},
      {"a width that leaves 359", [](VQTable& t) { return t.SetColumnWidth(0, 28441); }, VQERR_COLUMN_WIDTH_REMAINING},
      {"a width that leaves 360", [](VQTable& t) { return t.SetColumnWidth(0, 28440); }, VQERR_COLUMN_WIDTH_SMALL},
      {"a width of 360", [](VQTable& t) { return t.SetColumnWidth(1, 360); }, VQERR_COLUMN_WIDTH_SMALL},
      {"a width below 0", [](VQTable& t) { return t.SetColumnWidth(1, -1); }, VQERR_TABLE_MARGINS},
      {"fraction of no column", [](VQTable& t) { return t.SetFractionalColumnWidth(3, 1); }, VQERR_COLUMN_POSITION},
      {"above 20 inches", [](VQTable& t) { return t.SetFractionalColumnWidth(0, 28801); }, VQERR_FRACTIONAL_WIDTH},
      {"column spacing above all", [](VQTable& t) { return t.SetColumnSpacing(32761); }, VQERR_CELL_SPACING},
      {"column spacing below 0", [](VQTable& t) { return t.SetColumnSpacing(-1); }, VQERR_INVALID_PARAMETER},
      {"spacing that leaves 360", [](VQTable& t) { return t.SetColumnSpacing(4620); }, VQERR_COLUMN_WIDTH_SMALL},
      {"row spacing above all", [](VQTable& t) { return t.SetRowSpacing(32761); }, VQERR_CELL_SPACING},
      {"a left margin below 0", [](VQTable& t) { return t.SetLeftMargin(-1); }, VQERR_INVALID_PARAMETER},
      {"a table off the page", [](VQTable& t) { return t.SetLeftMargin(36736); }, VQERR_OUT_OF_RANGE},
      {"units of no code", [](VQTable& t) { return t.SetUnits(VQUNITS(9)); }, VQERR_INVALID_PARAMETER},
      {"a style of no code", [](VQTable& t) { return t.SetBorderStyle(VQTABLEBORDERSTYLE(12)); },
       VQERR_INVALID_PARAMETER},
      {"text", [](VQTable& t) { return t.Append("a"); }, VQERR_TABLE_APPEND},
      {"an object", [](VQTable& t) { return t.Append(VQStylizedText(VQString("a"))); }, VQERR_TABLE_APPEND},
      {"a rich text", [](VQTable& t) { return t.Append(NewText()); }, VQERR_TABLE_APPEND},
      {"a value", [](VQTable& t) { return t.SetValue("a"); }, VQERR_CANT_INSERT_TYPE},
      {"a border above 10", [](VQTable& t) { return t(0, 0).SetTopBorderWidth(11); }, VQERR_CELL_BORDER},
      {"a table in a cell", [](VQTable& t) { return t(0, 0).Append(VQTable(1, 1)); }, VQERR_CANT_INSERT_TYPE},
      {"a row of none", [](VQTable& t) { return t(2, 0).SetTransparent(); }, VQERR_ROW_POSITION},
      {"a column of none", [](VQTable& t) { return t(0, 3).SetTransparent(); }, VQERR_COLUMN_POSITION},
      {"behind no cell",
       [](VQTable& t) {
         VQTableCell c;
         return t.GetNextCell(c, &c);
       },
       VQERR_CELL_REQUIRED},
      {"behind another's cell",
       [](VQTable& t) {
         VQTable o(1, 1);
         VQTableCell c = o(0, 0);
         return t.GetNextCell(c, &c);
       },
       VQERR_CELL_OF_OTHER_TABLE},
  };
}

TEST_F(Table, RefusesAndStaysAsItWas) {
  for (const RefusedRow& row : RefusedRows()) {
    SCOPED_TRACE(row.What);
    VQRichText text = NewText();
    VQTable table = TableIn(text, 2, 3);
    const std::string before = Written(text);
    for (const int throws : {0, 1}) {
      VQSetThrowAllErrors(throws);
      bool returned = false;
      const VQSTATUS status = StatusOf([&] {
        const VQSTATUS result = row.Run(table);
        returned = true;
        return result;
      });
      VQSetThrowAllErrors(0);
      EXPECT_EQ(status, row.Status) << throws;
      EXPECT_FALSE(throws && returned) << "the switch is on";
      EXPECT_EQ(Written(text), before);
    }
  }
}

TEST_F(Table, TakesSizesUpToItsLimits) {
  const struct {
    unsigned long Rows, Columns;
    VQSTATUS Status;
  } rows[] = {{255, 64, VQ_OK},           {256, 1, VQERR_ROW_COUNT},       {1, 65, VQERR_COLUMN_COUNT},
              {256, 65, VQERR_ROW_COUNT}, {0, 1, VQERR_ZERO_ROWS_COLUMNS}, {1, 0, VQERR_ZERO_ROWS_COLUMNS}};
  for (const auto& row : rows) {
    EXPECT_EQ(StatusOf([&] { VQTable(row.Rows, row.Columns); }), row.Status);
    VQRichText text = NewText();
    VQRTCursor cursor = At(text, 0);
    VQTable table;
    EXPECT_EQ(text.CreateTable(row.Rows, row.Columns, &cursor, &table), row.Status);
    EXPECT_EQ(table.IsNull(), row.Status != VQ_OK);
  }
  EXPECT_EQ(StatusOf([] { VQTableCellBody(255, 0); }), StatusOf([] { VQTableCellBody(-1, 0); }));
  EXPECT_NE(StatusOf([] { VQTableCellBody(0, 64); }), VQ_OK);
  VQTable one(1, 1);
  EXPECT_EQ(one.DeleteRows(0, 1), VQERR_DELETE_ALL_CELLS);
  EXPECT_EQ(one.DeleteColumns(0, 1), VQERR_DELETE_ALL_CELLS);
}

// The definitions stand in row 0 whatever happens to it.
TEST_F(Table, KeepsDefinitionsInRowZero) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 3, 2);
  const auto carriers = [&] {
    return IDs(table(0, 0), VQRTTYPE_PAB_DEFINITION).size() * 10 + IDs(table(0, 1), VQRTTYPE_PAB_DEFINITION).size();
  };
  ASSERT_EQ(table.InsertRows(0, 1), VQ_OK);
  EXPECT_EQ(IDs(table, VQRTTYPE_PAB_DEFINITION), (std::vector<int>{2, 3}));
  EXPECT_EQ(carriers(), 11u);
  EXPECT_EQ(TypesIn(table(0, 0)), (std::vector<VQRTTYPE>{VQRTTYPE_PAB_DEFINITION, VQRTTYPE_NEW_PARAGRAPH,
                                                         VQRTTYPE_PAB_REFERENCE, VQRTTYPE_STYLIZED_TEXT}));
  ASSERT_EQ(table.DeleteRows(0, 2), VQ_OK);
  EXPECT_EQ(carriers(), 11u);
  EXPECT_EQ(IDs(table, VQRTTYPE_PAB_REFERENCE), (std::vector<int>{2, 3, 2, 3}));
  EXPECT_EQ(TypesIn(table(0, 1)).front(), VQRTTYPE_PAB_DEFINITION);
}

std::string Row(int row, std::initializer_list<int> pabids, bool defines) {
  std::string records;
  int column = 0;
  for (const int pabid : pabids) {
    const int left = 1440 + 2000 * column;
    records += CellRecord(row, column, left, left + 2000, 2000);
    if (defines) records += Definition(pabid, left, left + 2000);
    records += Paragraph() + Reference(pabid) + Text("r" + std::to_string(row) + "c" + std::to_string(column));
    ++column;
  }
  return records;
}

std::string Begin(int flags = 2) { return Record(SIG_CD_TABLEBEGIN, Words({1440, 40, 60, 0, 0, flags})); }

// The margins of the style in force in a cell.
std::string MarginsIn(const VQTable& table, unsigned long row, unsigned long column) {
  VQRTCursor cursor;
  VQParagraphStyle style;
  EXPECT_EQ(table(row, column).GetCursor(&cursor), VQ_OK);
  EXPECT_EQ(cursor.GetParagraphStyle(&style), VQ_OK);
  const CDPABDEFINITION record = style.GetCDPABDefinition();
  return std::to_string(record.LeftMargin) + "-" + std::to_string(record.RightMargin);
}

VQTable TableAt(const VQRichText& text, int number) {
  VQRTObject found;
  EXPECT_EQ(text.FindFirst(VQRTTYPE_TABLE, &found), VQ_OK);
  for (; number > 0; --number) EXPECT_EQ(text.FindNext(found, VQRTTYPE_TABLE, &found), VQ_OK);
  VQTable table(found);
  EXPECT_EQ(table.SetUnits(VQUNITS_TWIPS), VQ_OK);
  return table;
}

// As other writers leave them: tables, and text, that live on the definitions of a table before them.
TEST_F(Table, ChangesNoStyleButItsOwn) {
  const std::string first = Begin() + Row(0, {5, 6}, true) + Row(1, {5, 6}, false) + TableEnd();
  const std::string second = Begin() + Row(0, {5, 6}, false) + Row(1, {5, 6}, false) + TableEnd();
  const std::string between = Paragraph() + Reference(1) + Text("x") + Paragraph();
  const std::string all = first + between + second + Paragraph() + Reference(6) + Text("y") + Paragraph() + second;
  for (int changed = 0; changed < 3; ++changed) {
    SCOPED_TRACE(changed);
    VQRichText text = RichText(all);
    ASSERT_EQ(TableAt(text, changed).SetColumnWidth(0, 1000), VQ_OK);
    VQRichText again = RichText(Written(text));
    for (int table = 0; table < 3; ++table) {
      SCOPED_TRACE(table);
      const bool moved = table == changed;
      EXPECT_EQ(MarginsIn(TableAt(again, table), 1, 0), moved ? "1440-2440" : "1440-3440");
      EXPECT_EQ(MarginsIn(TableAt(again, table), 1, 1), moved ? "2440-4440" : "3440-5440");
    }
    VQRTCursor cursor = At(again, 0);
    ASSERT_EQ(cursor.GotoNext("y"), VQ_OK);
    VQParagraphStyle style;
    ASSERT_EQ(cursor.GetParagraphStyle(&style), VQ_OK);
    EXPECT_EQ(style.GetCDPABDefinition().LeftMargin, 3440);
    EXPECT_EQ(Plain(again), Plain(RichText(all)));
  }
}

TEST_F(Table, GivesColumnsThatShareADefinitionOneEach) {
  VQRichText text = RichText(Begin() + Row(0, {5, 5}, true) + Row(1, {5, 5}, false) + TableEnd());
  VQTable table = TableAt(text, 0);
  ASSERT_EQ(table.SetLeftMargin(1540), VQ_OK);
  EXPECT_EQ(MarginsIn(table, 1, 0), "1540-3540");
  EXPECT_EQ(MarginsIn(table, 1, 1), "3540-5540");
}

TEST_F(Table, BringsIdentifiersOfItsOwn) {
  VQRichText source =
      RichText(Begin() + Row(0, {5, 6}, true) + TableEnd() + Begin() + Row(0, {5, 6}, false) + TableEnd());
  const VQTable other = TableAt(source, 1);
  VQRichText text = NewText();
  ASSERT_EQ(text.Append("before"), VQ_OK);
  VQTable alone(1, 2);
  VQRTCursor cursor = At(text, 6);
  ASSERT_EQ(text.Append(other), VQ_OK);
  ASSERT_EQ(text.Insert(other, &cursor), VQ_OK);
  ASSERT_EQ(text.Append(alone), VQ_OK);
  std::vector<int> all = IDs(TableAt(text, 0), VQRTTYPE_PAB_REFERENCE);
  for (int number : {1, 2}) {
    for (const int id : IDs(TableAt(text, number), VQRTTYPE_PAB_REFERENCE)) all.push_back(id);
  }
  std::sort(all.begin(), all.end());
  EXPECT_EQ(all, (std::vector<int>{2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(MarginsIn(TableAt(text, 0), 0, 1), "3440-5440") << "the definition comes along";
  EXPECT_EQ(MarginsIn(TableAt(text, 2), 0, 1), "15840-30240");
}

struct PlaceRow {
  const char* What;
  std::string Before;
  unsigned long Position;
  std::string After;  // "T" where the table stands
};

TEST_F(Table, StandsBetweenParagraphs) {
  const std::string p = Paragraph(), r = Reference(1), e = Text("");
  const PlaceRow rows[] = {
      {"alone", "", 0, r + e + p + "T" + p + r + e},
      {"in a text", r + Text("ab"), 1, r + Text("a") + p + "T" + p + r + Text("b")},
      {"behind a text", r + Text("ab"), 2, r + Text("ab") + p + "T" + p + r + e},
      {"at the start of a text", r + Text("ab"), 0, r + e + p + "T" + p + r + Text("ab")},
      {"behind an element", r + Text("a") + Unknown("u"), 2, r + Text("a") + Unknown("u") + p + "T" + p + r + e},
      {"in an empty paragraph", r + Text("a") + p + r + e, 1, r + Text("a") + p + "T" + p + r + e + p + r + e},
  };
  for (const PlaceRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(row.Before);
    VQRTCursor cursor = At(text, row.Position);
    ASSERT_EQ(text.CreateTable(1, 1, &cursor), VQ_OK);
    std::string written = Written(text);
    const std::size_t begin = written.find(Begin(3)), end = written.find(TableEnd());
    ASSERT_NE(begin, std::string::npos);
    written.replace(begin, end + TableEnd().size() - begin, "T");
    EXPECT_EQ(written, row.After);
    ASSERT_EQ(text.Insert("!", &cursor), VQ_OK);
    EXPECT_EQ(Plain(text).find("\t\n\n!") != std::string::npos, true) << Plain(text);
  }
}

struct RangeRow {
  const char *From, *To;
  VQSTATUS Status;
  const char* Text;
};

TEST_F(Table, GivesTextOfRanges) {
  const std::string table = Begin() + Row(0, {5, 6}, true) + Row(1, {5, 6}, false) + TableEnd();
  VQRichText text = RichText(Text("ahead") + table + Text("between") + table + Begin() + Text("loose") + TableEnd());
  const RangeRow rows[] = {
      {"r0c1", "r1c0", VQ_OK, "r0c1\t\n"},
      {"0c0", "c1", VQ_OK, "0c0\tr0"},
      {"ahead", "r0c0", VQERR_RT_SELECTION_INVALID, ""},
      {"r1c1", "between", VQERR_RT_SELECTION_INVALID, ""},
      {"r1c1", "r0c0", VQERR_CURSOR_ORDER, ""},
      {"loose", "se", VQERR_CELL_CHILD, ""},
  };
  for (const RangeRow& row : rows) {
    SCOPED_TRACE(row.From);
    VQRTCursor start = At(text, 0), end = At(text, 0);
    ASSERT_EQ(start.GotoFirst(row.From), VQ_OK);
    ASSERT_EQ(end.GotoFirst(row.To), VQ_OK);
    VQString string;
    EXPECT_EQ(text.GetText(start, end, &string), row.Status);
    EXPECT_EQ(TextOf(string), row.Text);
  }
}

TEST_F(Table, KeepsMarginsUnderAStyle) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 2, 2);
  Write(table, 1, 1, "word");
  VQRTCursor start, end;
  ASSERT_EQ(table(1, 1).GetCursor(&start), VQ_OK);
  ASSERT_EQ(table(1, 1).GetEndCursor(&end), VQ_OK);
  VQParagraphStyle style, found;
  ASSERT_EQ(style.SetUnits(VQUNITS_TWIPS), VQ_OK);
  ASSERT_EQ(style.SetLeftMargin(500), VQ_OK);
  ASSERT_EQ(style.SetFirstLineIndentation(VQINDENTATION_INDENT), VQ_OK);
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  ASSERT_EQ(style.SetHideFromBrowsers(1), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
  ASSERT_EQ(style.SetAlignment(VQALIGNMENT_NO_CHANGE), VQ_OK);
  ASSERT_EQ(style.SetSpacingAbove(3), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
  ASSERT_EQ(table.SetColumnSpacing(100), VQ_OK);
  ASSERT_EQ(start.GetParagraphStyle(&found), VQ_OK);
  const CDPABDEFINITION record = found.GetCDPABDefinition();
  EXPECT_EQ(record.JustifyMode, 2);
  EXPECT_EQ(record.SpacingAbove, 3);
  EXPECT_EQ(record.Flags, 0x0186);
  EXPECT_EQ(record.Flags2, 1);
  EXPECT_EQ(record.FirstLineMargin - record.LeftMargin, 360);
  EXPECT_EQ(MarginsIn(table, 1, 1), "16040-30040");
  EXPECT_EQ(MarginsIn(table, 0, 1), "16040-30040") << "the rest of the column";
  VQRTCursor other;
  ASSERT_EQ(table(0, 0).GetCursor(&other), VQ_OK);
  EXPECT_EQ(text.SetParagraphStyle(other, end, style), VQERR_INVALID_PARAMETER) << "of two cells";
  ASSERT_EQ(style.SetAlignment(1), VQ_OK);
  ASSERT_EQ(table(0, 0).GetEndCursor(&other), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(other, style), VQ_OK) << "at the end of a cell";
  for (const auto& [column, alignment] : {std::pair(0UL, 1), {1UL, 0}}) {
    ASSERT_EQ(table(0, column).GetCursor(&other), VQ_OK);
    ASSERT_EQ(other.GetParagraphStyle(&found), VQ_OK);
    EXPECT_EQ(found.GetAlignment(), alignment);
  }
  VQPABDefinition definition;
  VQRTObject companion;
  EXPECT_EQ(table.GetTableBody()->FindSameParagraphStyle(style, &definition, &companion), VQERR_NOT_IMPLEMENTED);
}

// A style that is set on the text around a table, and on a part of it, leaves cells where their columns are.
TEST_F(Table, KeepsMarginsUnderAStyleOfTheWholeText) {
  VQRichText text = NewText();
  ASSERT_EQ(text.Append("front\nback"), VQ_OK);
  VQTable table = TableIn(text, 2, 2);
  Write(table, 1, 1, "a\nword");
  VQParagraphStyle style;
  ASSERT_EQ(style.SetAlignment(2), VQ_OK);
  VQRTCursor start, end;
  ASSERT_EQ(text.GetCursor(&start), VQ_OK);
  ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
  const std::string once = Written(text);
  ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
  EXPECT_EQ(Written(text), once) << "definitions serve again";
  ASSERT_EQ(table.SetColumnWidth(0, 1000), VQ_OK);
  ASSERT_EQ(table.AppendRows(1), VQ_OK);
  for (const unsigned long row : {0UL, 1UL, 2UL}) {
    EXPECT_EQ(MarginsIn(table, row, 0), "1440-2440") << row;
    EXPECT_EQ(MarginsIn(table, row, 1), "2440-30240") << row;
  }
  ASSERT_EQ(style.SetAlignment(1), VQ_OK);
  ASSERT_EQ(end.GotoFirst("a"), VQ_OK);
  ASSERT_EQ(text.SetParagraphStyle(start, end, style), VQ_OK);
  VQParagraphStyle found;
  for (const auto& [word, alignment] : {std::pair("a", 1), {"word", 2}, {"front", 2}}) {
    ASSERT_EQ(end.GotoFirst(word), VQ_OK);
    ASSERT_EQ(end.GetParagraphStyle(&found), VQ_OK);
    EXPECT_EQ(found.GetCDPABDefinition().JustifyMode, alignment) << word;
  }
}

TEST_F(Table, DrawsBorders) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 2, 2);
  ASSERT_EQ(table(0, 0).SetTopBorderType(VQTABLEBORDERTYPE_DOUBLE), VQ_OK);
  ASSERT_EQ(table(0, 0).SetRightBorderWidth(10), VQ_OK);
  EXPECT_EQ(table(0, 0).GetCDTableCell().Border, 0x65);
  EXPECT_EQ(table(0, 0).GetCDTableCell().BorderWidth, 0x11A1);
  EXPECT_EQ(table(0, 0).GetRightBorderWidth(), 10u);
  ASSERT_EQ(table.Outline(VQTABLEBORDERTYPE_DOUBLE), VQ_OK);
  EXPECT_EQ(table(0, 0).GetCDTableCell().Border, 0x22);
  EXPECT_EQ(table(1, 1).GetCDTableCell().Border, 0x88);
  EXPECT_EQ(table(1, 1).GetLeftBorderType(), VQTABLEBORDERTYPE_NONE);
  EXPECT_EQ(table(1, 1).GetBottomBorderType(), VQTABLEBORDERTYPE_DOUBLE);
  const std::string margins = MarginsIn(table, 1, 0);
  ASSERT_EQ(table.Outline(VQTABLEBORDERSTYLE_8), VQ_OK);
  EXPECT_EQ(table(0, 0).GetCDTableCell().BorderWidth, 0x0101);
  EXPECT_EQ(table.GetBorderStyle(), VQTABLEBORDERSTYLE_8);
  EXPECT_EQ(MarginsIn(table, 1, 0), "1470-15840");
  ASSERT_EQ(table.SetBorderStyle(VQTABLEBORDERSTYLE_4), VQ_OK);
  EXPECT_EQ(MarginsIn(table, 1, 0), "1470-15840");
  ASSERT_EQ(table.SetBorderStyle(VQTABLEBORDERSTYLE_2), VQ_OK);
  EXPECT_EQ(MarginsIn(table, 1, 0), margins);
  ASSERT_EQ(table.SetBackgroundColor(7), VQ_OK);
  EXPECT_EQ(table(1, 0).GetBackgroundColor(), 7);
  EXPECT_EQ(table(1, 0).GetCDTableCell().Flags, 3);
  ASSERT_EQ(table.SetTransparent(), VQ_OK);
  EXPECT_EQ(table(1, 0).GetCDTableCell().Flags, 2);
  const VQTableCell odd(VQRTObject(new VQTableCellBody(0, 0)));
  EXPECT_EQ(StatusOf([&] {
              VQTable t;
              return odd.GetTable(&t);
            }),
            VQERR_CELL_PARENT);
}

// An older table has its spacing in the older fields.
TEST_F(Table, MovesToTheNewerSpacing) {
  VQRichText text =
      RichText(Record(SIG_CD_TABLEBEGIN, Words({1440, 20, 90, 0, 0, 0})) + Row(0, {5, 6}, true) + TableEnd());
  VQTable table = TableAt(text, 0);
  EXPECT_EQ(table.GetColumnSpacing(), 20);
  EXPECT_EQ(table.GetRowSpacing(), 90);
  EXPECT_EQ(table.SetFractionalColumnWidth(0, 100), VQWARN_AUTOMATIC_WIDTH);
  EXPECT_FALSE(text.IsDirty());
  ASSERT_EQ(table.SetBorderStyle(VQTABLEBORDERSTYLE_4), VQ_OK);
  CDTABLEBEGIN begin = table.GetCDTableBegin();
  EXPECT_EQ(
      Words({begin.HorizCellSpace, begin.VertCellSpace, begin.V4HorizCellSpace, begin.V4VertCellSpace, begin.Flags}),
      Words({40, 90, 20, 90, 6}));
  ASSERT_EQ(table.SetColumnSpacing(30), VQ_OK);
  ASSERT_EQ(table.SetRowSpacing(10), VQ_OK);
  begin = table.GetCDTableBegin();
  EXPECT_EQ(Words({begin.HorizCellSpace, begin.VertCellSpace, begin.V4HorizCellSpace, begin.V4VertCellSpace}),
            Words({40, 60, 30, 10}));
  EXPECT_EQ(table.GetColumnWidth(1), 1980);
}

TEST_F(Table, SharesTwentyInches) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 1, 4);
  EXPECT_EQ(table.GetFractionalColumnWidth(3), 7200);
  ASSERT_EQ(table.SetFractionalColumnWidth(0, 14400), VQ_OK);
  EXPECT_EQ(table.GetFractionalColumnWidth(0), 14400);
  EXPECT_EQ(table.GetFractionalColumnWidth(3), 4800);
  EXPECT_EQ(table.GetColumnWidth(0), 7200) << "widths stay";
  ASSERT_EQ(table.AppendRows(1), VQ_OK);
  ASSERT_EQ(table.SetLeftMargin(2000), VQ_OK);
  ASSERT_EQ(table.SetBorderStyle(VQTABLEBORDERSTYLE_4), VQ_OK);
  ASSERT_EQ(table.SetColumnSpacing(20), VQ_OK);
  for (const unsigned long row : {0UL, 1UL}) {
    EXPECT_EQ(table(row, 0).GetCDTableCell().FractionalWidth, 14400) << row;
    EXPECT_EQ(table(row, 3).GetCDTableCell().FractionalWidth, 4800) << row;
  }
  EXPECT_EQ(VQTable(1, 19)(0, 18).GetCDTableCell().FractionalWidth, 1515) << "a cell's width, without a rest";
  ASSERT_EQ(table.SetColumnSpacing(0), VQ_OK);
  ASSERT_EQ(table.SetAutomaticWidth(0), VQ_OK);
  EXPECT_EQ(table.GetFractionalColumnWidth(0), 0);
  ASSERT_EQ(table.SetAutomaticWidth(1), VQ_OK);
  EXPECT_EQ(table.GetFractionalColumnWidth(0), 7200);
  ASSERT_EQ(table.SetUnits(VQUNITS_INCHES), VQ_OK);
  EXPECT_EQ(table.GetColumnWidth(0), 5);
  EXPECT_EQ(table.Convert(1.5), 2160u);
  EXPECT_EQ(table.Convert(720UL), 0.5);
}

// Each operation is taken back and done again byte for byte, also where a second table lives on the definitions.
TEST_F(Table, GoesBackThroughItsHistory) {
  const std::vector<std::pair<const char*, std::function<VQSTATUS(VQTable&, VQRichText&)>>> rows = {
      {"rows in front", [](VQTable& t, VQRichText&) { return t.InsertRows(0, 2); }},
      {"row 0 goes", [](VQTable& t, VQRichText&) { return t.DeleteRows(0, 1); }},
      {"columns", [](VQTable& t, VQRichText&) { return t.InsertColumns(1, 2); }},
      {"a column goes", [](VQTable& t, VQRichText&) { return t.DeleteColumns(0, 1); }},
      {"widths", [](VQTable& t, VQRichText&) { return t.SetColumnWidth(0, 3000); }},
      {"spacing", [](VQTable& t, VQRichText&) { return t.SetColumnSpacing(50); }},
      {"borders", [](VQTable& t, VQRichText&) { return t.Outline(VQTABLEBORDERSTYLE_8); }},
      {"colours", [](VQTable& t, VQRichText&) { return t.SetBackgroundColor(9); }},
      {"text", [](VQTable& t, VQRichText&) { return t(1, 1).SetValue("a\nb"); }},
      {"a copy", [](VQTable& t, VQRichText& text) { return text.Append(t); }},
      {"no table", [](VQTable& t, VQRichText& text) { return text.Delete(&t); }},
  };
  const std::string table = Begin(3) + Row(0, {5, 6}, true) + Row(1, {5, 6}, false) + TableEnd();
  const std::string second = Begin(3) + Row(0, {5, 6}, false) + Row(1, {5, 6}, false) + TableEnd();
  for (const auto& [what, edit] : rows) {
    SCOPED_TRACE(what);
    VQRichText text = RichText(table + Paragraph() + Reference(6) + Text("x") + Paragraph() + second);
    const std::string before = Written(text);
    VQRTHistory history;
    ASSERT_EQ(history.Watch(text), VQ_OK);
    VQTable edited = TableAt(text, 0);
    ASSERT_EQ(edit(edited, text), VQ_OK);
    const std::string after = Written(text), plain = Plain(text);
    EXPECT_NE(after, before);
    ASSERT_EQ(history.Undo(), VQ_OK);
    EXPECT_EQ(Written(text), before);
    ASSERT_EQ(history.Redo(), VQ_OK);
    EXPECT_EQ(Written(text), after);
    EXPECT_EQ(Plain(text), plain);
  }
}

struct HostileRow {
  const char* What;
  std::string Cells;
  unsigned long Rows, Columns;
  VQSTATUS Change;
};

// Bytes behind the fields that are known stay with their records, which stay readable.
TEST_F(Table, KeepsLongerRecordsWhole) {
  const auto longer = [](std::string record, int lengthAt) {
    record[static_cast<std::size_t>(lengthAt)] = static_cast<char>(record[static_cast<std::size_t>(lengthAt)] + 4);
    return record + "more";
  };
  VQRichText text = RichText(longer(Begin(), 1) + longer(CellRecord(0, 0, 1440, 3440, 0), 1) +
                             longer(Definition(5, 1440, 3440), 2) + Reference(5) + Text("a") + TableEnd());
  VQTable table = TableAt(text, 0);
  ASSERT_EQ(table.SetColumnSpacing(100), VQ_OK);
  ASSERT_EQ(table.SetBackgroundColor(3), VQ_OK);
  const std::string written = Written(text);
  const VQRichText again = RichText(written);
  EXPECT_EQ(Written(again), written);
  EXPECT_EQ(TableAt(again, 0)(0, 0).GetBackgroundColor(), 3);
  std::size_t kept = 0;
  for (std::size_t at = written.find("more"); at != std::string::npos; at = written.find("more", at + 1)) ++kept;
  EXPECT_EQ(kept, 3u);
}

TEST_F(Table, TakesWhatStrangersWrite) {
  const std::string cell = CellRecord(0, 0, 1440, 3440, 0) + Definition(5, 1440, 3440) + Reference(5) + Text("a");
  const std::string below = CellRecord(1, 0, 1440, 3440, 0) + Reference(5) + Text("b");
  const std::string merged = CellRecord(0, 0, 1440, 5440, 0) + Definition(5, 1440, 5440) + Reference(5) + Text("a") +
                             CellRecord(1, 0, 1440, 3440, 0) + Reference(5) + Text("b") +
                             CellRecord(1, 1, 3440, 5440, 0) + Reference(6) + Text("c");
  const HostileRow rows[] = {
      {"no cell", "", 0, 0, VQERR_RT_INVALID},
      {"text alone", Text("a"), 0, 0, VQERR_RT_INVALID},
      {"cells out of order", below + cell, 2, 1, VQERR_RT_INVALID},
      {"a cell twice", cell + cell, 1, 1, VQERR_RT_INVALID},
      {"a row 255", cell + CellRecord(255, 0, 1440, 3440, 0) + Reference(5), 256, 1, VQERR_ROW_COUNT_SUM},
      {"a column 200", cell + CellRecord(0, 200, 1440, 3440, 0) + Reference(5), 1, 201, VQERR_RT_INVALID},
      {"margins the wrong way", CellRecord(0, 0, 3440, 1440, 0) + Definition(5, 0, 0) + Reference(5), 1, 1, VQ_OK},
      {"a record cut short", Record(SIG_CD_TABLECELL, Bytes({0, 0, 1})), 1, 1, VQERR_RT_INVALID},
      {"no reference", CellRecord(0, 0, 1440, 3440, 0) + Text("a"), 1, 1, VQERR_CELL_PABREFERENCE},
      {"a cell over two columns", merged, 2, 2, VQ_OK},
  };
  for (const HostileRow& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(Begin() + row.Cells + TableEnd());
    VQTable table = TableAt(text, 0);
    EXPECT_EQ(table.GetRowCount(), row.Rows);
    EXPECT_EQ(table.GetColumnCount(), row.Columns);
    const std::string before = Written(text);
    EXPECT_EQ(table.AppendRows(1), row.Change);
    EXPECT_EQ(Written(text) == before, row.Change != VQ_OK);
    for (const VQSTATUS status : {table.SetLeftMargin(2000), table.SetBackgroundColor(3), table.InsertColumns(0, 1)}) {
      EXPECT_NE(status, VQERR_CORRUPTED);
    }
    EXPECT_EQ(Plain(RichText(Written(text))), Plain(text));
    VQRichText other = NewText();
    EXPECT_EQ(other.Append("q"), VQ_OK);
    EXPECT_EQ(other.Append(text), VQ_OK);
  }
  VQRichText open = RichText(Begin() + cell);
  VQRTCursor cursor;
  EXPECT_EQ(open.GetCursor(&cursor), VQERR_RT_TRUNCATED);
}

// Paragraph records that end too early stay what they are; a cell's record that does is refused before all changes.
TEST_F(Table, ChangesAllOfADamagedTableOrNothing) {
  const auto cells = [](const std::string& first, const std::string& second) {
    return CellRecord(0, 0, 1440, 3440, 0) + first + Text("a") + CellRecord(0, 1, 3440, 5440, 0) + second + Text("b");
  };
  const std::string left = Definition(5, 1440, 3440) + Reference(5), right = Definition(6, 3440, 5440) + Reference(6);
  const struct {
    const char* What;
    std::string Cells;
    VQSTATUS Status;
  } rows[] = {
      {"a reference", cells(left, right + Record(SIG_CD_PABREFERENCE, "")), VQ_OK},
      {"a column's reference", cells(left, Record(SIG_CD_PABREFERENCE, "")), VQ_OK},
      {"a definition", cells(left, right + Record(SIG_CD_PABDEFINITION, Words({6, 0, 0}))), VQ_OK},
      {"a cell",
       cells(left, right).substr(0, 18) + left + Text("a") +
           Record(SIG_CD_TABLECELL, Bytes({0, 1}) + Words({3440, 5440, 0})) + right + Text("b"),
       VQERR_RT_INVALID},
  };
  const std::vector<std::pair<const char*, std::function<VQSTATUS(VQTable&, VQRichText&)>>> changes = {
      {"spacing", [](VQTable& t, VQRichText&) { return t.SetColumnSpacing(50); }},
      {"columns", [](VQTable& t, VQRichText&) { return t.InsertColumns(1, 2); }},
      {"outline", [](VQTable& t, VQRichText&) { return t.Outline(VQTABLEBORDERSTYLE_4); }},
      {"a copy", [](VQTable& t, VQRichText& text) { return text.Append(t); }},
  };
  for (const auto& row : rows) {
    for (const auto& [what, change] : changes) {
      SCOPED_TRACE(std::string(row.What) + ": " + what);
      VQRichText text = RichText(Begin() + row.Cells + TableEnd());
      VQTable table = TableAt(text, 0);
      const std::string before = Written(text);
      const VQSTATUS status = change(table, text);
      EXPECT_TRUE(status == VQ_OK || row.Status != VQ_OK);
      EXPECT_EQ(Written(text) == before, status != VQ_OK);
    }
  }
}

TEST_F(Table, MovesACellOverTwoColumnsWithThem) {
  const std::string merged = CellRecord(0, 0, 1440, 5440, 0) + Definition(5, 1440, 5440) + Paragraph() + Reference(5) +
                             CellRecord(1, 0, 1440, 3440, 0) + Paragraph() + Reference(5) +
                             CellRecord(1, 1, 3440, 5440, 0) + Paragraph() + Reference(6);
  VQRichText text = RichText(Begin() + merged + TableEnd());
  VQTable table = TableAt(text, 0);
  const auto box = [&](unsigned long row, unsigned long column) {
    const CDTABLECELL record = table(row, column).GetCDTableCell();
    return std::to_string(record.LeftMargin) + "-" + std::to_string(record.RightMargin);
  };
  ASSERT_EQ(table.SetColumnWidth(1, 3000), VQ_OK);
  EXPECT_EQ(box(0, 0), "1440-6440");
  ASSERT_EQ(table.SetColumnWidth(0, 1000), VQ_OK);
  EXPECT_EQ(box(0, 0), "1440-5440");
  ASSERT_EQ(table(0, 0).SetCDTableCellColumnSpan(2), VQ_OK);
  ASSERT_EQ(table.InsertColumns(1, 1), VQ_OK);
  EXPECT_EQ(box(0, 0), "1440-8440");
  EXPECT_EQ(box(1, 2), "5440-8440");
  EXPECT_EQ(table(0, 0).GetCDTableCell().ColumnSpan, 3);
  EXPECT_EQ(MarginsIn(table, 1, 1), "2440-5440");
  EXPECT_EQ(StatusOf([&] { return table(0, 1).SetTransparent(); }), VQERR_RT_INVALID) << "that place is taken";
  ASSERT_EQ(table.DeleteColumns(1, 1), VQ_OK);
  EXPECT_EQ(box(1, 1), "2440-5440");
  EXPECT_EQ(table(0, 0).GetCDTableCell().ColumnSpan, 2);
  EXPECT_EQ(StatusOf([&] { return table(0, 1).SetTransparent(); }), VQERR_RT_INVALID);
}

// Where a cell over two columns (a row of it alone) is what is left, the column that it covered is no more.
TEST_F(Table, GoesOnWithoutLinesThatLostTheirCells) {
  const auto cell = [](int row, int column, int left, int right, bool defines) {
    const int pabid = 5 + column;
    return CellRecord(row, column, left, right, 0) + (defines ? Definition(pabid, left, right) : "") + Paragraph() +
           Reference(pabid) + Text(std::to_string(row) + std::to_string(column));
  };
  const std::string heads = cell(0, 0, 1440, 3440, true) + cell(0, 1, 3440, 5440, true) + cell(0, 2, 5440, 7440, true);
  const std::string wide = cell(1, 0, 1440, 5440, false), last = cell(1, 2, 5440, 7440, false);
  const struct {
    const char* What;
    std::string Cells;
    VQSTATUS (*Edit)(VQTable&);
    unsigned long Rows, Columns;
    const char* Text;
  } rows[] = {
      {"the last column", heads + wide, [](VQTable& t) { return t.DeleteRows(0, 1); }, 1, 1, "10\t\n"},
      {"a column between", heads + wide + last, [](VQTable& t) { return t.DeleteRows(0, 1); }, 1, 2, "10\t12\t\n"},
      {"the last row", heads + wide, [](VQTable& t) { return t.DeleteColumns(0, 1); }, 1, 2, "01\t02\t\n"},
      {"a row between", heads + wide + cell(2, 0, 1440, 3440, false) + cell(2, 1, 3440, 5440, false),
       [](VQTable& t) { return t.DeleteColumns(0, 1); }, 2, 2, "01\t02\t\n21\t\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(Begin() + row.Cells + TableEnd());
    VQTable table = TableAt(text, 0);
    ASSERT_EQ(table(1, 0).SetCDTableCellColumnSpan(2), VQ_OK);
    ASSERT_EQ(row.Edit(table), VQ_OK);
    EXPECT_EQ(table(0, 0).GetCDTableCell().ColumnSpan, 1);
    const VQRichText again = RichText(Written(text));
    for (const VQTable& each : {table, TableAt(again, 0)}) {
      VQString string;
      EXPECT_EQ(each.GetRowCount() * 10 + each.GetColumnCount(), row.Rows * 10 + row.Columns);
      EXPECT_EQ(each.GetText(&string), VQ_OK);
      EXPECT_EQ(TextOf(string), row.Text);
    }
    EXPECT_EQ(table.SetColumnWidth(0, 1000), VQ_OK);
    EXPECT_EQ(table.AppendRows(1), VQ_OK);
    EXPECT_EQ(table.AppendColumns(1), VQ_OK);
  }
}

TEST_F(Table, EditsInsideCells) {
  VQRichText text = NewText();
  VQTable table = TableIn(text, 2, 2);
  Write(table, 0, 0, "one\ntwo");
  VQTableCell cell = table(0, 0);
  VQRichText part;
  ASSERT_EQ(text.GetRichText(cell, &part), VQ_OK);
  EXPECT_EQ(Plain(part), "one\ntwo");
  VQRTCursor start, end;
  ASSERT_EQ(cell.GetCursor(&start), VQ_OK);
  ASSERT_EQ(cell.GetEndCursor(&end), VQ_OK);
  ASSERT_EQ(text.Delete(&start, &end), VQ_OK);
  ASSERT_EQ(text.Insert(part, &start), VQ_OK);
  ASSERT_EQ(table(1, 1).SetValue("new"), VQ_OK);
  ASSERT_EQ(cell.SetValue("newer"), VQ_OK);
  EXPECT_EQ(table.SetLeftMargin(2000), VQ_OK) << "the column's definition is there";
  EXPECT_EQ(Plain(text), "\nnewer\t\t\n\tnew\t\n\n");
  VQRTObject object(cell);
  EXPECT_EQ(text.Delete(&object), VQERR_INAPPROPRIATE);
  VQRTCursor ahead = At(text, 0), behind;
  ASSERT_EQ(cell.GetCursor(&start), VQ_OK);
  ASSERT_EQ(text.GetEndCursor(&behind), VQ_OK);
  EXPECT_EQ(text.Delete(&ahead, &start), VQERR_RT_SELECTION_INVALID);
  ASSERT_EQ(text.Delete(&ahead, &behind), VQ_OK);
  EXPECT_EQ(Plain(text), "");
  EXPECT_TRUE(cell.GetRTObjectBody()->IsClosed());
  EXPECT_EQ(table.AppendRows(1), VQERR_OBJECT_CLOSED);
}

// A text that uses all identifiers but so many, the highest one among them.
std::string UsesAllBut(int free) {
  std::string records;
  for (int id = 0xFFFF; id > free; --id) records += Reference(id);
  return records + Text("x");
}

// When the highest identifier is taken, those that are left serve, and each once.
TEST_F(Table, TakesTheIdentifiersThatAreLeft) {
  const struct {
    const char* What;
    int Free;
    std::function<VQSTATUS(VQTable&)> Edit;
    VQSTATUS Status;
  } rows[] = {
      {"a table", 3, nullptr, VQ_OK},
      {"a table, too few", 2, nullptr, VQERR_OUT_OF_RANGE},
      // A paragraph behind the table uses the identifier of its first column, so that the table's are made anew.
      {"columns", 8, [](VQTable& table) { return table.AppendColumns(2); }, VQ_OK},
      {"columns, too few", 7, [](VQTable& table) { return table.AppendColumns(2); }, VQERR_OUT_OF_RANGE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(UsesAllBut(row.Free));
    VQRTCursor cursor = At(text, 0);
    std::string before = Written(text);
    VQTable table;
    VQSTATUS status = text.CreateTable(2, 3, &cursor, &table);
    if (row.Edit) {
      ASSERT_EQ(status, VQ_OK);
      before = Written(text);
      status = row.Edit(table);
    }
    ASSERT_EQ(status, row.Status);
    if (status != VQ_OK) {
      EXPECT_EQ(Written(text), before);
      continue;
    }
    std::set<std::uint16_t> ids;
    for (const VQTableCellBody* head : table.GetTableBody()->ColumnHeads()) {
      ids.insert(VQTableBody::ColumnPABID(*head));
    }
    EXPECT_EQ(ids.size(), table.GetColumnCount());
  }
}

// So it is with a style of a whole text: a number for each column, and one for what stands around.
TEST_F(Table, AStyleTakesEachIdentifierOnce) {
  for (const int free : {7, 6}) {
    VQRichText text = RichText(UsesAllBut(free));
    VQRTCursor cursor = At(text, 1), end;
    ASSERT_EQ(text.CreateTable(1, 3, &cursor), VQ_OK);
    ASSERT_EQ(text.Append("y"), VQ_OK);
    ASSERT_EQ(text.GetEndCursor(&end), VQ_OK);
    const std::string before = Written(text);
    VQParagraphStyle style;
    ASSERT_EQ(style.SetAlignment(2), VQ_OK);
    ASSERT_EQ(text.SetParagraphStyle(At(text, 0), end, style), free == 7 ? VQ_OK : VQERR_OUT_OF_RANGE);
    EXPECT_EQ(Written(text) == before, free == 6);
    std::set<std::uint16_t> ids;
    VQRTObject object;
    VQSTATUS found = text.FindFirst(VQRTTYPE_PAB_DEFINITION, &object);
    for (; found == VQ_OK; found = text.FindNext(object, VQRTTYPE_PAB_DEFINITION, &object)) {
      EXPECT_TRUE(ids.insert(vq::pab::IDsOf(*object.GetRTObjectBody()).First).second);
    }
    EXPECT_EQ(ids.size(), free == 7 ? 7u : 3u);
  }
}

// What a hotspot's paragraphs are styled by comes along under identifiers of the target's.
TEST_F(Table, AHotspotBringsItsStyles) {
  VQRichText from = RichText(Record(SIG_CD_PABDEFINITION, Bytes({5, 0}) + std::string(64, '\0')) + Hotspot(11) +
                             Reference(5) + Text("to") + HotspotEnd());
  VQRichText to = RichText(Reference(5) + Text("x"));
  VQRTObject hotspot, placed;
  ASSERT_EQ(from.FindFirst(VQRTTYPE_LINK_HOTSPOT, &hotspot), VQ_OK);
  VQRTCursor cursor = At(to, 1);
  ASSERT_EQ(to.Insert(hotspot, &cursor, &placed), VQ_OK);
  const VQRTBaseContainerBody* inside = placed.GetRTObjectBody()->AsBase();
  const VQRTObjectBody* definition = inside->FirstOfType(VQRTTYPE_PAB_DEFINITION);
  const VQRTObjectBody* reference = inside->FirstOfType(VQRTTYPE_PAB_REFERENCE);
  ASSERT_TRUE(definition && reference);
  EXPECT_EQ(vq::pab::IDsOf(*definition).First, 6);
  EXPECT_EQ(vq::pab::IDsOf(*reference).Second, 6);
}

}  // namespace
