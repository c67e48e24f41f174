// In which leaves the rows of each document lie.
//
// Kept in parts of 2048 slate IDs, which are read when they are needed:
//
//   u8 form | 2048 * u32 leaf, 0 for none | varint count | (u16 place, u32 leaf) for each further leaf
#ifndef QUILLON_QCORE_INDEX_DIRECTORY_H
#define QUILLON_QCORE_INDEX_DIRECTORY_H

#include <algorithm>
#include <functional>
#include <memory>

#include "qcore/index/pagetree.h"

namespace qcore::index {

class Directory final : public LeafWatcher {
 public:
  // The stored bytes of a part, none for one that was never stored; throws IndexFault.
  using PartReader = std::function<std::vector<std::uint8_t>(std::uint32_t part)>;

  void SetReader(PartReader reader) { reader_ = std::move(reader); }
  void Came(std::uint32_t id, PageNumber leaf) override;
  void Went(std::uint32_t id, PageNumber leaf) override;
  template <typename Visit>
  void ForEachLeafOf(std::uint32_t id, const Visit& visit) {
    const Part& part = PartOf(id);
    const std::uint16_t place = PlaceOf(id);
    if (part.first[place] == 0) return;
    visit(part.first[place]);
    auto at = std::lower_bound(part.further.begin(), part.further.end(), Further{place, 0});
    for (; at != part.further.end() && at->place == place; ++at) visit(at->leaf);
  }
  PageNumber LeafOf(std::uint32_t id);
  bool IsInMemory(std::uint32_t id) const {
    const std::size_t number = id / kIdStep / kPartIds;
    return number < parts_.size() && parts_[number];
  }
  bool Has(std::uint32_t id) { return LeafOf(id) != 0; }
  // The documents that have rows, in ascending order.
  std::vector<std::uint32_t> Ids(std::uint32_t highest);
  void Clear();

  void ForEachChanged(const std::function<void(std::uint32_t part, const std::vector<std::uint8_t>&)>& visit) const;
  void MarkKept();
  std::size_t Memory() const;

  static constexpr std::uint32_t kPartIds = 2048;

 private:
  static constexpr std::uint32_t kIdStep = 4;
  static std::uint16_t PlaceOf(std::uint32_t id) { return static_cast<std::uint16_t>(id / kIdStep % kPartIds); }
  struct Further {
    std::uint16_t place;
    PageNumber leaf;
    auto operator<=>(const Further&) const = default;
  };
  struct Part {
    std::vector<PageNumber> first = std::vector<PageNumber>(kPartIds);
    std::vector<Further> further;  // sorted
    bool changed = false;
  };

  Part& PartOf(std::uint32_t id);
  // In memory or stored.
  bool HasPart(std::uint32_t id) const;
  static std::unique_ptr<Part> Decode(Bytes bytes);
  static std::vector<std::uint8_t> Encode(const Part& part);

  std::vector<std::unique_ptr<Part>> parts_;
  PartReader reader_;
};

}  // namespace qcore::index

#endif
