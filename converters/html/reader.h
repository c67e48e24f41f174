// HTML to records: walks a tree and tells a builder.
#ifndef QUILLON_CONVERTERS_HTML_READER_H
#define QUILLON_CONVERTERS_HTML_READER_H

#include <string>
#include <string_view>
#include <vector>

#include "converters/html/tree.h"
#include "converters/parts/inlines.h"

namespace conv {

class HtmlReader {
 public:
  HtmlReader(Builder& builder, Inlines& runs, Report& report) : Out(builder), Runs(runs), Losses(report) {}

  ENGSTATUS Read(std::string_view html);
  // Blocks within another text, from that line on. What cannot be read is left out.
  void ReadFragment(std::string_view html, unsigned line);
  // One tag within a paragraph of another text. False when it means nothing there.
  bool ReadTag(std::string_view tag);
  // Ends what such tags began.
  void CloseInline();

 private:
  enum class Kind {
    kTransparent,  // its content alone
    kBlock,
    kHeading,
    kParagraph,
    kFormat,
    kQuotation,
    kLink,
    kPicture,
    kBreak,
    kRule,
    kPre,
    kQuote,
    kBulletList,
    kNumberList,
    kItem,
    kTable,
    kSkipped,  // with its content, silently
    kLost,     // with its content
    kUnknown,  // its content alone, which is reported
  };
  struct Rule {
    std::string_view Name;
    Kind What;
    FontID Set = 0;
    int Detail = 0;  // a heading's level
  };
  // What an element that is open has changed, to be taken back at its end.
  struct Open {
    const HtmlNode* Node;
    Kind What;
    unsigned Format;
    bool Implied;  // a list around an item that stood alone
    std::uint16_t Justify;
    int Indent;
    int FirstLine;
    bool Tight;
    bool Hidden;
    unsigned Heading;
  };
  struct TagOpen {
    std::string Name;
    unsigned Format;
  };
  struct GridCell {
    const HtmlNode* Node = nullptr;
    bool Covered = false;
    unsigned RowSpan = 1;
    unsigned ColumnSpan = 1;
  };
  using GridRow = std::vector<GridCell>;
  struct Width {
    double Value = 0;  // 0 for none
    bool IsPercent = false;
  };
  struct Grid {
    std::vector<GridRow> Rows;
    std::vector<const HtmlNode*> RowNodes;
    std::vector<std::vector<const HtmlNode*>> Surplus;  // of each row
    std::size_t Columns = 0;
    std::vector<Width> Widths;  // of the first columns
    const HtmlNode* Caption = nullptr;
  };

  static const Rule& RuleOf(const std::string& name);
  void Walk(const HtmlNode* top);
  bool Enter(const HtmlNode* node);
  void Leave();
  bool EnterElement(const HtmlNode* node, const Rule& rule, Open* open);
  FontChange ChangeOf(const HtmlNode& node, const Rule& rule);
  void StyleChange(std::string_view css, FontChange* change);
  static bool IsHidden(const HtmlNode& node);
  void BlockStyle(const HtmlNode& node);
  // Reports the properties that nothing stands for there.
  enum class Place { kInline, kBlock, kTable, kCell };
  static Place PlaceOf(Kind kind);
  static bool IsFollowed(const HtmlNode& node);
  void CheckStyle(const HtmlNode& node, Place place);
  void NoteAnchor(const HtmlNode& node);
  void PutAnchors();
  void SetSize(double points, FontChange* change);
  void SetColor(std::string_view value, FontChange* change);
  void SetFace(std::string_view families, FontChange* change);

  void Text(std::string_view text);
  void PreText(std::string_view text);
  void Prepare();
  void BeginParagraph();
  void EndParagraph();
  void Picture(const HtmlNode& node);
  void EnterLink(const HtmlNode& node);
  void LeaveLink();
  void EnterPre(const HtmlNode& node);
  void LeavePre();

  void Table(const HtmlNode& table);
  Grid GridOf(const HtmlNode& table);
  void PlaceRows(const HtmlNode& part, Grid* grid);
  void PlaceRow(const HtmlNode& row, Grid* grid);
  static Width WidthOf(const HtmlNode& node);
  static void PlaceColumn(const HtmlNode& column, Grid* grid);
  static std::vector<unsigned> WidthsOf(const Grid& grid);
  void WriteRows(const HtmlNode& table, const Grid& grid);
  void WriteCell(const HtmlNode& table, const Grid& grid, std::size_t row, std::size_t column);
  Cell FormatOf(const HtmlNode& table, const HtmlNode* row, const HtmlNode& node);

  Builder& Out;
  Inlines& Runs;
  Report& Losses;
  unsigned Line = 0;
  std::vector<Open> Opened;
  std::vector<TagOpen> Tags;
  std::size_t Floor = 0;  // elements around the cell that is being read

  std::uint16_t Justify = kJustifyLeft;
  int Indent = 0;
  int FirstLine = 0;
  bool Tight = true;
  bool Hidden = false;
  unsigned Heading = 0;

  bool HasParagraph = false;
  bool HasText = false;  // since the paragraph's begin or the last break
  bool PendingSpace = false;
  bool EndsInSpace = false;
  unsigned PendingBreaks = 0;
  const HtmlNode* ActiveLink = nullptr;
  bool LinkShown = false;

  const HtmlNode* Pre = nullptr;
  bool PreHasText = false;
  unsigned PreBreaks = 0;
  unsigned Paragraphs = 0;
  std::vector<std::string> Anchors;  // on their way to the next text
};

ENGSTATUS ReadHtml(std::string_view source, RecordOutput& output, std::uint32_t font, Report& report);

}  // namespace conv

#endif
