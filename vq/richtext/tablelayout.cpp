#include "vq/richtext/tablelayout.h"

#include <algorithm>
#include <cmath>

#include "engine/ods.h"
#include "vq/richtext/vqpabdef.h"

namespace vq {

namespace {

constexpr long kLargestMargin = 0xFFFF;
// What the paragraphs of column 0 stand further in while the border style is not 2.
constexpr long kStyledBorderIndent = 30;
constexpr unsigned short kCellFlags =
    PABFLAG_HIDE_UNLINK | 0x0080 | PABFLAG_KEEP_LINES | PABFLAG_KEEP_PARAGRAPHS;  // 0x0186
constexpr std::int16_t kFirstTab = 720;

}  // namespace

long TableLayout::ColumnSpacingOf(const CDTABLEBEGIN& begin) {
  return begin.Flags & TABLEFLAG_V4_SPACING ? begin.V4HorizCellSpace : begin.HorizCellSpace;
}

long TableLayout::RowSpacingOf(const CDTABLEBEGIN& begin) {
  return begin.Flags & TABLEFLAG_V4_SPACING ? begin.V4VertCellSpace : begin.VertCellSpace;
}

VQTABLEBORDERSTYLE TableLayout::BorderStyleOf(const CDTABLEBEGIN& begin) {
  if (begin.Flags & VQTABLEBORDERSTYLE_4) return VQTABLEBORDERSTYLE_4;
  return begin.Flags & VQTABLEBORDERSTYLE_8 ? VQTABLEBORDERSTYLE_8 : VQTABLEBORDERSTYLE_2;
}

TableLayout TableLayout::OfNewTable(const CDTABLEBEGIN& begin, unsigned long columns) {
  TableLayout layout;
  layout.Begin = begin;
  layout.Boxes.resize(columns);
  const long width = VQTABLE_DEFAULT_WIDTH / static_cast<long>(columns);
  layout.Place(begin.LeftMargin + layout.GetSpacing(), std::vector<long>(columns, width));
  return layout;
}

VQSTATUS TableLayout::Read(const VQTableBody& table, TableLayout* layout) {
  if (VQSTATUS status = table.ReadBegin(&layout->Begin)) return status;
  if (!table.GetLastChild() || table.GetLastChild()->GetType() != VQRTTYPE_TABLE_END) return VQERR_RT_INVALID;
  constexpr Box kNone = {0, -1};
  layout->Boxes.assign(table.GetColumns(), kNone);
  std::vector<bool> met(layout->Boxes.size());
  if (!table.CellsAreInOrder()) return VQERR_RT_INVALID;
  for (const VQTableCellBody* cell : table.GetCells()) {
    if (cell->GetLeft() < 0) return VQERR_RT_INVALID;
    const auto at = static_cast<std::size_t>(cell->GetColumn());
    // The narrowest cell of a column spans no other.
    if (met[at] && cell->GetRight() - cell->GetLeft() >= layout->WidthOf(at)) continue;
    met[at] = true;
    layout->Boxes[at] = {cell->GetLeft(), cell->GetRight()};
  }
  if (met.empty() || std::ranges::find(met, false) != met.end()) return VQERR_RT_INVALID;
  // Where all of its cells go on over the next one, a column ends where that one begins.
  for (std::size_t column = 0; column + 1 < met.size(); ++column) {
    Box& box = layout->Boxes[column];
    const long next = layout->Boxes[column + 1].Left;
    if (box.Left < next && next < box.Right) box.Right = std::max(box.Left, next - 2 * layout->GetSpacing());
  }
  return VQ_OK;
}

long TableLayout::GetTableWidth() const { return Boxes.back().Right - Boxes.front().Left + 2 * GetSpacing(); }

std::vector<long> TableLayout::Widths() const {
  std::vector<long> widths;
  for (std::size_t column = 0; column < Boxes.size(); ++column) widths.push_back(WidthOf(column));
  return widths;
}

void TableLayout::Place(long left, const std::vector<long>& widths) {
  const long spacing = GetSpacing();
  Boxes.resize(widths.size());
  for (std::size_t column = 0; column < widths.size(); ++column) {
    Boxes[column] = {left, left + widths[column]};
    left = Boxes[column].Right + 2 * spacing;
  }
}

void TableLayout::Scale(double factor, long butColumn) {
  std::vector<long> widths = Widths();
  for (std::size_t column = 0; column < widths.size(); ++column) {
    if (static_cast<long>(column) == butColumn) continue;
    widths[column] = std::lround(static_cast<double>(widths[column]) * factor);
  }
  Place(Boxes.front().Left, widths);
}

void TableLayout::SetWidth(std::size_t column, long width) {
  std::vector<long> widths = Widths();
  widths[column] = width;
  Place(Boxes.front().Left, widths);
}

void TableLayout::Insert(std::size_t position, std::size_t count, long width) {
  std::vector<long> widths = Widths();
  widths.insert(widths.begin() + static_cast<std::ptrdiff_t>(position), count, width);
  Place(Boxes.front().Left, widths);
}

void TableLayout::Remove(std::size_t position, std::size_t count) {
  std::vector<long> widths = Widths();
  const auto first = widths.begin() + static_cast<std::ptrdiff_t>(position);
  widths.erase(first, first + static_cast<std::ptrdiff_t>(count));
  Place(Boxes.front().Left, widths);
}

void TableLayout::Move(long distance) {
  for (Box& box : Boxes) box = {box.Left + distance, box.Right + distance};
}

void TableLayout::SetSpacing(long spacing) {
  const long difference = spacing - GetSpacing();
  for (Box& box : Boxes) box = {box.Left + difference, box.Right - difference};
  const bool v4 = (Begin.Flags & TABLEFLAG_V4_SPACING) != 0;
  const auto value = static_cast<std::uint16_t>(spacing);
  if (v4) Begin.V4HorizCellSpace = value;
  Begin.HorizCellSpace = v4 ? std::max(value, static_cast<std::uint16_t>(VQTABLE_DEFAULT_COLUMN_SPACING)) : value;
}

VQSTATUS TableLayout::Check(const TableLayout& before, Change change) const {
  const long spacing = GetSpacing();
  for (std::size_t column = 0; column < Boxes.size(); ++column) {
    long was = static_cast<long>(column);
    if (was >= change.Position)
      was = change.Count > 0 && was < change.Position + change.Count ? -1 : was - change.Count;
    const long width = WidthOf(column);
    const bool changed = was < 0 || width != before.WidthOf(static_cast<std::size_t>(was));
    if (changed && width < 0) return VQERR_TABLE_MARGINS;
    if (changed && width < VQTABLE_MIN_COLUMN_WIDTH) return VQERR_COLUMN_WIDTH_SMALL;
    const Box& box = Boxes[column];
    if (box.Left < 0 || box.Right > kLargestMargin) return VQERR_OUT_OF_RANGE;
    if (box.Left + spacing + kStyledBorderIndent > kLargestMargin) return VQERR_OUT_OF_RANGE;
  }
  return VQ_OK;
}

VQTableCellBody::Place TableLayout::PlaceOf(std::int32_t row, std::size_t first, std::size_t last) const {
  const long left = Boxes[first].Left, right = Boxes[last].Right;
  const long table = GetTableWidth();
  long fraction = 0;
  if (IsAutomatic() && table > 0) {
    const long room = right - left + 2 * GetSpacing();
    fraction = std::clamp((room * VQTABLE_MAX_FRACTIONAL_WIDTH + table / 2) / table, 0L, VQTABLE_MAX_FRACTIONAL_WIDTH);
  }
  return {row, static_cast<std::int32_t>(first), static_cast<std::int32_t>(left), static_cast<std::int32_t>(right),
          static_cast<std::int32_t>(fraction)};
}

void TableLayout::SetMargins(std::size_t first, std::size_t last, CDPABDEFINITION* record) const {
  const long indent = first == 0 && BorderStyleOf(Begin) != VQTABLEBORDERSTYLE_2 ? kStyledBorderIndent : 0;
  const long left = Boxes[first].Left + GetSpacing() + indent;
  const long right = std::max(0L, Boxes[last].Right - GetSpacing());
  const long firstLine = left + record->FirstLineMargin - record->LeftMargin;
  record->LeftMargin = static_cast<std::uint16_t>(left);
  record->RightMargin = static_cast<std::uint16_t>(right);
  record->FirstLineMargin = static_cast<std::uint16_t>(std::clamp(firstLine, 0L, kLargestMargin));
}

CDPABDEFINITION TableLayout::DefinitionOf(std::size_t column, std::uint16_t pabid) const {
  CDPABDEFINITION record{};
  record.Header = {SIG_CD_PABDEFINITION, static_cast<std::uint16_t>(EngOdsLength(ODS_CDPABDEFINITION))};
  record.PABID = pabid;
  record.Tabs[0] = kFirstTab;
  record.Flags = kCellFlags;
  SetMargins(column, column, &record);
  return record;
}

std::size_t TableLayout::LastOf(const VQTableBody::CellList& cells, std::size_t at) const {
  const VQTableCellBody& cell = *cells[at];
  const bool ends = at + 1 == cells.size() || cells[at + 1]->GetRow() != cell.GetRow();
  const std::size_t next = ends ? GetCount() : static_cast<std::size_t>(cells[at + 1]->GetColumn());
  auto column = static_cast<std::size_t>(cell.GetColumn());
  while (column + 1 < next && cell.GetRight() > Boxes[column].Right + WidthOf(column + 1) / 2) ++column;
  return column;
}

namespace {

// The number of a column that stays.
std::size_t Renumbered(std::size_t column, TableLayout::Change change) {
  const long at = static_cast<long>(column);
  if (at < change.Position) return column;
  // The right end of a cell may lie in a column that has gone.
  if (change.Count < 0 && at < change.Position - change.Count) return static_cast<std::size_t>(change.Position - 1);
  return static_cast<std::size_t>(at + change.Count);
}

}  // namespace

VQSTATUS TableLayout::SetSpan(VQTableCellBody& cell, std::int32_t before, std::int32_t after) {
  CDTABLECELL record{};
  // One that ends before its spans says none.
  if (before == after || cell.ReadCell(&record) != VQ_OK || record.ColumnSpan != before) return VQ_OK;
  record.ColumnSpan = static_cast<std::uint8_t>(after);
  return cell.WriteCell(record);
}

bool TableLayout::HasSharesOf(const TableLayout& other) const {
  if (!IsAutomatic() || !other.IsAutomatic() || GetCount() != other.GetCount()) return false;
  for (std::size_t column = 0; column < GetCount(); ++column) {
    if (RoomOf(column) != other.RoomOf(column)) return false;
  }
  return true;
}

VQSTATUS TableLayout::ApplyTo(const VQTableBody::CellList& cells, const TableLayout& before, Change change) const {
  const bool sharesStay = HasSharesOf(before);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    // Seen from what is still as it was.
    const auto oldFirst = static_cast<std::size_t>(cells[i]->GetColumn());
    const std::size_t oldLast = before.LastOf(cells, i);
    const std::size_t first = Renumbered(oldFirst, change), last = Renumbered(oldLast, change);
    const auto taken = static_cast<std::int32_t>(oldLast - oldFirst + 1);
    const auto takes = static_cast<std::int32_t>(last - first + 1);
    if (VQSTATUS status = SetSpan(*cells[i], taken, takes)) return status;
    VQTableCellBody::Place place = PlaceOf(cells[i]->GetRow(), first, last);
    if (sharesStay) place.Fraction = cells[i]->GetPlace().Fraction;
    if (VQSTATUS status = SetCellMargins(*cells[i], place, last)) return status;
  }
  return VQ_OK;
}

VQSTATUS TableLayout::SetCellMargins(VQTableCellBody& cell, const VQTableCellBody::Place& place,
                                     std::size_t last) const {
  if (VQSTATUS status = cell.SetPlace(place)) return status;
  const auto first = static_cast<std::size_t>(place.Column);
  return cell.ForEachDefinition([&](VQPABDefinitionBody& definition) {
    CDPABDEFINITION settings{};
    // One that ends before its margins stays as it is.
    if (definition.GetRecord(&settings) != VQ_OK) return VQ_OK;
    const CDPABDEFINITION present = settings;
    SetMargins(first, last, &settings);
    const bool same = present.LeftMargin == settings.LeftMargin && present.RightMargin == settings.RightMargin &&
                      present.FirstLineMargin == settings.FirstLineMargin;
    return same ? VQ_OK : definition.SetRecord(settings);
  });
}

}  // namespace vq
