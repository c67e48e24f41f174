#include "qcore/index/design.h"

#include <algorithm>

#include "qcore/index/values.h"
#include "qcore/slates/rowreader.h"
#include "qcore/store/checksum.h"
#include "qcore/store/wire.h"

namespace qcore::index {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t kClassView = 0x0008;
constexpr std::uint16_t kTypeViewFormat = 5;
constexpr std::uint16_t kTypeCollation = 2;
constexpr std::uint16_t kTypeFormula = 0x0600;
constexpr std::size_t kWord = 2;
constexpr std::size_t kTypeSize = 2;
constexpr std::size_t kMostCollations = 64;  // besides the first

constexpr std::size_t kTableSize = 10;
constexpr std::size_t kColumnSize = 32;
constexpr std::uint16_t kColumnSignature = 0x4356;
constexpr std::uint16_t kTableFlat = 0x0002;
constexpr std::uint16_t kColumnCategorized = 0x0002;
constexpr std::uint16_t kColumnSeparate = 0x0100;  // second flags
constexpr std::uint8_t kCollationSignature = 0x44;
constexpr std::uint8_t kDescriptorSignature = 0x66;
constexpr std::uint8_t kKeyCategory = 7;

struct ColumnSizes {
  std::uint16_t name;
  std::uint16_t title;
  std::uint16_t formula;
  std::uint16_t constant;
};

bool TakeColumn(WireReader* records, WireReader* data, Column* column) {
  const auto signature = records->Take<std::uint16_t>();
  const auto flags1 = records->Take<std::uint16_t>();
  ColumnSizes sizes{};
  for (std::uint16_t* size : {&sizes.name, &sizes.title, &sizes.formula, &sizes.constant}) {
    *size = records->Take<std::uint16_t>();
  }
  records->Skip(6);
  const auto flags2 = records->Take<std::uint16_t>();
  records->Skip(12);
  const std::uint8_t* name = data->Skip(sizes.name);
  data->Skip(sizes.title);
  const std::uint8_t* formula = data->Skip(sizes.formula);
  data->Skip(sizes.constant);
  if (signature != kColumnSignature || !records->good() || !data->good()) return false;
  column->name.assign(reinterpret_cast<const char*>(name), sizes.name);
  column->formula.assign(formula, formula + sizes.formula);
  column->has_constant = sizes.constant != 0;
  column->separate = (flags2 & kColumnSeparate) != 0 || (flags1 & kColumnCategorized) != 0;
  const unsigned totals = (flags2 & 0x3Cu) >> 2;
  column->totals = totals <= static_cast<unsigned>(Totals::kPercentOfAll) ? static_cast<Totals>(totals) : Totals::kNone;
  return true;
}

}  // namespace

bool DecodeViewFormat(Bytes value, Design* design) {
  WireReader table(value);
  const auto version = table.Take<std::uint8_t>();
  const auto style = table.Take<std::uint8_t>();
  const auto columns = table.Take<std::uint16_t>();
  table.Skip(2);
  const auto flags = table.Take<std::uint16_t>();
  table.Skip(2);
  if (!table.good() || version != 1 || style != 0) return false;
  const std::size_t records_size = std::size_t{columns} * kColumnSize;
  if (records_size > value.size() - kTableSize) return false;
  WireReader records(value.subspan(kTableSize, records_size));
  WireReader data(value.subspan(kTableSize + records_size));
  design->hierarchy = (flags & kTableFlat) == 0;
  design->columns.resize(columns);
  for (Column& column : design->columns) {
    if (!TakeColumn(&records, &data, &column)) return false;
  }
  return true;
}

bool DecodeCollation(Bytes value, Collation* collation) {
  WireReader reader(value);
  reader.Skip(2);  // the size of the whole, which the value's own says better
  const auto items = reader.Take<std::uint16_t>();
  const auto flags = reader.Take<std::uint8_t>();
  const auto signature = reader.Take<std::uint8_t>();
  if (!reader.good() || signature != kCollationSignature) return false;
  collation->unique = (flags & 1) != 0;
  struct Place {
    std::uint16_t offset;
    std::uint16_t length;
  };
  std::vector<Place> places;
  for (std::uint16_t i = 0; i < items && reader.good(); ++i) {
    const auto sort = reader.Take<std::uint8_t>();
    const auto mark = reader.Take<std::uint8_t>();
    const auto type = reader.Take<std::uint8_t>();
    const auto offset = reader.Take<std::uint16_t>();
    const auto length = reader.Take<std::uint16_t>();
    if (!reader.good() || mark != kDescriptorSignature) return false;
    places.push_back({offset, length});
    SortColumn column;
    column.options = {(sort & 1) != 0, (sort & 2) != 0, (sort & 4) != 0};
    column.category = type == kKeyCategory;
    column.separate = (sort & 8) != 0 || column.category;
    collation->columns.push_back(std::move(column));
  }
  if (!reader.good()) return false;
  const Bytes names = value.subspan(reader.position());
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i].offset > names.size() || places[i].length > names.size() - places[i].offset) return false;
    const Bytes name = names.subspan(places[i].offset, places[i].length);
    collation->columns[i].name.assign(reinterpret_cast<const char*>(name.data()), name.size());
  }
  return true;
}

