#include "vq/richtext/rtcheck.h"

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

VQSTATUS StreamCheck::Take(const VQRTObjectBody& object) {
  // What was loaded has been checked.
  if (object.UseValueBlock() && !object.VQRTObjectBody::IsValid()) return VQERR_RT_INVALID;
  return TakeType(object.GetType());
}

VQSTATUS StreamCheck::TakeType(VQRTTYPE type) {
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
    case VQRTTYPE_GRAPHIC:  // itself and a header inside it, until the next record
      return Depth + 2 > kMostOpen ? VQERR_RT_STACK_OVERFLOW : VQ_OK;
    default:
      return EndsAsHotspot(type) ? Push(type) : VQ_OK;
  }
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
