// VQTableCell: one cell of a table.
#ifndef QUILLON_VQ_RICHTEXT_VQRTTABC_H
#define QUILLON_VQ_RICHTEXT_VQRTTABC_H

#include "engine/records.h"
#include "vq/richtext/vqpabdef.h"
#include "vq/richtext/vqrtcont.h"
#include "vq/richtext/vqrtobj.h"

class VQTable;
class VQTableBody;

inline constexpr long VQTABLE_MAX_ROWS = 255;
inline constexpr long VQTABLE_MAX_COLS = 64;

enum VQTABLEBORDERTYPE : int {
  VQTABLEBORDERTYPE_NONE = 0,
  VQTABLEBORDERTYPE_SINGLE = 1,
  VQTABLEBORDERTYPE_DOUBLE = 2,
};

inline constexpr unsigned long VQTABLE_MAX_BORDER_WIDTH = 10;
// Of CDTABLECELL::Flags.
inline constexpr unsigned char TABLECELLFLAG_BACKGROUND = 0x01;

namespace vq {

// The edges of a cell in the order of the record's border bits.
enum class CellEdge : unsigned char { kLeft, kRight, kTop, kBottom };

}  // namespace vq

// A cell's children are an optional paragraph definition, a paragraph record, a reference and the content. The
// paragraph record ahead of the content gives no newline in a text.
class VQ_API VQTableCellBody : public VQRTContainerBody {
 public:
  VQTableCellBody(vq::RecordSource* source, std::uint32_t offset, std::uint32_t length);
  // Without a record; row and column are -1.
  VQTableCellBody();
  // An empty cell of the default looks. Asserts a row below VQTABLE_MAX_ROWS and a column below VQTABLE_MAX_COLS.
  VQTableCellBody(long row, long column);

  VQCLASSID GetClassID() const override;
  VQRTObjectBody* MakeSame() const override;
  // VQERR_NOT_A_CELL for a source of another type.
  VQSTATUS Copy(VQRTObjectBody* source, VQRTCOPYOPTIONS options) override;
  // The caller's style, but for margins, page break and what keeps lines together, which stay those of the cell.
  VQSTATUS AdjustParagraphStyle(const VQParagraphStyle& style, VQParagraphStyle* adjusted) override;

  std::int32_t GetRow() const { return Row; }
  std::int32_t GetColumn() const { return Column; }
  // Of the content box, as the record says; -1 in a damaged cell.
  std::int32_t GetLeft() const { return Left; }
  std::int32_t GetRight() const { return Right; }
  // Row, column and geometry in one.
  struct Place {
    std::int32_t Row, Column, Left, Right, Fraction;
    bool operator==(const Place&) const = default;
  };
  Place GetPlace() const { return {Row, Column, Left, Right, Fraction}; }
  // Nothing where it is the same.
  [[nodiscard]] VQSTATUS SetPlace(const Place& place);
  // Null when the cell stands in none.
  VQTableBody* GetTable() const;

  // The header, and with it row and column, is set here.
  [[nodiscard]] VQSTATUS ReadCell(CDTABLECELL* record) const;
  [[nodiscard]] VQSTATUS WriteCell(const CDTABLECELL& record);
  // Runs `work` over the definitions in this cell up to the first failure.
  template <typename Work>
  [[nodiscard]] VQSTATUS ForEachDefinition(Work work) const {
    if (HasNoDefinitions()) return VQ_OK;
    for (VQRTObjectBody* object = NextInTree(this); object; object = NextInTree(object)) {
      if (object->GetType() != VQRTTYPE_PAB_DEFINITION) continue;
      if (VQSTATUS status = work(static_cast<VQPABDefinitionBody&>(*object))) return status;
    }
    return VQ_OK;
  }

  // Throws where the record is damaged; asserts a type that is one.
  VQTABLEBORDERTYPE GetBorderType(vq::CellEdge edge) const;
  [[nodiscard]] VQSTATUS SetBorderType(vq::CellEdge edge, VQTABLEBORDERTYPE borderType);
  unsigned long GetBorderWidth(vq::CellEdge edge) const;
  // VQERR_CELL_BORDER above VQTABLE_MAX_BORDER_WIDTH.
  [[nodiscard]] VQSTATUS SetBorderWidth(vq::CellEdge edge, unsigned long width);
  [[nodiscard]] VQSTATUS SetBackgroundColor(unsigned short color);
  [[nodiscard]] VQSTATUS SetTransparent();

