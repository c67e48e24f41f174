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

// The parser's stack as the types in stream order make it.
class Nesting {
 public:
  VQSTATUS Take(VQRTTYPE type) {
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
        return Depth + 2 > VQRichTextParser::kStackSize ? VQERR_RT_STACK_OVERFLOW : VQ_OK;
      default:
        return EndsAsHotspot(type) ? Push(type) : VQ_OK;
    }
  }
  bool IsClosed() const { return Depth == 0; }

 private:
  VQRTTYPE Top() const { return Depth == 0 ? VQRTTYPE_NONE : Open[Depth - 1]; }
  VQSTATUS Push(VQRTTYPE type) {
    if (Depth == Open.size()) return VQERR_RT_STACK_OVERFLOW;
    Open[Depth++] = type;
    return VQ_OK;
  }
  VQSTATUS Pop() {
    --Depth;
    return VQ_OK;
  }
  // A link may go on in the next cell.
  VQSTATUS TakeCell() {
    const bool spanning = Depth >= 2 && Top() == VQRTTYPE_LINK_HOTSPOT && Open[Depth - 2] == VQRTTYPE_TABLE_CELL;
    if (spanning) --Depth;
    if (Top() == VQRTTYPE_TABLE_CELL) --Depth;
    if (Top() != VQRTTYPE_TABLE) return VQERR_RT_CORRUPT_TABLE;
    const VQSTATUS status = Push(VQRTTYPE_TABLE_CELL);
    return status == VQ_OK && spanning ? Push(VQRTTYPE_LINK_HOTSPOT) : status;
  }

  std::array<VQRTTYPE, VQRichTextParser::kStackSize> Open{};
  unsigned Depth = 0;
};

}  // namespace

VQSTATUS CheckStream(const VQRTBaseContainerBody& top) {
  Nesting nesting;
  for (const VQRTObjectBody* object = top.GetFirstChild(); object; object = top.NextInTree(object)) {
    // What was loaded has been checked.
    if (object->UseValueBlock() && !object->VQRTObjectBody::IsValid()) return VQERR_RT_INVALID;
    const VQSTATUS status = nesting.Take(object->GetType());
    if (status != VQ_OK) return status;
  }
  return nesting.IsClosed() ? VQ_OK : VQERR_RT_INVALID;
}

}  // namespace vq
