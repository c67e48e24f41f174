// Rows and columns of a table: how they come in and go.
#include <algorithm>
#include <set>

#include "vq/richtext/pabtree.h"
#include "vq/richtext/tablelayout.h"

namespace {

constexpr auto kMostRows = static_cast<unsigned long>(VQTABLE_MAX_ROWS);
constexpr auto kMostColumns = static_cast<unsigned long>(VQTABLE_MAX_COLS);

// What rows and columns have in common is checked by the same rules.
struct Side {
  unsigned long Present;
  unsigned long Most;
  VQSTATUS TooMany;
  VQSTATUS BadPosition;
};

Side RowsOf(const VQTableBody& table) { return {table.GetRows(), kMostRows, VQERR_ROW_COUNT_SUM, VQERR_ROW_POSITION}; }

Side ColumnsOf(const VQTableBody& table) {
  return {table.GetColumns(), kMostColumns, VQERR_COLUMN_COUNT_SUM, VQERR_COLUMN_POSITION};
}

VQSTATUS CheckAdd(const Side& side, unsigned long count) {
  if (count == 0) return VQERR_ZERO_ROWS_COLUMNS;
  return count > side.Most || side.Present + count > side.Most ? side.TooMany : VQ_OK;
}

VQSTATUS CheckDelete(const Side& side, unsigned long position, unsigned long count) {
  if (count == 0) return VQERR_ZERO_ROWS_COLUMNS;
  if (count > side.Most || (position < side.Present && position + count > side.Most)) return side.TooMany;
  if (position >= side.Present) return side.BadPosition;
  if (position == 0 && count >= side.Present) return VQERR_DELETE_ALL_CELLS;
  return position + count >= side.Present ? VQERR_CELL_POSITION_COUNT : VQ_OK;
}

using CellIterator = VQTableBody::CellList::const_iterator;

// How far rows or columns move up when those before them go that have lost their last cell.
class Vanished {
 public:
  Vanished(const VQTableBody::CellList& going, const VQTableBody::CellList& staying,
           std::int32_t (VQTableCellBody::*line)() const) {
    for (const VQTableCellBody* cell : going) Lines.insert((cell->*line)());
    for (const VQTableCellBody* cell : staying) Lines.erase((cell->*line)());
  }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(Lines.size()); }
  std::int32_t Before(std::int32_t line) const {
    return static_cast<std::int32_t>(std::distance(Lines.begin(), Lines.lower_bound(line)));
  }

 private:
  std::set<std::int32_t> Lines;
};

VQSTATUS ShiftRows(CellIterator cell, CellIterator end, std::int32_t distance) {
  for (; cell != end; ++cell) {
    VQTableCellBody::Place place = (*cell)->GetPlace();
    place.Row += distance;
    if (VQSTATUS status = (*cell)->SetPlace(place)) return status;
  }
  return VQ_OK;
}

}  // namespace

VQSTATUS VQTableBody::AddCell(const VQTableCellBody::Place& place, const CDTABLECELL* looks, std::uint16_t pabid,
                              const CDPABDEFINITION* definition, VQRTObjectBody* before, CellList* cells) {
  auto* cell = new VQTableCellBody(place.Row, place.Column);
  const VQRTObject hold(cell);
  if (looks) {
    CDTABLECELL record = *looks;
    record.Row = static_cast<std::uint8_t>(place.Row);
    record.Column = static_cast<std::uint8_t>(place.Column);
    if (VQSTATUS status = cell->WriteCell(record)) return status;
  }
  if (VQSTATUS status = cell->SetPlace(place)) return status;
  if (VQSTATUS status = cell->InitCell(pabid, definition)) return status;
  LinkUnnumbered(cell, before);
  cells->push_back(cell);
  return VQ_OK;
}

VQSTATUS VQTableBody::AppendRows(unsigned long count) {
  const VQSTATUS status = CheckAdd(RowsOf(*this), count);
  return status != VQ_OK ? status : AddRows(GetRows(), count);
}

VQSTATUS VQTableBody::InsertRows(unsigned long position, unsigned long count) {
  VQSTATUS status = CheckAdd(RowsOf(*this), count);
  if (status == VQ_OK && position >= GetRows()) status = VQERR_ROW_POSITION;
  return status != VQ_OK ? status : AddRows(position, count);
}

