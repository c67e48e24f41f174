// Rows and columns of a table: how they come in and go.
#include <algorithm>

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

}  // namespace

void VQTableBody::Link(VQTableCellBody* cell, VQRTObjectBody* before) { LinkUnnumbered(cell, before); }

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
  const std::vector<VQTableCellBody*> heads = ColumnHeads();
  std::vector<CDTABLECELL> records(heads.size());
  std::vector<std::uint16_t> pabids;
  for (std::size_t column = 0; column < heads.size(); ++column) {
    if (!heads[column]->GetFirstReference()) return VQERR_CELL_PABREFERENCE;
    if (VQSTATUS status = heads[column]->ReadCell(&records[column])) return status;
    // A head over several columns is no model for one.
    if (records[column].RightMargin - records[column].LeftMargin > layout.WidthOf(column)) {
      records[column].ColumnSpan = 1;
      layout.SetGeometry(column, column, &records[column]);
    }
    pabids.push_back(ColumnPABID(*heads[column]));
  }

  const auto at = static_cast<std::int32_t>(position), more = static_cast<std::int32_t>(count);
  VQRTObjectBody* before = LastChild;
  for (VQTableCellBody* cell = FirstCell(); cell; cell = NextCell(cell)) {
    if (cell->GetRow() < at) continue;
    if (before == LastChild) before = cell;
    if (VQSTATUS status = cell->SetPosition(cell->GetRow() + more, cell->GetColumn())) return status;
  }
  for (std::int32_t row = at; row < at + more; ++row) {
    for (std::size_t column = 0; column < heads.size(); ++column) {
      auto* cell = new VQTableCellBody(row, static_cast<long>(column));
      const VQRTObject hold(cell);
      records[column].Row = static_cast<std::uint8_t>(row);
      if (VQSTATUS status = cell->WriteCell(records[column])) return status;
      if (VQSTATUS status = cell->Fill(pabids[column], nullptr)) return status;
      Link(cell, before);
    }
  }
  if (VQSTATUS status = NumberChildren()) return status;
  return position == 0 ? MoveColumnDefinitions(heads, ColumnHeads()) : VQ_OK;
}

VQSTATUS VQTableBody::MoveColumnDefinitions(const std::vector<VQTableCellBody*>& from,
                                            const std::vector<VQTableCellBody*>& to) {
  for (std::size_t column = 0; column < from.size(); ++column) {
    if (!to[column] || to[column] == from[column]) continue;
    if (VQSTATUS status = MoveColumnDefinition(*from[column], *to[column])) return status;
  }
  return VQ_OK;
}

VQSTATUS VQTableBody::DeleteCells(const std::vector<VQTableCellBody*>& cells) {
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
  const std::vector<VQTableCellBody*> heads = ColumnHeads();
  std::vector<VQTableCellBody*> going, newHeads(heads.size());
  for (VQTableCellBody* cell = FirstCell(); cell; cell = NextCell(cell)) {
    if (cell->GetRow() >= first && cell->GetRow() < first + less) {
      going.push_back(cell);
    } else if (VQTableCellBody*& head = newHeads[static_cast<std::size_t>(cell->GetColumn())]; !head) {
      head = cell;
    }
  }
  if (VQSTATUS status = MoveColumnDefinitions(heads, newHeads)) return status;
  if (VQSTATUS status = DeleteCells(going)) return status;
  for (VQTableCellBody* cell = FirstCell(); cell; cell = NextCell(cell)) {
    if (cell->GetRow() < first + less) continue;
    if (VQSTATUS status = cell->SetPosition(cell->GetRow() - less, cell->GetColumn())) return status;
  }
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
  if (before.IsAutomatic() && before.GetWidth() > 0) {
    const auto width = static_cast<double>(before.GetWidth());
    after.Scale(width / (width + static_cast<double>(count) * static_cast<double>(before.RoomOf(model))));
  }
  after.Insert(position, count, after.WidthOf(model));
  const vq::TableLayout::Change change = {static_cast<long>(position), static_cast<long>(count)};
  if (VQSTATUS status = after.Check(before, change)) return status;
  if (VQSTATUS status = MakeIdentifiersPrivate(before)) return status;
  std::vector<unsigned short> pabids(count);
  for (unsigned short& pabid : pabids) {
    if (VQSTATUS status = vq::pab::Root(*this).GetNewPABID(&pabid)) return status;
  }
  if (VQSTATUS status = after.ApplyTo(*this, before, change)) return status;
  for (VQTableCellBody* cell = FirstCell(); cell;) {
    if (VQSTATUS status = AddColumnsToRow(&cell, position, pabids, after)) return status;
  }
  return NumberChildren();
}

VQSTATUS VQTableBody::AddColumnsToRow(VQTableCellBody** first, unsigned long position,
                                      const std::vector<unsigned short>& pabids, const vq::TableLayout& layout) {
  const std::int32_t row = (*first)->GetRow();
  const bool heads = *first == FirstCell();
  VQTableCellBody* behind = *first;
  VQRTObjectBody* before = nullptr;
  while (behind && behind->GetRow() == row) {
    if (!before && static_cast<unsigned long>(behind->GetColumn()) >= position) before = behind;
    behind = NextCell(behind);
  }
  if (!before) before = behind ? behind : LastChild;
  for (std::size_t i = 0; i < pabids.size(); ++i) {
    const std::size_t column = position + i;
    auto* cell = new VQTableCellBody(row, static_cast<long>(column));
    const VQRTObject hold(cell);
    CDTABLECELL record{};
    if (VQSTATUS status = cell->ReadCell(&record)) return status;
    layout.SetGeometry(column, column, &record);
    if (VQSTATUS status = cell->WriteCell(record)) return status;
    const CDPABDEFINITION definition = layout.DefinitionOf(column, pabids[i]);
    if (VQSTATUS status = cell->Fill(pabids[i], heads ? &definition : nullptr)) return status;
    Link(cell, before);
  }
  *first = behind;
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
    const auto width = static_cast<double>(before.GetWidth());
    if (before.GetWidth() > removed) after.Scale(width / (width - static_cast<double>(removed)));
  }
  const vq::TableLayout::Change change = {static_cast<long>(position), -static_cast<long>(count)};
  if (VQSTATUS status = after.Check(before, change)) return status;
  if (VQSTATUS status = MakeIdentifiersPrivate(before)) return status;
  std::vector<VQTableCellBody*> going;
  for (VQTableCellBody* cell = FirstCell(); cell; cell = NextCell(cell)) {
    const auto column = static_cast<unsigned long>(cell->GetColumn());
    if (column >= position && column < position + count) going.push_back(cell);
  }
  if (VQSTATUS status = DeleteCells(going)) return status;
  return after.ApplyTo(*this, before, change);
}
