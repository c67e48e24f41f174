#include "qcore/index/find.h"

#include "qcore/store/wire.h"

namespace qcore::index {

bool DecodeKeys(const std::uint8_t* table, std::size_t size, std::vector<Value>* keys) {
  constexpr std::size_t kTypeSize = 2;
  WireReader reader(Bytes(table, size));
  reader.Skip(2);
  const auto count = reader.Take<std::uint16_t>();
  const std::uint8_t* lengths = reader.Skip(std::size_t{count} * 4);
  for (std::uint16_t i = 0; lengths && i < count; ++i) {
    reader.Skip(LoadLittle<std::uint16_t>(lengths + 4 * i));
    const auto length = LoadLittle<std::uint16_t>(lengths + 4 * i + 2);
    const std::uint8_t* value = reader.Skip(length);
    if (!value || length < kTypeSize) return false;
    keys->emplace_back(value, value + length);
  }
  return reader.good();
}

namespace {

// One part of what the keys of rows must begin with. `loose` parts leave open how the component in the row's key ends.
struct Part {
  std::string bytes;
  bool loose = false;
};

// The number of bytes of a row's key that the component at `from` has; 0 for a damaged key.
std::size_t ComponentLength(std::string_view key, std::size_t from, bool descending) {
  if (from >= key.size()) return 0;
  const auto turn = [descending](char byte) { return static_cast<std::uint8_t>(descending ? ~byte : byte); };
  std::size_t length = 0;
  switch (turn(key[from])) {
    case kTagNothing:
      length = 1;
      break;
    case kTagNumber:
    case kTagTime:
      length = 9;
      break;
    case kTagText: {
      const std::size_t end = key.find(static_cast<char>(descending ? 0xFF : 0x00), from + 1);
      length = end == std::string_view::npos ? 0 : end - from + 1;
      break;
    }
    default:
      break;
  }
  return from + length <= key.size() ? length : 0;
}

// The key behind every key that begins with these bytes; empty for none.
std::string Behind(std::string prefix) {
  while (!prefix.empty() && static_cast<std::uint8_t>(prefix.back()) == 0xFF) prefix.pop_back();
  if (!prefix.empty()) prefix.back() = static_cast<char>(prefix.back() + 1);
  return prefix;
}

class Finder {
 public:
  Finder(IndexTree& index, const std::vector<Value>& keys, std::uint16_t flags, Wanted wanted)
      : index_(index), tree_(index.rows()), keys_(keys), flags_(flags), wanted_(wanted) {}

  ENGSTATUS Run(FindResult* result) {
    const ENGSTATUS status = ReadKeys();
    if (status != ENG_OK) return status;
    const unsigned comparison = flags_ & ENG_FIND_COMPARISON;
    if (comparison == ENG_FIND_LESS || comparison == ENG_FIND_GREATER) {
      return FindOrdered(comparison == ENG_FIND_LESS, result);
    }
    return FindEqual(comparison == ENG_FIND_LAST_EQUAL, result);
  }

  ENGSTATUS RunStretches(std::vector<Stretch>* stretches) {
    const ENGSTATUS status = ReadKeys();
    if (status != ENG_OK) return status;
    ForEachRange(0, {}, [&](const std::string& begin) {
      const std::string behind = Behind(begin);
      const Stretch stretch{tree_.RankOf(begin), behind.empty() ? tree_.rows() : tree_.RankOf(behind)};
      if (stretch.first < stretch.end) stretches->push_back(stretch);
      return true;
    });
    return ENG_OK;
  }

 private:
  ENGSTATUS ReadKeys() {
    const auto& sorted = index_.planner().sorted();
    if (keys_.size() > sorted.size()) return ENG_ERR_TOO_MANY_KEYS;
    if (keys_.empty()) return ENG_ERR_ARGUMENT;
    for (std::size_t i = 0; i < keys_.size(); ++i) {
      const std::uint16_t type = TypeOf(keys_[i]);
      if (type != kTypeText && type != kTypeNumber && type != kTypeTime) return ENG_ERR_ARGUMENT;
      AddParts(i);
    }
    return ENG_OK;
  }

  bool names_category() const { return keys_.size() <= index_.planner().category_columns(); }

