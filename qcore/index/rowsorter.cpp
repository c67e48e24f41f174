#include "qcore/index/rowsorter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qcore::index {

namespace {

constexpr std::size_t kBlock = 1 << 20;

// What stands before category steps, key and value of a record.
struct RecordHead {
  std::uint32_t key;
  std::uint32_t value;
  std::uint32_t parent_end;
  std::uint8_t level;
  std::uint8_t indent;
  std::uint8_t steps;
};

RecordHead HeadOf(const std::uint8_t* record) {
  RecordHead head;
  std::memcpy(&head, record, sizeof head);
  return head;
}

const std::uint8_t* KeyOf(const std::uint8_t* record, const RecordHead& head) {
  return record + sizeof head + head.steps * sizeof(CategoryStep);
}

// A key that ends sorts before one that goes on with zero bytes: such keys are told apart by their length.
std::uint64_t EightBytes(const std::uint8_t* record, std::size_t depth) {
  const RecordHead head = HeadOf(record);
  const std::uint8_t* key = KeyOf(record, head);
  std::uint64_t word = 0;
  if (depth + sizeof word <= head.key) {
    std::memcpy(&word, key + depth, sizeof word);
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
    return word;
  }
  for (std::size_t i = 0; i < sizeof word; ++i) word = word << 8 | (depth + i < head.key ? key[depth + i] : 0u);
  return word;
}

}  // namespace

std::uint8_t* RowSorter::Take(std::size_t size) {
  if (size > left_) {
    left_ = std::max(size, kBlock);
    blocks_.push_back(std::make_unique<std::uint8_t[]>(left_));
    at_ = blocks_.back().get();
  }
  std::uint8_t* taken = at_;
  at_ += size;
  left_ -= size;
  return taken;
}

std::size_t RowSorter::Add(const PlannedRow& planned) {
  const Row& row = planned.row;
  const RecordHead head{static_cast<std::uint32_t>(row.key.size()),
                        static_cast<std::uint32_t>(row.value.size()),
                        planned.parent_end,
                        row.level,
                        row.indent,
                        static_cast<std::uint8_t>(planned.categories.size())};
  const std::size_t steps = planned.categories.size() * sizeof(CategoryStep);
  std::uint8_t* record = Take(sizeof head + steps + row.key.size() + row.value.size());
  std::uint8_t* at = record;
  const auto put = [&at](const void* bytes, std::size_t size) {
    if (size != 0) std::memcpy(at, bytes, size);
    at += size;
  };
  put(&head, sizeof head);
  put(planned.categories.data(), steps);
  put(row.key.data(), row.key.size());
  put(row.value.data(), row.value.size());
  entries_.push_back({0, record});
  return entries_.size() - 1;
}

PlannedRow RowSorter::Decode(const std::uint8_t* record) {
  const RecordHead head = HeadOf(record);
  const std::uint8_t* key = KeyOf(record, head);
  PlannedRow planned;
  planned.row.key.assign(reinterpret_cast<const char*>(key), head.key);
  planned.row.value.assign(key + head.key, key + head.key + head.value);
  planned.row.level = head.level;
  planned.row.indent = head.indent;
  planned.parent_end = head.parent_end;
  planned.categories.resize(head.steps);
  if (head.steps != 0) {
    std::memcpy(planned.categories.data(), record + sizeof head, head.steps * sizeof(CategoryStep));
  }
  return planned;
}

PlannedRow RowSorter::At(std::size_t number) const { return Decode(entries_[number].record); }

// Keys that begin alike are compared once for what they have in common, and again only among themselves.
void RowSorter::SortFrom(Place first, Place last, std::size_t depth) {
  for (auto at = first; at != last; ++at) at->head = EightBytes(at->record, depth);
  std::sort(first, last, [](const Entry& a, const Entry& b) { return a.head < b.head; });
  while (first != last) {
    auto end = first + 1;
    bool ended = HeadOf(first->record).key <= depth + 8;
    for (; end != last && end->head == first->head; ++end) ended = ended || HeadOf(end->record).key <= depth + 8;
    if (end - first > 1 && !ended) {
      SortFrom(first, end, depth + 8);
    } else if (end - first > 1) {
      std::sort(first, end, [](const Entry& a, const Entry& b) {
        const RecordHead x = HeadOf(a.record);
        const RecordHead y = HeadOf(b.record);
        const int order = std::memcmp(KeyOf(a.record, x), KeyOf(b.record, y), std::min(x.key, y.key));
        return order != 0 ? order < 0 : x.key < y.key;
      });
    }
    first = end;
  }
}

void RowSorter::Sort() { SortFrom(entries_.begin(), entries_.end(), 0); }

void RowSorter::Filter(const std::function<bool(const PlannedRow&)>& keep) {
  // In order, and each once: what is kept depends on the rows before.
  auto to = entries_.begin();
  for (const Entry& entry : entries_) {
    if (keep(Decode(entry.record))) *to++ = entry;
  }
  entries_.erase(to, entries_.end());
}

void RowSorter::ForEach(const std::function<void(PlannedRow)>& visit) const {
  for (const Entry& entry : entries_) visit(Decode(entry.record));
}

}  // namespace qcore::index
