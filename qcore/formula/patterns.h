// Patterns and encodings of texts.
#ifndef QUILLON_QCORE_FORMULA_PATTERNS_H
#define QUILLON_QCORE_FORMULA_PATTERNS_H

#include <string>
#include <string_view>

namespace qcore::formula {

// `?` is a character, `*` any number of them, `{abc}`, `{a-z}` and `{!abc}` one of a set, and `\` takes the next as it
// is. The whole text has to match.
bool MatchesPattern(std::string_view text, std::string_view pattern);
// `_` is a character and `%` any number of them; `escape`, a character, takes the next as it is.
bool IsLike(std::string_view text, std::string_view pattern, std::string_view escape);

// A letter and three digits; empty for a text without letters of ASCII.
std::string SoundexOf(std::string_view text);
// All but letters, digits, '-', '_', '.' and '~' as %XX.
std::string UrlEncoded(std::string_view text);
std::string UrlDecoded(std::string_view text);

}  // namespace qcore::formula

#endif
