// Comparing and finding, exactly or with differences of case and accents passed over.
#ifndef QUILLON_QCORE_TEXT_SEARCH_H
#define QUILLON_QCORE_TEXT_SEARCH_H

#include <optional>

#include "qcore/text/utf8.h"

namespace qcore::text {

// `flags` are ENG_COMPARE_...; other bits have no effect. Negative, zero or positive.
int Compare(Text first, Text second, std::uint32_t flags);

struct Match {
  std::size_t offset;
  std::size_t length;
};
// Matches start and end between characters of the text. With accents ignored, those behind the last character belong to
// the match.
std::optional<Match> Find(Text text, Text pattern, std::uint32_t flags);

// Offset of the first character of the text that is also in `set`.
std::optional<std::size_t> FindAny(Text text, Text set);

}  // namespace qcore::text

#endif
