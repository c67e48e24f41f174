#include "converters/html/css.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace conv {

namespace {

constexpr double kPointsOfTwip = 1.0 / 20;
constexpr double kPointsOfPixel = 0.75;

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string Hex(std::uint32_t color) {
  char text[16];
  std::snprintf(text, sizeof text, "#%06x", color);
  return text;
}

void Add(std::string* css, const std::string& property) {
  if (!css->empty()) *css += ';';
  *css += property;
}

const char* FaceName(std::uint8_t face) {
  if (face == kSerif) return "serif";
  return face == kMono ? "monospace" : "sans-serif";
}

std::string AlignOf(std::uint16_t justify) {
  if (justify == kJustifyRight) return "text-align:right";
  if (justify == kJustifyFull) return "text-align:justify";
  return justify == kJustifyCenter ? "text-align:center" : "";
}

struct NamedColor {
  const char* Name;
  std::uint32_t Color;
};

constexpr NamedColor kColorNames[] = {
    {"aqua", 0x00FFFF},      {"black", 0x000000},    {"blue", 0x0000FF},      {"brown", 0xA52A2A},
    {"cyan", 0x00FFFF},      {"darkblue", 0x00008B}, {"darkgreen", 0x006400}, {"darkred", 0x8B0000},
    {"fuchsia", 0xFF00FF},   {"gold", 0xFFD700},     {"gray", 0x808080},      {"green", 0x008000},
    {"grey", 0x808080},      {"indigo", 0x4B0082},   {"lightblue", 0xADD8E6}, {"lightgray", 0xD3D3D3},
    {"lightgrey", 0xD3D3D3}, {"lime", 0x00FF00},     {"magenta", 0xFF00FF},   {"maroon", 0x800000},
    {"navy", 0x000080},      {"olive", 0x808000},    {"orange", 0xFFA500},    {"pink", 0xFFC0CB},
    {"purple", 0x800080},    {"red", 0xFF0000},      {"silver", 0xC0C0C0},    {"teal", 0x008080},
    {"violet", 0xEE82EE},    {"white", 0xFFFFFF},    {"yellow", 0xFFFF00},
};

struct KnownFace {
  const char* Name;
  Face Nearest;
  bool Exact;
};

constexpr KnownFace kFaces[] = {
    {"serif", kSerif, true},       {"tms rmn", kSerif, true},  {"times new roman", kSerif, false},
    {"times", kSerif, false},      {"georgia", kSerif, false}, {"sans-serif", kSans, true},
    {"helv", kSans, true},         {"arial", kSans, false},    {"helvetica", kSans, false},
    {"verdana", kSans, false},     {"monospace", kMono, true}, {"courier", kMono, true},
    {"courier new", kMono, false}, {"consolas", kMono, false}, {"menlo", kMono, false},
};

}  // namespace

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n\f";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string CssOfParagraph(const BlockInfo& block) {
  std::string css;
  if (block.Plain) return css;
  const std::string align = AlignOf(block.Justify);
  if (!align.empty()) Add(&css, align);
  if (block.Indent != 0) Add(&css, "margin-left:" + Number(block.Indent * kPointsOfTwip) + "pt");
  if (block.FirstLineIndent != 0) Add(&css, "text-indent:" + Number(block.FirstLineIndent * kPointsOfTwip) + "pt");
  return css;
}

std::string CssOfCell(const BlockInfo& cell, bool tableHasBorder) {
  constexpr const char* kSides[] = {"left", "right", "top", "bottom"};
  std::string css;
  const std::string align = AlignOf(cell.Justify);
  if (!align.empty()) Add(&css, align);
  const CDTABLECELL& record = *cell.Cell;
  if (record.Flags & kCellHasBackground) Add(&css, "background-color:" + Hex(ColorFromIndex(record.BackgroundColor)));
  for (unsigned side = 0; side < 4; ++side) {
    const unsigned type = record.Border >> (2 * side) & 3;
    const unsigned width = record.BorderWidth >> (4 * side) & 15;
    const bool none = type == 0 || width == 0;
    const bool usual = tableHasBorder ? type == 1 && width == 1 : none;
    if (usual) continue;
    const std::string line = none ? "none" : std::to_string(width) + (type == 2 ? "px double" : "px solid");
    Add(&css, std::string("border-") + kSides[side] + ":" + line);
  }
  return css;
}

std::string CssOfWidth(unsigned width, unsigned all) {
  return "width:" + Number(std::round(width * 1000.0 / all) / 10) + "%";
}

