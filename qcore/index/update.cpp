// Bringing changed documents into an index.
//
// The documents that may stand elsewhere are found first: those that changed, and what hangs below one whose place
// changes. Then each one's rows are planned anew, those above first, and what differs from the rows in the tree is
// applied.
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

  ENGSTATUS Run(const std::vector<std::uint32_t>& changed) {
    for (const std::uint32_t id : changed) {
      if (!Touch(id)) return status_;
    }
    if (index_.hierarchy_ || reader_.selects_below()) Spread(changed);
    for (std::size_t i = 0; status_ == ENG_OK && i < order_.size(); ++i) Place(order_[i]);
    if (status_ == ENG_OK) Apply();
    return status_;
  }

 private:
  struct Touched {
    Document document;
    std::vector<PlannedRow> old_rows;
    std::vector<PlannedRow> rows;
    bool placed = false;
  };

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

  bool HasRows(std::uint32_t id) {
    const auto at = touched_.find(id);
    return at != touched_.end() ? at->second.document.selected : index_.Has(id);
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
    if (store.ReadHeader(id, &header) != ENG_OK) return ids;  // gone without a trace: nothing can be found by it
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
    if (reader_.selects_below()) return false;
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
      const auto parent = index_.tree_.PrevAtMost(index_.tree_.RankOf(row.key), row.level - 1);
      return parent && index_.tree_.At(*parent).id() == above;
    });
  }

  void Spread(const std::vector<std::uint32_t>& changed) {
    std::vector<std::uint32_t> moved;
    for (const std::uint32_t id : changed) {
      if (!Stays(id)) moved.push_back(id);
    }
    std::unordered_set<std::uint32_t> seen(moved.begin(), moved.end());
    while (!moved.empty() && status_ == ENG_OK) {
      const std::uint32_t id = moved.back();
      moved.pop_back();
      for (const std::uint32_t below : BelowOf(id)) {
        if (!seen.insert(below).second) continue;
        if (!Touch(below)) return;
        moved.push_back(below);
      }
    }
    parents_.clear();
    hierarchy_ = Hierarchy([this](std::uint32_t id) { return ParentOf(id); });
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

  // Both lists are in key order.
  void Apply() {
    for (const std::uint32_t id : order_) {
      Touched& touched = touched_.find(id)->second;
      const auto key = [](const PlannedRow& row) -> const std::string& { return row.row.key; };
      std::ranges::sort(touched.rows, {}, key);
      auto now = touched.rows.begin();
      for (const PlannedRow& old : touched.old_rows) {
        while (now != touched.rows.end() && now->row.key < old.row.key) ++now;
        const bool stays = now != touched.rows.end() && now->row.key == old.row.key && now->row.level == old.row.level;
        if (!stays) {
          index_.Erase(old);
        } else {
          if (now->row.value != old.row.value) index_.SetValue(now->row);
          now->row.key.clear();  // done
          ++now;
        }
      }
    }
    for (const std::uint32_t id : order_) {
      for (const PlannedRow& row : touched_.find(id)->second.rows) {
        if (!row.row.key.empty()) index_.Insert(row);
      }
    }
    index_.Settle();
  }

  IndexTree& index_;
  DocumentReader& reader_;
  Hierarchy hierarchy_;
  ENGSTATUS status_ = ENG_OK;
  std::unordered_map<std::uint32_t, Touched> touched_;
  std::vector<std::uint32_t> order_;
  std::unordered_map<std::uint32_t, std::optional<std::uint32_t>> parents_;
};

ENGSTATUS IndexTree::Update(DocumentReader& reader, const std::vector<std::uint32_t>& changed) {
  Updater updater(this, reader);
  return updater.Run(changed);
}

}  // namespace qcore::index
