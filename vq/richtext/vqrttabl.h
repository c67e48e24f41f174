// VQTable: a table in a rich text.
//
// In the stream a table is flat: a begin record, then for each cell in row order its record and its content, then an
// end record. In the tree the cells are the table's children and the end is its last one. A cell says itself where it
// stands: its row and column, and the margins of its content box from the page's edge.
//
//   table left  spacing [ cell 0 ] spacing  spacing [ cell 1 ] spacing ...
//
// All rows of a column use one paragraph definition, which the cell of row 0 carries.
#ifndef QUILLON_VQ_RICHTEXT_VQRTTABL_H
#define QUILLON_VQ_RICHTEXT_VQRTTABL_H

#include <vector>

#include "vq/richtext/vqrttabc.h"
#include "vq/richtext/vqunits.h"

namespace vq {
class TableLayout;
}

// How borders are drawn; codes of the store.
enum VQTABLEBORDERSTYLE : int {
  VQTABLEBORDERSTYLE_2 = 2,  // neither of the others
  VQTABLEBORDERSTYLE_4 = 4,
  VQTABLEBORDERSTYLE_8 = 8,
};

// Bits of CDTABLEBEGIN::Flags.
inline constexpr unsigned short TABLEFLAG_AUTOMATIC_WIDTH = 0x0001;
inline constexpr unsigned short TABLEFLAG_V4_SPACING = 0x0002;
inline constexpr unsigned short TABLEFLAG_BORDER_STYLES = 0x000C;

// Twips.
inline constexpr long VQTABLE_DEFAULT_WIDTH = 28800;
inline constexpr long VQTABLE_MAX_FRACTIONAL_WIDTH = 28800;
inline constexpr long VQTABLE_MAX_SPACING = 32760;
inline constexpr long VQTABLE_DEFAULT_COLUMN_SPACING = 40;
inline constexpr long VQTABLE_DEFAULT_ROW_SPACING = 60;
inline constexpr long VQTABLE_MIN_COLUMN_WIDTH = 361;
inline constexpr long VQTABLE_DEFAULT_LEFT_MARGIN = 1440;

// Operations that change rows, columns or widths check first and change nothing when they refuse. They need cells in
// row order, none twice and every column with at least one (VQERR_RT_INVALID), and a reference in each cell that they
// style (VQERR_CELL_PABREFERENCE); cells may be missing, as where one spans others. Lengths are twips here.
class VQ_API VQTableBody : public VQRTContainerBody {
 public:
  VQTableBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // Without a record.
  VQTableBody();

  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
  // VQERR_NOT_A_TABLE for a source of another type.
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  // A table stands between two paragraph records; the text behind it gets a paragraph of its own, and the cursor goes
  // to its start.
  VQSTATUS AdjustNeighbours(int before, int after, VQRTCursor* cursor) override;
  // All refused with VQERR_TABLE_APPEND.
  VQSTATUS Append(const VQString& text, int convertNewlines) override;
  VQSTATUS Append(const VQRichText& richText) override;
  VQSTATUS Append(const VQRTObject& object, VQRTObject* appended) override;
  using VQRTBaseContainerBody::Append;
  // Styles of cells follow their columns: only named ones are found, VQERR_NOT_IMPLEMENTED for others.
  VQSTATUS FindSameParagraphStyle(const VQParagraphStyle& style, VQPABDefinition* definition,
                                  VQRTObject* companion) override;
  int CanInsertType(VQRTTYPE type) const override;

  // Makes an empty table of an object without a record, with identifiers that are new in `text` (null: from 1). Its
  // objects get their index values when it is put into a container, or by Number.
  // VQERR_ZERO_ROWS_COLUMNS, VQERR_ROW_COUNT, VQERR_COLUMN_COUNT.
  [[nodiscard]] VQSTATUS Build(unsigned long rows, unsigned long columns, VQRTContainerBody* text);
  [[nodiscard]] VQSTATUS Number() { return NumberChildren(); }

