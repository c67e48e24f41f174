// Lists: counting, picking, finding, ordering.
#include <unordered_set>

#include "engine/text.h"
#include "qcore/formula/functions_support.h"
#include "qcore/text/search.h"

namespace qcore::formula {

bool SameEntry(const Value& left, std::uint32_t i, const Value& right, std::uint32_t j) {
  if (left.type != right.type) return false;
  if (left.is_text()) return left.texts()[i].view() == right.texts()[j].view();
  if (left.is_number()) return left.numbers()[i] == right.numbers()[j];
  return CompareMoments(left.moments()[i], right.moments()[j]) == 0;
}

namespace {

Value Elements(Machine&, Arguments arguments) { return Value::Number(arguments[0].is_null() ? 0 : arguments[0].count); }
Value Count(Machine&, Arguments arguments) { return Value::Number(arguments[0].count); }

// Puts the entries at these places together.
Value Picked(Machine& machine, const Value& list, const std::vector<std::uint32_t>& places) {
  if (places.empty()) return {};
  const auto count = static_cast<std::uint32_t>(places.size());
  machine.Charge(count);
  const auto pick = [&]<typename T>(const T* from) {
    T* picked = machine.arena().Array<T>(count);
    for (std::uint32_t i = 0; i < count; ++i) picked[i] = from[places[i]];
    return picked;
  };
  if (list.is_text()) return Value::Texts(pick(list.texts()), count);
  if (list.is_number()) return Value::Numbers(pick(list.numbers()), count);
  return Value::Moments(pick(list.moments()), count);
}

// The first entries, or the last for a negative number.
Value Subset(Machine&, Arguments arguments) {
  const Value& list = arguments[0];
  const auto number = AsInteger(arguments[1]);
  if (!number || list.type == Type::kRemoval) return TypeError();
  if (*number == 0) return RangeError();
  const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(std::abs(*number), list.count));
  return EntriesAt(list, *number > 0 ? 0 : list.count - count, count);
}

// From the left from 1, from the right from -1.
Value Element(Machine&, Arguments arguments) {
  const Value& list = arguments[0];
  const auto number = AsInteger(arguments[1]);
  if (!number || list.type == Type::kRemoval) return TypeError();
  const std::int64_t place = *number < 0 ? *number + list.count : *number - 1;
  if (*number == 0 || place < 0 || place >= list.count) return {};
  return EntryAt(list, static_cast<std::uint32_t>(place));
}

// 0 when it is not there.
std::uint32_t PlaceOf(Machine& machine, const Value& sought, std::uint32_t at, const Value& list) {
  machine.Charge(list.count);
  const std::size_t size = sought.is_text() ? sought.texts()[at].size : 0;
  for (std::uint32_t i = 0; i < list.count; ++i) {
    machine.ChargeText(size);
    if (SameEntry(sought, at, list, i)) return i + 1;
  }
  return 0;
}

Value Member(Machine& machine, Arguments arguments) {
  return Value::Number(PlaceOf(machine, arguments[0], 0, arguments[1]));
}

// Whether all of the first are among the second.
bool AllIn(Machine& machine, const Value& some, const Value& list) {
  for (std::uint32_t i = 0; i < some.count; ++i) {
    if (PlaceOf(machine, some, i, list) == 0) return false;
  }
  return true;
}
Value IsMember(Machine& machine, Arguments arguments) {
  return Value::Truth(AllIn(machine, arguments[0], arguments[1]));
}
Value IsNotMember(Machine& machine, Arguments arguments) {
  for (std::uint32_t i = 0; i < arguments[0].count; ++i) {
    if (PlaceOf(machine, arguments[0], i, arguments[1]) != 0) return Value::Truth(false);
  }
  return Value::Truth(true);
}

// Entries that stand in the second list become those at the same place in the third, empty where that is shorter.
Value Replace(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  const Value& from = arguments[1];
  const Value& to = arguments[2];
  if (!list.is_text() || !from.is_text() || !to.is_text()) return TypeError();
  std::uint32_t at = 0;
  return MapTexts(machine, list, [&](std::string_view text) {
    const std::uint32_t place = PlaceOf(machine, list, at++, from);
    if (place == 0) return Ref(text);
    return place <= to.count ? to.texts()[place - 1] : TextRef();
  });
}

struct EntryHash {
  const Value* list;
  std::size_t operator()(std::uint32_t i) const {
    if (list->is_text()) return std::hash<std::string_view>()(list->texts()[i].view());
    if (list->is_number()) return std::hash<double>()(list->numbers()[i]);
    return 0;
  }
};
struct EntryEqual {
  const Value* list;
  bool operator()(std::uint32_t i, std::uint32_t j) const { return SameEntry(*list, i, *list, j); }
};

// The first of each.
Value Unique(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.type == Type::kRemoval) return TypeError();
  std::vector<std::uint32_t> places;
  machine.Charge(list.is_time() ? std::uint64_t{list.count} * list.count : list.count);
  std::unordered_set<std::uint32_t, EntryHash, EntryEqual> seen(list.count, EntryHash{&list}, EntryEqual{&list});
  for (std::uint32_t i = 0; i < list.count; ++i) {
    if (list.is_text()) machine.ChargeText(list.texts()[i].size);
    if (seen.insert(i).second) places.push_back(i);
  }
  return Picked(machine, list, places);
}

