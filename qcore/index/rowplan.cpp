#include "qcore/index/rowplan.h"

#include <algorithm>

#include "engine/formula.h"
#include "qcore/index/special.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

// Of the first separator; one in a mark, which a row expands, is none.
std::size_t FindSeparator(std::string_view text) {
  std::size_t at = text.find('\\');
  if (at == std::string_view::npos) return at;
  for (std::size_t mark = text.find(ENG_SPECIAL_MARK); mark < at;) {
    const std::size_t behind = mark + std::max<std::size_t>(FrontMarkSize(text.substr(mark)), 1);
    if (behind > at) at = text.find('\\', behind);
    mark = text.find(ENG_SPECIAL_MARK, behind);
  }
  return at;
}

}  // namespace

std::vector<std::string_view> SegmentsOf(std::string_view text) {
  std::vector<std::string_view> segments;
  while (!text.empty() && segments.size() + 1 < kMostSegments) {
    const std::size_t end = FindSeparator(text);
    if (end != 0) segments.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return segments;
    text.remove_prefix(end + 1);
  }
  if (!text.empty()) segments.push_back(text);
  return segments;
}

std::string_view SegmentAt(std::string_view text, std::uint8_t segment) {
  const std::vector<std::string_view> segments = SegmentsOf(text);
  const std::size_t number = segment & ~kRest & 0xFF;
  if (number >= segments.size()) return {};
  const char* from = segments[number].data();
  return (segment & kRest) == 0 ? segments[number] : text.substr(static_cast<std::size_t>(from - text.data()));
}

// A row in the making: the key so far, and which single value stands in for a list.
struct RowPlanner::Draft {
  std::string key;
  std::vector<CategoryStep> categories;
  std::vector<std::pair<std::size_t, const Value*>> chosen;
  std::vector<std::uint8_t> room;  // for a row's value
};

RowPlanner::RowPlanner(const Collation& collation, const ValueLayout& layout) : summary_size_(layout.summary_size()) {
  bool leading = true;
  for (const SortColumn& column : collation.columns) {
    leading = leading && column.category;
    if (leading) ++categories_;
    sorted_.push_back({layout.Find(column.name), column, leading});
  }
}

void RowPlanner::AddCategory(Bytes value, std::size_t column, Draft* draft) const {
  const Sorted& sorted = sorted_[column];
  const auto step = [&](std::size_t segment) {
    draft->categories.push_back({static_cast<std::uint32_t>(draft->key.size()),
                                 static_cast<std::uint16_t>(sorted.value), static_cast<std::uint8_t>(segment)});
  };
  const auto text = TextOf(value);
  if (text && !text->empty() && text->find('\\') == std::string_view::npos) {
    draft->key.push_back(kMarkCategory);
    AppendTextKey(*text, sorted.column.options, &draft->key);
    return step(0);
  }
  std::vector<std::string_view> segments;
  if (text) segments = SegmentsOf(*text);
  // Each category column that follows needs a level of its own.
  const std::size_t room =
      kMostSegments - std::min(kMostSegments - 1, draft->categories.size() + categories_ - column - 1);
  const bool cut = segments.size() > room;
  if (cut) {
    const char* last = segments[room - 1].data();
    segments[room - 1] = text->substr(static_cast<std::size_t>(last - text->data()));
    segments.resize(room);
  }
  if (segments.empty()) {
    draft->key.push_back(kMarkCategory);
    text ? AppendNothingKey(sorted.column.options, &draft->key)
         : AppendValueKey(value, sorted.column.options, &draft->key);
    return step(0);
  }
  for (std::size_t segment = 0; segment < segments.size(); ++segment) {
    draft->key.push_back(segment == 0 ? kMarkCategory : kMarkDeeper);
    AppendTextKey(segments[segment], sorted.column.options, &draft->key);
    step(segment | (cut && segment + 1 == room ? kRest : 0u));
  }
}

void RowPlanner::Finish(const Document& document, bool last, Draft* draft, std::vector<PlannedRow>* rows) const {
  PlannedRow& planned = rows->emplace_back();
  planned.row.level = static_cast<std::uint8_t>(draft->categories.size());
  if (last) {
    planned.row.key = std::move(draft->key);
    planned.row.value = std::move(draft->room);
    planned.categories = std::move(draft->categories);
  } else {
    planned.row.key.reserve(draft->key.size() + 1 + kIdSize);
    planned.row.key = draft->key;
    planned.categories = draft->categories;
  }
  if (categories_ == sorted_.size()) planned.row.key.push_back(kMarkDocument);
  AppendId(document.id, &planned.row.key);
  std::size_t size = 0;
  for (std::size_t value = 0; value < summary_size_; ++value) size += document.values[value].size() + 2;
  planned.row.value.reserve(size);
  for (std::size_t value = 0; value < summary_size_; ++value) {
    const Value* single = &document.values[value];
    for (const auto& [number, chosen] : draft->chosen) {
      if (number == value) single = chosen;
    }
    AppendRowValue(*single, &planned.row.value);
  }
}

