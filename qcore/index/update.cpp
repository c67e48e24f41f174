// Bringing changed documents into an index.
//
// The documents that may stand elsewhere are found first: those that changed, and what hangs below one whose place
// changes. Then each one's rows are planned anew, those above first, and what differs from the rows in the tree is
// applied.
//
// Where keys are unique, the row of the lowest ID wins its key, and those that lose are nowhere. A row that others lost
// against is marked as contested: when it leaves its key and no lower ID takes it, only building anew finds who wins.
#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "qcore/index/hierarchy.h"
#include "qcore/index/indextree.h"

namespace qcore::index {

class IndexTree::Updater {
 public:
  Updater(IndexTree* index, DocumentReader& reader)
      : index_(*index), reader_(reader), hierarchy_([this](std::uint32_t id) { return ParentOf(id); }) {}

  ENGSTATUS Run(const std::vector<std::uint32_t>& changed, bool* needs_build) {
    for (const std::uint32_t id : changed) {
      if (!Touch(id)) return status_;
    }
    if (spreads()) Spread(changed);
    if (status_ == ENG_OK && unique()) Compete();
    for (std::size_t i = 0; status_ == ENG_OK && i < order_.size(); ++i) Place(order_[i]);
    *needs_build = needs_build_;
    if (status_ != ENG_OK || needs_build_) return status_;
    index_.sound_ = false;
    Apply();
    index_.sound_ = true;
    return ENG_OK;
  }

 private:
  struct Touched {
    Document document;
    std::vector<PlannedRow> old_rows;
    std::vector<PlannedRow> rows;
    bool placed = false;
  };

  // For a key that rows of touched documents have.
  struct Contest {
    std::uint32_t winner;
    bool contested;
  };

  bool unique() const { return index_.collation_.unique; }
  bool spreads() const { return index_.hierarchy_ || reader_.selects_below(); }

  // Reads and evaluates a document; false on failure.
  bool Touch(std::uint32_t id) {
    const auto [at, fresh] = touched_.try_emplace(id);
    if (!fresh) return true;
    Touched& touched = at->second;
    status_ = reader_.Read(id, &touched.document);
    touched.old_rows = index_.RowsOf(id);
    index_.restricted = index_.restricted || touched.document.restricted;
    order_.push_back(id);
    return status_ == ENG_OK;
  }

  // Or would have, if it had not lost them.
  bool HasRows(std::uint32_t id) {
    const auto at = touched_.find(id);
    if (at != touched_.end()) return at->second.document.selected;
    if (index_.Has(id)) return true;
    if (!unique()) return false;
    Document document;
    const ENGSTATUS status = reader_.Read(id, &document);
    if (status != ENG_OK) status_ = status;
    return document.selected;
  }

  std::optional<UNIVERSALSLATEID> ReferenceOf(std::uint32_t id) {
    const auto at = touched_.find(id);
    if (at != touched_.end()) return at->second.document.parent;
    SlateHeader header;
    const ENGSTATUS status = index_.database_->store().ReadHeader(id, &header);
    return status == ENG_OK ? header.parent : std::nullopt;
  }

  std::optional<std::uint32_t> ParentOf(std::uint32_t id) {
    if (!index_.hierarchy_) return std::nullopt;
    const auto known = parents_.find(id);
    if (known != parents_.end()) return known->second;
    std::optional<std::uint32_t> parent;
    {
      const std::lock_guard lock(index_.database_->mutex());
      const std::optional<UNIVERSALSLATEID> reference = ReferenceOf(id);
      std::uint32_t found = 0;
      if (reference && index_.database_->store().FindUniversal(*reference, &found) == ENG_OK) parent = found;
    }
    if (parent && !HasRows(*parent)) parent.reset();
    parents_.emplace(id, parent);
    return parent;
  }

  // Every document that refers to this one, and every one that has hung below it.
  std::vector<std::uint32_t> BelowOf(std::uint32_t id) {
    std::vector<std::uint32_t> below = Hanging(touched_.find(id)->second.old_rows);
    for (const std::uint32_t response : ReferringTo(id)) {
      if (!std::binary_search(below.begin(), below.end(), response)) below.push_back(response);
    }
    return below;
  }

  std::vector<std::uint32_t> ReferringTo(std::uint32_t id) {
    std::vector<std::uint32_t> ids;
    SlateHeader header;
    const std::lock_guard lock(index_.database_->mutex());
    Store& store = index_.database_->store();
    if (store.ReadHeader(id, &header) != ENG_OK) {
      // Gone without a trace: nothing is found by it but what hangs below it, and that need not be all.
      needs_build_ = needs_build_ || reader_.selects_below() || unique();
      return ids;
    }
    const ENGSTATUS status = store.FindResponses({header.origin.File, header.origin.Slate}, &ids);
    if (status != ENG_OK) status_ = status;
    return ids;
  }

