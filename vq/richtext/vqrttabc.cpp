#include "vq/richtext/vqrttabc.h"

#include "engine/ods.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/richtext/vqstyltx.h"

namespace {

constexpr unsigned char kDefaultBorder = 0x55;
constexpr unsigned short kDefaultBorderWidth = 0x1111;
constexpr unsigned char kDefaultFlags = 0x02;
constexpr std::uint32_t kPositionOffset = 2;
constexpr unsigned kTypeMask = 3, kTypeBits = 2;
constexpr unsigned kWidthMask = 0xF, kWidthBits = 4;

unsigned TypeShift(vq::CellEdge edge) { return static_cast<unsigned>(edge) * kTypeBits; }
unsigned WidthShift(vq::CellEdge edge) { return static_cast<unsigned>(edge) * kWidthBits; }

}  // namespace

VQTableCellBody::VQTableCellBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTContainerBody(VQRTTYPE_TABLE_CELL, source, offset, length), Row(-1), Column(-1) {
  TakePosition();
}

VQTableCellBody::VQTableCellBody()
    : VQRTContainerBody(VQRTTYPE_TABLE_CELL, static_cast<unsigned short>(0)), Row(-1), Column(-1) {}

VQTableCellBody::VQTableCellBody(long row, long col)
    : VQRTContainerBody(VQRTTYPE_TABLE_CELL, static_cast<unsigned short>(0)), Row(-1), Column(-1) {
  VQ_ASSERT_TEXT(row >= 0 && row < VQTABLE_MAX_ROWS, "row >= 0 && row < VQTABLE_MAX_ROWS", "VQRTTABC");
  VQ_ASSERT_TEXT(col >= 0 && col < VQTABLE_MAX_COLS, "col >= 0 && col < VQTABLE_MAX_COLS", "VQRTTABC");
  CDTABLECELL record{};
  record.Row = static_cast<std::uint8_t>(row);
  record.Column = static_cast<std::uint8_t>(col);
  record.Border = kDefaultBorder;
  record.Flags = kDefaultFlags;
  record.BorderWidth = kDefaultBorderWidth;
  record.RowSpan = 1;
  record.ColumnSpan = 1;
  vq::ThrowIfError(WriteCell(record));
}

VQCLASSID VQTableCellBody::GetClassID() const { return VQCLASSID_VQTABLECELLBODY; }

VQRTObjectBody* VQTableCellBody::MakeSame() const { return new VQTableCellBody(); }

VQSTATUS VQTableCellBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (source && source->GetType() != VQRTTYPE_TABLE_CELL) return VQERR_NOT_A_CELL;
  const VQSTATUS status = VQRTContainerBody::Copy(source, options);
  TakePosition();
  if (VQTableBody* table = GetTable()) table->ChildrenChanged();
  return status;
}

void VQTableCellBody::TakePosition() {
  unsigned char position[2] = {};
  const bool stated = ReadRecord(kPositionOffset, position, sizeof position) == VQ_OK;
  Row = stated ? position[0] : -1;
  Column = stated ? position[1] : -1;
}

VQTableBody* VQTableCellBody::GetTable() const {
  return Parent && Parent->GetType() == VQRTTYPE_TABLE ? static_cast<VQTableBody*>(Parent) : nullptr;
}

VQSTATUS VQTableCellBody::SetPosition(std::int32_t row, std::int32_t column) {
  if (row == Row && column == Column) return VQ_OK;
  const unsigned char position[2] = {static_cast<unsigned char>(row), static_cast<unsigned char>(column)};
  if (VQSTATUS status = WriteRecord(kPositionOffset, position, sizeof position)) return status;
  Row = row;
  Column = column;
  if (VQTableBody* table = GetTable()) table->ChildrenChanged();
  return VQ_OK;
}

VQSTATUS VQTableCellBody::ReadCell(CDTABLECELL* record) const { return ReadODS(ODS_CDTABLECELL, record, 0); }

VQSTATUS VQTableCellBody::WriteCell(const CDTABLECELL& record) {
  CDTABLECELL cell = record;
  cell.Header = {SIG_CD_TABLECELL, static_cast<std::uint8_t>(EngOdsLength(ODS_CDTABLECELL))};
  if (VQSTATUS status = WriteODS(ODS_CDTABLECELL, &cell, 0)) return status;
  if (Row == cell.Row && Column == cell.Column) return VQ_OK;
  Row = cell.Row;
  Column = cell.Column;
  if (VQTableBody* table = GetTable()) table->ChildrenChanged();
  return VQ_OK;
}

