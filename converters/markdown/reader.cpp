// Markdown to records.
#include "converters/html/reader.h"

#include <cmark.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "converters/markdown/markdown.h"
#include "converters/markdown/tables.h"
#include "converters/markdown/writer.h"
#include "converters/parts/inlines.h"
#include "converters/parts/utf8.h"
#include "engine/status.h"

namespace conv {

namespace {

struct IteratorFree {
  void operator()(cmark_iter* iterator) const { cmark_iter_free(iterator); }
};
using Iterator = std::unique_ptr<cmark_iter, IteratorFree>;

std::string_view View(const char* text) { return text ? std::string_view(text) : std::string_view(); }

unsigned LineOf(cmark_node* node) {
  for (; node; node = cmark_node_parent(node)) {
    if (cmark_node_get_start_line(node) > 0) return static_cast<unsigned>(cmark_node_get_start_line(node));
  }
  return 0;
}

class MarkdownReader {
 public:
  MarkdownReader(std::string_view source, Builder& builder, std::uint32_t options, Report& report)
      : Lines(source),
        Out(builder),
        Losses(report),
        Runs(builder),
        Html(builder, Runs, report),
        OnlyCommonMark((options & kCommonMarkOnly) != 0) {}

  void Read(cmark_node* document) {
    const Iterator iterator(cmark_iter_new(document));
    for (cmark_event_type event = cmark_iter_next(iterator.get()); event != CMARK_EVENT_DONE;
         event = cmark_iter_next(iterator.get())) {
      cmark_node* node = cmark_iter_get_node(iterator.get());
      if (event == CMARK_EVENT_ENTER && IsTable(node)) {
        cmark_iter_reset(iterator.get(), node, CMARK_EVENT_EXIT);
        continue;
      }
      event == CMARK_EVENT_ENTER ? Enter(node) : Exit(node);
    }
  }

 private:
  void Enter(cmark_node* node) {
    if (Image) return EnterInImage(node);
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_BLOCK_QUOTE:
        return Out.OpenQuote();
      case CMARK_NODE_LIST:
        return Out.OpenList(cmark_node_get_list_type(node) == CMARK_ORDERED_LIST,
                            static_cast<unsigned>(cmark_node_get_list_start(node)));
      case CMARK_NODE_ITEM:
        return Out.OpenItem();
      case CMARK_NODE_PARAGRAPH:
        // Begun by what stands in it: where that is left out, so is the paragraph.
        Waiting = node;
        return;
      case CMARK_NODE_HEADING:
        return Begin({.What = Leaf::kHeading, .Heading = static_cast<unsigned>(cmark_node_get_heading_level(node))});
      case CMARK_NODE_THEMATIC_BREAK:
        Out.BeginParagraph({.What = Leaf::kRule});
        return Out.EndParagraph();
      case CMARK_NODE_CODE_BLOCK:
        return Code(node);
      case CMARK_NODE_HTML_BLOCK:
        return HtmlBlock(node);
      default:
        return EnterInline(node);
    }
  }

  void EnterInline(cmark_node* node) {
    const bool html = cmark_node_get_type(node) == CMARK_NODE_HTML_INLINE;
    if (Waiting && !(html && IsLeftOut(View(cmark_node_get_literal(node))))) {
      Begin({.Tight = IsTight(std::exchange(Waiting, nullptr))});
    }
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_TEXT:
        return Text(View(cmark_node_get_literal(node)));
      case CMARK_NODE_SOFTBREAK:
        Losses.Add(Loss::kSoftBreak, LineOf(node));
        return Runs.Text(" ");
      case CMARK_NODE_LINEBREAK:
        return Runs.LineBreak();
      case CMARK_NODE_CODE: {
        const unsigned number = Runs.Open({.NewFace = kMono});
        Runs.Text(View(cmark_node_get_literal(node)));
        return Runs.Close(number);
      }
      case CMARK_NODE_EMPH:
        return OpenFormat(node, kItalic);
      case CMARK_NODE_STRONG:
        return OpenFormat(node, kBold);
      case CMARK_NODE_LINK:
        if (Runs.InLink()) Losses.Add(Loss::kNestedLink, LineOf(node), View(cmark_node_get_url(node)));
        return Runs.BeginLink(View(cmark_node_get_url(node)), View(cmark_node_get_title(node)));
      case CMARK_NODE_IMAGE:
        Image = node;
        ImageText.clear();
        return;
      case CMARK_NODE_HTML_INLINE:
        return HtmlInline(node);
      default:
        return;
    }
  }

