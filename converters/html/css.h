// Styles of HTML attributes: what blocks and fonts become, and what such texts say.
#ifndef QUILLON_CONVERTERS_HTML_CSS_H
#define QUILLON_CONVERTERS_HTML_CSS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "converters/parts/fonts.h"
#include "converters/parts/walker.h"

namespace conv {

// Each is empty where there is nothing to tell.
std::string CssOfParagraph(const BlockInfo& block);
std::string CssOfCell(const BlockInfo& cell, bool tableHasBorder);
// Of a column, in parts of the table.
std::string CssOfWidth(unsigned width, unsigned all);
// What of face, size and colour differs.
std::string CssOfFont(FontID font, FontID around);

// Calls with each property and its value, both in lower case.
void ReadCss(std::string_view css, const std::function<void(std::string_view name, std::string_view value)>& take);
// "#rgb", "#rrggbb", "rgb(r,g,b)" or a name; 0xRRGGBB.
std::optional<std::uint32_t> ColorFromCss(std::string_view value);
// In points; `around` is what "em" and "%" are of.
std::optional<double> LengthFromCss(std::string_view value, double around);
// The same of a font: words such as "large" and "smaller" too.
std::optional<double> SizeFromCss(std::string_view value, double around);
// The nearest of the faces that every reader has; *exact tells whether the list asks for no other face.
std::optional<Face> FaceFromCss(std::string_view families, bool* exact);
std::optional<Justify> JustifyFromCss(std::string_view value);
std::string Lower(std::string_view text);
std::string_view Trim(std::string_view text);

}  // namespace conv

#endif
