// A rich text on its way into another slate.
#include "engine/memory.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "vq/richtext/fontplace.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/linktable.h"
#include "vq/richtext/objectguard.h"
#include "vq/richtext/rtedit.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/store/vqslate.h"

namespace {

// Instead of a distance: the links have no table.
constexpr unsigned long kNowhere = 0xFFFF;

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
  unsigned long shift = 0;
  VQSTATUS status = LinksFor(slate, &links, &shift);
  if (status != VQ_OK) return status;
  vq::FontGuard fonts(slate);
  vq::ObjectGuard objects(slate);
  std::vector<BLOCKID> added;
  status = links.Write(*slate, &added);
  if (status != VQ_OK) return status;
  status = vq::Caught([&] { return CopyWithTables(slate, name, flags, shift, first); });
  if (status != VQ_OK) {
    for (const BLOCKID& item : added) EngItemDelete(slate->GetHandle(), item);
    return status;
  }
  fonts.Keep();
  objects.Keep();
  return VQ_OK;
}

VQSTATUS VQRichTextBody::LinksFor(VQSlateBody* slate, vq::LinkTable* links, unsigned long* shift) {
  vq::LinkTable theirs;
  VQSTATUS status = FindLinks(links);
  if (status == VQ_OK) status = theirs.Read(*slate);
  if (status != VQ_OK || theirs.IsEmpty()) return status;
  bool join = *links != theirs;
  if (join) {
    status = Initialize();
    if (status != VQ_OK) return status;
    join = vq::HoldsLinks(*Top);
  }
  if (!join) {
    *links = vq::LinkTable();
    return VQ_OK;
  }
  if (links->IsEmpty()) {
    *shift = kNowhere;
    return VQ_OK;
  }
  std::vector<std::string> all;
  status = theirs.GetLinks(&all);
  *shift = static_cast<unsigned long>(all.size());
  // Both together stay within what a link can say.
  return status == VQ_OK ? links->GetLinks(&all) : status;
}

VQSTATUS VQRichTextBody::CopyWithTables(VQSlateBody* slate, std::string_view name, unsigned short flags,
                                        unsigned long shift, vq::ItemPlace* first) {
  VQFontTable source, target;
  bool fonts = false, objects = false;
  VQSTATUS status = FindFontTable(&source);
  if (status == VQ_OK) {
    status = vq::FindFontTable(slate, &target);
    fonts = status == VQ_OK && !(source == target);
    if (status == VQWARN_NOT_FOUND) {
      status = vq::FindOrMakeFontTable(slate, &target);
      if (status == VQ_OK) status = target.GetFontTableBody()->TakeFaces(*source.GetFontTableBody());
    }
  }
  if (status == VQ_OK || status == VQWARN_NOT_FOUND) status = FindObjects(&objects);
  if (status != VQ_OK) return status;
  if (!fonts && !objects && shift == 0) return VQCompositeItemBody::CopyInto(slate, name, flags, first);

  VQRichText copy;
  vq::TextFindings found;
  status = CopyTo(&copy, &found);
  if (status != VQ_OK) return status;
  VQRTContainerBody* top = copy.GetRichTextBody()->GetTop();
  if (fonts) status = top->ConvertFonts(&target);
  if (status == VQ_OK && shift == kNowhere) status = vq::LoseLinks(*top);
  if (status == VQ_OK && shift > 0 && shift != kNowhere) status = top->ShiftLinkIndex(0, shift);
  if (status == VQ_OK) status = top->CarryObjects(slate);
  std::vector<vq::ItemBlock> blocks;
  if (status == VQ_OK) status = copy.GetRichTextBody()->WriteBlocks(&blocks);
  return status == VQ_OK ? CopyBlocks(slate, name, flags, blocks, first) : status;
}

// What was never parsed is not parsed for this unless its slate has objects that it could show.
VQSTATUS VQRichTextBody::FindObjects(bool* found) {
  *found = false;
  const unsigned long count = IsSlateItem() ? GetSlateBody()->ItemCount() : 0;
  bool may = !IsSlateItem() && Top;
  for (std::uint32_t i = 0; i < count && !may; ++i) {
    vq::ItemPlace place;
    ENGSTATUS result = EngSlateItemAt(GetSlateBody()->GetHandle(), i, &place.Item);
    if (result == ENG_OK) {
      result = EngItemQuery(GetSlateBody()->GetHandle(), place.Item, nullptr, 0, nullptr, nullptr, &place.Type, nullptr,
                            nullptr);
    }
    if (result != ENG_OK) return vq::FromEngine(result);
    may = place.Type == TYPE_OBJECT;
  }
  if (!may) return VQ_OK;
  const VQSTATUS status = Initialize();
  if (status == VQ_OK) *found = Top->FirstOfType(VQRTTYPE_EMBEDDED_OBJECT) != nullptr;
  return status;
}

VQSTATUS VQRichTextBody::Join(VQItemBody* source) {
  if (source->GetClassID() != VQCLASSID_VQRICHTEXTBODY) return VQERR_INCORRECT_ITEM_TYPE;
  VQSTATUS status = Initialize();
  if (status == VQ_OK) {
    const VQRichText added(static_cast<VQRichTextBody*>(source));
    status = vq::Whole(*Top, [&] { return Top->Append(added); });
  }
  return status == VQ_OK ? Flush() : status;
}
