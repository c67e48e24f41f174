// Collects planned rows in any order and gives them in key order.
#ifndef QUILLON_QCORE_INDEX_ROWSORTER_H
#define QUILLON_QCORE_INDEX_ROWSORTER_H

#include <functional>
#include <memory>

#include "qcore/index/rowplan.h"

namespace qcore::index {

class RowSorter {
 public:
  // The row's number, counted from 0.
  std::size_t Add(const PlannedRow& row);
  std::size_t size() const { return entries_.size(); }
  // Before Sort.
  PlannedRow At(std::size_t number) const;
  void Sort();
  // After Sort, in order: leaves out the rows that `keep` refuses.
  void Filter(const std::function<bool(const PlannedRow&)>& keep);
  void ForEach(const std::function<void(PlannedRow)>& visit) const;

 private:
  struct Entry {
    std::uint64_t head;  // eight bytes of the key, where the comparison stands
    const std::uint8_t* record;
  };
  using Place = std::vector<Entry>::iterator;

  std::uint8_t* Take(std::size_t size);
  static PlannedRow Decode(const std::uint8_t* record);
  static void SortFrom(Place first, Place last, std::size_t depth);

  std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
  std::size_t left_ = 0;
  std::uint8_t* at_ = nullptr;
  std::vector<Entry> entries_;
};

}  // namespace qcore::index

#endif
