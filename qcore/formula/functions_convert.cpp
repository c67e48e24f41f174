// From one type to another.
#include "qcore/formula/functions_support.h"
#include "qcore/text/number.h"
#include "qcore/time/timetext.h"

namespace qcore::formula {

namespace {

// How numbers and times become text: letters of both kinds in one text, see docs/formulas.md.
struct Formats {
  NFMT number{15, 0, 0, 0};
  TFMT time = time::kUsualFormat;
};

bool ReadTimeLetter(char letter, std::uint8_t digit, TFMT* format) {
  std::uint8_t* const field = letter == 'D'   ? &format->Date
                              : letter == 'T' ? &format->Time
                              : letter == 'Z' ? &format->Zone
                              : letter == 'S' ? &format->Structure
                                              : nullptr;
  if (!field) return false;
  *field = digit;
  return true;
}

bool ReadNumberLetter(char letter, std::optional<std::uint8_t> digits, NFMT* format) {
  constexpr std::string_view kLetters = "GFEC";
  const std::size_t kind = kLetters.find(letter);
  if (kind != kLetters.npos) {
    format->Format = static_cast<std::uint8_t>(kind);
    format->Digits = digits ? *digits : kind == 0 ? std::uint8_t{15} : text::kUsualDigits;
    return true;
  }
  if (digits) return false;
  constexpr std::string_view kSigns = ",(%";
  const std::size_t sign = kSigns.find(letter);
  if (sign == kSigns.npos) return false;
  format->Attributes |= static_cast<std::uint8_t>(1u << sign);
  return true;
}

// A letter and, for some, a number behind it. Blanks, ')' and a second ',' say nothing.
bool ReadFormats(std::string_view text, Formats* formats) {
  for (std::size_t at = 0; at < text.size();) {
    const char raw = text[at++];
    if (raw == ' ' || raw == ')') continue;
    const char letter = raw >= 'a' && raw <= 'z' ? static_cast<char>(raw - 0x20) : raw;
    std::optional<std::uint8_t> digits;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
      const int number = digits.value_or(0) * 10 + (text[at] - '0');
      if (number > 99) return false;
      digits = static_cast<std::uint8_t>(number);
    }
    if (digits && ReadTimeLetter(letter, *digits, &formats->time)) continue;
    if (!ReadNumberLetter(letter, digits, &formats->number)) return false;
  }
  return true;
}

std::optional<std::string> MomentText(Machine& machine, const TFMT& format, const TIMEDATE& moment) {
  TFMT used = format;
  // A half that is not there is not asked for.
  if (moment.TimeWord == ENG_TIME_WILD && used.Structure == 2) used.Structure = 0;
  if (moment.DateWord == ENG_TIME_WILD && used.Structure == 2) used.Structure = 1;
  return time::FormatMoment(machine.settings(), used, moment);
}

std::optional<std::string> EntryText(Machine& machine, const Formats& formats, const Value& list, std::uint32_t i) {
  if (list.is_number()) return text::FormatNumber(machine.settings(), formats.number, list.numbers()[i]);
  const Moment& moment = list.moments()[i];
  auto made = MomentText(machine, formats.time, moment.lower);
  if (!made || !moment.is_range()) return made;
  const auto upper = MomentText(machine, formats.time, moment.upper);
  return upper ? std::optional(*made + " - " + *upper) : std::nullopt;
}

Value Text(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.is_text()) return list;
  if (list.type == Type::kRemoval) return TypeError();
  Formats formats;
  if (arguments.size() > 1) {
    if (!arguments[1].is_text()) return TypeError();
    if (!ReadFormats(FirstText(arguments[1]), &formats)) return RangeError();
  }
  TextList texts(machine);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    const auto made = EntryText(machine, formats, list, i);
    if (!made) return RangeError();
    texts.Add(Kept(machine, *made));
  }
  return texts.Finish();
}

std::string_view Stripped(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

Value ToNumber(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.is_number()) return list;
  if (!list.is_text()) return TypeError();
  bool parsed = true;
  const Value numbers = MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    const std::string_view text = Stripped(list.texts()[i].view());
    const auto number = text::ParseNumber(machine.settings(), text::kGeneralFormat, text);
    parsed &= number && number->length == text.size();
    return number ? number->value : 0;
  });
  return parsed ? numbers : RangeError();
}

bool ParseMoments(Machine& machine, std::string_view text, Moment* moment) {
  const auto single = time::ParseMoment(machine.settings(), time::kUsualFormat, text);
  if (single && single->length == text.size()) {
    *moment = {single->moment, {ENG_TIME_WILD, ENG_TIME_WILD}};
    return true;
  }
  const auto range = time::ParseRange(machine.settings(), time::kUsualFormat, text);
  if (!range || range->length != text.size()) return false;
  *moment = {range->pair.Lower, range->pair.Upper};
  return true;
}

Value ToTime(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (list.is_time()) return list;
  if (!list.is_text()) return TypeError();
  machine.Charge(list.count);
  Moment* moments = machine.arena().Array<Moment>(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    if (!ParseMoments(machine, Stripped(list.texts()[i].view()), &moments[i])) return RangeError();
  }
  return Value::Moments(moments, list.count);
}

// 1 or 0 for each text: whether it can be read.
Value IsNumeric(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_text()) return Value::Truth(list.is_number());
  return MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    const std::string_view text = Stripped(list.texts()[i].view());
    const auto number = text::ParseNumber(machine.settings(), text::kGeneralFormat, text);
    return number && number->length == text.size() ? 1.0 : 0.0;
  });
}

constexpr Function kFunctions[] = {
    {260, "Text", 1, 2, Form::kEager, kNothing, Text, nullptr},
    {261, "ToText", 1, 2, Form::kEager, kNothing, Text, nullptr},
    {262, "ToNumber", 1, 1, Form::kEager, kNothing, ToNumber, nullptr},
    {263, "TextToNumber", 1, 1, Form::kEager, kNothing, ToNumber, nullptr},
    {264, "ToTime", 1, 1, Form::kEager, kNothing, ToTime, nullptr},
    {265, "TextToTime", 1, 1, Form::kEager, kNothing, ToTime, nullptr},
    {266, "IsNumeric", 1, 1, Form::kEager, kNothing, IsNumeric, nullptr},
};

}  // namespace

std::span<const Function> ConversionFunctions() { return kFunctions; }

}  // namespace qcore::formula
