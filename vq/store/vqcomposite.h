// VQCompositeItemBody: the item side of values made of composite records.
//
// A long value stands in the slate as several items of one name. This body is the first of them; the places of the
// later ones are gathered here, and StoreBlocks writes all of them back.
#ifndef QUILLON_VQ_STORE_VQCOMPOSITE_H
#define QUILLON_VQ_STORE_VQCOMPOSITE_H

#include <span>
#include <vector>

#include "vq/store/vqitem.h"

class VQ_API VQCompositeItemBody : public VQItemBody {
 public:
  using VQItemBody::VQItemBody;
  VQCLASSID GetClassID() const override;

  // Records have no entries and no single form: the count is 1, or 0 for a value of size 2.
  unsigned long GetEntryCount() override;
  VQSTATUS Collapse() override;
  VQSTATUS MakeList() override;
  // Forgets the gathered places.
  VQSTATUS Rebound() override;
  VQSTATUS CopyInto(VQSlateBody* slate, std::string_view name, unsigned short flags, vq::ItemPlace* first) override;
  // Told in order, once for each later item of the name.
  virtual VQSTATUS AddBlockID(const BLOCKID& item, const BLOCKID& value, unsigned long size);

  const std::vector<vq::ItemPlace>& GetExtraPlaces() const { return ExtraPlaces; }

 protected:
  // Makes the blocks, at least one, the values of this name's items, in order: the first takes this item's place,
  // further ones the places of the later items, then new items behind all others; later items left over are
  // deleted. Only blocks in the place of a present item may be kept ones. Blocks that the slate took are zero in
  // `blocks`. This body and the gathered places are bound anew.
  // On failure blocks that are not zero stay the caller's, and the item must stay dirty: its values may be partly
  // new, which the next call puts right.
  VQSTATUS StoreBlocks(std::span<vq::ItemBlock> blocks);

 private:
  VQSTATUS AppendBlocks(std::span<vq::ItemBlock> blocks, std::vector<vq::ItemPlace>& appended);
  VQSTATUS ReplaceBlocks(std::span<vq::ItemBlock> blocks, std::span<const vq::ItemPlace> places);
  VQSTATUS PlaceOf(const BLOCKID& item, vq::ItemPlace* place) const;
  VQSTATUS BindPlaces(std::span<vq::ItemPlace> places);

  std::vector<vq::ItemPlace> ExtraPlaces;
};

#endif
