// Texts: parts, cases, searching, splitting.
#include <cstring>

#include "engine/text.h"
#include "qcore/formula/functions_support.h"
#include "qcore/formula/patterns.h"
#include "qcore/text/classes.h"
#include "qcore/text/search.h"
#include "qcore/text/translate.h"

namespace qcore::formula {

namespace {

// Bytes of the first `characters`, all of them for a number past the end.
std::size_t BytesOf(std::string_view text, std::int64_t characters) {
  if (characters <= 0) return 0;
  return text::Measure(Chars(text), static_cast<std::uint32_t>(std::min<std::int64_t>(characters, UINT32_MAX))).bytes;
}

std::int64_t CharactersOf(std::string_view text) { return text::Measure(Chars(text), UINT32_MAX).characters; }

Value Length(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return TypeError();
  return MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    machine.ChargeText(list.texts()[i].size);
    return static_cast<double>(CharactersOf(list.texts()[i].view()));
  });
}

Value Bytes(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return TypeError();
  return MakeNumbers(machine, list.count, [&](std::uint32_t i) { return static_cast<double>(list.texts()[i].size); });
}

template <std::uint16_t kMode>
Value Translated(Machine& machine, Arguments arguments) {
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    machine.Charge(text.size() / 16);
    return Kept(machine, text::Translate(kMode, Chars(text), text.size() * 4));
  });
}

// Each word's first character above, the others below.
Value ProperCase(Machine& machine, Arguments arguments) {
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    machine.Charge(text.size());
    std::string proper;
    bool inside = false;
    for (std::size_t at = 0; at < text.size();) {
      const auto character = text::Decode(Chars(text).data() + at, text.size() - at);
      const std::string_view one = text.substr(at, character.length);
      proper += text::Translate(inside ? ENG_TRANSLATE_LOWER : ENG_TRANSLATE_UPPER, Chars(one), one.size() * 4);
      inside = text::IsWord(character.code) || (inside && one == "'");
      at += character.length;
    }
    return Kept(machine, proper);
  });
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// No blanks at the ends, single ones inside; entries that are empty then go.
Value Trim(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return TypeError();
  TextList trimmed(machine);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    const std::string_view text = list.texts()[i].view();
    machine.ChargeText(text.size());
    char* kept = machine.arena().Array<char>(text.size());
    std::size_t size = 0;
    for (const char c : text) {
      if (!IsBlank(c)) {
        kept[size++] = c;
      } else if (size > 0 && kept[size - 1] != ' ') {
        kept[size++] = ' ';
      }
    }
    if (size > 0 && kept[size - 1] == ' ') --size;
    if (size > 0) trimmed.Add({kept, size});
  }
  return trimmed.Finish();
}

// A search looks at every place, at the worst at all of the part there.
std::uint64_t StepsToFind(std::string_view text, std::string_view part) {
  return 1 + text.size() / 16 + std::uint64_t{text.size()} * part.size() / 4096;
}

std::size_t FindFirst(std::string_view text, std::string_view sought) { return text.find(sought); }
std::size_t FindLast(std::string_view text, std::string_view sought) { return text.rfind(sought); }

// The second argument as a number of characters, or as a text in whose place the cut is made.
template <typename ByCount, typename ByText>
Value CutTexts(Machine& machine, Arguments arguments, ByCount by_count, ByText by_text) {
  if (arguments[1].is_text()) {
    const std::string_view sought = FirstText(arguments[1]);
    return MapTexts(machine, arguments[0], [&](std::string_view text) {
      machine.Charge(StepsToFind(text, sought));
      return sought.empty() ? TextRef() : Ref(by_text(text, sought));
    });
  }
  const auto count = AsInteger(arguments[1]);
  if (!count) return TypeError();
  if (*count < 0) return RangeError();
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    machine.Charge(text.size() / 16);
    return Ref(by_count(text, *count));
  });
}

Value Left(Machine& machine, Arguments arguments) {
  return CutTexts(
      machine, arguments, [](std::string_view text, std::int64_t n) { return text.substr(0, BytesOf(text, n)); },
      [](std::string_view text, std::string_view sought) {
        const std::size_t at = FindFirst(text, sought);
        return at == std::string_view::npos ? std::string_view() : text.substr(0, at);
      });
}

