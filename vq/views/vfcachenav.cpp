// VFCache: moves inside the block.
#include <algorithm>

#include "vq/views/entryrow.h"
#include "vq/views/navmove.h"
#include "vq/views/ventbody.h"

namespace {

constexpr char kFile[] = "VFCACHE";

bool IsCategory(std::uint32_t id) { return (id & ENG_ROW_NO_DOCUMENT) != 0 && (id & ENG_ROW_TOTAL) == 0; }

}  // namespace

bool VFCache::IsNavigatorEdge(bool backward) {
  if (FirstIndex == INDEX_UNKNOWN) return false;
  std::uint32_t entries = 0;
  return backward ? FirstIndex == 0 : KnowsEntryCount(&entries) && FirstIndex + Count == entries;
}

VFCache::Landing VFCache::GoToEnd(VQNAVIGATION code) {
  std::uint32_t entries = 0;
  if (!KnowsEntryCount(&entries)) return kUnclear;
  if (FirstIndex == INDEX_UNKNOWN) {
    if (entries != Count) return kUnclear;
    FirstIndex = 0;
  }
  if (code == VQNAVIGATE_FIRST) return FirstIndex == 0 ? 0 : kOutside;
  return FirstIndex + Count == entries ? Count - 1 : kOutside;
}

VFCache::Landing VFCache::Navigate(VQNAVIGATION code) {
  if (code == VQNAVIGATE_FIRST || code == VQNAVIGATE_LAST) return GoToEnd(code);
  VQ_ASSERT(CurrentIndex != INDEX_UNKNOWN, kFile);
  if (code == VQNAVIGATE_MAIN) {
    // A hit stays where it is.
    if (Navigator->IsFTSearch() || IsMainAt(CurrentIndex)) return CurrentIndex;
    if ((IDAt(CurrentIndex) & ENG_ROW_NO_DOCUMENT) != 0) return kNone;
  }
  const bool backward = VQVFNavigatorBody::IsBackward(code);
  const std::uint32_t distance = backward ? CurrentIndex : Count - CurrentIndex - 1;
  if (distance != 0) {
    if (code == VQNAVIGATE_CHILD) {
      return LevelAt(CurrentIndex + 1) > LevelAt(CurrentIndex) ? CurrentIndex + 1 : kNone;
    }
    if (code == VQNAVIGATE_NEXT) return CurrentIndex + 1;
    if (code == VQNAVIGATE_PREV) return CurrentIndex - 1;
  }
  return Scan(code, backward);
}

VFCache::Landing VFCache::Scan(VQNAVIGATION code, bool backward) {
  const std::uint32_t edge = backward ? 0 : Count - 1;
  unsigned level = LevelAt(CurrentIndex);
  std::uint32_t peer = CurrentIndex;
  bool at_parent = false;
  for (std::uint32_t i = CurrentIndex; i != edge;) {
    i = backward ? i - 1 : i + 1;
    const unsigned here = LevelAt(i);
    switch (code) {
      case VQNAVIGATE_FIRST_SIBLING:
      case VQNAVIGATE_LAST_SIBLING:
        if (here < level) return peer;
        if (here == level) peer = i;
        break;
      case VQNAVIGATE_MAIN:
      case VQNAVIGATE_NEXT_MAIN:
      case VQNAVIGATE_PREV_MAIN:
        if (IsMainAt(i)) return i;
        break;
      case VQNAVIGATE_NEXT_CATEGORY:
      case VQNAVIGATE_PREV_CATEGORY:
        if (IsCategory(IDAt(i))) return i;
        break;
      case VQNAVIGATE_NEXT_DOCUMENT:
      case VQNAVIGATE_PREV_DOCUMENT:
        if (!IsCategory(IDAt(i))) return i;
        break;
      case VQNAVIGATE_PARENT:
      case VQNAVIGATE_NEXT_PARENT:
        if (here < level) return i;
        break;
      case VQNAVIGATE_PREV_PARENT:
        if (at_parent && here == level) return i;
        at_parent = at_parent || here < level;
        level = std::min(level, here);
        break;
      case VQNAVIGATE_NEXT_SIBLING:
      case VQNAVIGATE_PREV_SIBLING:
        if (here <= level) return here == level ? i : kNone;
        break;
      case VQNAVIGATE_NEXT_UNREAD:
      case VQNAVIGATE_PREV_UNREAD:
        if (IsUnreadAt(i)) return i;
        break;
      case VQNAVIGATE_NEXT_UNREAD_MAIN:
      case VQNAVIGATE_PREV_UNREAD_MAIN:
        if (IsUnreadAt(i) && IsMainAt(i)) return i;
        break;
      default:
        return kUnclear;
    }
  }
  if (!IsNavigatorEdge(backward)) return kOutside;
  return code == VQNAVIGATE_FIRST_SIBLING || code == VQNAVIGATE_LAST_SIBLING ? peer : kNone;
}

VQSTATUS VFCache::GotoEntry(VQNAVIGATION code, VQVFPosition* position, VQVFEntry* entry) {
  if (MaxCount == 0) return VQWARN_NO_CACHE;
  if (HasBlock()) {
    const Locked locked(this);
    Landing landing = code == VQNAVIGATE_FIRST || code == VQNAVIGATE_LAST ? 0 : LocateCurrent(*position->GetPosition());
    if (landing == kNone) return VQERR_INVALID_PARAMETER;
    if (IsRow(landing)) {
      if (code != VQNAVIGATE_FIRST && code != VQNAVIGATE_LAST) CurrentIndex = landing;
      landing = Navigate(code);
      if (landing == kNone) return VQWARN_NOT_FOUND;
      if (IsRow(landing)) {
        CurrentIndex = landing;
        return CopyOut(landing, position, entry);
      }
    }
  }
  CurrentIndex = INDEX_UNKNOWN;
  if (entry == nullptr) return VQWARN_NO_CACHE;
  vq::NavigatorMove move;
  if (VQSTATUS status = Navigator->PlanGoto(code, *position, &move)) return status;
  if (VQSTATUS status = Fill(move)) return status;
  CurrentIndex = move.Backward ? Count - 1 : 0;
  const Locked locked(this);
  return CopyOut(CurrentIndex, position, entry);
}
