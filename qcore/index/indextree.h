// The index of one collation of a view: its rows, where each document's rows lie, and how they are kept in the store.
#ifndef QUILLON_QCORE_INDEX_INDEXTREE_H
#define QUILLON_QCORE_INDEX_INDEXTREE_H

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "qcore/index/directory.h"
#include "qcore/index/rowplan.h"

namespace qcore::index {

enum class RowEvent : std::uint16_t { kInserted = 1, kRemoved = 2, kMoved = 3, kChanged = 4 };

// What an observer is told of a row.
struct RowChange {
  RowEvent kind;
  RowKind row_kind;
  std::uint8_t indent;
  std::uint32_t id;  // 0 for rows that are no document
  std::string key;
};

// Sums the totals columns of rows.
class ColumnTotals final : public TotalsReader {
 public:
  explicit ColumnTotals(const ValueLayout& layout);
  std::size_t columns() const override { return values_.size(); }
  void Add(Bytes value, double* totals) const override;
  // The place of a summary value among the totals.
  std::optional<std::size_t> PlaceOf(std::size_t value) const;

 private:
  std::vector<std::size_t> values_;
};

class IndexTree {
 public:
  // What an index stands for: one that was kept for something else is no use.
  struct Identity {
    std::uint64_t design = 0;
    std::uint64_t names = 0;  // of the user, where documents are restricted to readers
  };

  IndexTree(std::shared_ptr<Database> database, std::uint32_t view, const Collation& collation,
            const ValueLayout& layout, bool hierarchy);
  IndexTree(const IndexTree&) = delete;
  IndexTree& operator=(const IndexTree&) = delete;

  PageTree& rows() { return tree_; }
  const RowPlanner& planner() const { return planner_; }
  const ColumnTotals& totals() const { return totals_; }
  const Collation& collation() const { return collation_; }
  bool hierarchy() const { return hierarchy_; }
  // The place in the change feed, and in that of the folder, that the rows stand for.
  std::uint64_t feed = 0;
  std::uint64_t folder_change = 0;
  bool restricted = false;  // rows are the user's own, by readers or by formulas

  // Another number whenever rows may stand elsewhere, in any tree.
  std::uint64_t stamp() const { return stamp_; }

  // All may throw IndexFault.
  std::vector<PlannedRow> RowsOf(std::uint32_t id);
  void RowsOf(std::uint32_t id, std::vector<PlannedRow>* rows);  // whose room is used again
  bool Has(std::uint32_t id) { return directory_.Has(id); }
  std::vector<std::uint32_t> Documents(std::uint32_t highest) { return directory_.Ids(highest); }
  // `former`, or null: a row of the document that goes in the same batch; the categories that it was below are there.
  void Insert(const PlannedRow& row, const PlannedRow* former);
  void SetValue(const Row& row);
  void Erase(const PlannedRow& row);
  // Erases those of a document's old rows that are not among its rows. Of those that stay nothing is left to insert:
  // their keys are empty then. Both in key order.
  void TakeOut(const std::vector<PlannedRow>& old_rows, std::vector<PlannedRow>* rows);
  // Where keys are unique: the row of a key without its slate ID, and the mark that others were left out for it.
  std::optional<Row> WinnerOf(std::string_view key);
  void MarkContested(const std::string& key);
  // Categories that have become empty go, and the totals row comes or goes: after a batch of changes.
  void Settle();

  [[nodiscard]] ENGSTATUS Build(DocumentReader& reader);
  // *needs_build: nothing was done, since only building anew can tell what the change means.
  [[nodiscard]] ENGSTATUS Update(DocumentReader& reader, const std::vector<std::uint32_t>& changed, bool* needs_build);

  // Keeping. False for an index that is not there, stands for something else or can't be read.
  [[nodiscard]] ENGSTATUS LoadKept(const Identity& identity, bool* found);
  // ENG_ERR_SLATE_CONFLICT when another process has kept its own since, or when `stands`, asked where no transaction
  // can end meanwhile, tells that what the rows come from was undone.
  [[nodiscard]] ENGSTATUS Keep(const Identity& identity, const std::function<bool()>& stands);
  std::size_t unkept() const { return unkept_; }
  // False for a tree that was never filled, and for one that a failure left half changed.
  bool sound() const { return sound_; }
  void Drop();

  // Whether Insert, SetValue and Erase have done anything since the last call; and what, while it is watched.
  bool TakeChanged() { return std::exchange(changed_, false); }
  std::vector<RowChange> TakeChanges() { return std::exchange(changes_, {}); }
  bool watched = false;
  std::size_t Memory() const { return tree_.Memory() + directory_.Memory(); }

 private:
  class Builder;
  class Updater;
  // A document that is brought in by itself.
  struct Single {
    Document document;
    std::vector<PlannedRow> old_rows;
    std::vector<PlannedRow> rows;
  };

  std::uint64_t PageKey(std::uint32_t page) const;
  std::uint64_t PageKeyOf(std::uint32_t copy, std::uint32_t page) const;
  [[nodiscard]] ENGSTATUS TakeCopy(std::uint32_t copy);
  std::vector<std::uint8_t> ReadStored(std::uint32_t page);
  [[nodiscard]] ENGSTATUS ReadStoredLocked(std::uint32_t page, std::vector<std::uint8_t>* bytes);
  std::string KeyInStored(PageNumber leaf);
  [[nodiscard]] ENGSTATUS UpdateSingle(DocumentReader& reader, std::uint32_t id);
  [[nodiscard]] ENGSTATUS LoadFreeNumbers(PageNumber next_page);
  [[nodiscard]] ENGSTATUS WriteChanged(const Identity& identity, std::uint64_t generation);
  void Note(RowEvent kind, const Row& row);

  std::shared_ptr<Database> database_;
  std::uint32_t view_;
  Collation collation_;
  RowPlanner planner_;
  ColumnTotals totals_;
  bool hierarchy_;
  Directory directory_;
  PageTree tree_;
  std::vector<std::string> maybe_empty_;     // keys of categories
  std::uint32_t copy_ = 0;                   // of the user's, where rows are the user's own
  std::optional<std::uint64_t> generation_;  // of what is kept, which the pages not in memory are of
  bool sound_ = false;
  std::uint64_t stamp_ = 0;
  std::size_t unkept_ = 0;  // changes since the last keeping
  bool changed_ = false;
  std::vector<RowChange> changes_;
  Single single_;  // keeps its room, as the next one
};

// Called from builds; see EngCollectionSetProgress.
void SetBuildProgress(void (*callback)(void*, std::uint32_t, std::uint32_t), void* context);
void ReportBuildProgress(std::uint32_t done, std::uint32_t total);

}  // namespace qcore::index

#endif
