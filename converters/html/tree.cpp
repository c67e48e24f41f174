#include "converters/html/tree.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
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

// Name of a paragraph that the parser put around text that stood by itself: it breaks nothing.
constexpr char kImplied[] = "#run";

// A tag that is there has been read up to its end.
bool IsImplied(const htmlParserCtxt& context) {
  const xmlChar* at = context.input ? context.input->cur : nullptr;
  if (!at) return false;
  return xmlStrEqual(context.name, reinterpret_cast<const xmlChar*>("p")) && *at != '>' && *at != '/';
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
      tree.Open = tree.Add(tree.Open);
      tree.Open->Name = Lower(Chars(name));
      if (!attributes && IsImplied(*static_cast<htmlParserCtxt*>(data))) tree.Open->Name = kImplied;
      for (; attributes && *attributes; attributes += 2) {
        tree.Open->Attributes.emplace_back(Lower(Chars(attributes[0])), attributes[1] ? Chars(attributes[1]) : "");
      }
    });
  }
  static void End(void* data, const xmlChar* name) {
    Guard(data, [&](HtmlTree& tree) {
      HtmlNode* node = tree.Open;
      const std::string lower = Lower(Chars(name));
      const auto isIt = [&] { return node->Name == lower || (lower == "p" && node->Name == kImplied); };
      unsigned levels = 1;
      for (; node->Parent && !isIt(); node = node->Parent) ++levels;
      if (!node->Parent) return;
      tree.Open = node->Parent;
      tree.Depth -= levels;
    });
  }
  static void Characters(void* data, const xmlChar* text, int length) {
    Guard(data, [&](HtmlTree& tree) {
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
  if (!wide && html.find('\0') != std::string_view::npos) {
    cleaned = html;
    std::ranges::replace(cleaned, '\0', '?');
    html = cleaned;
    Invalid = true;
  }
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
