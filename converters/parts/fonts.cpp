#include "converters/parts/fonts.h"

#include <array>

namespace conv {

namespace {

constexpr unsigned kNamed = 16;
constexpr unsigned kSteps = 6;
constexpr unsigned kStep = 51;
constexpr std::array<std::uint32_t, kColors> kPalette = [] {
  std::array<std::uint32_t, kColors> palette = {0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0xFF00FF,
                                                0xFFFF00, 0x00FFFF, 0x800000, 0x008000, 0x000080, 0x800080,
                                                0x808000, 0x008080, 0x808080, 0xC0C0C0};
  unsigned next = kNamed;
  for (unsigned red = 0; red < kSteps; ++red) {
    for (unsigned green = 0; green < kSteps; ++green) {
      for (unsigned blue = 0; blue < kSteps; ++blue) palette[next++] = (red << 16 | green << 8 | blue) * kStep;
    }
  }
  for (unsigned grey = 0x1A; next < kColors; grey += 0x1A) palette[next++] = grey << 16 | grey << 8 | grey;
  return palette;
}();

unsigned Distance(std::uint32_t a, std::uint32_t b) {
  unsigned sum = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const int difference = static_cast<int>(a >> shift & 0xFF) - static_cast<int>(b >> shift & 0xFF);
    sum += static_cast<unsigned>(difference * difference);
  }
  return sum;
}

}  // namespace

std::uint32_t ColorFromIndex(unsigned index) { return index < kColors ? kPalette[index] : 0; }

std::uint8_t IndexFromColor(std::uint32_t color, bool* exact) {
  unsigned best = 0;
  for (unsigned i = 1; i < kColors; ++i) {
    if (Distance(kPalette[i], color) < Distance(kPalette[best], color)) best = i;
  }
  *exact = kPalette[best] == color;
  return static_cast<std::uint8_t>(best);
}

}  // namespace conv
