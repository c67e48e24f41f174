// Making tables, finding cells, and how a table stands among its neighbours.
#include "vq/richtext/vqrttabl.h"

#include <algorithm>

#include "engine/ods.h"
#include "vq/richtext/pabtree.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/tablelayout.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqstyltx.h"

namespace pab = vq::pab;

namespace {

// Of the text behind a table.
constexpr std::uint16_t kPABIDBehind = 1;

VQSTATUS CheckSize(unsigned long rows, unsigned long columns) {
  if (rows > VQTABLE_MAX_ROWS) return VQERR_ROW_COUNT;
  if (columns > VQTABLE_MAX_COLS) return VQERR_COLUMN_COUNT;
  return rows == 0 || columns == 0 ? VQERR_ZERO_ROWS_COLUMNS : VQ_OK;
}

CDTABLEBEGIN DefaultBegin() {
  CDTABLEBEGIN record{};
  record.LeftMargin = VQTABLE_DEFAULT_LEFT_MARGIN;
  record.HorizCellSpace = VQTABLE_DEFAULT_COLUMN_SPACING;
  record.VertCellSpace = VQTABLE_DEFAULT_ROW_SPACING;
  record.Flags = TABLEFLAG_AUTOMATIC_WIDTH | TABLEFLAG_V4_SPACING;
  return record;
}

// Orders cells by row and column, a byte each; below 0 for a damaged one.
std::int32_t PlaceOf(const VQTableCellBody& cell) {
  return cell.GetRow() < 0 ? -1 : cell.GetRow() << 8 | cell.GetColumn();
}

VQRTObject MakeEnd() {
  VQRTObject end(new VQRTObjectBody(VQRTTYPE_TABLE_END, SIG_CD_TABLEEND));
  const auto length = static_cast<std::uint8_t>(EngOdsLength(ODS_CDTABLEEND));
  const CDTABLEEND record{{SIG_CD_TABLEEND, length}, 0};
  vq::ThrowIfError(end.GetRTObjectBody()->WriteODS(ODS_CDTABLEEND, &record, 0));
  return end;
}

}  // namespace

VQTableBody::VQTableBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTContainerBody(VQRTTYPE_TABLE, source, offset, length),
      Rows(0),
      Columns(0),
      Units(VQUNITS_DEFAULT),
      Known(false),
      InOrder(false) {
  WatchesChildren = true;
}

VQTableBody::VQTableBody()
    : VQRTContainerBody(VQRTTYPE_TABLE, static_cast<unsigned short>(0)),
      Rows(0),
      Columns(0),
      Units(VQUNITS_DEFAULT),
      Known(false),
      InOrder(false) {
  WatchesChildren = true;
}

VQCLASSID VQTableBody::GetClassID() const { return VQCLASSID_VQTABLEBODY; }

VQRTObjectBody* VQTableBody::MakeSame() const { return new VQTableBody(); }

VQSTATUS VQTableBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (source && source->GetType() != VQRTTYPE_TABLE) return VQERR_NOT_A_TABLE;
  if (VQSTATUS status = VQRTContainerBody::Copy(source, options)) return status;
  Units = static_cast<VQTableBody*>(source)->Units;
  // In a text the source's identifiers may stand for something else.
  return Parent && options == VQRTCOPYOPTIONS_DEEP ? RenewIdentifiers(pab::Root(*this)) : VQ_OK;
}

VQSTATUS VQTableBody::Append(const VQString&, int) { return VQERR_TABLE_APPEND; }
VQSTATUS VQTableBody::Append(const VQRichText&) { return VQERR_TABLE_APPEND; }
VQSTATUS VQTableBody::Append(const VQRTObject&, VQRTObject*) { return VQERR_TABLE_APPEND; }
int VQTableBody::CanInsertType(VQRTTYPE) const { return 0; }

VQSTATUS VQTableBody::FindSameParagraphStyle(const VQParagraphStyle& style, VQPABDefinition* definition,
                                             VQRTObject* companion) {
  if (style.IsNull() || !definition || !companion) return VQERR_INVALID_PARAMETER;
  if (!style.IsNamed()) return VQERR_NOT_IMPLEMENTED;
  return VQRTContainerBody::FindSameParagraphStyle(style, definition, companion);
}