namespace {

struct StoredItem {
  std::string name;
  PackedItem item;
};

// The items that make the index what it is, with their values.
class DesignItems {
 public:
  DesignItems(const std::shared_ptr<Database>& database, std::uint32_t view) : reader_(*database), view_(view) {}

  ENGSTATUS Read(Database& database) {
    const std::lock_guard lock(database.mutex());
    const ENGSTATUS status = database.store().ReadSlate(view_, [this](const SlateHeader& header, Bytes packed) {
      row_.header = header;
      row_.packed.assign(packed.begin(), packed.end());
      return ENGSTATUS{ENG_OK};
    });
    if (status == ENG_ERR_NO_SLATE || status == ENG_ERR_SLATE_DELETED) return ENG_ERR_NO_COLLECTION;
    if (status != ENG_OK) return status;
    if ((row_.header.slate_class & kClassView) == 0) return ENG_ERR_NO_COLLECTION;
    const ENGSTATUS taken = reader_.Take(row_.header, row_.packed);
    if (taken != ENG_OK) return taken;
    return reader_.ForEach([this](std::string_view name, const PackedItem& item) {
      items_.push_back({std::string(name), item});
    });
  }

  // The value with its type word, empty when there is none of the type.
  Bytes Value(std::string_view name, std::uint16_t type) {
    for (const StoredItem& item : items_) {
      if (!SameName(item.name, name)) continue;
      const Bytes value = item.item.type == type ? reader_.ValueOf(item.item) : Bytes();
      sum_ = std::uint64_t{Checksum(value, sum_)} << 32 | Checksum(value, sum_ + value.size());
      return value;
    }
    return {};
  }
  // The first text of the item.
  std::string Text(std::string_view name) {
    const auto item = std::ranges::find_if(items_, [name](const StoredItem& i) { return SameName(i.name, name); });
    if (item == items_.end()) return {};
    const Bytes value = reader_.ValueOf(item->item);
    const std::vector<index::Value> entries = EntriesOf(value);
    return std::string(entries.empty() ? std::string_view() : TextOf(entries.front()).value_or(std::string_view()));
  }
  std::uint64_t sum() const { return sum_; }

 private:
  RowReader reader_;
  std::uint32_t view_;
  StoredRow row_;
  std::vector<StoredItem> items_;
  std::uint64_t sum_ = 1;
};

std::size_t WordAt(Bytes data, std::size_t place) { return data[place] | std::size_t{data[place + 1]} << 8; }

// Of a text list: its count, the length of each entry, then the entries.
Bytes FirstEntry(Bytes list) {
  if (list.size() < 2 * kWord || WordAt(list, 0) == 0) return {};
  const std::size_t head = kWord * (1 + WordAt(list, 0));
  const Bytes texts = list.subspan(std::min(head, list.size()));
  return texts.first(std::min(WordAt(list, kWord), texts.size()));
}

bool Behind(Bytes value, Bytes* data) {
  if (value.size() < kTypeSize) return false;
  *data = value.subspan(kTypeSize);
  return true;
}

}  // namespace

ENGSTATUS ReadDesign(const std::shared_ptr<Database>& database, std::uint32_t view, Design* design) {
  DesignItems items(database, view);
  const ENGSTATUS status = items.Read(*database);
  if (status != ENG_OK) return status;
  Bytes data;
  if (Behind(items.Value("$ViewFormat", kTypeViewFormat), &data) && !DecodeViewFormat(data, design)) {
    return ENG_ERR_VIEW_DESIGN;
  }
  design->collations.assign(1, {});
  for (std::uint16_t number = 0; number <= kMostCollations; ++number) {
    const std::string name = "$Collation" + (number == 0 ? std::string() : std::to_string(number));
    if (!Behind(items.Value(name, kTypeCollation), &data)) {
      if (number == 0) continue;  // nothing sorted, which columns with a sort by heading don't depend on
      break;
    }
    Collation collation;
    collation.number = number;
    if (!DecodeCollation(data, &collation)) return ENG_ERR_VIEW_DESIGN;
    number == 0 ? design->collations.front() = std::move(collation)
                : design->collations.emplace_back(std::move(collation));
  }
  if (Behind(items.Value("$Formula", kTypeFormula), &data)) design->selection.assign(data.begin(), data.end());
  Bytes letters;
  if (Behind(items.Value("$Flags", kTypeTextList), &data)) {
    letters = FirstEntry(data);
  } else if (Behind(items.Value("$Flags", kTypeText), &data)) {
    letters = data;
  }
  design->folder = std::find(letters.begin(), letters.end(), 'F') != letters.end();
  design->sum = items.sum();
  design->title = items.Text("$TITLE");
  design->title.resize(std::min(design->title.find('|'), design->title.size()));
  return ENG_OK;
}

}  // namespace qcore::index
