#include "tools/quillon/values.h"

#include <bit>
#include <charconv>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <optional>
#include <variant>

#include "tools/quillon/command.h"

namespace tool {

namespace {

constexpr std::int64_t kUnixDayNumber = 2440588;  // of 1970-01-01
constexpr std::int64_t kSecondsADay = 86400;
constexpr std::uint32_t kTicksADay = 8640000;

// Reads a value from its start and notes when it ends too early.
class Cursor {
 public:
  explicit Cursor(const std::vector<unsigned char>& bytes) : bytes_(bytes) {}

  std::uint64_t Number(std::size_t width) {
    if (!Has(width)) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;) value = value << 8 | bytes_[at_ + i];
    at_ += width;
    return value;
  }
  std::string Text(std::size_t length) {
    if (!Has(length)) return {};
    std::string text(reinterpret_cast<const char*>(bytes_.data()) + at_, length);
    at_ += length;
    for (char& c : text) {
      if (c == '\0') c = '\n';  // a line break is stored as NUL
    }
    return text;
  }
  std::size_t rest() const { return bytes_.size() - at_; }
  bool good() const { return good_; }

 private:
  bool Has(std::size_t count) {
    good_ = good_ && count <= rest();
    return good_;
  }

  const std::vector<unsigned char>& bytes_;
  std::size_t at_ = 2;
  bool good_ = true;
};

struct Range {
  std::string lower;
  std::string upper;
};
using Entry = std::variant<std::string, double, Range>;

Entry NumberEntry(Cursor& in) { return std::bit_cast<double>(in.Number(8)); }

std::string TimeAt(Cursor& in) {
  TIMEDATE time;
  time.TimeWord = static_cast<std::uint32_t>(in.Number(4));
  time.DateWord = static_cast<std::uint32_t>(in.Number(4));
  return TimeText(time);
}
Entry TimeEntry(Cursor& in) { return TimeAt(in); }

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", value);
  return text;
}

Entry TimeRange(Cursor& in) {
  std::string lower = TimeAt(in);
  return Range{std::move(lower), TimeAt(in)};
}
Entry NumberRange(Cursor& in) {
  std::string lower = NumberText(std::bit_cast<double>(in.Number(8)));
  return Range{std::move(lower), NumberText(std::bit_cast<double>(in.Number(8)))};
}

using Read = Entry (*)(Cursor&);

std::vector<Entry> ReadList(Cursor& in, Read single, Read range) {
  const std::size_t singles = in.Number(2);
  const std::size_t ranges = in.Number(2);
  std::vector<Entry> entries;
  for (std::size_t i = 0; i < singles && in.good(); ++i) entries.push_back(single(in));
  for (std::size_t i = 0; i < ranges && in.good(); ++i) entries.push_back(range(in));
  return entries;
}

std::vector<Entry> ReadTexts(Cursor& in) {
  std::vector<std::size_t> lengths(in.Number(2));
  for (std::size_t& length : lengths) length = in.Number(2);
  std::vector<Entry> entries;
  for (const std::size_t length : lengths) {
    if (!in.good()) break;
    entries.emplace_back(in.Text(length));
  }
  return entries;
}

struct Decoded {
  std::vector<Entry> entries;
  bool list;
};

// False for types that aren't decoded here, and for a value that ends too early.
bool Decode(const StoredItem& item, Decoded* out) {
  Cursor in(item.value);
  out->list = (item.type & 0xFF) == 1;
  if (in.rest() == 0 && item.type >= TYPE_NUMBER && item.type <= TYPE_TEXT_LIST) return true;
  switch (item.type) {
    case TYPE_NUMBER:
      out->entries.push_back(NumberEntry(in));
      break;
    case TYPE_NUMBER_RANGE:
      out->entries = ReadList(in, NumberEntry, NumberRange);
      break;
    case TYPE_TIME:
      out->entries.push_back(TimeEntry(in));
      break;
    case TYPE_TIME_RANGE:
      out->entries = ReadList(in, TimeEntry, TimeRange);
      break;
    case TYPE_TEXT:
      out->entries.emplace_back(in.Text(in.rest()));
      break;
    case TYPE_TEXT_LIST:
      out->entries = ReadTexts(in);
      break;
    default:
      return false;
  }
  return in.good();
}

