// Where the rows of unread documents stand, for steps to them and for the marks of categories.
//
// Looking the places up costs as much as a walk over many rows: it is done when as many have been walked over, and
// holds until rows move or other documents are unread.
#ifndef QUILLON_QCORE_INDEX_UNREADROWS_H
#define QUILLON_QCORE_INDEX_UNREADROWS_H

#include <optional>
#include <vector>

#include "engine/types.h"
#include "qcore/index/indextree.h"

namespace qcore::index {

class UnreadRows {
 public:
  // Whether the places are known, now that so many rows were walked over. `print` is the table's fingerprint. Throws
  // IndexFault.
  bool Known(IndexTree& index, ENGHANDLE unread, std::uint64_t print, std::uint32_t walked);
  // Where they are known: the first row from a rank on, the last one up to it; main topics alone or all documents.
  std::optional<Rank> Next(Rank rank, bool main) const;
  std::optional<Rank> Prev(Rank rank, bool main) const;

 private:
  void LookUp(IndexTree& index, ENGHANDLE unread, bool by_documents);
  void Add(Rank rank, bool main);

  std::vector<Rank> all_;
  std::vector<Rank> mains_;
  std::uint64_t stamp_ = 0;  // of the tree that the places are of
  std::uint64_t print_ = 0;
  std::uint64_t walked_ = 0;
};

}  // namespace qcore::index

#endif
