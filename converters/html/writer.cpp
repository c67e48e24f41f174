#include "converters/html/writer.h"

#include <array>
#include <cctype>

#include "converters/html/css.h"
#include "converters/parts/utf8.h"

namespace conv {

namespace {

constexpr std::size_t kFlushSize = 1 << 18;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Bytes that are not simply copied.
constexpr std::array<bool, 256> SpecialBytes(bool lineEnds) {
  std::array<bool, 256> special = {};
  special['\n'] = lineEnds;
  for (unsigned c = 0; c < 0x20; ++c) special[c] = special[c] || !(c == '\t' || c == '\n' || c == '\r' || c == '\f');
  for (unsigned c = 0x7F; c < 0x100; ++c) special[c] = true;
  for (char c : std::string_view("&<>\"")) special[static_cast<unsigned char>(c)] = true;
  return special;
}
constexpr std::array<bool, 256> kSpecial = SpecialBytes(false);
constexpr std::array<bool, 256> kSpecialOrLineEnd = SpecialBytes(true);

constexpr std::array<bool, 256> kInAddress = [] {
  std::array<bool, 256> plain = {};
  for (char c : std::string_view("!#$%()*+,-./0123456789:;=?@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~")) {
    plain[static_cast<unsigned char>(c)] = true;
  }
  return plain;
}();

constexpr std::string_view TagOf(FormatKind kind) {
  constexpr std::string_view kTags[] = {"em", "strong", "u", "s", "sup", "sub", "code", "span", "a"};
  return kTags[static_cast<std::size_t>(kind)];
}

bool StartsWith(std::string_view text, std::string_view start) {
  if (text.size() < start.size()) return false;
  for (std::size_t i = 0; i < start.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) != start[i]) return false;
  }
  return true;
}

}  // namespace

bool IsSafeAddress(std::string_view address) {
  for (std::string_view picture : {"data:image/png", "data:image/gif", "data:image/jpeg", "data:image/webp"}) {
    if (StartsWith(address, picture)) return true;
  }
  for (std::string_view scheme : {"javascript:", "vbscript:", "file:", "data:"}) {
    if (StartsWith(address, scheme)) return false;
  }
  return true;
}

void HtmlWriter::BeginPage(std::string_view title) {
  IsPage = true;
  Put("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\" />\n<title>");
  Escape(title.empty() ? "Text" : title);
  Put("</title>\n</head>\n");
}

void HtmlWriter::SetBase(FontID font) {
  if (!IsPage) return;
  Put("<body");
  Style(CssOfFont(font, kDefaultFont));
  Put(">\n");
}

bool HtmlWriter::Finish() {
  FreshLine();
  if (IsPage) Put("</body>\n</html>\n");
  Flush(0);
  return !Broken;
}

void HtmlWriter::Flush(std::size_t limit) {
  if (!Out || Buffer.size() <= limit) return;
  // The last byte stays: whether it ends a line is asked for.
  const std::size_t size = limit == 0 ? Buffer.size() : Buffer.size() - 1;
  if (std::fwrite(Buffer.data(), 1, size, Out) != size) Broken = true;
  Buffer.erase(0, size);
}

void HtmlWriter::FreshLine() {
  if (!Buffer.empty() && Buffer.back() != '\n') Buffer += '\n';
}

void HtmlWriter::Escape(std::string_view text) {
  const std::array<bool, 256>& special = LinesTogether ? kSpecialOrLineEnd : kSpecial;
  const char* const bytes = text.data();
  const std::size_t end = text.size();
  std::size_t start = 0;
  for (std::size_t i = 0;;) {
    while (i < end && !special[static_cast<unsigned char>(bytes[i])]) ++i;
    if (i == end) break;
    const std::size_t size = Utf8Length(text.substr(i));
    if (size > 1) {
      i += size;
      continue;
    }
    Put(text.substr(start, i - start));
    switch (text[i]) {
      case '\n':
        Put("&#10;");
        break;
      case '&':
        Put("&amp;");
        break;
      case '<':
        Put("&lt;");
        break;
      case '>':
        Put("&gt;");
        break;
      case '"':
        Put("&quot;");
        break;
      default:
        Put(kReplacement);
        Losses.Add(Loss::kInvalidText);
    }
    start = ++i;
  }
  Put(text.substr(start));
}

void HtmlWriter::EscapeAddress(std::string_view address) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (!IsSafeAddress(address)) {
    Losses.Add(Loss::kLink, 0, address);
    return;
  }
  for (char c : address) {
    const auto byte = static_cast<unsigned char>(c);
    if (kInAddress[byte]) {
      Buffer += c;
    } else if (c == '&') {
      Put("&amp;");
    } else if (c == '\'') {
      Put("&#x27;");
    } else {
      Buffer += '%';
      Buffer += kDigits[byte >> 4];
      Buffer += kDigits[byte & 15];
    }
  }
}

void HtmlWriter::Attribute(std::string_view name, std::string_view value) {
  Put(" ");
  Put(name);
  Put("=\"");
  Escape(value);
  Put("\"");
}

void HtmlWriter::Style(const std::string& css) {
  if (!css.empty()) Attribute("style", css);
}

void HtmlWriter::OpenText(const BlockInfo& block, std::string_view tag) {
  const std::string css = CssOfParagraph(block);
  const bool bare = (block.Tight || block.Plain) && css.empty() && !block.Hidden;
  IsBareText = bare && block.Kind == Block::kText && !WasBareText;
  if (IsBareText) return;
  FreshLine();
  Put("<");
  Put(tag);
  Style(css);
  if (block.Hidden) Put(" hidden");
  Put(">");
  if (block.Empty) Put("<br />");
}

