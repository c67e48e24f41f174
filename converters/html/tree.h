// An HTML text as a tree, read through libxml2's events.
#ifndef QUILLON_CONVERTERS_HTML_TREE_H
#define QUILLON_CONVERTERS_HTML_TREE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/types.h"

namespace conv {

struct HtmlNode {
  std::string Name;  // in lower case; empty for a text
  std::string Text;
  std::vector<std::pair<std::string, std::string>> Attributes;
  HtmlNode* Parent = nullptr;
  HtmlNode* First = nullptr;
  HtmlNode* Last = nullptr;
  HtmlNode* Next = nullptr;

  bool Is(std::string_view name) const { return Name == name; }
  // Null when there is none.
  const std::string* Find(std::string_view attribute) const;
  std::string_view Get(std::string_view attribute) const;
};

class HtmlTree {
 public:
  HtmlTree() = default;
  ~HtmlTree();
  HtmlTree(const HtmlTree&) = delete;
  HtmlTree& operator=(const HtmlTree&) = delete;

  // UTF-8, or what the text says of itself. Whatever is unclosed or misplaced is read as browsers would.
  // ENG_ERR_TEXT_NESTING for elements too deep in each other; ENG_ERR_MEMORY.
  ENGSTATUS Read(std::string_view html);
  // Holds all; has no name.
  HtmlNode* Root() { return &Top; }
  // Characters that were replaced.
  unsigned CountInvalid() const { return Invalid; }
  // Links that went on behind a table or field set in them.
  unsigned CountCutLinks() const { return CutLinks; }
  // Tags with more than 1,000 attributes: those beyond are left out.
  unsigned CountCutTags() const { return CutTags; }

 private:
  struct Events;

  HtmlNode* Add(HtmlNode* parent);
  void CloseListed();
  void ReopenLink();

  HtmlNode Top;
  std::vector<HtmlNode*> Nodes;
  HtmlNode* Open = &Top;
  HtmlNode* SplitLink = nullptr;  // ended for what begins behind it
  HtmlNode* Reopened = nullptr;   // its continuation, around that
  unsigned CutLinks = 0;
  unsigned CutTags = 0;
  unsigned Depth = 0;
  ENGSTATUS Failure = 0;
  unsigned Invalid = 0;
};

}  // namespace conv

#endif
