#include "qcore/index/pagetree.h"

#include <algorithm>

namespace qcore::index {

namespace {

constexpr std::size_t kPageSize = 8192;
constexpr std::size_t kFilled = 7700;  // of a leaf that is built in order
constexpr std::size_t kThin = 2048;    // looks for a neighbour to join
constexpr std::size_t kMostChildren = 96;

bool IsFull(const Page& page) {
  if (page.height == 0) return page.size() > kPageSize && page.leaf.count() > 1;
  return page.children.size() > kMostChildren || (page.size() > kPageSize && page.children.size() > 3);
}

// Tells the first key of the right side from the last of the left.
std::string Separator(std::string_view left, std::string_view right) {
  std::size_t length = 0;
  while (length < left.size() && length < right.size() && left[length] == right[length]) ++length;
  return std::string(right.substr(0, length + 1));
}

bool HasKind(const Sum& sum, bool document) { return document ? sum.documents != 0 : sum.documents != sum.rows; }

std::uint32_t CountOf(const Page& page) {
  return page.height == 0 ? page.leaf.count() : static_cast<std::uint32_t>(page.children.size());
}

}  // namespace

PageNumber PageTree::NewNumber() {
  if (free_.empty()) return next_page_++;
  const PageNumber number = free_.back();
  free_.pop_back();
  return number;
}

std::unique_ptr<Page> PageTree::NewPage(std::uint8_t height) {
  auto page = std::make_unique<Page>();
  page->number = NewNumber();
  page->height = height;
  page->changed = true;
  if (height == 0) NoteLeaf(page.get());
  return page;
}

// False when another page has the number.
bool PageTree::NoteLeaf(Page* page) {
  if (page->number >= leaves_.size()) leaves_.resize(page->number + 1);
  Page*& known = leaves_[page->number];
  if (known) return false;
  known = page;
  return true;
}

void PageTree::Release(Page* page) {
  if (page->height == 0) leaves_[page->number] = nullptr;
  free_.push_back(page->number);
  gone_.push_back(page->number);
}

Page* PageTree::Load(Child* child, std::uint8_t height) {
  if (child->page) return child->page.get();
  if (!reader_ || child->number >= next_page_) throw IndexFault{ENG_ERR_DB_DAMAGED};
  const std::size_t totals = totals_ ? totals_->columns() : 0;
  std::unique_ptr<Page> page = Page::Decode(reader_(child->number), child->number, height, totals);
  // What the parent says of the page guards against a page of another time.
  if (!page || !page->Recount(totals_).SameCounts(child->sum)) throw IndexFault{ENG_ERR_DB_DAMAGED};
  if (height == 0 && !NoteLeaf(page.get())) throw IndexFault{ENG_ERR_DB_DAMAGED};
  child->page = std::move(page);
  return child->page.get();
}

// Look-ups

PageTree::Cursor PageTree::At(Rank rank) {
  Cursor cursor;
  if (rank >= rows()) return cursor;
  Child* child = &root_;
  for (std::uint8_t height = height_;; --height) {
    Page* page = Load(child, height);
    cursor.pages_[cursor.depth_] = page;
    std::uint32_t at = height == 0 ? rank : 0;
    if (height != 0) {
      at = static_cast<std::uint32_t>(page->ChildAt(rank));
      rank -= page->Before(at);
      child = &page->children[at];
    }
    cursor.at_[cursor.depth_++] = at;
    if (height == 0) return cursor;
  }
}

bool PageTree::Descend(Cursor* cursor, bool to_last) {
  Page* page = cursor->pages_[cursor->depth_ - 1];
  while (page->height != 0) {
    page = Load(&page->children[cursor->at_[cursor->depth_ - 1]], page->height - 1);
    cursor->pages_[cursor->depth_] = page;
    cursor->at_[cursor->depth_++] = to_last ? CountOf(*page) - 1 : 0;
  }
  return true;
}

namespace {

// Of leaves in memory: what a walk forward meets next.
void PrefetchBehind(const Page& parent, std::size_t at) {
  constexpr std::size_t kLine = 64;
  const auto page = [&parent](std::size_t child) {
    return child < parent.children.size() ? parent.children[child].page.get() : nullptr;
  };
  if (const Page* soon = page(at + 2)) {
    for (std::size_t i = 0; i < sizeof(Leaf) + kLine; i += kLine) {
      __builtin_prefetch(reinterpret_cast<const char*>(soon) + i);
    }
  }
  if (const Page* next = page(at + 1)) next->leaf.Prefetch();
}

}  // namespace

bool PageTree::Next(Cursor* cursor) {
  for (; cursor->depth_ != 0; --cursor->depth_) {
    std::uint32_t& at = cursor->at_[cursor->depth_ - 1];
    if (++at >= CountOf(*cursor->pages_[cursor->depth_ - 1])) continue;
    if (cursor->pages_[cursor->depth_ - 1]->height == 1) PrefetchBehind(*cursor->pages_[cursor->depth_ - 1], at);
    return Descend(cursor, false);
  }
  return false;
}

bool PageTree::Prev(Cursor* cursor) {
  for (; cursor->depth_ != 0; --cursor->depth_) {
    std::uint32_t& at = cursor->at_[cursor->depth_ - 1];
    if (at-- != 0) return Descend(cursor, true);
  }
  return false;
}

PageTree::Cursor PageTree::Seek(std::string_view key, Rank* rank) {
  Cursor cursor;
  *rank = 0;
  if (rows() == 0) return cursor;
  Child* child = &root_;
  for (std::uint8_t height = height_;; --height) {
    Page* page = Load(child, height);
    const auto at = height == 0 ? page->leaf.LowerBound(key) : static_cast<std::uint32_t>(page->ChildFor(key));
    cursor.pages_[cursor.depth_] = page;
    cursor.at_[cursor.depth_++] = at;
    if (height == 0) {
      *rank += at;
      if (at != page->leaf.count()) return cursor;
      --cursor.at_[cursor.depth_ - 1];
      Next(&cursor);
      return cursor;
    }
    *rank += page->Before(at);
    child = &page->children[at];
  }
}

Rank PageTree::RankOf(std::string_view key) {
  if (rows() == 0) return 0;
  Rank rank = 0;
  Child* child = &root_;
  for (std::uint8_t height = height_;; --height) {
    Page* page = Load(child, height);
    if (height == 0) return rank + page->leaf.LowerBound(key);
    const std::size_t at = page->ChildFor(key);
    rank += page->Before(at);
    child = &page->children[at];
  }
}

bool PageTree::Has(std::string_view key) {
  if (rows() == 0) return false;
  Child* child = &root_;
  for (std::uint8_t height = height_;; --height) {
    Page* page = Load(child, height);
    if (height == 0) return page->leaf.HasKey(page->leaf.LowerBound(key), key);
    child = &page->children[page->ChildFor(key)];
  }
}

template <typename Fits, typename RowFits>
std::optional<Rank> PageTree::Forward(Child* child, std::uint8_t height, Rank base, Rank from, const Fits& fits,
                                      const RowFits& row_fits) {
  Page* page = Load(child, height);
  if (height == 0) {
    for (std::uint32_t row = from > base ? from - base : 0; row < page->leaf.count(); ++row) {
      if (row_fits(page->leaf, row)) return base + row;
    }
    return std::nullopt;
  }
  for (std::size_t i = from > base ? page->ChildAt(from - base) : 0; i < page->children.size(); ++i) {
    if (!fits(*page, i)) continue;
    const std::optional<Rank> found =
        Forward(&page->children[i], height - 1, base + page->Before(i), from, fits, row_fits);
    if (found) return found;
  }
  return std::nullopt;
}

template <typename Fits, typename RowFits>
std::optional<Rank> PageTree::Backward(Child* child, std::uint8_t height, Rank base, Rank until, const Fits& fits,
                                       const RowFits& row_fits) {
  Page* page = Load(child, height);
  if (height == 0) {
    for (std::uint32_t row = std::min(page->leaf.count(), until - base); row-- > 0;) {
      if (row_fits(page->leaf, row)) return base + row;
    }
    return std::nullopt;
  }
  const std::size_t behind =
      until - base >= child->sum.rows ? page->children.size() : page->ChildAt(until - base - 1) + 1;
  for (std::size_t i = behind; i-- > 0;) {
    if (!fits(*page, i)) continue;
    const std::optional<Rank> found =
        Backward(&page->children[i], height - 1, base + page->Before(i), until, fits, row_fits);
    if (found) return found;
  }
  return std::nullopt;
}

std::optional<Rank> PageTree::NextAtMost(Rank rank, std::uint8_t level) {
  if (rank + 1 >= rows()) return std::nullopt;
  return Forward(
      &root_, height_, 0, rank + 1,
      [level](const Page& page, std::size_t child) { return page.levels[child] <= level; },
      [level](const Leaf& leaf, std::uint32_t row) { return leaf.LevelAt(row) <= level; });
}

bool PageTree::NextAtMost(Cursor* cursor, Rank* rank, std::uint8_t level) {
  // In each page up from the leaf, the part behind the cursor; `rank` is that of the first row there.
  const auto fits = [level](const Page& page, std::uint32_t at) {
    return (page.height == 0 ? page.leaf.LevelAt(at) : page.levels[at]) <= level;
  };
  for (; cursor->depth_ != 0; --cursor->depth_) {
    const Page& page = *cursor->pages_[cursor->depth_ - 1];
    const std::uint32_t from = cursor->at_[cursor->depth_ - 1];
    const std::uint32_t count = CountOf(page);
    std::uint32_t at = from + 1;
    while (at < count && !fits(page, at)) ++at;
    *rank += page.height == 0 ? at - from : page.Before(at) - page.ends[from];
    if (at == count) continue;
    cursor->at_[cursor->depth_ - 1] = at;
    break;
  }
  if (cursor->depth_ == 0) return false;
  for (Page* page = cursor->pages_[cursor->depth_ - 1]; page->height != 0;) {
    page = Load(&page->children[cursor->at_[cursor->depth_ - 1]], page->height - 1);
    std::uint32_t at = 0;
    while (!fits(*page, at)) ++at;
    *rank += page->height == 0 ? at : page->Before(at);
    cursor->pages_[cursor->depth_] = page;
    cursor->at_[cursor->depth_++] = at;
  }
  return true;
}

std::optional<Rank> PageTree::PrevAtMost(Rank rank, std::uint8_t level) {
  if (rank == 0 || rows() == 0) return std::nullopt;
  return Backward(
      &root_, height_, 0, rank, [level](const Page& page, std::size_t child) { return page.levels[child] <= level; },
      [level](const Leaf& leaf, std::uint32_t row) { return leaf.LevelAt(row) <= level; });
}

std::optional<Rank> PageTree::NextOfKind(Rank rank, bool document) {
  if (rank + 1 >= rows()) return std::nullopt;
  return Forward(
      &root_, height_, 0, rank + 1,
      [document](const Page& page, std::size_t child) { return HasKind(page.children[child].sum, document); },
      [document](const Leaf& leaf, std::uint32_t row) { return (leaf.KindAt(row) == RowKind::kDocument) == document; });
}

std::optional<Rank> PageTree::PrevOfKind(Rank rank, bool document) {
  if (rank == 0 || rows() == 0) return std::nullopt;
  return Backward(
      &root_, height_, 0, rank,
      [document](const Page& page, std::size_t child) { return HasKind(page.children[child].sum, document); },
      [document](const Leaf& leaf, std::uint32_t row) { return (leaf.KindAt(row) == RowKind::kDocument) == document; });
}

PageTree::Found PageTree::SelectBelow(Child* child, std::uint8_t height, Rank base, Rank from, std::uint8_t level,
                                      std::uint32_t* n, Rank* rank) {
  Page* page = Load(child, height);
  if (height == 0) {
    const std::uint32_t start = page->leaf.PassLevel(from > base ? from - base : 0, level, n);
    for (std::uint32_t row = start; row < page->leaf.count(); ++row) {
      const std::uint8_t found = page->leaf.LevelAt(row);
      if (found < level) return Found::kStopped;
      if (found == level && --*n == 0) {
        *rank = base + row;
        return Found::kYes;
      }
    }
    return Found::kNo;
  }
  std::size_t at = from > base ? page->ChildAt(from - base) : 0;
  if (from > base && at < page->children.size()) {
    const Found found = SelectBelow(&page->children[at], height - 1, base + page->Before(at), from, level, n, rank);
    if (found != Found::kNo) return found;
    ++at;
  }
  for (; at < page->children.size(); ++at) {
    if (page->levels[at] < level) break;  // what is looked for may stand before that row
    const std::uint32_t count = page->levels[at] == level ? page->at_levels[at] : 0;
    if (count >= *n) break;
    *n -= count;
  }
  if (at == page->children.size()) return Found::kNo;
  return SelectBelow(&page->children[at], height - 1, base + page->Before(at), from, level, n, rank);
}

std::optional<Rank> PageTree::Select(Rank from, std::uint8_t level, std::uint32_t n) {
  if (from >= rows() || n == 0) return std::nullopt;
  Rank rank = 0;
  return SelectBelow(&root_, height_, 0, from, level, &n, &rank) == Found::kYes ? std::optional(rank) : std::nullopt;
}

void PageTree::RangeBelow(Child* child, std::uint8_t height, Rank base, Rank first, Rank last, Sum* sum) {
  Page* page = Load(child, height);
  if (height == 0) {
    const std::uint32_t begin = first > base ? first - base : 0;
    page->leaf.Count(begin, std::min(page->leaf.count(), last - base), totals_, sum);
    return;
  }
  const std::size_t begin = first > base ? page->ChildAt(first - base) : 0;
  base += page->Before(begin);
  for (std::size_t i = begin; i < page->children.size(); ++i) {
    Child& next = page->children[i];
    if (base >= last) return;
    const Rank end = base + next.sum.rows;
    if (base >= first && end <= last) {
      sum->Add(next.sum);
    } else if (end > first) {
      RangeBelow(&next, height - 1, base, first, last, sum);
    }
    base = end;
  }
}

Sum PageTree::Range(Rank first, Rank last) {
  Sum sum;
  last = std::min(last, rows());
  if (first < last) RangeBelow(&root_, height_, 0, first, last, &sum);
  return sum;
}

const Leaf* PageTree::LeafFor(std::string_view key) {
  if (rows() == 0) return nullptr;
  Child* child = &root_;
  for (std::uint8_t height = height_; height != 0; --height) {
    Page* page = Load(child, height);
    child = &page->children[page->ChildFor(key)];
  }
  return &Load(child, 0)->leaf;
}

const Leaf* PageTree::LeafInMemoryFor(std::string_view key) const {
  const Page* page = root_.page.get();
  while (page && page->height != 0) page = page->children[page->ChildFor(key)].page.get();
  return page ? &page->leaf : nullptr;
}

// Changes

void PageTree::SetSum(Child* child) {
  child->page->changed = true;
  child->sum = child->page->Recount(totals_);
}

// The sum of a page of which one child has changed, and nothing else.
void PageTree::FollowChild(Child* child, std::size_t at, const Sum& before) {
  Page& page = *child->page;
  const Sum& now = page.children[at].sum;
  Sum& sum = child->sum;
  const bool simple = now.least == before.least && now.least >= sum.least && now.totals.empty() && sum.totals.empty();
  if (!simple || page.ends.size() != page.children.size()) return SetSum(child);
  page.changed = true;
  const std::uint32_t rows = now.rows - before.rows;  // wraps where rows went
  for (std::size_t i = at; i < page.ends.size(); ++i) page.ends[i] += rows;
  page.at_levels[at] = now.at_least;
  sum.rows += rows;
  sum.documents += now.documents - before.documents;
  if (now.least == sum.least) sum.at_least += now.at_least - before.at_least;
}

void PageTree::Notice(const Page& page, std::uint32_t first, std::uint32_t last) {
  if (!watcher_) return;
  for (std::uint32_t row = first; row < last; ++row) {
    if (page.leaf.KindAt(row) == RowKind::kDocument) watcher_->Came(page.leaf.IdAt(row), page.number);
  }
}

namespace {

std::vector<std::uint32_t> IdsOf(const Leaf& leaf) {
  std::vector<std::uint32_t> ids;
  for (std::uint32_t row = 0; row < leaf.count(); ++row) {
    if (leaf.KindAt(row) == RowKind::kDocument) ids.push_back(leaf.IdAt(row));
  }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

}  // namespace

void PageTree::SplitLeaf(Page* page, Page* right) {
  const Leaf whole = std::move(page->leaf);
  const std::size_t half = whole.size() / 2;
  std::uint32_t at = 0;
  for (std::size_t size = 0; at + 1 < whole.count() && (at == 0 || size < half); ++at) size += whole.SizeOf(at);
  page->leaf = Leaf();
  page->leaf.AssignPart(whole, 0, at);
  right->leaf.AssignPart(whole, at, whole.count());
  if (!watcher_) return;
  const std::vector<std::uint32_t> stay = IdsOf(page->leaf);
  for (const std::uint32_t id : IdsOf(right->leaf)) {
    watcher_->Came(id, right->number);
    if (!std::binary_search(stay.begin(), stay.end(), id)) watcher_->Went(id, page->number);
  }
}

void PageTree::SplitChild(Page* parent, std::size_t at) {
  Page* page = parent->children[at].page.get();
  std::unique_ptr<Page> right = NewPage(page->height);
  Child made;
  if (page->height == 0) {
    SplitLeaf(page, right.get());
    made.key = Separator(page->leaf.KeyAt(page->leaf.count() - 1), right->leaf.KeyAt(0));
  } else {
    const auto half = page->children.begin() + static_cast<std::ptrdiff_t>(page->children.size() / 2);
    right->children.assign(std::make_move_iterator(half), std::make_move_iterator(page->children.end()));
    page->children.erase(half, page->children.end());
    page->IndexKeys();
    right->IndexKeys();
    made.key = right->children.front().key;
  }
  made.number = right->number;
  made.page = std::move(right);
  SetSum(&made);
  SetSum(&parent->children[at]);
  parent->children.insert(parent->children.begin() + static_cast<std::ptrdiff_t>(at) + 1, std::move(made));
  parent->IndexKeys();
  parent->changed = true;
}

void PageTree::GrowRoot() {
  std::unique_ptr<Page> top = NewPage(static_cast<std::uint8_t>(height_ + 1));
  Child below = std::move(root_);
  root_ = Child();
  top->children.push_back(std::move(below));
  SplitChild(top.get(), 0);
  root_.number = top->number;
  root_.page = std::move(top);
  SetSum(&root_);
  ++height_;
}

PageTree::Change PageTree::InsertBelow(Child* child, std::uint8_t height, const Row& row) {
  Page* page = Load(child, height);
  if (height == 0) {
    const std::uint32_t at = page->leaf.LowerBound(row.key);
    const bool replaces = page->leaf.HasKey(at, row.key);
    if (replaces) page->leaf.Erase(at);
    page->leaf.Insert(at, row);
    Notice(*page, at, at + 1);
    if (replaces || totals_) {
      SetSum(child);
    } else {
      page->changed = true;
      child->sum.AddRow(row.level, row.kind);
    }
    return Change::kContent;
  }
  const std::size_t at = page->ChildFor(row.key);
  const Sum before = page->children[at].sum;
  const Change below = InsertBelow(&page->children[at], static_cast<std::uint8_t>(height - 1), row);
  if (below != Change::kContent || !IsFull(*page->children[at].page)) {
    FollowChild(child, at, before);
    return Change::kSum;
  }
  SplitChild(page, at);
  SetSum(child);
  return Change::kContent;
}

void PageTree::Insert(const Row& row) {
  if (root_.number == 0) {
    root_.page = NewPage(0);
    root_.number = root_.page->number;
    height_ = 0;
  }
  if (InsertBelow(&root_, height_, row) == Change::kContent && IsFull(*root_.page)) GrowRoot();
}

bool PageTree::MergeAround(Page* parent, std::size_t at) {
  std::vector<Child>& children = parent->children;
  Page* page = children[at].page.get();
  if (CountOf(*page) == 0) {
    Release(page);
    children.erase(children.begin() + static_cast<std::ptrdiff_t>(at));
    parent->IndexKeys();
    return true;
  }
  if (children.size() < 2 || page->size() > kThin) return false;
  const std::size_t left = at == 0 ? 0 : at - 1;
  Page* first = Load(&children[left], page->height);
  Page* second = Load(&children[left + 1], page->height);
  if (first->size() + second->size() > kPageSize / 2) return false;
  if (page->height == 0) {
    std::vector<Row> rows;
    for (const Page* part : {first, second}) {
      for (std::uint32_t i = 0; i < part->leaf.count(); ++i) rows.push_back(part->leaf.RowAt(i));
    }
    if (watcher_) {
      for (const std::uint32_t id : IdsOf(second->leaf)) {
        watcher_->Came(id, first->number);
        watcher_->Went(id, second->number);
      }
    }
    first->leaf.Assign(rows);
  } else {
    if (first->children.size() + second->children.size() > kMostChildren) return false;
    second->children.front().key = children[left + 1].key;
    std::move(second->children.begin(), second->children.end(), std::back_inserter(first->children));
    first->IndexKeys();
  }
  Release(second);
  children.erase(children.begin() + static_cast<std::ptrdiff_t>(left) + 1);
  parent->IndexKeys();
  SetSum(&children[left]);
  return true;
}

void PageTree::EraseInLeaf(Child* child, std::uint32_t at, Erased* erased) {
  Page* page = child->page.get();
  Leaf& leaf = page->leaf;
  const std::uint8_t level = leaf.LevelAt(at);
  const RowKind kind = leaf.KindAt(at);
  const std::uint32_t id = leaf.IdAt(at);
  erased->level = level;
  erased->first_in_leaf = at == 0;
  if (at != 0 && leaf.KindAt(at - 1) == RowKind::kCategory && leaf.LevelAt(at - 1) < level) {
    erased->above = leaf.KeyAt(at - 1);
  }
  leaf.Erase(at);
  page->changed = true;
  if (totals_ || !child->sum.RemoveRow(level, kind)) SetSum(child);
  if (watcher_ && id != 0 && leaf.FindId(id) == leaf.count()) watcher_->Went(id, page->number);
}

PageTree::Change PageTree::EraseBelow(Child* child, std::uint8_t height, std::string_view key, Erased* erased) {
  Page* page = Load(child, height);
  if (height == 0) {
    const std::uint32_t at = page->leaf.LowerBound(key);
    if (!page->leaf.HasKey(at, key)) return Change::kNone;
    EraseInLeaf(child, at, erased);
    return Change::kContent;
  }
  const std::size_t at = page->ChildFor(key);
  const Sum before = page->children[at].sum;
  const Change below = EraseBelow(&page->children[at], static_cast<std::uint8_t>(height - 1), key, erased);
  if (below == Change::kNone) return Change::kNone;
  if (below == Change::kContent && MergeAround(page, at)) {
    SetSum(child);
    return Change::kContent;
  }
  FollowChild(child, at, before);
  return Change::kSum;
}

bool PageTree::Erase(std::string_view key, std::string* above) {
  Erased erased;
  if (root_.number == 0 || EraseBelow(&root_, height_, key, &erased) == Change::kNone) return false;
  if (CountOf(*root_.page) == 0) {
    Release(root_.page.get());
    root_ = Child();
    height_ = 0;
  }
  while (height_ != 0 && root_.page->children.size() == 1) {
    Release(root_.page.get());
    Child only = std::move(root_.page->children.front());
    only.key.clear();
    root_ = std::move(only);
    Load(&root_, --height_);
  }
  if (!above) return true;
  *above = std::move(erased.above);
  const Rank behind = erased.first_in_leaf && erased.level != 0 ? RankOf(key) : 0;
  if (behind == 0) return true;
  const Cursor before = At(behind - 1);
  if (before.kind() == RowKind::kCategory && before.level() < erased.level) *above = before.key();
  return true;
}

bool PageTree::SetValue(std::string_view key, Bytes value) {
  Rank rank = 0;
  const Cursor cursor = Seek(key, &rank);
  if (!cursor.at_row() || !cursor.HasKey(key)) return false;
  Page* leaf = cursor.pages_[cursor.depth_ - 1];
  const bool grows = value.size() > cursor.value().size();
  if ((totals_ && totals_->columns() != 0) || (grows && leaf->size() + value.size() > kPageSize)) {
    Row row = cursor.row();
    row.value.assign(value.begin(), value.end());
    Insert(row);
    return true;
  }
  leaf->leaf.SetValue(cursor.slot(), value);
  leaf->changed = true;
  return true;
}

void PageTree::Clear() {
  root_ = Child();
  height_ = 0;
  next_page_ = 1;
  free_.clear();
  gone_.clear();
  leaves_.clear();
}

// Building

void PageTree::Builder::Add(Row row) {
  size_ += row.key.size() + row.value.size() + 12;
  rows_.push_back(std::move(row));
  // Keys share more within a page than a sum tells, and the leaf's own size is known only when it is made.
  if (rows_.size() > 1) {
    const std::string_view first = rows_.front().key;
    const std::string_view last = rows_.back().key;
    std::size_t common = 0;
    while (common < first.size() && common < last.size() && first[common] == last[common]) ++common;
    if (size_ - common * rows_.size() > kFilled) FlushLeaf();
  }
}

void PageTree::Builder::FlushLeaf() {
  if (rows_.empty()) return;
  Child child;
  child.page = tree_.NewPage(0);
  child.number = child.page->number;
  child.key = rows_.front().key;
  child.page->leaf.Assign(rows_);
  tree_.Notice(*child.page, 0, child.page->leaf.count());
  tree_.SetSum(&child);
  level_.push_back(std::move(child));
  rows_.clear();
  size_ = 0;
}

void PageTree::Builder::Finish() {
  FlushLeaf();
  std::uint8_t height = 0;
  while (level_.size() > 1) {
    ++height;
    std::vector<Child> above;
    for (std::size_t at = 0; at < level_.size();) {
      const std::size_t left = level_.size() - at;
      // A rest of one page would make a page of a single child.
      std::size_t take = std::min(left, kMostChildren * 3 / 4);
      if (left - take == 1) --take;
      Child child;
      child.page = tree_.NewPage(height);
      child.number = child.page->number;
      child.key = level_[at].key;
      const auto from = level_.begin() + static_cast<std::ptrdiff_t>(at);
      child.page->children.assign(std::make_move_iterator(from),
                                  std::make_move_iterator(from + static_cast<std::ptrdiff_t>(take)));
      child.page->IndexKeys();
      tree_.SetSum(&child);
      above.push_back(std::move(child));
      at += take;
    }
    level_ = std::move(above);
  }
  if (level_.empty()) return;
  tree_.root_ = std::move(level_.front());
  tree_.root_.key.clear();
  tree_.height_ = height;
}

// Keeping

PageTree::Root PageTree::root() const { return {root_.number, height_, next_page_, root_.sum}; }

void PageTree::SetRoot(const Root& root) {
  Clear();
  root_.number = root.number;
  root_.sum = root.sum;
  height_ = root.height;
  next_page_ = root.next_page;
}

namespace {

template <typename Visit>
void ForEachPage(const Child& child, const Visit& visit) {
  if (!child.page) return;
  visit(*child.page);
  for (const Child& below : child.page->children) ForEachPage(below, visit);
}

}  // namespace

void PageTree::ForEachChanged(const std::function<void(const Page&)>& visit) {
  ForEachPage(root_, [&visit](const Page& page) {
    if (page.changed) visit(page);
  });
}

void PageTree::MarkKept() {
  ForEachPage(root_, [](Page& page) { page.changed = false; });
  gone_.clear();
}

void PageTree::ReadAll() {
  if (rows() == 0) return;
  Cursor cursor = At(0);
  std::string before;
  do {
    std::string key = cursor.key();
    if (!before.empty() && key <= before) throw IndexFault{ENG_ERR_DB_DAMAGED};
    before = std::move(key);
  } while (Next(&cursor));
}

std::size_t PageTree::Memory() const {
  std::size_t memory = leaves_.capacity() * sizeof(Page*);
  ForEachPage(root_, [&memory](const Page& page) {
    memory += sizeof(Page) + page.leaf.Memory() + page.children.capacity() * sizeof(Child) + 4 * page.ends.capacity() +
              8 * page.heads.capacity() + 5 * page.levels.capacity();
    for (const Child& child : page.children) memory += child.key.capacity() + child.sum.totals.capacity() * 8;
  });
  return memory;
}

}  // namespace qcore::index