void RowPlanner::Expand(const Document& document, std::size_t column, bool last, Draft* draft,
                        std::vector<PlannedRow>* rows) const {
  if (column == sorted_.size()) return Finish(document, last, draft, rows);
  const Sorted& sorted = sorted_[column];
  const Value& whole = document.values[sorted.value];
  std::vector<Value> list;
  if (sorted.column.separate && TypeOf(whole) % 2 != 0) list = EntriesOf(whole);
  const bool lists = !list.empty();
  const std::span<const Value> entries = lists ? std::span<const Value>(list) : std::span(&whole, 1);
  if (column == categories_ && !sorted.category) draft->key.push_back(kMarkDocument);
  const std::size_t size = draft->key.size();
  const std::size_t steps = draft->categories.size();
  for (const Value& entry : entries) {
    if (rows->size() >= kMostRows) break;
    if (sorted.category) {
      AddCategory(entry, column, draft);
    } else {
      AppendValueKey(entry, sorted.column.options, &draft->key);
    }
    if (lists) draft->chosen.emplace_back(sorted.value, &entry);
    const bool at_last = last && &entry == &entries.back();
    Expand(document, column + 1, at_last, draft, rows);
    if (at_last) return;
    if (lists) draft->chosen.pop_back();
    draft->key.resize(size);
    draft->categories.resize(steps);
  }
  if (column == categories_ && !sorted.category) draft->key.pop_back();
}

void RowPlanner::Plan(const Document& document, std::vector<PlannedRow>* rows) const {
  Draft draft;
  if (!rows->empty()) {
    PlannedRow& former = rows->front();
    draft = {std::move(former.row.key), std::move(former.categories), {}, std::move(former.row.value)};
    draft.key.clear();
    draft.categories.clear();
    draft.room.clear();
  }
  rows->clear();
  draft.key.reserve(128);
  Expand(document, 0, true, &draft, rows);
  if (rows->size() < 2) return;
  const auto key = [](const PlannedRow& row) -> const std::string& { return row.row.key; };
  std::ranges::stable_sort(*rows, {}, key);
  const auto same = [&](const PlannedRow& a, const PlannedRow& b) { return key(a) == key(b); };
  rows->erase(std::unique(rows->begin(), rows->end(), same), rows->end());
}

std::string RowPlanner::ResponsePart(const Document& document) const {
  std::string part(1, kMarkResponse);
  for (const Sorted& sorted : sorted_) {
    if (!sorted.category) AppendValueKey(document.values[sorted.value], sorted.column.options, &part);
  }
  AppendId(document.id, &part);
  return part;
}

void RowPlanner::PlanBelow(const Document& document, const std::vector<PlannedRow>& parents,
                           std::vector<PlannedRow>* rows) const {
  rows->clear();
  const std::string part = ResponsePart(document);
  std::vector<std::uint8_t> value_bytes;
  for (std::size_t value = 0; value < summary_size_; ++value) AppendRowValue(document.values[value], &value_bytes);
  for (const PlannedRow& parent : parents) {
    const bool deepest = parent.row.level >= kDeepestLevel;
    PlannedRow planned;
    planned.parent_end = deepest ? parent.parent_end : static_cast<std::uint32_t>(parent.row.key.size());
    planned.row.key = parent.row.key.substr(0, planned.parent_end) + part;
    planned.row.level = deepest ? kDeepestLevel : static_cast<std::uint8_t>(parent.row.level + 1);
    planned.row.indent = deepest ? parent.row.indent : static_cast<std::uint8_t>(parent.row.indent + 1);
    planned.row.value = value_bytes;
    rows->push_back(std::move(planned));
  }
}

Row RowPlanner::CategoryRow(const PlannedRow& planned, std::size_t step) {
  const CategoryStep& category = planned.categories[step];
  Row row;
  row.key = planned.row.key.substr(0, category.end);
  row.level = static_cast<std::uint8_t>(step);
  row.kind = RowKind::kCategory;
  WireWriter writer(&row.value);
  writer.Put(category.value);
  writer.Put(category.segment);
  return row;
}

}  // namespace qcore::index
