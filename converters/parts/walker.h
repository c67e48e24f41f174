// Walks composite records and tells a sink the document's structure: blocks that nest, and text with formats that nest.
#ifndef QUILLON_CONVERTERS_PARTS_WALKER_H
#define QUILLON_CONVERTERS_PARTS_WALKER_H

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "converters/parts/fonts.h"
#include "converters/parts/records.h"
#include "converters/parts/report.h"
#include "converters/parts/style.h"
#include "engine/types.h"

namespace conv {

enum class Block { kQuote, kBulletList, kNumberList, kItem, kText, kHeading, kCode, kRule, kTable, kRow, kCell };

struct BlockInfo {
  Block Kind = Block::kText;
  unsigned Number = 0;   // a heading's level, a numbered list's first number
  bool Tight = false;    // a text directly in an item, without space around
  bool Heading = false;  // a cell
  bool Plain = false;    // a cell that holds one text at most; that text
  bool Empty = false;    // a text without anything in it
  bool Hidden = false;
  std::string_view Language = {};
  std::uint16_t Justify = kJustifyLeft;
  int Indent = 0;           // twips that the levels around do not account for
  int FirstLineIndent = 0;  // twips
  unsigned Columns = 0;     // of a table
  bool HasBorder = false;   // a table: its first cell has the usual border
  bool HasSpans = false;    // a table: one of its cells spans rows
  bool HasWidths = false;   // a table: its columns are not equally wide
  bool Simple = false;      // a table: a row of headings and rows of plain cells, without spans or colours
  const CDTABLECELL* Cell = nullptr;
  const std::vector<unsigned>* Widths = nullptr;  // of a table's columns, in twips
};

enum class FormatKind : std::uint8_t {
  kEmphasis,
  kStrong,
  kUnderline,
  kStrikeout,
  kSuperscript,
  kSubscript,
  kCode,
  kFont,
  kLink
};

struct Format {
  FormatKind Kind = FormatKind::kEmphasis;
  FontID Font = 0;    // of kFont
  FontID Around = 0;  // of kFont: what differs from this is to be told
  std::string_view Url = {};
  std::string_view Title = {};
  bool operator==(const Format& other) const {
    return Kind == other.Kind && Font == other.Font && Url == other.Url && Title == other.Title;
  }
};

class Sink {
 public:
  virtual ~Sink() = default;
  virtual void Open(const BlockInfo& block) = 0;
  virtual void Close(const BlockInfo& block) = 0;
  virtual void OpenFormat(const Format& format) = 0;
  virtual void CloseFormat(const Format& format) = 0;
  virtual void Text(std::string_view text) = 0;
  virtual void LineBreak() = 0;
  virtual void Picture(std::string_view address, std::string_view title, std::string_view text) = 0;
  // A place that links lead to.
  virtual void Anchor(std::string_view name) = 0;
  // The font of text that has no format of its own.
  virtual void SetBase(FontID font) = 0;
};

class Walker {
 public:
  Walker(std::string_view value, Sink& sink, Report& report);
  // ENG_ERR_RECORD_DAMAGED when the records don't add up.
  ENGSTATUS Run();

 private:
  struct Style {
    StyleName Name;
    bool IsNamed = false;
    CDPABDEFINITION Definition{};
    FontID Font = 0;  // 0 for the text's own base
  };
  struct OpenLevel {
    LevelKind Kind;
    BlockInfo Info;  // of the quote or list
    std::uint16_t Margin;
  };
  struct CellState {
    std::uint8_t Row = 0;
    std::uint8_t Column = 0;
    unsigned RowSpan = 1;
    unsigned ColumnSpan = 1;
    unsigned Paragraphs = 0;
    bool HasContent = false;
    bool IsBlock = false;  // something else than text stands in it
    bool IsCovered = false;
    bool IsHeading = false;
    bool IsColored = false;
    std::uint16_t Reference = 0;  // of its first paragraph
    int Left = 0;                 // twips
    unsigned Width = 0;           // twips
  };
  struct TableState {
    bool IsOpen = false;
    int Room = 0;  // twips from a cell's edge that are no indentation
    unsigned Nested = 0;
    bool InRow = false;
    bool InCell = false;
    std::uint8_t Row = 0;
    BlockInfo Info;
    CDTABLECELL Record{};
    std::vector<CellState> Cells;
    std::vector<unsigned> Widths;
    std::size_t Next = 0;
  };