// Without the last characters, or up to the last such text.
Value LeftBack(Machine& machine, Arguments arguments) {
  return CutTexts(
      machine, arguments,
      [](std::string_view text, std::int64_t n) { return text.substr(0, BytesOf(text, CharactersOf(text) - n)); },
      [](std::string_view text, std::string_view sought) {
        const std::size_t at = FindLast(text, sought);
        return at == std::string_view::npos ? std::string_view() : text.substr(0, at);
      });
}

Value Right(Machine& machine, Arguments arguments) {
  return CutTexts(
      machine, arguments,
      [](std::string_view text, std::int64_t n) { return text.substr(BytesOf(text, CharactersOf(text) - n)); },
      [](std::string_view text, std::string_view sought) {
        const std::size_t at = FindFirst(text, sought);
        return at == std::string_view::npos ? std::string_view() : text.substr(at + sought.size());
      });
}

// Without the first characters, or behind the last such text.
Value RightBack(Machine& machine, Arguments arguments) {
  return CutTexts(
      machine, arguments, [](std::string_view text, std::int64_t n) { return text.substr(BytesOf(text, n)); },
      [](std::string_view text, std::string_view sought) {
        const std::size_t at = FindLast(text, sought);
        return at == std::string_view::npos ? std::string_view() : text.substr(at + sought.size());
      });
}

struct Stretch {
  std::string_view text;
  std::int64_t count = 0;  // characters, when there is no end text
  std::string_view end;    // where to stop
};

std::string_view Forward(std::string_view rest, const Stretch& stretch) {
  if (stretch.end.empty()) return rest.substr(0, BytesOf(rest, stretch.count));
  return rest.substr(0, std::min(rest.find(stretch.end), rest.size()));
}

std::string_view Backward(std::string_view rest, const Stretch& stretch) {
  if (stretch.end.empty()) return rest.substr(BytesOf(rest, CharactersOf(rest) - stretch.count));
  const std::size_t at = rest.rfind(stretch.end);
  return at == std::string_view::npos ? rest : rest.substr(at + stretch.end.size());
}

// How long the part is: the third argument. False for a wrong one.
bool ReadStretch(const Value& value, Stretch* stretch) {
  if (value.is_text()) {
    stretch->end = FirstText(value);
    return true;
  }
  const auto count = AsInteger(value);
  if (!count) return false;
  stretch->count = *count;
  return true;
}

// What lies in front of, or behind, the place that the second argument names.
std::string_view FromPlace(std::string_view text, const Value& place, bool back) {
  if (place.is_text()) {
    const std::string_view sought = FirstText(place);
    const std::size_t at = back ? text.rfind(sought) : text.find(sought);
    if (at == std::string_view::npos) return {};
    return back ? text.substr(0, at) : text.substr(at + sought.size());
  }
  const std::int64_t offset = AsInteger(place).value_or(0);
  return back ? text.substr(0, BytesOf(text, CharactersOf(text) - offset)) : text.substr(BytesOf(text, offset));
}

template <bool kBack>
Value Middle(Machine& machine, Arguments arguments) {
  Stretch stretch;
  if (!ReadStretch(arguments[2], &stretch)) return TypeError();
  if (!arguments[1].is_text() && !AsInteger(arguments[1])) return TypeError();
  if (stretch.count < 0 || AsInteger(arguments[1]).value_or(0) < 0) return RangeError();
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    machine.Charge(StepsToFind(text, FirstText(arguments[1])) + StepsToFind(text, stretch.end));
    const std::string_view rest = FromPlace(text, arguments[1], kBack);
    return Ref(kBack ? Backward(rest, stretch) : Forward(rest, stretch));
  });
}

// Whether any text of the first list is so with any of the second.
template <typename Test>
Value AnyText(Machine& machine, Arguments arguments, Test test) {
  if (!arguments[0].is_text() || !arguments[1].is_text()) return TypeError();
  for (std::uint32_t i = 0; i < arguments[0].count; ++i) {
    const std::string_view text = arguments[0].texts()[i].view();
    for (std::uint32_t j = 0; j < arguments[1].count; ++j) {
      const std::string_view part = arguments[1].texts()[j].view();
      machine.Charge(StepsToFind(text, part));
      if (test(text, part)) return Value::Truth(true);
    }
  }
  return Value::Truth(false);
}

