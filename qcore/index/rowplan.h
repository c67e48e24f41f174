// Where a document's rows stand: from values to keys.
//
//   key of a document:  category part | 0x01 | keys of the sorted columns | slate ID, big-endian
//   category part:      for each category column 0x02 | key of the first segment | (0x03 | key of a further segment)
//   key of a category:  the part up to its segment
//   key of a response:  key of the row that it hangs below | 0x05 | keys of the sorted columns | slate ID
//   key of the totals:  0xFE
//
// Text in a category column is cut into segments at "\", but for those in a mark's arguments; empty segments count for
// nothing.
#ifndef QUILLON_QCORE_INDEX_ROWPLAN_H
#define QUILLON_QCORE_INDEX_ROWPLAN_H

#include "qcore/index/documents.h"
#include "qcore/index/page.h"

namespace qcore::index {

inline constexpr char kMarkDocument = 0x01;
inline constexpr char kMarkCategory = 0x02;
inline constexpr char kMarkDeeper = 0x03;
inline constexpr char kMarkResponse = 0x05;
inline constexpr std::string_view kTotalKey = "\xFE";

// Of one document, for all its values together; what goes beyond is left out.
inline constexpr std::size_t kMostRows = 65536;
// Categories nest no deeper, so that responses have levels too; the rest of a longer text stays in its last segment.
inline constexpr std::size_t kMostSegments = 24;

// A category above a row: its key is the first `end` bytes of the row's.
struct CategoryStep {
  std::uint32_t end;
  std::uint16_t value;   // number of its value
  std::uint8_t segment;  // of that value's text; kRest: with all that follows
};

struct PlannedRow {
  Row row;
  std::vector<CategoryStep> categories;
  std::uint32_t parent_end = 0;  // of a response: the length of the key that it hangs below
};

inline constexpr std::uint8_t kRest = 0x80;

// The parts of a category's text.
std::vector<std::string_view> SegmentsOf(std::string_view text);
// What the category of a step shows of its value's text.
std::string_view SegmentAt(std::string_view text, std::uint8_t segment);

class RowPlanner {
 public:
  RowPlanner(const Collation& collation, const ValueLayout& layout);

  // A document's rows as a main topic, in key order, none twice.
  void Plan(const Document& document, std::vector<PlannedRow>* rows) const;
  // The key's part from the mark on, of a document that hangs below another.
  std::string ResponsePart(const Document& document) const;
  // A document's rows below those of another, in the same order. Below the deepest level there is none: what hangs
  // there stands beside what it hangs below.
  void PlanBelow(const Document& document, const std::vector<PlannedRow>& parents, std::vector<PlannedRow>* rows) const;

  struct Sorted {
    std::size_t value;  // number
    SortColumn column;
    bool category;  // as the index takes it: categories come before all other columns
  };
  const std::vector<Sorted>& sorted() const { return sorted_; }
  std::size_t category_columns() const { return categories_; }

  static Row CategoryRow(const PlannedRow& row, std::size_t step);

 private:
  struct Draft;
  // `last`: what the draft holds is not wanted after this.
  void Expand(const Document& document, std::size_t column, bool last, Draft* draft,
              std::vector<PlannedRow>* rows) const;
  void AddCategory(Bytes value, std::size_t column, Draft* draft) const;
  void Finish(const Document& document, bool last, Draft* draft, std::vector<PlannedRow>* rows) const;

  std::vector<Sorted> sorted_;
  std::size_t categories_ = 0;
  std::size_t summary_size_;
};

}  // namespace qcore::index

#endif