VQSTATUS VQTableBody::ReadBegin(CDTABLEBEGIN* record) const { return ReadODS(ODS_CDTABLEBEGIN, record, 0); }

VQSTATUS VQTableBody::WriteBegin(const CDTABLEBEGIN& record) {
  CDTABLEBEGIN begin = record;
  begin.Header = {SIG_CD_TABLEBEGIN, static_cast<std::uint8_t>(vq::LengthWithRest(*this, ODS_CDTABLEBEGIN))};
  return WriteODS(ODS_CDTABLEBEGIN, &begin, 0);
}

VQSTATUS VQTableBody::ReadEnd(CDTABLEEND* record) const {
  if (!LastChild || LastChild->GetType() != VQRTTYPE_TABLE_END) return VQERR_RT_INVALID;
  return LastChild->ReadODS(ODS_CDTABLEEND, record, 0);
}

VQSTATUS VQTableBody::Build(unsigned long rows, unsigned long columns, VQRTContainerBody* text) {
  if (VQSTATUS status = CheckSize(rows, columns)) return status;
  std::vector<std::uint16_t> pabids(columns);
  if (VQSTATUS status = (text ? *text : *this).GetNewPABIDs(&pabids)) return status;
  const CDTABLEBEGIN begin = DefaultBegin();
  if (VQSTATUS status = WriteBegin(begin)) return status;
  const vq::TableLayout layout = vq::TableLayout::OfNewTable(begin, columns);
  for (unsigned long row = 0; row < rows; ++row) {
    for (unsigned long column = 0; column < columns; ++column) {
      auto* cell = new VQTableCellBody(static_cast<long>(row), static_cast<long>(column));
      LinkPointers(cell, LastChild, nullptr);
      VQTableCellBody::Place place = layout.PlaceOf(cell->GetRow(), column, column);
      place.Fraction = static_cast<std::int32_t>(layout.WidthOf(column));
      if (VQSTATUS status = cell->SetPlace(place)) return status;
      CDPABDEFINITION settings{};
      if (row == 0) settings = layout.DefinitionOf(column, pabids[column]);
      if (VQSTATUS status = cell->InitCell(pabids[column], row == 0 ? &settings : nullptr)) return status;
    }
  }
  LinkPointers(MakeEnd().GetRTObjectBody(), LastChild, nullptr);
  return VQ_OK;
}

VQTableCellBody* VQTableBody::NextCell(const VQRTObjectBody* cell) {
  VQRTObjectBody* next = cell->GetNext();
  while (next && next->GetType() != VQRTTYPE_TABLE_CELL) next = next->GetNext();
  return static_cast<VQTableCellBody*>(next);
}

void VQTableBody::ChildrenChanged() {
  Known = false;
  Cells.clear();
}

const VQTableBody::CellList& VQTableBody::GetCells() const {
  if (Known) return Cells;
  std::int32_t row = -1, column = -1, last = -1;
  Cells.clear();
  InOrder = true;
  for (VQRTObjectBody* child = FirstChild; child; child = child->GetNext()) {
    if (child->GetType() != VQRTTYPE_TABLE_CELL) continue;
    auto* cell = static_cast<VQTableCellBody*>(child);
    const std::int32_t place = PlaceOf(*cell);
    InOrder = InOrder && place > last;
    last = place;
    row = std::max(row, cell->GetRow());
    column = std::max(column, cell->GetColumn());
    Cells.push_back(cell);
  }
  Rows = static_cast<std::uint32_t>(row + 1);
  Columns = static_cast<std::uint32_t>(column + 1);
  Known = true;
  return Cells;
}

VQTableBody::CellList VQTableBody::TakeCells() {
  GetCells();
  CellList cells;
  cells.swap(Cells);
  Known = false;
  return cells;
}

void VQTableBody::KeepCells(CellList cells, std::uint32_t rows, std::uint32_t columns) {
  Cells = std::move(cells);
  Rows = rows;
  Columns = columns;
  Known = true;
  InOrder = true;
}

std::uint32_t VQTableBody::GetRows() const {
  GetCells();
  return Rows;
}

std::uint32_t VQTableBody::GetColumns() const {
  GetCells();
  return Columns;
}

