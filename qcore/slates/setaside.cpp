// Items that are taken out of an open slate and may come back as they were.
#include <algorithm>

#include "qcore/memory/memory.h"
#include "qcore/slates/slate.h"

namespace qcore {

void Slate::ForgetSetAside() {
  for (auto& [slot, item] : set_aside_) ReleaseValue(item);
  set_aside_.clear();
}

ENGSTATUS Slate::SetAside(std::uint32_t first, std::uint32_t count) {
  if (first > order_.size() || count > order_.size() - first) return ENG_ERR_NO_ITEM;
  const auto begin = order_.begin() + first;
  const auto end = begin + count;
  if (std::any_of(begin, end, [this](Slot slot) { return IsLocked(items_[slot]); })) return ENG_ERR_MEMORY_LOCKED;
  if (std::any_of(begin, end, [this](Slot slot) { return items_[slot].type == kObjectType; })) return ENG_ERR_ARGUMENT;
  ForgetSetAside();
  set_aside_.reserve(count);
  for (auto at = begin; at != end; ++at) {
    Item& item = items_[*at];
    set_aside_.emplace_back(*at, item);
    if (item.aside != 0) dropped_.push_back(item.aside);
    item.pool = 0;
    item.own_block = false;
    item.aside = 0;
    item.live = false;
  }
  order_.erase(begin, end);
  many_.Clear();
  modified_ = true;
  return ENG_OK;
}

ENGSTATUS Slate::RestoreSetAside() {
  if (set_aside_.empty()) return ENG_ERR_NO_ITEM;
  for (const auto& [slot, item] : set_aside_) {
    items_[slot] = item;
    items_[slot].changed = true;
    if (item.aside != 0) std::erase(dropped_, item.aside);
    order_.push_back(slot);
  }
  set_aside_.clear();
  many_.Clear();
  modified_ = true;
  return ENG_OK;
}

}  // namespace qcore
