#include "converters/html/reader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>
#include <utility>

#include "converters/html/css.h"
#include "converters/html/tags.h"
#include "engine/status.h"

namespace conv {

namespace {

constexpr int kIndent = 720;
constexpr int kTwipsOfPoint = 20;
constexpr std::size_t kLongestAddress = 0x4000;
constexpr std::uint8_t kFontSizes[] = {7, 8, 10, 12, 14, 18, 24};

// Of an element, what an attribute does to its look, and nothing stands for.
bool IsLook(std::string_view attribute, std::string_view element) {
  constexpr std::pair<std::string_view, std::string_view> kLooks[] = {
      {"background", "body table td th"},
      {"bgcolor", "body"},
      {"bordercolor", "table td th"},
      {"border", "img"},
      {"color", "hr"},
      {"frame", "table"},
      {"height", "img table td th tr"},
      {"hspace", "img"},
      {"link", "body"},
      {"nowrap", "td th"},
      {"reversed", "ol"},
      {"rules", "table"},
      {"size", "hr"},
      {"text", "body"},
      {"type", "li ol ul"},
      {"valign", "td th tr"},
      {"value", "li"},
      {"vspace", "img"},
      {"width", "hr img"},
  };
  if (attribute == "dir") return true;
  for (const auto& [name, elements] : kLooks) {
    if (name != attribute) continue;
    const std::string words = " " + std::string(elements) + " ";
    return words.find(" " + std::string(element) + " ") != std::string::npos;
  }
  return false;
}

// As browsers take it: without space and control characters around it, and without line ends and tabs.
std::string AddressOf(const HtmlNode& node, std::string_view attribute) {
  std::string address(node.Get(attribute));
  const auto shows = [](char c) { return static_cast<unsigned char>(c) > ' '; };
  address.erase(std::find_if(address.rbegin(), address.rend(), shows).base(), address.end());
  address.erase(address.begin(), std::ranges::find_if(address, shows));
  std::erase_if(address, [](char c) { return c == '\t' || c == '\n' || c == '\r'; });
  return address;
}

// What other elements look like or lead to depends on it.
bool ChangesOthers(const HtmlNode& node) {
  return (node.Is("base") && node.Find("href")) ||
         (node.Is("link") && Lower(node.Get("rel")).find("stylesheet") != std::string::npos);
}

}  // namespace

// Sorted by name.
const HtmlReader::Rule& HtmlReader::RuleOf(const std::string& name) {
  using enum Kind;
  static constexpr Rule kRules[] = {
      {"#run", kTransparent},
      {"a", kLink},
      {"abbr", kTransparent},
      {"address", kBlock, kItalic},
      {"article", kBlock},
      {"aside", kBlock},
      {"audio", kLost},
      {"b", kFormat, kBold},
      {"base", kSkipped},
      {"bdi", kTransparent},
      {"bdo", kTransparent},
      {"big", kFormat},
      {"blockquote", kQuote},
      {"body", kBlock},
      {"br", kBreak},
      {"button", kLost},
      {"canvas", kLost},
      {"caption", kBlock},
      {"center", kBlock},
      {"cite", kFormat, kItalic},
      {"code", kFormat},
      {"col", kSkipped},
      {"colgroup", kSkipped},
      {"data", kTransparent},
      {"dd", kBlock},
      {"del", kFormat, kStrikeout},
      {"details", kBlock},
      {"dfn", kFormat, kItalic},
      {"dir", kBulletList},
      {"div", kBlock},
      {"dl", kBlock},
      {"dt", kBlock},
      {"em", kFormat, kItalic},
      {"embed", kLost},
      {"fieldset", kBlock},
      {"figcaption", kBlock},
      {"figure", kBlock},
      {"font", kFormat},
      {"footer", kBlock},
      {"form", kBlock},
      {"frame", kLost},
      {"frameset", kLost},
      {"h1", kHeading, 0, 1},
      {"h2", kHeading, 0, 2},
      {"h3", kHeading, 0, 3},
      {"h4", kHeading, 0, 4},
      {"h5", kHeading, 0, 5},
      {"h6", kHeading, 0, 6},
      {"head", kBlock},
      {"header", kBlock},
      {"hgroup", kBlock},
      {"hr", kRule},
      {"html", kBlock},
      {"i", kFormat, kItalic},
      {"iframe", kLost},
      {"img", kPicture},
      {"input", kLost},
      {"ins", kFormat, kUnderline},
      {"kbd", kFormat},
      {"label", kTransparent},
      {"li", kItem},
      {"link", kSkipped},
      {"main", kBlock},
      {"map", kLost},
      {"math", kLost},
      {"menu", kBulletList},
      {"meta", kSkipped},
      {"nav", kBlock},
      {"noscript", kTransparent},
      {"object", kLost},
      {"ol", kNumberList},
      {"output", kTransparent},
      {"p", kParagraph},
      {"param", kSkipped},
      {"picture", kTransparent},
      {"pre", kPre},
      {"q", kQuotation},
      {"rp", kTransparent},
      {"rt", kTransparent},
      {"ruby", kTransparent},
      {"s", kFormat, kStrikeout},
      {"samp", kFormat},
      {"script", kLost},
      {"section", kBlock},
      {"select", kLost},
      {"small", kFormat},
      {"source", kSkipped},
      {"span", kFormat},
      {"strike", kFormat, kStrikeout},
      {"strong", kFormat, kBold},
      {"style", kLost},
      {"sub", kFormat, kSubscript},
      {"summary", kBlock},
      {"sup", kFormat, kSuperscript},
      {"svg", kLost},
      {"table", kTable},
      {"tbody", kBlock},
      {"td", kBlock},
      {"template", kLost},
      {"textarea", kLost},
      {"tfoot", kBlock},
      {"th", kBlock, kBold},
      {"thead", kBlock},
      {"time", kTransparent},
      {"title", kSkipped},
      {"tr", kBlock},
      {"track", kSkipped},
      {"tt", kFormat},
      {"u", kFormat, kUnderline},
      {"ul", kBulletList},
      {"var", kFormat, kItalic},
      {"video", kLost},
      {"wbr", kSkipped},
      {"xmp", kPre},
  };
  static constexpr Rule kUnknownRule = {"", kUnknown};
  const Rule* rule = std::ranges::lower_bound(kRules, std::string_view(name), {}, &Rule::Name);
  return rule != std::end(kRules) && rule->Name == name ? *rule : kUnknownRule;
}

ENGSTATUS HtmlReader::Read(std::string_view html) {
  HtmlTree tree;
  if (ENGSTATUS status = tree.Read(html)) return status;
  for (unsigned left = tree.CountInvalid(); left > 0; --left) Losses.Add(Loss::kInvalidText);
  for (unsigned left = tree.CountCutLinks(); left > 0; --left) Losses.Add(Loss::kCutLink);
  for (unsigned left = tree.CountCutTags(); left > 0; --left) Losses.Add(Loss::kStyle, 0, "more than 1,000 attributes");
  Walk(tree.Root());
  EndParagraph();
  for (const std::string& name : std::exchange(Anchors, {})) Losses.Add(Loss::kAnchor, Line, name);
  return ENG_OK;
}

void HtmlReader::ReadFragment(std::string_view html, unsigned line) {
  HtmlTree tree;
  Line = line;
  const unsigned before = Paragraphs;
  if (tree.Read(html) == ENG_OK) {
    Walk(tree.Root());
    EndParagraph();
  }
  if (Paragraphs == before) Losses.Add(Loss::kRawHtml, line, html);
  Line = 0;
}

bool HtmlReader::ReadTag(std::string_view tag) {
  if (tag.starts_with("</")) {
    const std::string name = Lower(Trim(tag.substr(2, tag.find('>') - 2)));
    const auto open = std::ranges::find(Tags.rbegin(), Tags.rend(), name, &TagOpen::Name);
    if (open == Tags.rend()) return false;
    if (open->Name == "a" && open->Format == 0) {
      Runs.EndLink();
    } else {
      Runs.Close(open->Format);
    }
    Tags.erase(std::next(open).base());
    return true;
  }
  HtmlTree tree;
  if (tree.Read(tag) != ENG_OK || !tree.Root()->First) return false;
  const HtmlNode& node = *tree.Root()->First;
  const Rule& rule = RuleOf(node.Name);
  constexpr std::size_t kMostTags = 1000;
  const bool named = node.Find("id") || (rule.What == Kind::kLink && node.Find("name"));
  if (Tags.size() >= kMostTags) return false;
  CheckStyle(node, Place::kInline);
  if (rule.What == Kind::kFormat || rule.What == Kind::kLink) {
    NoteAnchor(node);
    PutAnchors();
  }
  if (rule.What == Kind::kBreak) {
    Runs.LineBreak();
  } else if (rule.What == Kind::kPicture) {
    const std::string address = AddressOf(node, "src");
    if (!node.Find("src") || address.size() > kLongestAddress) return false;
    Runs.Picture(address, node.Get("title"), node.Get("alt"));
  } else if (rule.What == Kind::kLink && node.Find("href")) {
    Runs.BeginLink(AddressOf(node, "href"), node.Get("title"));
    Tags.push_back({node.Name, 0});
  } else if (rule.What == Kind::kFormat || (rule.What == Kind::kLink && named)) {
    Tags.push_back({node.Name, Runs.Open(ChangeOf(node, rule))});
  } else {
    return false;
  }
  return true;
}

void HtmlReader::CloseInline() {
  for (const TagOpen& tag : Tags) Runs.Close(tag.Format);
  Tags.clear();
}

// In the tree's order without recursion: elements may lie deep in each other.
void HtmlReader::Walk(const HtmlNode* top) {
  const HtmlNode* node = top->First;
  while (node) {
    bool entered = Enter(node);
    if (entered && node->First) {
      node = node->First;
      continue;
    }
    for (;;) {
      if (entered) Leave();
      if (node->Next) {
        node = node->Next;
        break;
      }
      node = node->Parent;
      if (node == top) return;
      entered = true;
    }
  }
}

// Whether its content is to be walked, and Leave called behind it.
bool HtmlReader::Enter(const HtmlNode* node) {
  if (node->Name.empty()) {
    if (!Pre) {
      Text(node->Text);
    } else {
      // The line end behind the tag is none of the text's.
      const bool behindTag = node == Pre->First && node->Text.starts_with('\n');
      PreText(std::string_view(node->Text).substr(behindTag ? 1 : 0));
    }
    return false;
  }
  const Rule& rule = RuleOf(node->Name);
  Open open = {node, rule.What, 0, false, Justify, Indent, FirstLine, Tight, Hidden, Heading};
  CheckStyle(*node, PlaceOf(rule.What));
  if (!EnterElement(node, rule, &open)) return false;
  if (rule.What == Kind::kFormat && PendingSpace) Prepare();
  if (PlaceOf(rule.What) == Place::kInline) NoteAnchor(*node);
  if (rule.What == Kind::kQuotation) Text("\u201C");
  const FontChange change = ChangeOf(*node, rule);
  if (!change.IsEmpty()) open.Format = Runs.Open(change);
  Opened.push_back(open);
  return true;
}

bool HtmlReader::EnterElement(const HtmlNode* node, const Rule& rule, Open* open) {
  using enum Kind;
  const bool inPre = Pre != nullptr;
  switch (rule.What) {
    case kSkipped:
      if (ChangesOthers(*node)) Losses.Add(Loss::kContent, Line, node->Name);
      return false;
    case kLost:
      Losses.Add(Loss::kContent, Line, node->Name);
      return false;
    case kUnknown:
      Losses.Add(Loss::kElement, Line, node->Name);
      return true;
    case kTransparent:
    case kFormat:
    case kQuotation:
      return true;
    case kBreak:
      if (inPre) {
        PreText("\n");
      } else {
        ++PendingBreaks;
        PendingSpace = false;
        if (!HasParagraph) BeginParagraph();
      }
      return false;
    case kPicture:
      NoteAnchor(*node);
      Picture(*node);
      return false;
    case kLink:
      EnterLink(*node);
      return true;
    default:
      break;
  }
  if (inPre) return true;  // lines alone count there
  EndParagraph();
  NoteAnchor(*node);
  Tight = rule.What != kParagraph;
  switch (rule.What) {
    case kRule:
      Out.BeginParagraph({.What = Leaf::kRule});
      Out.EndParagraph();
      ++Paragraphs;
      return false;
    case kTable:
      if (!Out.InTable()) {
        Table(*node);
        return false;
      }
      Losses.Add(Loss::kNestedTable, Line);
      break;
    case kHeading:
      Heading = static_cast<unsigned>(rule.Detail);
      break;
    case kQuote:
      Out.OpenQuote();
      break;
    case kBulletList:
    case kNumberList: {
      const int start = std::atoi(std::string(node->Get("start")).c_str());
      const bool hasStart = node->Find("start") && start >= 0 && start <= 999999999;
      Out.OpenList(rule.What == kNumberList, hasStart ? static_cast<unsigned>(start) : 1);
      break;
    }
    case kItem:
      open->Implied = !Out.InList();
      if (open->Implied) Out.OpenList(false, 1);
      Out.OpenItem();
      break;
    default:
      break;
  }
  BlockStyle(*node);
  if (rule.What == kPre) EnterPre(*node);
  return true;
}

// By something else than space on the same line.
bool HtmlReader::IsFollowed(const HtmlNode& node) {
  const HtmlNode* next = node.Next;
  while (next && next->Name.empty() && std::ranges::all_of(next->Text, IsSpace)) next = next->Next;
  return next && (next->Name.empty() || PlaceOf(RuleOf(next->Name).What) == Place::kInline);
}

void HtmlReader::Leave() {
  const Open open = Opened.back();
  Opened.pop_back();
  using enum Kind;
  const bool inPre = Pre && Pre != open.Node;
  if (open.What == kLink && ActiveLink == open.Node) LeaveLink();
  if (open.What == kQuotation) Text("\u201D");
  if (PlaceOf(open.What) == Place::kInline || inPre) {
    // A space stays in the format that it stands in, unless it ends the line.
    if (open.Format != 0 && PendingSpace && IsFollowed(*open.Node)) Prepare();
    if (open.Format != 0) Runs.Close(open.Format);
    return;
  }
  if (Pre) {
    LeavePre();
  } else {
    EndParagraph();
  }
  if (open.Format != 0) Runs.Close(open.Format);
  const bool level = open.What == kQuote || open.What == kBulletList || open.What == kNumberList || open.What == kItem;
  if (level) Out.Close();
  if (open.Implied) Out.Close();
  Justify = open.Justify;
  Indent = open.Indent;
  FirstLine = open.FirstLine;
  Tight = open.Tight;
  Hidden = open.Hidden;
  Heading = open.Heading;
}

// Formats

void HtmlReader::SetSize(double points, FontChange* change) {
  const double rounded = std::round(points);
  const double size = std::clamp(rounded, 1.0, 255.0);
  if (size != rounded || std::abs(points - rounded) > 0.01) Losses.Add(Loss::kSize, Line);
  change->NewSize = static_cast<std::uint8_t>(size);
}

void HtmlReader::SetColor(std::string_view value, FontChange* change) {
  const auto color = ColorFromCss(value);
  bool exact = false;
  if (color) change->NewColor = IndexFromColor(*color, &exact);
  if (color && !exact) Losses.Add(Loss::kColor, Line, value);
  const bool meant = value != "inherit" && value != "initial" && value != "currentcolor";
  if (!color && meant) Losses.Add(Loss::kStyle, Line, "color:" + std::string(value));
}

void HtmlReader::SetFace(std::string_view families, FontChange* change) {
  bool exact = false;
  const auto face = FaceFromCss(families, &exact);
  if (face) change->NewFace = *face;
  if (!exact) Losses.Add(Loss::kFace, Line, families);
}

void HtmlReader::StyleChange(std::string_view css, FontChange* change) {
  const double around = SizeOf(Runs.Font());
  ReadCss(css, [&](std::string_view name, std::string_view value) {
    const auto set = [&](FontID attribute, bool on) { (on ? change->Set : change->Clear) |= attribute; };
    if (name == "font-weight") {
      set(kBold, value == "bold" || value == "bolder" || std::atoi(std::string(value).c_str()) >= 600);
    }
    if (name == "font-style") set(kItalic, value == "italic" || value == "oblique");
    if (name == "text-decoration" || name == "text-decoration-line") {
      if (value.find("underline") != std::string_view::npos) set(kUnderline, true);
      if (value.find("line-through") != std::string_view::npos) set(kStrikeout, true);
      if (value == "none") set(kUnderline | kStrikeout, false);
    }
    if (name == "vertical-align" && value == "super") set(kSuperscript, true);
    if (name == "vertical-align" && value == "sub") set(kSubscript, true);
    if (name == "color") SetColor(value, change);
    if (name == "font-family") SetFace(value, change);
    if (name != "font-size") return;
    const auto points = SizeFromCss(value, around);
    if (points) SetSize(*points, change);
    if (!points && value != "inherit") Losses.Add(Loss::kStyle, Line, "font-size:" + std::string(value));
  });
}

FontChange HtmlReader::ChangeOf(const HtmlNode& node, const Rule& rule) {
  FontChange change;
  change.Set = rule.Set;
  const std::string_view name = rule.Name;
  if (name == "th") change.Set = 0;
  const bool code = name == "code" || name == "kbd" || name == "samp" || name == "tt";
  if (code && !Pre) change.NewFace = kMono;
  const double size = SizeOf(Runs.Font());
  if (name == "big") change.NewSize = static_cast<std::uint8_t>(std::min(size * 1.2, 255.0));
  if (name == "small") change.NewSize = static_cast<std::uint8_t>(std::max(size / 1.2, 1.0));
  if (name == "font") {
    if (const std::string* color = node.Find("color")) SetColor(*color, &change);
    if (const std::string* face = node.Find("face")) SetFace(*face, &change);
    if (const std::string* value = node.Find("size")) {
      const int step = std::atoi(value->c_str());
      const bool relative = value->starts_with('+') || value->starts_with('-');
      change.NewSize = kFontSizes[std::clamp(relative ? 2 + step : step - 1, 0, 6)];
    }
  }
  if (const std::string* css = node.Find("style")) StyleChange(*css, &change);
  return change;
}

bool HtmlReader::IsHidden(const HtmlNode& node) {
  bool hidden = node.Find("hidden") != nullptr;
  if (const std::string* css = node.Find("style")) {
    ReadCss(*css, [&](std::string_view name, std::string_view value) {
      if (name == "display") hidden = value == "none";
    });
  }
  return hidden;
}

void HtmlReader::BlockStyle(const HtmlNode& node) {
  if (node.Is("center")) Justify = kJustifyCenter;
  if (node.Is("dd")) Indent += kIndent;
  if (const auto justify = JustifyFromCss(node.Get("align"))) Justify = *justify;
  if (IsHidden(node)) Hidden = true;
  FirstLine = 0;
  const std::string* css = node.Find("style");
  if (!css) return;
  ReadCss(*css, [&](std::string_view name, std::string_view value) {
    constexpr double kMost = 2000;
    const auto length = LengthFromCss(value, SizeOf(Runs.Font()));
    const bool fits = length && std::abs(*length) < kMost;
    const int twips = fits ? static_cast<int>(std::lround(*length * kTwipsOfPoint)) : 0;
    if (name == "text-align") Justify = JustifyFromCss(value).value_or(static_cast<conv::Justify>(Justify));
    if ((name == "margin-left" || name == "padding-left") && twips > 0) Indent += twips;
    if (name == "text-indent") FirstLine = twips;
  });
  Indent = std::min(Indent, 40000);
}

HtmlReader::Place HtmlReader::PlaceOf(Kind kind) {
  using enum Kind;
  if (kind == kTable) return Place::kTable;
  constexpr Kind kInlines[] = {kTransparent, kFormat, kLink, kPicture, kBreak, kQuotation, kUnknown};
  return std::ranges::find(kInlines, kind) != std::end(kInlines) ? Place::kInline : Place::kBlock;
}

void HtmlReader::CheckStyle(const HtmlNode& node, Place place) {
  constexpr std::string_view kText[] = {"color",       "font-family",     "font-size",           "font-style",
                                        "font-weight", "text-decoration", "text-decoration-line"};
  constexpr std::string_view kBlocks[] = {"display", "margin-left", "padding-left", "text-align", "text-indent"};
  constexpr std::string_view kCells[] = {"background", "background-color", "border",     "border-left", "border-right",
                                         "border-top", "border-bottom",    "text-align", "width"};
  constexpr std::string_view kTables[] = {"background", "background-color", "display"};
  if (place == Place::kInline && node.Find("hidden")) Losses.Add(Loss::kStyle, Line, "hidden");
  if (place == Place::kTable) {
    for (const char* attribute : {"width", "align", "cellspacing", "cellpadding"}) {
      if (node.Find(attribute)) Losses.Add(Loss::kTableLayout, Line, attribute);
    }
  }
  for (const auto& [attribute, value] : node.Attributes) {
    if (IsLook(attribute, node.Name)) Losses.Add(Loss::kStyle, Line, attribute);
  }
  const std::string* css = node.Find("style");
  if (!css) return;
  ReadCss(*css, [&](std::string_view name, std::string_view value) {
    const auto in = [&](std::span<const std::string_view> names) { return std::ranges::count(names, name) > 0; };
    const bool raised = name == "vertical-align" && (value == "super" || value == "sub" || value == "baseline");
    bool known = in(kText) || raised;
    if (place == Place::kBlock || place == Place::kCell) known = known || in(kBlocks);
    if (place == Place::kTable) known = known || in(kTables);
    if (place == Place::kCell) known = known || in(kCells);
    if (node.Is("hr")) known = false;
    if (!known) Losses.Add(place == Place::kTable ? Loss::kTableLayout : Loss::kStyle, Line, name);
  });
}

void HtmlReader::NoteAnchor(const HtmlNode& node) {
  const std::string_view id = node.Get("id");
  const std::string_view name = node.Is("a") ? node.Get("name") : std::string_view();
  if (!id.empty()) Anchors.emplace_back(id);
  if (!name.empty() && name != id) Anchors.emplace_back(name);
}

void HtmlReader::PutAnchors() {
  if (Anchors.empty()) return;
  for (const std::string& name : Anchors) Runs.Anchor(name);
  Anchors.clear();
}

// Text

void HtmlReader::BeginParagraph() {
  Out.BeginParagraph({.What = Heading > 0 ? Leaf::kHeading : Leaf::kText,
                      .Heading = Heading,
                      .Justify = Justify,
                      .Tight = Tight,
                      .Hidden = Hidden,
                      .Indent = static_cast<std::uint16_t>(Indent),
                      .FirstLineIndent = FirstLine});
  Runs.Begin(Out.BaseFont(Heading));
  ++Paragraphs;
  HasParagraph = true;
  HasText = PendingSpace = EndsInSpace = false;
}

void HtmlReader::EndParagraph() {
  if (HasParagraph) {
    // The last break shows nothing.
    for (; PendingBreaks > 1; --PendingBreaks) Losses.Add(Loss::kBreak, Line);
    PutAnchors();
    Runs.EndLink();
    Out.EndParagraph();
  }
  HasParagraph = HasText = PendingSpace = false;
  PendingBreaks = 0;
}

// What stands ahead of text, a picture or a link.
void HtmlReader::Prepare() {
  if (Pre) {
    if (PreBreaks > 0) Runs.Text(std::string(PreBreaks, '\0'));
    PreBreaks = 0;
  } else {
    if (!HasParagraph) BeginParagraph();
    if (PendingBreaks > 0) EndsInSpace = false;
    for (; PendingBreaks > 0; --PendingBreaks) Runs.LineBreak();
    if (PendingSpace) Runs.Text(" ");
    EndsInSpace = std::exchange(PendingSpace, false);
    HasText = true;
  }
  PutAnchors();
  if (!ActiveLink || Runs.InLink()) return;
  Runs.BeginLink(AddressOf(*ActiveLink, "href"), ActiveLink->Get("title"));
  LinkShown = true;
}

// Spaces in a row are one, and none at the ends of a line.
void HtmlReader::Text(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (IsSpace(text[at])) {
      PendingSpace = HasText && PendingBreaks == 0 && !EndsInSpace;
      ++at;
      continue;
    }
    std::size_t end = at;
    // A single space within goes along with the words.
    while (end < text.size() &&
           (!IsSpace(text[end]) || (text[end] == ' ' && end + 1 < text.size() && !IsSpace(text[end + 1])))) {
      ++end;
    }
    Prepare();
    Runs.Text(text.substr(at, end - at));
    EndsInSpace = false;
    at = end;
  }
}

