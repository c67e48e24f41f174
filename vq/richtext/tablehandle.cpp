// The handle on a table: units, the throw rule, then the body's operation.
#include "vq/richtext/rtedit.h"
#include "vq/richtext/tablelayout.h"
#include "vq/values/vqstring.h"

VQTable::VQTable(const VQRTObject& object) { *this = object; }

VQTable::VQTable(VQTableBody* body) { Attach(body, 0); }

VQTable::VQTable(unsigned long rows, unsigned long columns) {
  auto* body = new VQTableBody();
  Attach(body, 0);
  VQSTATUS status = body->Build(rows, columns, nullptr);
  if (status == VQ_OK) status = body->Number();
  vq::ThrowIfError(status);
}

VQCLASSID VQTable::GetClassID() const { return VQCLASSID_VQTABLE; }

void VQTable::ValidateRTType(const VQRTObjectBody* body) const {
  if (body && body->GetType() != VQRTTYPE_TABLE) vq::Throw(VQERR_CONVERSION_FAILED);
}

namespace {

VQSTATUS Check(const VQTable& table) {
  if (table.IsNull()) return VQERR_OBJECT_NOT_INITIALIZED;
  return table.GetTableBody()->IsClosed() ? VQERR_OBJECT_CLOSED : VQ_OK;
}

VQTableBody& Open(const VQTable& table) {
  vq::ThrowIfError(Check(table));
  return *table.GetTableBody();
}

template <typename Operation>
VQSTATUS Run(const VQTable& table, Operation operation) {
  const VQSTATUS status = Check(table);
  if (status != VQ_OK) return vq::Apply(status);
  VQTableBody& body = *table.GetTableBody();
  return vq::Apply(vq::Whole(body, [&] { return operation(body); }));
}

// A setter whose argument is a length.
VQSTATUS SetLength(const VQTable& table, const double& value, VQSTATUS (VQTableBody::*set)(long)) {
  return Run(table, [&](VQTableBody& body) { return (body.*set)(vq::ToTwips(value, body.GetUnits())); });
}

double InUnits(const VQTable& table, long twips) { return vq::FromTwips(twips, table.GetTableBody()->GetUnits()); }

}  // namespace

VQTableCell VQTable::operator()(unsigned long row, unsigned long column) const {
  VQTableCellBody* cell = nullptr;
  vq::ThrowIfError(Open(*this).GetCell(row, column, &cell));
  return VQTableCell(cell);
}

VQSTATUS VQTable::GetNextCell(const VQTableCell& cell, VQTableCell* next) const {
  return Run(*this, [&](VQTableBody& body) { return body.GetNextCell(cell, next); });
}

VQSTATUS VQTable::AppendColumns(unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.AppendColumns(count); });
}
VQSTATUS VQTable::AppendRows(unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.AppendRows(count); });
}
VQSTATUS VQTable::InsertColumns(unsigned long position, unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.InsertColumns(position, count); });
}
VQSTATUS VQTable::InsertRows(unsigned long position, unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.InsertRows(position, count); });
}
VQSTATUS VQTable::DeleteColumns(unsigned long position, unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.DeleteColumns(position, count); });
}
VQSTATUS VQTable::DeleteRows(unsigned long position, unsigned long count) {
  return Run(*this, [&](VQTableBody& body) { return body.DeleteRows(position, count); });
}

unsigned long VQTable::GetRowCount() const { return Open(*this).GetRows(); }
unsigned long VQTable::GetColumnCount() const { return Open(*this).GetColumns(); }

VQUNITS VQTable::GetUnits() const { return Open(*this).GetUnits(); }

VQSTATUS VQTable::SetUnits(VQUNITS units) {
  return Run(*this, [&](VQTableBody& body) -> VQSTATUS {
    if (static_cast<unsigned>(units) > VQUNITS_DEFAULT) return VQERR_INVALID_PARAMETER;
    body.SetUnits(units);
    return VQ_OK;
  });
}