VQSTATUS VQTableCellBody::WriteChanged(const CDTABLECELL& present, const CDTABLECELL& record) {
  const bool same = present.LeftMargin == record.LeftMargin && present.RightMargin == record.RightMargin &&
                    present.FractionalWidth == record.FractionalWidth && present.Column == record.Column &&
                    present.Row == record.Row;
  return same ? VQ_OK : WriteCell(record);
}

VQSTATUS VQTableCellBody::ReadMargins(long* left, long* right) const {
  CDTABLECELL record{};
  if (VQSTATUS status = ReadCell(&record)) return status;
  *left = record.LeftMargin;
  *right = record.RightMargin;
  return VQ_OK;
}

VQTABLEBORDERTYPE VQTableCellBody::GetBorderType(vq::CellEdge edge) const {
  CDTABLECELL record{};
  vq::ThrowIfError(ReadCell(&record));
  const int border = static_cast<int>(record.Border >> TypeShift(edge) & kTypeMask);
  VQ_ASSERT(border >= VQTABLEBORDERTYPE_NONE && border <= VQTABLEBORDERTYPE_DOUBLE, "VQRTTABC");
  return static_cast<VQTABLEBORDERTYPE>(border);
}

VQSTATUS VQTableCellBody::SetBorderType(vq::CellEdge edge, VQTABLEBORDERTYPE borderType) {
  VQ_ASSERT(borderType >= VQTABLEBORDERTYPE_NONE && borderType <= VQTABLEBORDERTYPE_DOUBLE, "VQRTTABC");
  CDTABLECELL record{};
  if (VQSTATUS status = ReadCell(&record)) return status;
  const unsigned shift = TypeShift(edge);
  const unsigned border = (record.Border & ~(kTypeMask << shift)) | static_cast<unsigned>(borderType) << shift;
  if (border == record.Border) return VQ_OK;
  record.Border = static_cast<std::uint8_t>(border);
  return WriteCell(record);
}

unsigned long VQTableCellBody::GetBorderWidth(vq::CellEdge edge) const {
  CDTABLECELL record{};
  vq::ThrowIfError(ReadCell(&record));
  return record.BorderWidth >> WidthShift(edge) & kWidthMask;
}

VQSTATUS VQTableCellBody::SetBorderWidth(vq::CellEdge edge, unsigned long width) {
  if (width > VQTABLE_MAX_BORDER_WIDTH) return VQERR_CELL_BORDER;
  CDTABLECELL record{};
  if (VQSTATUS status = ReadCell(&record)) return status;
  const unsigned shift = WidthShift(edge);
  const unsigned widths = (record.BorderWidth & ~(kWidthMask << shift)) | static_cast<unsigned>(width) << shift;
  if (widths == record.BorderWidth) return VQ_OK;
  record.BorderWidth = static_cast<std::uint16_t>(widths);
  return WriteCell(record);
}

VQSTATUS VQTableCellBody::SetBackgroundColor(unsigned short color) {
  CDTABLECELL record{};
  if (VQSTATUS status = ReadCell(&record)) return status;
  record.BackgroundColor = color;
  record.Flags |= TABLECELLFLAG_BACKGROUND;
  return WriteCell(record);
}

VQSTATUS VQTableCellBody::SetTransparent() {
  CDTABLECELL record{};
  if (VQSTATUS status = ReadCell(&record)) return status;
  if (!(record.Flags & TABLECELLFLAG_BACKGROUND)) return VQ_OK;
  record.Flags = static_cast<std::uint8_t>(record.Flags & ~TABLECELLFLAG_BACKGROUND);
  return WriteCell(record);
}

VQRTObjectBody* VQTableCellBody::GetFirstReference() const { return FirstOfType(VQRTTYPE_PAB_REFERENCE); }

VQSTATUS VQTableCellBody::Fill(std::uint16_t pabid, const CDPABDEFINITION* settings) {
  if (settings) {
    auto* definition = new VQPABDefinitionBody();
    LinkPointers(definition, LastChild, nullptr);
    if (VQSTATUS status = definition->SetRecord(*settings)) return status;
  }
  LinkPointers(new VQRTObjectBody(VQRTTYPE_NEW_PARAGRAPH, SIG_CD_PARAGRAPH), LastChild, nullptr);
  auto* reference = new VQRTObjectBody(VQRTTYPE_PAB_REFERENCE, SIG_CD_PABREFERENCE);
  LinkPointers(reference, LastChild, nullptr);
  const auto length = static_cast<std::uint8_t>(EngOdsLength(ODS_CDPABREFERENCE));
  const CDPABREFERENCE record{{SIG_CD_PABREFERENCE, length}, pabid};
  if (VQSTATUS status = reference->WriteODS(ODS_CDPABREFERENCE, &record, 0)) return status;
  LinkPointers(new VQStylizedTextBody(), LastChild, nullptr);
  return VQ_OK;
}
