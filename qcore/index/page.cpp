#include "qcore/index/page.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

constexpr std::size_t kHeadSize = 2;  // level and kind of a stored row
constexpr std::uint8_t kForm = 1;

std::size_t CommonLength(std::string_view a, std::string_view b) {
  const std::size_t most = std::min(a.size(), b.size());
  std::size_t length = 0;
  while (length < most && a[length] == b[length]) ++length;
  return length;
}

std::uint32_t LoadBig(const char* at) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(at);
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

std::uint32_t HeadOf(std::string_view suffix) {
  if (suffix.size() >= 4) return LoadBig(suffix.data());
  std::uint32_t head = 0;
  for (std::size_t i = 0; i < 4; ++i)
    head = head << 8 | (i < suffix.size() ? static_cast<std::uint8_t>(suffix[i]) : 0u);
  return head;
}

std::string_view AsText(const std::uint8_t* at, std::size_t size) { return {reinterpret_cast<const char*>(at), size}; }

Bytes AsBytes(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

std::uint8_t KindByte(const Row& row) {
  const unsigned contested = row.contested ? 4 : 0;
  return static_cast<std::uint8_t>(static_cast<unsigned>(row.kind) | contested | row.indent << 3U);
}

// The bytes of a row in a leaf, without what its key has in common with the others.
class Record {
 public:
  Record(std::string_view suffix, Bytes value) : suffix_(suffix), value_(value) {}
  std::size_t size() const {
    std::size_t head = 1;
    for (std::size_t rest = suffix_.size(); rest >= 0x80; rest >>= 7) ++head;
    return head + suffix_.size() + value_.size();
  }
  void WriteTo(std::uint8_t* at) const {
    std::size_t rest = suffix_.size();
    for (; rest >= 0x80; rest >>= 7) *at++ = static_cast<std::uint8_t>(rest | 0x80);
    *at++ = static_cast<std::uint8_t>(rest);
    std::copy(value_.begin(), value_.end(), std::copy(suffix_.begin(), suffix_.end(), at));
  }

 private:
  std::string_view suffix_;
  Bytes value_;
};

// Grows by an eighth, not by half: rows have to be small in memory.
template <typename T>
void MakeRoom(std::vector<T>* vector, std::size_t more) {
  if (vector->capacity() < vector->size() + more) vector->reserve(vector->size() + more + vector->size() / 8);
}

}  // namespace

void Sum::Add(const Sum& other) {
  rows += other.rows;
  documents += other.documents;
  if (other.least < least) {
    least = other.least;
    at_least = 0;
  }
  if (other.least == least) at_least += other.at_least;
  if (totals.size() < other.totals.size()) totals.resize(other.totals.size());
  for (std::size_t i = 0; i < other.totals.size(); ++i) totals[i] += other.totals[i];
}

void Sum::AddRow(std::uint8_t level, RowKind kind) {
  ++rows;
  if (kind == RowKind::kDocument) ++documents;
  if (level < least) {
    least = level;
    at_least = 0;
  }
  if (level == least) ++at_least;
}

bool Sum::RemoveRow(std::uint8_t level, RowKind kind) {
  --rows;
  if (kind == RowKind::kDocument) --documents;
  if (level == least) --at_least;
  return at_least != 0;
}

std::uint32_t IdInKey(std::string_view key) {
  return key.size() < kIdSize ? 0 : LoadBig(key.data() + key.size() - kIdSize);
}

void AppendId(std::uint32_t id, std::string* key) {
  const char bytes[] = {static_cast<char>(id >> 24), static_cast<char>(id >> 16), static_cast<char>(id >> 8),
                        static_cast<char>(id)};
  key->append(bytes, sizeof bytes);
}

std::size_t Leaf::PrefixRoom(std::string_view key) { return key.size() < kIdSize ? 0 : key.size() - kIdSize; }

std::string Leaf::KeyAt(std::uint32_t row) const {
  std::string key;
  KeyTo(row, &key);
  return key;
}

void Leaf::KeyTo(std::uint32_t row, std::string* key) const {
  const std::string_view suffix = SuffixAt(row);
  key->reserve(prefix_.size() + suffix.size());
  key->assign(prefix_).append(suffix);
}

std::uint32_t Leaf::FindId(std::uint32_t id, std::uint32_t row) const {
  return static_cast<std::uint32_t>(std::find(ids_.begin() + row, ids_.end(), id) - ids_.begin());
}

