// Word boundaries. Words are runs of letters, digits and marks.
//
// Positions are byte offsets at character boundaries; each answer lies behind or ahead of the position asked from,
// never at it.
#ifndef QUILLON_QCORE_TEXT_WORDS_H
#define QUILLON_QCORE_TEXT_WORDS_H

#include <optional>

#include "qcore/text/utf8.h"

namespace qcore::text {

// From the text's start, to the first NUL at most.
std::optional<std::size_t> NextWordStart(Text text);
std::optional<std::size_t> NextWordEnd(Text text);
// From the text's end.
std::optional<std::size_t> PreviousWordStart(Text text);
std::optional<std::size_t> PreviousWordEnd(Text text);

}  // namespace qcore::text

#endif