Value Contains(Machine& machine, Arguments arguments) {
  return AnyText(machine, arguments,
                 [](std::string_view text, std::string_view part) { return text.find(part) != text.npos; });
}
Value Begins(Machine& machine, Arguments arguments) {
  return AnyText(machine, arguments,
                 [](std::string_view text, std::string_view part) { return text.starts_with(part); });
}
Value Ends(Machine& machine, Arguments arguments) {
  return AnyText(machine, arguments, [](std::string_view text, std::string_view part) { return text.ends_with(part); });
}

// Pattern and text are taken apart first.
std::uint64_t StepsToMatch(std::string_view text, std::string_view pattern) {
  return 1 + (text.size() + pattern.size()) / 4 + std::uint64_t{text.size()} * pattern.size() / 16;
}

Value Matches(Machine& machine, Arguments arguments) {
  if (HasLongText(arguments[1])) return RangeError();
  return AnyText(machine, arguments, [&](std::string_view text, std::string_view pattern) {
    machine.Charge(StepsToMatch(text, pattern));
    return MatchesPattern(text, pattern);
  });
}

Value Like(Machine& machine, Arguments arguments) {
  if (HasLongText(arguments[1])) return RangeError();
  std::string_view escape;
  if (arguments.size() > 2 && !arguments[2].is_text()) return TypeError();
  if (arguments.size() > 2) escape = FirstText(arguments[2]);
  return AnyText(machine, arguments.first(2), [&](std::string_view text, std::string_view pattern) {
    machine.Charge(StepsToMatch(text, pattern));
    return IsLike(text, pattern, escape);
  });
}

// The place of the part, in characters from 1; 0 when it is not there.
Value Position(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text() || !arguments[1].is_text()) return TypeError();
  const std::string_view part = FirstText(arguments[1]);
  return MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    const std::string_view text = list.texts()[i].view();
    machine.Charge(StepsToFind(text, part));
    const std::size_t at = text.find(part);
    return at == text.npos ? 0.0 : static_cast<double>(CharactersOf(text.substr(0, at)) + 1);
  });
}

// From the end for a negative number.
std::string_view WordAt(std::string_view text, std::string_view separator, std::int64_t number) {
  if (separator.empty()) return number == 1 || number == -1 ? text : std::string_view();
  if (number < 0) {
    for (std::size_t at = text.rfind(separator); at != text.npos && ++number < 0; at = text.rfind(separator)) {
      text = text.substr(0, at);
    }
    if (number < -1) return {};
    const std::size_t at = text.rfind(separator);
    return at == text.npos ? text : text.substr(at + separator.size());
  }
  for (; number > 1; --number) {
    const std::size_t at = text.find(separator);
    if (at == text.npos) return {};
    text = text.substr(at + separator.size());
  }
  return number < 1 ? std::string_view() : text.substr(0, std::min(text.find(separator), text.size()));
}

Value Word(Machine& machine, Arguments arguments) {
  const auto number = AsInteger(arguments[2]);
  if (!arguments[1].is_text() || !number) return TypeError();
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    machine.Charge(text.size() + StepsToFind(text, FirstText(arguments[1])));
    return Ref(WordAt(text, FirstText(arguments[1]), *number));
  });
}

// At each character that is in `separators`.
void SplitAt(std::string_view text, std::string_view separators, bool empties, TextList* list) {
  std::size_t begin = 0;
  for (std::size_t at = 0; at <= text.size();) {
    std::size_t length = 1;
    bool separates = at == text.size();
    if (!separates) {
      length = text::Step(Chars(text).data() + at, text.size() - at);
      separates = separators.find(text.substr(at, length)) != separators.npos;
    }
    if (separates) {
      if (at > begin || empties) list->Add(Ref(text.substr(begin, at - begin)));
      begin = at + length;
    }
    at += length;
  }
}

Value Explode(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return TypeError();
  if (arguments.size() > 1 && !arguments[1].is_text()) return TypeError();
  const std::string_view separators = arguments.size() > 1 ? FirstText(arguments[1]) : " ,;";
  const TruthValue empties = arguments.size() > 2 ? TruthOf(arguments[2]) : TruthValue();
  if (empties.error) return Value::Error(empties.error);
  TextList words(machine);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    machine.Charge(list.texts()[i].size * (1 + separators.size() / 16));
    SplitAt(list.texts()[i].view(), separators, empties.truth, &words);
  }
  return words.Finish();
}

