// Where the columns of a table stand, and what the records of its cells say of it.
#ifndef QUILLON_VQ_RICHTEXT_TABLELAYOUT_H
#define QUILLON_VQ_RICHTEXT_TABLELAYOUT_H

#include <vector>

#include "vq/richtext/vqrttabl.h"

namespace vq {

// A plan in twips: read from a table, changed, checked, and only then written into the cells.
class TableLayout {
 public:
  // Columns that came in (Count above 0) or went (below 0) at a position.
  struct Change {
    long Position = 0;
    long Count = 0;
  };

  static TableLayout OfNewTable(const CDTABLEBEGIN& begin, unsigned long columns);
  // VQERR_RT_INVALID for a table whose cells are out of order, or a column of which has none, and for one without its
  // end.
  [[nodiscard]] static VQSTATUS Read(const VQTableBody& table, TableLayout* layout);

  static long ColumnSpacingOf(const CDTABLEBEGIN& begin);
  static long RowSpacingOf(const CDTABLEBEGIN& begin);
  static VQTABLEBORDERSTYLE BorderStyleOf(const CDTABLEBEGIN& begin);

  CDTABLEBEGIN& GetBegin() { return Begin; }
  const CDTABLEBEGIN& GetBegin() const { return Begin; }
  bool IsAutomatic() const { return (Begin.Flags & TABLEFLAG_AUTOMATIC_WIDTH) != 0; }
  long GetSpacing() const { return ColumnSpacingOf(Begin); }
  std::size_t GetCount() const { return Boxes.size(); }
  long WidthOf(std::size_t column) const { return Boxes[column].Right - Boxes[column].Left; }
  // What the column takes of the table.
  long RoomOf(std::size_t column) const { return WidthOf(column) + 2 * GetSpacing(); }
  long GetTableWidth() const;

  // All columns but one (-1: all) become wider by the factor.
  void Scale(double factor, long butColumn = -1);
  void SetWidth(std::size_t column, long width);
  // Columns as wide as one; columns that go.
  void Insert(std::size_t position, std::size_t count, long width);
  void Remove(std::size_t position, std::size_t count);
  void Move(long distance);
  // Spacing is the begin record's to keep; the table's outer edges stay.
  void SetSpacing(long spacing);

  // VQERR_TABLE_MARGINS, VQERR_COLUMN_WIDTH_SMALL for columns whose width is no longer that of `before`,
  // VQERR_OUT_OF_RANGE for a margin that its record cannot hold.
  [[nodiscard]] VQSTATUS Check(const TableLayout& before, Change change) const;

  // Of a cell that takes these columns.
  VQTableCellBody::Place PlaceOf(std::int32_t row, std::size_t first, std::size_t last) const;
  // The definition of a column, with its margins.
  CDPABDEFINITION DefinitionOf(std::size_t column, std::uint16_t pabid) const;
  void SetMargins(std::size_t first, std::size_t last, CDPABDEFINITION* record) const;

  // The last column that one of a table's cells takes.
  std::size_t LastOf(const VQTableBody::CellList& cells, std::size_t at) const;

  // Where a cell's column span told how many columns the cell takes, it tells the new number.
  [[nodiscard]] static VQSTATUS SetSpan(VQTableCellBody& cell, std::int32_t before, std::int32_t after);

  // Writes the plan into all cells, other than those that are to come and those that have gone, and their definitions.
  // Column spans follow.
  [[nodiscard]] VQSTATUS ApplyTo(const VQTableBody::CellList& cells, const TableLayout& before, Change change) const;

 private:
  struct Box {
    long Left;
    long Right;
  };

  // Sets the columns' places by their widths, from the first one's left.
  void Place(long left, const std::vector<long>& widths);
  std::vector<long> Widths() const;
  // Whether each column takes as much of the table as there: fractional widths, which a client may have set, stay then.
  bool HasSharesOf(const TableLayout& other) const;
  [[nodiscard]] VQSTATUS SetCellMargins(VQTableCellBody& cell, const VQTableCellBody::Place& place,
                                        std::size_t last) const;

  CDTABLEBEGIN Begin{};
  std::vector<Box> Boxes;
};

}  // namespace vq

#endif
