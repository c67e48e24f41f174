// Times: now, parts, putting together, moving.
#include <set>

#include "qcore/formula/functions_support.h"
#include "qcore/time/calendar.h"
#include "qcore/time/moment.h"
#include "qcore/time/timetext.h"
#include "qcore/time/zone.h"

namespace qcore::formula {

namespace {

constexpr std::uint32_t kWild = ENG_TIME_WILD;

// In the local zone, or in the zone of that number.
bool PartsOf(const TIMEDATE& moment, std::optional<std::int32_t> zone, ENGTIME* parts) {
  *parts = {};
  parts->GM = moment;
  return time::ToParts(zone ? time::Zone{*zone, false} : time::LocalZone(), parts);
}

bool DayOf(const TIMEDATE& moment, TIMEDATE* day) {
  ENGTIME parts;
  if (!PartsOf(moment, std::nullopt, &parts)) return false;
  const auto alone = time::DayAlone({parts.Year, parts.Month, parts.Day});
  if (alone) *day = *alone;
  return alone.has_value();
}

// Today and its neighbours.
template <int kDays>
Value Day(Machine& machine, Arguments) {
  TIMEDATE day{};
  if (!DayOf(machine.Now(), &day)) return RangeError();
  const auto moved = time::AddCalendar(day, {kDays, 0, 0});
  return moved ? Value::Time(*moved) : RangeError();
}

Value Now(Machine& machine, Arguments) { return Value::Time(machine.Now()); }

// Which half of a moment a field needs.
enum class Half { kDate, kTime };

template <std::int32_t ENGTIME::*kField, Half kHalf>
Value Part(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_time()) return TypeError();
  bool known = true;
  const Value numbers = MakeNumbers(machine, list.count, [&](std::uint32_t i) {
    const TIMEDATE& moment = list.moments()[i].lower;
    ENGTIME parts;
    // A part that the time does not have is -1.
    if (kHalf == Half::kDate ? !time::HasDate(moment) : !time::HasTime(moment)) return -1.0;
    known &= PartsOf(moment, std::nullopt, &parts);
    return static_cast<double>(parts.*kField);
  });
  return known ? numbers : RangeError();
}

// One part of each time: the date or the time of day.
template <typename Map>
Value MapTimes(Machine& machine, const Value& list, Map map) {
  if (!list.is_time()) return TypeError();
  machine.Charge(list.count);
  Moment* moments = machine.arena().Array<Moment>(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    moments[i] = list.moments()[i];
    if (!map(&moments[i].lower)) return RangeError();
    if (list.moments()[i].is_range() && !map(&moments[i].upper)) return RangeError();
  }
  return Value::Moments(moments, list.count);
}

// ENG_ERR_FORMULA_TYPE, ENG_ERR_FORMULA_VALUE.
ENGSTATUS ReadIntegers(Arguments arguments, std::int32_t* numbers) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto number = AsInteger(arguments[i]);
    if (!number) return ENG_ERR_FORMULA_TYPE;
    if (*number < INT32_MIN || *number > INT32_MAX) return ENG_ERR_FORMULA_VALUE;
    numbers[i] = static_cast<std::int32_t>(*number);
  }
  return ENG_OK;
}

// Of year, month, day and perhaps hour, minute, second, in the local zone.
Value DateOfNumbers(Arguments arguments) {
  std::int32_t numbers[6] = {};
  const ENGSTATUS status = ReadIntegers(arguments, numbers);
  if (status != ENG_OK) return Value::Error(status);
  if (arguments.size() == 3) {
    const auto day = time::DayAlone({numbers[0], numbers[1], numbers[2]});
    return day ? Value::Time(*day) : RangeError();
  }
  ENGTIME parts{};
  parts.Year = numbers[0];
  parts.Month = numbers[1];
  parts.Day = numbers[2];
  parts.Hour = numbers[3];
  parts.Minute = numbers[4];
  parts.Second = numbers[5];
  parts.Zone = time::LocalZone().number;
  return time::FromParts(&parts) ? Value::Time(parts.GM) : RangeError();
}

Value Date(Machine& machine, Arguments arguments) {
  if (arguments.size() == 3 || arguments.size() == 6) return DateOfNumbers(arguments);
  if (arguments.size() != 1) return RangeError();
  return MapTimes(machine, arguments[0], [](TIMEDATE* moment) {
    return time::HasDate(*moment) && (!time::HasTime(*moment) || DayOf(*moment, moment));
  });
}

bool TimeAlone(std::int32_t hour, std::int32_t minute, std::int32_t second, std::int32_t hundredth, TIMEDATE* moment) {
  ENGTIME parts{};
  parts.Hour = hour;
  parts.Minute = minute;
  parts.Second = second;
  parts.Hundredth = hundredth;
  parts.Zone = time::LocalZone().number;
  if (!time::FromParts(&parts)) return false;
  *moment = {parts.GM.TimeWord, kWild};
  return true;
}