  // Stream
  void Collect();
  void Handle(const Record& record);
  void Define(const Record& record);
  void NameStyle(const Record& record);
  // Paragraphs
  void BreakParagraph();
  void BeginParagraph();
  void EndParagraph();
  void EndEmptyParagraph();
  // The last ones of those held back are dropped.
  void FlushEmptyParagraphs(std::size_t dropped);
  BlockInfo InfoOf(const Style& style) const;
  const Style& StyleOf(std::uint16_t reference) const;
  // Levels
  void EnterLevels(const std::vector<Level>& levels, std::uint16_t margin);
  void CloseLevels(std::size_t keep);
  void OpenOne(const Level& level, std::uint16_t margin);
  std::vector<Level> LevelsOf(const Style& style) const;
  // Text
  bool IsMisplaced();
  void HandleText(const Record& record);
  void ShowText(FontID font, std::string_view text);
  void EmitText(std::string_view text);
  void HandleAnchor(const Record& record);
  void MatchFormats(FontID font);
  void FindWanted(FontID font);
  // Opens at the sink what is open: a format that nothing stands in is never told.
  void TellFormats();
  void CloseFormats(std::size_t keep);
  // Hotspots
  void BeginHotspot(const Record& record);
  std::string_view AddressOf(std::string_view name);
  void BeginLink(std::string_view data, std::uint32_t flags);
  void EndHotspot();
  void SettleLink();
  // Keeps the formats that all text up to the hotspot's end has.
  void MatchHotspot();
  // Tables
  void BeginTable(const Record& record);
  void ReadSpacing(const CDTABLEBEGIN& begin);
  void LookThroughTable();
  void FindCovered();
  void FindWidths();
  void BeginCell(const Record& record);
  BlockInfo CellInfo() const;
  void EndCell();
  void EndTable();

  RecordInput Records;
  Sink& Out;
  Report& Losses;
  std::unordered_map<std::uint16_t, Style> Styles;
  Style Undefined;
  FontID Base = kDefaultFont;
  std::uint16_t Reference = 0;

  std::vector<OpenLevel> Levels;
  std::size_t LevelFloor = 0;  // levels around the cell that is open
  bool IsParagraphOpen = false;
  bool HasParagraph = false;  // something of one was read since the last paragraph record
  bool IsBehindTable = false;
  bool IsBreakExpected = false;          // behind a table and at a cell's start: the record that ends no paragraph
  std::vector<FontID> Marks;             // empty runs ahead of a paragraph's first text
  std::vector<std::uint16_t> EmptyOnes;  // references of empty paragraphs that are held back
  BlockInfo Current;
  FontID CurrentBase = kDefaultFont;

  std::vector<Format> Formats;  // open, outermost first
  std::size_t Told = 0;         // of them, so many the sink knows of
  std::vector<Format> Wanted;
  FontID LastFont = 0;
  bool IsFontKnown = false;
  std::size_t LinkPlace = 0;  // one behind the open link among the formats; 0 without one
  bool IsLinkEnding = false;  // unless it is continued
  std::vector<HotspotKind> Hotspots;
  std::deque<std::string> Addresses;  // of files, where they are not their names
  bool InPicture = false;
  std::string PictureText;
  std::string_view PictureAddress;
  std::string_view PictureTitle;
  bool IsDamaged = false;

  TableState Table;
};

}  // namespace conv

#endif
