// Pages of a row tree: leaves of rows in key order, inner pages of children with what lies below them.
//
// A stored row in a leaf:  u8 level | u8 flags | varint length, key | value
//
//   flags: kind (bits 0 and 1), contested (bit 2), indent (bits 3 to 7)
//
// A leaf keeps the beginning that all its keys have once, and of each key the four bytes behind that as one number for
// the search. In a document's key the last four bytes are its slate ID, big-endian. In memory levels, kinds and IDs lie
// apart from keys and values, each close together: searches by them read nothing else.
#ifndef QUILLON_QCORE_INDEX_PAGE_H
#define QUILLON_QCORE_INDEX_PAGE_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::index {

using Bytes = std::span<const std::uint8_t>;
using PageNumber = std::uint32_t;  // from 1

inline constexpr std::uint8_t kDeepestLevel = 31;
inline constexpr std::uint8_t kNoLevel = 0xFF;
inline constexpr std::size_t kIdSize = 4;

enum class RowKind : std::uint8_t { kDocument = 0, kCategory = 1, kTotal = 2 };

// Thrown where a page cannot be had; caught where an operation on an index begins.
struct IndexFault {
  ENGSTATUS status;
};

struct Row {
  std::string key;
  std::uint8_t level = 0;
  RowKind kind = RowKind::kDocument;
  std::uint8_t indent = 0;
  bool contested = false;  // where keys are unique: others of the same key were left out
  std::vector<std::uint8_t> value;

  bool operator==(const Row&) const = default;
};

// Adds the numbers of a document row's value to one sum for each totals column.
class TotalsReader {
 public:
  virtual ~TotalsReader() = default;
  virtual std::size_t columns() const = 0;
  virtual void Add(Bytes value, double* totals) const = 0;
};

// What a stretch of rows holds.
struct Sum {
  std::uint32_t rows = 0;
  std::uint32_t documents = 0;
  std::uint32_t at_least = 0;     // rows of the least level
  std::uint8_t least = kNoLevel;  // level
  std::vector<double> totals;

  void Add(const Sum& other);
  void AddRow(std::uint8_t level, RowKind kind);
  // False when what is left can't be told without counting anew. Totals are the caller's.
  [[nodiscard]] bool RemoveRow(std::uint8_t level, RowKind kind);
  // Rows of `level` where there is none above it.
  std::uint32_t At(std::uint8_t level) const { return least == level ? at_least : 0; }
  bool SameCounts(const Sum& other) const {
    return rows == other.rows && documents == other.documents && at_least == other.at_least && least == other.least;
  }
};

// Slate ID at the end of a document's key.
std::uint32_t IdInKey(std::string_view key);
void AppendId(std::uint32_t id, std::string* key);

class Leaf {
 public:
  std::uint32_t count() const { return static_cast<std::uint32_t>(offsets_.size()); }
  std::size_t size() const { return bytes_.size() + kFixedSize * offsets_.size() + prefix_.size(); }

  std::uint8_t LevelAt(std::uint32_t row) const { return levels_[row]; }
  RowKind KindAt(std::uint32_t row) const { return static_cast<RowKind>(kinds_[row] & 3); }
  bool ContestedAt(std::uint32_t row) const { return (kinds_[row] & 4) != 0; }
  std::uint8_t IndentAt(std::uint32_t row) const { return kinds_[row] >> 3; }
  std::string KeyAt(std::uint32_t row) const;
  void KeyTo(std::uint32_t row, std::string* key) const;
  std::uint32_t IdAt(std::uint32_t row) const { return ids_[row]; }  // 0 for a row that is no document
  // The first row of the document from `row` on, count() for none.
  std::uint32_t FindId(std::uint32_t id, std::uint32_t row = 0) const;
  Bytes ValueAt(std::uint32_t row) const {
    std::size_t value_at = 0;
    SuffixAt(row, &value_at);
    return Bytes(bytes_).subspan(value_at, EndOf(row) - value_at);
  }
  Row RowAt(std::uint32_t row) const;
  void RowTo(std::uint32_t row, Row* target) const;
  std::size_t SizeOf(std::uint32_t row) const { return EndOf(row) - offsets_[row] + kFixedSize; }

