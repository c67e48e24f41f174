// Random edits of tables against a plain two-dimensional model, also after a save.
#include <cmath>
#include <random>

#include "tests/vq/support/records.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/vqrttabl.h"

namespace {

using namespace vqtest;

// Spans are only stored: they stay with their cell, and new cells have none.
struct Cell {
  std::string Text;
  int RowSpan = 1, ColumnSpan = 1;
};

// Columns as widths; what is refused leaves it alone.
struct Model {
  std::vector<std::vector<Cell>> Rows;
  std::vector<long> Widths;
  long Left = 1440, Spacing = 0;
  bool Automatic = true;

  Model(std::size_t rows, std::size_t columns)
      : Rows(rows, std::vector<Cell>(columns)), Widths(columns, 28800 / static_cast<long>(columns)) {}

  long Width() const {
    long width = 0;
    for (const long each : Widths) width += each + 2 * Spacing;
    return width;
  }
  void Scale(double factor, long but = -1) {
    for (std::size_t i = 0; i < Widths.size(); ++i) {
      if (static_cast<long>(i) != but) Widths[i] = std::lround(static_cast<double>(Widths[i]) * factor);
    }
  }
  void AddRows(std::size_t at, std::size_t count) {
    Rows.insert(Rows.begin() + static_cast<long>(at), count, std::vector<Cell>(Widths.size()));
  }
  void DeleteRows(std::size_t at, std::size_t count) {
    Rows.erase(Rows.begin() + static_cast<long>(at), Rows.begin() + static_cast<long>(at + count));
  }
  void AddColumns(std::size_t at, std::size_t count) {
    const std::size_t model = std::min(at, Widths.size() - 1);
    const double width = static_cast<double>(Width());
    if (Automatic)
      Scale(width / (width + static_cast<double>(count) * static_cast<double>(Widths[model] + 2 * Spacing)));
    const long added = Widths[model];
    Widths.insert(Widths.begin() + static_cast<long>(at), count, added);
    for (auto& row : Rows) row.insert(row.begin() + static_cast<long>(at), count, Cell());
  }
  void DeleteColumns(std::size_t at, std::size_t count) {
    const double width = static_cast<double>(Width());
    const auto first = static_cast<long>(at), end = static_cast<long>(at + count);
    Widths.erase(Widths.begin() + first, Widths.begin() + end);
    if (Automatic) Scale(width / static_cast<double>(Width()));
    for (auto& row : Rows) row.erase(row.begin() + first, row.begin() + end);
  }
  void SetWidth(std::size_t column, long width) {
    const double table = static_cast<double>(Width()), old = static_cast<double>(Widths[column]);
    if (Automatic && table > old)
      Scale((table - static_cast<double>(width)) / (table - old), static_cast<long>(column));
    Widths[column] = width;
  }
  void SetSpacing(long spacing) {
    for (long& width : Widths) width -= 2 * (spacing - Spacing);
    Spacing = spacing;
  }
  // From a place in a cell to one in the same or a later cell; cells are counted along rows.
  std::string Text(std::size_t first, std::size_t from, std::size_t last, std::size_t to) const {
    std::string text;
    for (std::size_t cell = first; cell <= last; ++cell) {
      std::string words = At(cell).Text;
      if (cell == last) words.resize(to);
      text += cell == first ? words.substr(from) : words;
      if (cell == last) break;
      text += (cell + 1) % Widths.size() == 0 ? "\t\n" : "\t";
    }
    return text;
  }
  std::string Text() const { return Text(0, 0, Count() - 1, At(Count() - 1).Text.size()) + "\t\n"; }
  const Cell& At(std::size_t cell) const { return Rows[cell / Widths.size()][cell % Widths.size()]; }
  std::size_t Count() const { return Rows.size() * Widths.size(); }
};

class RandomTable : public EngineFixture {
 protected:
  void SetUp() override {
    EngineFixture::SetUp();
    ASSERT_EQ(Body.Create(), VQ_OK);
    VQRTCursor cursor = At(Body, 0);
    ASSERT_EQ(Body.CreateTable(3, 4, &cursor), VQ_OK);
    ASSERT_EQ(Body.CreateTable(2, 3, &cursor), VQ_OK);
    Find();
  }

