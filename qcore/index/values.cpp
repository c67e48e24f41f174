#include "qcore/index/values.h"

#include <bit>

#include "qcore/store/wire.h"
#include "qcore/text/textlist.h"

namespace qcore::index {

namespace {

constexpr std::size_t kTypeSize = 2;
constexpr std::size_t kNumberSize = 8;

enum class Form : unsigned { kText, kNumber, kTime, kAny };

Value Single(std::uint16_t type, Bytes data) {
  Value value;
  value.reserve(kTypeSize + data.size());
  WireWriter writer(&value);
  writer.Put(type);
  writer.PutBytes(data);
  return value;
}

std::string_view AsText(Bytes data) { return {reinterpret_cast<const char*>(data.data()), data.size()}; }

// Lists of numbers and times: u16 singles, u16 ranges, then the singles of 8 bytes, then the ranges of twice that.
template <typename Visit>
void ForEachOfEight(Bytes data, const Visit& visit) {
  WireReader reader(data);
  const auto singles = reader.Take<std::uint16_t>();
  const auto ranges = reader.Take<std::uint16_t>();
  for (std::uint32_t i = 0; i < std::uint32_t{singles} + ranges; ++i) {
    const std::uint8_t* at = reader.Skip(i < singles ? kNumberSize : 2 * kNumberSize);
    if (!at) return;
    visit(Bytes(at, kNumberSize));
  }
}

double DoubleAt(Bytes data) { return std::bit_cast<double>(LoadLittle<std::uint64_t>(data.data())); }

}  // namespace

std::uint16_t TypeOf(Bytes value) {
  return value.size() < kTypeSize ? std::uint16_t{0} : LoadLittle<std::uint16_t>(value.data());
}

Value TextValue(std::string_view text) {
  return Single(kTypeText, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

Value NumberValue(double number) {
  Value value;
  WireWriter writer(&value);
  writer.Put(kTypeNumber);
  writer.Put(std::bit_cast<std::uint64_t>(number));
  return value;
}

std::optional<std::string_view> TextOf(Bytes value) {
  if (TypeOf(value) != kTypeText) return std::nullopt;
  return AsText(value.subspan(kTypeSize));
}

std::optional<double> NumberOf(Bytes value) {
  const std::uint16_t type = TypeOf(value);
  if (type == kTypeNumber && value.size() >= kTypeSize + kNumberSize) return DoubleAt(value.subspan(kTypeSize));
  if (type != kTypeNumberList) return std::nullopt;
  std::optional<double> sum;
  ForEachOfEight(value.subspan(kTypeSize), [&sum](Bytes data) { sum = sum.value_or(0) + DoubleAt(data); });
  return sum;
}

std::vector<Value> EntriesOf(Bytes value) {
  std::vector<Value> entries;
  const std::uint16_t type = TypeOf(value);
  const Bytes data = value.subspan(std::min(kTypeSize, value.size()));
  if (type == kTypeTextList) {
    const auto list = text::ReadList(data, text::Prefix::kNone);
    if (!list) return entries;
    for (const std::string_view entry : *list) entries.push_back(TextValue(entry));
  } else if (type == kTypeNumberList || type == kTypeTimeList) {
    const auto single = static_cast<std::uint16_t>(type - 1);
    ForEachOfEight(data, [&entries, single](Bytes entry) { entries.push_back(Single(single, entry)); });
  } else if (!data.empty()) {
    entries.emplace_back(value.begin(), value.end());
  }
  return entries;
}

void AppendRowValue(Bytes value, std::vector<std::uint8_t>* row) {
  const std::uint16_t type = TypeOf(value);
  Form form = Form::kAny;
  if (type == kTypeText) form = Form::kText;
  if (type == kTypeNumber && value.size() == kTypeSize + kNumberSize) form = Form::kNumber;
  if (type == kTypeTime && value.size() == kTypeSize + kNumberSize) form = Form::kTime;
  if (type == 0) value = {};
  const Bytes bytes = form == Form::kAny ? value : value.subspan(kTypeSize);
  WireWriter writer(row);
  writer.PutVarint(bytes.size() << 2 | static_cast<unsigned>(form));
  writer.PutBytes(bytes);
}

bool RowValues::NextOfAny(Item* item) {
  WireReader reader(row_);
  const std::uint64_t head = reader.TakeVarint();
  const auto size = static_cast<std::size_t>(head >> 2);
  const std::uint8_t* at = reader.Skip(size);
  if (!at) return false;
  const bool any = (head & kAnyForm) == kAnyForm;
  const Bytes value(at, size);
  item->type = any ? TypeOf(value) : kTypes[head & 3];
  item->data = any ? value.subspan(std::min(kTypeSize, size)) : value;
  row_ = row_.subspan(reader.position());
  return true;
}

}  // namespace qcore::index
