// Moments: their words, order and arithmetic. Where a half is a wild card, the other half stands alone.
#ifndef QUILLON_QCORE_TIME_MOMENT_H
#define QUILLON_QCORE_TIME_MOMENT_H

#include <cstdint>
#include <optional>

#include "engine/types.h"
#include "qcore/time/calendar.h"

namespace qcore::time {

inline constexpr std::int64_t kTicksPerSecond = 100;
inline constexpr std::int64_t kTicksPerDay = 24 * 60 * 60 * kTicksPerSecond;
inline constexpr std::uint32_t kDayMask = 0x00FFFFFF;

inline bool HasDate(const TIMEDATE& moment) { return moment.DateWord != ENG_TIME_WILD; }
inline bool HasTime(const TIMEDATE& moment) { return moment.TimeWord != ENG_TIME_WILD; }

// Hundredths since the start of day 0, for a moment with both halves. Nothing for a time word past the day's end.
std::optional<std::int64_t> TicksOf(const TIMEDATE& moment);
// Nothing outside the day numbers that a date word holds.
std::optional<TIMEDATE> MomentOf(std::int64_t ticks);

// A date without a time: its day number, whatever the zone. Nothing for a date that the calendar does not have.
std::optional<TIMEDATE> DayAlone(const Date& date);

TIMEDATE Now();

// A half that either side lacks counts as equal.
int Compare(const TIMEDATE& first, const TIMEDATE& second);
std::int32_t DifferenceInSeconds(const TIMEDATE& first, const TIMEDATE& second);

// A time alone wraps at midnight. Nothing for a moment without a time, unless `ticks` is 0, or out of range.
std::optional<TIMEDATE> AddTicks(const TIMEDATE& moment, std::int64_t ticks);

struct CalendarStep {
  std::int64_t days;
  std::int64_t months;
  std::int64_t years;
};
// By the local calendar: years and months first, held at the month's end, then days; the local time of day stays.
// Nothing for a moment without a date, unless the step is 0, or out of range.
std::optional<TIMEDATE> AddCalendar(const TIMEDATE& moment, const CalendarStep& step);

}  // namespace qcore::time

#endif