Row Leaf::RowAt(std::uint32_t row) const {
  Row made;
  RowTo(row, &made);
  return made;
}

void Leaf::RowTo(std::uint32_t row, Row* target) const {
  KeyTo(row, &target->key);
  target->level = LevelAt(row);
  target->kind = KindAt(row);
  target->indent = IndentAt(row);
  target->contested = ContestedAt(row);
  const Bytes value = ValueAt(row);
  target->value.assign(value.begin(), value.end());
}

std::uint32_t Leaf::LowerBound(std::string_view key) const {
  const int order = key.substr(0, prefix_.size()).compare(prefix_);
  if (order != 0) return order < 0 ? 0 : count();
  const std::string_view rest = key.substr(prefix_.size());
  const std::uint32_t head = HeadOf(rest);
  const auto lowest = std::lower_bound(heads_.begin(), heads_.end(), head);
  auto first = static_cast<std::uint32_t>(lowest - heads_.begin());
  if (lowest == heads_.end() || *lowest != head) return first;
  auto last = static_cast<std::uint32_t>(std::upper_bound(lowest, heads_.end(), head) - heads_.begin());
  while (first < last) {
    const std::uint32_t middle = (first + last) / 2;
    if (SuffixAt(middle) < rest) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  return first;
}

bool Leaf::HasKey(std::uint32_t row, std::string_view key) const {
  return row < count() && key.starts_with(prefix_) && SuffixAt(row) == key.substr(prefix_.size());
}

bool Leaf::KeyStartsWith(std::uint32_t row, std::string_view prefix) const {
  if (prefix.size() <= prefix_.size()) return prefix_.starts_with(prefix);
  return prefix.starts_with(prefix_) && SuffixAt(row).starts_with(prefix.substr(prefix_.size()));
}

void Leaf::Assign(std::span<const Row> rows) {
  prefix_.clear();
  if (!rows.empty()) {
    std::size_t length = PrefixRoom(rows.front().key);
    for (const Row& row : rows) length = std::min(length, PrefixRoom(row.key));
    // Keys are in order: what the first and the last have in common, all have.
    prefix_ = rows.front().key.substr(0, std::min(length, CommonLength(rows.front().key, rows.back().key)));
  }
  Clear();
  std::size_t size = 0;
  for (const Row& row : rows) size += row.key.size() - prefix_.size() + row.value.size() + 2;
  Reserve(rows.size(), size);
  for (const Row& row : rows) AddRow(row);
}

void Leaf::Clear() {
  heads_.clear();
  offsets_.clear();
  ids_.clear();
  levels_.clear();
  kinds_.clear();
  bytes_.clear();
}

void Leaf::AddHead(std::string_view suffix, std::uint8_t level, std::uint8_t kind) {
  heads_.push_back(HeadOf(suffix));
  offsets_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  ids_.push_back((kind & 3) == 0 ? IdInKey(suffix) : 0);
  levels_.push_back(level);
  kinds_.push_back(kind);
}

void Leaf::AddRow(const Row& row) {
  AddRecord(std::string_view(row.key).substr(prefix_.size()), row.level, KindByte(row), row.value);
}

void Leaf::AddRecord(std::string_view suffix, std::uint8_t level, std::uint8_t kind, Bytes value) {
  AddHead(suffix, level, kind);
  const Record record(suffix, value);
  bytes_.resize(bytes_.size() + record.size());
  record.WriteTo(bytes_.data() + offsets_.back());
}

void Leaf::AssignPart(const Leaf& from, std::uint32_t first, std::uint32_t last) {
  std::size_t more = CommonLength(from.SuffixAt(first), from.SuffixAt(last - 1));
  for (std::uint32_t row = first; row < last; ++row) more = std::min(more, PrefixRoom(from.SuffixAt(row)));
  prefix_ = from.prefix_;
  prefix_.append(from.SuffixAt(first).substr(0, more));
  Clear();
  Reserve(last - first, from.EndOf(last - 1) - from.offsets_[first] - (last - first) * more);
  for (std::uint32_t row = first; row < last; ++row) {
    AddRecord(from.SuffixAt(row).substr(more), from.levels_[row], from.kinds_[row], from.ValueAt(row));
  }
}

void Leaf::Reserve(std::size_t rows, std::size_t bytes) {
  bytes_.reserve(bytes);
  heads_.reserve(rows);
  offsets_.reserve(rows);
  ids_.reserve(rows);
  levels_.reserve(rows);
  kinds_.reserve(rows);
}

std::uint32_t Leaf::PassLevel(std::uint32_t row, std::uint8_t level, std::uint32_t* n) const {
  constexpr std::uint32_t kTogether = 16;
  for (; row + kTogether <= count(); row += kTogether) {
    const std::uint8_t* levels = levels_.data() + row;
    std::uint8_t same = 0;
    std::uint8_t less = 0;
    for (std::uint32_t i = 0; i < kTogether; ++i) {
      same = static_cast<std::uint8_t>(same + (levels[i] == level ? 1 : 0));
      less = static_cast<std::uint8_t>(less | (levels[i] < level ? 1 : 0));
    }
    if (less != 0 || same >= *n) break;
    *n -= same;
  }
  return row;
}

void Leaf::ShortenPrefix(std::size_t length) {
  const Leaf longer = std::move(*this);
  *this = Leaf();
  prefix_ = longer.prefix_.substr(0, length);
  const std::string_view front = std::string_view(longer.prefix_).substr(length);
  Reserve(longer.count() + 1, longer.bytes_.size() + longer.count() * (front.size() + 1));
  std::string suffix;
  for (std::uint32_t row = 0; row < longer.count(); ++row) {
    suffix.assign(front).append(longer.SuffixAt(row));
    AddRecord(suffix, longer.levels_[row], longer.kinds_[row], longer.ValueAt(row));
  }
}

std::uint8_t* Leaf::Resize(std::uint32_t at, std::size_t old_size, std::size_t size) {
  const auto end = static_cast<std::ptrdiff_t>(offsets_[at] + std::min(old_size, size));
  if (size > old_size) {
    MakeRoom(&bytes_, size - old_size);
    bytes_.insert(bytes_.begin() + end, size - old_size, 0);
  } else {
    bytes_.erase(bytes_.begin() + end, bytes_.begin() + end + static_cast<std::ptrdiff_t>(old_size - size));
  }
  const auto shift = static_cast<std::uint32_t>(size - old_size);  // wraps where the row got smaller
  for (std::uint32_t i = at + 1; i < count(); ++i) offsets_[i] += shift;
  return bytes_.data() + offsets_[at];
}

void Leaf::Insert(std::uint32_t at, const Row& row) {
  const std::size_t common = std::min(CommonLength(prefix_, row.key), PrefixRoom(row.key));
  if (count() == 0) {
    prefix_ = row.key.substr(0, PrefixRoom(row.key));
  } else if (common < prefix_.size()) {
    ShortenPrefix(common);
  }
  const auto insert = [at](auto* vector, auto value) {
    MakeRoom(vector, 1);
    vector->insert(vector->begin() + at, value);
  };
  const std::string_view suffix = std::string_view(row.key).substr(prefix_.size());
  const std::size_t place = at < count() ? offsets_[at] : bytes_.size();
  insert(&heads_, HeadOf(suffix));
  insert(&offsets_, static_cast<std::uint32_t>(place));
  insert(&ids_, row.kind == RowKind::kDocument ? IdInKey(suffix) : 0);
  insert(&levels_, row.level);
  insert(&kinds_, KindByte(row));
  const Record record(suffix, row.value);
  record.WriteTo(Resize(at, 0, record.size()));
}

void Leaf::Erase(std::uint32_t at) {
  Resize(at, EndOf(at) - offsets_[at], 0);
  const auto erase = [at](auto* vector) { vector->erase(vector->begin() + at); };
  erase(&heads_);
  erase(&offsets_);
  erase(&ids_);
  erase(&levels_);
  erase(&kinds_);
}

void Leaf::SetValue(std::uint32_t at, Bytes value) {
  std::size_t value_at = 0;
  SuffixAt(at, &value_at);
  const std::size_t front = value_at - offsets_[at];
  const std::vector<std::uint8_t> kept(value.begin(), value.end());  // may be the leaf's own
  std::uint8_t* record = Resize(at, EndOf(at) - offsets_[at], front + kept.size());
  std::copy(kept.begin(), kept.end(), record + front);
}

void Leaf::Count(std::uint32_t first, std::uint32_t last, const TotalsReader* totals, Sum* sum) const {
  if (totals && sum->totals.size() < totals->columns()) sum->totals.resize(totals->columns());
  for (std::uint32_t row = first; row < last; ++row) {
    const RowKind kind = KindAt(row);
    sum->AddRow(LevelAt(row), kind);
    if (totals && kind == RowKind::kDocument) totals->Add(ValueAt(row), sum->totals.data());
  }
}

Sum Leaf::Count(const TotalsReader* totals) const {
  Sum sum;
  Count(0, count(), totals, &sum);
  return sum;
}

namespace {

constexpr std::size_t kLine = 64;

template <typename T>
void Fetch(const std::vector<T>& vector, std::size_t most) {
  const auto* at = reinterpret_cast<const char*>(vector.data());
  const std::size_t size = std::min(vector.size() * sizeof(T), most);
  for (std::size_t i = 0; i < size; i += kLine) __builtin_prefetch(at + i);
}

}  // namespace

void Leaf::Prefetch() const {
  Fetch(kinds_, 2 * kLine);
  Fetch(levels_, 2 * kLine);
  Fetch(offsets_, 8 * kLine);
  Fetch(ids_, 8 * kLine);
  Fetch(bytes_, 16 * kLine);
}

void Leaf::PrefetchForChange() const {
  Fetch(ids_, 16 * kLine);
  Fetch(heads_, 16 * kLine);
  Fetch(offsets_, 16 * kLine);
  Fetch(levels_, 4 * kLine);
  Fetch(kinds_, 4 * kLine);
  Fetch(bytes_, 128 * kLine);
}

std::size_t Leaf::Memory() const {
  return bytes_.capacity() + levels_.capacity() + kinds_.capacity() +
         4 * (heads_.capacity() + offsets_.capacity() + ids_.capacity());
}

void Leaf::Encode(std::vector<std::uint8_t>* bytes) const {
  WireWriter writer(bytes);
  writer.PutVarint(prefix_.size());
  writer.PutBytes(AsBytes(prefix_));
  writer.PutVarint(count());
  for (std::uint32_t row = 0; row < count(); ++row) {
    writer.PutVarint(kHeadSize + EndOf(row) - offsets_[row]);
    writer.Put(levels_[row]);
    writer.Put(kinds_[row]);
    writer.PutBytes(Bytes(bytes_).subspan(offsets_[row], EndOf(row) - offsets_[row]));
  }
}

bool Leaf::Decode(Bytes bytes) {
  WireReader reader(bytes);
  const auto prefix_size = static_cast<std::size_t>(reader.TakeVarint());
  const std::uint8_t* prefix = reader.Skip(prefix_size);
  const std::uint64_t count = reader.TakeVarint();
  if (!prefix || count > bytes.size() / kHeadSize) return false;
  prefix_.assign(AsText(prefix, prefix_size));
  heads_.reserve(count);
  offsets_.reserve(count);
  ids_.reserve(count);
  levels_.reserve(count);
  kinds_.reserve(count);
  bytes_.reserve(bytes.size() - reader.position());
  std::string_view before;
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto size = static_cast<std::size_t>(reader.TakeVarint());
    const std::uint8_t* at = reader.Skip(size);
    if (!at) return false;
    WireReader record(Bytes(at, size));
    const auto level = record.Take<std::uint8_t>();
    const auto kind = record.Take<std::uint8_t>();
    const auto length = static_cast<std::size_t>(record.TakeVarint());
    const std::uint8_t* suffix = record.Skip(length);
    if (!suffix || level > kDeepestLevel || (kind & 3) > 2) return false;
    if ((kind & 3) == 0 && length < kIdSize) return false;
    const std::string_view key = AsText(suffix, length);
    if (i != 0 && key <= before) return false;
    before = key;
    AddHead(key, level, kind);
    bytes_.insert(bytes_.end(), at + kHeadSize, at + size);
  }
  return reader.good() && reader.at_end();
}

