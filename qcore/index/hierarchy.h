// Which document each response hangs below.
//
// A response hangs below its parent when that has rows. Where parents lead round in a circle, the document of the
// lowest ID in it stands as a main topic.
#ifndef QUILLON_QCORE_INDEX_HIERARCHY_H
#define QUILLON_QCORE_INDEX_HIERARCHY_H

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_set>

namespace qcore::index {

class Hierarchy {
 public:
  // The parent of a document if it has one that has rows.
  using ParentOf = std::function<std::optional<std::uint32_t>(std::uint32_t)>;

  explicit Hierarchy(ParentOf parent_of) : parent_of_(std::move(parent_of)) {}

  std::optional<std::uint32_t> Above(std::uint32_t id) {
    const std::optional<std::uint32_t> parent = parent_of_(id);
    if (!parent || rooted_.contains(*parent)) return parent;
    std::unordered_set<std::uint32_t> way;
    std::uint32_t lowest = id;
    for (std::optional<std::uint32_t> at = parent; at && !rooted_.contains(*at); at = parent_of_(*at)) {
      if (*at == id) return lowest == id ? std::nullopt : parent;
      if (!way.insert(*at).second) return parent;  // a circle further up, of which the document is no part
      lowest = lowest < *at ? lowest : *at;
    }
    rooted_.insert(way.begin(), way.end());
    return parent;
  }

 private:
  ParentOf parent_of_;
  std::unordered_set<std::uint32_t> rooted_;  // known to lead to a document without a parent
};

}  // namespace qcore::index

#endif
