// Rows as they go to the client; the layout stands in engine/collection.h.
#ifndef QUILLON_QCORE_INDEX_ROWBUFFER_H
#define QUILLON_QCORE_INDEX_ROWBUFFER_H

#include <array>

#include "qcore/index/indextree.h"
#include "qcore/index/walk.h"
#include "qcore/memory/memory.h"
#include "qcore/store/database.h"

namespace qcore::index {

// A number for a row that is no document: the same as long as the row is there.
std::uint32_t NumberOfRow(RowKind kind, std::string_view key);

class RowBuffer {
 public:
  // `rows`: how many may be asked of it.
  RowBuffer(IndexTree& index, const ValueLayout& layout, Database& entries, Walk& walk, ENGHANDLE unread,
            std::uint32_t mask, std::uint32_t rows);

  // From then on the marks that formulas left in values are expanded.
  void ExpandMarks() { expands_ = true; }
  // Appends the row at a cursor. False when it would go beyond the buffer, which a first row never does.
  [[nodiscard]] bool Add(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position,
                         std::uint16_t score);
  memory::Draft Take();

  // Bytes of a read; a client asks again for what is behind.
  static constexpr std::size_t kSize = 65536;

 private:
  struct Piece {
    std::uint16_t type = 0;
    Bytes data;
  };

  void AddCounts(Rank rank);
  void AddUniversalId(const PageTree::Cursor& row);
  void AddSummary(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position);
  // The summary of a document, in one go; false when it would be too long.
  bool CopySummary(Bytes value);
  void Need(std::size_t more);
  template <typename T>
  void Put(T value);
  void PutBytes(Bytes bytes);
  void ExpandPieces(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position);
  void PiecesOfCategory(const PageTree::Cursor& row);
  void AddTotals(Rank first, Rank end);
  double TotalOf(Totals totals, std::size_t place, const Sum& sum, Rank first, Rank end);
  void WriteSummary();

  IndexTree& index_;
  const ValueLayout& layout_;
  Database& entries_;
  Walk& walk_;
  ENGHANDLE unread_;
  std::uint32_t mask_;
  memory::Draft bytes_;  // room; the first size_ bytes are rows
  std::size_t size_ = 0;
  std::size_t fixed_;  // the most that a row has beside its values
  std::vector<Piece> pieces_;
  std::vector<std::array<std::uint8_t, 8>> numbers_;  // of totals
  bool expands_ = false;
  std::vector<std::vector<std::uint8_t>> expanded_;  // by value
  std::string key_;                                  // of the row
};

}  // namespace qcore::index

#endif