Sum Page::Count(const TotalsReader* totals) const {
  if (height == 0) return leaf.Count(totals);
  Sum sum;
  for (const Child& child : children) sum.Add(child.sum);
  return sum;
}

Sum Page::Recount(const TotalsReader* totals) {
  ends.resize(children.size());
  levels.resize(children.size());
  at_levels.resize(children.size());
  std::uint32_t rows = 0;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const Sum& sum = children[i].sum;
    ends[i] = rows += sum.rows;
    levels[i] = sum.least;
    at_levels[i] = sum.at_least;
  }
  return Count(totals);
}

namespace {

std::uint64_t EightBytes(std::string_view key) {
  if (key.size() >= 8) return std::uint64_t{LoadBig(key.data())} << 32 | LoadBig(key.data() + 4);
  std::uint64_t head = 0;
  for (std::size_t i = 0; i < 8; ++i) head = head << 8 | (i < key.size() ? static_cast<std::uint8_t>(key[i]) : 0u);
  return head;
}

}  // namespace

void Page::IndexKeys() {
  heads.clear();
  if (children.size() < 2) return;
  common = CommonLength(children[1].key, children.back().key);
  for (std::size_t i = 1; i < children.size(); ++i) {
    heads.push_back(EightBytes(std::string_view(children[i].key).substr(common)));
  }
}

