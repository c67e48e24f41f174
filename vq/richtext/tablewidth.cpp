// Widths, spacing, borders and colours of a table.
#include <algorithm>
#include <cmath>

#include "vq/richtext/tablelayout.h"

namespace {

// What the others need at least, together.
constexpr long kLeastRemaining = 360;

}  // namespace

VQSTATUS VQTableBody::Change(const vq::TableLayout& before, const vq::TableLayout& after) {
  if (VQSTATUS status = after.Check(before, {})) return status;
  if (VQSTATUS status = MakeIdentifiersPrivate(before, nullptr)) return status;
  if (VQSTATUS status = WriteBegin(after.GetBegin())) return status;
  return after.ApplyTo(GetCells(), before, {});
}

VQSTATUS VQTableBody::GetColumnWidth(unsigned long column, long* width) const {
  if (column >= GetColumns()) return VQERR_COLUMN_POSITION;
  vq::TableLayout layout;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &layout)) return status;
  *width = layout.WidthOf(column);
  return VQ_OK;
}

VQSTATUS VQTableBody::GetFractionalColumnWidth(unsigned long column, long* width) const {
  if (column >= GetColumns()) return VQERR_COLUMN_POSITION;
  const VQTableCellBody* head = ColumnHeads()[column];
  CDTABLECELL record{};
  if (!head) return VQERR_RT_INVALID;
  if (VQSTATUS status = head->ReadCell(&record)) return status;
  *width = record.FractionalWidth;
  return VQ_OK;
}

VQSTATUS VQTableBody::SetAutomaticWidth(bool on) {
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  if (before.IsAutomatic() == on) return VQ_OK;
  vq::TableLayout after = before;
  after.GetBegin().Flags ^= TABLEFLAG_AUTOMATIC_WIDTH;
  return Change(before, after);
}

VQSTATUS VQTableBody::SetColumnWidth(unsigned long column, long width) {
  if (column >= GetColumns()) return VQERR_COLUMN_POSITION;
  if (width > VQTABLE_MAX_SPACING) return VQERR_CELL_SPACING;
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  vq::TableLayout after = before;
  if (before.IsAutomatic()) {
    const long table = before.GetTableWidth(), old = before.WidthOf(column);
    if (width > table) return VQERR_COLUMN_WIDTH_TABLE;
    if (before.GetCount() > 1 && table - width < kLeastRemaining) return VQERR_COLUMN_WIDTH_REMAINING;
    if (table > old) {
      after.Scale(static_cast<double>(table - width) / static_cast<double>(table - old), static_cast<long>(column));
    }
  }
  after.SetWidth(column, width);
  return Change(before, after);
}

VQSTATUS VQTableBody::SetFractionalColumnWidth(unsigned long column, long width) {
  if (column >= GetColumns()) return VQERR_COLUMN_POSITION;
  vq::TableLayout layout;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &layout)) return status;
  if (!layout.IsAutomatic()) return VQWARN_AUTOMATIC_WIDTH;
  if (width > VQTABLE_MAX_FRACTIONAL_WIDTH) return VQERR_FRACTIONAL_WIDTH;
  if (width < 0) return VQERR_INVALID_PARAMETER;
  long table = 0, old = 0;
  for (unsigned long each = 0; each < layout.GetCount(); ++each) {
    long fraction = 0;
    if (VQSTATUS status = GetFractionalColumnWidth(each, &fraction)) return status;
    table += fraction;
    if (each == column) old = fraction;
  }
  const double factor =
      table > old && width < table ? static_cast<double>(table - width) / static_cast<double>(table - old) : 0;
  return EditCells([&](const VQTableCellBody& cell, CDTABLECELL* record) {
    const bool own = static_cast<unsigned long>(cell.GetColumn()) == column;
    const long fraction = own ? width : std::lround(record->FractionalWidth * factor);
    record->FractionalWidth = static_cast<std::uint16_t>(std::min(fraction, VQTABLE_MAX_FRACTIONAL_WIDTH));
  });
}

VQSTATUS VQTableBody::SetLeftMargin(long margin) {
  if (margin < 0) return VQERR_INVALID_PARAMETER;
  if (margin > 0xFFFF) return VQERR_OUT_OF_RANGE;
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  vq::TableLayout after = before;
  after.Move(margin - before.GetBegin().LeftMargin);
  after.GetBegin().LeftMargin = static_cast<std::uint16_t>(margin);
  return Change(before, after);
}

VQSTATUS VQTableBody::SetColumnSpacing(long spacing) {
  if (spacing > VQTABLE_MAX_SPACING) return VQERR_CELL_SPACING;
  if (spacing < 0) return VQERR_INVALID_PARAMETER;
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  vq::TableLayout after = before;
  after.SetSpacing(spacing);
  return Change(before, after);
}