std::string EntryText(const Entry& entry) {
  if (const auto* text = std::get_if<std::string>(&entry)) return Printable(*text);
  if (const auto* range = std::get_if<Range>(&entry)) return range->lower + " .. " + range->upper;
  return NumberText(std::get<double>(entry));
}

void WriteEntry(JsonWriter& json, const Entry& entry) {
  if (const auto* text = std::get_if<std::string>(&entry)) return json.String(*text);
  if (const auto* number = std::get_if<double>(&entry)) return json.Number(*number);
  const auto& range = std::get<Range>(entry);
  json.BeginArray();
  json.String(range.lower);
  json.String(range.upper);
  json.EndArray();
}

// A long rich text stands in further items of the name behind the first, which has their places.
void AddLaterItems(const VQItem& item, std::vector<StoredItem>* items) {
  const auto* composite = dynamic_cast<const VQCompositeItemBody*>(item.GetItemBody());
  if (!composite) return;
  for (const vq::ItemPlace& place : composite->GetExtraPlaces()) {
    StoredItem later = {items->back().name, place.Type, items->back().flags, std::vector<unsigned char>(place.Size)};
    VQMemoryBlock block;
    vq::ThrowIfError(block.Attach(place.Value.Pool, place.Value.Block, place.Size));
    vq::ThrowIfError(block.Read(place.Size, later.value.data(), 0));
    items->push_back(std::move(later));
  }
}

}  // namespace

StoredItem ReadItem(const VQItem& item) {
  StoredItem stored;
  stored.name = ToText(item.GetName());
  stored.type = static_cast<std::uint16_t>(item.GetType());
  stored.flags = item.GetFlags();
  const unsigned long size = item.GetValueSize();
  stored.value.resize(size);
  if (size < 2) return stored;
  stored.value[0] = static_cast<unsigned char>(stored.type & 0xFF);
  stored.value[1] = static_cast<unsigned char>(stored.type >> 8);
  vq::ThrowIfError(item.Read(0, size - 2, stored.value.data() + 2));
  return stored;
}

std::vector<StoredItem> ReadItems(const VQSlate& slate) {
  VQItemArray array;
  vq::ThrowIfError(slate.GetItems(&array));
  std::vector<StoredItem> items;
  items.reserve(array.GetCount());
  for (unsigned long i = 0; i < array.GetCount(); ++i) {
    const VQItem item = array[i];
    items.push_back(ReadItem(item));
    AddLaterItems(item, &items);
  }
  return items;
}

std::string TypeName(std::uint16_t type) {
  switch (type) {
    case TYPE_COMPOSITE:
      return "rich text";
    case TYPE_OBJECT:
      return "object";
    case TYPE_NUMBER:
      return "number";
    case TYPE_NUMBER_RANGE:
      return "number list";
    case TYPE_TIME:
      return "time";
    case TYPE_TIME_RANGE:
      return "time list";
    case TYPE_TEXT:
      return "text";
    case TYPE_TEXT_LIST:
      return "text list";
    default: {
      char number[8];
      std::snprintf(number, sizeof number, "0x%04X", static_cast<unsigned>(type));
      return number;
    }
  }
}

