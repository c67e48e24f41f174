#include "qcore/index/unreadrows.h"

#include <algorithm>

#include "qcore/idtables/idtable.h"

namespace qcore::index {

bool UnreadRows::Known(IndexTree& index, ENGHANDLE unread, std::uint64_t print, std::uint32_t walked) {
  constexpr std::uint64_t kStepsOfLookup = 8;
  if (stamp_ == index.stamp() && print_ == print) return true;
  const std::uint64_t by_documents = kStepsOfLookup * idtable::Entries(unread);
  const std::uint64_t rows = index.rows().rows();
  walked_ += walked;
  if (walked_ < std::min(by_documents, rows)) return false;
  stamp_ = 0;
  LookUp(index, unread, by_documents < rows);
  stamp_ = index.stamp();
  print_ = print;
  walked_ = 0;
  return true;
}

void UnreadRows::Add(Rank rank, bool main) {
  all_.push_back(rank);
  if (main) mains_.push_back(rank);
}

void UnreadRows::LookUp(IndexTree& index, ENGHANDLE unread, bool by_documents) {
  all_.clear();
  mains_.clear();
  PageTree& tree = index.rows();
  if (!by_documents) {
    Rank rank = 0;
    for (PageTree::Cursor row = tree.At(0); row.at_row(); ++rank) {
      if (row.kind() == RowKind::kDocument && idtable::Contains(unread, row.id())) Add(rank, row.indent() == 0);
      if (!tree.Next(&row)) return;
    }
    return;
  }
  // A table that is none holds no document.
  static_cast<void>(idtable::ForEach(unread, [&](std::uint32_t id) {
    for (const PlannedRow& row : index.RowsOf(id)) Add(tree.RankOf(row.row.key), row.row.indent == 0);
  }));
  std::ranges::sort(all_);
  std::ranges::sort(mains_);
}

std::optional<Rank> UnreadRows::Next(Rank rank, bool main) const {
  const std::vector<Rank>& rows = main ? mains_ : all_;
  const auto at = std::ranges::lower_bound(rows, rank);
  return at != rows.end() ? std::optional(*at) : std::nullopt;
}

std::optional<Rank> UnreadRows::Prev(Rank rank, bool main) const {
  const std::vector<Rank>& rows = main ? mains_ : all_;
  const auto at = std::ranges::upper_bound(rows, rank);
  return at != rows.begin() ? std::optional(at[-1]) : std::nullopt;
}

}  // namespace qcore::index
