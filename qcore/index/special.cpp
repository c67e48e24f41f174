#include "qcore/index/special.h"

#include <algorithm>

namespace qcore::index {

namespace {

constexpr char kMarker = 0x7F;

std::string NumberOf(const COLLECTIONPOSITION* position) {
  std::string number;
  if (!position) return number;
  const unsigned last = std::min<unsigned>(position->Level, ENG_COLLECTION_LEVELS - 1);
  for (unsigned level = 0; level <= last; ++level) {
    if (level != 0) number += '.';
    number += std::to_string(position->Tumbler[level]);
  }
  return number;
}

// False for a letter that means nothing.
bool AppendMarked(char letter, const SpecialFacts& facts, std::string* output) {
  switch (letter) {
    case 'D':
      output->append(NumberOf(facts.position));
      return true;
    case 'L':
      output->append(std::to_string(facts.position ? facts.position->Level + 1 : 0));
      return true;
    case 'S':
      output->append(std::to_string(facts.siblings));
      return true;
    case 'C':
      output->append(std::to_string(facts.children));
      return true;
    case 'd':
      output->append(std::to_string(facts.descendants));
      return true;
    case 'U':
      output->append(facts.unread ? "*" : "");
      return true;
    case 'I':
      output->append(facts.children != 0 ? "+" : "");
      return true;
    case 'T':
      output->append(facts.db_title);
      return true;
    case 'V':
      output->append(facts.view_title);
      return true;
    default:
      return false;
  }
}

}  // namespace

std::string ExpandSpecial(std::string_view text, const SpecialFacts& facts) {
  std::string output;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == kMarker && at + 1 < text.size() && AppendMarked(text[at + 1], facts, &output)) {
      ++at;
    } else {
      output.push_back(text[at]);
    }
  }
  return output;
}

}  // namespace qcore::index
