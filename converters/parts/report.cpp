#include "converters/parts/report.h"

namespace conv {

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Loss::kCount)> kWords = {
    "line ends within paragraphs became spaces",
    "raw HTML left out",
    "elements left out, their content kept",
    "elements left out with their content",
    "emphasis within emphasis of the same kind became one",
    "addresses left out",
    "pictures left out",
    "faces replaced by the nearest one",
    "colours replaced by the nearest one",
    "sizes replaced by the nearest one",
    "levels of nesting joined",
    "languages of code cut",
    "tables within tables became paragraphs",
    "tables with too many rows became several",
    "cells of too many columns moved into the last one",
    "blocks within cells joined",
    "bytes or characters replaced",
    "paragraph styles left out",
    "style names left out",
    "line and paragraph spacing left out",
    "tab stops left out",
    "hidden paragraphs are shown",
    "objects left out",
    "empty paragraphs left out",
    "alignments and indentations left out",
    "formats left out",
    "properties of styles left out",
    "names of places left out",
    "widths and places of tables left out",
    "widths of columns left out",
    "left margins within the page's and right margins left out",
    "page breaks left out",
    "tables became lines with tabs",
    "bullets and numbers of lists left out",
    "links around tables end with them",
    "lists got space between their items",
    "links end with the links within them",
    "line breaks at ends of paragraphs left out",
};

constexpr std::size_t kLongestDetail = 60;

// Fit for a line of text; a character is not cut.
std::string Shown(std::string_view detail) {
  std::string shown;
  for (char c : detail) {
    const bool continues = (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    if (shown.size() >= kLongestDetail && !continues) return shown + "...";
    shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    if (shown.size() >= kLongestDetail + 4) return shown + "...";
  }
  return shown;
}

}  // namespace

void Report::Add(Loss loss, unsigned line, std::string_view detail) {
  Entry& entry = Entries[static_cast<std::size_t>(loss)];
  if (entry.Count++ > 0) return;
  entry.Line = line;
  entry.Detail = Shown(detail);
}

std::string Report::Text() const {
  std::string text;
  for (std::size_t i = 0; i < Entries.size(); ++i) {
    const Entry& entry = Entries[i];
    if (entry.Count == 0) continue;
    text += std::string(kWords[i]) + ": " + std::to_string(entry.Count);
    if (entry.Line > 0) text += ", first in line " + std::to_string(entry.Line);
    if (!entry.Detail.empty()) text += ": " + entry.Detail;
    text += '\n';
  }
  return text;
}

}  // namespace conv