  std::uint32_t GetRows() const;
  std::uint32_t GetColumns() const;
  // VQERR_ROW_POSITION, VQERR_COLUMN_POSITION; VQERR_RT_INVALID for a cell that is missing.
  [[nodiscard]] VQSTATUS GetCell(unsigned long row, unsigned long column, VQTableCellBody** cell) const;
  // The cell behind one in row order; VQWARN_NOT_FOUND at the end. VQERR_CELL_REQUIRED, VQERR_CELL_OF_OTHER_TABLE.
  [[nodiscard]] VQSTATUS GetNextCell(const VQTableCell& cell, VQTableCell* next) const;

  [[nodiscard]] VQSTATUS InsertRows(unsigned long position, unsigned long count);
  [[nodiscard]] VQSTATUS AppendRows(unsigned long count);
  [[nodiscard]] VQSTATUS DeleteRows(unsigned long position, unsigned long count);
  [[nodiscard]] VQSTATUS InsertColumns(unsigned long position, unsigned long count);
  [[nodiscard]] VQSTATUS AppendColumns(unsigned long count);
  [[nodiscard]] VQSTATUS DeleteColumns(unsigned long position, unsigned long count);

  [[nodiscard]] VQSTATUS ReadBegin(CDTABLEBEGIN* record) const;
  [[nodiscard]] VQSTATUS WriteBegin(const CDTABLEBEGIN& record);
  [[nodiscard]] VQSTATUS ReadEnd(CDTABLEEND* record) const;
  [[nodiscard]] VQSTATUS GetColumnWidth(unsigned long column, long* width) const;
  [[nodiscard]] VQSTATUS GetFractionalColumnWidth(unsigned long column, long* width) const;
  [[nodiscard]] VQSTATUS SetAutomaticWidth(bool on);
  [[nodiscard]] VQSTATUS SetColumnWidth(unsigned long column, long width);
  [[nodiscard]] VQSTATUS SetFractionalColumnWidth(unsigned long column, long width);
  [[nodiscard]] VQSTATUS SetLeftMargin(long margin);
  [[nodiscard]] VQSTATUS SetColumnSpacing(long spacing);
  [[nodiscard]] VQSTATUS SetRowSpacing(long spacing);
  [[nodiscard]] VQSTATUS SetBorderStyle(VQTABLEBORDERSTYLE style);
  [[nodiscard]] VQSTATUS Outline(VQTABLEBORDERTYPE type);
  [[nodiscard]] VQSTATUS Outline(VQTABLEBORDERSTYLE style);
  [[nodiscard]] VQSTATUS SetBackgroundColor(unsigned short color);
  [[nodiscard]] VQSTATUS SetTransparent();

  VQUNITS GetUnits() const { return vq::ResolveUnits(Units); }
  void SetUnits(VQUNITS units) { Units = units; }

  // New identifiers for the paragraph records of all cells: for a table that comes into a rich text, where its own may
  // stand for something else. Each column gets a definition of its own.
  // They are new in `text`. VQERR_OUT_OF_RANGE, and nothing is changed, when it has not so many left.
  [[nodiscard]] VQSTATUS RenewIdentifiers(VQRTContainerBody& text);

  using CellList = std::vector<VQTableCellBody*>;
  // In stream order; good until a cell comes, goes or moves.
  const CellList& GetCells() const;
  // Whether rows ascend in it, and columns in each, none twice.
  bool CellsAreInOrder() const {
    GetCells();
    return InOrder;
  }
  // The first cell behind another in stream order, null at the end.
  static VQTableCellBody* NextCell(const VQRTObjectBody* cell);
  // The first cell of each column, null for a column without any.
  CellList ColumnHeads() const;
  // What the column that the cell heads is styled by.
  static std::uint16_t ColumnPABID(const VQTableCellBody& cell);

 private:
  friend class VQTableCellBody;
  friend class vq::TableLayout;