VQSTATUS VQTableBody::AddRows(unsigned long position, unsigned long count) {
  vq::TableLayout layout;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &layout)) return status;
  if (GetColumns() > kMostColumns) return VQERR_COLUMN_COUNT;
  const CellList heads = ColumnHeads();
  std::vector<CDTABLECELL> looks(heads.size());
  std::vector<std::uint16_t> pabids;
  for (std::size_t column = 0; column < heads.size(); ++column) {
    if (!heads[column]->GetFirstReference()) return VQERR_CELL_PABREFERENCE;
    if (VQSTATUS status = heads[column]->ReadCell(&looks[column])) return status;
    looks[column].RowSpan = looks[column].ColumnSpan = 1;
    pabids.push_back(ColumnPABID(*heads[column]));
  }

  const auto first = static_cast<std::int32_t>(position), more = static_cast<std::int32_t>(count);
  const std::uint32_t rows = GetRows() + static_cast<std::uint32_t>(count), columns = GetColumns();
  const CellList present = TakeCells();
  const auto behind = std::ranges::lower_bound(present, first, {}, &VQTableCellBody::GetRow);
  VQRTObjectBody* before = behind == present.end() ? LastChild : *behind;
  CellList cells(present.begin(), behind);
  cells.reserve(present.size() + count * heads.size());
  if (VQSTATUS status = ShiftRows(behind, present.end(), more)) return status;
  for (std::int32_t row = first; row < first + more; ++row) {
    for (std::size_t column = 0; column < heads.size(); ++column) {
      VQTableCellBody::Place place = layout.PlaceOf(row, column, column);
      const bool asRowZero = place.Left == looks[column].LeftMargin && place.Right == looks[column].RightMargin;
      if (asRowZero) place.Fraction = looks[column].FractionalWidth;
      if (VQSTATUS status = AddCell(place, &looks[column], pabids[column], nullptr, before, &cells)) return status;
    }
  }
  VQRTObjectBody* firstNew = cells[static_cast<std::size_t>(behind - present.begin())];
  cells.insert(cells.end(), behind, present.end());
  KeepCells(std::move(cells), rows, columns);
  if (VQSTATUS status = NumberRun(firstNew, before)) return status;
  return position == 0 ? MoveColumnDefinitions(heads, ColumnHeads()) : VQ_OK;
}

VQSTATUS VQTableBody::MoveColumnDefinitions(const CellList& from, const CellList& to) {
  for (std::size_t column = 0; column < from.size(); ++column) {
    if (!to[column] || to[column] == from[column]) continue;
    if (VQSTATUS status = MoveColumnDefinition(*from[column], *to[column])) return status;
  }
  return VQ_OK;
}

VQSTATUS VQTableBody::DeleteCells(const CellList& cells) {
  // From the last one: a definition's users in the other cells are then gone.
  for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell) {
    if (VQSTATUS status = DeleteRepairLinks(*cell, (*cell)->GetNext())) return status;
    if (VQSTATUS status = (*cell)->Delete()) return status;
  }
  return VQ_OK;
}

VQSTATUS VQTableBody::DeleteRows(unsigned long position, unsigned long count) {
  if (VQSTATUS status = CheckDelete(RowsOf(*this), position, count)) return status;
  vq::TableLayout layout;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &layout)) return status;
  const auto first = static_cast<std::int32_t>(position), less = static_cast<std::int32_t>(count);
  const std::uint32_t rows = GetRows() - static_cast<std::uint32_t>(count), columns = GetColumns();
  const CellList heads = ColumnHeads();
  CellList cells = TakeCells();
  const auto from = std::ranges::lower_bound(cells, first, {}, &VQTableCellBody::GetRow);
  const auto behind = std::ranges::lower_bound(cells, first + less, {}, &VQTableCellBody::GetRow);
  const CellList going(from, behind);
  const auto shifted = cells.erase(from, behind);
  CellList newHeads(heads.size());
  for (VQTableCellBody* cell : cells) {
    VQTableCellBody*& head = newHeads[static_cast<std::size_t>(cell->GetColumn())];
    if (!head) head = cell;
  }
  if (VQSTATUS status = MoveColumnDefinitions(heads, newHeads)) return status;
  const Vanished lost(going, cells, &VQTableCellBody::GetColumn);
  if (VQSTATUS status = DeleteCells(going)) return status;
  if (VQSTATUS status = ShiftRows(shifted, cells.end(), -less)) return status;
  for (std::size_t i = 0; i < cells.size() && lost.Count() > 0; ++i) {
    VQTableCellBody::Place place = cells[i]->GetPlace();
    const auto last = static_cast<std::int32_t>(layout.LastOf(cells, i));
    const std::int32_t taken = last + 1 - place.Column, gone = lost.Before(last + 1) - lost.Before(place.Column);
    if (VQSTATUS status = vq::TableLayout::SetSpan(*cells[i], taken, taken - gone)) return status;
    place.Column -= lost.Before(place.Column);
    if (VQSTATUS status = cells[i]->SetPlace(place)) return status;
  }
  KeepCells(std::move(cells), rows, columns - lost.Count());
  return VQ_OK;
}

VQSTATUS VQTableBody::AppendColumns(unsigned long count) {
  const VQSTATUS status = CheckAdd(ColumnsOf(*this), count);
  return status != VQ_OK ? status : AddColumns(GetColumns(), count);
}

