// Characters of UTF-8.
#ifndef QUILLON_CONVERTERS_PARTS_UTF8_H
#define QUILLON_CONVERTERS_PARTS_UTF8_H

#include <cstdint>
#include <string>
#include <string_view>

namespace conv {

// Bytes of the character at the start; 0 for a byte that begins none, and for C1 controls, which no page may hold.
constexpr std::size_t Utf8Length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
  const unsigned first = byte(0);
  if (first < 0x80) return text.empty() ? 0 : 1;
  if (first < 0xC2 || first > 0xF4 || !follows(1)) return 0;
  if (first < 0xE0) return first == 0xC2 && byte(1) < 0xA0 ? 0 : 2;
  if (!follows(2)) return 0;
  if (first == 0xE0 && byte(1) < 0xA0) return 0;
  if (first == 0xED && byte(1) > 0x9F) return 0;
  if (first < 0xF0) return 3;
  if (!follows(3) || (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) return 0;
  return 4;
}

}  // namespace conv

#endif
