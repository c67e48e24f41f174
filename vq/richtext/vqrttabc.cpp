#include "vq/richtext/vqrttabc.h"

#include "engine/ods.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/richtext/vqstyltx.h"

namespace {

constexpr unsigned char kDefaultBorder = 0x55;
constexpr unsigned short kDefaultBorderWidth = 0x1111;
constexpr unsigned char kDefaultFlags = 0x02;
constexpr std::uint32_t kPlaceOffset = 2, kPlaceSize = 8;
constexpr unsigned kTypeMask = 3, kTypeBits = 2;
constexpr unsigned kWidthMask = 0xF, kWidthBits = 4;

void PutWord(unsigned char* bytes, std::int32_t word) {
  bytes[0] = static_cast<unsigned char>(word);
  bytes[1] = static_cast<unsigned char>(word >> 8);
}

unsigned TypeShift(vq::CellEdge edge) { return static_cast<unsigned>(edge) * kTypeBits; }
unsigned WidthShift(vq::CellEdge edge) { return static_cast<unsigned>(edge) * kWidthBits; }

}  // namespace

VQTableCellBody::VQTableCellBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length)
    : VQRTContainerBody(VQRTTYPE_TABLE_CELL, source, offset, length) {
  WatchesChildren = true;
  Definitions = kUnknown;
  TakePlace();
}

VQTableCellBody::VQTableCellBody()
    : VQRTContainerBody(VQRTTYPE_TABLE_CELL, static_cast<unsigned short>(0)),
      Row(-1),
      Column(-1),
      Left(-1),
      Right(-1),
      Fraction(0),
      Definitions(kUnknown) {
  WatchesChildren = true;
}

VQTableCellBody::VQTableCellBody(long row, long col) : VQTableCellBody() {
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
  TakePlace();
  if (VQTableBody* table = GetTable()) table->ChildrenChanged();
  return status;
}

void VQTableCellBody::ContentRestored() {
  VQRTContainerBody::ContentRestored();
  TakePlace();
  if (VQTableBody* table = GetTable()) table->ChildrenChanged();
}

// Row and column, a byte each, margins and fractional width, words, stand together.
void VQTableCellBody::TakePlace() {
  unsigned char bytes[kPlaceSize] = {};
  const bool positioned = ReadRecord(kPlaceOffset, bytes, 2) == VQ_OK;
  const bool placed = positioned && ReadRecord(kPlaceOffset, bytes, sizeof bytes) == VQ_OK;
  Row = positioned ? bytes[0] : -1;
  Column = positioned ? bytes[1] : -1;
  Left = placed ? vq::LoadWord(bytes + 2) : -1;
  Right = placed ? vq::LoadWord(bytes + 4) : -1;
  Fraction = vq::LoadWord(bytes + 6);
}

VQSTATUS VQTableCellBody::SetPlace(const Place& place) {
  if (place == GetPlace()) return VQ_OK;
  unsigned char bytes[kPlaceSize] = {static_cast<unsigned char>(place.Row), static_cast<unsigned char>(place.Column)};
  PutWord(bytes + 2, place.Left);
  PutWord(bytes + 4, place.Right);
  PutWord(bytes + 6, place.Fraction);
  if (VQSTATUS status = WriteRecord(kPlaceOffset, bytes, sizeof bytes)) return status;
  const bool moved = Row != place.Row || Column != place.Column;
  Row = place.Row;
  Column = place.Column;
  Left = place.Left;
  Right = place.Right;
  Fraction = static_cast<std::uint16_t>(place.Fraction);
  if (VQTableBody* table = moved ? GetTable() : nullptr) table->ChildrenChanged();
  return VQ_OK;
}

VQTableBody* VQTableCellBody::GetTable() const {
  return Parent && Parent->GetType() == VQRTTYPE_TABLE ? static_cast<VQTableBody*>(Parent) : nullptr;
}

VQSTATUS VQTableCellBody::ReadCell(CDTABLECELL* record) const { return ReadODS(ODS_CDTABLECELL, record, 0); }

VQSTATUS VQTableCellBody::WriteCell(const CDTABLECELL& record) {
  CDTABLECELL cell = record;
  cell.Header = {SIG_CD_TABLECELL, static_cast<std::uint8_t>(vq::LengthWithRest(*this, ODS_CDTABLECELL))};
  if (VQSTATUS status = WriteODS(ODS_CDTABLECELL, &cell, 0)) return status;
  const bool moved = Row != cell.Row || Column != cell.Column;
  TakePlace();
  if (VQTableBody* table = moved ? GetTable() : nullptr) table->ChildrenChanged();
  return VQ_OK;
}

bool VQTableCellBody::HasNoDefinitions() const {
  if (Definitions == kUnknown) {
    Definitions = kNone;
    for (const VQRTObjectBody* child = FirstChild; child && Definitions == kNone; child = child->GetNext()) {
      const bool inside = child->AsBase() && child->GetType() != VQRTTYPE_STYLIZED_TEXT;
      if (inside || child->GetType() == VQRTTYPE_PAB_DEFINITION) Definitions = kPerhaps;
    }
  }
  return Definitions == kNone;
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

VQSTATUS VQTableCellBody::InitCell(std::uint16_t pabid, const CDPABDEFINITION* settings) {
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
  Definitions = settings ? kPerhaps : kNone;
  return VQ_OK;
}