std::size_t Page::ChildFor(std::string_view key) const {
  if (heads.empty()) return 0;
  const int order = key.substr(0, common).compare(std::string_view(children[1].key).substr(0, common));
  if (order != 0) return order < 0 ? 0 : children.size() - 1;
  const std::uint64_t head = EightBytes(key.substr(common));
  auto at = static_cast<std::size_t>(std::lower_bound(heads.begin(), heads.end(), head) - heads.begin());
  while (at < heads.size() && heads[at] == head && std::string_view(children[at + 1].key) <= key) ++at;
  return at;
}

std::size_t Page::ChildAt(std::uint32_t rank) const {
  return static_cast<std::size_t>(std::upper_bound(ends.begin(), ends.end(), rank) - ends.begin());
}

std::size_t Page::size() const {
  if (height == 0) return leaf.size();
  std::size_t size = 0;
  for (const Child& child : children) size += child.key.size() + 20 + 8 * child.sum.totals.size();
  return size;
}

std::vector<std::uint8_t> Page::Encode() const {
  std::vector<std::uint8_t> bytes{kForm, height};
  if (height == 0) {
    leaf.Encode(&bytes);
    return bytes;
  }
  WireWriter writer(&bytes);
  writer.PutVarint(children.size());
  for (const Child& child : children) {
    writer.PutVarint(child.key.size());
    writer.PutBytes(AsBytes(child.key));
    writer.Put(child.number);
    writer.PutVarint(child.sum.rows);
    writer.PutVarint(child.sum.documents);
    writer.PutVarint(child.sum.at_least);
    writer.Put(child.sum.least);
    for (const double total : child.sum.totals) writer.Put(std::bit_cast<std::uint64_t>(total));
  }
  return bytes;
}

