#include "converters/html/tree.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "converters/html/css.h"
#include "converters/html/source.h"
#include "converters/html/tags.h"
#include "engine/status.h"

namespace conv {

namespace {

// The parser looks through all open elements at each end tag.
constexpr unsigned kDeepest = 1000;

struct ContextFree {
  void operator()(htmlParserCtxt* context) const { htmlFreeParserCtxt(context); }
};
using Context = std::unique_ptr<htmlParserCtxt, ContextFree>;

const char* Chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

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
      const std::string lower = NameOfMarked(Lower(Chars(name)));
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
      const std::string tag = Lower(Chars(name));
      const std::string lower = NameOfMarked(tag);
      if (IsVoid(lower)) return;
      const auto isIt = [&] { return node->Name == lower || (lower == "p" && node->Name == kImplied); };
      unsigned levels = 1;
      for (; node->Parent && !isIt(); node = node->Parent) {
        if (IsListed(lower) && node->Is("dl")) return;  // closed by the one behind it
        ++levels;
      }
      if (!node->Parent) return;
      const auto& context = *static_cast<htmlParserCtxt*>(data);
      if (!IsImpliedEnd(context, tag)) {
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
  std::string decoded, repaired, cleaned, kept, marked;
  const bool wide = DecodeWide(html, &decoded, &Invalid);
  if (wide) html = decoded;
  Encoding encoding = wide ? Encoding::kUtf8 : EncodingOf(html);
  if (encoding == Encoding::kDamagedUtf8) {
    html = repaired = Repaired(html, &Invalid);
    encoding = Encoding::kUtf8;
  }
  if (NeedsCleaning(html)) html = cleaned = Cleaned(html, &Invalid);
  html = MarkFormats(WithoutSurplus(html, &kept, &CutTags), &marked);
  constexpr std::size_t kMost = 0x7FFFFFFF;
  if (html.size() > kMost) return ENG_ERR_MEMORY;
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
  if (encoding == Encoding::kUtf8) options |= HTML_PARSE_IGNORE_ENC;
  htmlCtxtReadMemory(context.get(), html.data(), static_cast<int>(html.size()), nullptr,
                     encoding == Encoding::kUtf8 ? "UTF-8" : nullptr, options);
  if (context->myDoc) xmlFreeDoc(std::exchange(context->myDoc, nullptr));
  return Failure;
}

}  // namespace conv
