// The handle on a table cell.
#include "vq/richtext/vqrttabl.h"

VQTableCell::VQTableCell(const VQRTObject& object) { *this = object; }

VQTableCell::VQTableCell(VQTableCellBody* body) { Attach(body, 0); }

VQCLASSID VQTableCell::GetClassID() const { return VQCLASSID_VQTABLECELL; }

void VQTableCell::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && body->GetType() != VQRTTYPE_TABLE_CELL) vq::Throw(VQERR_CONVERSION_FAILED);
}

namespace {

using vq::CellEdge;

VQSTATUS Check(const VQTableCell& cell) {
  if (cell.IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  return cell.GetTableCellBody()->IsClosed() ? VQERR_OBJECT_CLOSED : VQ_OK;
}

const VQTableCellBody& Open(const VQTableCell& cell) {
  vq::ThrowIfError(Check(cell));
  return *cell.GetTableCellBody();
}

template <typename Operation>
VQSTATUS Run(const VQTableCell& cell, Operation operation) {
  const VQSTATUS status = Check(cell);
  return vq::Apply(status != VQ_OK ? status : operation(*cell.GetTableCellBody()));
}

VQSTATUS SetType(const VQTableCell& cell, CellEdge edge, VQTABLEBORDERTYPE borderType) {
  return Run(cell, [&](VQTableCellBody& body) { return body.SetBorderType(edge, borderType); });
}

VQSTATUS SetWidth(const VQTableCell& cell, CellEdge edge, unsigned long width) {
  return Run(cell, [&](VQTableCellBody& body) { return body.SetBorderWidth(edge, width); });
}

VQSTATUS SetByte(const VQTableCell& cell, std::uint8_t CDTABLECELL::*field, unsigned char value) {
  return Run(cell, [&](VQTableCellBody& body) {
    CDTABLECELL record{};
    if (VQSTATUS status = body.ReadCell(&record)) return status;
    record.*field = value;
    return body.WriteCell(record);
  });
}

}  // namespace

CDTABLECELL VQTableCell::GetCDTableCell() const {
  CDTABLECELL record{};
  vq::ThrowIfError(Open(*this).ReadCell(&record));
  return record;
}

unsigned short VQTableCell::GetBackgroundColor() const { return GetCDTableCell().BackgroundColor; }

VQTABLEBORDERTYPE VQTableCell::GetBottomBorderType() const { return Open(*this).GetBorderType(CellEdge::kBottom); }
unsigned long VQTableCell::GetBottomBorderWidth() const { return Open(*this).GetBorderWidth(CellEdge::kBottom); }
VQTABLEBORDERTYPE VQTableCell::GetLeftBorderType() const { return Open(*this).GetBorderType(CellEdge::kLeft); }
unsigned long VQTableCell::GetLeftBorderWidth() const { return Open(*this).GetBorderWidth(CellEdge::kLeft); }
VQTABLEBORDERTYPE VQTableCell::GetRightBorderType() const { return Open(*this).GetBorderType(CellEdge::kRight); }
unsigned long VQTableCell::GetRightBorderWidth() const { return Open(*this).GetBorderWidth(CellEdge::kRight); }
VQTABLEBORDERTYPE VQTableCell::GetTopBorderType() const { return Open(*this).GetBorderType(CellEdge::kTop); }
unsigned long VQTableCell::GetTopBorderWidth() const { return Open(*this).GetBorderWidth(CellEdge::kTop); }

unsigned long VQTableCell::GetColumnIndex() const {
  const std::int32_t column = Open(*this).GetColumn();
  if (column < 0) vq::Throw(VQERR_RT_INVALID);
  return static_cast<unsigned long>(column);
}

unsigned long VQTableCell::GetRowIndex() const {
  const std::int32_t row = Open(*this).GetRow();
  if (row < 0) vq::Throw(VQERR_RT_INVALID);
  return static_cast<unsigned long>(row);
}

VQSTATUS VQTableCell::GetTable(VQTable* table) const {
  if (!table) return vq::Apply(VQERR_INVALID_PARAMETER);
  return Run(*this, [&](VQTableCellBody& body) -> VQSTATUS {
    if (!body.GetTable()) return VQERR_CELL_PARENT;
    *table = VQTable(body.GetTable());
    return VQ_OK;
  });
}

VQSTATUS VQTableCell::SetBackgroundColor(unsigned short color) {
  return Run(*this, [&](VQTableCellBody& body) { return body.SetBackgroundColor(color); });
}

VQSTATUS VQTableCell::SetTransparent() {
  return Run(*this, [&](VQTableCellBody& body) { return body.SetTransparent(); });
}

VQSTATUS VQTableCell::SetBottomBorderType(VQTABLEBORDERTYPE type) { return SetType(*this, CellEdge::kBottom, type); }
VQSTATUS VQTableCell::SetBottomBorderWidth(unsigned long width) { return SetWidth(*this, CellEdge::kBottom, width); }
VQSTATUS VQTableCell::SetLeftBorderType(VQTABLEBORDERTYPE type) { return SetType(*this, CellEdge::kLeft, type); }
VQSTATUS VQTableCell::SetLeftBorderWidth(unsigned long width) { return SetWidth(*this, CellEdge::kLeft, width); }
VQSTATUS VQTableCell::SetRightBorderType(VQTABLEBORDERTYPE type) { return SetType(*this, CellEdge::kRight, type); }
VQSTATUS VQTableCell::SetRightBorderWidth(unsigned long width) { return SetWidth(*this, CellEdge::kRight, width); }
VQSTATUS VQTableCell::SetTopBorderType(VQTABLEBORDERTYPE type) { return SetType(*this, CellEdge::kTop, type); }
VQSTATUS VQTableCell::SetTopBorderWidth(unsigned long width) { return SetWidth(*this, CellEdge::kTop, width); }

VQSTATUS VQTableCell::SetCDTableCellColumnSpan(unsigned char span) {
  return SetByte(*this, &CDTABLECELL::ColumnSpan, span);
}
VQSTATUS VQTableCell::SetCDTableCellRowSpan(unsigned char span) { return SetByte(*this, &CDTABLECELL::RowSpan, span); }
VQSTATUS VQTableCell::SetCDTableCellFlags(unsigned char flags) { return SetByte(*this, &CDTABLECELL::Flags, flags); }