  // Documents one level below the first of a document's rows, in ascending order.
  std::vector<std::uint32_t> Hanging(const std::vector<PlannedRow>& rows) {
    std::vector<std::uint32_t> ids;
    if (rows.empty()) return ids;
    const std::uint8_t level = rows.front().row.level;
    const Rank rank = index_.tree_.RankOf(rows.front().row.key);
    if (level >= kDeepestLevel) return ids;
    const std::optional<Rank> end = index_.tree_.NextAtMost(rank, level);
    // Those of the deepest level stand beside what they hang below.
    const std::uint8_t last = level + 1 == kDeepestLevel ? kDeepestLevel : static_cast<std::uint8_t>(level + 1);
    for (auto at = index_.tree_.NextAtMost(rank, last); at && (!end || *at < *end);
         at = index_.tree_.NextAtMost(*at, last)) {
      ids.push_back(index_.tree_.At(*at).id());
    }
    std::sort(ids.begin(), ids.end());
    return ids;
  }

  // Whether the document's rows stand where they stood, relative to what they hang below, and so does what hangs below
  // them.
  bool Stays(std::uint32_t id) {
    Touched& touched = touched_.find(id)->second;
    if (reader_.selects_below() || unique()) return false;
    if (!touched.document.selected) return touched.old_rows.empty();
    if (touched.old_rows.empty()) return false;
    const std::optional<std::uint32_t> above = hierarchy_.Above(id);
    if (!above) {
      std::vector<PlannedRow> rows;
      index_.planner_.Plan(touched.document, &rows);
      const auto key = [](const PlannedRow& row) -> const std::string& { return row.row.key; };
      if (!std::ranges::equal(rows, touched.old_rows, {}, key, key)) return false;
    } else if (!HangsBelow(touched, *above)) {
      return false;
    }
    std::vector<std::uint32_t> referring = ReferringTo(id);
    std::erase_if(referring, [this, id](std::uint32_t response) {
      return !HasRows(response) || hierarchy_.Above(response) != id;
    });
    return referring == Hanging(touched.old_rows);
  }

  bool HangsBelow(const Touched& touched, std::uint32_t above) {
    const std::string part = index_.planner_.ResponsePart(touched.document);
    return std::ranges::all_of(touched.old_rows, [&](const PlannedRow& planned) {
      const Row& row = planned.row;
      if (row.indent == 0 || row.level == kDeepestLevel || !row.key.ends_with(part)) return false;
      const auto rank = index_.tree_.PrevAtMost(index_.tree_.RankOf(row.key), row.level - 1);
      if (!rank) return false;
      const PageTree::Cursor parent = index_.tree_.At(*rank);
      return parent.id() == above && parent.key().size() + part.size() == row.key.size();
    });
  }

  void Spread(const std::vector<std::uint32_t>& changed) {
    std::vector<std::uint32_t> moved;
    for (const std::uint32_t id : changed) {
      if (!Stays(id)) moved.push_back(id);
    }
    SpreadFrom(std::move(moved));
  }

  void SpreadFrom(std::vector<std::uint32_t> moved) {
    spread_.insert(moved.begin(), moved.end());
    while (!moved.empty() && status_ == ENG_OK) {
      const std::uint32_t id = moved.back();
      moved.pop_back();
      for (const std::uint32_t below : BelowOf(id)) {
        if (!spread_.insert(below).second) continue;
        if (!Touch(below)) return;
        moved.push_back(below);
      }
    }
    parents_.clear();
    hierarchy_ = Hierarchy([this](std::uint32_t id) { return ParentOf(id); });
  }

  static std::string KeyOf(const PlannedRow& row) { return row.row.key.substr(0, row.row.key.size() - kIdSize); }

  // Plans the rows of the main topics among those touched.
  void PlanMains(std::size_t from) {
    for (std::size_t i = from; i < order_.size(); ++i) {
      Touched& touched = touched_.find(order_[i])->second;
      if (!touched.document.selected || hierarchy_.Above(order_[i])) continue;
      index_.planner_.Plan(touched.document, &touched.rows);
      touched.placed = true;
    }
  }

  // Leaves to each main topic the rows that win their keys.
  void Compete() {
    PlanMains(0);
    // Rows in the tree that lose now; they win no key that they have not.
    std::vector<std::uint32_t> losers;
    for (const std::uint32_t id : order_) {
      for (const PlannedRow& row : touched_.find(id)->second.rows) {
        const std::optional<Row> winner = index_.WinnerOf(KeyOf(row));
        if (winner && IdInKey(winner->key) > id) losers.push_back(IdInKey(winner->key));
      }
    }
    const std::size_t known = order_.size();
    for (const std::uint32_t id : losers) {
      if (!Touch(id)) return;
    }
    if (spreads()) SpreadFrom(std::move(losers));
    if (status_ != ENG_OK) return;
    PlanMains(known);
    std::unordered_map<std::string, Contest> contests;
    for (const std::uint32_t id : order_) {
      for (const PlannedRow& row : touched_.find(id)->second.rows) Enter(id, KeyOf(row), &contests);
    }
    for (const std::uint32_t id : order_) CheckLeft(touched_.find(id)->second, contests);
    for (const std::uint32_t id : order_) {
      std::erase_if(touched_.find(id)->second.rows,
                    [&](const PlannedRow& row) { return contests.find(KeyOf(row))->second.winner != id; });
    }
    for (const auto& [key, contest] : contests) {
      if (!contest.contested) continue;
      contested_.push_back(key);
      AppendId(contest.winner, &contested_.back());
    }
  }

