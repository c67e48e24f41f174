// HTML of a Markdown text as libcmark writes it, without what a store cannot hold; what that is is counted.
#ifndef QUILLON_TESTS_CONVERTERS_REFERENCE_H
#define QUILLON_TESTS_CONVERTERS_REFERENCE_H

#include <cmark.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace converter_test {

struct Reference {
  std::string Html;
  // By the first words of the report's line.
  std::map<std::string, unsigned> Losses;
};

inline bool IsEmphasis(cmark_node* node) {
  return cmark_node_get_type(node) == CMARK_NODE_EMPH || cmark_node_get_type(node) == CMARK_NODE_STRONG;
}

inline bool IsWithinItsKind(cmark_node* node) {
  for (cmark_node* around = cmark_node_parent(node); around; around = cmark_node_parent(around)) {
    if (cmark_node_get_type(around) == cmark_node_get_type(node)) return true;
  }
  return false;
}

inline bool IsInPicture(cmark_node* node) {
  for (; node; node = cmark_node_parent(node)) {
    if (cmark_node_get_type(node) == CMARK_NODE_IMAGE) return true;
  }
  return false;
}

// libcmark leaves out addresses that run code too.
inline bool IsLinkWithoutAddress(cmark_node* node) {
  if (cmark_node_get_type(node) != CMARK_NODE_LINK || cmark_node_get_url(node)[0] == '\0') return false;
  const std::unique_ptr<char, void (*)(void*)> html(cmark_render_html(node, CMARK_OPT_DEFAULT), std::free);
  return std::string(html.get()).starts_with("<a href=\"\"");
}

inline void Unwrap(cmark_node* node) {
  while (cmark_node* child = cmark_node_first_child(node)) {
    cmark_node_unlink(child);
    cmark_node_insert_before(node, child);
  }
  cmark_node_unlink(node);
  cmark_node_free(node);
}

inline Reference ReferenceOf(const std::string& markdown) {
  constexpr int kOptions = CMARK_OPT_VALIDATE_UTF8 | CMARK_OPT_NOBREAKS;
  const std::unique_ptr<cmark_node, void (*)(cmark_node*)> tree(
      cmark_parse_document(markdown.data(), markdown.size(), kOptions), cmark_node_free);
  Reference reference;
  std::vector<cmark_node*> gone, unwrapped;
  cmark_iter* iterator = cmark_iter_new(tree.get());
  while (cmark_iter_next(iterator) != CMARK_EVENT_DONE) {
    cmark_node* node = cmark_iter_get_node(iterator);
    if (cmark_iter_get_event_type(iterator) == CMARK_EVENT_EXIT || IsInPicture(node)) continue;
    const cmark_node_type type = cmark_node_get_type(node);
    if (IsLinkWithoutAddress(node)) ++reference.Losses["addresses left out"];
    if (type == CMARK_NODE_SOFTBREAK) ++reference.Losses["line ends within paragraphs became spaces"];
    if (type == CMARK_NODE_HTML_BLOCK || type == CMARK_NODE_HTML_INLINE) gone.push_back(node);
    if (IsEmphasis(node) && IsWithinItsKind(node)) unwrapped.push_back(node);
  }
  cmark_iter_free(iterator);
  if (!gone.empty()) reference.Losses["raw HTML left out"] = static_cast<unsigned>(gone.size());
  if (!unwrapped.empty()) {
    reference.Losses["emphasis within emphasis of the same kind became one"] = static_cast<unsigned>(unwrapped.size());
  }
  for (cmark_node* node : unwrapped) Unwrap(node);
  for (cmark_node* node : gone) {
    cmark_node* parent = cmark_node_parent(node);
    cmark_node_unlink(node);
    cmark_node_free(node);
    // A paragraph that held nothing else goes too.
    if (cmark_node_get_type(parent) == CMARK_NODE_PARAGRAPH && !cmark_node_first_child(parent)) {
      cmark_node_unlink(parent);
      cmark_node_free(parent);
    }
  }
  const std::unique_ptr<char, void (*)(void*)> html(cmark_render_html(tree.get(), kOptions), std::free);
  reference.Html = html.get();
  return reference;
}

}  // namespace converter_test

#endif