VQSTATUS VQTableBody::GetCell(unsigned long row, unsigned long column, VQTableCellBody** cell) const {
  const CellList& cells = GetCells();
  if (row >= Rows) return VQERR_ROW_POSITION;
  if (column >= Columns) return VQERR_COLUMN_POSITION;
  const auto place = static_cast<std::int32_t>(row << 8 | column);
  const std::size_t whole = row * Columns + column;
  auto found = cells.begin();
  if (whole < cells.size() && PlaceOf(*cells[whole]) == place) {  // none is missing
    found += static_cast<std::ptrdiff_t>(whole);
  } else if (InOrder) {
    found = std::ranges::lower_bound(cells, place, {}, [](const VQTableCellBody* each) { return PlaceOf(*each); });
  } else {
    found = std::ranges::find(cells, place, [](const VQTableCellBody* each) { return PlaceOf(*each); });
  }
  if (found == cells.end() || PlaceOf(**found) != place) return VQERR_RT_INVALID;
  *cell = *found;
  return VQ_OK;
}

VQSTATUS VQTableBody::GetNextCell(const VQTableCell& cell, VQTableCell* next) const {
  if (!next) return VQERR_INVALID_PARAMETER;
  const VQTableCellBody* body = cell.GetTableCellBody();
  if (!body || body->IsClosed() || body->GetRow() < 0) return VQERR_CELL_REQUIRED;
  if (body->GetParent() != this) return VQERR_CELL_OF_OTHER_TABLE;
  VQTableCellBody* found = NextCell(body);
  if (!found) return VQWARN_NOT_FOUND;
  *next = VQTableCell(found);
  return VQ_OK;
}

namespace {

bool IsText(const VQRTObjectBody* object) { return object && object->GetType() == VQRTTYPE_STYLIZED_TEXT; }

VQSTATUS PutParagraphAhead(VQRTObjectBody& table) {
  const VQRTObject paragraph(new VQRTObjectBody(VQRTTYPE_NEW_PARAGRAPH, SIG_CD_PARAGRAPH));
  if (VQSTATUS status = table.InsertPreviousSibling(paragraph.GetRTObjectBody())) return status;
  const VQRTObjectBody* front = paragraph.GetRTObjectBody()->GetPrevious();
  if (IsText(front) || (front && front->IsType(VQRTTYPE_ELEMENT))) return VQ_OK;
  VQRTObject text;
  if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
  return paragraph.GetRTObjectBody()->InsertPreviousSibling(text.GetRTObjectBody());
}

VQSTATUS PutParagraphBehind(VQRTObjectBody& table, VQRTCursor* cursor) {
  if (!IsText(table.GetNext())) {
    VQRTObject text;
    if (VQSTATUS status = pab::MakeEmptyText(nullptr, &text)) return status;
    if (VQSTATUS status = table.InsertNextSibling(text.GetRTObjectBody())) return status;
  }
  VQRTObjectBody* text = table.GetNext();
  const VQRTObject paragraph(new VQRTObjectBody(VQRTTYPE_NEW_PARAGRAPH, SIG_CD_PARAGRAPH));
  if (VQSTATUS status = text->InsertPreviousSibling(paragraph.GetRTObjectBody())) return status;
  const VQRTObject reference = vq::MakePABReference({kPABIDBehind, kPABIDBehind});
  if (VQSTATUS status = text->InsertPreviousSibling(reference.GetRTObjectBody())) return status;
  return cursor ? pab::PutCursor(cursor, text, false) : VQ_OK;
}

}  // namespace

VQSTATUS VQTableBody::AdjustNeighbours(int before, int after, VQRTCursor* cursor) {
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (before && (!Previous || Previous->GetType() != VQRTTYPE_NEW_PARAGRAPH)) {
    if (VQSTATUS status = PutParagraphAhead(*this)) return status;
  }
  return after ? PutParagraphBehind(*this, cursor) : VQ_OK;
}

VQSTATUS VQRTContainerBody::CreateTable(unsigned long rows, unsigned long columns, VQRTCursor* cursor, VQTable* table) {
  if (VQSTATUS status = CheckSize(rows, columns)) return status;
  auto* body = new VQTableBody();
  const VQRTObject made(body);
  if (VQSTATUS status = CheckInsert(made, 0, cursor)) return status;
  if (VQSTATUS status = body->Build(rows, columns, &pab::Root(*this))) return status;
  if (VQSTATUS status = PlaceNew(made, cursor)) return status;
  if (table) *table = VQTable(body);
  return VQ_OK;
}
