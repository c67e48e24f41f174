#include "converters/markdown/writer.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <new>

#include "converters/html/css.h"
#include "converters/markdown/emphasis.h"
#include "converters/markdown/lists.h"
#include "converters/markdown/markdown.h"
#include "converters/parts/utf8.h"
#include "engine/status.h"

namespace conv {

namespace {

constexpr char kBreakTag[] = "<br />";

constexpr std::string_view TagOf(FormatKind kind) {
  constexpr std::string_view kTags[] = {"em", "strong", "u", "s", "sup", "sub", "code", "span", "a"};
  return kTags[static_cast<std::size_t>(kind)];
}

// As a C string, fit for libcmark.
std::string Cleaned(std::string_view text, Report& losses) {
  std::string cleaned;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = Utf8Length(text.substr(i));
    const bool control =
        static_cast<unsigned char>(text[i]) < 0x20 && text[i] != '\n' && text[i] != '\t' && text[i] != '\f';
    if (size == 0 || control) {
      cleaned += "\xEF\xBF\xBD";
      losses.Add(Loss::kInvalidText);
    } else {
      cleaned.append(text.substr(i, size));
    }
    i += std::max<std::size_t>(size, 1);
  }
  return cleaned;
}

// Whether what begins there would be read as another character.
bool IsEntity(std::string_view text) {
  std::size_t end = 1;
  while (end < text.size() && (std::isalnum(static_cast<unsigned char>(text[end])) || text[end] == '#')) ++end;
  return text.starts_with('&') && end < text.size() && text[end] == ';';
}

// Where libcmark escapes too little: `control` gives what stands for a control character.
template <typename Control>
std::string Escaped(std::string_view text, Report& losses, Control control) {
  const std::string cleaned = Cleaned(text, losses);
  std::string escaped;
  for (std::size_t i = 0; i < cleaned.size(); ++i) {
    const auto byte = static_cast<unsigned char>(cleaned[i]);
    if (byte < 0x20) {
      escaped += control(byte);
    } else {
      escaped += cleaned[i];
      if (IsEntity(std::string_view(cleaned).substr(i))) escaped += "amp;";
    }
  }
  return escaped;
}

std::string AddressOf(std::string_view address, Report& losses) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return Escaped(address, losses, [&](unsigned char c) { return std::string{'%', kDigits[c >> 4], kDigits[c & 15]}; });
}

// On one line: an empty one would end the link, and others can begin blocks.
std::string TitleOf(std::string_view title, Report& losses) {
  return Escaped(title, losses, [](unsigned char c) { return "&#" + std::to_string(c) + ";"; });
}

}  // namespace

MarkdownWriter::MarkdownWriter(Report& report)
    : Losses(report), Document(cmark_node_new(CMARK_NODE_DOCUMENT)), Html(nullptr, report) {
  if (!Document) throw std::bad_alloc();
  Stack.push_back(Document.get());
  Html.KeepLinesTogether();
}

std::string MarkdownWriter::Render(cmark_node* node) {
  MakeEmphasisReadable(node);
  for (unsigned left = MakeListsReadable(node); left > 0; --left) Losses.Add(Loss::kTightList);
  const std::unique_ptr<char, void (*)(void*)> text(cmark_render_commonmark(node, CMARK_OPT_DEFAULT, 0), std::free);
  if (!text) throw std::bad_alloc();
  return text.get();
}

std::string MarkdownWriter::Markdown() { return Render(Document.get()); }

cmark_node* MarkdownWriter::Add(cmark_node_type type) {
  Tree node(cmark_node_new(type));
  if (!node) throw std::bad_alloc();
  // What cannot stand where it is goes into the nearest place around that takes it.
  for (auto place = Stack.rbegin(); place != Stack.rend(); ++place) {
    if (cmark_node_append_child(*place, node.get())) return node.release();
  }
  throw std::bad_alloc();
}

void MarkdownWriter::Pop() {
  if (Stack.size() > 1) Stack.pop_back();
}

void MarkdownWriter::AddLiteral(cmark_node_type type, const std::string& literal) {
  if (!cmark_node_set_literal(Add(type), literal.c_str())) throw std::bad_alloc();
}

void MarkdownWriter::SetBase(FontID font) {
  if (font != kDefaultFont) Losses.Add(Loss::kAttribute, 0, CssOfFont(font, kDefaultFont));
}

void MarkdownWriter::OpenText(const BlockInfo& block) {
  const bool attributes = block.Justify != kJustifyLeft || block.Indent != 0 || block.FirstLineIndent != 0;
  if (attributes && !block.Plain) Losses.Add(Loss::kAlignment, 0, CssOfParagraph(block));
  if (block.Empty) Losses.Add(Loss::kEmptyParagraph);
  if (block.Hidden) Losses.Add(Loss::kHidden);
  if (!block.Tight && cmark_node_get_type(Top()) == CMARK_NODE_ITEM) {
    cmark_node_set_list_tight(cmark_node_parent(Top()), 0);
  }
  if (Table.IsOpen) return;
  InHeading = block.Kind == Block::kHeading;
  Push(InHeading ? CMARK_NODE_HEADING : CMARK_NODE_PARAGRAPH);
  if (InHeading) cmark_node_set_heading_level(Top(), static_cast<int>(block.Number));
}

