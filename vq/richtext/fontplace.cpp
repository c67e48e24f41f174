#include "vq/richtext/fontplace.h"

#include "vq/richtext/fontid.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/store/vqslate.h"

namespace vq {

namespace {

VQSTATUS AsFontTable(VQItemBody* body, VQFontTable* table) {
  if (body->GetClassID() != VQCLASSID_VQFONTTABLEBODY) return VQERR_INCORRECT_ITEM_TYPE;
  *table = VQFontTable(static_cast<VQFontTableBody*>(body));
  return VQ_OK;
}

VQSTATUS AddFaceTo(const VQFontTable& table, const CDFACE& face, unsigned char* number) {
  VQFontTableBody& body = *table.GetFontTableBody();
  if (VQSTATUS status = body.Load()) return status;
  const VQSTATUS status = body.AddFace(face.Family, face.Name, number);
  // The last handle, which may be this one, could not say that there was no room for it.
  return status == VQ_OK && body.IsDirty() ? body.Flush() : status;
}

VQSTATUS TableOfItem(VQItem* item, VQFontTable* table) {
  if (item == nullptr || item->IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQItemBody* body = item->GetItemBody();
  if (body->GetClassID() != VQCLASSID_VQRICHTEXTBODY) return AsFontTable(body, table);
  return static_cast<VQRichTextBody*>(body)->FindOrMakeFontTable(table);
}

}  // namespace

VQSTATUS FindFontTable(VQSlateBody* slate, VQFontTable* table) {
  if (slate == nullptr) return VQERR_UNINITIALIZED_ARGUMENT;
  if (!slate->IsOpen()) return VQERR_SLATE_NOT_OPEN;
  VQItemBody* body = nullptr;
  if (VQSTATUS status = slate->FindItem(VQ_FONT_TABLE_ITEM, &body)) return status;
  return AsFontTable(body, table);
}

VQSTATUS FindOrMakeFontTable(VQSlateBody* slate, VQFontTable* table) {
  VQSTATUS status = FindFontTable(slate, table);
  if (status != VQWARN_NOT_FOUND) return status;
  ItemPlace place;
  status = slate->CreateItem(VQ_FONT_TABLE_ITEM, TYPE_COMPOSITE, nullptr, 0, 0, VQITEMOPTION_UNIQUE, &place);
  return status != VQ_OK ? status : FindFontTable(slate, table);
}

VQSTATUS FontTableOf(const VQRTObjectBody& object, VQFontTable* table) {
  VQRichTextBody* richText = object.GetRichTextBody();
  return richText == nullptr ? VQWARN_NOT_FOUND : richText->FindFontTable(table);
}

VQSTATUS EnterFace(const VQRTObjectBody& object, const CDFACE& face, unsigned char* number) {
  *number = face.Face;
  VQRichTextBody* richText = object.GetRichTextBody();
  if (richText == nullptr) return VQ_OK;
  VQFontTable table;
  if (VQSTATUS status = richText->FindOrMakeFontTable(&table)) return status;
  return AddFaceTo(table, face, number);
}

VQSTATUS EnterStyle(const VQRTObjectBody& object, const VQFontStyle& style) {
  if (style.IsNull()) return VQERR_UNINITIALIZED_ARGUMENT;
  VQFontStyleBody& body = *style.GetFontStyleBody();
  if (VQSTATUS status = body.Refresh()) return status;
  if (!fontid::IsTableFace(fontid::Face(body.GetFontID()))) return VQ_OK;
  CDFACE face{};
  if (VQSTATUS status = body.GetFace(&face)) return status;
  unsigned char number = 0;
  return EnterFace(object, face, &number);
}

struct FontGuard::Contents {
  VQFontTable Table;
  VQFontTableBody::Contents Faces;
};

FontGuard::FontGuard(VQRichTextBody* text) : Text(text) { Remember(); }
FontGuard::FontGuard(VQSlateBody* slate) : Slate(slate) { Remember(); }

VQSTATUS FontGuard::Find(VQFontTable* table) const {
  if (Text) return Text->FindFontTable(table);
  return Slate ? FindFontTable(Slate, table) : VQSTATUS{VQWARN_NOT_FOUND};
}

void FontGuard::Remember() {
  VQFontTable table;
  const VQSTATUS status = Find(&table);
  if (status == VQWARN_NOT_FOUND) return;
  // A table that cannot be read takes no faces either.
  Kept = status != VQ_OK || table.GetFontTableBody()->Load() != VQ_OK;
  if (!Kept) Before.reset(new Contents{table, table.GetFontTableBody()->GetContents()});
}

FontGuard::~FontGuard() {
  if (Kept) return;
  try {
    Restore();
  } catch (...) {
    // A face too many does no harm, and the caller is told of the refusal.
  }
}

void FontGuard::Restore() {
  if (Before) {
    static_cast<void>(Before->Table.GetFontTableBody()->TakeBack(Before->Faces));
    return;
  }
  VQFontTable table;
  if (Find(&table) != VQ_OK) return;
  if (Text) Text->DropFontTable();
  if (Slate) static_cast<void>(Slate->DeleteItems(VQ_FONT_TABLE_ITEM));
}

VQSTATUS EnterFacesOf(VQRTObjectBody& incoming, const VQRTObjectBody& object) {
  const VQRTBaseContainerBody* container = incoming.AsBase();
  for (VQRTObjectBody* each = &incoming; each; each = container ? container->NextInTree(each) : nullptr) {
    VQFontStyle style;
    VQSTATUS status = each->FindTableFont(&style);
    if (status == VQ_OK) status = EnterStyle(object, style);
    if (VQIsError(status)) return status;
  }
  return VQ_OK;
}

VQSTATUS ConvertFont(const VQFontStyle& style, VQItem* target) {
  VQFontStyleBody& body = *style.GetFontStyleBody();
  if (VQSTATUS status = body.Refresh()) return status;
  unsigned char number = fontid::Face(body.GetFontID());
  if (fontid::IsTableFace(number)) {
    CDFACE face{};
    if (VQSTATUS status = body.GetFace(&face)) return status;
    VQFontTable table;
    if (VQSTATUS status = TableOfItem(target, &table)) return status;
    if (VQSTATUS status = AddFaceTo(table, face, &number)) return status;
  }
  return body.Renumber(number);
}

VQSTATUS EnterFonts(VQRTObjectBody& object) {
  VQRichTextBody* owner = object.GetRichTextBody();
  if (owner == nullptr) return VQ_OK;
  VQRichText target(owner);
  return object.ConvertFonts(&target);
}

}  // namespace vq

VQSTATUS VQRichTextBody::FindFontTable(VQFontTable* table) {
  if (IsSlateItem()) return vq::FindFontTable(GetSlateBody(), table);
  if (OwnFonts.IsNull()) return VQWARN_NOT_FOUND;
  *table = VQFontTable(OwnFonts);
  return VQ_OK;
}

VQSTATUS VQRichTextBody::FindOrMakeFontTable(VQFontTable* table) {
  if (IsSlateItem()) return vq::FindOrMakeFontTable(GetSlateBody(), table);
  if (OwnFonts.IsNull()) OwnFonts = new VQFontTableBody;
  return FindFontTable(table);
}

void VQRichTextBody::DropFontTable() {
  if (IsSlateItem()) static_cast<void>(GetSlateBody()->DeleteItems(VQ_FONT_TABLE_ITEM));
  OwnFonts = VQItem();
}

VQSTATUS VQRichTextBody::TakeTables(VQRichTextBody& source) {
  vq::LinkTable links;
  if (VQSTATUS status = source.FindLinks(&links)) return status;
  if (!links.IsEmpty()) {
    if (VQSTATUS status = TakeLinks(links)) return status;
  }
  VQFontTable theirs;
  VQSTATUS status = source.FindFontTable(&theirs);
  if (status != VQ_OK) return status == VQWARN_NOT_FOUND ? VQ_OK : status;
  VQFontTableBody* copy = new VQFontTableBody;
  VQFontTable own(copy);
  if (VQSTATUS taken = copy->TakeFaces(*theirs.GetFontTableBody())) return taken;
  OwnFonts = own;
  return VQ_OK;
}

VQSTATUS VQRichTextBody::AddFontToTable(VQFontStyleBody& style) {
  if (!vq::fontid::IsTableFace(vq::fontid::Face(style.GetFontID()))) return VQ_OK;
  CDFACE face{};
  if (VQSTATUS status = style.GetFace(&face)) return status;
  VQFontTable table;
  if (VQSTATUS status = FindOrMakeFontTable(&table)) return status;
  if (VQSTATUS status = vq::AddFaceTo(table, face, &face.Face)) return status;
  return style.AssignFace(face);
}

VQSTATUS VQRichText::GetFontTable(VQFontTable* table) const {
  if (IsNull()) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (table == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  return vq::Apply(GetRichTextBody()->FindFontTable(table));
}