Value Implode(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text() || (arguments.size() > 1 && !arguments[1].is_text())) return TypeError();
  const std::string_view separator = arguments.size() > 1 ? FirstText(arguments[1]) : " ";
  std::size_t size = separator.size() * (list.count - 1);
  for (std::uint32_t i = 0; i < list.count; ++i) size += list.texts()[i].size;
  machine.Charge(list.count);
  char* const joined = machine.arena().Array<char>(size);
  char* at = joined;
  for (std::uint32_t i = 0; i < list.count; ++i) {
    if (i > 0) at = std::copy(separator.begin(), separator.end(), at);
    const std::string_view text = list.texts()[i].view();
    at = std::copy(text.begin(), text.end(), at);
  }
  return Value::Text(joined, size);
}

Value Repeat(Machine& machine, Arguments arguments) {
  const auto times = AsInteger(arguments[1]);
  if (!times) return TypeError();
  if (*times < 0) return RangeError();
  const auto most = arguments.size() > 2 ? AsInteger(arguments[2]) : std::optional<std::int64_t>(UINT32_MAX);
  if (!most) return TypeError();
  if (*most < 0) return RangeError();
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    constexpr std::int64_t kLongestCharacter = 4;
    if (text.empty()) return TextRef();
    const std::int64_t enough = *most * kLongestCharacter / static_cast<std::int64_t>(text.size()) + 1;
    const std::size_t size = text.size() * static_cast<std::size_t>(std::min(*times, enough));
    machine.Charge(size / 16 + 1);
    char* const repeated = machine.arena().Array<char>(size);
    for (std::size_t at = 0; at < size; at += text.size()) std::copy(text.begin(), text.end(), repeated + at);
    return TextRef{repeated, BytesOf({repeated, size}, *most)};
  });
}

// Each text of the second list becomes that of the third at the same place, the last one repeated; in one walk.
Value ReplaceSubstring(Machine& machine, Arguments arguments) {
  const Value& from = arguments[1];
  const Value& to = arguments[2];
  if (!from.is_text() || !to.is_text()) return TypeError();
  return MapTexts(machine, arguments[0], [&](std::string_view text) {
    for (std::uint32_t i = 0; i < from.count; ++i) {
      machine.Charge(text.size() + std::uint64_t{text.size()} * from.texts()[i].size / 4096);
    }
    std::string replaced;
    for (std::size_t at = 0; at < text.size();) {
      std::uint32_t i = 0;
      while (i < from.count && (from.texts()[i].size == 0 || !text.substr(at).starts_with(from.texts()[i].view()))) ++i;
      if (i == from.count) {
        replaced += text[at++];
        continue;
      }
      const std::string_view by = to.texts()[std::min(i, to.count - 1)].view();
      machine.Charge(by.size() / 16);
      replaced += by;
      at += from.texts()[i].size;
      if (replaced.size() > (1u << 24)) throw LimitReached{ENG_ERR_FORMULA_MEMORY};
    }
    return Kept(machine, replaced);
  });
}

Value NewLine(Machine&, Arguments) { return Value::Text("\n"); }

Value Char(Machine& machine, Arguments arguments) {
  const auto code = AsInteger(arguments[0]);
  if (!code) return TypeError();
  const bool surrogate = *code >= 0xD800 && *code <= 0xDFFF;
  if (*code < 1 || *code > 0x10FFFF || surrogate) return RangeError();
  std::string text;
  text::Append(static_cast<std::int32_t>(*code), &text);
  return machine.Text(text);
}

Value CharCode(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return TypeError();
  return MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    const std::string_view text = list.texts()[i].view();
    return text.empty() ? 0.0 : static_cast<double>(text::Decode(Chars(text).data(), text.size()).code);
  });
}

// -1, 0 or 1 for each pair.
Value CompareLists(Machine& machine, Arguments arguments) {
  const Value& left = arguments[0];
  const Value& right = arguments[1];
  if (!left.is_text() || !right.is_text()) return TypeError();
  if (!AreKeywords(arguments.subspan(2),
                   {"CASESENSITIVE", "CASEINSENSITIVE", "ACCENTSENSITIVE", "ACCENTINSENSITIVE"})) {
    return RangeError();
  }
  std::uint32_t flags = 0;
  for (const Value& option : arguments.subspan(2)) {
    if (FirstText(option) == "CASEINSENSITIVE") flags |= ENG_COMPARE_IGNORE_CASE;
    if (FirstText(option) == "ACCENTINSENSITIVE") flags |= ENG_COMPARE_IGNORE_ACCENTS;
  }
  return MakeNumbers(machine, std::max(left.count, right.count), [&](std::uint32_t i) {
    const std::string_view first = left.texts()[std::min(i, left.count - 1)].view();
    const std::string_view second = right.texts()[std::min(i, right.count - 1)].view();
    machine.Charge((first.size() + second.size()) / 16);
    const int order = text::Compare(Chars(first), Chars(second), flags);
    return order < 0 ? -1.0 : order > 0 ? 1.0 : 0.0;
  });
}

