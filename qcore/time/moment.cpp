#include "qcore/time/moment.h"

#include <algorithm>
#include <limits>

#include "qcore/settings/platform.h"
#include "qcore/time/calendar.h"
#include "qcore/time/zone.h"

namespace qcore::time {

namespace {

std::int64_t Day(const TIMEDATE& moment) { return moment.DateWord & kDayMask; }

int Sign(std::int64_t value) { return value < 0 ? -1 : value > 0; }

std::int64_t DayDifference(const TIMEDATE& first, const TIMEDATE& second) {
  return HasDate(first) && HasDate(second) ? Day(first) - Day(second) : 0;
}

std::int64_t TimeDifference(const TIMEDATE& first, const TIMEDATE& second) {
  return HasTime(first) && HasTime(second) ? std::int64_t{first.TimeWord} - std::int64_t{second.TimeWord} : 0;
}

std::optional<Date> AddMonths(const Date& date, const CalendarStep& step) {
  const std::int64_t months = date.year * std::int64_t{12} + date.month - 1 + step.months + step.years * 12;
  constexpr std::int64_t kMostYears = 50000;  // beyond every day number that a date word holds
  if (months < 0 || months >= kMostYears * 12) return std::nullopt;
  const auto year = static_cast<std::int32_t>(months / 12);
  const auto month = static_cast<std::int32_t>(months % 12 + 1);
  return Date{year, month, std::min(date.day, DaysInMonth(year, month))};
}

bool Move(ENGTIME* parts, const CalendarStep& step) {
  const std::optional<Date> date = AddMonths({parts->Year, parts->Month, parts->Day}, step);
  const std::optional<std::int64_t> day = date ? DayOf(*date) : std::nullopt;
  if (!day || *day + step.days < 0 || *day + step.days > kDayMask) return false;
  const Date moved = DateOf(*day + step.days);
  parts->Year = moved.year;
  parts->Month = moved.month;
  parts->Day = moved.day;
  return true;
}

}  // namespace

std::optional<std::int64_t> TicksOf(const TIMEDATE& moment) {
  if (moment.TimeWord >= kTicksPerDay) return std::nullopt;
  return Day(moment) * kTicksPerDay + moment.TimeWord;
}

std::optional<TIMEDATE> MomentOf(std::int64_t ticks) {
  if (ticks < 0 || ticks / kTicksPerDay > kDayMask) return std::nullopt;
  return TIMEDATE{static_cast<std::uint32_t>(ticks % kTicksPerDay), static_cast<std::uint32_t>(ticks / kTicksPerDay)};
}

std::optional<TIMEDATE> DayAlone(const Date& date) {
  const std::optional<std::int64_t> day = DayOf(date);
  if (!day || *day < 0 || *day > kDayMask) return std::nullopt;
  return TIMEDATE{ENG_TIME_WILD, static_cast<std::uint32_t>(*day)};
}

TIMEDATE Now() {
  const std::int64_t ticks = kUnixEpochDay * kTicksPerDay + CurrentPlatform().NowHundredths();
  return MomentOf(ticks).value_or(TIMEDATE{ENG_TIME_WILD, ENG_TIME_WILD});
}

int Compare(const TIMEDATE& first, const TIMEDATE& second) {
  const std::int64_t days = DayDifference(first, second);
  return Sign(days != 0 ? days : TimeDifference(first, second));
}

std::int32_t DifferenceInSeconds(const TIMEDATE& first, const TIMEDATE& second) {
  const std::int64_t ticks = DayDifference(first, second) * kTicksPerDay + TimeDifference(first, second);
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(ticks / kTicksPerSecond, Limits::min(), Limits::max()));
}

std::optional<TIMEDATE> AddTicks(const TIMEDATE& moment, std::int64_t ticks) {
  if (ticks == 0) return moment;
  if (moment.TimeWord >= kTicksPerDay) return std::nullopt;
  if (HasDate(moment)) return MomentOf(*TicksOf(moment) + ticks);
  const std::int64_t time = (moment.TimeWord + ticks % kTicksPerDay + kTicksPerDay) % kTicksPerDay;
  return TIMEDATE{static_cast<std::uint32_t>(time), moment.DateWord};
}

std::optional<TIMEDATE> AddCalendar(const TIMEDATE& moment, const CalendarStep& step) {
  if (step.days == 0 && step.months == 0 && step.years == 0) return moment;
  ENGTIME parts{};
  parts.GM = moment;
  if (!HasDate(moment) || !ToParts(LocalZone(), &parts) || !Move(&parts, step)) return std::nullopt;
  if (!HasTime(moment)) return DayAlone({parts.Year, parts.Month, parts.Day});
  if (!FromParts(&parts)) return std::nullopt;
  return parts.GM;
}

}  // namespace qcore::time
