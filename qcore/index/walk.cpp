#include "qcore/index/walk.h"

#include <algorithm>

#include "qcore/idtables/idtable.h"
#include "qcore/index/unreadrows.h"

namespace qcore::index {

namespace {

constexpr std::uint32_t kNear = 128;  // rows that are looked at one by one

constexpr std::uint16_t kCodes[] = {ENG_GO_CURRENT,
                                    ENG_GO_NEXT,
                                    ENG_GO_PARENT,
                                    ENG_GO_CHILD,
                                    ENG_GO_NEXT_PEER,
                                    ENG_GO_PREV_PEER,
                                    ENG_GO_FIRST_PEER,
                                    ENG_GO_LAST_PEER,
                                    ENG_GO_PREV,
                                    ENG_GO_NEXT_UNREAD,
                                    ENG_GO_MAIN,
                                    ENG_GO_NEXT_MAIN,
                                    ENG_GO_PREV_MAIN,
                                    ENG_GO_DESCENDANTS,
                                    ENG_GO_NEXT_UNREAD_MAIN,
                                    ENG_GO_NEXT_PARENT,
                                    ENG_GO_PREV_PARENT,
                                    ENG_GO_PREV_UNREAD,
                                    ENG_GO_NEXT_HIT,
                                    ENG_GO_PREV_HIT,
                                    ENG_GO_CURRENT_HIT,
                                    ENG_GO_PREV_UNREAD_MAIN,
                                    ENG_GO_NEXT_UNREAD_HIT,
                                    ENG_GO_PREV_UNREAD_HIT,
                                    ENG_GO_NEXT_CATEGORY,
                                    ENG_GO_PREV_CATEGORY,
                                    ENG_GO_NEXT_DOCUMENT,
                                    ENG_GO_PREV_DOCUMENT};

std::optional<Walk::Spot> AsSpot(std::optional<Rank> rank) {
  return rank ? std::optional<Walk::Spot>(*rank) : std::nullopt;
}

Rank AsRank(Walk::Spot spot) { return static_cast<Rank>(spot); }

}  // namespace

bool Walk::any_unread() const { return unread_ != 0 && idtable::Entries(unread_) != 0; }

Walk::Walk(IndexTree& index, ENGHANDLE unread, UnreadRows* unread_rows)
    : index_(&index), tree_(index.rows()), unread_(unread), unread_rows_(unread_rows) {}

bool Walk::IsCode(std::uint16_t code) {
  constexpr unsigned kKnown = ENG_GO_MASK | ENG_GO_MIN_LEVEL | ENG_GO_MAX_LEVEL | ENG_GO_CONTINUE;
  return (code & ~kKnown) == 0 && std::ranges::find(kCodes, code & ENG_GO_MASK) != std::end(kCodes);
}

Walk::Limits Walk::LimitsOf(std::uint16_t code, const COLLECTIONPOSITION& position) {
  Limits limits;
  if ((code & ENG_GO_MIN_LEVEL) != 0) limits.least = position.MinLevel;
  if ((code & ENG_GO_MAX_LEVEL) != 0) limits.most = std::min(position.MaxLevel, kDeepestLevel);
  return limits;
}

std::optional<Walk::Spot> Walk::SpotAt(const COLLECTIONPOSITION& position) {
  if (position.Level > kDeepestLevel) return std::nullopt;
  if (position.Level == 0 && position.Tumbler[0] == 0) return kBefore;
  if (tree_.is_flat()) {
    const std::uint32_t ordinal = position.Tumbler[0];
    return position.Level == 0 && ordinal <= tree_.rows() ? std::optional<Spot>(Spot{ordinal} - 1) : std::nullopt;
  }
  Rank from = 0;
  for (std::uint8_t level = 0;; ++level) {
    const std::optional<Rank> found = tree_.Select(from, level, position.Tumbler[level]);
    if (!found || level == position.Level) return AsSpot(found);
    from = *found + 1;
  }
}

Walk::Spot Walk::FirstPeer(Spot spot, std::uint8_t level) {
  if (level == 0) return 0;
  const std::optional<Rank> parent = tree_.PrevAtMost(AsRank(spot), level - 1);
  return parent ? Spot{*parent} + 1 : 0;
}

void Walk::SetPosition(Spot spot, COLLECTIONPOSITION* position) {
  if (spot == kBefore) {
    position->Level = 0;
    position->Tumbler[0] = 0;
    return;
  }
  if (tree_.is_flat()) {
    position->Level = 0;
    position->Tumbler[0] = static_cast<std::uint32_t>(spot + 1);
    return;
  }
  std::uint8_t level = LevelOf(spot);
  position->Level = level;
  for (;; --level) {
    const Spot first = FirstPeer(spot, level);
    position->Tumbler[level] = tree_.Range(AsRank(first), AsRank(spot) + 1).At(level);
    if (level == 0 || first == 0) return;
    spot = first - 1;
  }
}

void Walk::AdvancePosition(std::uint8_t level, COLLECTIONPOSITION* position) const {
  if (level > position->Level) position->Tumbler[level] = 0;
  position->Level = level;
  ++position->Tumbler[level];
}

Rank Walk::EndOf(Rank rank) { return end_of_ == rank ? end_ : EndOf(rank, tree_.At(rank)); }

Rank Walk::EndOf(Rank rank, const PageTree::Cursor& row, PageTree::Cursor* end) {
  if (end_of_ != rank) {
    end_ = rank;
    end_row_ = row;
    tree_.NextAtMost(&end_row_, &end_, row.level());
    end_of_ = rank;
  }
  if (end) *end = end_row_;
  return end_;
}

std::uint32_t Walk::Forward(std::uint32_t count, const Limits& limits, Spot* spot) {
  Spot end = tree_.rows();
  if (limits.least != 0) {
    // The first row of all is of level 0.
    end = *spot == kBefore ? 0 : tree_.NextAtMost(AsRank(*spot), limits.least - 1).value_or(tree_.rows());
  }
  const Rank first = AsRank(*spot + 1);
  if (limits.most >= kDeepestLevel) {
    const auto steps = static_cast<std::uint32_t>(std::min<Spot>(count, std::max<Spot>(end - 1 - *spot, 0)));
    *spot += steps;
    return steps;
  }
  if (limits.most == limits.least) {
    const std::uint32_t steps = std::min(count, tree_.Range(first, AsRank(end)).At(limits.most));
    if (steps != 0) *spot = *tree_.Select(first, limits.most, steps);
    return steps;
  }
  std::uint32_t steps = 0;
  while (steps < count) {
    std::optional<Rank> next;
    if (*spot == kBefore) {
      next = tree_.rows() != 0 ? std::optional<Rank>(0) : std::nullopt;
    } else {
      next = tree_.NextAtMost(AsRank(*spot), limits.most);
    }
    if (!next || *next >= end) break;
    *spot = *next;
    ++steps;
  }
  return steps;
}

std::uint32_t Walk::Backward(std::uint32_t count, const Limits& limits, Spot* spot) {
  if (*spot == kBefore) return 0;
  Spot lowest = 0;
  if (limits.least != 0) {
    const std::optional<Rank> above = tree_.PrevAtMost(AsRank(*spot), limits.least - 1);
    if (above) lowest = Spot{*above} + 1;
  }
  if (limits.most >= kDeepestLevel) {
    const auto steps = static_cast<std::uint32_t>(std::min<Spot>(count, std::max<Spot>(*spot - lowest, 0)));
    *spot -= steps;
    return steps;
  }
  std::uint32_t steps = 0;
  for (; steps < count; ++steps) {
    const std::optional<Rank> before = tree_.PrevAtMost(AsRank(*spot), limits.most);
    if (!before || *before < lowest) break;
    *spot = *before;
  }
  return steps;
}

std::uint32_t Walk::NextPeer(std::uint32_t count, Spot* spot) {
  const std::uint8_t level = *spot == kBefore ? std::uint8_t{0} : LevelOf(*spot);
  const Rank first = AsRank(*spot + 1);
  Rank end = tree_.rows();
  if (level != 0) end = tree_.NextAtMost(AsRank(*spot), level - 1).value_or(end);
  const std::uint32_t steps = std::min(count, tree_.Range(first, end).At(level));
  if (steps != 0) *spot = *tree_.Select(first, level, steps);
  return steps;
}

std::uint32_t Walk::PrevPeer(std::uint32_t count, Spot* spot) {
  if (*spot == kBefore) return 0;
  const std::uint8_t level = LevelOf(*spot);
  const Spot first = FirstPeer(*spot, level);
  const std::uint32_t before = tree_.Range(AsRank(first), AsRank(*spot)).At(level);
  const std::uint32_t steps = std::min(count, before);
  if (steps != 0) *spot = *tree_.Select(AsRank(first), level, before - steps + 1);
  return steps;
}

std::optional<Walk::Spot> Walk::Main(Spot spot) {
  if (spot == kBefore) return std::nullopt;
  const PageTree::Cursor row = tree_.At(AsRank(spot));
  if (row.kind() != RowKind::kDocument) return std::nullopt;
  if (row.indent() == 0) return spot;
  return AsSpot(tree_.PrevAtMost(AsRank(spot), static_cast<std::uint8_t>(row.level() - row.indent())));
}

std::optional<Walk::Spot> Walk::NextMain(Spot spot) {
  if (spot == kBefore) return tree_.rows() == 0 ? std::nullopt : NextNoCategory(spot);
  const PageTree::Cursor row = tree_.At(AsRank(spot));
  if (row.kind() != RowKind::kDocument) return AsSpot(tree_.NextOfKind(AsRank(spot), true));
  const std::optional<Rank> next =
      tree_.NextAtMost(AsRank(spot), static_cast<std::uint8_t>(row.level() - row.indent()));
  if (!next || tree_.At(*next).kind() == RowKind::kDocument) return AsSpot(next);
  return AsSpot(tree_.NextOfKind(*next, true));
}

std::optional<Walk::Spot> Walk::PrevMain(Spot spot) {
  if (spot == kBefore) return std::nullopt;
  const std::optional<Rank> before = tree_.PrevOfKind(AsRank(spot), true);
  return before ? Main(*before) : std::nullopt;
}

// Back over the parent's earlier peers, and outwards where the parent is the first of its own.
std::optional<Walk::Spot> Walk::PrevParent(Spot spot) {
  if (spot == kBefore || LevelOf(spot) == 0) return std::nullopt;
  std::optional<Rank> at = tree_.PrevAtMost(AsRank(spot), LevelOf(spot) - 1);
  while (at) {
    const std::uint8_t level = LevelOf(*at);
    at = tree_.PrevAtMost(*at, level);
    if (at && LevelOf(*at) == level) return AsSpot(at);
  }
  return std::nullopt;
}

std::optional<Walk::Spot> Walk::NextNoCategory(Spot spot) {
  std::optional<Rank> next;
  if (spot == kBefore) {
    if (tree_.rows() == 0) return std::nullopt;
    next = tree_.At(0).kind() == RowKind::kDocument ? std::optional<Rank>(0) : tree_.NextOfKind(0, true);
  } else {
    next = tree_.NextOfKind(AsRank(spot), true);
  }
  // The totals row is the last one.
  const Spot last = Spot{tree_.rows()} - 1;
  if (!next && last > spot && tree_.At(AsRank(last)).kind() == RowKind::kTotal) return last;
  return AsSpot(next);
}

std::optional<Walk::Spot> Walk::PrevNoCategory(Spot spot) {
  return spot == kBefore ? std::nullopt : AsSpot(tree_.PrevOfKind(AsRank(spot), true));
}

std::optional<Walk::Spot> Walk::Category(std::optional<Rank> rank) {
  return rank && tree_.At(*rank).kind() == RowKind::kCategory ? AsSpot(rank) : std::nullopt;
}

bool Walk::KnowsUnread(std::uint32_t walked) {
  if (!print_) print_ = idtable::Fingerprint(unread_);
  return unread_rows_->Known(*index_, unread_, *print_, walked);
}

std::optional<Walk::Spot> Walk::Unread(Spot spot, bool forward, bool main) {
  if (!any_unread() || tree_.rows() == 0) return std::nullopt;
  if (spot == kBefore && !forward) return std::nullopt;
  PageTree::Cursor cursor;
  if (spot == kBefore) {
    cursor = tree_.At(0);
    spot = 0;
  } else {
    cursor = tree_.At(AsRank(spot));
    if (!(forward ? tree_.Next(&cursor) : tree_.Prev(&cursor))) return std::nullopt;
    spot += forward ? 1 : -1;
  }
  for (std::uint32_t walked = 0;; ++walked) {
    if (walked == kNear) {
      walked = 0;
      if (KnowsUnread(kNear)) {
        const Rank rank = AsRank(spot);
        return AsSpot(forward ? unread_rows_->Next(rank, main) : unread_rows_->Prev(rank, main));
      }
    }
    const bool fits = cursor.kind() == RowKind::kDocument && (!main || cursor.indent() == 0);
    if (fits && idtable::Contains(unread_, cursor.id())) return spot;
    if (!(forward ? tree_.Next(&cursor) : tree_.Prev(&cursor))) return std::nullopt;
    spot += forward ? 1 : -1;
  }
}

std::optional<Walk::Spot> Walk::Step(std::uint16_t code, Spot spot) {
  const bool at_row = spot != kBefore;
  switch (code) {
    case ENG_GO_PARENT:
      if (!at_row || LevelOf(spot) == 0) return std::nullopt;
      return AsSpot(tree_.PrevAtMost(AsRank(spot), LevelOf(spot) - 1));
    case ENG_GO_CHILD: {
      const PageTree::Cursor next = tree_.At(AsRank(spot + 1));
      if (!next.at_row() || (at_row && next.level() <= LevelOf(spot))) return std::nullopt;
      return spot + 1;
    }
    case ENG_GO_NEXT_PARENT:
      if (!at_row || LevelOf(spot) == 0) return std::nullopt;
      return AsSpot(tree_.NextAtMost(AsRank(spot), LevelOf(spot) - 1));
    case ENG_GO_PREV_PARENT:
      return PrevParent(spot);
    case ENG_GO_NEXT_MAIN:
      return NextMain(spot);
    case ENG_GO_PREV_MAIN:
      return PrevMain(spot);
    case ENG_GO_NEXT_CATEGORY:
      if (!at_row)
        return tree_.rows() != 0 && tree_.At(0).kind() == RowKind::kCategory ? std::optional<Spot>(0)
                                                                             : Category(tree_.NextOfKind(0, false));
      return Category(tree_.NextOfKind(AsRank(spot), false));
    case ENG_GO_PREV_CATEGORY:
      return at_row ? Category(tree_.PrevOfKind(AsRank(spot), false)) : std::nullopt;
    case ENG_GO_NEXT_DOCUMENT:
      return NextNoCategory(spot);
    case ENG_GO_PREV_DOCUMENT:
      return PrevNoCategory(spot);
    case ENG_GO_NEXT_UNREAD:
    case ENG_GO_NEXT_UNREAD_MAIN:
      return Unread(spot, true, code == ENG_GO_NEXT_UNREAD_MAIN);
    case ENG_GO_PREV_UNREAD:
    case ENG_GO_PREV_UNREAD_MAIN:
      return Unread(spot, false, code == ENG_GO_PREV_UNREAD_MAIN);
    default:
      return std::nullopt;
  }
}

std::uint32_t Walk::Go(std::uint16_t full_code, std::uint32_t count, const Limits& limits, Spot* spot) {
  const std::uint16_t code = full_code & ENG_GO_MASK;
  if (count == 0 || code == ENG_GO_CURRENT) return count;
  switch (code) {
    case ENG_GO_NEXT:
      return Forward(count, limits, spot);
    case ENG_GO_PREV:
      return Backward(count, limits, spot);
    case ENG_GO_NEXT_PEER:
      return NextPeer(count, spot);
    case ENG_GO_PREV_PEER:
      return PrevPeer(count, spot);
    case ENG_GO_FIRST_PEER:
      PrevPeer(UINT32_MAX, spot);
      return count;
    case ENG_GO_LAST_PEER:
      NextPeer(UINT32_MAX, spot);
      return count;
    case ENG_GO_MAIN: {
      const std::optional<Spot> main = Main(*spot);
      if (main) *spot = *main;
      return main ? count : 0;
    }
    case ENG_GO_DESCENDANTS: {
      const Spot end = *spot == kBefore ? Spot{tree_.rows()} : Spot{EndOf(AsRank(*spot))};
      if (limits.most < kDeepestLevel) {
        const std::uint8_t least = *spot == kBefore ? std::uint8_t{0} : static_cast<std::uint8_t>(LevelOf(*spot) + 1);
        return Forward(count, {std::max(limits.least, least), limits.most}, spot);
      }
      const auto steps = static_cast<std::uint32_t>(std::min<Spot>(count, end - 1 - *spot));
      *spot += steps;
      return steps;
    }
    default:
      break;
  }
  Spot end = tree_.rows();
  Spot lowest = 0;
  if (limits.least != 0 && *spot != kBefore) {
    end = tree_.NextAtMost(AsRank(*spot), limits.least - 1).value_or(tree_.rows());
    if (LevelOf(*spot) >= limits.least) lowest = FirstPeer(*spot, limits.least);
  }
  std::uint32_t steps = 0;
  for (Spot at = *spot; steps < count;) {
    const std::optional<Spot> next = Step(code, at);
    if (!next || *next >= end || *next < lowest) break;
    at = *next;
    if (LevelOf(at) > limits.most) continue;
    *spot = at;
    ++steps;
  }
  return steps;
}

std::uint32_t Walk::Siblings(Rank rank) {
  const std::uint8_t level = LevelOf(rank);
  const Spot first = FirstPeer(rank, level);
  const Rank end = level == 0 ? tree_.rows() : tree_.NextAtMost(rank, level - 1).value_or(tree_.rows());
  return tree_.Range(AsRank(first), end).At(level);
}

std::uint32_t Walk::Children(Rank rank) {
  return tree_.Range(rank + 1, EndOf(rank)).At(static_cast<std::uint8_t>(LevelOf(rank) + 1));
}

std::uint32_t Walk::Descendants(Rank rank) { return EndOf(rank) - rank - 1; }

bool Walk::IsUnread(Rank rank) {
  if (!any_unread()) return false;
  PageTree::Cursor cursor = tree_.At(rank);
  if (cursor.kind() == RowKind::kDocument) return idtable::Contains(unread_, cursor.id());
  if (cursor.kind() == RowKind::kTotal) return false;
  const std::uint8_t level = cursor.level();
  for (std::uint32_t walked = 1; tree_.Next(&cursor) && cursor.level() > level; ++walked) {
    if (cursor.kind() == RowKind::kDocument && idtable::Contains(unread_, cursor.id())) return true;
    if (walked % kNear != 0 || !KnowsUnread(kNear)) continue;
    const std::optional<Rank> next = unread_rows_->Next(rank + 1, false);
    return next && *next < EndOf(rank);
  }
  return false;
}

}  // namespace qcore::index
