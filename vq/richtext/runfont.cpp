// The font of a run as a style, and what goes with it from one rich text to another.
#include "vq/richtext/fontid.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/vqstyltx.h"

VQFontStyleBody& VQStylizedTextBody::OwnFontStyle() {
  if (!FontStyle) {
    FontStyle = new VQFontStyleBody;
    FontStyle->AddReference();
    FontStyle->SetOwner(this);
  }
  return *FontStyle;
}

void VQStylizedTextBody::DropFontStyle() {
  if (!FontStyle) return;
  FontStyle->SetOwner(nullptr);
  FontStyle->Release();
  FontStyle = nullptr;
}

VQSTATUS VQStylizedTextBody::GetFontStyle(VQFontStyle* style) {
  if (!style) return VQERR_INVALID_PARAMETER;
  if (Closed) return VQERR_OBJECT_CLOSED;
  if (!FontStyle) {
    VQFontTable table;
    const VQSTATUS found = vq::FontTableOf(*this, &table);
    if (VQIsError(found)) return found;
    if (const VQSTATUS status = OwnFontStyle().Assign(static_cast<std::uint32_t>(GetFontID()), &table)) {
      DropFontStyle();
      return status;
    }
  }
  *style = VQFontStyle(FontStyle);
  return FontStyle->Refresh();
}

VQSTATUS VQStylizedTextBody::FindTableFont(VQFontStyle* style) {
  const bool table = vq::fontid::IsTableFace(vq::fontid::Face(static_cast<std::uint32_t>(GetFontID())));
  return table ? GetFontStyle(style) : VQWARN_NOT_FOUND;
}

VQSTATUS VQStylizedTextBody::ApplyFontStyle(const VQFontStyle& style, unsigned long mask) {
  if (style.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  if (const VQSTATUS status = style.GetFontStyleBody()->Refresh()) return status;
  VQFontStyle own;
  if (const VQSTATUS status = GetFontStyle(&own)) return status;
  VQFontStyleBody& body = *own.GetFontStyleBody();
  const VQSTATUS status = body.ChangeFont(*style.GetFontStyleBody(), static_cast<std::uint32_t>(mask));
  own.DeleteBody();
  // In a rich text the table knows the face; a run outside one knows it by its style alone.
  if (FontStyle->GetRefCount() == 1 && GetRichTextBody()) DropFontStyle();
  return status;
}

VQSTATUS VQStylizedTextBody::ConvertFonts(VQItem* table) {
  if (!FontStyle && !vq::fontid::IsTableFace(vq::fontid::Face(static_cast<std::uint32_t>(GetFontID())))) return VQ_OK;
  VQFontStyle style;
  if (const VQSTATUS status = GetFontStyle(&style)) return status;
  return vq::ConvertFont(style, table);
}

VQSTATUS VQStylizedTextBody::Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) {
  if (const VQSTATUS status = VQRTContainerBody::Copy(source, options)) return status;
  DropFontStyle();
  auto* run = static_cast<VQStylizedTextBody*>(source);
  if (!vq::fontid::IsTableFace(vq::fontid::Face(static_cast<std::uint32_t>(run->GetFontID())))) return VQ_OK;
  VQFontStyle font;
  if (const VQSTATUS status = run->GetFontStyle(&font)) return status;
  OwnFontStyle().CopyFont(*font.GetFontStyleBody());
  return VQ_OK;
}