void HtmlWriter::Open(const BlockInfo& block) {
  if (block.Kind != Block::kText) WasBareText = false;
  switch (block.Kind) {
    case Block::kText:
      return OpenText(block, "p");
    case Block::kHeading: {
      const char tag[] = {'h', static_cast<char>('0' + block.Number)};
      return OpenText(block, {tag, sizeof tag});
    }
    case Block::kCode:
      FreshLine();
      Put("<pre><code");
      if (!block.Language.empty()) Attribute("class", "language-" + std::string(block.Language));
      Put(">");
      IsCode = true;
      HasCode = false;
      return;
    case Block::kTable:
      return OpenTable(block);
    case Block::kRow:
      return OpenRow(block);
    case Block::kCell:
      return OpenCell(block);
    default:
      break;
  }
  FreshLine();
  if (block.Kind == Block::kQuote) Put("<blockquote>\n");
  if (block.Kind == Block::kBulletList) Put("<ul>\n");
  if (block.Kind == Block::kItem) Put("<li>");
  if (block.Kind == Block::kRule) Put("<hr />\n");
  if (block.Kind != Block::kNumberList) return;
  Put("<ol");
  if (block.Number != 1) Attribute("start", std::to_string(block.Number));
  Put(">\n");
}

void HtmlWriter::Close(const BlockInfo& block) {
  switch (block.Kind) {
    case Block::kText:
      if (!IsBareText) Put("</p>\n");
      WasBareText = IsBareText;
      IsBareText = false;
      return Flush(kFlushSize);
    case Block::kHeading:
      Put("</h");
      Put(std::to_string(block.Number));
      return Put(">\n");
    case Block::kCode:
      if (HasCode) Put("\n");
      IsCode = false;
      return Put("</code></pre>\n");
    case Block::kItem:
      Put("</li>\n");
      break;
    case Block::kTable:
      return CloseTable();
    case Block::kRow:
      FreshLine();
      return Put("</tr>\n");
    case Block::kCell:
      Put(block.Heading ? "</th>\n" : "</td>\n");
      break;
    case Block::kRule:
      break;
    default:
      FreshLine();
      if (block.Kind == Block::kQuote) Put("</blockquote>\n");
      if (block.Kind == Block::kBulletList) Put("</ul>\n");
      if (block.Kind == Block::kNumberList) Put("</ol>\n");
  }
  WasBareText = false;
}

void HtmlWriter::OpenTable(const BlockInfo& block) {
  FreshLine();
  HasBorder = block.HasBorder;
  HasSections = !block.HasSpans;
  Section = kNone;
  Put(HasBorder ? "<table border=\"1\"" : "<table");
  Style(CssOfParagraph(block));
  Put(">\n");
  if (!block.HasWidths) return;
  unsigned all = 0;
  for (unsigned width : *block.Widths) all += width;
  Put("<colgroup>\n");
  for (unsigned width : *block.Widths) Put("<col style=\"" + CssOfWidth(width, all) + "\" />\n");
  Put("</colgroup>\n");
}

void HtmlWriter::OpenRow(const BlockInfo& block) {
  FreshLine();
  if (HasSections && block.Heading && Section == kNone) {
    Put("<thead>\n");
    Section = kHead;
  } else if (HasSections && !block.Heading && Section != kBody) {
    Put(Section == kHead ? "</thead>\n<tbody>\n" : "<tbody>\n");
    Section = kBody;
  }
  Put("<tr>\n");
}

void HtmlWriter::OpenCell(const BlockInfo& block) {
  FreshLine();
  Put(block.Heading ? "<th" : "<td");
  if (block.Cell->ColumnSpan > 1) Attribute("colspan", std::to_string(block.Cell->ColumnSpan));
  if (block.Cell->RowSpan > 1) Attribute("rowspan", std::to_string(block.Cell->RowSpan));
  Style(CssOfCell(block, HasBorder));
  Put(">");
}

void HtmlWriter::CloseTable() {
  FreshLine();
  if (Section == kHead) Put("</thead>\n");
  if (Section == kBody) Put("</tbody>\n");
  Put("</table>\n");
}

void HtmlWriter::OpenFormat(const Format& format) {
  Put("<");
  Put(TagOf(format.Kind));
  if (format.Kind == FormatKind::kFont) Style(CssOfFont(format.Font, format.Around));
  if (format.Kind == FormatKind::kLink) {
    Put(" href=\"");
    EscapeAddress(format.Url);
    Put("\"");
    if (!format.Title.empty()) Attribute("title", format.Title);
  }
  Put(">");
}

void HtmlWriter::CloseFormat(const Format& format) {
  Put("</");
  Put(TagOf(format.Kind));
  Put(">");
}

void HtmlWriter::Text(std::string_view text) {
  if (IsCode && !HasCode) HasCode = text.find_first_not_of('\n') != std::string_view::npos;
  Escape(text);
}

void HtmlWriter::Anchor(std::string_view name) {
  Put("<span");
  Attribute("id", name);
  Put("></span>");
}

void HtmlWriter::LineBreak() { Put("<br />\n"); }

void HtmlWriter::Picture(std::string_view address, std::string_view title, std::string_view text) {
  Put("<img src=\"");
  EscapeAddress(address);
  Put("\"");
  Attribute("alt", text);
  if (!title.empty()) Attribute("title", title);
  Put(" />");
}

}  // namespace conv