  Match TextMatch() const {
    if ((flags_ & ENG_FIND_PARTIAL) != 0) return Match::kBeginning;
    if ((flags_ & ENG_FIND_IGNORE_ACCENTS) != 0) return Match::kAnyAccent;
    return (flags_ & ENG_FIND_IGNORE_CASE) != 0 ? Match::kAnyCase : Match::kWhole;
  }

  void AddText(std::string_view text, const SortOptions& options, char mark, Match match) {
    Part part;
    if (mark != 0) part.bytes.push_back(mark);
    std::string whole = part.bytes;
    if (text.empty()) {
      AppendNothingKey(options, &part.bytes);
    } else {
      AppendTextMatch(text, options, match, &part.bytes);
      AppendTextKey(text, options, &whole);
      part.loose = part.bytes != whole;
    }
    parts_.push_back(std::move(part));
    options_.push_back(options);
  }

  void AddParts(std::size_t key) {
    const RowPlanner::Sorted& sorted = index_.planner().sorted()[key];
    const SortOptions& options = sorted.column.options;
    char mark = 0;
    if (sorted.category) mark = kMarkCategory;
    if (key == index_.planner().category_columns()) mark = kMarkDocument;
    const std::optional<std::string_view> text = TextOf(keys_[key]);
    if (!text) {
      Part part;
      if (mark != 0) part.bytes.push_back(mark);
      AppendValueKey(keys_[key], options, &part.bytes);
      parts_.push_back(std::move(part));
      options_.push_back(options);
      return;
    }
    // Only the last key, and of a category its last segment, may be a beginning.
    const Match inner = TextMatch() == Match::kBeginning ? Match::kAnyAccent : TextMatch();
    const bool last = key + 1 == keys_.size();
    if (!sorted.category) return AddText(*text, options, mark, last ? TextMatch() : inner);
    const std::vector<std::string_view> segments = SegmentsOf(*text);
    if (segments.empty()) return AddText({}, options, mark, Match::kWhole);
    for (std::size_t i = 0; i < segments.size(); ++i) {
      const bool ends = last && i + 1 == segments.size();
      AddText(segments[i], options, i == 0 ? mark : kMarkDeeper, ends ? TextMatch() : inner);
    }
  }

  // The ranges of keys that begin with the parts: one for each way in which loose parts before the last can end.
  // Goes on while `take` gives true.
  template <typename Take>
  bool ForEachRange(std::size_t part, const std::string& prefix, const Take& take) {
    const std::string begin = prefix + parts_[part].bytes;
    if (part + 1 == parts_.size()) return take(begin);
    if (!parts_[part].loose) return ForEachRange(part + 1, begin, take);
    const std::string end = Behind(begin);
    const std::size_t mark = MarkSize(part);
    for (std::string from = begin; !from.empty();) {
      Rank rank = 0;
      const PageTree::Cursor row = tree_.Seek(from, &rank);
      if (!row.at_row()) return true;
      const std::string key = row.key();
      if (!end.empty() && key >= end) return true;
      const std::size_t length = ComponentLength(key, prefix.size() + mark, options_[part].descending);
      if (length == 0) throw IndexFault{ENG_ERR_DB_DAMAGED};
      const std::string way = key.substr(0, prefix.size() + mark + length);
      if (!ForEachRange(part + 1, way, take)) return false;
      from = Behind(way);
    }
    return true;
  }
  std::size_t MarkSize(std::size_t part) const {
    const char first = parts_[part].bytes.front();
    return first == kMarkDocument || first == kMarkCategory || first == kMarkDeeper ? 1 : 0;
  }

  // Rows of the run's own level: what hangs below them counts for nothing.
  ENGSTATUS FindFirst(FindResult* result) {
    bool found = false;
    ForEachRange(0, {}, [&](const std::string& begin) {
      Rank rank = 0;
      const PageTree::Cursor row = tree_.Seek(begin, &rank);
      found = row.at_row() && row.KeyStartsWith(begin);
      result->spot = rank;
      return !found;
    });
    if (!found) return ENG_ERR_NO_ENTRY;
    if (keys_.size() == 1 && names_category()) ++result->spot;
    return ENG_OK;
  }

