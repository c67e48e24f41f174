// Day numbers and calendar dates.
//
// Julian day numbers, 2440588 for 1 January 1970. Dates are Gregorian from 14 September 1752 on and Julian before, so
// that 2 September 1752 is followed by the 14th and every fourth year below 1753 is a leap year.
#ifndef QUILLON_QCORE_TIME_CALENDAR_H
#define QUILLON_QCORE_TIME_CALENDAR_H

#include <cstdint>
#include <optional>

namespace qcore::time {

inline constexpr std::int64_t kUnixEpochDay = 2440588;

struct Date {
  std::int32_t year;
  std::int32_t month;
  std::int32_t day;
};

// Nothing for a date that the calendar does not have, or a year below 0.
std::optional<std::int64_t> DayOf(const Date& date);
Date DateOf(std::int64_t day);
std::int32_t DaysInMonth(std::int32_t year, std::int32_t month);
// 1 Sunday to 7 Saturday.
std::int32_t WeekdayOf(std::int64_t day);

}  // namespace qcore::time

#endif
