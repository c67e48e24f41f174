#include "qcore/index/rowbuffer.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "engine/formula.h"
#include "qcore/index/special.h"
#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::size_t kTypeSize = 2;
constexpr std::size_t kSummaryHead = 4;
constexpr std::size_t kHead = 64 + sizeof(COLLECTIONPOSITION);
constexpr std::uint16_t kClassDocument = 1;

// Most names and values are a few words long: too short for a call.
std::uint8_t* Copy(const void* from, std::size_t size, std::uint8_t* to) {
  const auto* at = static_cast<const std::uint8_t*>(from);
  if (size > 32) {
    std::memcpy(to, at, size);
  } else if (size >= 8) {
    for (std::size_t i = 0; i + 8 < size; i += 8) std::memcpy(to + i, at + i, 8);
    std::memcpy(to + size - 8, at + size - 8, 8);
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = at[i];
  }
  return to + size;
}

}  // namespace

std::uint32_t NumberOfRow(RowKind kind, std::string_view key) {
  const Bytes bytes(reinterpret_cast<const std::uint8_t*>(key.data()), key.size());
  const std::uint32_t number = Checksum(bytes, 0) & 0x3FFFFFFF;
  return ENG_ROW_NO_DOCUMENT | (kind == RowKind::kTotal ? ENG_ROW_TOTAL : 0u) | number;
}

RowBuffer::RowBuffer(IndexTree& index, const ValueLayout& layout, Database& entries, Walk& walk, ENGHANDLE unread,
                     std::uint32_t mask, std::uint32_t rows)
    : index_(index), layout_(layout), entries_(entries), walk_(walk), unread_(unread), mask_(mask) {
  fixed_ = kHead;
  for (std::size_t value = 0; value < layout.summary_size(); ++value) fixed_ += 16 + layout.name(value).size();
  numbers_.resize(layout.summary_size());
  constexpr std::uint32_t kMany = 64;
  if (rows >= kMany) Need(kSize + 2 * fixed_);
}

void RowBuffer::Need(std::size_t more) {
  if (bytes_.capacity() - size_ < more) bytes_.Reserve(std::max(2 * bytes_.capacity(), size_ + more));
}

template <typename T>
void RowBuffer::Put(T value) {
  StoreLittle(bytes_.data() + size_, value);
  size_ += sizeof value;
}