  void TearDown() override {
    Edited = VQTable();
    Other = VQTable();
    Body = VQRichText();
    EngineFixture::TearDown();
  }

  // The first two tables of the text; the other one is to stay as it is.
  void Find() {
    VQRTObject found;
    ASSERT_EQ(Body.FindFirst(VQRTTYPE_TABLE, &found), VQ_OK);
    Edited = VQTable(found);
    ASSERT_EQ(Body.FindNext(found, VQRTTYPE_TABLE, &found), VQ_OK);
    Other = VQTable(found);
    ASSERT_EQ(Edited.SetUnits(VQUNITS_TWIPS), VQ_OK);
  }

  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(Random); }

  void Step() {
    const std::size_t rows = Plain.Rows.size(), columns = Plain.Widths.size(), count = 1 + Below(3);
    const std::size_t row = Below(rows), column = Below(columns);
    Model after = Plain;
    switch (Below(12)) {
      case 0:
        return Settle(Edited.InsertRows(row, count), after, [&] { after.AddRows(row, count); });
      case 1:
        return Settle(Edited.AppendRows(count), after, [&] { after.AddRows(rows, count); });
      case 2:
        return Settle(Edited.DeleteRows(row, count), after, [&] { after.DeleteRows(row, count); });
      case 3:
        return Settle(Edited.InsertColumns(column, count), after, [&] { after.AddColumns(column, count); });
      case 4:
        return Settle(Edited.AppendColumns(count), after, [&] { after.AddColumns(columns, count); });
      case 5:
        return Settle(Edited.DeleteColumns(column, count), after, [&] { after.DeleteColumns(column, count); });
      case 6: {
        const long width = static_cast<long>(300 + Below(9000));
        return Settle(Edited.SetColumnWidth(column, static_cast<double>(width)), after,
                      [&] { after.SetWidth(column, width); });
      }
      case 7: {
        const long spacing = static_cast<long>(Below(200));
        return Settle(Edited.SetColumnSpacing(static_cast<double>(spacing)), after, [&] { after.SetSpacing(spacing); });
      }
      case 8:
        return Settle(Edited.SetAutomaticWidth(count == 1), after, [&] { after.Automatic = count == 1; });
      case 9: {
        const long left = static_cast<long>(Below(3000));
        return Settle(Edited.SetLeftMargin(static_cast<double>(left)), after, [&] { after.Left = left; });
      }
      case 10: {
        VQTableCell cell = Edited(row, column);
        const auto span = static_cast<unsigned char>(Below(256));
        if (count == 1) {
          return Settle(cell.SetCDTableCellRowSpan(span), after, [&] { after.Rows[row][column].RowSpan = span; });
        }
        return Settle(cell.SetCDTableCellColumnSpan(span), after, [&] { after.Rows[row][column].ColumnSpan = span; });
      }
      default: {
        VQTableCell cell = Edited(row, column);
        const std::string word = "w" + std::to_string(Below(1000));
        return Settle(cell.Append(Store(word)), after, [&] { after.Rows[row][column].Text += word; });
      }
    }
  }

  template <typename Edit>
  void Settle(VQSTATUS status, Model& after, Edit edit) {
    if (status != VQ_OK) {
      ++Refused;
      return;
    }
    edit();
    Plain = after;
  }

  void Compare() {
    VQString text;
    ASSERT_EQ(Edited.GetText(&text), VQ_OK);
    ASSERT_EQ(TextOf(text), Plain.Text());
    ASSERT_EQ(Edited.GetRowCount(), Plain.Rows.size());
    ASSERT_EQ(Edited.GetColumnCount(), Plain.Widths.size());
    ASSERT_EQ(Edited.GetAutomaticWidth(), Plain.Automatic);
    long left = Plain.Left + Plain.Spacing;
    for (unsigned long column = 0; column < Plain.Widths.size(); ++column) {
      CompareColumn(column, left);
      left += Plain.Widths[column] + 2 * Plain.Spacing;
    }
    ASSERT_EQ(Other.GetText(&text), VQ_OK);
    ASSERT_EQ(TextOf(text), Model(2, 3).Text());
  }

