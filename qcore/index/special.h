// Marks in constant column texts; see EngCollectionTranslateSpecial.
#ifndef QUILLON_QCORE_INDEX_SPECIAL_H
#define QUILLON_QCORE_INDEX_SPECIAL_H

#include <string>
#include <string_view>
#include <vector>

#include "engine/collection.h"
#include "qcore/index/values.h"

namespace qcore::index {

struct SpecialFacts {
  std::uint32_t id = 0;
  const COLLECTIONPOSITION* position = nullptr;
  std::uint32_t siblings = 0;
  std::uint32_t children = 0;
  std::uint32_t descendants = 0;
  bool unread = false;
  std::string_view db_title;
  std::string_view view_title;
};

// The size of the mark at the front of a text, 0 when there is none.
std::size_t FrontMarkSize(std::string_view text);
std::string ExpandSpecial(std::string_view text, const SpecialFacts& facts);
// The same for a text or text list behind its type word. False for a list that is none or grows too long.
bool ExpandSpecialValue(bool list, Bytes value, const SpecialFacts& facts, std::vector<std::uint8_t>* expanded);

}  // namespace qcore::index

#endif
