#include "converters/markdown/emphasis.h"

#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace conv {

namespace {

bool IsEmphasis(cmark_node* node) {
  const cmark_node_type type = cmark_node_get_type(node);
  return type == CMARK_NODE_EMPH || type == CMARK_NODE_STRONG;
}

bool IsInline(cmark_node* node) {
  const cmark_node_type type = cmark_node_get_type(node);
  return type >= CMARK_NODE_FIRST_INLINE && type <= CMARK_NODE_LAST_INLINE;
}

cmark_node* NewLiteral(cmark_node_type type, const std::string& text) {
  cmark_node* node = cmark_node_new(type);
  if (!node || !cmark_node_set_literal(node, text.c_str())) throw std::bad_alloc();
  return node;
}

bool IsText(cmark_node* node) { return node && cmark_node_get_type(node) == CMARK_NODE_TEXT; }

// Takes spaces off the text at an end of the node, to stand beside it.
void MoveSpaces(cmark_node* node, bool front) {
  cmark_node* text = front ? cmark_node_first_child(node) : cmark_node_last_child(node);
  if (!IsText(text)) return;
  std::string literal = cmark_node_get_literal(text);
  const std::size_t edge = front ? literal.find_first_not_of(" \t") : literal.find_last_not_of(" \t");
  if (edge == (front ? 0 : literal.size() - 1)) return;
  if (edge == std::string::npos) {
    literal.clear();
  } else {
    literal = front ? literal.substr(edge) : literal.substr(0, edge + 1);
  }
  cmark_node* space = NewLiteral(CMARK_NODE_TEXT, " ");
  front ? cmark_node_insert_before(node, space) : cmark_node_insert_after(node, space);
  cmark_node_set_literal(text, literal.c_str());
  if (!literal.empty()) return;
  cmark_node_unlink(text);
  cmark_node_free(text);
}

enum class Side { kSpace, kPunctuation, kOther, kDelimiter };

Side SideOf(char c) {
  constexpr std::string_view kPunctuation = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";
  if (c == ' ' || c == '\t' || c == '\n') return Side::kSpace;
  return kPunctuation.find(c) != std::string_view::npos ? Side::kPunctuation : Side::kOther;
}

// What stands at the outer end of a node that is written before (behind) something.
Side EndOf(cmark_node* node, bool front) {
  switch (cmark_node_get_type(node)) {
    case CMARK_NODE_TEXT: {
      const std::string_view text = cmark_node_get_literal(node);
      return text.empty() ? Side::kOther : SideOf(front ? text.front() : text.back());
    }
    case CMARK_NODE_SOFTBREAK:
    case CMARK_NODE_LINEBREAK:
      return Side::kSpace;
    case CMARK_NODE_EMPH:
    case CMARK_NODE_STRONG:
      return Side::kDelimiter;
    default:
      return Side::kPunctuation;
  }
}

// What stands next to the node, outside.
Side Beside(cmark_node* node, bool before) {
  for (; node && IsInline(node); node = cmark_node_parent(node)) {
    cmark_node* next = before ? cmark_node_previous(node) : cmark_node_next(node);
    if (next) return EndOf(next, !before);
    cmark_node* parent = cmark_node_parent(node);
    if (parent && IsInline(parent)) return IsEmphasis(parent) ? Side::kPunctuation : Side::kPunctuation;
  }
  return Side::kSpace;
}

// The same behind all delimiters that stand there.
Side EndWithin(cmark_node* node, bool front) {
  while (node && IsEmphasis(node)) node = front ? cmark_node_first_child(node) : cmark_node_last_child(node);
  return node ? EndOf(node, front) : Side::kOther;
}

bool IsReadable(cmark_node* node) {
  cmark_node* first = cmark_node_first_child(node);
  cmark_node* last = cmark_node_last_child(node);
  const Side before = Beside(node, true);
  const Side behind = Beside(node, false);
  const Side begin = EndOf(first, true);
  const Side end = EndOf(last, false);
  if (before == Side::kDelimiter || behind == Side::kDelimiter) return false;
  if (begin == Side::kSpace || end == Side::kSpace) return false;
  if (EndWithin(first, true) == Side::kPunctuation && before == Side::kOther) return false;
  if (EndWithin(last, false) == Side::kPunctuation && behind == Side::kOther) return false;
  // The same delimiters in a row are read another way.
  const bool doubled = (begin == Side::kDelimiter || end == Side::kDelimiter) && before != Side::kSpace;
  return !doubled;
}

void ReplaceByTags(cmark_node* node) {
  const std::string tag = cmark_node_get_type(node) == CMARK_NODE_EMPH ? "em>" : "strong>";
  cmark_node_insert_before(node, NewLiteral(CMARK_NODE_HTML_INLINE, "<" + tag));
  while (cmark_node* child = cmark_node_first_child(node)) {
    cmark_node_unlink(child);
    cmark_node_insert_before(node, child);
  }
  cmark_node_insert_before(node, NewLiteral(CMARK_NODE_HTML_INLINE, "</" + tag));
  cmark_node_unlink(node);
  cmark_node_free(node);
}

}  // namespace

void MakeEmphasisReadable(cmark_node* document) {
  std::vector<cmark_node*> nodes;
  cmark_iter* iterator = cmark_iter_new(document);
  for (cmark_event_type event = cmark_iter_next(iterator); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(iterator)) {
    cmark_node* node = cmark_iter_get_node(iterator);
    if (event == CMARK_EVENT_EXIT && IsEmphasis(node)) nodes.push_back(node);
  }
  cmark_iter_free(iterator);
  cmark_consolidate_text_nodes(document);
  for (cmark_node*& node : nodes) {
    MoveSpaces(node, true);
    MoveSpaces(node, false);
    if (cmark_node_first_child(node)) continue;
    cmark_node_unlink(node);
    cmark_node_free(node);
    node = nullptr;
  }
  for (cmark_node* node : nodes) {
    if (node && !IsReadable(node)) ReplaceByTags(node);
  }
}

}  // namespace conv
