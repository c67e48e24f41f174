// Building an index from nothing: all documents are read once, their rows are sorted, and pages are filled in order.
#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "qcore/index/hierarchy.h"
#include "qcore/index/indextree.h"
#include "qcore/index/rowsorter.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::uint32_t kProgressStep = 1000;

struct Progress {
  void (*callback)(void*, std::uint32_t, std::uint32_t) = nullptr;
  void* context = nullptr;
};
std::mutex progress_mutex;
Progress progress;

struct Known {
  std::uint64_t file;
  std::uint64_t slate;
  std::uint32_t id;
  auto operator<=>(const Known&) const = default;
};

struct Stretch {
  std::size_t first;
  std::size_t count;
};

}  // namespace

void SetBuildProgress(void (*callback)(void*, std::uint32_t, std::uint32_t), void* context) {
  const std::lock_guard lock(progress_mutex);
  progress = {callback, context};
}

void ReportBuildProgress(std::uint32_t done, std::uint32_t total) {
  Progress now;
  {
    const std::lock_guard lock(progress_mutex);
    now = progress;
  }
  if (now.callback) now.callback(now.context, done, total);
}

class IndexTree::Builder {
 public:
  explicit Builder(IndexTree* index) : index_(*index) {}

  ENGSTATUS Run(DocumentReader& reader) {
    std::uint32_t highest = 0;
    {
      const std::lock_guard lock(index_.database_->mutex());
      const ENGSTATUS status = index_.database_->store().HighestSlate(&highest);
      if (status != ENG_OK) return status;
    }
    std::uint32_t done = 0;
    const ENGSTATUS status = reader.ReadAll([&](Document& document) {
      if (++done % kProgressStep == 0) ReportBuildProgress(std::min(document.id, highest) / 4, highest / 4);
      Take(&document);
      return ENGSTATUS{ENG_OK};
    });
    if (status != ENG_OK) return status;
    PlaceResponses();
    sorter_.Sort();
    if (index_.collation_.unique) DropDoubles();
    Fill();
    ReportBuildProgress(highest / 4, highest / 4);
    return ENG_OK;
  }

 private:
  void Take(Document* document) {
    if (index_.hierarchy_) {
      known_.push_back({Pack(document->universal.File), Pack(document->universal.Slate), document->id});
    }
    index_.restricted = index_.restricted || document->restricted;
    if (!document->selected) return;
    if (index_.hierarchy_ && document->parent) {
      responses_.emplace(document->id, std::move(*document));
    } else {
      PlaceMain(*document);
    }
  }

  void PlaceMain(const Document& document) {
    index_.planner_.Plan(document, &rows_);
    Put(document.id);
  }

  void Put(std::uint32_t id) {
    const Stretch stretch{sorter_.size(), rows_.size()};
    for (const PlannedRow& row : rows_) sorter_.Add(row);
    if (index_.hierarchy_) placed_.emplace(id, stretch);
  }

  std::optional<std::uint32_t> ParentOf(std::uint32_t id) const {
    const auto response = responses_.find(id);
    if (response == responses_.end()) return std::nullopt;
    const UNIVERSALSLATEID& parent = *response->second.parent;
    const Known wanted{Pack(parent.File), Pack(parent.Slate), 0};
    const auto at = std::lower_bound(known_.begin(), known_.end(), wanted);
    if (at == known_.end() || at->file != wanted.file || at->slate != wanted.slate) return std::nullopt;
    const bool has_rows = placed_.contains(at->id) || responses_.contains(at->id);
    return has_rows ? std::optional(at->id) : std::nullopt;
  }

  void PlaceResponses() {
    std::sort(known_.begin(), known_.end());
    Hierarchy hierarchy([this](std::uint32_t id) { return ParentOf(id); });
    std::vector<std::uint32_t> way;
    for (const auto& [id, document] : responses_) {
      // Those above come first.
      way.clear();
      for (std::optional<std::uint32_t> at = id; at && !placed_.contains(*at); at = hierarchy.Above(*at)) {
        way.push_back(*at);
      }
      for (; !way.empty(); way.pop_back()) PlaceResponse(way.back(), hierarchy.Above(way.back()));
    }
  }

  void PlaceResponse(std::uint32_t id, std::optional<std::uint32_t> above) {
    const Document& document = responses_.find(id)->second;
    if (!above) return PlaceMain(document);
    std::vector<PlannedRow> parents;
    const Stretch stretch = placed_.find(*above)->second;
    for (std::size_t i = 0; i < stretch.count; ++i) parents.push_back(sorter_.At(stretch.first + i));
    index_.planner_.PlanBelow(document, parents, &rows_);
    Put(id);
  }

  // Of rows with equal keys the one with the lowest ID stays, and what hangs below the others goes with them.
  void DropDoubles() {
    std::string kept;
    std::string winner;
    std::string dropped;
    sorter_.Filter([&](const PlannedRow& row) {
      if (!dropped.empty() && row.row.key.starts_with(dropped)) return false;
      const std::string key = row.row.key.substr(0, row.row.key.size() - kIdSize);
      if (key == kept) {
        dropped = row.row.key;
        if (contested_.empty() || contested_.back() != winner) contested_.push_back(winner);
        return false;
      }
      if (row.row.indent == 0) {
        kept = key;
        winner = row.row.key;
      }
      return true;
    });
  }

  void Fill() {
    PageTree::Builder builder(&index_.tree_);
    std::vector<std::string> open;
    bool any = false;
    auto contested = contested_.begin();
    sorter_.ForEach([&](PlannedRow row) {
      any = true;
      row.row.contested = contested != contested_.end() && row.row.key == *contested;
      if (row.row.contested) ++contested;
      for (std::size_t step = 0; step < row.categories.size(); ++step) {
        Row category = RowPlanner::CategoryRow(row, step);
        if (step < open.size() && open[step] == category.key) continue;
        open.resize(step);
        open.push_back(category.key);
        builder.Add(std::move(category));
      }
      builder.Add(std::move(row.row));
    });
    if (any && index_.totals_.columns() != 0) {
      Row total;
      total.key = kTotalKey;
      total.kind = RowKind::kTotal;
      builder.Add(std::move(total));
    }
    builder.Finish();
  }

  IndexTree& index_;
  RowSorter sorter_;
  std::vector<PlannedRow> rows_;
  std::vector<Known> known_;
  std::unordered_map<std::uint32_t, Document> responses_;
  std::unordered_map<std::uint32_t, Stretch> placed_;
  std::vector<std::string> contested_;  // keys of rows that others were left out for, in order
};

ENGSTATUS IndexTree::Build(DocumentReader& reader) {
  Drop();
  restricted = reader.depends_on_user();
  reader.ForgetAbove();
  Builder builder(this);
  const ENGSTATUS status = builder.Run(reader);
  reader.ForgetAbove();
  if (status != ENG_OK) Drop();
  sound_ = status == ENG_OK;
  return status;
}

}  // namespace qcore::index