struct SortOrder {
  bool descending = false;
  bool by_case = true;
  bool by_accent = true;
};

int CompareEntries(const Value& list, std::uint32_t i, std::uint32_t j, const SortOrder& order) {
  if (list.is_number()) {
    const double left = list.numbers()[i];
    const double right = list.numbers()[j];
    return left < right ? -1 : left > right ? 1 : 0;
  }
  if (list.is_time()) return CompareMoments(list.moments()[i], list.moments()[j]);
  const std::uint32_t flags = (order.by_case ? 0 : 1) | (order.by_accent ? 0 : 2);
  if (flags == 0) return CompareTexts(list.texts()[i], list.texts()[j]);
  return text::Compare(Chars(list.texts()[i].view()), Chars(list.texts()[j].view()), flags);
}

Value Sort(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.type == Type::kRemoval) return TypeError();
  if (!AreKeywords(arguments.subspan(1), {"ASCENDING", "DESCENDING", "CASESENSITIVE", "CASEINSENSITIVE",
                                          "ACCENTSENSITIVE", "ACCENTINSENSITIVE"})) {
    return RangeError();
  }
  SortOrder order;
  for (const Value& option : arguments.subspan(1)) {
    const std::string_view keyword = FirstText(option);
    order.descending |= keyword == "DESCENDING";
    order.by_case &= keyword != "CASEINSENSITIVE";
    order.by_accent &= keyword != "ACCENTINSENSITIVE";
  }
  std::vector<std::uint32_t> places(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) places[i] = i;
  machine.Charge(std::uint64_t{list.count} * 16);
  // A half that a time lacks counts as equal, which is no order that std::sort can take; a merge sort takes any.
  std::stable_sort(places.begin(), places.end(), [&](std::uint32_t i, std::uint32_t j) {
    if (list.is_text()) machine.ChargeText(list.texts()[i].size);
    const int compared = CompareEntries(list, i, j, order);
    return order.descending ? compared > 0 : compared < 0;
  });
  return Picked(machine, list, places);
}

Value Reverse(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.type == Type::kRemoval) return TypeError();
  std::vector<std::uint32_t> places(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) places[i] = list.count - 1 - i;
  return Picked(machine, list, places);
}

// Entries of the first list that are, or are not, in the second.
Value Filtered(Machine& machine, Arguments arguments, bool in) {
  const Value& list = arguments[0];
  if (list.type != arguments[1].type || list.type == Type::kRemoval) return TypeError();
  std::vector<std::uint32_t> places;
  for (std::uint32_t i = 0; i < list.count; ++i) {
    if ((PlaceOf(machine, list, i, arguments[1]) != 0) == in) places.push_back(i);
  }
  return Picked(machine, list, places);
}
Value Intersection(Machine& machine, Arguments arguments) { return Filtered(machine, arguments, true); }
Value Difference(Machine& machine, Arguments arguments) { return Filtered(machine, arguments, false); }

// The words of the first that stand in the second, without regard to case.
Value Keywords(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  const Value& words = arguments[1];
  if (!list.is_text() || !words.is_text()) return TypeError();
  TextList found(machine);
  for (std::uint32_t i = 0; i < words.count; ++i) {
    const std::string_view word = words.texts()[i].view();
    bool present = false;
    for (std::uint32_t j = 0; j < list.count && !present; ++j) {
      const std::string_view text = list.texts()[j].view();
      machine.Charge(1 + (text.size() + word.size()) / 16 + std::uint64_t{text.size()} * word.size() / 4096);
      present = !word.empty() && text::Find(Chars(text), Chars(word), ENG_COMPARE_IGNORE_CASE).has_value();
    }
    if (present) found.Add(words.texts()[i]);
  }
  return found.Finish();
}

constexpr Function kFunctions[] = {
    {300, "Elements", 1, 1, Form::kEager, kNothing, Elements, nullptr},
    {301, "Count", 1, 1, Form::kEager, kNothing, Count, nullptr},
    {302, "Subset", 2, 2, Form::kEager, kNothing, Subset, nullptr},
    {303, "Element", 2, 2, Form::kEager, kNothing, Element, nullptr},
    {304, "Member", 2, 2, Form::kEager, kNothing, Member, nullptr},
    {305, "IsMember", 2, 2, Form::kEager, kNothing, IsMember, nullptr},
    {306, "IsNotMember", 2, 2, Form::kEager, kNothing, IsNotMember, nullptr},
    {307, "Replace", 3, 3, Form::kEager, kNothing, Replace, nullptr},
    {308, "Unique", 1, 1, Form::kEager, kNothing, Unique, nullptr},
    {309, "Sort", 1, 4, Form::kEager, kNothing, Sort,
     "ASCENDING DESCENDING CASESENSITIVE CASEINSENSITIVE ACCENTSENSITIVE ACCENTINSENSITIVE"},
    {310, "Reverse", 1, 1, Form::kEager, kNothing, Reverse, nullptr},
    {311, "Intersection", 2, 2, Form::kEager, kNothing, Intersection, nullptr},
    {312, "Difference", 2, 2, Form::kEager, kNothing, Difference, nullptr},
    {313, "Keywords", 2, 2, Form::kEager, kNothing, Keywords, nullptr},
};

}  // namespace

std::span<const Function> ListFunctions() { return kFunctions; }

}  // namespace qcore::formula
