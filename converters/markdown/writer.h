// Builds libcmark's tree from what a walker tells, and has it written as CommonMark.
#ifndef QUILLON_CONVERTERS_MARKDOWN_WRITER_H
#define QUILLON_CONVERTERS_MARKDOWN_WRITER_H

#include <cmark.h>

#include <memory>
#include <string>
#include <vector>

#include "converters/html/writer.h"
#include "converters/parts/walker.h"

namespace conv {

struct NodeFree {
  void operator()(cmark_node* node) const { cmark_node_free(node); }
};
using Tree = std::unique_ptr<cmark_node, NodeFree>;

class MarkdownWriter : public Sink {
 public:
  explicit MarkdownWriter(Report& report);

  // Behind the walk.
  std::string Markdown();

  void SetBase(FontID font) override;
  void Open(const BlockInfo& block) override;
  void Close(const BlockInfo& block) override;
  void OpenFormat(const Format& format) override;
  void CloseFormat(const Format& format) override;
  void Text(std::string_view text) override;
  void LineBreak() override;
  void Picture(std::string_view address, std::string_view title, std::string_view text) override;
  void Anchor(std::string_view name) override;

 private:
  // A pipe table is written cell by cell, each by itself.
  struct PipeTable {
    bool IsOpen = false;
    bool IsHeading = false;
    std::string Text;
    std::string Dashes;
  };

  cmark_node* Top() { return Stack.back(); }
  cmark_node* Add(cmark_node_type type);
  void Push(cmark_node_type type) { Stack.push_back(Add(type)); }
  void Pop();
  void AddLiteral(cmark_node_type type, const std::string& literal);
  void AddText(std::string text);
  void OpenText(const BlockInfo& block);
  void CloseText();
  bool BeginsLine();
  void OpenCell(const BlockInfo& block);
  void CloseCell();
  void OpenTable(const BlockInfo& block);
  void CloseTable(const BlockInfo& block);
  std::string Render(cmark_node* node);

  Report& Losses;
  Tree Document;
  std::vector<cmark_node*> Stack;
  bool InHeading = false;
  bool IsCodeBlock = false;
  bool InCode = false;
  std::string Literal;     // of the code block or code span that is open
  unsigned HtmlDepth = 0;  // in a table that pipes cannot show: blocks open in it
  HtmlWriter Html;
  PipeTable Table;
  Tree Cell;
};

}  // namespace conv

#endif