// A line end is shown once more comes behind it.
void HtmlReader::PreText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    if (!line.empty()) {
      Prepare();
      Runs.Text(line);
      PreHasText = true;
    }
    if (end == std::string_view::npos) return;
    ++PreBreaks;
    text.remove_prefix(end + 1);
  }
}

void HtmlReader::EnterPre(const HtmlNode& node) {
  const HtmlNode* code = node.First && node.First->Is("code") ? node.First : nullptr;
  std::string_view language;
  constexpr std::string_view kPrefix = "language-";
  if (code && code->Get("class").starts_with(kPrefix)) language = code->Get("class").substr(kPrefix.size());
  Out.BeginParagraph({.What = Leaf::kCode,
                      .Language = language.substr(0, language.find(' ')),
                      .Justify = Justify,
                      .Hidden = Hidden,
                      .Indent = static_cast<std::uint16_t>(Indent)});
  Runs.Begin(WithFace(Out.BaseFont(0), kMono));
  ++Paragraphs;
  Pre = &node;
  PreHasText = false;
  PreBreaks = 0;
}

void HtmlReader::LeavePre() {
  if (!PreHasText && PreBreaks > 0) Runs.Text(std::string(PreBreaks, '\0'));
  if (PreHasText && PreBreaks > 1) Runs.Text(std::string(PreBreaks - 1, '\0'));
  PreBreaks = 0;
  Pre = nullptr;
  Runs.EndLink();
  Out.EndParagraph();
}