Value Time(Machine& machine, Arguments arguments) {
  std::int32_t numbers[3] = {};
  if (arguments.size() > 1) {
    TIMEDATE moment{};
    const ENGSTATUS status = ReadIntegers(arguments, numbers);
    if (status != ENG_OK) return Value::Error(status);
    return TimeAlone(numbers[0], numbers[1], numbers[2], 0, &moment) ? Value::Time(moment) : RangeError();
  }
  return MapTimes(machine, arguments[0], [](TIMEDATE* moment) {
    ENGTIME parts;
    if (!time::HasTime(*moment)) return false;
    if (!time::HasDate(*moment)) return true;
    return PartsOf(*moment, std::nullopt, &parts) &&
           TimeAlone(parts.Hour, parts.Minute, parts.Second, parts.Hundredth, moment);
  });
}

// A date and a time of day as one, in the local zone or in that of the third argument.
Value TimeMerge(Machine&, Arguments arguments) {
  if (!arguments[0].is_time() || !arguments[1].is_time()) return TypeError();
  std::int32_t zone = time::LocalZone().number;
  const ENGSTATUS status = ReadIntegers(arguments.subspan(2), &zone);
  if (status != ENG_OK) return Value::Error(status);
  ENGTIME parts;
  ENGTIME clock;
  const TIMEDATE& date = arguments[0].moments()->lower;
  const TIMEDATE& of_day = arguments[1].moments()->lower;
  if (!time::HasDate(date) || !time::HasTime(of_day)) return RangeError();
  if (!PartsOf(date, std::nullopt, &parts) || !PartsOf(of_day, std::nullopt, &clock)) return RangeError();
  parts.Hour = clock.Hour;
  parts.Minute = clock.Minute;
  parts.Second = clock.Second;
  parts.Hundredth = clock.Hundredth;
  parts.Dst = 0;
  parts.Zone = zone;
  return time::FromParts(&parts) ? Value::Time(parts.GM) : RangeError();
}

// By years, months, days, hours, minutes and seconds.
Value Adjust(Machine& machine, Arguments arguments) {
  std::int64_t steps[6] = {};
  for (std::size_t i = 1; i < 7; ++i) {
    const auto number = AsInteger(arguments[i]);
    if (!number) return TypeError();
    steps[i - 1] = *number;
  }
  const std::int64_t seconds = (steps[3] * 60 + steps[4]) * 60 + steps[5];
  return MapTimes(machine, arguments[0], [&](TIMEDATE* moment) {
    constexpr std::int64_t kSecondsPerDay = 86400;
    // A date without a time of day moves by whole days.
    const bool days = !time::HasTime(*moment) && seconds % kSecondsPerDay == 0;
    const std::int64_t more = days ? seconds / kSecondsPerDay : 0;
    const auto moved = time::AddCalendar(*moment, {steps[2] + more, steps[1], steps[0]});
    const auto shifted = moved && !days ? time::AddTicks(*moved, seconds * time::kTicksPerSecond) : moved;
    if (shifted) *moment = *shifted;
    return shifted.has_value();
  });
}

Value Zone(Machine&, Arguments) { return Value::Number(time::LocalZone().number); }

// As a clock in that zone shows it.
Value TimeToTextInZone(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  std::int32_t zone = 0;
  if (!list.is_time()) return TypeError();
  const ENGSTATUS status = ReadIntegers(arguments.subspan(1), &zone);
  if (status != ENG_OK) return Value::Error(status);
  if (!time::SecondsEast(zone)) return RangeError();
  INTLFORMAT settings = machine.settings();
  settings.TimeZone = zone;
  settings.Flags &= static_cast<std::uint16_t>(~ENG_INTL_DAYLIGHT_SAVINGS);
  TextList texts(machine);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    const Moment& moment = list.moments()[i];
    const auto text = time::FormatMoment(settings, time::kUsualFormat, moment.lower);
    const auto upper = moment.is_range() ? time::FormatMoment(settings, time::kUsualFormat, moment.upper) : text;
    if (!text || !upper) return RangeError();
    texts.Add(Kept(machine, moment.is_range() ? *text + " - " + *upper : *text));
  }
  return texts.Finish();
}

// A day number that counts on, for a date.
std::optional<std::int64_t> JulianOf(const TIMEDATE& moment) {
  TIMEDATE day{};
  if (!time::HasDate(moment) || !DayOf(moment, &day)) return std::nullopt;
  return day.DateWord & time::kDayMask;
}