  void Exit(cmark_node* node) {
    if (Image && Image != node) return;
    switch (cmark_node_get_type(node)) {
      case CMARK_NODE_BLOCK_QUOTE:
      case CMARK_NODE_LIST:
      case CMARK_NODE_ITEM:
        return Out.Close();
      case CMARK_NODE_PARAGRAPH:
      case CMARK_NODE_HEADING:
        Waiting = nullptr;
        Html.CloseInline();
        Runs.EndLink();
        return Out.EndParagraph();
      case CMARK_NODE_EMPH:
      case CMARK_NODE_STRONG:
        Runs.Close(Formats.back());
        return Formats.pop_back();
      case CMARK_NODE_LINK:
        return Runs.EndLink();
      case CMARK_NODE_IMAGE:
        Image = nullptr;
        return Runs.Picture(View(cmark_node_get_url(node)), View(cmark_node_get_title(node)), ImageText);
      default:
        return;
    }
  }

  // Of a picture's text its characters alone are kept.
  void EnterInImage(cmark_node* node) {
    const cmark_node_type type = cmark_node_get_type(node);
    if (type == CMARK_NODE_TEXT || type == CMARK_NODE_CODE || type == CMARK_NODE_HTML_INLINE) {
      ImageText += View(cmark_node_get_literal(node));
    }
    if (type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK) ImageText += ' ';
  }

  void Begin(const Paragraph& paragraph) {
    Out.BeginParagraph(paragraph);
    Runs.Begin(Out.BaseFont(paragraph.Heading));
  }

  static bool IsTight(cmark_node* node) {
    cmark_node* list = cmark_node_parent(cmark_node_parent(node));
    return list && cmark_node_get_type(list) == CMARK_NODE_LIST && cmark_node_get_list_tight(list);
  }

  void OpenFormat(cmark_node* node, FontID attribute) {
    if (Runs.Has(attribute)) Losses.Add(Loss::kNestedEmphasis, LineOf(node));
    Formats.push_back(Runs.Open({.Set = attribute}));
  }

  void Text(std::string_view text) {
    if (SkipPrefix) {
      text.remove_prefix(std::min(text.size(), kCellPrefix.size()));
      SkipPrefix = false;
    }
    Runs.Text(text);
  }

  // A last line end says nothing, unless there is nothing else.
  void Code(cmark_node* node) {
    const std::string_view info = View(cmark_node_get_fence_info(node));
    Out.BeginParagraph({.What = Leaf::kCode, .Language = info.substr(0, info.find_first_of(" \t\r\n\f\v"))});
    std::string text(View(cmark_node_get_literal(node)));
    if (text.find_first_not_of('\n') != std::string::npos && text.back() == '\n') text.pop_back();
    std::ranges::replace(text, '\n', '\0');
    Out.Text(text, WithFace(Out.BaseFont(0), kMono));
    Out.EndParagraph();
  }

  void HtmlBlock(cmark_node* node) {
    const std::string_view html = View(cmark_node_get_literal(node));
    if (OnlyCommonMark) return Losses.Add(Loss::kRawHtml, LineOf(node), html);
    Html.ReadFragment(html, LineOf(node));
  }

  bool IsLeftOut(std::string_view html) const {
    return OnlyCommonMark || html.starts_with("<!") || html.starts_with("<?") || html.starts_with("</");
  }

  void HtmlInline(cmark_node* node) {
    const std::string_view html = View(cmark_node_get_literal(node));
    if (OnlyCommonMark || !Html.ReadTag(html)) Losses.Add(Loss::kRawHtml, LineOf(node), html);
  }

  bool IsTable(cmark_node* node) {
    if (OnlyCommonMark || cmark_node_get_type(node) != CMARK_NODE_PARAGRAPH) return false;
    const int first = cmark_node_get_start_line(node);
    const int last = cmark_node_get_end_line(node);
    PipeTable table;
    if (first >= last || !Lines.ReadTable(first, last, &table)) return false;
    Table(table);
    return true;
  }