// Spaces and breaks at the end of a paragraph mean nothing, or something else, in Markdown.
void MarkdownWriter::CloseText() {
  if (Table.IsOpen) return;
  cmark_node* last = cmark_node_last_child(Top());
  if (last && cmark_node_get_type(last) == CMARK_NODE_LINEBREAK) {
    cmark_node_unlink(last);
    cmark_node_free(last);
    AddLiteral(CMARK_NODE_HTML_INLINE, kBreakTag);
  }
  if (!cmark_node_first_child(Top()) && cmark_node_get_type(Top()) == CMARK_NODE_PARAGRAPH) {
    cmark_node* empty = Top();
    Pop();
    cmark_node_unlink(empty);
    cmark_node_free(empty);
  } else {
    Pop();
  }
  InHeading = false;
}

void MarkdownWriter::Open(const BlockInfo& block) {
  if (HtmlDepth > 0 || (block.Kind == Block::kTable && !block.Simple)) {
    ++HtmlDepth;
    return Html.Open(block);
  }
  switch (block.Kind) {
    case Block::kText:
    case Block::kHeading:
      return OpenText(block);
    case Block::kCode:
      Push(CMARK_NODE_CODE_BLOCK);
      cmark_node_set_fence_info(Top(), std::string(block.Language).c_str());
      IsCodeBlock = true;
      return Literal.clear();
    case Block::kRule:
      Add(CMARK_NODE_THEMATIC_BREAK);
      return;
    case Block::kQuote:
      return Push(CMARK_NODE_BLOCK_QUOTE);
    case Block::kBulletList:
    case Block::kNumberList:
      Push(CMARK_NODE_LIST);
      cmark_node_set_list_type(Top(), block.Kind == Block::kNumberList ? CMARK_ORDERED_LIST : CMARK_BULLET_LIST);
      cmark_node_set_list_tight(Top(), 1);
      if (block.Kind == Block::kNumberList) cmark_node_set_list_start(Top(), static_cast<int>(block.Number));
      return;
    case Block::kItem:
      return Push(CMARK_NODE_ITEM);
    case Block::kTable:
      return OpenTable(block);
    case Block::kRow:
      Table.Text += '|';
      return;
    case Block::kCell:
      return OpenCell(block);
  }
}

void MarkdownWriter::Close(const BlockInfo& block) {
  if (HtmlDepth > 0) {
    Html.Close(block);
    if (--HtmlDepth > 0) return;
    AddLiteral(CMARK_NODE_HTML_BLOCK, Html.Html());
    return Html.Clear();
  }
  switch (block.Kind) {
    case Block::kText:
    case Block::kHeading:
      return CloseText();
    case Block::kCode:
      if (Literal.find_first_not_of('\n') != std::string::npos) Literal += '\n';
      cmark_node_set_literal(Top(), Literal.c_str());
      IsCodeBlock = false;
      return Pop();
    case Block::kRule:
      return;
    case Block::kTable:
      return CloseTable(block);
    case Block::kRow:
      Table.Text += '\n';
      if (Table.IsHeading) Table.Text += Table.Dashes + '\n';
      Table.IsHeading = false;
      return;
    case Block::kCell:
      return CloseCell();
    default:
      return Pop();
  }
}

void MarkdownWriter::OpenTable(const BlockInfo& block) {
  if (!block.HasBorder) Losses.Add(Loss::kAttribute, 0, "border");
  if (block.HasWidths) Losses.Add(Loss::kColumnWidth);
  Table = {.IsOpen = true, .IsHeading = true, .Text = {}, .Dashes = "|"};
}

void MarkdownWriter::OpenCell(const BlockInfo& block) {
  Cell.reset(cmark_node_new(CMARK_NODE_DOCUMENT));
  if (!Cell) throw std::bad_alloc();
  Stack.push_back(Cell.get());
  Push(CMARK_NODE_PARAGRAPH);
  if (!Table.IsHeading) return;
  const bool left = block.Justify == kJustifyCenter;
  const bool right = left || block.Justify == kJustifyRight;
  Table.Dashes += std::string(" ") + (left ? ":" : "") + "---" + (right ? ":" : "") + " |";
}

void MarkdownWriter::CloseCell() {
  Pop();
  Pop();
  std::string text = Render(Cell.get());
  Cell.reset();
  Table.Text += ' ';
  for (char c : std::string(Trim(text))) {
    if (c == '|') Table.Text += '\\';
    Table.Text += c == '\n' ? ' ' : c;
  }
  Table.Text += " |";
}

void MarkdownWriter::CloseTable(const BlockInfo&) {
  Table.IsOpen = false;
  AddLiteral(CMARK_NODE_HTML_BLOCK, Table.Text);
}

