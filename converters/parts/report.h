// What a conversion could not carry, counted by kind.
#ifndef QUILLON_CONVERTERS_PARTS_REPORT_H
#define QUILLON_CONVERTERS_PARTS_REPORT_H

#include <array>
#include <string>
#include <string_view>

namespace conv {

enum class Loss {
  kSoftBreak,       // a line end within a paragraph became a space
  kRawHtml,         // raw HTML of a Markdown text was left out
  kElement,         // an element was left out, its content kept
  kContent,         // an element was left out with its content: scripts, forms, pictures within the file
  kNestedEmphasis,  // emphasis within emphasis of the same kind
  kLink,            // an address that is not safe, or too long
  kImage,           // a picture without an address
  kFace,            // a face became the nearest of the three that every reader has
  kColor,           // a colour became the nearest of the palette
  kSize,            // a size out of range
  kNesting,         // levels too deep for their names
  kInfo,            // a code block's language was cut
  kNestedTable,     // a table within a table became paragraphs
  kTableRows,       // rows beyond the most that a table has: a further table
  kTableColumns,    // columns beyond the most: their text went into the last one
  kTableCell,       // blocks in a cell of a pipe table
  kInvalidText,     // bytes that are no UTF-8, or characters that HTML cannot hold
  kStyles,          // more paragraph styles than identifiers: plain ones in their place
  kStyleName,       // a style name that means nothing in the target
  kSpacing,         // line and paragraph spacing
  kTabs,            // tab stops
  kHidden,          // a hidden paragraph comes out like any other
  kObject,          // a record of an object that the target cannot hold
  kEmptyParagraph,  // an empty paragraph
  kAlignment,       // an alignment, or an indentation
  kAttribute,       // formatting that needs HTML in a Markdown text
  kStyle,           // a property of a style that nothing stands for
  kAnchor,          // a name of a place where no text stands
  kTableLayout,     // a table's own width, place and spacing
  kColumnWidth,     // columns that are not equally wide
  kMargin,          // a paragraph wider or narrower than the page's margins tell
  kPageBreak,       // a paragraph that begins a page
  kTable,           // a table in plain text
  kListSigns,       // an item's bullet or number in plain text
  kCutLink,         // what stood in a link behind a table
  kTightList,       // items with space between, so that Markdown can tell their blocks apart
  kNestedLink,      // a link within a link, which ends there
  kBreak,           // a line break with nothing behind it in its paragraph
  kCount
};

class Report {
 public:
  // `line` is one-based, 0 where none is known; `detail` is shown for the first of its kind.
  void Add(Loss loss, unsigned line = 0, std::string_view detail = {});
  unsigned Count(Loss loss) const { return Entries[static_cast<std::size_t>(loss)].Count; }
  // A line for each kind that occurred: what, how often, and where first.
  std::string Text() const;

 private:
  struct Entry {
    unsigned Count = 0;
    unsigned Line = 0;
    std::string Detail;
  };
  std::array<Entry, static_cast<std::size_t>(Loss::kCount)> Entries;
};

}  // namespace conv

#endif
