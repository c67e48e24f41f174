// How a paragraph stands among lists, quotes and cells, and the style name that carries it.
//
// A name is marks, a space where there are marks, and what the paragraph is. One mark a level, outermost first:
//
//     >  a quote begins       |  inside the quote
//     *  a bullet list begins     -  its next item     :  inside the item
//     N. a numbered list begins at N     #  its next item     ;  inside the item
//     =  a cell, ^  a heading cell: levels behind it are those inside the cell
//
// What the paragraph is: "Text", "Heading 1" to "Heading 6", "Code", "Code LANGUAGE", "Rule", or "Empty" where a level
// holds nothing. So "- Text" is the text of a bullet list's second or later item. A paragraph on its own that is plain
// text has no name.
#ifndef QUILLON_CONVERTERS_PARTS_STYLE_H
#define QUILLON_CONVERTERS_PARTS_STYLE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace conv {

enum class LevelKind : std::uint8_t { kQuote, kBullet, kNumber, kCell, kHeadingCell };
enum class Entry : std::uint8_t { kBegin, kNext, kInside };

struct Level {
  LevelKind Kind = LevelKind::kQuote;
  Entry How = Entry::kBegin;
  unsigned Start = 1;
};

enum class Leaf : std::uint8_t { kText, kHeading, kCode, kRule, kEmpty };

struct StyleName {
  std::vector<Level> Levels;
  Leaf What = Leaf::kText;
  unsigned Heading = 0;
  std::string Language;
};

// What had to give way for the name to have room.
struct NameLosses {
  bool Levels = false;
  bool Language = false;
};

// At most kLongestStyleName bytes, empty for plain text on its own.
std::string MakeStyleName(const std::vector<Level>& levels, Leaf what, unsigned heading, std::string_view language,
                          NameLosses* losses);
// False for a name that is none of these.
bool ParseStyleName(std::string_view text, StyleName* name);

}  // namespace conv

#endif
