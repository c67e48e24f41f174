// Packed fonts and the colours that they count, as the converters use them.
#ifndef QUILLON_CONVERTERS_PARTS_FONTS_H
#define QUILLON_CONVERTERS_PARTS_FONTS_H

#include <cstdint>

namespace conv {

// Face, attributes, colour and point size, one byte each from the low end.
using FontID = std::uint32_t;

inline constexpr FontID kBold = 0x0100;
inline constexpr FontID kItalic = 0x0200;
inline constexpr FontID kUnderline = 0x0400;
inline constexpr FontID kStrikeout = 0x0800;
inline constexpr FontID kSuperscript = 0x1000;
inline constexpr FontID kSubscript = 0x2000;
inline constexpr FontID kAttributes = 0xFF00;
inline constexpr FontID kDefaultFont = 0x0A000001;

// The faces that every reader has.
enum Face : std::uint8_t { kSerif = 0, kSans = 1, kMono = 4 };

constexpr std::uint8_t FaceOf(FontID font) { return static_cast<std::uint8_t>(font); }
constexpr std::uint8_t ColorOf(FontID font) { return static_cast<std::uint8_t>(font >> 16); }
constexpr std::uint8_t SizeOf(FontID font) { return static_cast<std::uint8_t>(font >> 24); }
constexpr FontID WithFace(FontID font, std::uint8_t face) { return (font & 0xFFFFFF00) | face; }
constexpr FontID WithColor(FontID font, std::uint8_t color) { return (font & 0xFF00FFFF) | FontID{color} << 16; }
constexpr FontID WithSize(FontID font, std::uint8_t points) { return (font & 0x00FFFFFF) | FontID{points} << 24; }

// Colours are 0xRRGGBB; a colour index counts 16 named ones, the 216 of a cube with steps of 51, and 8 greys.
inline constexpr unsigned kColors = 240;
// Black for an index above the last.
std::uint32_t ColorFromIndex(unsigned index);
// The nearest one; *exact tells whether it is the colour itself.
std::uint8_t IndexFromColor(std::uint32_t color, bool* exact);

}  // namespace conv

#endif