  // What the column is styled by, 0 for a cell outside of a table.
  std::uint16_t GetColumnPABID() const;
  // The first reference: what the cell is styled by. Null in a damaged cell.
  VQRTObjectBody* GetFirstReference() const;

 private:
  friend class VQTableBody;

  // Puts the children of a new cell into it; they get their index values with the table's.
  [[nodiscard]] VQSTATUS InitCell(std::uint16_t pabid, const CDPABDEFINITION* definition);
  void TakePlace();
  void ChildrenChanged() override { Definitions = kUnknown; }
  void ContentRestored() override;
  // For most cells known without a look at their children.
  bool HasNoDefinitions() const;

  enum Knowledge : unsigned char { kUnknown, kNone, kPerhaps };

  std::int32_t Row;
  std::int32_t Column;
  std::int32_t Left;
  std::int32_t Right;
  std::uint16_t Fraction;
  mutable Knowledge Definitions;
};

// Handle on a cell. Getters throw on a null or closed handle; a damaged record gives VQERR_RT_INVALID. Text and objects
// are put in as into any container; a table is refused with VQERR_CANT_INSERT_TYPE.
class VQ_API VQTableCell : public VQRTContainer {
 public:
  VQTableCell() = default;
  VQTableCell(const VQRTObject& object);
  VQTableCell(const VQTableCell& other) : VQRTContainer(other) {}
  explicit VQTableCell(VQTableCellBody* body);
  using VQRTObject::operator=;
  VQTableCell& operator=(const VQTableCell& other) = default;
  VQCLASSID GetClassID() const override;

  using VQRTContainer::Append;
  unsigned short GetBackgroundColor() const;
  VQTABLEBORDERTYPE GetBottomBorderType() const;
  unsigned long GetBottomBorderWidth() const;
  VQTABLEBORDERTYPE GetLeftBorderType() const;
  unsigned long GetLeftBorderWidth() const;
  VQTABLEBORDERTYPE GetRightBorderType() const;
  unsigned long GetRightBorderWidth() const;
  VQTABLEBORDERTYPE GetTopBorderType() const;
  unsigned long GetTopBorderWidth() const;
  CDTABLECELL GetCDTableCell() const;
  // From 0.
  unsigned long GetColumnIndex() const;
  unsigned long GetRowIndex() const;
  // VQERR_CELL_PARENT for a cell in no table.
  VQSTATUS GetTable(VQTable* table) const;
  VQTableCellBody* GetTableCellBody() const { return static_cast<VQTableCellBody*>(Body); }

  // A colour index; the cell is no longer transparent.
  VQSTATUS SetBackgroundColor(unsigned short color);
  VQSTATUS SetBottomBorderType(VQTABLEBORDERTYPE borderType);
  VQSTATUS SetBottomBorderWidth(unsigned long width);
  VQSTATUS SetLeftBorderType(VQTABLEBORDERTYPE borderType);
  VQSTATUS SetLeftBorderWidth(unsigned long width);
  VQSTATUS SetRightBorderType(VQTABLEBORDERTYPE borderType);
  VQSTATUS SetRightBorderWidth(unsigned long width);
  VQSTATUS SetTopBorderType(VQTABLEBORDERTYPE borderType);
  VQSTATUS SetTopBorderWidth(unsigned long width);
  // Stored for programs that lay tables out; neighbouring cells stay as they are.
  VQSTATUS SetCDTableCellColumnSpan(unsigned char span);
  VQSTATUS SetCDTableCellRowSpan(unsigned char span);
  VQSTATUS SetCDTableCellFlags(unsigned char flags);
  VQSTATUS SetTransparent();

 protected:
  using VQRTObject::ValidateRTType;
  void ValidateRTType(const VQRTObjectBody* body) const override;
};

#endif