double VQTable::Convert(unsigned long twips) const {
  return vq::FromTwips(static_cast<long>(twips), Open(*this).GetUnits());
}

unsigned long VQTable::Convert(const double& value) const {
  const long twips = vq::ToTwips(value, Open(*this).GetUnits());
  if (twips < 0) vq::Throw(VQERR_INVALID_PARAMETER);
  return static_cast<unsigned long>(twips);
}

CDTABLEBEGIN VQTable::GetCDTableBegin() const {
  CDTABLEBEGIN record{};
  vq::ThrowIfError(Open(*this).ReadBegin(&record));
  return record;
}

CDTABLEEND VQTable::GetCDTableEnd() const {
  CDTABLEEND record{};
  vq::ThrowIfError(Open(*this).ReadEnd(&record));
  return record;
}

int VQTable::GetAutomaticWidth() const { return (GetCDTableBegin().Flags & TABLEFLAG_AUTOMATIC_WIDTH) != 0; }
VQTABLEBORDERSTYLE VQTable::GetBorderStyle() const { return vq::TableLayout::BorderStyleOf(GetCDTableBegin()); }
double VQTable::GetColumnSpacing() const { return InUnits(*this, vq::TableLayout::ColumnSpacingOf(GetCDTableBegin())); }
double VQTable::GetRowSpacing() const { return InUnits(*this, vq::TableLayout::RowSpacingOf(GetCDTableBegin())); }
double VQTable::GetLeftMargin() const { return InUnits(*this, GetCDTableBegin().LeftMargin); }

double VQTable::GetColumnWidth(unsigned long column) const {
  long width = 0;
  vq::ThrowIfError(Open(*this).GetColumnWidth(column, &width));
  return InUnits(*this, width);
}

double VQTable::GetFractionalColumnWidth(unsigned long column) const {
  long width = 0;
  vq::ThrowIfError(Open(*this).GetFractionalColumnWidth(column, &width));
  return InUnits(*this, width);
}

VQSTATUS VQTable::SetAutomaticWidth(const int on) {
  return Run(*this, [&](VQTableBody& body) { return body.SetAutomaticWidth(on != 0); });
}

VQSTATUS VQTable::SetColumnWidth(unsigned long column, const double& width) {
  return Run(*this,
             [&](VQTableBody& body) { return body.SetColumnWidth(column, vq::ToTwips(width, body.GetUnits())); });
}

VQSTATUS VQTable::SetFractionalColumnWidth(unsigned long column, const double& width) {
  return Run(*this, [&](VQTableBody& body) {
    return body.SetFractionalColumnWidth(column, vq::ToTwips(width, body.GetUnits()));
  });
}

VQSTATUS VQTable::SetLeftMargin(const double& margin) { return SetLength(*this, margin, &VQTableBody::SetLeftMargin); }
VQSTATUS VQTable::SetColumnSpacing(const double& spacing) {
  return SetLength(*this, spacing, &VQTableBody::SetColumnSpacing);
}
VQSTATUS VQTable::SetRowSpacing(const double& spacing) {
  return SetLength(*this, spacing, &VQTableBody::SetRowSpacing);
}

VQSTATUS VQTable::Outline(VQTABLEBORDERTYPE type) {
  return Run(*this, [&](VQTableBody& body) { return body.Outline(type); });
}
VQSTATUS VQTable::Outline(VQTABLEBORDERSTYLE style) {
  return Run(*this, [&](VQTableBody& body) { return body.Outline(style); });
}
VQSTATUS VQTable::SetBorderStyle(VQTABLEBORDERSTYLE style) {
  return Run(*this, [&](VQTableBody& body) { return body.SetBorderStyle(style); });
}
VQSTATUS VQTable::SetBackgroundColor(unsigned short color) {
  return Run(*this, [&](VQTableBody& body) { return body.SetBackgroundColor(color); });
}
VQSTATUS VQTable::SetTransparent() {
  return Run(*this, [&](VQTableBody& body) { return body.SetTransparent(); });
}