Value Soundex(Machine& machine, Arguments arguments) {
  return MapTexts(machine, arguments[0], [&](std::string_view text) { return Kept(machine, SoundexOf(text)); });
}
Value UrlEncode(Machine& machine, Arguments arguments) {
  return MapTexts(machine, arguments[0], [&](std::string_view text) { return Kept(machine, UrlEncoded(text)); });
}
Value UrlDecode(Machine& machine, Arguments arguments) {
  return MapTexts(machine, arguments[0], [&](std::string_view text) { return Kept(machine, UrlDecoded(text)); });
}

constexpr Function kFunctions[] = {
    {200, "Length", 1, 1, Form::kEager, kNothing, Length, nullptr},
    {201, "Uppercase", 1, 1, Form::kEager, kNothing, Translated<ENG_TRANSLATE_UPPER>, nullptr},
    {202, "Lowercase", 1, 1, Form::kEager, kNothing, Translated<ENG_TRANSLATE_LOWER>, nullptr},
    {203, "ProperCase", 1, 1, Form::kEager, kNothing, ProperCase, nullptr},
    {204, "Trim", 1, 1, Form::kEager, kNothing, Trim, nullptr},
    {205, "Left", 2, 2, Form::kEager, kNothing, Left, nullptr},
    {206, "LeftBack", 2, 2, Form::kEager, kNothing, LeftBack, nullptr},
    {207, "Right", 2, 2, Form::kEager, kNothing, Right, nullptr},
    {208, "RightBack", 2, 2, Form::kEager, kNothing, RightBack, nullptr},
    {209, "Middle", 3, 3, Form::kEager, kNothing, Middle<false>, nullptr},
    {210, "MiddleBack", 3, 3, Form::kEager, kNothing, Middle<true>, nullptr},
    {211, "Contains", 2, 2, Form::kEager, kNothing, Contains, nullptr},
    {212, "Begins", 2, 2, Form::kEager, kNothing, Begins, nullptr},
    {213, "Ends", 2, 2, Form::kEager, kNothing, Ends, nullptr},
    {214, "Matches", 2, 2, Form::kEager, kNothing, Matches, nullptr},
    {215, "Like", 2, 3, Form::kEager, kNothing, Like, nullptr},
    {216, "Position", 2, 2, Form::kEager, kNothing, Position, nullptr},
    {217, "Word", 3, 3, Form::kEager, kNothing, Word, nullptr},
    {218, "Explode", 1, 3, Form::kEager, kNothing, Explode, nullptr},
    {219, "Implode", 1, 2, Form::kEager, kNothing, Implode, nullptr},
    {220, "Repeat", 2, 3, Form::kEager, kNothing, Repeat, nullptr},
    {221, "ReplaceSubstring", 3, 3, Form::kEager, kNothing, ReplaceSubstring, nullptr},
    {222, "NewLine", 0, 0, Form::kEager, kNothing, NewLine, nullptr},
    {223, "Char", 1, 1, Form::kEager, kNothing, Char, nullptr},
    {224, "CharCode", 1, 1, Form::kEager, kNothing, CharCode, nullptr},
    {225, "Compare", 2, 4, Form::kEager, kNothing, CompareLists,
     "CASESENSITIVE CASEINSENSITIVE ACCENTSENSITIVE ACCENTINSENSITIVE"},
    {226, "Soundex", 1, 1, Form::kEager, kNothing, Soundex, nullptr},
    {227, "URLEncode", 1, 1, Form::kEager, kNothing, UrlEncode, nullptr},
    {228, "URLDecode", 1, 1, Form::kEager, kNothing, UrlDecode, nullptr},
    {229, "Ascii", 1, 1, Form::kEager, kNothing, Translated<ENG_TRANSLATE_STRIP_ACCENTS>, nullptr},
    {230, "Bytes", 1, 1, Form::kEager, kNothing, Bytes, nullptr},
};

}  // namespace

std::span<const Function> TextFunctions() { return kFunctions; }

}  // namespace qcore::formula
