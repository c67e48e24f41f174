// Tables: their records, what each operation refuses, identifiers, neighbours, styles and texts.
#include <functional>

#include "tests/vq/support/records.h"
#include "vq/richtext/pabtree.h"
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
    VQSTATUS status = VQ_OK;
    const VQSTATUS thrown = StatusOf([&] { return status = row.Run(table); });
    EXPECT_EQ(thrown == VQ_OK ? status : thrown, row.Status);
    EXPECT_EQ(Written(text), before);
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

}  // namespace
