// The parser's rules for records that open and close groups: tables, hotspots, graphics.
#include "engine/records.h"
#include "vq/richtext/rtcheck.h"
#include "vq/richtext/rtmakers.h"
#include "vq/richtext/vqrtinit.h"
#include "vq/richtext/vqrttabl.h"

namespace {

// Hotspot types of the begin record.
constexpr std::uint16_t kPopup = 1;
constexpr std::uint16_t kActionHotspot = 2;
constexpr std::uint16_t kButton = 3;
constexpr std::uint16_t kAttachment = 4;
constexpr std::uint16_t kLink = 11;
constexpr std::uint16_t kSubform = 14;
constexpr std::uint16_t kActiveObject = 15;
// Bits of its flags: 0x10 in the third and in the fourth byte.
constexpr std::uint32_t kFormulaPopup = 0x00100000;
constexpr std::uint32_t kURLLink = 0x10000000;
// Where its fixed part ends.
constexpr std::uint32_t kHotspotFixedPart = 12;
constexpr std::uint16_t kApplet = 1;

}  // namespace

VQSTATUS VQRichTextParser::BeginTable(const Record& record) {
  return AddAndPush(new VQTableBody(record.Source, record.Offset, record.Size));
}

VQSTATUS VQRichTextParser::AddCell(const Record& record) {
  if (Depth == 0) return VQERR_RT_CORRUPT_TABLE;
  VQRTBaseContainerBody* spanning = nullptr;
  if (Depth >= 2 && TopIs(VQRTTYPE_LINK_HOTSPOT) && Stack[Depth - 2].Object->IsType(VQRTTYPE_TABLE_CELL)) {
    spanning = StackTop();
    Pop();
  }
  if (TopIs(VQRTTYPE_TABLE_CELL)) Pop();
  if (!TopIs(VQRTTYPE_TABLE)) return VQERR_RT_CORRUPT_TABLE;
  auto* cell = new VQTableCellBody(record.Source, record.Offset, record.Size);
  VQSTATUS status = AddAndPush(cell);
  if (status != VQ_OK || !spanning) return status;
  status = Push(spanning);
  // What follows belongs to the link and stands in this cell.
  if (status == VQ_OK) Stack[Depth - 1].AddTo = cell;
  return status;
}

VQSTATUS VQRichTextParser::EndTable(const Record& record) {
  if (Depth == 0) return VQERR_RT_CORRUPT_TABLE;
  if (TopIs(VQRTTYPE_TABLE_CELL)) Pop();
  if (!TopIs(VQRTTYPE_TABLE)) return VQERR_RT_CORRUPT_TABLE;
  Add(new VQRTObjectBody(VQRTTYPE_TABLE_END, record.Source, record.Offset, record.Size));
  Pop();
  return VQ_OK;
}

VQRTTYPE VQRichTextParser::HotspotType(const unsigned char* bytes, std::uint32_t size) {
  if (size < kHotspotFixedPart) return VQRTTYPE_NONE;
  const std::uint32_t flags = vq::LoadDword(bytes + 6);
  switch (vq::LoadWord(bytes + 4)) {
    case kPopup:
      return flags & kFormulaPopup ? VQRTTYPE_FORMULA_POPUP : VQRTTYPE_TEXT_POPUP;
    case kActionHotspot:
      return VQRTTYPE_ACTION_HOTSPOT;
    case kButton:
      return VQRTTYPE_BUTTON;
    case kAttachment:
      return VQRTTYPE_ATTACHMENT;
    case kLink:
      return flags & kURLLink ? VQRTTYPE_URL_LINK : VQRTTYPE_LINK_HOTSPOT;
    case kSubform:
      return VQRTTYPE_RT_SUBFORM;
    case kActiveObject:
      return size >= kHotspotFixedPart + 4 && vq::LoadWord(bytes + kHotspotFixedPart + 2) == kApplet
                 ? VQRTTYPE_JAVA_APPLET
                 : VQRTTYPE_ACTIVE_OBJECT;
    default:
      return VQRTTYPE_NONE;
  }
}

VQRTTYPE VQRichTextParser::StructureType(const unsigned char* bytes, std::uint32_t size) {
  vq::RecordHeader header;
  const Rule* rule = vq::ReadRecordHeader(bytes, size, &header) ? FindRule(header.Signature) : nullptr;
  if (!rule) return VQRTTYPE_COMPOSITE_DATA;
  VQRTTYPE type = static_cast<VQRTTYPE>(rule->Type);
  if (rule->Handle == &VQRichTextParser::BeginHotspot) type = HotspotType(bytes, size);
  return vq::ChangesNesting(type) || vq::IsGraphicRecord(type) ? type : VQRTTYPE_COMPOSITE_DATA;
}

