// The change feed as it is stored: blocks of changes, each behind its checksum.
//
//   block: entries, the last one with the block's number and time
//   entry: varint distance of its number from the block's | varint slate ID | varint class << 2 | flags
//          varint distance of its time from the block's
//   flags: bit 0 deleted, bit 1 went without a deletion stub
#ifndef QUILLON_QCORE_STORE_FEED_H
#define QUILLON_QCORE_STORE_FEED_H

#include <vector>

#include "qcore/store/store.h"

namespace qcore {

struct FeedRecord {
  NumberedEntry change;
  std::uint64_t here;  // when, packed
  bool gone;           // without a deletion stub
};

// Slates by number, for going over a feed.
class SlateSet {
 public:
  // False when it is there already.
  bool Add(std::uint32_t id);

 private:
  std::vector<bool> slates_;
};

// Of at least one record, in the order of their numbers and times.
std::vector<std::uint8_t> EncodeFeedBlock(std::span<const FeedRecord> records);
// Appends the records of a block; false for bytes that are none.
bool DecodeFeedBlock(std::uint64_t number, std::uint64_t here, Bytes stored, std::vector<FeedRecord>* records);
// Leaves each slate's last record, in their order.
void KeepLast(std::vector<FeedRecord>* records);

}  // namespace qcore

#endif
