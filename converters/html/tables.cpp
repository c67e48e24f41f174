// The HTML reader's tables: rows and spans are laid out on a grid before anything is written.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "converters/html/css.h"
#include "converters/html/reader.h"

namespace conv {

namespace {

constexpr double kPixelsOfPoint = 1 / 0.75;
constexpr unsigned kWidestBorder = 10;

unsigned SpanOf(const HtmlNode& node, std::string_view attribute, unsigned most) {
  const int span = std::atoi(std::string(node.Get(attribute)).c_str());
  return static_cast<unsigned>(std::clamp(span, 1, static_cast<int>(most)));
}

// "1px solid black": type and width of one side.
void ReadBorder(std::string_view value, unsigned* type, unsigned* width) {
  *type = 1;
  *width = 1;
  while (!value.empty()) {
    const std::string_view word = value.substr(0, value.find(' '));
    value.remove_prefix(std::min(value.size(), word.size() + 1));
    if (word == "none" || word == "hidden") *type = 0;
    if (word == "double") *type = 2;
    if (word == "medium") *width = 3;
    if (word == "thick") *width = 5;
    if (word.empty() || (word[0] != '.' && (word[0] < '0' || word[0] > '9'))) continue;
    if (const auto points = LengthFromCss(word, 10)) {
      *width = std::min(static_cast<unsigned>(std::lround(std::max(*points, 0.0) * kPixelsOfPoint)), kWidestBorder);
    }
  }
  if (*width == 0) *type = 0;
  if (*type == 0) *width = 0;
}

void SetSide(unsigned side, std::string_view value, Cell* cell) {
  unsigned type = 0, width = 0;
  ReadBorder(value, &type, &width);
  cell->Border = static_cast<std::uint8_t>((cell->Border & ~(3U << 2 * side)) | type << 2 * side);
  cell->BorderWidth = static_cast<std::uint16_t>((cell->BorderWidth & ~(15U << 4 * side)) | width << 4 * side);
}

}  // namespace

Cell HtmlReader::FormatOf(const HtmlNode& table, const HtmlNode* row, const HtmlNode& node) {
  Cell cell;
  const std::string* border = table.Find("border");
  if (!border || *border == "0") cell.Border = 0, cell.BorderWidth = 0;
  cell.Heading = node.Is("th");
  for (const HtmlNode* around : {&table, row, &node}) {
    if (!around) continue;
    const auto background = [&](std::string_view value) {
      const auto color = ColorFromCss(value);
      if (!color) return;
      bool exact = false;
      cell.Background = IndexFromColor(*color, &exact);
      cell.HasBackground = true;
      if (!exact) Losses.Add(Loss::kColor, Line, value);
    };
    if (const std::string* color = around->Find("bgcolor")) background(*color);
    const std::string* css = around->Find("style");
    if (!css) continue;
    ReadCss(*css, [&](std::string_view name, std::string_view value) {
      constexpr std::string_view kSides[] = {"border-left", "border-right", "border-top", "border-bottom"};
      if (name == "background" || name == "background-color") background(value);
      if (around != &node) return;
      for (unsigned side = 0; side < 4; ++side) {
        if (name == "border" || name == kSides[side]) SetSide(side, value, &cell);
      }
    });
  }
  return cell;
}

// "25%", "100" and "100px".
HtmlReader::Width HtmlReader::WidthOf(const HtmlNode& node) {
  std::string text(node.Get("width"));
  if (const std::string* css = node.Find("style")) {
    ReadCss(*css, [&](std::string_view name, std::string_view value) {
      if (name == "width") text = value;
    });
  }
  if (!text.empty() && text.find_first_not_of("0123456789.") == std::string::npos) text += "px";
  const auto value = LengthFromCss(text, 100);
  if (!value || *value <= 0) return {};
  return {*value, text.back() == '%'};
}

void HtmlReader::PlaceColumn(const HtmlNode& column, Grid* grid) {
  const unsigned span = SpanOf(column, "span", static_cast<unsigned>(kMostColumns));
  for (unsigned i = 0; i < span && grid->Widths.size() < kMostColumns; ++i) grid->Widths.push_back(WidthOf(column));
}

// Columns that say nothing share what percents leave, or are as wide as the others are on the whole.
std::vector<unsigned> HtmlReader::WidthsOf(const Grid& grid) {
  std::vector<Width> widths = grid.Widths;
  widths.resize(grid.Columns);
  const bool percents = std::ranges::any_of(widths, &Width::IsPercent);
  double sum = 0;
  std::size_t count = 0;
  for (Width& width : widths) {
    if (width.IsPercent != percents) width.Value = 0;
    sum += width.Value;
    if (width.Value > 0) ++count;
  }
  if (count == 0) return std::vector<unsigned>(grid.Columns, 1);
  const auto others = static_cast<double>(std::max<std::size_t>(grid.Columns - count, 1));
  const double rest = percents ? std::max(100 - sum, 1.0) / others : sum / static_cast<double>(count);
  std::vector<unsigned> parts;
  for (const Width& width : widths) {
    parts.push_back(static_cast<unsigned>(std::lround(std::min(width.Value > 0 ? width.Value : rest, 10000.0) * 10)));
  }
  return parts;
}

// A row's cells go where no cell of an earlier row reaches down to.
void HtmlReader::PlaceRow(const HtmlNode& row, Grid* grid) {
  const std::size_t index = grid->RowNodes.size();
  grid->RowNodes.push_back(&row);
  CheckStyle(row, Place::kCell);
  grid->Surplus.emplace_back();
  if (grid->Rows.size() <= index) grid->Rows.resize(index + 1);
  std::size_t column = 0;
  for (const HtmlNode* node = row.First; node; node = node->Next) {
    if (!node->Is("td") && !node->Is("th")) continue;
    const auto taken = [&](std::size_t at) {
      return at < grid->Rows[index].size() && (grid->Rows[index][at].Node || grid->Rows[index][at].Covered);
    };
    while (column < kMostColumns && taken(column)) ++column;
    if (column >= kMostColumns) {
      grid->Surplus.back().push_back(node);
      Losses.Add(Loss::kTableColumns, Line);
      continue;
    }
    unsigned wide = SpanOf(*node, "colspan", static_cast<unsigned>(kMostColumns - column));
    for (unsigned i = 1; i < wide; ++i) {
      if (taken(column + i)) wide = i;
    }
    // Rows are cut into tables of so many.
    const auto left = static_cast<unsigned>(kMostRows - index % kMostRows);
    const unsigned high = SpanOf(*node, "rowspan", left);
    if (grid->Rows.size() < index + high) grid->Rows.resize(index + high);
    for (unsigned down = 0; down < high; ++down) {
      GridRow& cells = grid->Rows[index + down];
      if (cells.size() < column + wide) cells.resize(column + wide);
      for (unsigned i = 0; i < wide; ++i) cells[column + i].Covered = true;
    }
    grid->Rows[index][column] = {node, false, high, wide};
    if (grid->Widths.size() < column + 1) grid->Widths.resize(column + 1);
    if (wide == 1 && grid->Widths[column].Value == 0) grid->Widths[column] = WidthOf(*node);
    grid->Columns = std::max(grid->Columns, column + wide);
    column += wide;
  }
}

void HtmlReader::PlaceRows(const HtmlNode& part, Grid* grid) {
  for (const HtmlNode* row = part.First; row; row = row->Next) {
    if (row->Is("tr")) PlaceRow(*row, grid);
  }
}

HtmlReader::Grid HtmlReader::GridOf(const HtmlNode& table) {
  Grid grid;
  for (const HtmlNode* part = table.First; part; part = part->Next) {
    if (part->Is("caption")) grid.Caption = part;
    if (part->Is("col")) PlaceColumn(*part, &grid);
    if (part->Is("colgroup") && !part->First) PlaceColumn(*part, &grid);
    for (const HtmlNode* column = part->Is("colgroup") ? part->First : nullptr; column; column = column->Next) {
      if (column->Is("col")) PlaceColumn(*column, &grid);
    }
    if (part->Is("tr")) PlaceRow(*part, &grid);
    if (part->Is("thead") || part->Is("tbody")) PlaceRows(*part, &grid);
  }
  // The foot is shown last, wherever it stands.
  for (const HtmlNode* part = table.First; part; part = part->Next) {
    if (part->Is("tfoot")) PlaceRows(*part, &grid);
  }
  // A span may reach below the last row.
  grid.Rows.resize(grid.RowNodes.size());
  return grid;
}

void HtmlReader::Table(const HtmlNode& table) {
  const Grid grid = GridOf(table);
  const bool hidden = std::exchange(Hidden, Hidden || IsHidden(table));
  if (grid.Caption) {
    const std::uint16_t justify = std::exchange(Justify, kJustifyCenter);
    Walk(grid.Caption);
    EndParagraph();
    Justify = justify;
  }
  if (grid.Columns > 0) {
    WriteRows(table, grid);
  } else {
    // Something without a row is its content.
    if (!grid.Caption) Walk(&table);
    EndParagraph();
  }
  Hidden = hidden;
}

void HtmlReader::WriteRows(const HtmlNode& table, const Grid& grid) {
  const auto saved = std::tuple(Justify, Indent, FirstLine, Tight, Hidden, Heading);
  if (grid.Rows.size() > kMostRows) Losses.Add(Loss::kTableRows, Line);
  for (std::size_t row = 0; row < grid.Rows.size(); ++row) {
    if (row % kMostRows == 0) {
      if (row > 0) Out.Close();
      Out.OpenTable(WidthsOf(grid));
    }
    for (std::size_t column = 0; column < grid.Columns; ++column) WriteCell(table, grid, row, column);
  }
  Out.Close();
  ++Paragraphs;
  std::tie(Justify, Indent, FirstLine, Tight, Hidden, Heading) = saved;
}

void HtmlReader::WriteCell(const HtmlNode& table, const Grid& grid, std::size_t row, std::size_t column) {
  const GridCell place = column < grid.Rows[row].size() ? grid.Rows[row][column] : GridCell{};
  const HtmlNode* node = place.Node;
  const HtmlNode& like = node ? *node : table;
  Cell cell = FormatOf(table, grid.RowNodes[row], like);
  if (!node) cell.Heading = false;
  cell.RowSpan = std::min<unsigned>(place.RowSpan, static_cast<unsigned>(grid.Rows.size() - row));
  cell.ColumnSpan = place.ColumnSpan;
  Out.OpenCell(static_cast<unsigned>(row % kMostRows), static_cast<unsigned>(column), cell);
  const bool hidden = Hidden;
  Justify = kJustifyLeft;
  Indent = FirstLine = 0;
  Tight = true;
  Heading = 0;
  const auto content = [&](const HtmlNode& from) {
    BlockStyle(*grid.RowNodes[row]);
    BlockStyle(from);
    CheckStyle(from, Place::kCell);
    NoteAnchor(from);
    std::vector<unsigned> formats;
    for (const HtmlNode* around : {&table, grid.RowNodes[row], &from}) {
      FontChange change;
      if (const std::string* css = around->Find("style")) StyleChange(*css, &change);
      if (!change.IsEmpty()) formats.push_back(Runs.Open(change));
    }
    // Whoever links around a table links in its cells.
    const unsigned before = Paragraphs;
    Walk(&from);
    if (Paragraphs == before) BeginParagraph();
    EndParagraph();
    for (unsigned format : formats) Runs.Close(format);
  };
  if (node) content(*node);
  if (column + 1 == grid.Columns) {
    for (const HtmlNode* more : grid.Surplus[row]) content(*more);
  }
  Out.Close();
  Hidden = hidden;
}

}  // namespace conv