VQSTATUS VQRichTextParser::BeginHotspot(const Record& record) {
  const VQRTTYPE type = HotspotType(record.Bytes, record.Size);
  const bool secondBegin = type == VQRTTYPE_BUTTON && !HotspotEndSeen && TopIs(VQRTTYPE_BUTTON);
  HotspotEndSeen = record.Signature != SIG_CD_V4HOTSPOTBEGIN;
  if (type == VQRTTYPE_NONE) return AddOpaque(record);
  if (secondBegin) {
    Add(new VQRTObjectBody(VQRTTYPE_BUTTON_PART, record.Source, record.Offset, record.Size));
    return VQ_OK;
  }
  if (vq::IsRTType(type, VQRTTYPE_ELEMENT)) {
    return AddAndPush(vq::MakeRTElement(type, record.Source, record.Offset, record.Size));
  }
  return AddAndPush(new VQRTContainerBody(type, record.Source, record.Offset, record.Size));
}

VQSTATUS VQRichTextParser::EndHotspot(const Record& record) {
  HotspotEndSeen = true;
  VQRTBaseContainerBody* top = StackTop();
  const bool open =
      top && ((top->IsType(VQRTTYPE_HOTSPOT) && top->GetType() != VQRTTYPE_HOTSPOT) || top->IsType(VQRTTYPE_BUTTON) ||
              top->IsType(VQRTTYPE_SUBFORM) || top->IsType(VQRTTYPE_ATTACHMENT) || top->IsType(VQRTTYPE_ACTIVE_OBJECT));
  if (!open) return AddOpaque(record);
  Add(new VQRTObjectBody(VQRTTYPE_HOTSPOT_END, record.Source, record.Offset, record.Size));
  Pop();
  LastAdded = top;
  return VQ_OK;
}

VQSTATUS VQRichTextParser::BeginOLE(const Record& record) {
  return AddAndPush(new VQRTElementBody(VQRTTYPE_OLE_OBJECT, record.Source, record.Offset, record.Size));
}

VQSTATUS VQRichTextParser::EndOLE(const Record& record) {
  if (!TopIs(VQRTTYPE_OLE_OBJECT)) return AddOpaque(record);
  Add(new VQRTObjectBody(VQRTTYPE_OLE_OBJECT_END, record.Source, record.Offset, record.Size));
  Pop();
  return VQ_OK;
}

VQSTATUS VQRichTextParser::AddPart(const Record& record) {
  const bool fits = RuleType == VQRTTYPE_BUTTON_PART   ? TopIs(VQRTTYPE_BUTTON)
                    : RuleType == VQRTTYPE_ACTION_PART ? TopIs(VQRTTYPE_BUTTON) || TopIs(VQRTTYPE_ACTION_HOTSPOT)
                                                       : TopIs(VQRTTYPE_ACTIVE_OBJECT);
  if (!fits) return AddOpaque(record);
  Add(new VQRTObjectBody(static_cast<VQRTTYPE>(RuleType), record.Source, record.Offset, record.Size));
  return VQ_OK;
}

VQSTATUS VQRichTextParser::BeginGraphic(const Record& record) {
  return AddAndPush(new VQRTElementBody(VQRTTYPE_GRAPHIC, record.Source, record.Offset, record.Size));
}

VQSTATUS VQRichTextParser::AddGraphicHeader(const Record& record) {
  if (StackTop() && vq::IsGraphicHeader(StackTop()->GetType())) Pop();
  if (!TopIs(VQRTTYPE_GRAPHIC)) return AddOpaque(record);
  return AddAndPush(
      new VQRTBaseContainerBody(static_cast<VQRTTYPE>(RuleType), record.Source, record.Offset, record.Size));
}

VQSTATUS VQRichTextParser::AddGraphicPart(const Record& record) {
  const auto type = static_cast<VQRTTYPE>(RuleType);
  VQRTBaseContainerBody* header = StackTop();
  if (TopIs(VQRTTYPE_GRAPHIC)) return GraphicFailed(record);
  if (!header || !vq::IsGraphicHeader(header->GetType())) return AddOpaque(record);
  // Segments come first, and to a header of their own kind.
  const VQRTObjectBody* last = header->GetLastChild();
  const bool late = type == VQRTTYPE_BITMAP_SEGMENT && last && last->GetType() != VQRTTYPE_BITMAP_SEGMENT;
  if (header->GetType() != vq::GraphicHeaderOf(type) || late) return GraphicFailed(record);
  Add(new VQRTObjectBody(type, record.Source, record.Offset, record.Size));
  return VQ_OK;
}

VQSTATUS VQRichTextParser::GraphicFailed(const Record& record) {
  GraphicGood = false;
  const VQSTATUS status = Report(VQERR_RT_CORRUPT_GRAPHIC, &record);
  if (status != VQ_OK) return status;
  CloseGraphic();
  return VQ_OK;
}

void VQRichTextParser::CloseGraphic() {
  if (StackTop() && vq::IsGraphicHeader(StackTop()->GetType())) Pop();
  if (!TopIs(VQRTTYPE_GRAPHIC)) return;
  VQRTBaseContainerBody* graphic = StackTop();
  Pop();
  LastAdded = graphic;
  if (GraphicGood) return;
  GraphicGood = true;
  LastAdded = nullptr;
  graphic->AddReference();
  graphic->Close();
  graphic->Release();
}
