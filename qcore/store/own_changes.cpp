#include "qcore/store/own_changes.h"

#include <algorithm>
#include <unordered_set>

namespace qcore {

void OwnChanges::Begin(std::uint64_t feed) {
  End();
  noting_ = true;
  from_ = feed;
}

void OwnChanges::End() {
  noting_ = false;
  changes_.clear();
  header_.id = 0;
}

// Followers ask soon: of a long transaction only the later changes are kept.
void OwnChanges::Note(const NumberedEntry& change) {
  if (!noting_) return;
  if (changes_.size() == kMost) {
    const auto half = changes_.begin() + kMost / 2;
    from_ = (half - 1)->feed;
    changes_.erase(changes_.begin(), half);
  }
  changes_.push_back(change);
  if (header_.id == change.entry.id) header_.id = 0;
}

void OwnChanges::KeepRow(const SlateHeader& header, Bytes packed) {
  if (!noting_ || header.deleted) return;
  header_ = header;
  packed_.assign(packed.begin(), packed.end());
}

void OwnChanges::Read(std::uint64_t behind, const Store::NumberedReader& reader) const {
  const auto first = std::ranges::upper_bound(changes_, behind, {}, &NumberedEntry::feed);
  if (changes_.end() - first == 1) return reader(*first);
  std::vector<const NumberedEntry*> last;
  std::unordered_set<std::uint32_t> seen;
  for (auto at = changes_.end(); at != first;) {
    if (seen.insert((--at)->entry.id).second) last.push_back(&*at);
  }
  for (auto at = last.rbegin(); at != last.rend(); ++at) reader(**at);
}

}  // namespace qcore
