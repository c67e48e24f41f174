// The index of a view: its design, its documents, and a tree for each collation in use.
//
// All collections of one database handle on one view share one. It has a lock of its own, which comes before the
// database's.
#ifndef QUILLON_QCORE_INDEX_VIEWINDEX_H
#define QUILLON_QCORE_INDEX_VIEWINDEX_H

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <mutex>

#include "qcore/index/indextree.h"

namespace qcore::index {

// A row's change with its place in the order of all.
struct LoggedChange {
  std::uint64_t number;
  RowChange change;
};

class ViewIndex : public std::enable_shared_from_this<ViewIndex> {
 public:
  enum class Start { kUpdated, kAsKept, kRebuilt };
  enum class Missing { kBuild, kRefuse };

  // The one of a view whose documents are in `entries`.
  static std::shared_ptr<ViewIndex> Find(std::shared_ptr<Database> design, std::shared_ptr<Database> entries,
                                         std::uint32_t view);

  ViewIndex(std::shared_ptr<Database> design, std::shared_ptr<Database> entries, std::uint32_t view);
  ViewIndex(const ViewIndex&) = delete;
  ViewIndex& operator=(const ViewIndex&) = delete;

  [[nodiscard]] ENGSTATUS Open(Start start, Missing missing);
  [[nodiscard]] ENGSTATUS Update();
  // Writes what is not kept yet. What can't be written is found again in the change feed.
  void Keep();
  // A transaction of the client was undone: what was brought in during it counts for nothing.
  void Revert();

  // Runs `use` with a collation's tree; ENG_ERR_NO_COLLECTION for a collation that the design does not have. When pages
  // can't be read, or are another process's by now, the tree is made anew and `use` runs again.
  using Use = std::function<ENGSTATUS(IndexTree&)>;
  [[nodiscard]] ENGSTATUS With(std::uint16_t collation, const Use& use);
  // Within With: what rows need beside the tree.
  const ValueLayout& layout() const { return *layout_; }
  const Design& design() const { return *design_; }
  bool marks_rows() const { return reader_->marks_rows(); }
  Database& entries() { return *entries_; }

  // As With does before `use`; a tree that is as it was kept is brought up to date.
  [[nodiscard]] ENGSTATUS Prepare(std::uint16_t collation);

  // With's lock held. Logs from now on and gives the number of the last change; and the changes behind a number, false
  // when they are not all known.
  std::uint64_t StartLog(std::uint16_t collation);
  bool ChangesBehind(std::uint16_t collation, std::uint64_t number, std::vector<RowChange>* changes) const;
  std::size_t Memory();

 private:
  struct Slot {
    std::unique_ptr<IndexTree> tree;
    std::deque<LoggedChange> log;
    std::uint64_t log_from = 0;     // every change behind this number is in the log
    bool watched = false;           // without an observer there is no log
    std::optional<TIMEDATE> built;  // by this object
    std::uint64_t built_feed = 0;
    std::size_t passed = 0;     // documents brought in since the last keeping, with rows or without
    std::uint64_t reverts = 0;  // those that the tree has followed
  };

  [[nodiscard]] ENGSTATUS ReadDesignIfChanged(bool* changed);
  // Whether the tree has to start again from what is kept.
  bool IsStale(const Slot& slot) const { return slot.reverts != reverts_ || !slot.tree->sound(); }
  [[nodiscard]] ENGSTATUS TreeFor(std::uint16_t collation, Missing missing, Slot** slot);
  void FollowReverts(Slot* slot);
  [[nodiscard]] ENGSTATUS Rebuild(Slot* slot);
  [[nodiscard]] ENGSTATUS Renew(Slot* slot);
  [[nodiscard]] ENGSTATUS BringIn(Slot* slot);
  [[nodiscard]] ENGSTATUS UpdateSlot(Slot* slot);
  [[nodiscard]] ENGSTATUS LostParents(const IndexTree& tree, bool* lost);
  [[nodiscard]] ENGSTATUS ChangedSince(IndexTree& tree, std::uint64_t* feed, std::uint64_t* folder_change,
                                       std::vector<std::uint32_t>* ids);
  [[nodiscard]] ENGSTATUS ReadMembers();
  // `fresh` was built just now; may be null.
  [[nodiscard]] ENGSTATUS UpdateLocked(const Slot* fresh);
  [[nodiscard]] ENGSTATUS Follow(Slot* slot, bool fresh);
  bool FeedTellsOfDesign() const;
  bool SavedSinceBuilt(const Slot& slot) const;
  bool HasAged(const Slot& slot) const;
  bool HasAgedForOpening(const Slot& slot) const;
  // Runs `work`; a fault of a page becomes its status.
  template <typename Work>
  static ENGSTATUS Caught(const Work& work);
  void TakeLog(Slot* slot);
  void ForgetLog(Slot* slot);
  void KeepSlot(Slot* slot);
  std::uint64_t OriginSum() const;
  IndexTree::Identity identity() const;

  std::shared_ptr<Database> design_database_;
  std::shared_ptr<Database> entries_;
  std::uint32_t view_;
  std::mutex mutex_;
  bool open_ = false;
  bool design_touched_ = false;  // the view may have been saved since the design was read
  TIMEDATE design_time_{};
  std::uint32_t design_sequence_ = 0;
  std::uint64_t names_ = 0;
  std::unique_ptr<Design> design_;
  std::unique_ptr<ValueLayout> layout_;
  std::unique_ptr<DocumentReader> reader_;
  std::optional<std::uint64_t> members_change_;  // the folder's change that the reader's members stand for
  std::map<std::uint16_t, Slot> slots_;
  std::atomic<std::uint64_t> reverts_ = 0;  // how often a transaction of the client was undone
  std::uint64_t last_change_ = 1;
};

}  // namespace qcore::index

#endif
