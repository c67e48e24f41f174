#include "converters/html/tree.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "converters/html/css.h"
#include "converters/parts/utf8.h"
#include "engine/status.h"

namespace conv {

namespace {

// The parser looks through all open elements at each end tag.
constexpr unsigned kDeepest = 1000;
// And through all attributes of a tag at each of them.
constexpr unsigned kMostAttributes = 1000;

struct ContextFree {
  void operator()(htmlParserCtxt* context) const { htmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<htmlParserCtxt, ContextFree>;

const char* Chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

enum class Encoding { kAscii, kUtf8, kOther };

Encoding EncodingOf(std::string_view html) {
  bool ascii = true;
  for (std::size_t i = 0; i < html.size();) {
    if (static_cast<unsigned char>(html[i]) < 0x80) {
      ++i;
      continue;
    }
    ascii = false;
    const std::size_t size = Utf8Length(html.substr(i));
    if (size == 0) return Encoding::kOther;
    i += size;
  }
  return ascii ? Encoding::kAscii : Encoding::kUtf8;
}

// How long a reference is that stands at the begin and whose number is none of a character, which the parser would
// leave out; 0 for others.
std::size_t BadReference(std::string_view text) {
  if (!text.starts_with("&#")) return 0;
  const bool hex = text.size() > 2 && (text[2] | 0x20) == 'x';
  const char* digits = text.data() + (hex ? 3 : 2);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits, text.data() + text.size(), number, hex ? 16 : 10);
  if (end == digits) return 0;
  const bool control = number < 0x20 && number != '\t' && number != '\n' && number != '\r';
  const bool bad = error != std::errc() || control || (number >= 0xD800 && number < 0xE000) || number > 0x10FFFF;
  const auto length = static_cast<std::size_t>(end - text.data());
  return !bad ? 0 : length + (text.substr(length).starts_with(';') ? 1 : 0);
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

// Where the value ends that begins there.
std::size_t ValueEnd(std::string_view html, std::size_t at) {
  while (at < html.size() && IsSpace(html[at])) ++at;
  if (at < html.size() && (html[at] == '"' || html[at] == '\'')) {
    const std::size_t end = html.find(html[at], at + 1);
    return end == std::string_view::npos ? html.size() : end + 1;
  }
  while (at < html.size() && !IsSpace(html[at]) && html[at] != '>') ++at;
  return at;
}

// Goes through a tag from its name to its end. *surplus is where the attributes above the limit begin.
std::size_t TagEnd(std::string_view html, std::size_t at, std::size_t* surplus) {
  unsigned attributes = 0;
  bool between = false;
  while (at < html.size() && html[at] != '>') {
    if (html[at] == '=') {
      at = ValueEnd(html, at + 1);
      between = true;
      continue;
    }
    const bool begins = between && !IsSpace(html[at]) && html[at] != '/';
    if (begins && attributes++ == kMostAttributes) *surplus = at;
    between = IsSpace(html[at]) || html[at] == '/';
    ++at;
  }
  return at;
}

// Tags have no more attributes than the limit; those with more are counted.
std::string_view WithoutSurplus(std::string_view html, std::string* kept, unsigned* cut) {
  std::size_t start = 0;
  for (std::size_t at = 0; (at = html.find('<', at)) != std::string_view::npos;) {
    if (++at == html.size() || !std::isalpha(static_cast<unsigned char>(html[at]))) continue;
    std::size_t surplus = 0;
    at = TagEnd(html, at, &surplus);
    if (surplus == 0) continue;
    kept->append(html.substr(start, surplus - start));
    start = at;
    ++*cut;
  }
  return start == 0 ? html : kept->append(html.substr(start));
}

bool NeedsCleaning(std::string_view html) {
  return html.find('\0') != std::string_view::npos || html.find('\r') != std::string_view::npos ||
         html.find("&#") != std::string_view::npos;
}

// With line feeds as line ends, and without what no page may hold; that is counted.
std::string Cleaned(std::string_view html, unsigned* replaced) {
  constexpr std::string_view kReplacement = "&#xFFFD;";
  std::string cleaned;
  std::size_t start = 0;
  for (std::size_t i; (i = html.find_first_of(std::string_view("\0\r&", 3), start)) != std::string_view::npos;) {
    cleaned.append(html.substr(start, i - start));
    start = i + 1;
    if (html[i] == '\r') {
      if (html.substr(start, 1) != "\n") cleaned += '\n';
    } else if (html[i] == '\0') {
      cleaned.append(kReplacement);
      ++*replaced;
    } else if (const std::size_t length = BadReference(html.substr(i))) {
      cleaned.append(kReplacement);
      ++*replaced;
      start = i + length;
    } else {
      cleaned += '&';
    }
  }
  return cleaned.append(html.substr(start));
}

// Name of a paragraph that the parser put around text that stood by itself: it breaks nothing.
constexpr char kImplied[] = "#run";

// Terms and descriptions end where the next one begins; the parser knows only of some.
bool IsListed(std::string_view name) { return name == "dd" || name == "dt"; }

// Hold nothing, ended or not; the parser knows only of some.
bool IsVoid(std::string_view name) {
  constexpr std::string_view kNames[] = {"area",  "base",  "basefont", "bgsound", "br",    "col",
                                         "embed", "frame", "hr",       "img",     "input", "keygen",
                                         "link",  "meta",  "param",    "source",  "track", "wbr"};
  return std::ranges::count(kNames, name) > 0;
}

// A tag that is there has been read up to its end.
bool IsImplied(const htmlParserCtxt& context) {
  const xmlChar* at = context.input ? context.input->cur : nullptr;
  if (!at) return false;
  return xmlStrEqual(context.name, reinterpret_cast<const xmlChar*>("p")) && *at != '>' && *at != '/';
}

// An end that is there has just been read.
bool IsImpliedEnd(const htmlParserCtxt& context, std::string_view name) {
  constexpr std::ptrdiff_t kLongestEnd = 256;
  const htmlParserInput* input = context.input;
  if (!input) return false;
  const std::ptrdiff_t size = std::min(input->cur - input->base, kLongestEnd);
  const std::string_view before(Chars(input->cur - size), static_cast<std::size_t>(size));
  if (!before.ends_with('>')) return true;
  const std::size_t tag = before.rfind('<');
  return tag == std::string_view::npos || Lower(before.substr(tag, 2 + name.size())) != "</" + std::string(name);
}

// The parser ends links where these begin; browsers don't.
bool SplitsLinks(std::string_view name) { return name == "table" || name == "fieldset"; }

// Whether the link's end, or the text's, comes next.
bool IsAtLinkEnd(const htmlParserCtxt& context) {
  const htmlParserInput* input = context.input;
  if (!input) return true;
  const std::string_view rest = Trim({Chars(input->cur), static_cast<std::size_t>(input->end - input->cur)});
  return rest.empty() || Lower(rest.substr(0, 3)) == "</a";
}

}  // namespace

const std::string* HtmlNode::Find(std::string_view attribute) const {
  const auto found = std::ranges::find(Attributes, attribute, &std::pair<std::string, std::string>::first);
  return found == Attributes.end() ? nullptr : &found->second;
}

std::string_view HtmlNode::Get(std::string_view attribute) const {
  const std::string* value = Find(attribute);
  return value ? std::string_view(*value) : std::string_view();
}

HtmlTree::~HtmlTree() {
  for (HtmlNode* node : Nodes) delete node;
}

HtmlNode* HtmlTree::Add(HtmlNode* parent) {
  Nodes.reserve(Nodes.size() + (Nodes.size() == Nodes.capacity() ? Nodes.size() + 64 : 0));
  auto* node = new HtmlNode;
  Nodes.push_back(node);
  node->Parent = parent;
  (parent->Last ? parent->Last->Next : parent->First) = node;
  parent->Last = node;
  return node;
}

void HtmlTree::CloseListed() {
  unsigned levels = 1;
  for (HtmlNode* node = Open; node->Parent && !node->Is("dl") && !node->Is("td") && !node->Is("th");
       node = node->Parent) {
    if (IsListed(node->Name)) {
      Open = node->Parent;
      Depth -= levels;
      return;
    }
    ++levels;
  }
}

void HtmlTree::ReopenLink() {
  HtmlNode* link = Add(Open);
  link->Name = "a";
  if (SplitLink->First) {
    link->Attributes = SplitLink->Attributes;
    std::erase_if(link->Attributes, [](const auto& attribute) { return attribute.first == "id"; });
  } else {
    // Nothing stood in the first part.
    link->Attributes = std::move(SplitLink->Attributes);
    SplitLink->Name = kImplied;
  }
  Open = Reopened = link;
  ++Depth;
}

// No exception may pass through the parser.
struct HtmlTree::Events {
  template <typename Work>
  static void Guard(void* data, Work work) {
    auto* context = static_cast<htmlParserCtxt*>(data);
    auto* tree = static_cast<HtmlTree*>(context->_private);
    if (tree->Failure != ENG_OK) return;
    try {
      work(*tree);
    } catch (...) {
      tree->Failure = ENG_ERR_MEMORY;
    }
    if (tree->Failure != ENG_OK) xmlStopParser(context);
  }
  static void Start(void* data, const xmlChar* name, const xmlChar** attributes) {
    Guard(data, [&](HtmlTree& tree) {
      if (++tree.Depth > kDeepest) {
        tree.Failure = ENG_ERR_TEXT_NESTING;
        return;
      }
      const std::string lower = Lower(Chars(name));
      if (IsListed(lower)) tree.CloseListed();
      if (tree.SplitLink && SplitsLinks(lower)) tree.ReopenLink();
      tree.SplitLink = nullptr;
      tree.Open = tree.Add(tree.Open);
      tree.Open->Name = lower;
      if (!attributes && IsImplied(*static_cast<htmlParserCtxt*>(data))) tree.Open->Name = kImplied;
      for (; attributes && *attributes; attributes += 2) {
        tree.Open->Attributes.emplace_back(Lower(Chars(attributes[0])), attributes[1] ? Chars(attributes[1]) : "");
      }
      if (!IsVoid(lower)) return;
      tree.Open = tree.Open->Parent;
      --tree.Depth;
    });
  }
  static void End(void* data, const xmlChar* name) {
    Guard(data, [&](HtmlTree& tree) {
      HtmlNode* node = tree.Open;
      const std::string lower = Lower(Chars(name));
      if (IsVoid(lower)) return;
      const auto isIt = [&] { return node->Name == lower || (lower == "p" && node->Name == kImplied); };
      unsigned levels = 1;
      for (; node->Parent && !isIt(); node = node->Parent) {
        if (IsListed(lower) && node->Is("dl")) return;  // closed by the one behind it
        ++levels;
      }
      if (!node->Parent) return;
      const auto& context = *static_cast<htmlParserCtxt*>(data);
      if (!IsImpliedEnd(context, lower)) {
        tree.SplitLink = nullptr;
      } else if (lower == "a" && node->Find("href")) {
        tree.SplitLink = node;
      }
      if (node->Parent == tree.Reopened && SplitsLinks(lower)) {
        if (!IsAtLinkEnd(context)) ++tree.CutLinks;
        node = node->Parent;
        ++levels;
      }
      tree.Open = node->Parent;
      tree.Depth -= levels;
    });
  }
  static void Characters(void* data, const xmlChar* text, int length) {
    Guard(data, [&](HtmlTree& tree) {
      tree.SplitLink = nullptr;
      HtmlNode* last = tree.Open->Last;
      if (!last || !last->Name.empty()) last = tree.Add(tree.Open);
      last->Text.append(Chars(text), static_cast<std::size_t>(length));
    });
  }
};

ENGSTATUS HtmlTree::Read(std::string_view html) {
  static std::once_flag once;
  std::call_once(once, xmlInitParser);
  constexpr std::size_t kMost = 0x7FFFFFFF;
  if (html.size() > kMost) return ENG_ERR_MEMORY;
  const bool wide = html.starts_with("\xFF\xFE") || html.starts_with("\xFE\xFF");
  std::string cleaned;
  if (!wide && NeedsCleaning(html)) html = cleaned = Cleaned(html, &Invalid);
  std::string kept;
  if (!wide) html = WithoutSurplus(html, &kept, &CutTags);
  if (html.empty()) return ENG_OK;
  htmlSAXHandler handler = {};
  handler.startElement = Events::Start;
  handler.endElement = Events::End;
  handler.characters = Events::Characters;
  handler.ignorableWhitespace = Events::Characters;
  handler.cdataBlock = Events::Characters;
  const Context context(htmlNewParserCtxt());
  if (!context) return ENG_ERR_MEMORY;
  *context->sax = handler;
  context->userData = context.get();
  context->_private = this;
  int options = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET |
                HTML_PARSE_NODEFDTD | HTML_PARSE_NOIMPLIED | HTML_PARSE_COMPACT;
  const Encoding encoding = wide ? Encoding::kOther : EncodingOf(html);
  if (encoding == Encoding::kUtf8) options |= HTML_PARSE_IGNORE_ENC;
  htmlCtxtReadMemory(context.get(), html.data(), static_cast<int>(html.size()), nullptr,
                     encoding == Encoding::kUtf8 ? "UTF-8" : nullptr, options);
  if (context->myDoc) xmlFreeDoc(std::exchange(context->myDoc, nullptr));
  return Failure;
}

}  // namespace conv
