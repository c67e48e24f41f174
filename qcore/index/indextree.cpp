#include "qcore/index/indextree.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <mutex>
#include <utility>

#include "qcore/store/wire.h"

namespace qcore::index {

ColumnTotals::ColumnTotals(const ValueLayout& layout) {
  for (std::size_t value = 0; value < layout.summary_size(); ++value) {
    if (layout.column(value).totals != Totals::kNone) values_.push_back(value);
  }
}

void ColumnTotals::Add(Bytes value, double* totals) const {
  RowValues values(value);
  RowValues::Item item;
  std::size_t next = 0;
  for (std::size_t number = 0; next < values_.size() && values.Next(&item); ++number) {
    if (number != values_[next]) continue;
    if (item.type == kTypeNumber && item.data.size() >= 8) {
      totals[next] += std::bit_cast<double>(LoadLittle<std::uint64_t>(item.data.data()));
    } else if (item.type == kTypeNumberList) {
      Value whole{static_cast<std::uint8_t>(kTypeNumberList), static_cast<std::uint8_t>(kTypeNumberList >> 8)};
      whole.insert(whole.end(), item.data.begin(), item.data.end());
      totals[next] += NumberOf(whole).value_or(0);
    }
    ++next;
  }
}

std::optional<std::size_t> ColumnTotals::PlaceOf(std::size_t value) const {
  const auto at = std::find(values_.begin(), values_.end(), value);
  if (at == values_.end()) return std::nullopt;
  return static_cast<std::size_t>(at - values_.begin());
}

IndexTree::IndexTree(std::shared_ptr<Database> database, std::uint32_t view, const Collation& collation,
                     const ValueLayout& layout, bool hierarchy)
    : database_(std::move(database)),
      view_(view),
      collation_(collation),
      planner_(collation, layout),
      totals_(layout),
      hierarchy_(hierarchy),
      tree_(totals_.columns() == 0 ? nullptr : &totals_, &directory_) {
  tree_.SetReader([this](PageNumber page) {
    std::vector<std::uint8_t> bytes = ReadStored(page);
    if (bytes.empty()) throw IndexFault{ENG_ERR_DB_DAMAGED};
    return bytes;
  });
}

std::string IndexTree::KeyInStored(PageNumber leaf) {
  const std::unique_ptr<Page> page = Page::Decode(ReadStored(leaf), leaf, 0, totals_.columns());
  if (!page || page->leaf.count() == 0) throw IndexFault{ENG_ERR_DB_DAMAGED};
  return page->leaf.KeyAt(0);
}

std::vector<PlannedRow> IndexTree::RowsOf(std::uint32_t id) {
  std::vector<PlannedRow> rows;
  RowsOf(id, &rows);
  return rows;
}

void IndexTree::RowsOf(std::uint32_t id, std::vector<PlannedRow>* rows) {
  std::size_t count = 0;
  directory_.ForEachLeafOf(id, [&](PageNumber number) {
    const Leaf* leaf = tree_.LeafInMemory(number);
    if (!leaf) leaf = tree_.LeafFor(KeyInStored(number));
    for (std::uint32_t at = leaf ? leaf->FindId(id) : 0; leaf && at < leaf->count(); at = leaf->FindId(id, at + 1)) {
      if (count == rows->size()) rows->emplace_back();
      leaf->RowTo(at, &(*rows)[count++].row);
    }
  });
  rows->resize(count);
  for (PlannedRow& planned : *rows) {
    planned.parent_end = 0;
    const Row& row = planned.row;
    if (row.indent == 0 || row.level != kDeepestLevel) continue;
    const auto parent = tree_.PrevAtMost(tree_.RankOf(row.key), kDeepestLevel - 1);
    if (parent) planned.parent_end = static_cast<std::uint32_t>(tree_.At(*parent).key().size());
  }
  if (rows->size() < 2) return;
  std::ranges::sort(*rows, {}, [](const PlannedRow& row) -> const std::string& { return row.row.key; });
}

namespace {

std::uint64_t NewStamp() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

}  // namespace

void IndexTree::Note(RowEvent kind, const Row& row) {
  ++unkept_;
  if (kind != RowEvent::kChanged) stamp_ = NewStamp();
  changed_ = true;
  if (!watched) return;
  changes_.push_back({kind, row.kind, row.indent, row.kind == RowKind::kDocument ? IdInKey(row.key) : 0, row.key});
}

void IndexTree::Insert(const PlannedRow& planned, const PlannedRow* former) {
  for (std::size_t step = planned.categories.size(); step-- > 0;) {
    const std::string_view key = std::string_view(planned.row.key).substr(0, planned.categories[step].end);
    // Empty categories stay until the batch is done, and no sort key is the beginning of another.
    if (former && former->row.level > step && former->row.key.starts_with(key)) break;
    if (tree_.Has(key)) break;  // and so are those above it
    const Row category = RowPlanner::CategoryRow(planned, step);
    tree_.Insert(category);
    Note(RowEvent::kInserted, category);
  }
  tree_.Insert(planned.row);
  Note(RowEvent::kInserted, planned.row);
}

void IndexTree::SetValue(const Row& row) {
  if (tree_.SetValue(row.key, row.value)) Note(RowEvent::kChanged, row);
}

void IndexTree::Erase(const PlannedRow& planned) {
  // The last row of a category to go stands right behind it.
  std::string category;
  if (!tree_.Erase(planned.row.key, &category)) return;
  Note(RowEvent::kRemoved, planned.row);
  if (!category.empty()) maybe_empty_.push_back(std::move(category));
}

void IndexTree::TakeOut(const std::vector<PlannedRow>& old_rows, std::vector<PlannedRow>* rows) {
  auto now = rows->begin();
  for (const PlannedRow& old : old_rows) {
    while (now != rows->end() && now->row.key < old.row.key) ++now;
    const bool stays = now != rows->end() && now->row.key == old.row.key && now->row.level == old.row.level;
    if (!stays) {
      Erase(old);
    } else {
      if (now->row.value != old.row.value) SetValue(now->row);
      now->row.key.clear();
      ++now;
    }
  }
}

std::optional<Row> IndexTree::WinnerOf(std::string_view key) {
  const PageTree::Cursor row = tree_.At(tree_.RankOf(key));
  const bool there = row.at_row() && row.kind() == RowKind::kDocument && row.indent() == 0;
  if (!there || row.key().size() != key.size() + kIdSize || !row.key().starts_with(key)) return std::nullopt;
  return row.row();
}

void IndexTree::MarkContested(const std::string& key) {
  std::optional<Row> row = WinnerOf(std::string_view(key).substr(0, key.size() - kIdSize));
  if (!row || row->key != key || row->contested) return;
  row->contested = true;
  tree_.Insert(*row);
  ++unkept_;
}

void IndexTree::Settle() {
  std::ranges::sort(maybe_empty_, std::greater<>());
  for (std::string& key : maybe_empty_) {
    for (;;) {
      Rank rank = 0;
      const PageTree::Cursor at = tree_.Seek(key, &rank);
      if (!at.at_row() || !at.HasKey(key)) break;
      const Row category = at.row();
      PageTree::Cursor behind = at;
      tree_.Next(&behind);
      if (behind.at_row() && behind.level() > category.level) break;
      std::optional<Rank> above;
      if (category.level != 0) above = tree_.PrevAtMost(rank, category.level - 1);
      std::string next = above ? tree_.At(*above).key() : std::string();
      tree_.Erase(key);
      Note(RowEvent::kRemoved, category);
      key = std::move(next);
    }
  }
  maybe_empty_.clear();
  if (totals_.columns() == 0) return;
  const bool has_total = tree_.Has(kTotalKey);
  const bool wants_total = tree_.sum().documents != 0;
  if (has_total == wants_total) return;
  Row total;
  total.key = kTotalKey;
  total.kind = RowKind::kTotal;
  if (wants_total) {
    tree_.Insert(total);
  } else {
    tree_.Erase(kTotalKey);
  }
  Note(wants_total ? RowEvent::kInserted : RowEvent::kRemoved, total);
}

void IndexTree::Drop() {
  sound_ = false;
  stamp_ = NewStamp();
  tree_.Clear();
  directory_.Clear();
  directory_.SetReader(nullptr);
  copy_ = 0;
  generation_.reset();
  feed = 0;
  folder_change = 0;
  restricted = false;
  maybe_empty_.clear();
  changes_.clear();
  changed_ = false;
  unkept_ = 0;
}

}  // namespace qcore::index
