// Characters of store text. A byte that is no part of a well-formed UTF-8 sequence is a character of its own.
//
// Nothing here looks at a byte before it knows that all bytes ahead of it in the same sequence fit, so a NUL stops
// every walk over terminated text even where the bound lies behind it.
#ifndef QUILLON_QCORE_TEXT_UTF8_H
#define QUILLON_QCORE_TEXT_UTF8_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/types.h"

namespace qcore::text {

using Text = std::span<const ENGCHAR>;

// Invalid byte b decodes as kInvalidBase + b: above every character, different from each other.
inline constexpr std::int32_t kInvalidBase = 0x110000;

struct Character {
  std::int32_t code;
  std::uint32_t length;
};

Character DecodeMultibyte(const ENGCHAR* text, std::size_t available);

// `available` is at least 1 in all of these.
inline Character Decode(const ENGCHAR* text, std::size_t available) {
  return *text < 0x80 ? Character{*text, 1} : DecodeMultibyte(text, available);
}
inline std::uint32_t Step(const ENGCHAR* text, std::size_t available) { return Decode(text, available).length; }

// Bytes of the character that ends at `position`, which is a character boundary behind `start`.
std::uint32_t StepBack(const ENGCHAR* start, const ENGCHAR* position);
// Whether a character starts at `position`, or the text ends there.
bool IsBoundary(Text text, std::size_t position);

struct Span {
  std::uint32_t characters;
  std::uint32_t bytes;
};
// The first characters of the text, at most `characters`.
Span Measure(Text text, std::uint32_t characters);

// Writes invalid codes back as the byte they stand for.
void Append(std::int32_t code, std::string* text);

// The longest part of the text from its start that has at most `limit` bytes and splits no character.
std::size_t CutLength(Text text, std::size_t limit);

inline Text AsText(std::string_view text) { return {reinterpret_cast<const ENGCHAR*>(text.data()), text.size()}; }

}  // namespace qcore::text

#endif
