// The walker's tables.
#include <algorithm>

#include "converters/parts/walker.h"

namespace conv {

namespace {

// Border styles move a cell's text by so much.
constexpr int kStyleRoom = 60;

}  // namespace

void Walker::BeginTable(const Record& record) {
  EndParagraph();
  if (Table.IsOpen) {
    Losses.Add(Loss::kNestedTable);
    ++Table.Nested;
    return;
  }
  FlushEmptyParagraphs(1);
  Table = {};
  const auto begin = record.Read<CDTABLEBEGIN>(ODS_CDTABLEBEGIN);
  if (begin.LeftMargin > kPageMargin) Table.Info.Indent = begin.LeftMargin - kPageMargin;
  ReadSpacing(begin);
  LookThroughTable();
  if (!Table.Cells.empty()) {
    // The levels around the table are those of its first paragraph that stand outside the cell.
    const Style& style = StyleOf(Table.Cells.front().Reference);
    std::vector<Level> around;
    for (const Level& level : style.IsNamed ? style.Name.Levels : around) {
      if (level.Kind == LevelKind::kCell || level.Kind == LevelKind::kHeadingCell) break;
      around.push_back(level);
    }
    EnterLevels(around, style.Definition.LeftMargin);
  }
  Table.IsOpen = true;
  LevelFloor = Levels.size();
  Table.Info.Kind = Block::kTable;
  Out.Open(Table.Info);
}

void Walker::ReadSpacing(const CDTABLEBEGIN& begin) {
  const bool inset = (begin.Flags & kTableV4Spacing) != 0;
  const unsigned wide = inset ? begin.V4HorizCellSpace : begin.HorizCellSpace;
  const unsigned high = inset ? begin.V4VertCellSpace : begin.VertCellSpace;
  const bool usual = inset ? wide == 0 && high == 0 : wide == kUsualColumnSpacing && high == kUsualRowSpacing;
  if (!usual || (begin.Flags & kTableBorderStyles) != 0) Losses.Add(Loss::kTableLayout);
  Table.Room = static_cast<int>(wide) + kStyleRoom;
}

// What has to be known of a cell before it is shown.
void Walker::LookThroughTable() {
  RecordInput ahead = Records;
  Table.Info.Simple = true;
  unsigned nested = 0;
  bool brk = false;
  std::uint16_t reference = Reference;
  bool inParagraph = false;
  unsigned columns = 0;
  Record record;
  while (ahead.Next(&record)) {
    const std::uint16_t signature = record.Signature;
    if (signature == kSigTableEnd && nested-- == 0) break;
    if (signature == kSigTableBegin) ++nested;
    if (signature == kSigReference) reference = record.Word(2);
    if (signature == kSigFormulaReference) reference = record.Word(4);
    if (signature == kSigTableCell && nested == 0) {
      const auto cell = record.Read<CDTABLECELL>(ODS_CDTABLECELL);
      Table.Cells.push_back({.Row = cell.Row, .Column = cell.Column});
      Table.Cells.back().Left = cell.LeftMargin;
      if (cell.RightMargin > cell.LeftMargin) Table.Cells.back().Width = cell.RightMargin - cell.LeftMargin;
      Table.Cells.back().RowSpan = std::max<unsigned>(cell.RowSpan, 1);
      Table.Cells.back().ColumnSpan = std::max<unsigned>(cell.ColumnSpan, 1);
      if (Table.Cells.size() == 1)
        Table.Info.HasBorder = cell.Border == kUsualBorder && cell.BorderWidth == kUsualWidth;
      Table.Cells.back().IsColored = (cell.Flags & kCellHasBackground) != 0;
      columns = std::max<unsigned>(columns, cell.Column + 1U);
      brk = true;
      inParagraph = false;
    }
    if (Table.Cells.empty()) continue;
    CellState& cell = Table.Cells.back();
    if (nested > 0) cell.IsBlock = true;
    if (signature == kSigParagraph) {
      // The one ahead of the first text ends nothing.
      if (!brk) ++cell.Paragraphs;
      if (brk && inParagraph) ++cell.Paragraphs;
      brk = inParagraph = false;
    }
    const bool text = signature == kSigText && record.Length > EngOdsLength(ODS_CDTEXT);
    const bool object = signature == kSigHotspot || signature == kSigV4Hotspot || signature == kSigAnchor;
    if (signature == kSigText || object) {
      if (!inParagraph && cell.Reference == 0) cell.Reference = reference;
      inParagraph = true;
      const Style& style = StyleOf(reference);
      if (style.IsNamed) {
        const Level& last = style.Name.Levels.empty() ? Level{} : style.Name.Levels.back();
        const bool inner = style.Name.What != Leaf::kText || style.Name.Levels.empty() ||
                           (last.Kind != LevelKind::kCell && last.Kind != LevelKind::kHeadingCell);
        if (inner) cell.IsBlock = true;
        for (const Level& level : style.Name.Levels) cell.IsHeading |= level.Kind == LevelKind::kHeadingCell;
      } else if (style.Definition.Flags & (kBulletStyle | kNumberStyle)) {
        cell.IsBlock = true;
      }
      const CDPABDEFINITION& definition = style.Definition;
      const bool indented =
          definition.LeftMargin > cell.Left + Table.Room || definition.FirstLineMargin != definition.LeftMargin;
      if (indented) cell.IsBlock = true;
    }
    if (text || object) cell.HasContent = true;
    if (cell.Paragraphs > 0) cell.IsBlock = true;
  }
  Table.Info.Columns = columns;
  FindCovered();
  FindWidths();
  Table.Info.Simple = Table.Info.Simple && std::ranges::all_of(Table.Cells, [&](const CellState& cell) {
                        return !cell.IsBlock && cell.RowSpan == 1 && cell.ColumnSpan == 1 && !cell.IsColored &&
                               cell.IsHeading == (cell.Row == Table.Cells.front().Row);
                      });
}

// Of each column as the first cell in it that is not wider tells; a table wide on the whole counts as of equal columns.
void Walker::FindWidths() {
  Table.Widths.assign(Table.Info.Columns, 0);
  for (const CellState& cell : Table.Cells) {
    unsigned& width = Table.Widths[cell.Column];
    if (width == 0 && cell.ColumnSpan == 1) width = cell.Width;
  }
  if (Table.Widths.empty()) return;
  const auto [least, most] = std::ranges::minmax(Table.Widths);
  constexpr unsigned kEqual = 100;  // one part of so many
  Table.Info.HasWidths = least > 0 && most - least > most / kEqual + 1;
  Table.Info.Widths = &Table.Widths;
}

// A cell covers others as far as they are there and hold nothing.
void Walker::FindCovered() {
  unsigned rows = 0;
  const unsigned columns = Table.Info.Columns;
  for (const CellState& cell : Table.Cells) rows = std::max<unsigned>(rows, cell.Row + 1U);
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> grid(std::size_t{rows} * columns, kNone);
  for (std::size_t i = 0; i < Table.Cells.size(); ++i) {
    std::size_t& place = grid[std::size_t{Table.Cells[i].Row} * columns + Table.Cells[i].Column];
    if (place == kNone) place = i;
  }
  const auto isFree = [&](unsigned row, unsigned column) {
    const std::size_t place = grid[std::size_t{row} * columns + column];
    return place == kNone ||
           (!Table.Cells[place].HasContent && !Table.Cells[place].IsBlock && !Table.Cells[place].IsCovered &&
            Table.Cells[place].ColumnSpan == 1 && Table.Cells[place].RowSpan == 1);
  };
  for (CellState& cell : Table.Cells) {
    if (cell.IsCovered || cell.RowSpan * cell.ColumnSpan == 1) continue;
    // One that stands where another one does has no room of its own.
    if (grid[std::size_t{cell.Row} * columns + cell.Column] != static_cast<std::size_t>(&cell - Table.Cells.data())) {
      cell.RowSpan = cell.ColumnSpan = 1;
      continue;
    }
    cell.ColumnSpan = std::min(cell.ColumnSpan, columns - cell.Column);
    cell.RowSpan = std::min(cell.RowSpan, rows - cell.Row);
    unsigned wide = 1;
    while (wide < cell.ColumnSpan && isFree(cell.Row, cell.Column + wide)) ++wide;
    unsigned high = 1;
    for (; high < cell.RowSpan; ++high) {
      unsigned free = 0;
      while (free < wide && isFree(cell.Row + high, cell.Column + free)) ++free;
      if (free < wide) break;
    }
    cell.ColumnSpan = wide;
    cell.RowSpan = high;
    if (high > 1) Table.Info.HasSpans = true;
    for (unsigned row = 0; row < high; ++row) {
      for (unsigned column = 0; column < wide; ++column) {
        const std::size_t place = grid[std::size_t{cell.Row + row} * columns + cell.Column + column];
        if (place != kNone && &Table.Cells[place] != &cell) Table.Cells[place].IsCovered = true;
      }
    }
  }
}

void Walker::BeginCell(const Record& record) {
  if (!Table.IsOpen) {
    IsDamaged = true;
    return;
  }
  EndParagraph();
  IsBreakExpected = true;
  if (Table.Nested > 0) return;
  EndCell();
  const CellState& state = Table.Cells[Table.Next++];
  if (!Table.InRow || state.Row != Table.Row) {
    if (Table.InRow) Out.Close({.Kind = Block::kRow});
    Table.Row = state.Row;
    Table.InRow = true;
    BlockInfo row{.Kind = Block::kRow};
    // A row of headings, as far as its cells tell.
    row.Heading = true;
    for (std::size_t i = Table.Next - 1; i < Table.Cells.size() && Table.Cells[i].Row == state.Row; ++i) {
      row.Heading = row.Heading && Table.Cells[i].IsHeading;
    }
    Out.Open(row);
  }
  Table.InCell = true;
  Table.Record = record.Read<CDTABLECELL>(ODS_CDTABLECELL);
  Table.Record.RowSpan = static_cast<std::uint8_t>(state.RowSpan);
  Table.Record.ColumnSpan = static_cast<std::uint8_t>(state.ColumnSpan);
  if (state.IsCovered) return;
  Out.Open(CellInfo());
}

BlockInfo Walker::CellInfo() const {
  const CellState& state = Table.Cells[Table.Next - 1];
  BlockInfo info{.Kind = Block::kCell};
  info.Heading = state.IsHeading;
  info.Plain = !state.IsBlock;
  info.Justify = state.IsBlock ? std::uint16_t{kJustifyLeft} : StyleOf(state.Reference).Definition.JustifyMode;
  info.Cell = &Table.Record;
  return info;
}

void Walker::EndCell() {
  if (!Table.InCell) return;
  EndParagraph();
  FlushEmptyParagraphs(1);
  CloseLevels(LevelFloor);
  if (!Table.Cells[Table.Next - 1].IsCovered) Out.Close(CellInfo());
  Table.InCell = false;
}

void Walker::EndTable() {
  if (!Table.IsOpen) {
    IsDamaged = true;
    return;
  }
  EndParagraph();
  if (Table.Nested > 0) {
    --Table.Nested;
    return;
  }
  EndCell();
  if (Table.InRow) Out.Close({.Kind = Block::kRow});
  Out.Close(Table.Info);
  Table.IsOpen = false;
  LevelFloor = 0;
  IsBehindTable = true;
  IsBreakExpected = true;
}

}  // namespace conv
