// What the functions' bodies have in common.
#ifndef QUILLON_QCORE_FORMULA_FUNCTIONS_SUPPORT_H
#define QUILLON_QCORE_FORMULA_FUNCTIONS_SUPPORT_H

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "qcore/formula/functions.h"
#include "qcore/formula/machine.h"
#include "qcore/text/utf8.h"

namespace qcore::formula {

using Arguments = std::span<const Value>;

// One table a family; functions.cpp puts them together.
std::span<const Function> LogicFunctions();
std::span<const Function> DocumentFunctions();
std::span<const Function> TextFunctions();
std::span<const Function> ConversionFunctions();
std::span<const Function> ListFunctions();
std::span<const Function> NumberFunctions();
std::span<const Function> TimeFunctions();
std::span<const Function> NameFunctions();

inline Value TypeError() { return Value::Error(ENG_ERR_FORMULA_TYPE); }
inline Value RangeError() { return Value::Error(ENG_ERR_FORMULA_VALUE); }

inline text::Text Chars(std::string_view view) { return {reinterpret_cast<const ENGCHAR*>(view.data()), view.size()}; }
inline TextRef Ref(std::string_view view) { return {view.data(), view.size()}; }
inline TextRef Kept(Machine& machine, std::string_view view) { return {machine.arena().Copy(view), view.size()}; }

// A whole number; fractions are cut off, and so is what goes past 33 bits. Nothing for another type or no number.
inline std::optional<std::int64_t> AsInteger(const Value& value) {
  if (!value.is_number() || std::isnan(*value.numbers())) return std::nullopt;
  constexpr double kMost = 4294967296.0;
  return static_cast<std::int64_t>(std::clamp(*value.numbers(), -kMost, kMost));
}

// Whether all options are keywords of a function's list; texts do as well.
inline bool AreKeywords(Arguments options, std::initializer_list<std::string_view> known) {
  return std::ranges::all_of(options, [known](const Value& option) {
    return option.is_text() && option.count == 1 && std::ranges::find(known, option.text.view()) != known.end();
  });
}

// The first text, empty for another type; callers that mind have checked the type.
inline std::string_view FirstText(const Value& value) {
  return value.is_text() ? value.texts()->view() : std::string_view();
}

// For texts that are taken into many pieces: names and patterns have a bound.
inline bool HasLongText(const Value& value) {
  constexpr std::size_t kMost = 65535;
  return value.is_text() &&
         std::any_of(value.texts(), value.texts() + value.count, [](const TextRef& text) { return text.size > kMost; });
}

// `map` makes a text of each text.
template <typename Map>
Value MapTexts(Machine& machine, const Value& value, Map map) {
  if (!value.is_text()) return TypeError();
  machine.Charge(value.count);
  if (value.count == 1) {
    machine.ChargeText(value.text.size);
    const TextRef mapped = map(value.text.view());
    return Value::Text(mapped.data, mapped.size);
  }
  TextRef* texts = machine.arena().Array<TextRef>(value.count);
  for (std::uint32_t i = 0; i < value.count; ++i) {
    machine.ChargeText(value.text_list[i].size);
    texts[i] = map(value.text_list[i].view());
  }
  return Value::Texts(texts, value.count);
}

// `map` makes a number of each entry of `count`.
template <typename Map>
Value MakeNumbers(Machine& machine, std::uint32_t count, Map map) {
  machine.Charge(count);
  if (count == 1) return Value::Number(map(0));
  double* numbers = machine.arena().Array<double>(count);
  for (std::uint32_t i = 0; i < count; ++i) numbers[i] = map(i);
  return Value::Numbers(numbers, count);
}

// Numbers of numbers; one that is no number fails the whole.
template <typename Map>
Value MapNumbers(Machine& machine, const Value& value, Map map) {
  if (!value.is_number()) return TypeError();
  bool finite = true;
  const Value mapped = MakeNumbers(machine, value.count, [&](std::uint32_t i) {
    const double number = map(value.numbers()[i]);
    finite &= std::isfinite(number);
    return number;
  });
  return finite ? mapped : RangeError();
}

// Texts that a function puts together.
class TextList {
 public:
  explicit TextList(Machine& machine) : machine_(machine) {}
  void Add(TextRef text) {
    machine_.Charge(1);
    texts_.push_back(text);
  }
  std::size_t size() const { return texts_.size(); }
  // One empty text when nothing was added.
  Value Finish() {
    if (texts_.empty()) return {};
    TextRef* texts = machine_.arena().Array<TextRef>(texts_.size());
    std::copy(texts_.begin(), texts_.end(), texts);
    return Value::Texts(texts, static_cast<std::uint32_t>(texts_.size()));
  }

 private:
  Machine& machine_;
  std::vector<TextRef> texts_;
};

// One entry of a list.
inline Value EntryAt(const Value& list, std::uint32_t i) {
  if (list.is_text()) return Value::Texts(list.texts() + i, 1);
  if (list.is_number()) return Value::Numbers(list.numbers() + i, 1);
  return Value::Moments(list.moments() + i, 1);
}
// Some entries in a row, one at least.
inline Value EntriesAt(const Value& list, std::uint32_t first, std::uint32_t count) {
  if (list.is_text()) return Value::Texts(list.texts() + first, count);
  if (list.is_number()) return Value::Numbers(list.numbers() + first, count);
  return Value::Moments(list.moments() + first, count);
}
bool SameEntry(const Value& left, std::uint32_t i, const Value& right, std::uint32_t j);

}  // namespace qcore::formula

#endif