  void Table(const PipeTable& table) {
    const std::size_t columns = std::min<std::size_t>(table.Columns.size(), kMostColumns);
    if (columns < table.Columns.size()) Losses.Add(Loss::kTableColumns);
    if (table.Rows.size() > kMostRows) Losses.Add(Loss::kTableRows);
    for (std::size_t row = 0; row < table.Rows.size(); ++row) {
      const std::size_t inTable = row % kMostRows;
      if (inTable == 0 && row > 0) Out.Close();
      if (inTable == 0) Out.OpenTable(std::vector<unsigned>(columns, 1));
      for (std::size_t column = 0; column < columns; ++column) {
        Out.OpenCell(static_cast<unsigned>(inTable), static_cast<unsigned>(column), {.Heading = row == 0});
        std::string text = table.Rows[row][column];
        for (std::size_t more = columns; column + 1 == columns && more < table.Columns.size(); ++more) {
          text += ' ' + table.Rows[row][more];
        }
        CellText(text, table.Columns[column]);
        Out.Close();
      }
    }
    Out.Close();
  }

  // A cell holds inlines: the prefix keeps cmark from seeing anything else.
  void CellText(const std::string& text, Justify justify) {
    Out.BeginParagraph({.Justify = justify});
    Runs.Begin(Out.BaseFont(0));
    const std::string source = std::string(kCellPrefix) + text;
    const Tree tree(cmark_parse_document(source.data(), source.size(), CMARK_OPT_VALIDATE_UTF8));
    cmark_node* paragraph = cmark_node_first_child(tree.get());
    if (paragraph) {
      SkipPrefix = true;
      const Iterator iterator(cmark_iter_new(paragraph));
      while (cmark_iter_next(iterator.get()) != CMARK_EVENT_DONE) {
        cmark_node* node = cmark_iter_get_node(iterator.get());
        if (node == paragraph) continue;
        cmark_iter_get_event_type(iterator.get()) == CMARK_EVENT_ENTER ? Enter(node) : Exit(node);
      }
      SkipPrefix = false;
    }
    Html.CloseInline();
    Runs.EndLink();
    Out.EndParagraph();
  }

  static constexpr std::string_view kCellPrefix = "x ";

  SourceLines Lines;
  Builder& Out;
  Report& Losses;
  Inlines Runs;
  HtmlReader Html;
  bool OnlyCommonMark;
  std::vector<unsigned> Formats;
  cmark_node* Image = nullptr;
  std::string ImageText;
  bool SkipPrefix = false;
  cmark_node* Waiting = nullptr;  // a paragraph that has nothing in it so far
};

// Places where libcmark puts U+FFFD: NULs, and bytes that are no UTF-8.
std::size_t CountReplaced(std::string_view source) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < source.size();) {
    const auto byte = static_cast<unsigned char>(source[i]);
    if (byte < 0x80) {
      count += byte == 0;
      ++i;
      continue;
    }
    // Control characters of two bytes are none of a page's, but are characters.
    const bool control =
        byte == 0xC2 && i + 1 < source.size() && (static_cast<unsigned char>(source[i + 1]) & 0xC0) == 0x80;
    const std::size_t size = control ? 2 : Utf8Length(source.substr(i));
    if (size == 0) ++count;
    i += std::max<std::size_t>(size, 1);
  }
  return count;
}

}  // namespace

ENGSTATUS ReadMarkdown(std::string_view source, RecordOutput& output, std::uint32_t font, std::uint32_t options,
                       Report& report) {
  const Tree tree(cmark_parse_document(source.data(), source.size(), CMARK_OPT_VALIDATE_UTF8));
  if (!tree) return ENG_ERR_MEMORY;
  for (std::size_t left = CountReplaced(source); left > 0; --left) report.Add(Loss::kInvalidText);
  Builder builder(output, font, report);
  MarkdownReader(source, builder, options, report).Read(tree.get());
  return builder.Finish() ? ENG_OK : ENG_ERR_FILE_WRITE;
}

}  // namespace conv
