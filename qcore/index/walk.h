// Moving about in the rows of an index by the navigation codes of engine/collection.h.
#ifndef QUILLON_QCORE_INDEX_WALK_H
#define QUILLON_QCORE_INDEX_WALK_H

#include "engine/collection.h"
#include "qcore/index/pagetree.h"

namespace qcore::index {

class IndexTree;
class UnreadRows;

class Walk {
 public:
  // A row's rank; kBefore is the place before the first row.
  using Spot = std::int64_t;
  static constexpr Spot kBefore = -1;

  // Limits of a way, see ENG_GO_MIN_LEVEL and ENG_GO_MAX_LEVEL.
  struct Limits {
    std::uint8_t least = 0;
    std::uint8_t most = kDeepestLevel;
  };

  // `unread` may be 0. `unread_rows` is kept from walk to walk.
  Walk(IndexTree& index, ENGHANDLE unread, UnreadRows* unread_rows);
  // Without unread rows.
  explicit Walk(PageTree& tree) : tree_(tree) {}

  // False for codes that are none.
  static bool IsCode(std::uint16_t code);
  static Limits LimitsOf(std::uint16_t code, const COLLECTIONPOSITION& position);

  // Nothing when there is no such row.
  std::optional<Spot> SpotAt(const COLLECTIONPOSITION& position);
  // Level and ordinals; the limits stay.
  void SetPosition(Spot spot, COLLECTIONPOSITION* position);
  // The same for the row behind a row whose position it is.
  void AdvancePosition(std::uint8_t level, COLLECTIONPOSITION* position) const;

  // Goes `count` times and gives how often it could.
  std::uint32_t Go(std::uint16_t code, std::uint32_t count, const Limits& limits, Spot* spot);

  std::uint32_t Siblings(Rank rank);
  std::uint32_t Children(Rank rank);
  std::uint32_t Descendants(Rank rank);
  bool IsUnread(Rank rank);  // of a category: whether there is one below it

  Rank EndOf(Rank rank);  // behind the row's descendants
  // With the row at hand; `end` goes to what stands there.
  Rank EndOf(Rank rank, const PageTree::Cursor& row, PageTree::Cursor* end = nullptr);

 private:
  std::uint8_t LevelOf(Spot spot) { return tree_.At(static_cast<Rank>(spot)).level(); }
  Spot FirstPeer(Spot spot, std::uint8_t level);
  std::uint32_t Forward(std::uint32_t count, const Limits& limits, Spot* spot);
  std::uint32_t Backward(std::uint32_t count, const Limits& limits, Spot* spot);
  std::uint32_t NextPeer(std::uint32_t count, Spot* spot);
  std::uint32_t PrevPeer(std::uint32_t count, Spot* spot);
  std::optional<Spot> Main(Spot spot);
  std::optional<Spot> Step(std::uint16_t code, Spot spot);
  std::optional<Spot> NextMain(Spot spot);
  std::optional<Spot> PrevMain(Spot spot);
  std::optional<Spot> PrevParent(Spot spot);
  std::optional<Spot> NextNoCategory(Spot spot);
  std::optional<Spot> PrevNoCategory(Spot spot);
  std::optional<Spot> Category(std::optional<Rank> rank);
  std::optional<Spot> Unread(Spot spot, bool forward, bool main);
  bool any_unread() const;
  // See UnreadRows::Known.
  bool KnowsUnread(std::uint32_t walked);

  IndexTree* index_ = nullptr;
  PageTree& tree_;
  ENGHANDLE unread_ = 0;
  UnreadRows* unread_rows_ = nullptr;
  std::optional<std::uint64_t> print_;  // of the unread table
  std::optional<Rank> end_of_;          // the row that EndOf was last asked for, and its answer
  Rank end_ = 0;
  PageTree::Cursor end_row_;
};

}  // namespace qcore::index

#endif
