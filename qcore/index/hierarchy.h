// Which document each response hangs below.
//
// A response hangs below its parent when that has rows. Where parents lead round in a circle, the document of the
// lowest ID in it stands as a main topic.
#ifndef QUILLON_QCORE_INDEX_HIERARCHY_H
#define QUILLON_QCORE_INDEX_HIERARCHY_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace qcore::index {

class Hierarchy {
 public:
  // The parent of a document if it has one that has rows.
  using ParentOf = std::function<std::optional<std::uint32_t>(std::uint32_t)>;

  explicit Hierarchy(ParentOf parent_of) : parent_of_(std::move(parent_of)) {}

  std::optional<std::uint32_t> Above(std::uint32_t id) {
    const std::optional<std::uint32_t> parent = parent_of_(id);
    if (!parent) return parent;
    if (!lowest_.contains(id)) LookUp(id);
    return lowest_.find(id)->second == id ? std::nullopt : parent;
  }

 private:
  static constexpr std::uint32_t kNoCircle = 0;  // no document's ID

  // Every document on the way up is looked at once.
  void LookUp(std::uint32_t id) {
    std::vector<std::uint32_t> way;
    std::optional<std::uint32_t> at = id;
    for (; at && lowest_.try_emplace(*at, kNoCircle).second; at = parent_of_(*at)) way.push_back(*at);
    const auto circle = at ? std::find(way.begin(), way.end(), *at) : way.end();
    if (circle == way.end()) return;
    const std::uint32_t lowest = *std::min_element(circle, way.end());
    std::for_each(circle, way.end(), [this, lowest](std::uint32_t each) { lowest_[each] = lowest; });
  }

  ParentOf parent_of_;
  std::unordered_map<std::uint32_t, std::uint32_t> lowest_;  // of the circle that a document is in
};

}  // namespace qcore::index

#endif