  void Enter(std::uint32_t id, const std::string& key, std::unordered_map<std::string, Contest>* contests) {
    const auto [at, fresh] = contests->try_emplace(key, Contest{id, false});
    Contest& contest = at->second;
    if (!fresh) {
      contest = {std::min(contest.winner, id), true};
      return;
    }
    const std::optional<Row> standing = index_.WinnerOf(key);
    if (!standing) return;
    const std::uint32_t other = IdInKey(standing->key);
    const bool stays = !touched_.contains(other);
    contest = {stays ? std::min(id, other) : id, standing->contested || stays};
  }

  // A contested key that its winner leaves is that of a lower ID, or nobody knows whose.
  void CheckLeft(const Touched& touched, const std::unordered_map<std::string, Contest>& contests) {
    for (const PlannedRow& old : touched.old_rows) {
      if (!old.row.contested) continue;
      const auto contest = contests.find(KeyOf(old));
      if (contest == contests.end() || contest->second.winner > IdInKey(old.row.key)) needs_build_ = true;
    }
  }

  void Place(std::uint32_t id) {
    std::vector<std::uint32_t> way;
    for (std::optional<std::uint32_t> at = id; at; at = hierarchy_.Above(*at)) {
      const auto touched = touched_.find(*at);
      if (touched == touched_.end() || touched->second.placed) break;
      way.push_back(*at);
    }
    for (; !way.empty(); way.pop_back()) {
      Touched& touched = touched_.find(way.back())->second;
      touched.placed = true;
      if (!touched.document.selected) continue;
      const std::optional<std::uint32_t> above = hierarchy_.Above(way.back());
      if (!above) {
        index_.planner_.Plan(touched.document, &touched.rows);
        continue;
      }
      const auto parent = touched_.find(*above);
      index_.planner_.PlanBelow(touched.document,
                                parent != touched_.end() ? parent->second.rows : index_.RowsOf(*above), &touched.rows);
    }
  }

  void Apply() {
    for (const std::uint32_t id : order_) {
      Touched& touched = touched_.find(id)->second;
      std::ranges::sort(touched.rows, {}, [](const PlannedRow& row) -> const std::string& { return row.row.key; });
      index_.TakeOut(touched.old_rows, &touched.rows);
    }
    for (const std::uint32_t id : order_) {
      for (const PlannedRow& row : touched_.find(id)->second.rows) {
        if (!row.row.key.empty()) index_.Insert(row, nullptr);
      }
    }
    for (const std::string& key : contested_) index_.MarkContested(key);
    index_.Settle();
  }

  IndexTree& index_;
  DocumentReader& reader_;
  Hierarchy hierarchy_;
  ENGSTATUS status_ = ENG_OK;
  std::unordered_map<std::uint32_t, Touched> touched_;
  std::vector<std::uint32_t> order_;
  std::unordered_map<std::uint32_t, std::optional<std::uint32_t>> parents_;
  std::unordered_set<std::uint32_t> spread_;  // what hangs below them is touched
  std::vector<std::string> contested_;        // keys of rows
  bool needs_build_ = false;
};

// One that no other's place depends on.
ENGSTATUS IndexTree::UpdateSingle(DocumentReader& reader, std::uint32_t id) {
  auto& [document, old_rows, rows] = single_;
  // The pages come to the processor while it reads and plans.
  const Leaf* leaf = directory_.IsInMemory(id) ? tree_.LeafInMemory(directory_.LeafOf(id)) : nullptr;
  if (leaf) leaf->PrefetchForChange();
  const ENGSTATUS status = reader.Read(id, &document);
  if (status != ENG_OK) return status;
  restricted = restricted || document.restricted;
  if (document.selected) {
    planner_.Plan(document, &rows);
    const Leaf* target = rows.empty() ? nullptr : tree_.LeafInMemoryFor(rows.front().row.key);
    if (target && target != leaf) target->PrefetchForChange();
  } else {
    rows.clear();
  }
  RowsOf(id, &old_rows);
  sound_ = false;
  TakeOut(old_rows, &rows);
  for (const PlannedRow& row : rows) {
    if (!row.row.key.empty()) Insert(row, old_rows.empty() ? nullptr : &old_rows.front());
  }
  Settle();
  sound_ = true;
  constexpr std::size_t kManyRows = 256;
  if (std::max(rows.capacity(), old_rows.capacity()) > kManyRows) single_ = {};
  return ENG_OK;
}

ENGSTATUS IndexTree::Update(DocumentReader& reader, const std::vector<std::uint32_t>& changed, bool* needs_build) {
  reader.ForgetAbove();
  const bool alone = changed.size() == 1 && !hierarchy_ && !collation_.unique && !reader.selects_below();
  if (alone) return UpdateSingle(reader, changed.front());
  Updater updater(this, reader);
  return updater.Run(changed, needs_build);
}

}  // namespace qcore::index