  VQRTCursor CursorIn(std::size_t cell, std::size_t at) {
    const std::size_t columns = Plain.Widths.size();
    const VQTableCell in = Edited(cell / columns, cell % columns);
    VQRTCursor cursor;
    const bool end = at == Plain.At(cell).Text.size();
    EXPECT_EQ(end ? in.GetEndCursor(&cursor) : in.GetCursor(&cursor), VQ_OK);
    if (!end) cursor += at;
    return cursor;
  }

  // The text, and within one cell the rich text, of a range.
  void CompareRange() {
    const std::size_t first = Below(Plain.Count());
    const std::size_t last = Below(2) ? first : first + Below(Plain.Count() - first);
    const std::size_t to = Below(Plain.At(last).Text.size() + 1);
    const std::size_t from = Below((first == last ? to : Plain.At(first).Text.size()) + 1);
    const VQRTCursor start = CursorIn(first, from), end = CursorIn(last, to);
    VQString text;
    ASSERT_EQ(Edited.GetText(start, end, &text), VQ_OK);
    ASSERT_EQ(TextOf(text), Plain.Text(first, from, last, to));
    ASSERT_EQ(Body.GetText(start, end, &text), VQ_OK);
    ASSERT_EQ(TextOf(text), Plain.Text(first, from, last, to));
    VQRichText part;
    ASSERT_EQ(Body.GetRichText(start, end, &part), first == last ? VQ_OK : VQERR_RT_SELECTION_INVALID);
    if (first == last) {
      ASSERT_EQ(vqtest::Plain(part), Plain.Text(first, from, last, to));
    }
  }

  // Each row says the same of a column, whose one definition has its margins.
  void CompareColumn(unsigned long column, long left) {
    const VQTableCellBody* head = Edited(0, column).GetTableCellBody();
    const VQRTObjectBody* definition = head->FirstOfType(VQRTTYPE_PAB_DEFINITION);
    ASSERT_NE(definition, nullptr);
    CDPABDEFINITION settings{};
    ASSERT_EQ(static_cast<const VQPABDefinitionBody*>(definition)->GetRecord(&settings), VQ_OK);
    const long right = left + Plain.Widths[column];
    EXPECT_EQ(settings.LeftMargin, left + Plain.Spacing);
    EXPECT_EQ(settings.RightMargin, right - Plain.Spacing);
    for (unsigned long row = 0; row < Plain.Rows.size(); ++row) {
      const VQTableCell cell = Edited(row, column);
      const CDTABLECELL record = cell.GetCDTableCell();
      ASSERT_EQ(cell.GetRowIndex() * 100 + cell.GetColumnIndex(), row * 100 + column);
      ASSERT_EQ(record.LeftMargin, left);
      ASSERT_EQ(record.RightMargin, right);
      ASSERT_EQ(record.FractionalWidth == 0, !Plain.Automatic);
      ASSERT_EQ(record.RowSpan, Plain.Rows[row][column].RowSpan);
      ASSERT_EQ(record.ColumnSpan, Plain.Rows[row][column].ColumnSpan);
      ASSERT_EQ(vq::pab::IDsOf(*cell.GetTableCellBody()->GetFirstReference()).Second, settings.PABID);
    }
  }

  void Reload() {
    const std::string written = Written(Body);
    Body = RichText(written);
    Find();
    ASSERT_EQ(Written(Body), written);
  }

  std::mt19937 Random{20};
  VQRichText Body;
  VQTable Edited, Other;
  Model Plain{3, 4};
  int Refused = 0;
};

TEST_F(RandomTable, StaysLikeAGrid) {
  for (int step = 0; step < 1500; ++step) {
    SCOPED_TRACE(step);
    Step();
    Compare();
    CompareRange();
    if (step % 40 == 39) Reload();
    if (HasFailure()) return;
  }
  EXPECT_LT(Refused, 750);
  EXPECT_EQ(Body.Update(), VQ_OK);
}

}  // namespace
