#include <algorithm>
#include <array>
#include <cstdlib>

#include "engine/time.h"
#include "qcore/text/number.h"
#include "qcore/time/calendar.h"
#include "qcore/time/moment.h"
#include "qcore/time/timetext.h"
#include "qcore/time/zone.h"

namespace qcore::time {

namespace {

using text::SettingText;

constexpr std::string_view kMonths[] = {"january", "february", "march",     "april",   "may",      "june",
                                        "july",    "august",   "september", "october", "november", "december"};
constexpr std::string_view kWeekdays[] = {"sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};

struct ZoneName {
  std::string_view name;
  std::int64_t minutes_east;
};
constexpr ZoneName kZones[] = {{"gmt", 0},    {"utc", 0},    {"z", 0},      {"est", -300}, {"edt", -240}, {"cst", -360},
                               {"cdt", -300}, {"mst", -420}, {"mdt", -360}, {"pst", -480}, {"pdt", -420}};

struct Pieces {
  std::optional<Date> date;
  std::optional<std::int64_t> time;  // ticks since midnight
  std::optional<std::int64_t> minutes_east;
};

struct Number {
  std::int32_t value;
  std::size_t digits;
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

// Walks a text; every Take leaves the place alone when it takes nothing.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::size_t at() const { return at_; }
  void GoTo(std::size_t at) { at_ = at; }
  bool AtEnd() const { return at_ == text_.size(); }
  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  void Blanks() {
    while (!AtEnd() && IsBlank(Peek())) ++at_;
  }

  // Case of ASCII letters apart.
  bool Take(std::string_view word) {
    if (word.empty() || text_.size() - at_ < word.size()) return false;
    const auto same = [](char a, char b) { return Lower(a) == Lower(b); };
    if (!std::ranges::equal(text_.substr(at_, word.size()), word, same)) return false;
    at_ += word.size();
    return true;
  }
  bool TakeChar(char c) { return Take(std::string_view(&c, 1)); }
  std::optional<Number> TakeNumber(std::size_t most_digits) {
    Number number{0, 0};
    while (IsDigit(Peek(number.digits))) {
      if (number.digits == most_digits) return std::nullopt;
      number.value = number.value * 10 + (Peek(number.digits++) - '0');
    }
    if (number.digits == 0) return std::nullopt;
    at_ += number.digits;
    return number;
  }
  // The index of the name that the letters here begin with three letters or more of.
  template <std::size_t N>
  std::optional<std::int32_t> TakeName(const std::string_view (&names)[N]) {
    std::string word;
    while (IsLetter(Peek(word.size())) && word.size() < 16) word += Lower(Peek(word.size()));
    if (word.size() < 3) return std::nullopt;
    const auto found = std::ranges::find_if(names, [&](std::string_view name) { return name.starts_with(word); });
    if (found == std::end(names)) return std::nullopt;
    at_ += word.size();
    return static_cast<std::int32_t>(found - names);
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
};

std::int32_t FullYear(const Number& number) {
  if (number.digits > 2) return number.value;
  return number.value + (number.value < 50 ? 2000 : 1900);
}

class MomentParser {
 public:
  MomentParser(const INTLFORMAT& settings, const TFMT& format, std::string_view text)
      : settings_(settings), words_(settings), structure_(format.Structure), reader_(text) {}

  Reader& reader() { return reader_; }

  std::optional<Pieces> TakePieces() {
    Pieces pieces;
    reader_.Blanks();
    if (structure_ == ENG_STRUCTURE_TIME || !Attempt([&] { return TakeDate(&pieces); })) {
      if (structure_ == ENG_STRUCTURE_DATE || !Attempt([&] { return TakeTime(&pieces); })) return std::nullopt;
      if (structure_ != ENG_STRUCTURE_TIME) Attempt([&] { return TakeGap() && TakeDate(&pieces); });
    } else if (structure_ != ENG_STRUCTURE_DATE) {
      Attempt([&] { return TakeGap() && TakeTime(&pieces); });
    }
    return pieces;
  }

  std::optional<TIMEDATE> MomentOfPieces(const Pieces& pieces) const {
    if (pieces.date && !pieces.time) return DayAlone(*pieces.date);
    ENGTIME parts{};
    SetFields(pieces.date.value_or(Date{0, 0, 0}), pieces.time.value_or(0), &parts);
    parts.Zone = pieces.minutes_east ? 0 : settings_.TimeZone;
    if (!FromParts(&parts)) return std::nullopt;
    std::optional<TIMEDATE> moment = parts.GM;
    if (!pieces.minutes_east) return moment;
    moment = AddTicks(*moment, -*pieces.minutes_east * 60 * kTicksPerSecond);
    // The zone may move it out of the calendar.
    if (moment) parts.GM = *moment;
    return moment && ToParts({settings_.TimeZone, false}, &parts) ? moment : std::nullopt;
  }

 private:
  template <typename Step>
  bool Attempt(Step step) {
    const std::size_t before = reader_.at();
    if (step()) return true;
    reader_.GoTo(before);
    return false;
  }

  static void SetFields(const Date& date, std::int64_t time, ENGTIME* parts) {
    parts->Year = date.year;
    parts->Month = date.month;
    parts->Day = date.day;
    parts->Hour = static_cast<std::int32_t>(time / 360000);
    parts->Minute = static_cast<std::int32_t>(time / 6000 % 60);
    parts->Second = static_cast<std::int32_t>(time / 100 % 60);
    parts->Hundredth = static_cast<std::int32_t>(time % 100);
  }

  // Between date and time. A 'T' is the mark of ISO 8601, where a distance from Greenwich may follow the time.
  bool TakeGap() {
    if (IsDigit(reader_.Peek(1)) && reader_.TakeChar('T')) return iso_ = true;
    const std::size_t before = reader_.at();
    reader_.TakeChar(',');
    reader_.Blanks();
    return reader_.at() > before;
  }

  std::optional<Date> Today() const {
    ENGTIME now{};
    now.GM = Now();
    if (!ToParts({settings_.TimeZone, false}, &now)) return std::nullopt;
    return Date{now.Year, now.Month, now.Day};
  }

  bool TakeDate(Pieces* pieces) {
    std::optional<Date> date;
    if (reader_.TakeName(kWeekdays)) {
      reader_.TakeChar(',');
      reader_.Blanks();
    }
    const bool taken = Attempt([&] { return TakeRelative(&date); }) || Attempt([&] { return TakeNamed(&date); }) ||
                       Attempt([&] { return TakeNumeric(&date); });
    if (!taken || !DayOf(*date)) return false;
    pieces->date = date;
    return true;
  }

  bool TakeRelative(std::optional<Date>* date) {
    const std::string_view names[] = {SettingText(settings_.YesterdayString), SettingText(settings_.TodayString),
                                      SettingText(settings_.TomorrowString)};
    for (std::int64_t step = -1; step <= 1; ++step) {
      if (!reader_.Take(names[step + 1])) continue;
      const std::optional<Date> today = Today();
      const std::optional<std::int64_t> day = today ? DayOf(*today) : std::nullopt;
      if (!day) return false;
      *date = DateOf(*day + step);
      return true;
    }
    return false;
  }

  void Joint() {
    if (!reader_.TakeChar('-')) {
      reader_.TakeChar(',');
      reader_.Blanks();
    }
  }

  // "5 March 1997", "5-Mar-97", "March 5, 1997", "March 1997", "March 5"
  bool TakeNamed(std::optional<Date>* date) {
    std::optional<Number> day = reader_.TakeNumber(2);
    if (day) Joint();
    const std::optional<std::int32_t> month = reader_.TakeName(kMonths);
    if (!month) return false;
    std::optional<Number> year = TakeBehindJoint();
    if (!day && year && year->digits <= 2) {
      day = year;
      year = TakeBehindJoint();
    }
    return Complete(date, year, *month + 1, day);
  }
  std::optional<Number> TakeBehindJoint() {
    std::optional<Number> number;
    const bool taken = Attempt([&] {
      Joint();
      number = reader_.TakeNumber(4);
      return number && !IsTimeAhead();
    });
    return taken ? number : std::nullopt;
  }
  // Whether the number just read begins a time.
  bool IsTimeAhead() {
    Reader ahead = reader_;
    if (ahead.Take(words_.time_separator) || ahead.TakeChar(':')) return IsDigit(ahead.Peek());
    ahead.Blanks();
    return ahead.Take(words_.am) || ahead.Take(words_.pm);
  }

  bool Complete(std::optional<Date>* date, const std::optional<Number>& year, std::int32_t month,
                const std::optional<Number>& day) {
    if (!year && !day) return false;
    std::optional<Date> today;
    if (!year && !(today = Today())) return false;
    *date = Date{year ? FullYear(*year) : today->year, month, day ? day->value : 1};
    return true;
  }

  bool TakeDateSeparator(std::string_view separator) { return reader_.Take(separator) && IsDigit(reader_.Peek()); }

  // Two or three numbers with one separator between them.
  bool TakeNumeric(std::optional<Date>* date) {
    const std::optional<Number> first = reader_.TakeNumber(4);
    if (!first) return false;
    for (std::string_view separator :
         {words_.date_separator, std::string_view("/"), std::string_view("-"), std::string_view(".")}) {
      std::optional<Number> second;
      std::optional<Number> third;
      if (!Attempt([&] { return TakeDateSeparator(separator) && (second = reader_.TakeNumber(4)); })) continue;
      Attempt([&] { return TakeDateSeparator(separator) && (third = reader_.TakeNumber(4)); });
      return third ? FromThree(date, *first, *second, *third) : FromTwo(date, *first, *second);
    }
    return false;
  }
  bool FromThree(std::optional<Date>* date, const Number& first, const Number& second, const Number& third) {
    if (first.digits > 2 || (settings_.DateOrder == 2 && third.digits <= 2)) {
      return Complete(date, first, second.value, third);
    }
    if (settings_.DateOrder == 1) return Complete(date, third, second.value, first);
    return Complete(date, third, first.value, second);
  }
  bool FromTwo(std::optional<Date>* date, const Number& first, const Number& second) {
    if (first.digits > 2) return Complete(date, first, second.value, std::nullopt);
    if (second.digits > 2) return Complete(date, second, first.value, std::nullopt);
    if (settings_.DateOrder == 1) return Complete(date, std::nullopt, second.value, first);
    return Complete(date, std::nullopt, first.value, second);
  }

  bool TakeTimeSeparator() {
    return Attempt(
        [&] { return (reader_.Take(words_.time_separator) || reader_.TakeChar(':')) && IsDigit(reader_.Peek()); });
  }

  bool TakeTime(Pieces* pieces) {
    std::optional<Number> hour = reader_.TakeNumber(2);
    if (!hour) return false;
    std::optional<Number> minute;
    std::optional<Number> second = Number{0, 0};
    std::int64_t hundredths = 0;
    if (TakeTimeSeparator()) {
      minute = reader_.TakeNumber(2);
      if (minute && TakeTimeSeparator()) {
        second = reader_.TakeNumber(2);
        hundredths = TakeHundredths();
      }
      if (!minute || !second || minute->value > 59 || second->value > 59) return false;
    }
    if (!TakeHalf(&*hour, minute.has_value())) return false;
    pieces->time =
        ((hour->value * 60 + (minute ? minute->value : 0)) * std::int64_t{60} + second->value) * 100 + hundredths;
    Attempt([&] { return TakeZone(pieces); });
    return true;
  }
  std::int64_t TakeHundredths() {
    if (!IsDigit(reader_.Peek(1)) || !(reader_.TakeChar('.') || reader_.TakeChar(','))) return 0;
    const std::int64_t tenth = reader_.Peek() - '0';
    const std::int64_t hundredth = IsDigit(reader_.Peek(1)) ? reader_.Peek(1) - '0' : 0;
    while (IsDigit(reader_.Peek())) reader_.GoTo(reader_.at() + 1);
    return tenth * 10 + hundredth;
  }
  // Morning or afternoon. An hour alone is a time only with one of them.
  bool TakeHalf(Number* hour, bool has_minute) {
    bool morning = false;
    bool afternoon = false;
    Attempt([&] {
      reader_.Blanks();
      morning = reader_.Take(words_.am) || reader_.Take("AM");
      afternoon = !morning && (reader_.Take(words_.pm) || reader_.Take("PM"));
      return (morning || afternoon) && !IsLetter(reader_.Peek());
    });
    if (!morning && !afternoon) return has_minute && hour->value <= 23;
    if (hour->value < 1 || hour->value > 12) return false;
    hour->value = hour->value % 12 + (afternoon ? 12 : 0);
    return true;
  }

  bool TakeZone(Pieces* pieces) {
    if (iso_ && TakeDistance(pieces, 0)) return true;
    reader_.Blanks();
    for (const ZoneName& zone : kZones) {
      if (!Attempt([&] { return reader_.Take(zone.name) && !IsLetter(reader_.Peek()); })) continue;
      pieces->minutes_east = zone.minutes_east;
      if (zone.minutes_east == 0) TakeDistance(pieces, 0);
      return true;
    }
    return false;
  }
  // "+5", "-05", "+0530", "+05:30"
  bool TakeDistance(Pieces* pieces, std::int64_t from) {
    return Attempt([&] {
      const bool west = reader_.Peek() == '-';
      if (!west && reader_.Peek() != '+') return false;
      reader_.GoTo(reader_.at() + 1);
      std::optional<Number> hours = reader_.TakeNumber(4);
      std::optional<Number> minutes = Number{0, 0};
      if (!hours) return false;
      if (hours->digits > 2) {
        minutes->value = hours->value % 100;
        hours->value /= 100;
      } else if (IsDigit(reader_.Peek(1)) && reader_.TakeChar(':')) {
        minutes = reader_.TakeNumber(2);
      }
      if (!minutes || hours->value > 15 || minutes->value > 59) return false;
      const std::int64_t distance = hours->value * std::int64_t{60} + minutes->value;
      pieces->minutes_east = from + (west ? -distance : distance);
      return true;
    });
  }

  const INTLFORMAT& settings_;
  TimeWords words_;
  std::uint8_t structure_;
  Reader reader_;
  bool iso_ = false;
};

std::size_t TakenLength(Reader reader) {
  const std::size_t taken = reader.at();
  reader.Blanks();
  return reader.AtEnd() ? reader.at() : taken;
}

}  // namespace

std::optional<ParsedMoment> ParseMoment(const INTLFORMAT& settings, const TFMT& format, std::string_view text) {
  MomentParser parser(settings, format, text);
  const std::optional<Pieces> pieces = parser.TakePieces();
  const std::optional<TIMEDATE> moment = pieces ? parser.MomentOfPieces(*pieces) : std::nullopt;
  if (!moment) return std::nullopt;
  return ParsedMoment{*moment, TakenLength(parser.reader())};
}

std::optional<ParsedRange> ParseRange(const INTLFORMAT& settings, const TFMT& format, std::string_view text) {
  MomentParser parser(settings, format, text);
  const std::optional<Pieces> begin = parser.TakePieces();
  parser.reader().Blanks();
  if (!begin || !parser.reader().TakeChar('-')) return std::nullopt;
  std::optional<Pieces> end = parser.TakePieces();
  if (!end) return std::nullopt;
  if (!end->date) end->date = begin->date;
  const std::optional<TIMEDATE> lower = parser.MomentOfPieces(*begin);
  const std::optional<TIMEDATE> upper = parser.MomentOfPieces(*end);
  if (!lower || !upper) return std::nullopt;
  return ParsedRange{{*lower, *upper}, TakenLength(parser.reader())};
}

}  // namespace qcore::time
