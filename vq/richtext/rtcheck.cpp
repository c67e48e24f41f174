#include "vq/richtext/rtcheck.h"

#include <algorithm>

#include "engine/ods.h"
#include "vq/richtext/vqrtinit.h"

namespace vq {

bool StandsAlone(VQRTTYPE type) {
  if (type == VQRTTYPE_CHAR || type == VQRTTYPE_RICH_TEXT || type == VQRTTYPE_TABLE_CELL) return false;
  return IsRTType(type, VQRTTYPE_ELEMENT) || IsRTType(type, VQRTTYPE_CONTAINER) ||
         IsRTType(type, VQRTTYPE_PAB_OBJECT) || type == VQRTTYPE_NEW_PARAGRAPH;
}

namespace {

// Objects that stay open in the stream until a hotspot's end.
bool EndsAsHotspot(VQRTTYPE type) {
  return (IsRTType(type, VQRTTYPE_HOTSPOT) && type != VQRTTYPE_HOTSPOT) || type == VQRTTYPE_BUTTON ||
         IsRTType(type, VQRTTYPE_SUBFORM) || type == VQRTTYPE_ATTACHMENT || IsRTType(type, VQRTTYPE_ACTIVE_OBJECT);
}

}  // namespace

bool ChangesNesting(VQRTTYPE type) {
  return IsRTType(type, VQRTTYPE_TABLE) || type == VQRTTYPE_TABLE_CELL || type == VQRTTYPE_TABLE_END ||
         type == VQRTTYPE_OLE_OBJECT || type == VQRTTYPE_OLE_OBJECT_END || type == VQRTTYPE_GRAPHIC ||
         type == VQRTTYPE_HOTSPOT_END || EndsAsHotspot(type);
}

bool IsGraphicHeader(VQRTTYPE type) { return type == VQRTTYPE_BITMAP || IsRTType(type, VQRTTYPE_METAFILE); }

bool IsGraphicRecord(VQRTTYPE type) {
  switch (type) {
    case VQRTTYPE_PM_METAFILE_SEGMENT:
    case VQRTTYPE_WIN_METAFILE_SEGMENT:
    case VQRTTYPE_MAC_METAFILE_SEGMENT:
    case VQRTTYPE_BITMAP_SEGMENT:
    case VQRTTYPE_BITMAP_COLOR_TABLE:
    case VQRTTYPE_BITMAP_PATTERN_TABLE:
    case VQRTTYPE_BITMAP_TRANSPARENCY_TABLE:
      return true;
    default:
      return IsGraphicHeader(type);
  }
}

VQRTTYPE GraphicHeaderOf(VQRTTYPE part) {
  switch (part) {
    case VQRTTYPE_PM_METAFILE_SEGMENT:
      return VQRTTYPE_PM_METAFILE;
    case VQRTTYPE_WIN_METAFILE_SEGMENT:
      return VQRTTYPE_WIN_METAFILE;
    case VQRTTYPE_MAC_METAFILE_SEGMENT:
      return VQRTTYPE_MAC_METAFILE;
    default:
      return VQRTTYPE_BITMAP;
  }
}

VQRTTYPE StreamType(const VQRTObjectBody& object) {
  if (object.GetType() != VQRTTYPE_COMPOSITE_DATA) return object.GetType();
  const RecordBytes bytes(object);
  return VQRichTextParser::StructureType(bytes.Get(), bytes.GetSize());
}

std::uint32_t LengthWithRest(const VQRTObjectBody& object, unsigned short code) {
  const std::uint32_t fixed = EngOdsLength(code);
  const RecordBytes bytes(object);
  RecordHeader header;
  if (bytes.GetSize() <= fixed || !ReadRecordHeader(bytes.Get(), bytes.GetSize(), &header)) return fixed;
  return std::max(fixed, std::min(header.Length, bytes.GetSize()));
}

namespace {

// A client's own record: bytes behind the length that its header states would be read as further records.
bool IsWholeRecord(const VQRTObjectBody& object) {
  const RecordBytes bytes(object);
  RecordHeader header;
  if (bytes.GetSize() == 0) return true;  // nothing is written
  return ReadRecordHeader(bytes.Get(), bytes.GetSize(), &header) && Padded(header.Length) == bytes.GetSize();
}

}  // namespace

VQSTATUS StreamCheck::Take(const VQRTObjectBody& object) {
  // What was loaded has been checked.
  if (object.UseValueBlock() && !object.VQRTObjectBody::IsValid()) return VQERR_RT_INVALID;
  const bool opaque = object.GetType() == VQRTTYPE_COMPOSITE_DATA;
  if (opaque && object.UseValueBlock() && !IsWholeRecord(object)) return VQERR_RT_INVALID;
  const VQRTTYPE type = StreamType(object);
  if (opaque && type == VQRTTYPE_BUTTON && Top() == type) return VQ_OK;  // its second begin
  return TakeType(type);
}

VQSTATUS StreamCheck::TakeType(VQRTTYPE type) {
  if (IsGraphicRecord(type)) return TakeGraphicRecord(type);
  Graphic = VQRTTYPE_NONE;
  switch (type) {
    case VQRTTYPE_TABLE:
    case VQRTTYPE_OLE_OBJECT:
      return Push(type);
    case VQRTTYPE_TABLE_CELL:
      return TakeCell();
    case VQRTTYPE_TABLE_END:
      if (Top() == VQRTTYPE_TABLE_CELL) --Depth;
      return Top() == VQRTTYPE_TABLE ? Pop() : VQERR_RT_CORRUPT_TABLE;
    case VQRTTYPE_OLE_OBJECT_END:
      return Top() == VQRTTYPE_OLE_OBJECT ? Pop() : VQ_OK;
    case VQRTTYPE_HOTSPOT_END:
      return EndsAsHotspot(Top()) ? Pop() : VQ_OK;
    case VQRTTYPE_GRAPHIC:
      Graphic = type;
      return Depth + 1 > kMostOpen ? VQERR_RT_STACK_OVERFLOW : VQ_OK;
    default:
      return EndsAsHotspot(type) ? Push(type) : VQ_OK;
  }
}

VQSTATUS StreamCheck::TakeGraphicRecord(VQRTTYPE type) {
  if (Graphic == VQRTTYPE_NONE) return VQ_OK;
  if (IsGraphicHeader(type)) {
    Graphic = type;
    SegmentsOver = false;
    return Depth + 2 > kMostOpen ? VQERR_RT_STACK_OVERFLOW : VQ_OK;
  }
  if (Graphic != GraphicHeaderOf(type) || (SegmentsOver && type == VQRTTYPE_BITMAP_SEGMENT)) {
    return VQERR_RT_CORRUPT_GRAPHIC;
  }
  SegmentsOver = type != VQRTTYPE_BITMAP_SEGMENT;
  return VQ_OK;
}

// A link may go on in the next cell.
VQSTATUS StreamCheck::TakeCell() {
  const bool spanning = Depth >= 2 && Top() == VQRTTYPE_LINK_HOTSPOT && Open[Depth - 2] == VQRTTYPE_TABLE_CELL;
  if (spanning) --Depth;
  if (Top() == VQRTTYPE_TABLE_CELL) --Depth;
  if (Top() != VQRTTYPE_TABLE) return VQERR_RT_CORRUPT_TABLE;
  const VQSTATUS status = Push(VQRTTYPE_TABLE_CELL);
  return status == VQ_OK && spanning ? Push(VQRTTYPE_LINK_HOTSPOT) : status;
}

VQSTATUS StreamCheck::Push(VQRTTYPE type) {
  static_assert(kMostOpen == VQRichTextParser::kStackSize);
  if (Depth == kMostOpen) return VQERR_RT_STACK_OVERFLOW;
  Open[Depth++] = type;
  return VQ_OK;
}

VQSTATUS StreamCheck::Pop() {
  --Depth;
  return VQ_OK;
}

}  // namespace vq
