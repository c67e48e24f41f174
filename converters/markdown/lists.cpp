#include "converters/markdown/lists.h"

namespace conv {

namespace {

bool IsEmptyItem(cmark_node* item) { return cmark_node_first_child(item) == nullptr; }

// Whether a list can begin on the line behind a paragraph's.
bool InterruptsText(cmark_node* list) {
  const bool numbered = cmark_node_get_list_type(list) == CMARK_ORDERED_LIST;
  if (numbered && cmark_node_get_list_start(list) != 1) return false;
  cmark_node* item = cmark_node_first_child(list);
  return item && !IsEmptyItem(item);
}

// The last line of a paragraph at the end of what the block holds goes on with text on the next line.
bool EndsInText(cmark_node* block) {
  while (block) {
    switch (cmark_node_get_type(block)) {
      case CMARK_NODE_PARAGRAPH:
        return true;
      case CMARK_NODE_LIST:
      case CMARK_NODE_ITEM:
      case CMARK_NODE_BLOCK_QUOTE:
        block = cmark_node_last_child(block);
        break;
      default:
        return false;
    }
  }
  return false;
}

// Whether the block needs an empty line between itself and the one before it.
bool NeedsSpace(cmark_node* block) {
  cmark_node* before = cmark_node_previous(block);
  if (!before) return false;
  const cmark_node_type type = cmark_node_get_type(block);
  if (cmark_node_get_type(before) == CMARK_NODE_HTML_BLOCK) return true;
  // Tables are text too.
  if (type == CMARK_NODE_PARAGRAPH || type == CMARK_NODE_HTML_BLOCK) return EndsInText(before);
  if (cmark_node_get_type(before) != CMARK_NODE_PARAGRAPH) return false;
  if (type == CMARK_NODE_LIST) return !InterruptsText(block);
  // Dashes under a text make a heading of it.
  return type == CMARK_NODE_THEMATIC_BREAK;
}

bool HasCrowdedChildren(cmark_node* node) {
  for (cmark_node* block = cmark_node_first_child(node); block; block = cmark_node_next(block)) {
    if (NeedsSpace(block)) return true;
    // Quotes in items are written as the items are.
    const bool isQuote =
        cmark_node_get_type(node) == CMARK_NODE_ITEM && cmark_node_get_type(block) == CMARK_NODE_BLOCK_QUOTE;
    if (isQuote && HasCrowdedChildren(block)) return true;
  }
  return false;
}

bool IsCrowded(cmark_node* list) {
  for (cmark_node* item = cmark_node_first_child(list); item; item = cmark_node_next(item)) {
    if (HasCrowdedChildren(item)) return true;
  }
  return false;
}

}  // namespace

unsigned MakeListsReadable(cmark_node* document) {
  unsigned loosened = 0;
  cmark_iter* iterator = cmark_iter_new(document);
  for (cmark_event_type event = cmark_iter_next(iterator); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(iterator)) {
    cmark_node* node = cmark_iter_get_node(iterator);
    const bool tight = event == CMARK_EVENT_EXIT && cmark_node_get_type(node) == CMARK_NODE_LIST &&
                       cmark_node_get_list_tight(node) && IsCrowded(node);
    if (!tight) continue;
    cmark_node_set_list_tight(node, 0);
    ++loosened;
  }
  cmark_iter_free(iterator);
  return loosened;
}

}  // namespace conv
