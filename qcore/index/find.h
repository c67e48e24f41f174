// Finding rows by the values of the sorted columns.
#ifndef QUILLON_QCORE_INDEX_FIND_H
#define QUILLON_QCORE_INDEX_FIND_H

#include "qcore/index/indextree.h"
#include "qcore/index/walk.h"

namespace qcore::index {

struct FindResult {
  Walk::Spot spot = 0;
  std::uint32_t matches = 0;
  bool together = true;  // whether the rows found are peers of each other, one behind another
};

// The keys of an ITEM_TABLE: values with their type word. False for a table whose lengths lead out of `size` bytes.
[[nodiscard]] bool DecodeKeys(const std::uint8_t* table, std::size_t size, std::vector<Value>* keys);

// Rows from one rank to the one before another.
struct Stretch {
  Rank first;
  Rank end;
};
// Where a key finds rows, in order, with all that hangs below them; none for a key that finds nothing.
// ENG_ERR_TOO_MANY_KEYS, ENG_ERR_ARGUMENT as for Find.
[[nodiscard]] ENGSTATUS FindStretches(IndexTree& index, const Value& key, std::uint16_t flags,
                                      std::vector<Stretch>* stretches);

// See EngCollectionFind.
enum class Wanted { kPlace, kMatches };
[[nodiscard]] ENGSTATUS Find(IndexTree& index, const std::vector<Value>& keys, std::uint16_t flags, Wanted wanted,
                             FindResult* result);

}  // namespace qcore::index

#endif