// Days from the first to the last date, both counted, that are no weekend and not among the exceptions.
Value BusinessDays(Machine& machine, Arguments arguments) {
  if (!arguments[0].is_time() || !arguments[1].is_time()) return TypeError();
  bool weekend[8] = {false, true, false, false, false, false, false, true};
  if (arguments.size() > 2) {
    if (!arguments[2].is_number()) return TypeError();
    std::fill(std::begin(weekend), std::end(weekend), false);
    for (std::uint32_t i = 0; i < arguments[2].count; ++i) {
      const double day = arguments[2].numbers()[i];
      if (day >= 1 && day < 8) weekend[static_cast<int>(day)] = true;
    }
  }
  if (arguments.size() > 3 && !arguments[3].is_time()) return TypeError();
  const auto first = JulianOf(arguments[0].moments()->lower);
  const auto last = JulianOf(arguments[1].moments()->lower);
  if (!first || !last) return RangeError();
  if (*first > *last) return Value::Number(-1);
  machine.Charge(static_cast<std::uint64_t>(*last - *first) + 1);
  double count = 0;
  for (std::int64_t day = *first; day <= *last; ++day) count += weekend[time::WeekdayOf(day)] ? 0 : 1;
  std::set<std::int64_t> free_days;
  for (std::uint32_t i = 0; arguments.size() > 3 && i < arguments[3].count; ++i) {
    machine.Charge(1);
    const auto day = JulianOf(arguments[3].moments()[i].lower);
    if (day && *day >= *first && *day <= *last && !weekend[time::WeekdayOf(*day)]) free_days.insert(*day);
  }
  return Value::Number(count - static_cast<double>(free_days.size()));
}

Value RangeBegin(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_time()) return TypeError();
  Moment* moments = machine.arena().Array<Moment>(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) moments[i] = {list.moments()[i].lower, {kWild, kWild}};
  return Value::Moments(moments, list.count);
}

Value RangeEnd(Machine& machine, Arguments arguments) {
  const Value& list = arguments[0];
  if (!list.is_time()) return TypeError();
  Moment* moments = machine.arena().Array<Moment>(list.count);
  for (std::uint32_t i = 0; i < list.count; ++i) {
    const Moment& moment = list.moments()[i];
    moments[i] = {moment.is_range() ? moment.upper : moment.lower, {kWild, kWild}};
  }
  return Value::Moments(moments, list.count);
}

Value TimeRange(Machine&, Arguments arguments) {
  if (!arguments[0].is_time() || !arguments[1].is_time()) return TypeError();
  return Value::Range({arguments[0].moments()->lower, arguments[1].moments()->lower});
}

constexpr Function kFunctions[] = {
    {500, "Now", 0, 0, Form::kEager, kOnTime, Now, nullptr},
    {501, "Today", 0, 0, Form::kEager, kOnDay, Day<0>, nullptr},
    {502, "Tomorrow", 0, 0, Form::kEager, kOnDay, Day<1>, nullptr},
    {503, "Yesterday", 0, 0, Form::kEager, kOnDay, Day<-1>, nullptr},
    {504, "Date", 1, 6, Form::kEager, kNothing, Date, nullptr},
    {505, "Time", 1, 3, Form::kEager, kNothing, Time, nullptr},
    {506, "TimeMerge", 2, 3, Form::kEager, kNothing, TimeMerge, nullptr},
    {507, "Year", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Year, Half::kDate>, nullptr},
    {508, "Month", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Month, Half::kDate>, nullptr},
    {509, "Day", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Day, Half::kDate>, nullptr},
    {510, "Weekday", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Weekday, Half::kDate>, nullptr},
    {511, "Hour", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Hour, Half::kTime>, nullptr},
    {512, "Minute", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Minute, Half::kTime>, nullptr},
    {513, "Second", 1, 1, Form::kEager, kNothing, Part<&ENGTIME::Second, Half::kTime>, nullptr},
    {514, "Adjust", 7, 7, Form::kEager, kNothing, Adjust, nullptr},
    {515, "Zone", 0, 0, Form::kEager, kNothing, Zone, nullptr},
    {516, "TimeToTextInZone", 2, 2, Form::kEager, kNothing, TimeToTextInZone, nullptr},
    {517, "BusinessDays", 2, 4, Form::kEager, kNothing, BusinessDays, nullptr},
    {518, "RangeBegin", 1, 1, Form::kEager, kNothing, RangeBegin, nullptr},
    {519, "RangeEnd", 1, 1, Form::kEager, kNothing, RangeEnd, nullptr},
    {520, "TimeRange", 2, 2, Form::kEager, kNothing, TimeRange, nullptr},
};

}  // namespace

std::span<const Function> TimeFunctions() { return kFunctions; }

}  // namespace qcore::formula