  void ChildrenChanged() override;
  // A change that knows what the cells are afterwards takes the list with it and gives it back.
  CellList TakeCells();
  void KeepCells(CellList cells, std::uint32_t rows, std::uint32_t columns);
  [[nodiscard]] VQSTATUS AddRows(unsigned long position, unsigned long count);
  [[nodiscard]] VQSTATUS AddColumns(unsigned long position, unsigned long count);
  // A new cell, linked in front of `before` without index values. Null looks and definition: the default, none.
  [[nodiscard]] VQSTATUS AddCell(const VQTableCellBody::Place& place, const CDTABLECELL* looks, std::uint16_t pabid,
                                 const CDPABDEFINITION* definition, VQRTObjectBody* before, CellList* cells);
  [[nodiscard]] VQSTATUS DeleteCells(const CellList& cells);
  [[nodiscard]] VQSTATUS Change(const vq::TableLayout& before, const vq::TableLayout& after);
  // Before a change of widths, columns or spacing: no definition of a column is used outside of it. `more`, which may
  // be null, gets as many new identifiers as it has elements. VQERR_OUT_OF_RANGE without enough of them, and no change.
  [[nodiscard]] VQSTATUS MakeIdentifiersPrivate(const vq::TableLayout& layout, std::vector<std::uint16_t>* more);
  // The definition that a column's first cell carries.
  [[nodiscard]] VQSTATUS MoveColumnDefinition(VQTableCellBody& from, VQTableCellBody& to);
  [[nodiscard]] VQSTATUS MoveColumnDefinitions(const CellList& from, const CellList& to);
  template <typename Edit>
  [[nodiscard]] VQSTATUS EditCells(Edit edit);

  mutable std::uint32_t Rows;
  mutable std::uint32_t Columns;
  VQUNITS Units;
  mutable bool Known;      // Rows, Columns and Cells are those of the children
  mutable bool InOrder;    // rows ascend, and columns in each
  mutable CellList Cells;  // in stream order
};

// Handle on a table. A null handle gives VQERR_OBJECT_NOT_INITIALIZED, one whose table has gone VQERR_OBJECT_CLOSED;
// getters throw. Lengths are in the table's units, which are inches or centimetres by the settings until they are set,
// and are kept in twips. Positions count from 0. A refused operation changes nothing. See the body for what operations
// need of the cells. A paragraph style that is set in a cell, or on text with the table in it, leaves margins as they
// are.
class VQ_API VQTable : public VQRTContainer {
 public:
  VQTable() = default;
  VQTable(const VQRTObject& object);
  VQTable(const VQTable& other) : VQRTContainer(other) {}
  // Alone, of automatic width. Throws VQERR_ROW_COUNT above 255, VQERR_COLUMN_COUNT above 64, VQERR_ZERO_ROWS_COLUMNS.
  VQTable(unsigned long rows, unsigned long columns);
  explicit VQTable(VQTableBody* body);
  using VQRTObject::operator=;
  VQTable& operator=(const VQTable& other) = default;
  VQCLASSID GetClassID() const override;

