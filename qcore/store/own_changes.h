// What the running transaction has written lately, for those who follow its changes or go on with its last slate.
//
// Nobody else can write meanwhile, so that what is known here is what the store would tell. A part of the transaction
// that is undone must be told of.
#ifndef QUILLON_QCORE_STORE_OWN_CHANGES_H
#define QUILLON_QCORE_STORE_OWN_CHANGES_H

#include <vector>

#include "qcore/store/store.h"

namespace qcore {

class OwnChanges {
 public:
  // Every change behind `feed` is noted from now on.
  void Begin(std::uint64_t feed);
  // Nothing is known any more.
  void End();

  // In the order of the change feed.
  void Note(const NumberedEntry& change);
  // The row of the slate noted last.
  void KeepRow(const SlateHeader& header, Bytes packed);

  // Whether all changes behind that number are known; then Read gives them as the store does, each slate's last.
  bool Knows(std::uint64_t behind) const { return noting_ && behind >= from_; }
  void Read(std::uint64_t behind, const Store::NumberedReader& reader) const;

  // Of the slate whose row is known; null for others.
  const SlateHeader* HeaderOf(std::uint32_t slate) const {
    return header_.id == slate && slate != 0 ? &header_ : nullptr;
  }
  Bytes packed() const { return packed_; }

 private:
  static constexpr std::size_t kMost = 1024;

  bool noting_ = false;
  std::uint64_t from_ = 0;
  std::vector<NumberedEntry> changes_;
  SlateHeader header_;  // of slate 0 for none
  std::vector<std::uint8_t> packed_;
};

}  // namespace qcore

#endif
