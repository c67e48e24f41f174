// A rich text on its way into another slate.
#include "engine/memory.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/store/vqslate.h"

namespace {

VQSTATUS CopyBlocks(VQSlateBody* slate, std::string_view name, unsigned short flags, std::vector<vq::ItemBlock>& blocks,
                    vq::ItemPlace* first) {
  VQSTATUS status = VQ_OK;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    vq::ItemPlace place;
    if (status == VQ_OK) {
      const vq::MemoryLock lock(blocks[i].Memory);
      status = slate->AppendItem(name, TYPE_COMPOSITE, lock.GetBytes() + 2, blocks[i].Size - 2, flags, &place);
    }
    EngMemFree(blocks[i].Memory);
    if (i == 0 && first) *first = place;
  }
  return status;
}

}  // namespace

VQSTATUS VQRichTextBody::CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                  vq::ItemPlace* first) {
  // A link table is one that records of other items point into.
  if (slate == GetSlateBody() || vq::IsLinkTableName(name)) {
    return VQCompositeItemBody::CopyInto(slate, name, flags, first);
  }
  vq::LinkTable links;
  VQSTATUS status = LinksFor(slate, &links);
  if (status != VQ_OK) return status;
  vq::FontGuard fonts(slate);
  status = CopyWithTables(slate, name, flags, first);
  if (status == VQ_OK) status = links.Write(*slate);
  if (status == VQ_OK) fonts.Keep();
  return status;
}

VQSTATUS VQRichTextBody::LinksFor(VQSlateBody* slate, vq::LinkTable* links) {
  vq::LinkTable theirs;
  VQSTATUS status = FindLinks(links);
  if (status == VQ_OK && !links->IsEmpty()) status = theirs.Read(*slate);
  if (status != VQ_OK || theirs.IsEmpty()) return status;
  if (*links != theirs) {
    status = Initialize();
    if (status != VQ_OK) return status;
    if (vq::HoldsLinks(*Top)) return VQERR_WRONG_SITUATION;
  }
  *links = vq::LinkTable();
  return VQ_OK;
}

VQSTATUS VQRichTextBody::CopyWithTables(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                        vq::ItemPlace* first) {
  VQFontTable source, target;
  VQSTATUS status = FindFontTable(&source);
  if (status == VQWARN_NOT_FOUND) return VQCompositeItemBody::CopyInto(slate, name, flags, first);
  if (status != VQ_OK) return status;
  status = vq::FindFontTable(slate, &target);
  if (status == VQWARN_NOT_FOUND) {
    status = vq::FindOrMakeFontTable(slate, &target);
    if (status == VQ_OK) status = target.GetFontTableBody()->TakeFaces(*source.GetFontTableBody());
    return status == VQ_OK ? VQCompositeItemBody::CopyInto(slate, name, flags, first) : status;
  }
  if (status != VQ_OK) return status;
  if (source == target) return VQCompositeItemBody::CopyInto(slate, name, flags, first);

  VQRichText copy;
  status = copy.Create();
  if (status == VQ_OK) status = CopyWithFonts(target, copy.GetRichTextBody());
  std::vector<vq::ItemBlock> blocks;
  if (status == VQ_OK) status = copy.GetRichTextBody()->WriteBlocks(&blocks);
  return status == VQ_OK ? CopyBlocks(slate, name, flags, blocks, first) : status;
}

VQSTATUS VQRichTextBody::Join(VQItemBody* source) {
  if (source->GetClassID() != VQCLASSID_VQRICHTEXTBODY) return VQERR_INCORRECT_ITEM_TYPE;
  VQSTATUS status = Initialize();
  if (status == VQ_OK) status = Top->Append(VQRichText(static_cast<VQRichTextBody*>(source)));
  return status == VQ_OK ? Flush() : status;
}

VQSTATUS VQRichTextBody::CopyWithFonts(VQFontTable& table, VQRichTextBody* copy) {
  VQSTATUS status = Initialize();
  if (status == VQ_OK) status = copy->Initialize();
  if (status == VQ_OK) status = copy->TakeTables(*this);
  const VQRTCursor open;
  if (status == VQ_OK) status = copy->Top->CopyChildren(open, open, Top, nullptr);
  return status == VQ_OK ? copy->Top->ConvertFonts(&table) : status;
}