  // Throws VQERR_ROW_POSITION, VQERR_COLUMN_POSITION, VQERR_RT_INVALID for a cell that a damaged table lacks.
  VQTableCell operator()(unsigned long row, unsigned long column) const;
  // Refused with VQERR_TABLE_APPEND: text goes into cells, or in at a cursor.
  using VQRTContainer::Append;
  // New columns are as wide as the last one, which with automatic width is first made narrower with all others so that
  // the table keeps its width. VQERR_ZERO_ROWS_COLUMNS, VQERR_COLUMN_COUNT_SUM, VQERR_COLUMN_WIDTH_SMALL;
  // VQERR_OUT_OF_RANGE where a margin would pass what the record holds.
  VQSTATUS AppendColumns(unsigned long count);
  // New rows look like row 0. VQERR_ZERO_ROWS_COLUMNS, VQERR_ROW_COUNT_SUM.
  VQSTATUS AppendRows(unsigned long count);
  // Twips to the table's units and back.
  double Convert(unsigned long twips) const;
  unsigned long Convert(const double& value) const;
  // VQERR_ZERO_ROWS_COLUMNS, VQERR_COLUMN_COUNT_SUM (VQERR_ROW_COUNT_SUM) for a range that ends above the limit,
  // VQERR_COLUMN_POSITION (VQERR_ROW_POSITION), VQERR_DELETE_ALL_CELLS, VQERR_CELL_POSITION_COUNT: the last column
  // (row) is never deleted. With automatic width the others share the room. Rows (columns) whose last cell goes, as
  // where another one spans them, go too.
  VQSTATUS DeleteColumns(unsigned long position, unsigned long count);
  VQSTATUS DeleteRows(unsigned long position, unsigned long count);
  int GetAutomaticWidth() const;
  VQTABLEBORDERSTYLE GetBorderStyle() const;
  CDTABLEBEGIN GetCDTableBegin() const;
  CDTABLEEND GetCDTableEnd() const;
  unsigned long GetColumnCount() const;
  double GetColumnSpacing() const;
  // Of the content box; throws VQERR_COLUMN_POSITION.
  double GetColumnWidth(unsigned long column) const;
  double GetFractionalColumnWidth(unsigned long column) const;
  double GetLeftMargin() const;
  // The cell behind one in row order: VQWARN_NOT_FOUND behind the last, VQERR_CELL_REQUIRED, VQERR_CELL_OF_OTHER_TABLE.
  VQSTATUS GetNextCell(const VQTableCell& cell, VQTableCell* next) const;
  unsigned long GetRowCount() const;
  double GetRowSpacing() const;
  VQTableBody* GetTableBody() const { return static_cast<VQTableBody*>(Body); }
  VQUNITS GetUnits() const;
  // In front of the position, which must be one of a column (row): VQERR_COLUMN_POSITION (VQERR_ROW_POSITION). New
  // columns are as wide as the one at the position; a cell that goes on over the place becomes wider instead.
  VQSTATUS InsertColumns(unsigned long position, unsigned long count);
  VQSTATUS InsertRows(unsigned long position, unsigned long count);
  // Borders around the table and nowhere else.
  VQSTATUS Outline(VQTABLEBORDERTYPE type);
  // Sets the style and takes the width off all inner borders.
  VQSTATUS Outline(VQTABLEBORDERSTYLE style);
  // With automatic width the table keeps its width when columns change, and each column has a fractional width: its
  // share of 20 inches.
  VQSTATUS SetAutomaticWidth(const int on);
  // Of all cells.
  VQSTATUS SetBackgroundColor(unsigned short color);
  VQSTATUS SetTransparent();
  VQSTATUS SetBorderStyle(VQTABLEBORDERSTYLE style);
  // The distance of a cell's content from its border. Columns keep their places, so content boxes become narrower:
  // VQERR_CELL_SPACING above 32,760 twips, VQERR_INVALID_PARAMETER below 0, VQERR_COLUMN_WIDTH_SMALL.
  VQSTATUS SetColumnSpacing(const double& spacing);
  VQSTATUS SetRowSpacing(const double& spacing);
  // VQERR_COLUMN_POSITION, VQERR_CELL_SPACING above 32,760 twips, VQERR_TABLE_MARGINS below 0, VQERR_COLUMN_WIDTH_SMALL
  // for this column or another below 361; with automatic width VQERR_COLUMN_WIDTH_TABLE, VQERR_COLUMN_WIDTH_REMAINING.
  VQSTATUS SetColumnWidth(unsigned long column, const double& width);
  // VQWARN_AUTOMATIC_WIDTH, and no change, without automatic width; VQERR_FRACTIONAL_WIDTH above 20 inches.
  VQSTATUS SetFractionalColumnWidth(unsigned long column, const double& width);
  // Moves the table. VQERR_INVALID_PARAMETER below 0, VQERR_OUT_OF_RANGE where a margin would pass what its record
  // holds.
  VQSTATUS SetLeftMargin(const double& margin);
  // VQERR_INVALID_PARAMETER for a value that is none of the units.
  VQSTATUS SetUnits(VQUNITS units);

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