std::string TimeText(const TIMEDATE& time) {
  char text[48];
  std::string date = "*";
  if (time.DateWord != ENG_TIME_WILD) {
    const auto days = static_cast<std::int64_t>(time.DateWord & ENG_DATE_MAXIMUM) - kUnixDayNumber;
    const std::chrono::year_month_day day{std::chrono::sys_days{std::chrono::days{days}}};
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()));
    date = text;
  }
  if (time.TimeWord == ENG_TIME_WILD) return date + "T*";
  const std::uint32_t ticks = time.TimeWord % kTicksADay;
  std::snprintf(text, sizeof text, "T%02" PRIu32 ":%02" PRIu32 ":%02" PRIu32 ".%02" PRIu32 "Z", ticks / 360000,
                ticks / 6000 % 60, ticks / 100 % 60, ticks % 100);
  return date + text;
}

TIMEDATE TimeFromUnix(std::int64_t seconds) {
  const std::int64_t days = seconds / kSecondsADay - (seconds % kSecondsADay < 0 ? 1 : 0);
  TIMEDATE time;
  time.TimeWord = static_cast<std::uint32_t>(seconds - days * kSecondsADay) * 100;
  time.DateWord = static_cast<std::uint32_t>(days + kUnixDayNumber);
  return time;
}

namespace {

// An attached file, as its record tells it.
struct FileFacts {
  std::string name;
  std::string path;
  std::int64_t size;
  TIMEDATE modified;
  bool compressed;
  bool shown;
};

std::optional<FileFacts> ReadFile(const StoredItem& item) {
  if (item.type != TYPE_OBJECT) return std::nullopt;
  Cursor cursor(item.value);
  const std::uint64_t kind = cursor.Number(2) & 0xFF;
  cursor.Number(4);
  const std::size_t length = cursor.Number(2);
  cursor.Number(2);
  FileFacts facts{};
  facts.compressed = (cursor.Number(2) & 0xF) == 1;
  cursor.Number(2);
  facts.shown = (cursor.Number(2) & 2) != 0;
  facts.size = static_cast<std::int64_t>(cursor.Number(4));
  cursor.Number(8);
  facts.modified.TimeWord = static_cast<std::uint32_t>(cursor.Number(4));
  facts.modified.DateWord = static_cast<std::uint32_t>(cursor.Number(4));
  facts.name = cursor.Text(length);
  if (!cursor.good() || kind != 0 || length == 0) return std::nullopt;
  facts.path = cursor.Text(cursor.rest());
  return facts;
}

std::string FileText(const FileFacts& file) {
  return "attachment " + Printable(file.name) + ", " + std::to_string(file.size) + " bytes, " +
         TimeText(file.modified) + (file.compressed ? ", compressed" : "") + (file.shown ? ", in rich text" : "");
}

void WriteFile(JsonWriter& json, const FileFacts& file) {
  json.BeginObject();
  json.Field("attachment", file.name);
  json.Field("path", file.path);
  json.Field("size", file.size);
  json.Field("modified", TimeText(file.modified));
  json.Field("compressed", file.compressed);
  json.Field("shown", file.shown);
  json.EndObject();
}

}  // namespace

std::string ValueText(const StoredItem& item) {
  if (const auto file = ReadFile(item)) return FileText(*file);
  Decoded decoded;
  if (!Decode(item, &decoded)) return std::to_string(item.value.size()) + " bytes";
  std::string text;
  for (const Entry& entry : decoded.entries) {
    if (!text.empty()) text += "; ";
    text += EntryText(entry);
  }
  return text;
}

void WriteValue(JsonWriter& json, const StoredItem& item) {
  if (const auto file = ReadFile(item)) return WriteFile(json, *file);
  Decoded decoded;
  if (!Decode(item, &decoded)) return json.Null();
  if (!decoded.list && decoded.entries.size() == 1) return WriteEntry(json, decoded.entries[0]);
  json.BeginArray();
  for (const Entry& entry : decoded.entries) WriteEntry(json, entry);
  json.EndArray();
}

bool ReadNumberArgument(const std::string& text, double* number) {
  static constexpr std::string_view kPrefix = "number:";
  if (!text.starts_with(kPrefix)) return false;
  const char* const begin = text.data() + kPrefix.size();
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(begin, end, *number);
  if (parsed.ec != std::errc() || parsed.ptr != end) {
    throw Failure{kExitUsage, "no number: " + Printable(text.substr(kPrefix.size()))};
  }
  return true;
}

