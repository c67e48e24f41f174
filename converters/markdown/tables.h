// Pipe tables, read from the lines of a Markdown text.
#ifndef QUILLON_CONVERTERS_MARKDOWN_TABLES_H
#define QUILLON_CONVERTERS_MARKDOWN_TABLES_H

#include <string>
#include <string_view>
#include <vector>

#include "converters/parts/records.h"

namespace conv {

struct PipeTable {
  std::vector<Justify> Columns;                // alignment of each
  std::vector<std::vector<std::string>> Rows;  // the heading's first; each as long as the table is wide
};

class SourceLines {
 public:
  explicit SourceLines(std::string_view source);
  // Lines count from 1. False unless all of them are a table: a heading, a row of dashes as wide, and rows.
  bool ReadTable(int first, int last, PipeTable* table) const;

 private:
  std::string_view Line(int number) const;

  std::string_view Source;
  std::vector<std::size_t> Starts;  // with one behind the last
};

}  // namespace conv

#endif
