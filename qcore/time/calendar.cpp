#include "qcore/time/calendar.h"

namespace qcore::time {

namespace {

constexpr std::int64_t kFirstGregorianDay = 2361222;

// Years that begin in March put the leap day last; months from there follow 153 days for each five.
struct MarchDate {
  std::int64_t year;  // from 4801 BC, so that all divisions are of positive numbers
  std::int64_t month;
};

MarchDate FromMarch(std::int64_t year, std::int64_t month) {
  const std::int64_t back = month <= 2 ? 1 : 0;
  return {year + 4800 - back, month + 12 * back - 3};
}

std::int64_t JulianDay(const Date& date) {
  const MarchDate march = FromMarch(date.year, date.month);
  return date.day + (153 * march.month + 2) / 5 + 365 * march.year + march.year / 4 - 32083;
}

std::int64_t GregorianDay(const Date& date) {
  const MarchDate march = FromMarch(date.year, date.month);
  return date.day + (153 * march.month + 2) / 5 + 365 * march.year + march.year / 4 - march.year / 100 +
         march.year / 400 - 32045;
}

bool IsLeapYear(std::int32_t year) { return year % 4 == 0 && (year < 1753 || year % 100 != 0 || year % 400 == 0); }

}  // namespace

std::int32_t DaysInMonth(std::int32_t year, std::int32_t month) {
  if (month == 2) return IsLeapYear(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

std::optional<std::int64_t> DayOf(const Date& date) {
  if (date.year < 0 || date.month < 1 || date.month > 12) return std::nullopt;
  if (date.day < 1 || date.day > DaysInMonth(date.year, date.month)) return std::nullopt;
  const std::int64_t gregorian = GregorianDay(date);
  if (gregorian >= kFirstGregorianDay) return gregorian;
  const std::int64_t julian = JulianDay(date);
  if (julian >= kFirstGregorianDay) return std::nullopt;
  return julian;
}

Date DateOf(std::int64_t day) {
  std::int64_t centuries = 0;
  std::int64_t rest = day + 32082;
  if (day >= kFirstGregorianDay) {
    const std::int64_t shifted = day + 32044;
    centuries = (4 * shifted + 3) / 146097;
    rest = shifted - 146097 * centuries / 4;
  }
  const std::int64_t year = (4 * rest + 3) / 1461;
  const std::int64_t day_of_year = rest - 1461 * year / 4;
  const std::int64_t month = (5 * day_of_year + 2) / 153;
  return {static_cast<std::int32_t>(100 * centuries + year - 4800 + month / 10),
          static_cast<std::int32_t>(month + 3 - 12 * (month / 10)),
          static_cast<std::int32_t>(day_of_year - (153 * month + 2) / 5 + 1)};
}

std::int32_t WeekdayOf(std::int64_t day) { return static_cast<std::int32_t>((day + 1) % 7) + 1; }

}  // namespace qcore::time