  // The first row that is not below the key.
  std::uint32_t LowerBound(std::string_view key) const;
  bool HasKey(std::uint32_t row, std::string_view key) const;
  bool KeyStartsWith(std::uint32_t row, std::string_view prefix) const;
  void Insert(std::uint32_t at, const Row& row);
  void Erase(std::uint32_t at);
  void SetValue(std::uint32_t at, Bytes value);
  // For rows that come in order, into a leaf that is filled once.
  void Append(const Row& row) { Insert(count(), row); }
  void Assign(std::span<const Row> rows);
  // Rows first to last - 1 of another leaf.
  void AssignPart(const Leaf& from, std::uint32_t first, std::uint32_t last);
  // Passes over rows that are neither the n-th of `level` nor of a lesser one, some at a time, and counts n down by
  // those of the level.
  std::uint32_t PassLevel(std::uint32_t row, std::uint8_t level, std::uint32_t* n) const;
  Sum Count(const TotalsReader* totals) const;
  void Count(std::uint32_t first, std::uint32_t last, const TotalsReader* totals, Sum* sum) const;
  std::size_t Memory() const;
  // Have the processor fetch what a walk reads first, and what a change does.
  void Prefetch() const;
  void PrefetchForChange() const;

  void Encode(std::vector<std::uint8_t>* bytes) const;
  // False for bytes that are no leaf.
  [[nodiscard]] bool Decode(Bytes bytes);

 private:
  static constexpr std::size_t kFixedSize = 14;  // of a row, beside its bytes

  void Clear();
  void Reserve(std::size_t rows, std::size_t bytes);
  // A row behind the last, whose bytes follow.
  void AddHead(std::string_view suffix, std::uint8_t level, std::uint8_t kind);
  void AddRow(const Row& row);
  void AddRecord(std::string_view suffix, std::uint8_t level, std::uint8_t kind, Bytes value);
  std::string_view SuffixAt(std::uint32_t row, std::size_t* value_at) const {
    const std::uint8_t* at = bytes_.data() + offsets_[row];
    std::size_t length = *at++;
    if (length >= 0x80) [[unlikely]] {
      length &= 0x7F;
      for (int shift = 7; (at[-1] & 0x80) != 0; shift += 7) length |= std::size_t{*at++ & 0x7Fu} << shift;
    }
    *value_at = static_cast<std::size_t>(at - bytes_.data()) + length;
    return {reinterpret_cast<const char*>(at), length};
  }
  std::string_view SuffixAt(std::uint32_t row) const {
    std::size_t value_at = 0;
    return SuffixAt(row, &value_at);
  }
  std::size_t EndOf(std::uint32_t row) const { return row + 1 < count() ? offsets_[row + 1] : bytes_.size(); }
  // Gives a row's bytes another size; those that stay have their content.
  std::uint8_t* Resize(std::uint32_t at, std::size_t old_size, std::size_t size);
  void ShortenPrefix(std::size_t length);
  // The most that may be common with rows of that key.
  static std::size_t PrefixRoom(std::string_view key);

  std::string prefix_;
  std::vector<std::uint32_t> heads_;
  std::vector<std::uint32_t> offsets_;
  std::vector<std::uint32_t> ids_;
  std::vector<std::uint8_t> levels_;
  std::vector<std::uint8_t> kinds_;
  std::vector<std::uint8_t> bytes_;  // of each row: varint length, key, value
};

struct Page;

struct Child {
  std::unique_ptr<Page> page;  // null until it is read
  std::string key;             // not above the first key below it; nothing counts for the first child
  PageNumber number = 0;
  Sum sum;
};

struct Page {
  PageNumber number = 0;
  std::uint8_t height = 0;  // 0: a leaf
  bool changed = false;
  Leaf leaf;
  std::vector<Child> children;
  // Of each child, close together: rows up to its end, the least level in it, and how many rows are of that level.
  std::vector<std::uint32_t> ends;
  std::vector<std::uint8_t> levels;
  std::vector<std::uint32_t> at_levels;
  std::size_t common = 0;            // bytes that the children's keys have in common, the first one's left out
  std::vector<std::uint64_t> heads;  // the eight bytes behind that, for all but the first

  Sum Count(const TotalsReader* totals) const;
  // The same, and notes where each child's rows end: after any change of a child's sum.
  Sum Recount(const TotalsReader* totals);
  // After any change of the children's keys.
  void IndexKeys();
  // The child that rows of a key belong to; the child that holds the row of a rank, counted from the page's first.
  std::size_t ChildFor(std::string_view key) const;
  std::size_t ChildAt(std::uint32_t rank) const;
  // Rows before a child.
  std::uint32_t Before(std::size_t child) const { return child == 0 ? 0 : ends[child - 1]; }
  std::size_t size() const;
  std::vector<std::uint8_t> Encode() const;
  // Null for bytes that are no page of that height.
  static std::unique_ptr<Page> Decode(Bytes bytes, PageNumber number, std::uint8_t height, std::size_t totals);
};

}  // namespace qcore::index

#endif