VQSTATUS VQTableBody::SetRowSpacing(long spacing) {
  if (spacing > VQTABLE_MAX_SPACING) return VQERR_CELL_SPACING;
  if (spacing < 0) return VQERR_INVALID_PARAMETER;
  CDTABLEBEGIN begin{};
  if (VQSTATUS status = ReadBegin(&begin)) return status;
  const bool v4 = (begin.Flags & TABLEFLAG_V4_SPACING) != 0;
  if (v4) begin.V4VertCellSpace = static_cast<std::uint16_t>(spacing);
  begin.VertCellSpace = static_cast<std::uint16_t>(v4 ? std::max(spacing, VQTABLE_DEFAULT_ROW_SPACING) : spacing);
  return WriteBegin(begin);
}

VQSTATUS VQTableBody::SetBorderStyle(VQTABLEBORDERSTYLE style) {
  if (style != VQTABLEBORDERSTYLE_2 && style != VQTABLEBORDERSTYLE_4 && style != VQTABLEBORDERSTYLE_8) {
    return VQERR_INVALID_PARAMETER;
  }
  vq::TableLayout before;
  if (VQSTATUS status = vq::TableLayout::Read(*this, &before)) return status;
  if (vq::TableLayout::BorderStyleOf(before.GetBegin()) == style) return VQ_OK;
  vq::TableLayout after = before;
  CDTABLEBEGIN& begin = after.GetBegin();
  begin.Flags = static_cast<std::uint16_t>(begin.Flags & ~TABLEFLAG_BORDER_STYLES);
  if (style != VQTABLEBORDERSTYLE_2) begin.Flags = static_cast<std::uint16_t>(begin.Flags | style);
  if (!(begin.Flags & TABLEFLAG_V4_SPACING)) {
    begin.Flags |= TABLEFLAG_V4_SPACING;
    begin.V4HorizCellSpace = begin.HorizCellSpace;
    begin.V4VertCellSpace = begin.VertCellSpace;
    begin.HorizCellSpace =
        static_cast<std::uint16_t>(std::max<long>(begin.HorizCellSpace, VQTABLE_DEFAULT_COLUMN_SPACING));
    begin.VertCellSpace = static_cast<std::uint16_t>(std::max<long>(begin.VertCellSpace, VQTABLE_DEFAULT_ROW_SPACING));
  }
  return Change(before, after);
}

template <typename Edit>
VQSTATUS VQTableBody::EditCells(Edit edit) {
  // All can be read before any is written.
  for (const bool write : {false, true}) {
    for (VQTableCellBody* cell : GetCells()) {
      CDTABLECELL record{};
      if (VQSTATUS status = cell->ReadCell(&record)) return status;
      if (!write) continue;
      edit(*cell, &record);
      if (VQSTATUS status = cell->WriteCell(record)) return status;
    }
  }
  return VQ_OK;
}

namespace {

constexpr unsigned kEdges = 4;

// The value where the cell's edge is one of the table's, else nothing; `bits` a piece, edges in the record's order.
unsigned OuterEdges(const VQTableBody& table, const VQTableCellBody& cell, unsigned bits) {
  const bool outer[kEdges] = {cell.GetColumn() == 0,
                              cell.GetColumn() + 1 == static_cast<std::int32_t>(table.GetColumns()), cell.GetRow() == 0,
                              cell.GetRow() + 1 == static_cast<std::int32_t>(table.GetRows())};
  unsigned mask = 0;
  for (unsigned edge = 0; edge < kEdges; ++edge) {
    if (outer[edge]) mask |= ((1U << bits) - 1) << (edge * bits);
  }
  return mask;
}

}  // namespace

VQSTATUS VQTableBody::Outline(VQTABLEBORDERTYPE borderType) {
  VQ_ASSERT(borderType >= VQTABLEBORDERTYPE_NONE && borderType <= VQTABLEBORDERTYPE_DOUBLE, "VQRTTABL");
  const unsigned all = static_cast<unsigned>(borderType) * 0x55;  // the type at each edge
  return EditCells([&](const VQTableCellBody& cell, CDTABLECELL* record) {
    record->Border = static_cast<std::uint8_t>(all & OuterEdges(*this, cell, 2));
  });
}

VQSTATUS VQTableBody::Outline(VQTABLEBORDERSTYLE style) {
  for (const VQTableCellBody* cell : GetCells()) {
    CDTABLECELL record{};
    if (VQSTATUS status = cell->ReadCell(&record)) return status;
  }
  if (VQSTATUS status = SetBorderStyle(style)) return status;
  return EditCells([&](const VQTableCellBody& cell, CDTABLECELL* record) {
    record->BorderWidth = static_cast<std::uint16_t>(record->BorderWidth & OuterEdges(*this, cell, 4));
  });
}

VQSTATUS VQTableBody::SetBackgroundColor(unsigned short color) {
  return EditCells([&](const VQTableCellBody&, CDTABLECELL* record) {
    record->BackgroundColor = color;
    record->Flags |= TABLECELLFLAG_BACKGROUND;
  });
}

VQSTATUS VQTableBody::SetTransparent() {
  return EditCells([](const VQTableCellBody&, CDTABLECELL* record) {
    record->Flags = static_cast<std::uint8_t>(record->Flags & ~TABLECELLFLAG_BACKGROUND);
  });
}
