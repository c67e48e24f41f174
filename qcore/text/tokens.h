// Words of a text as a full-text index knows them: folded to one case and without accents.
//
// Words are runs of letters, digits and marks. Writing without spaces (Chinese, Japanese, Korean, Thai and its
// neighbours) has no such runs: there every character is a word, and in a document each pair of neighbours is one too,
// at the place of its first character. A query takes the pairs, which are far rarer than characters.
#ifndef QUILLON_QCORE_TEXT_TOKENS_H
#define QUILLON_QCORE_TEXT_TOKENS_H

#include <string_view>

#include "qcore/text/utf8.h"

namespace qcore::text {

enum class TokenUse { kDocument, kQuery };

// Stands between stretches of a document that no phrase may span; a word of its own in the index.
inline constexpr char kStretchEnd = '\x1E';

// What is longer counts as far as this.
inline constexpr std::size_t kLongestToken = 128;

struct Token {
  std::string_view text;  // good during the call
  std::size_t start;      // in the text, in bytes
  std::size_t end;
  bool same_place;  // at the place of the token before
};

// Gives a number other than 0 to stop, which becomes the result of Tokenize.
using TokenSink = int (*)(void* context, const Token& token);

int Tokenize(Text text, TokenUse use, void* context, TokenSink sink);

}  // namespace qcore::text

#endif
