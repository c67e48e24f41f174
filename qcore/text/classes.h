// Character classes. ASCII goes by a table, everything else by its Unicode properties; an invalid byte has none.
#ifndef QUILLON_QCORE_TEXT_CLASSES_H
#define QUILLON_QCORE_TEXT_CLASSES_H

#include <cstdint>

namespace qcore::text {

enum class Class { kAlnum, kAlpha, kArith, kCntrl, kDigit, kLower, kPunct, kSpace, kUpper };

bool Is(Class which, std::int32_t code);

// Letters, digits and marks.
bool IsWord(std::int32_t code);

// Marks that only vary the letter in front of them. Vowel signs, viramas and the kana voice marks are not among them:
// without them another letter stands there.
bool IsAccent(std::int32_t code);

}  // namespace qcore::text

#endif
