// What becomes of a paragraph style in a table cell.
#include "vq/richtext/tablelayout.h"
#include "vq/richtext/vqparstl.h"

namespace {

// Page breaks and what keeps lines together are the cell's.
constexpr unsigned kCellBits = PABFLAG_PAGE_BREAK_BEFORE | PABFLAG_KEEP_PARAGRAPHS | PABFLAG_KEEP_LINES | 0x0080;

}  // namespace

VQSTATUS VQTableCellBody::AdjustParagraphStyle(const VQParagraphStyle& style, VQParagraphStyle* adjusted) {
  if (style.IsNull() || !adjusted) return VQERR_INVALID_PARAMETER;
  VQRTObjectBody* reference = GetFirstReference();
  if (!reference) return VQERR_CELL_PABREFERENCE;
  VQParagraphStyle present;
  if (VQSTATUS status = FindParagraphStyle(VQRTObject(reference), &present)) return status;
  const VQParagraphStyle made = style.GetParagraphStyleBody()->Clone();
  VQPABDefinitionBody& definition = made.GetParagraphStyleBody()->Definition();
  CDPABDEFINITION settings{}, cell{};
  if (VQSTATUS status = definition.GetRecord(&settings)) return status;
  if (VQSTATUS status = present.GetParagraphStyleBody()->Definition().GetRecord(&cell)) return status;

  const long indent = settings.FirstLineMargin - settings.LeftMargin;
  const long firstLine = cell.LeftMargin + indent;
  if (firstLine < 0 || firstLine > VQ_MAX_MARGIN_TWIPS) return VQERR_PARAGRAPH_MARGIN;
  settings.LeftMargin = cell.LeftMargin;
  settings.RightMargin = cell.RightMargin;
  settings.FirstLineMargin = static_cast<std::uint16_t>(firstLine);
  if (settings.JustifyMode == VQALIGNMENT_NO_CHANGE) settings.JustifyMode = cell.JustifyMode;
  settings.Flags = static_cast<std::uint16_t>((settings.Flags & ~kCellBits) | (cell.Flags & kCellBits));
  if (VQSTATUS status = definition.SetRecord(settings)) return status;
  *adjusted = made;
  return VQ_OK;
}