std::string CssOfFont(FontID font, FontID around) {
  std::string css;
  if (FaceOf(font) != FaceOf(around)) Add(&css, std::string("font-family:") + FaceName(FaceOf(font)));
  if (SizeOf(font) != SizeOf(around)) Add(&css, "font-size:" + std::to_string(SizeOf(font)) + "pt");
  if (ColorOf(font) != ColorOf(around)) Add(&css, "color:" + Hex(ColorFromIndex(ColorOf(font))));
  return css;
}

void ReadCss(std::string_view css, const std::function<void(std::string_view, std::string_view)>& take) {
  while (!css.empty()) {
    const std::string_view property = css.substr(0, css.find(';'));
    css.remove_prefix(std::min(css.size(), property.size() + 1));
    const std::size_t colon = property.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string name = Lower(Trim(property.substr(0, colon)));
    if (name.empty()) continue;
    std::string value = Lower(Trim(property.substr(colon + 1)));
    const std::size_t important = value.find("!important");
    if (important != std::string::npos) value = Trim(std::string_view(value).substr(0, important));
    take(name, value);
  }
}

std::optional<std::uint32_t> ColorFromCss(std::string_view value) {
  const std::string text = Lower(Trim(value));
  for (const NamedColor& color : kColorNames) {
    if (text == color.Name) return color.Color;
  }
  std::uint32_t number = 0;
  unsigned red = 0, green = 0, blue = 0;
  if (std::sscanf(text.c_str(), "rgb(%u , %u , %u )", &red, &green, &blue) == 3) {
    if (red > 255 || green > 255 || blue > 255) return std::nullopt;
    return red << 16 | green << 8 | blue;
  }
  const char* first = text.c_str() + (text.starts_with('#') ? 1 : 0);
  const char* end = text.c_str() + text.size();
  if (end - first != 3 && end - first != 6) return std::nullopt;
  if (std::from_chars(first, end, number, 16).ptr != end) return std::nullopt;
  if (end - first == 6) return number;
  return (number >> 8 & 15) * 0x110000 | (number >> 4 & 15) * 0x1100 | (number & 15) * 0x11;
}

std::optional<double> LengthFromCss(std::string_view value, double around) {
  constexpr std::pair<std::string_view, double> kUnits[] = {
      {"pt", 1}, {"px", kPointsOfPixel}, {"in", 72}, {"cm", 72 / 2.54}, {"mm", 7.2 / 2.54}, {"pc", 12},
  };
  const std::string text = Lower(Trim(value));
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || !(number > -10000 && number < 10000)) return std::nullopt;
  const std::string_view unit = Trim(end);
  for (const auto& [name, points] : kUnits) {
    if (unit == name) return number * points;
  }
  if (unit == "em" || unit == "rem") return number * around;
  if (unit == "%") return number * around / 100;
  if (unit.empty() && number == 0) return 0;
  return std::nullopt;
}

std::optional<double> SizeFromCss(std::string_view value, double around) {
  constexpr std::pair<std::string_view, double> kWords[] = {
      {"xx-small", 7}, {"x-small", 7}, {"small", 8}, {"medium", 10}, {"large", 12}, {"x-large", 14}, {"xx-large", 18},
  };
  for (const auto& [word, points] : kWords) {
    if (value == word) return points;
  }
  if (value == "smaller") return std::round(around / 1.2);
  if (value == "larger") return std::round(around * 1.2);
  return LengthFromCss(value, around);
}

std::optional<Face> FaceFromCss(std::string_view families, bool* exact) {
  std::optional<Face> nearest;
  *exact = true;
  while (!families.empty()) {
    const std::string_view item = families.substr(0, families.find(','));
    families.remove_prefix(std::min(families.size(), item.size() + 1));
    std::string name = Lower(Trim(item));
    std::erase_if(name, [](char c) { return c == '"' || c == '\''; });
    const auto* known = std::ranges::find_if(kFaces, [&](const KnownFace& face) { return name == face.Name; });
    *exact = *exact && known != std::end(kFaces) && known->Exact;
    if (!nearest && known != std::end(kFaces)) nearest = known->Nearest;
  }
  return nearest;
}

std::optional<Justify> JustifyFromCss(std::string_view value) {
  const std::string text = Lower(Trim(value));
  if (text == "left" || text == "start") return kJustifyLeft;
  if (text == "right" || text == "end") return kJustifyRight;
  if (text == "center" || text == "middle") return kJustifyCenter;
  if (text == "justify") return kJustifyFull;
  return std::nullopt;
}

}  // namespace conv