void RowBuffer::PutBytes(Bytes bytes) {
  if (!bytes.empty()) std::memcpy(bytes_.data() + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
}

memory::Draft RowBuffer::Take() {
  bytes_.SetSize(static_cast<std::uint32_t>(size_));
  return std::move(bytes_);
}

bool RowBuffer::Add(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position, std::uint16_t score) {
  const std::size_t before = size_;
  const bool document = row.kind() == RowKind::kDocument;
  Need(fixed_ + (document ? row.value().size() + kTypeSize * layout_.summary_size() : 0));
  if (!document || (mask_ & (ENG_READ_CHILDREN | ENG_READ_DESCENDANTS)) != 0) walk_.EndOf(rank, row);
  if ((mask_ & ENG_READ_ID) != 0) {
    if (!document) row.KeyTo(&key_);
    Put(document ? row.id() : NumberOfRow(row.kind(), key_));
  }
  if ((mask_ & ENG_READ_UNIVERSAL_ID) != 0) AddUniversalId(row);
  if ((mask_ & ENG_READ_CLASS) != 0) Put(static_cast<std::uint16_t>(document ? kClassDocument : 0));
  if ((mask_ & (ENG_READ_SIBLINGS | ENG_READ_CHILDREN | ENG_READ_DESCENDANTS)) != 0) AddCounts(rank);
  if ((mask_ & ENG_READ_INDENT) != 0) Put(static_cast<std::uint16_t>(document ? row.indent() : 0));
  if ((mask_ & ENG_READ_SCORE) != 0) Put(score);
  if ((mask_ & ENG_READ_UNREAD) != 0) Put(static_cast<std::uint16_t>(unread_ != 0 && walk_.IsUnread(rank)));
  if ((mask_ & ENG_READ_POSITION) != 0) {
    Put(position.Level);
    Put(position.MinLevel);
    Put(position.MaxLevel);
    for (std::uint16_t level = 0; level <= position.Level; ++level) Put(position.Tumbler[level]);
  }
  if ((mask_ & ENG_READ_SUMMARY) != 0 && !(document && !expands_ && CopySummary(row.value()))) {
    AddSummary(rank, row, position);
  }
  if (before == 0 || size_ <= kSize) return true;
  size_ = before;
  return false;
}

bool RowBuffer::CopySummary(Bytes value) {
  constexpr std::size_t kMost = 65535;
  const std::size_t columns = layout_.summary_size();
  Need(kSummaryHead + fixed_ - kHead + value.size() + kTypeSize * columns);
  const std::size_t start = size_;
  std::uint8_t* const summary = bytes_.data() + start;
  std::uint8_t* lengths = summary + 4;
  std::uint8_t* at = lengths + 4 * columns;
  RowValues values(value);
  for (std::size_t column = 0; column < columns; ++column, lengths += 4) {
    RowValues::Item item;
    const bool present = values.Next(&item) && item.type != 0;
    const std::string& name = layout_.name(column);
    const std::size_t size = present ? kTypeSize + item.data.size() : 0;
    StoreLittle(lengths, static_cast<std::uint16_t>(name.size()));
    StoreLittle(lengths + 2, static_cast<std::uint16_t>(size));
    at = Copy(name.data(), name.size(), at);
    if (!present) continue;
    StoreLittle(at, item.type);
    at = Copy(item.data.data(), item.data.size(), at + kTypeSize);
  }
  const auto size = static_cast<std::size_t>(at - summary);
  if (size > kMost) return false;
  StoreLittle(summary, static_cast<std::uint16_t>(size));
  StoreLittle(summary + 2, static_cast<std::uint16_t>(columns));
  size_ = start + size;
  return true;
}

void RowBuffer::AddCounts(Rank rank) {
  if ((mask_ & ENG_READ_SIBLINGS) != 0) Put(walk_.Siblings(rank));
  if ((mask_ & ENG_READ_CHILDREN) != 0) Put(walk_.Children(rank));
  if ((mask_ & ENG_READ_DESCENDANTS) != 0) Put(walk_.Descendants(rank));
}

void RowBuffer::AddUniversalId(const PageTree::Cursor& row) {
  SlateHeader header;
  if (row.kind() == RowKind::kDocument) {
    const std::lock_guard lock(entries_.mutex());
    // One that is gone meanwhile has none.
    if (entries_.store().ReadHeader(row.id(), &header) != ENG_OK) header = {};
  }
  for (const TIMEDATE& half : {header.origin.File, header.origin.Slate}) {
    Put(half.TimeWord);
    Put(half.DateWord);
  }
}

void RowBuffer::AddSummary(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position) {
  pieces_.assign(layout_.summary_size(), {});
  if (row.kind() == RowKind::kDocument) {
    RowValues values(row.value());
    RowValues::Item item;
    for (Piece& piece : pieces_) {
      if (!values.Next(&item)) break;
      piece = {item.type, item.data};
    }
    if (expands_) ExpandPieces(rank, row, position);
  } else if (row.kind() == RowKind::kCategory) {
    PiecesOfCategory(row);
    if (expands_) ExpandPieces(rank, row, position);
    AddTotals(rank + 1, walk_.EndOf(rank));
  } else {
    AddTotals(0, index_.rows().rows());
  }
  WriteSummary();
}

// Marks in the values of columns that formulas compute.
void RowBuffer::ExpandPieces(Rank rank, const PageTree::Cursor& row, const COLLECTIONPOSITION& position) {
  expanded_.resize(pieces_.size());
  for (std::size_t value = 0; value < pieces_.size(); ++value) {
    Piece& piece = pieces_[value];
    const bool texts = piece.type == kTypeText || piece.type == kTypeTextList;
    const bool marked = std::ranges::find(piece.data, std::uint8_t{ENG_SPECIAL_MARK}) != piece.data.end();
    if (!texts || !marked || layout_.column(value).formula.empty()) continue;
    SpecialFacts facts;
    facts.id = row.kind() == RowKind::kDocument ? row.id() : NumberOfRow(row.kind(), row.key());
    facts.position = &position;
    facts.siblings = walk_.Siblings(rank);
    facts.children = walk_.Children(rank);
    facts.descendants = walk_.Descendants(rank);
    if (ExpandSpecialValue(piece.type == kTypeTextList, piece.data, facts, &expanded_[value])) {
      piece.data = expanded_[value];
    }
  }
}

// A category shows what the first document below it has there.
void RowBuffer::PiecesOfCategory(const PageTree::Cursor& row) {
  WireReader reader(row.value());
  const auto number = reader.Take<std::uint16_t>();
  const auto segment = reader.Take<std::uint8_t>();
  PageTree::Cursor document = row;
  do {
    if (!index_.rows().Next(&document)) return;
  } while (document.kind() != RowKind::kDocument);
  RowValues values(document.value());
  RowValues::Item item;
  for (std::size_t value = 0; value <= number; ++value) {
    if (!values.Next(&item)) return;
  }
  if (number >= pieces_.size()) return;
  if (item.type == kTypeText) {
    const std::string_view text(reinterpret_cast<const char*>(item.data.data()), item.data.size());
    const std::string_view shown = SegmentAt(text, segment);
    item.data = Bytes(reinterpret_cast<const std::uint8_t*>(shown.data()), shown.size());
  }
  pieces_[number] = {item.type, item.data};
}

double RowBuffer::TotalOf(Totals totals, std::size_t place, const Sum& sum, Rank first, Rank end) {
  const auto at = [place](const Sum& s) { return place < s.totals.size() ? s.totals[place] : 0.0; };
  const auto part = [&at, &sum](double whole) { return whole != 0 ? 100 * at(sum) / whole : 0.0; };
  switch (totals) {
    case Totals::kPerChild: {
      const Sum all = index_.rows().Range(first, end);
      return all.at_least != 0 ? at(sum) / all.at_least : 0.0;
    }
    case Totals::kPerDocument:
      return sum.documents != 0 ? at(sum) / sum.documents : 0.0;
    case Totals::kPercentOfAll:
      return part(at(index_.rows().sum()));
    case Totals::kPercentOfParent: {
      if (first == 0) return part(at(sum));
      const Rank category = first - 1;
      const std::uint8_t level = index_.rows().At(category).level();
      std::optional<Rank> parent;
      if (level != 0) parent = index_.rows().PrevAtMost(category, level - 1);
      return part(at(parent ? index_.rows().Range(*parent + 1, walk_.EndOf(*parent)) : index_.rows().sum()));
    }
    default:
      return at(sum);
  }
}

void RowBuffer::AddTotals(Rank first, Rank end) {
  if (index_.totals().columns() == 0) return;
  const Sum sum = index_.rows().Range(first, end);
  for (std::size_t value = 0; value < pieces_.size(); ++value) {
    const auto place = index_.totals().PlaceOf(value);
    if (!place) continue;
    const double total = TotalOf(layout_.column(value).totals, *place, sum, first, end);
    StoreLittle(numbers_[value].data(), std::bit_cast<std::uint64_t>(total));
    pieces_[value] = {kTypeNumber, numbers_[value]};
  }
}

void RowBuffer::WriteSummary() {
  constexpr std::size_t kMost = 65535;
  std::size_t size = 4;
  for (std::size_t value = 0; value < pieces_.size(); ++value) size += 4 + layout_.name(value).size();
  for (Piece& piece : pieces_) {
    const std::size_t value_size = piece.type == 0 ? 0 : kTypeSize + piece.data.size();
    if (size + value_size > kMost) piece = {};
    if (piece.type != 0) size += value_size;
  }
  Need(size);
  Put(static_cast<std::uint16_t>(size));
  Put(static_cast<std::uint16_t>(pieces_.size()));
  for (std::size_t value = 0; value < pieces_.size(); ++value) {
    const Piece& piece = pieces_[value];
    Put(static_cast<std::uint16_t>(layout_.name(value).size()));
    Put(static_cast<std::uint16_t>(piece.type == 0 ? 0 : kTypeSize + piece.data.size()));
  }
  for (std::size_t value = 0; value < pieces_.size(); ++value) {
    const std::string& name = layout_.name(value);
    PutBytes({reinterpret_cast<const std::uint8_t*>(name.data()), name.size()});
    if (pieces_[value].type == 0) continue;
    Put(pieces_[value].type);
    PutBytes(pieces_[value].data);
  }
}

}  // namespace qcore::index