namespace {

bool DecodeChildren(Bytes bytes, std::size_t totals, std::vector<Child>* children) {
  WireReader reader(bytes);
  const std::uint64_t count = reader.TakeVarint();
  if (count == 0 || count > bytes.size()) return false;
  children->resize(count);
  std::uint64_t rows = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Child& child = (*children)[i];
    const auto length = static_cast<std::size_t>(reader.TakeVarint());
    const std::uint8_t* key = reader.Skip(length);
    if (!key) return false;
    child.key.assign(AsText(key, length));
    child.number = reader.Take<std::uint32_t>();
    child.sum.rows = static_cast<std::uint32_t>(reader.TakeVarint());
    child.sum.documents = static_cast<std::uint32_t>(reader.TakeVarint());
    child.sum.at_least = static_cast<std::uint32_t>(reader.TakeVarint());
    child.sum.least = reader.Take<std::uint8_t>();
    for (std::size_t t = 0; t < totals; ++t)
      child.sum.totals.push_back(std::bit_cast<double>(reader.Take<std::uint64_t>()));
    rows += child.sum.rows;
    if (!reader.good() || child.number == 0 || child.sum.rows == 0 || rows > UINT32_MAX) return false;
    if (i > 1 && child.key <= (*children)[i - 1].key) return false;
  }
  return reader.at_end();
}

}  // namespace

std::unique_ptr<Page> Page::Decode(Bytes bytes, PageNumber number, std::uint8_t height, std::size_t totals) {
  if (bytes.size() < 2 || bytes[0] != kForm || bytes[1] != height) return nullptr;
  auto page = std::make_unique<Page>();
  page->number = number;
  page->height = height;
  const Bytes body = bytes.subspan(2);
  const bool good = height == 0 ? page->leaf.Decode(body) : DecodeChildren(body, totals, &page->children);
  page->IndexKeys();
  return good ? std::move(page) : nullptr;
}

}  // namespace qcore::index
