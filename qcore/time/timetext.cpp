#include "qcore/time/timetext.h"

#include <cstdlib>
#include <utility>

#include "engine/time.h"
#include "qcore/text/number.h"
#include "qcore/time/calendar.h"
#include "qcore/time/moment.h"
#include "qcore/time/zone.h"

namespace qcore::time {

namespace {

using text::SettingText;

std::string_view Or(std::string_view text, std::string_view usual) { return text.empty() ? usual : text; }

// In the settings' zone; the local one goes by the machine's rules.
bool Show(const INTLFORMAT& settings, const TIMEDATE& moment, ENGTIME* parts) {
  parts->GM = moment;
  return ToParts({settings.TimeZone, false}, parts);
}

std::string Padded(std::int32_t number, std::size_t width) {
  std::string digits = std::to_string(number);
  return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

struct DateParts {
  std::string year;  // empty where it is left out
  std::string month;
  std::string day;
};

std::string InOrder(const INTLFORMAT& settings, const DateParts& date) {
  const std::string_view separator = TimeWords(settings).date_separator;
  const std::string* order[3] = {&date.month, &date.day, &date.year};
  if (settings.DateOrder == 1) std::swap(order[0], order[1]);
  if (settings.DateOrder == 2) {
    order[0] = &date.year;
    order[1] = &date.month;
    order[2] = &date.day;
  }
  std::string text;
  for (const std::string* part : order) {
    if (!text.empty() && !part->empty()) text += separator;
    text += *part;
  }
  return text;
}

std::optional<std::int32_t> ThisYear(const INTLFORMAT& settings) {
  ENGTIME now{};
  return Show(settings, Now(), &now) ? std::optional(now.Year) : std::nullopt;
}

std::string DateText(const INTLFORMAT& settings, std::uint8_t form, const ENGTIME& parts) {
  DateParts date{Padded(parts.Year, 4), Padded(parts.Month, 2), Padded(parts.Day, 2)};
  const bool this_year = form == ENG_DATE_CURRENT_YEAR && ThisYear(settings) == parts.Year;
  if (form == ENG_DATE_MONTH_DAY || this_year) date.year.clear();
  if (form == ENG_DATE_YEAR_MONTH) date.day.clear();
  return InOrder(settings, date);
}

// "Today" and its neighbours, or nothing.
std::string_view RelativeText(const INTLFORMAT& settings, const ENGTIME& parts) {
  ENGTIME now{};
  const auto day = DayOf({parts.Year, parts.Month, parts.Day});
  if (!day || !Show(settings, Now(), &now)) return {};
  const auto today = DayOf({now.Year, now.Month, now.Day});
  if (!today) return {};
  switch (*day - *today) {
    case -1:
      return SettingText(settings.YesterdayString);
    case 0:
      return SettingText(settings.TodayString);
    case 1:
      return SettingText(settings.TomorrowString);
    default:
      return {};
  }
}

std::string TimeText(const INTLFORMAT& settings, std::uint8_t form, const ENGTIME& parts) {
  const TimeWords words(settings);
  const bool clock24 = (settings.Flags & ENG_INTL_CLOCK_24_HOUR) != 0;
  const std::int32_t hour = clock24 ? parts.Hour : (parts.Hour + 11) % 12 + 1;
  std::string text = Padded(hour, 2);
  // An hour alone would not read as a time on the 24-hour clock.
  if (form != ENG_TIME_HOUR) text += std::string(words.time_separator) + Padded(parts.Minute, 2);
  if (form == ENG_TIME_HOUR && clock24) text += std::string(words.time_separator) + "00";
  if (form == ENG_TIME_FULL) text += std::string(words.time_separator) + Padded(parts.Second, 2);
  if (!clock24) text += " " + std::string(parts.Hour < 12 ? words.am : words.pm);
  return text;
}

// Between the time shown and the moment.
std::int64_t MinutesEast(const ENGTIME& parts) {
  const auto day = HasDate(parts.GM) ? DayOf({parts.Year, parts.Month, parts.Day}) : std::nullopt;
  if (!day) return SecondsEast(parts.Zone).value_or(0) / 60;
  constexpr std::int64_t kDay = 24 * 60;
  return (*day - (parts.GM.DateWord & kDayMask)) * kDay + parts.Hour * 60 + parts.Minute -
         parts.GM.TimeWord / (60 * kTicksPerSecond);
}

std::string ZoneText(const ENGTIME& parts) {
  const std::int64_t minutes = MinutesEast(parts);
  if (minutes == 0) return "GMT";
  const auto distance = static_cast<std::int32_t>(std::abs(minutes));
  return std::string("GMT") + (minutes < 0 ? "-" : "+") + Padded(distance / 60, 2) + ":" + Padded(distance % 60, 2);
}

bool IsKnown(const TFMT& format) {
  return format.Date <= ENG_DATE_YEAR_MONTH && format.Time <= ENG_TIME_HOUR && format.Zone <= ENG_ZONE_ALWAYS &&
         format.Structure <= ENG_STRUCTURE_RELATIVE;
}

bool ShowsZone(const TFMT& format, const ENGTIME& parts) {
  return format.Zone == ENG_ZONE_ALWAYS || (format.Zone == ENG_ZONE_SOMETIMES && parts.Zone != LocalZone().number);
}

}  // namespace

TimeWords::TimeWords(const INTLFORMAT& settings)
    : date_separator(Or(SettingText(settings.DateString), "/")),
      time_separator(Or(SettingText(settings.TimeString), ":")),
      am(Or(SettingText(settings.AMString), "AM")),
      pm(Or(SettingText(settings.PMString), "PM")) {}

std::optional<std::string> FormatMoment(const INTLFORMAT& settings, const TFMT& format, const TIMEDATE& moment) {
  ENGTIME parts{};
  const bool wants_date = format.Structure != ENG_STRUCTURE_TIME && HasDate(moment);
  const bool wants_time = format.Structure != ENG_STRUCTURE_DATE && HasTime(moment);
  if (!IsKnown(format) || (!wants_date && !wants_time) || !Show(settings, moment, &parts)) return std::nullopt;
  std::string text;
  if (wants_date) {
    if (format.Structure == ENG_STRUCTURE_RELATIVE) text = RelativeText(settings, parts);
    if (text.empty()) text = DateText(settings, format.Date, parts);
  }
  if (wants_time) {
    if (wants_date) text += " ";
    text += TimeText(settings, format.Time, parts);
    if (ShowsZone(format, parts)) text += " " + ZoneText(parts);
  }
  return text;
}

}  // namespace qcore::time
