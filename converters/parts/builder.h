// Builds composite records from a document's structure as a reader comes across it.
//
// Levels (quotes, lists, items, tables, cells) are opened and closed like brackets; a list holds items only, a table
// cells only. A paragraph stands in the levels that are open. Text comes between BeginParagraph and EndParagraph.
#ifndef QUILLON_CONVERTERS_PARTS_BUILDER_H
#define QUILLON_CONVERTERS_PARTS_BUILDER_H

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "converters/parts/fonts.h"
#include "converters/parts/records.h"
#include "converters/parts/report.h"
#include "converters/parts/style.h"

namespace conv {

struct Paragraph {
  Leaf What = Leaf::kText;
  unsigned Heading = 0;
  std::string_view Language = {};
  std::uint16_t Justify = kJustifyLeft;
  bool Tight = false;                // no space below: an item's text in a list without gaps
  bool Hidden = false;               // from readers
  std::uint16_t Indent = 0;          // twips beyond the levels' own
  std::int32_t FirstLineIndent = 0;  // twips
};

struct Link {
  std::string_view Url = {};
  std::string_view Title = {};
  std::string_view Picture = {};
  std::string_view PictureTitle = {};
  bool IsPicture = false;
  bool IsContinued = false;
};

struct Cell {
  bool Heading = false;
  unsigned RowSpan = 1;
  unsigned ColumnSpan = 1;
  std::uint8_t Border = 0x55;          // two bits a side: left, right, top, bottom
  std::uint16_t BorderWidth = 0x1111;  // four bits a side
  bool HasBackground = false;
  std::uint8_t Background = 0;
};

class Builder {
 public:
  Builder(RecordOutput& output, FontID base, Report& report);

  void OpenQuote();
  void OpenList(bool numbered, unsigned start);
  void OpenItem();
  // The innermost level. One that held nothing gets an empty paragraph to stand for it.
  void Close();

  // At most kMostColumns, of the widths given in parts of all; cells come row by row and fill each row.
  void OpenTable(const std::vector<unsigned>& widths);
  void OpenCell(unsigned row, unsigned column, const Cell& cell);
  bool InTable() const { return Table.Open; }
  // Whether a list is the innermost level.
  bool InList() const { return !Levels.empty() && Levels.back().Kind == OpenLevel::kList; }

  void BeginParagraph(const Paragraph& paragraph);
  void EndParagraph();
  bool InParagraph() const { return HasParagraph; }
  // Font of a heading's text, or of any other.
  FontID BaseFont(unsigned heading) const;
  // UTF-8. A NUL is a line break.
  void Text(std::string_view text, FontID font);
  // An empty run: formats that the font lacks end here, formats that it has begin.
  void Mark(FontID font);
  // A place in the paragraph that links lead to.
  void Anchor(std::string_view name);
  void BeginLink(const Link& link);
  void EndLink();
  // Closes what is open. False when records could not be written.
  bool Finish();

 private:
  struct OpenLevel {
    enum Kinds : std::uint8_t { kQuote, kList, kItem, kTable, kCell } Kind;
    Level Mark;
    bool Used = false;  // a paragraph stands in it
  };
  struct OpenTableState {
    bool Open = false;
    unsigned Number = 0;
    std::vector<std::uint16_t> Lefts;  // one more than columns
    std::uint16_t Left = 0;
    std::uint16_t Right = 0;
  };

  std::uint16_t StyleFor(const Paragraph& paragraph);
  void DefineColumn(const Paragraph& paragraph);
  void DefineStyle(std::uint16_t id, const std::string& name, const Paragraph& paragraph, std::uint16_t left);
  void WriteRun();
  void Separate();
  std::uint16_t LeftMargin(const Paragraph& paragraph) const;

  RecordOutput& Out;
  FontID Base;
  Report& Losses;
  std::vector<OpenLevel> Levels;
  std::vector<Level> Marks;  // of the paragraph being begun
  std::unordered_map<std::string, std::uint16_t> Styles;
  std::string Key;
  std::string Run;
  FontID RunFont = 0;
  OpenTableState Table;
  std::uint16_t LastStyle = 0;
  bool HasParagraph = false;
  FontID TextFont = kDefaultFont;  // of the paragraph
  bool IsEmpty = false;            // the paragraph
  bool HasRun = false;             // it ends in one
  bool AtStart = true;             // nothing written yet
  bool BehindTable = false;        // the last thing written
};

}  // namespace conv

#endif