void HtmlReader::Picture(const HtmlNode& node) {
  const std::string address = AddressOf(node, "src");
  if (!node.Find("src") || address.size() > kLongestAddress) {
    Losses.Add(Loss::kImage, Line, node.Get("alt"));
    return Pre ? PreText(node.Get("alt")) : Text(node.Get("alt"));
  }
  Prepare();
  EndsInSpace = false;
  Runs.Picture(address, node.Get("title"), node.Get("alt"));
  if (Pre) PreHasText = true;
}

void HtmlReader::EnterLink(const HtmlNode& node) {
  const std::string address = AddressOf(node, "href");
  if (!node.Find("href")) return;
  if (address.size() > kLongestAddress) return Losses.Add(Loss::kLink, Line, address);
  Runs.EndLink();
  ActiveLink = &node;
  LinkShown = false;
  // Around blocks it begins anew in each.
  const bool aroundBlocks = node.First && !node.First->Name.empty() && RuleOf(node.First->Name).What != Kind::kFormat &&
                            RuleOf(node.First->Name).What != Kind::kPicture;
  const bool aroundSpace =
      node.First && node.First->Name.empty() && !node.First->Next && Trim(node.First->Text).empty();
  if (!aroundBlocks && !aroundSpace) Prepare();
}

void HtmlReader::LeaveLink() {
  if (!LinkShown && HasParagraph) Prepare();
  Runs.EndLink();
  ActiveLink = nullptr;
}

ENGSTATUS ReadHtml(std::string_view source, RecordOutput& output, std::uint32_t font, Report& report) {
  Builder builder(output, font, report);
  Inlines runs(builder);
  HtmlReader reader(builder, runs, report);
  if (ENGSTATUS status = reader.Read(source)) return status;
  return builder.Finish() ? ENG_OK : ENG_ERR_FILE_WRITE;
}

}  // namespace conv