VQSTATUS VQTableBody::InsertColumns(unsigned long position, unsigned long count) {
  VQSTATUS status = CheckAdd(ColumnsOf(*this), count);
  if (status == VQ_OK && position >= GetColumns()) status = VQERR_COLUMN_POSITION;
  return status != VQ_OK ? status : AddColumns(position, count);
}

VQSTATUS VQTableBody::AddColumns(unsigned long position, unsigned long count) {
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  if (GetRows() > kMostRows) return VQERR_ROW_COUNT;
  vq::TableLayout after = before;
  const std::size_t model = std::min<std::size_t>(position, before.GetCount() - 1);
  if (before.IsAutomatic() && before.GetTableWidth() > 0) {
    const auto width = static_cast<double>(before.GetTableWidth());
    after.Scale(width / (width + static_cast<double>(count) * static_cast<double>(before.RoomOf(model))));
  }
  after.Insert(position, count, after.WidthOf(model));
  const vq::TableLayout::Change change = {static_cast<long>(position), static_cast<long>(count)};
  if (VQSTATUS status = after.Check(before, change)) return status;
  std::vector<std::uint16_t> pabids(count);
  if (VQSTATUS status = MakeIdentifiersPrivate(before, &pabids)) return status;
  const std::uint32_t rows = GetRows(), columns = GetColumns() + static_cast<std::uint32_t>(count);
  const CellList present = TakeCells();
  std::set<std::int32_t> covered;  // rows where a cell goes on over the new columns
  for (std::size_t i = 0; i < present.size(); ++i) {
    const bool ahead = static_cast<unsigned long>(present[i]->GetColumn()) < position;
    if (ahead && before.LastOf(present, i) >= position) covered.insert(present[i]->GetRow());
  }
  if (VQSTATUS status = after.ApplyTo(present, before, change)) return status;
  bool defined = false;
  CellList cells;
  cells.reserve(present.size() + rows * count);
  for (auto cell = present.begin(); cell != present.end();) {
    const std::int32_t row = (*cell)->GetRow();
    const auto rowEnd = std::find_if(cell, present.end(), [&](const auto* each) { return each->GetRow() != row; });
    const auto behind = std::find_if(
        cell, rowEnd, [&](const auto* each) { return each->GetColumn() >= static_cast<std::int32_t>(position); });
    cells.insert(cells.end(), cell, behind);
    VQRTObjectBody* before = behind == present.end() ? LastChild : *behind;
    const std::size_t firstNew = cells.size();
    for (std::size_t column = position; column < position + count && !covered.contains(row); ++column) {
      const std::uint16_t pabid = pabids[column - position];
      const CDPABDEFINITION definition = after.DefinitionOf(column, pabid);
      const VQTableCellBody::Place place = after.PlaceOf(row, column, column);
      VQSTATUS status = AddCell(place, nullptr, pabid, defined ? nullptr : &definition, before, &cells);
      if (status != VQ_OK) return status;
    }
    if (firstNew < cells.size()) {
      if (VQSTATUS status = NumberRun(cells[firstNew], before)) return status;
      defined = true;
    }
    cells.insert(cells.end(), behind, rowEnd);
    cell = rowEnd;
  }
  KeepCells(std::move(cells), rows, columns);
  return VQ_OK;
}

VQSTATUS VQTableBody::DeleteColumns(unsigned long position, unsigned long count) {
  if (VQSTATUS status = CheckDelete(ColumnsOf(*this), position, count)) return status;
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  vq::TableLayout after = before;
  after.Remove(position, count);
  if (before.IsAutomatic()) {
    long removed = 0;
    for (std::size_t column = position; column < position + count; ++column) removed += before.RoomOf(column);
    const auto width = static_cast<double>(before.GetTableWidth());
    if (before.GetTableWidth() > removed) after.Scale(width / (width - static_cast<double>(removed)));
  }
  const vq::TableLayout::Change change = {static_cast<long>(position), -static_cast<long>(count)};
  if (VQSTATUS status = after.Check(before, change)) return status;
  if (VQSTATUS status = MakeIdentifiersPrivate(before, nullptr)) return status;
  const std::uint32_t rows = GetRows(), columns = GetColumns() - static_cast<std::uint32_t>(count);
  CellList going, staying;
  for (VQTableCellBody* cell : TakeCells()) {
    const auto column = static_cast<unsigned long>(cell->GetColumn());
    (column >= position && column < position + count ? going : staying).push_back(cell);
  }
  const Vanished lost(going, staying, &VQTableCellBody::GetRow);
  if (VQSTATUS status = DeleteCells(going)) return status;
  if (VQSTATUS status = after.ApplyTo(staying, before, change)) return status;
  for (VQTableCellBody* cell : staying) {
    VQTableCellBody::Place place = cell->GetPlace();
    place.Row -= lost.Before(place.Row);
    if (VQSTATUS status = cell->SetPlace(place)) return status;
  }
  KeepCells(std::move(staying), rows - lost.Count(), columns);
  return VQ_OK;
}