namespace {

// The two digits behind `before`, taken off the text with it; nothing is taken where they are missing.
std::optional<std::uint32_t> TwoDigits(std::string_view* text, std::string_view before) {
  if (!text->starts_with(before) || text->size() < before.size() + 2) return std::nullopt;
  const char* const begin = text->data() + before.size();
  std::uint32_t number = 0;
  const auto parsed = std::from_chars(begin, begin + 2, number);
  if (parsed.ec != std::errc() || parsed.ptr != begin + 2) return std::nullopt;
  text->remove_prefix(before.size() + 2);
  return number;
}

std::optional<std::uint32_t> ReadDay(std::string_view* text) {
  const auto century = TwoDigits(text, "");
  const auto year = TwoDigits(text, "");
  const auto month = TwoDigits(text, "-");
  const auto day = TwoDigits(text, "-");
  if (!century || !year || !month || !day) return std::nullopt;
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*century * 100 + *year)),
                                         std::chrono::month(*month), std::chrono::day(*day));
  if (!date.ok()) return std::nullopt;
  return static_cast<std::uint32_t>(std::chrono::sys_days(date).time_since_epoch().count() + kUnixDayNumber);
}

// Of hours, minutes and what follows of seconds and hundredths.
std::optional<std::uint32_t> ReadTicks(std::string_view* text) {
  const auto hour = TwoDigits(text, "T");
  const auto minute = TwoDigits(text, ":");
  const std::uint32_t second = TwoDigits(text, ":").value_or(0);
  const std::uint32_t tick = TwoDigits(text, ".").value_or(0);
  if (!hour || !minute || *hour > 23 || *minute > 59 || second > 59 || *text != "Z") return std::nullopt;
  return ((*hour * 60 + *minute) * 60 + second) * 100 + tick;
}

}  // namespace

bool ReadTimeArgument(const std::string& text, TIMEDATE* moment) {
  static constexpr std::string_view kPrefix = "time:";
  if (!text.starts_with(kPrefix)) return false;
  std::string_view rest = std::string_view(text).substr(kPrefix.size());
  const auto day = ReadDay(&rest);
  const auto ticks = !day || rest.empty() ? std::optional<std::uint32_t>(ENG_TIME_WILD) : ReadTicks(&rest);
  if (!day || !ticks) throw Failure{kExitUsage, "no time: " + Printable(text.substr(kPrefix.size()))};
  *moment = {*ticks, *day};
  return true;
}

namespace {

// Puts the values into the open document's item.
template <typename List>
void PutItem(VQDocument& document, const VQString& name, const List& values) {
  List target;
  document.CreateItem(name, &target, VQITEMFLAGS_SUMMARY);
  target.SetValue(values);
}

}  // namespace

void SetItem(VQDocument& document, const std::string& name, const std::vector<std::string>& values) {
  VQText texts;
  VQNumbers numbers;
  VQDatetimes times;
  for (const std::string& value : values) {
    double number = 0;
    TIMEDATE moment{};
    if (ReadNumberArgument(value, &number)) {
      numbers << number;
    } else if (ReadTimeArgument(value, &moment)) {
      times << VQDatetime(moment);
    } else {
      texts << FromText(value);
    }
  }
  const int kinds = (texts.GetCount() != 0) + (numbers.GetCount() != 0) + (times.GetCount() != 0);
  if (kinds > 1) throw Failure{kExitUsage, "texts, numbers and times in one item"};
  const VQString item = FromText(name);
  if (document.HasItem(item)) document.DeleteItem(item);
  if (numbers.GetCount() != 0) return PutItem(document, item, numbers);
  if (times.GetCount() != 0) return PutItem(document, item, times);
  PutItem(document, item, texts);  // an empty text counts as none
}

}  // namespace tool