  ENGSTATUS FindEqual(bool last, FindResult* result) {
    if (!last && wanted_ == Wanted::kPlace) return FindFirst(result);
    bool found = false;
    Rank first = 0;
    Rank end = 0;
    Rank last_from = 0;
    ForEachRange(0, {}, [&](const std::string& begin) {
      const Rank from = tree_.RankOf(begin);
      const std::string behind = Behind(begin);
      const Rank to = behind.empty() ? tree_.rows() : tree_.RankOf(behind);
      if (from == to) return true;
      if (found) result->together = result->together && from == end && Peers(first, from);
      if (!found) first = from;
      found = true;
      last_from = from;
      end = to;
      return result->together || (last && wanted_ == Wanted::kPlace);
    });
    if (!found) return ENG_ERR_NO_ENTRY;
    const Sum sum = tree_.Range(first, end);
    const std::uint8_t level = tree_.At(first).level();
    // A shallower row in between parts the rows found.
    result->together = result->together && sum.least == level && Peers(first, end - 1, level);
    result->matches = sum.At(level);
    result->spot = first;
    if (last) {
      const Sum stretch = tree_.Range(last_from, end);
      result->spot = tree_.Select(last_from, stretch.least, stretch.at_least).value_or(last_from);
    }
    if (!last && keys_.size() == 1 && names_category()) {
      // The category itself is found by its first child.
      result->spot = Walk::Spot{first} + 1;
      result->matches = tree_.Range(first + 1, Walk(tree_).EndOf(first)).at_least;
    }
    return ENG_OK;
  }

  bool Peers(Rank first, Rank second) { return Peers(first, second, tree_.At(first).level()); }
  // Whether no row of an outer level comes between.
  bool Peers(Rank first, Rank second, std::uint8_t level) {
    if (level == 0 || first >= second) return true;
    const std::optional<Rank> outer = tree_.NextAtMost(first, level - 1);
    return !outer || *outer > second;
  }

  // What the first row whose key begins with the part has in its place.
  std::string FirstWay(std::size_t part, const std::string& prefix) {
    const std::string begin = prefix + parts_[part].bytes;
    if (!parts_[part].loose) return begin;
    Rank rank = 0;
    const PageTree::Cursor row = tree_.Seek(begin, &rank);
    const std::string key = row.at_row() ? row.key() : std::string();
    if (!key.starts_with(begin)) return begin;
    const std::size_t front = prefix.size() + MarkSize(part);
    const std::size_t length = ComponentLength(key, front, options_[part].descending);
    if (length == 0) throw IndexFault{ENG_ERR_DB_DAMAGED};
    return key.substr(0, front + length);
  }

  // Rows before or behind the key among the peers that it would stand between.
  ENGSTATUS FindOrdered(bool less, FindResult* result) {
    std::string prefix;
    for (std::size_t part = 0; part + 1 < parts_.size(); ++part) prefix = FirstWay(part, prefix);
    const std::string key = prefix + parts_.back().bytes;
    if (parts_.back().bytes[0] == kMarkDocument || parts_.back().bytes[0] == kMarkCategory ||
        parts_.back().bytes[0] == kMarkDeeper) {
      prefix += parts_.back().bytes[0];
    }
    const std::string prefix_end = Behind(prefix);
    const Rank low = tree_.RankOf(prefix);
    const Rank high = prefix_end.empty() ? tree_.rows() : tree_.RankOf(prefix_end);
    const std::string behind = Behind(key);
    const Rank first = less ? low : (behind.empty() ? high : tree_.RankOf(behind));
    const Rank end = less ? tree_.RankOf(key) : high;
    if (first >= end) return ENG_ERR_NO_ENTRY;
    const Sum sum = tree_.Range(first, end);
    result->matches = sum.at_least;
    result->spot = tree_.Select(first, sum.least, sum.at_least).value_or(first);
    result->together = true;
    return ENG_OK;
  }

  IndexTree& index_;
  PageTree& tree_;
  const std::vector<Value>& keys_;
  std::uint16_t flags_;
  Wanted wanted_;
  std::vector<Part> parts_;
  std::vector<SortOptions> options_;
};

}  // namespace

ENGSTATUS FindStretches(IndexTree& index, const Value& key, std::uint16_t flags, std::vector<Stretch>* stretches) {
  const std::vector<Value> keys = {key};
  return Finder(index, keys, flags, Wanted::kPlace).RunStretches(stretches);
}

ENGSTATUS Find(IndexTree& index, const std::vector<Value>& keys, std::uint16_t flags, Wanted wanted,
               FindResult* result) {
  Finder finder(index, keys, flags, wanted);
  return finder.Run(result);
}

}  // namespace qcore::index
