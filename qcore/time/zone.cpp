#include "qcore/time/zone.h"

#include <cstdlib>
#include <ctime>
#include <mutex>

#include "qcore/settings/platform.h"
#include "qcore/settings/settings.h"
#include "qcore/time/calendar.h"
#include "qcore/time/moment.h"

namespace qcore::time {

namespace {

constexpr std::int64_t kSecondsPerDay = 24 * 60 * 60;
constexpr std::int64_t kSecondsPerHour = 60 * 60;
constexpr std::int64_t kFirstRule = -2145916800;  // 1 January 1902
constexpr std::int64_t kUnixEpochTicks = kUnixEpochDay * kTicksPerDay;

struct Offset {
  std::int64_t east;  // seconds
  bool dst;
};

Offset MachineOffset(std::int64_t unix_seconds) {
  const std::time_t time = unix_seconds;
  struct tm fields {};
  if (!localtime_r(&time, &fields)) return {0, false};
  return {fields.tm_gmtoff, fields.tm_isdst > 0};
}

std::int64_t UnixNow() { return CurrentPlatform().NowHundredths() / kTicksPerSecond; }

// The nearest moment without daylight saving tells the standard distance, whatever the saving is.
std::int64_t StandardEast(std::int64_t now) {
  for (std::int64_t month = 0; month < 12; ++month) {
    const Offset offset = MachineOffset(now + month * 30 * kSecondsPerDay);
    if (!offset.dst) return offset.east;
  }
  return MachineOffset(now).east;
}

std::int32_t ZoneNumber(std::int64_t east) {
  const std::int64_t minutes = std::abs(east) / 60;
  const std::int64_t number = minutes % 60 * 100 + minutes / 60;
  return static_cast<std::int32_t>(east > 0 ? -number : number);
}

Offset LocalOffset(std::int64_t unix_seconds) {
  return unix_seconds < kFirstRule ? Offset{StandardEast(UnixNow()), false} : MachineOffset(unix_seconds);
}

Offset FixedOffset(std::int64_t east, bool dst) { return {east + (dst ? kSecondsPerHour : 0), dst}; }

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

// The offset in force at a local time, given as if it were GMT.
Offset LocalOffsetAtFields(std::int64_t fields_as_unix, bool dst) {
  const Offset before = LocalOffset(fields_as_unix - kSecondsPerDay);
  const Offset after = LocalOffset(fields_as_unix + kSecondsPerDay);
  const bool before_fits = LocalOffset(fields_as_unix - before.east).east == before.east;
  const bool after_fits = LocalOffset(fields_as_unix - after.east).east == after.east;
  if (before_fits && after_fits) return after.dst == dst ? after : before;
  return after_fits ? after : before;
}

void SetTime(std::int64_t ticks, ENGTIME* parts) {
  parts->Hundredth = static_cast<std::int32_t>(ticks % 100);
  parts->Second = static_cast<std::int32_t>(ticks / 100 % 60);
  parts->Minute = static_cast<std::int32_t>(ticks / 6000 % 60);
  parts->Hour = static_cast<std::int32_t>(ticks / 360000);
}

bool SetDate(std::int64_t day, ENGTIME* parts) {
  const Date date = DateOf(day);
  if (day < 0 || date.year < 0) return false;
  parts->Year = date.year;
  parts->Month = date.month;
  parts->Day = date.day;
  parts->Weekday = WeekdayOf(day);
  return true;
}

void ClearDate(ENGTIME* parts) { parts->Year = parts->Month = parts->Day = parts->Weekday = 0; }

// Nothing unless the time fields are a time.
std::optional<std::int64_t> TicksOfTime(const ENGTIME& parts) {
  const auto in = [](std::int32_t value, std::int32_t bound) { return value >= 0 && value < bound; };
  if (!in(parts.Hour, 24) || !in(parts.Minute, 60) || !in(parts.Second, 60) || !in(parts.Hundredth, 100)) {
    return std::nullopt;
  }
  return ((parts.Hour * 60 + parts.Minute) * std::int64_t{60} + parts.Second) * kTicksPerSecond + parts.Hundredth;
}

std::int64_t Wrapped(std::int64_t ticks) { return (ticks % kTicksPerDay + kTicksPerDay) % kTicksPerDay; }

// A time without a date.
bool ShowTime(const Offset& offset, ENGTIME* parts) {
  if (parts->GM.TimeWord >= kTicksPerDay) return false;
  ClearDate(parts);
  SetTime(Wrapped(parts->GM.TimeWord + offset.east * kTicksPerSecond), parts);
  parts->Dst = offset.dst;
  return true;
}

// A date without a time: the day is the same in every zone. `fixed` is null where the machine's rules hold.
bool ShowDay(const Offset* fixed, ENGTIME* parts) {
  constexpr std::int64_t kNoon = kTicksPerDay / 2;
  const std::int64_t day = parts->GM.DateWord & kDayMask;
  if (!SetDate(day, parts)) return false;
  SetTime(kNoon, parts);
  const std::int64_t noon_as_unix = (day - kUnixEpochDay) * kSecondsPerDay + kNoon / kTicksPerSecond;
  parts->Dst = fixed ? fixed->dst : LocalOffsetAtFields(noon_as_unix, false).dst;
  return true;
}

// A moment with both halves.
bool ShowMoment(const Offset* fixed, ENGTIME* parts) {
  const auto ticks = TicksOf(parts->GM);
  if (!ticks) return false;
  const std::int64_t unix_seconds = FloorDivide(*ticks - kUnixEpochTicks, kTicksPerSecond);
  const Offset offset = fixed ? *fixed : LocalOffset(unix_seconds);
  const std::int64_t shown = *ticks + offset.east * kTicksPerSecond;
  if (shown < 0 || !SetDate(shown / kTicksPerDay, parts)) return false;
  SetTime(shown % kTicksPerDay, parts);
  parts->Dst = offset.dst;
  return true;
}

}  // namespace

// Kept for the quarter hour, as clocks change at full quarters only, while the C library's zone is the same.
Zone LocalZone() {
  struct Known {
    std::int64_t quarter;
    long west;
    int has_dst;
    Zone zone;
  };
  static std::mutex mutex;
  static std::optional<Known> known;
  const std::int64_t now = UnixNow();
  const std::int64_t quarter = FloorDivide(now, kSecondsPerHour / 4);
  const std::lock_guard lock(mutex);
  if (!known || known->quarter != quarter || known->west != ::timezone || known->has_dst != ::daylight) {
    const Zone zone{ZoneNumber(StandardEast(now)), MachineOffset(now).dst};
    known = Known{quarter, ::timezone, ::daylight, zone};
  }
  return known->zone;
}

std::optional<std::int64_t> SecondsEast(std::int32_t zone) {
  const std::int64_t distance = std::abs(std::int64_t{zone});
  const std::int64_t hours = distance % 100;
  const std::int64_t minutes = distance / 100;
  if (hours > 15 || minutes > 59) return std::nullopt;
  const std::int64_t seconds = hours * kSecondsPerHour + minutes * 60;
  return zone > 0 ? -seconds : seconds;
}

bool ToParts(const Zone& zone, ENGTIME* parts) {
  const std::optional<std::int64_t> east = SecondsEast(zone.number);
  if (!east) return false;
  ENGTIME result = *parts;
  result.Zone = zone.number;
  const bool local = zone.number == LocalZone().number;
  const Offset fixed = local ? Offset{*east, false} : FixedOffset(*east, zone.dst);
  const Offset* rule = local ? nullptr : &fixed;
  const bool shown = !HasDate(parts->GM)  ? ShowTime(fixed, &result)
                     : HasTime(parts->GM) ? ShowMoment(rule, &result)
                                          : ShowDay(rule, &result);
  if (!shown) return false;
  *parts = result;
  return true;
}

bool FromParts(ENGTIME* parts) {
  const std::optional<std::int64_t> east = SecondsEast(parts->Zone);
  const std::optional<std::int64_t> time = TicksOfTime(*parts);
  if (!east || !time) return false;
  const bool local = parts->Zone == LocalZone().number;
  const Offset fixed = local ? Offset{*east, false} : FixedOffset(*east, parts->Dst != 0);
  if (parts->Year == 0 && parts->Month == 0 && parts->Day == 0) {
    parts->GM = {static_cast<std::uint32_t>(Wrapped(*time - fixed.east * kTicksPerSecond)), ENG_TIME_WILD};
    return true;
  }
  const std::optional<std::int64_t> day = DayOf({parts->Year, parts->Month, parts->Day});
  if (!day) return false;
  const std::int64_t shown = *day * kTicksPerDay + *time;
  const std::int64_t as_unix = FloorDivide(shown - kUnixEpochTicks, kTicksPerSecond);
  const Offset offset = local ? LocalOffsetAtFields(as_unix, parts->Dst != 0) : fixed;
  const std::optional<TIMEDATE> moment = MomentOf(shown - offset.east * kTicksPerSecond);
  if (!moment) return false;
  parts->GM = *moment;
  return true;
}

INTLFORMAT OwnSettings() {
  INTLFORMAT settings = settings::International();
  settings.TimeZone = LocalZone().number;
  return settings;
}

}  // namespace qcore::time
