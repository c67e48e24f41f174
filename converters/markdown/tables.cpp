#include "converters/markdown/tables.h"

#include "converters/html/css.h"

namespace conv {

namespace {

// Cells of a row, trimmed; a pipe behind a backslash is text.
std::vector<std::string> CellsOf(std::string_view line) {
  line = Trim(line);
  if (line.starts_with('|')) line.remove_prefix(1);
  std::vector<std::string> cells(1);
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|') {
      cells.back() += line[++i];
    } else if (line[i] == '\\' && i + 1 < line.size()) {
      cells.back().append(line.substr(i++, 2));
    } else if (line[i] == '|') {
      cells.emplace_back();
    } else {
      cells.back() += line[i];
    }
  }
  if (cells.size() > 1 && Trim(cells.back()).empty()) cells.pop_back();
  for (std::string& cell : cells) cell = std::string(Trim(cell));
  return cells;
}

// Empty when the line is no row of dashes.
std::vector<Justify> Alignments(std::string_view line) {
  if (line.find('|') == std::string_view::npos) return {};
  if (line.find_first_not_of("-|: \t\r\n") != std::string_view::npos) return {};
  std::vector<Justify> alignments;
  for (const std::string& cell : CellsOf(line)) {
    const bool left = cell.starts_with(':');
    const bool right = cell.size() > 1 && cell.ends_with(':');
    const std::string_view dashes = std::string_view(cell).substr(left, cell.size() - left - right);
    if (dashes.empty() || dashes.find_first_not_of('-') != std::string_view::npos) return {};
    alignments.push_back(left && right ? kJustifyCenter : right ? kJustifyRight : kJustifyLeft);
  }
  return alignments;
}

}  // namespace

SourceLines::SourceLines(std::string_view source) : Source(source) {
  Starts.push_back(source.starts_with("\xEF\xBB\xBF") ? 3 : 0);  // a byte order mark is no text
  std::size_t feed = source.find('\n');
  std::size_t back = source.find('\r');
  while (feed != back) {  // neither is left: both are npos
    std::size_t& first = feed < back ? feed : back;
    const std::size_t at = first;
    const bool both = source[at] == '\r' && feed == at + 1;
    Starts.push_back(at + (both ? 2 : 1));
    first = source.find(source[at], at + 1);
    if (both) feed = source.find('\n', at + 2);
  }
  Starts.push_back(source.size());
}

std::string_view SourceLines::Line(int number) const {
  const auto index = static_cast<std::size_t>(number);
  if (index < 1 || index >= Starts.size()) return {};
  return Source.substr(Starts[index - 1], Starts[index] - Starts[index - 1]);
}

bool SourceLines::ReadTable(int first, int last, PipeTable* table) const {
  table->Columns = Alignments(Line(first + 1));
  const std::size_t columns = table->Columns.size();
  if (columns == 0) return false;
  table->Rows.push_back(CellsOf(Line(first)));
  if (table->Rows.front().size() != columns) return false;
  for (int line = first + 2; line <= last; ++line) {
    table->Rows.push_back(CellsOf(Line(line)));
    table->Rows.back().resize(columns);
  }
  return true;
}

}  // namespace conv