void MarkdownWriter::OpenFormat(const Format& format) {
  if (HtmlDepth > 0) return Html.OpenFormat(format);
  if (IsCodeBlock || InCode) return Losses.Add(Loss::kAttribute, 0, TagOf(format.Kind));
  switch (format.Kind) {
    case FormatKind::kEmphasis:
      return Push(CMARK_NODE_EMPH);
    case FormatKind::kStrong:
      return Push(CMARK_NODE_STRONG);
    case FormatKind::kCode:
      InCode = true;
      return Literal.clear();
    case FormatKind::kLink:
      Push(CMARK_NODE_LINK);
      cmark_node_set_url(Top(), AddressOf(format.Url, Losses).c_str());
      cmark_node_set_title(Top(), TitleOf(format.Title, Losses).c_str());
      return;
    default: {
      std::string tag = "<" + std::string(TagOf(format.Kind));
      if (format.Kind == FormatKind::kFont) tag += " style=\"" + CssOfFont(format.Font, format.Around) + "\"";
      AddLiteral(CMARK_NODE_HTML_INLINE, tag + ">");
    }
  }
}

void MarkdownWriter::CloseFormat(const Format& format) {
  if (HtmlDepth > 0) return Html.CloseFormat(format);
  if (IsCodeBlock) return;
  if (InCode) {
    // What opened within the code was left out.
    if (format.Kind != FormatKind::kCode) return;
    InCode = false;
    if (!Literal.empty()) AddLiteral(CMARK_NODE_CODE, Literal);
    return;
  }
  const bool node =
      format.Kind == FormatKind::kEmphasis || format.Kind == FormatKind::kStrong || format.Kind == FormatKind::kLink;
  if (node) return Pop();
  AddLiteral(CMARK_NODE_HTML_INLINE, "</" + std::string(TagOf(format.Kind)) + ">");
}

void MarkdownWriter::Text(std::string_view text) {
  if (HtmlDepth > 0) return Html.Text(text);
  std::string cleaned = Cleaned(text, Losses);
  if (IsCodeBlock) {
    Literal += cleaned;
    return;
  }
  std::ranges::replace(cleaned, '\n', ' ');
  if (InCode) {
    Literal += cleaned;
  } else {
    AddText(std::move(cleaned));
  }
}

// Spaces at the begin of a line would mean something else.
void MarkdownWriter::AddText(std::string text) {
  cmark_node* last = cmark_node_last_child(Top());
  const cmark_node_type type = cmark_node_get_type(Top());
  const bool begins = (!last && (type == CMARK_NODE_PARAGRAPH || type == CMARK_NODE_HEADING)) ||
                      (last && cmark_node_get_type(last) == CMARK_NODE_LINEBREAK);
  if (begins) text.erase(0, text.find_first_not_of(" \t"));
  if (!text.empty()) AddLiteral(CMARK_NODE_TEXT, text);
}

// Whether a line break would make an empty line, which ends the paragraph.
bool MarkdownWriter::BeginsLine() {
  cmark_node* last = cmark_node_last_child(Top());
  const cmark_node_type type = last ? cmark_node_get_type(last) : CMARK_NODE_LINEBREAK;
  const bool tag = type == CMARK_NODE_HTML_INLINE && std::string_view(cmark_node_get_literal(last)) == kBreakTag;
  return tag || type == CMARK_NODE_LINEBREAK;
}

void MarkdownWriter::LineBreak() {
  if (HtmlDepth > 0) return Html.LineBreak();
  if (InCode) {
    Literal += ' ';
  } else if (InHeading || Table.IsOpen || BeginsLine()) {
    AddLiteral(CMARK_NODE_HTML_INLINE, kBreakTag);
  } else {
    Add(CMARK_NODE_LINEBREAK);
  }
}

void MarkdownWriter::Picture(std::string_view address, std::string_view title, std::string_view text) {
  if (HtmlDepth > 0) return Html.Picture(address, title, text);
  if (IsCodeBlock) {
    Losses.Add(Loss::kImage, 0, address);
    return Text(text);
  }
  if (InCode && !Literal.empty()) AddLiteral(CMARK_NODE_CODE, Literal);
  if (InCode) Literal.clear();
  Push(CMARK_NODE_IMAGE);
  cmark_node_set_url(Top(), AddressOf(address, Losses).c_str());
  cmark_node_set_title(Top(), TitleOf(title, Losses).c_str());
  std::string shown = Cleaned(text, Losses);
  std::ranges::replace(shown, '\n', ' ');
  if (!shown.empty()) AddLiteral(CMARK_NODE_TEXT, shown);
  Pop();
}

void MarkdownWriter::Anchor(std::string_view name) {
  if (HtmlDepth > 0) return Html.Anchor(name);
  if (IsCodeBlock || InCode) return Losses.Add(Loss::kAnchor, 0, name);
  HtmlWriter tag(nullptr, Losses);
  tag.Anchor(Cleaned(name, Losses));
  std::string html = tag.Html();
  std::ranges::replace(html, '\n', ' ');
  AddLiteral(CMARK_NODE_HTML_INLINE, html);
}

ENGSTATUS WriteMarkdown(std::string_view composite, std::string* text, Report& report) {
  MarkdownWriter writer(report);
  if (ENGSTATUS status = Walker(composite, writer, report).Run()) return status;
  *text = writer.Markdown();
  return ENG_OK;
}

}  // namespace conv
