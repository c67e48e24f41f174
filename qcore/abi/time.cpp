#include "engine/time.h"

#include <string>

#include "engine/status.h"
#include "qcore/abi/guard.h"
#include "qcore/abi/output.h"
#include "qcore/time/calendar.h"
#include "qcore/time/moment.h"
#include "qcore/time/timetext.h"
#include "qcore/time/zone.h"

namespace qtime = qcore::time;
using qcore::abi::Guard;
using qcore::abi::GuardValue;
using qcore::abi::Output;

namespace {

constexpr int kFailed = 1;

int Replace(TIMEDATE* moment, const std::optional<TIMEDATE>& changed) {
  if (!changed) return kFailed;
  *moment = *changed;
  return 0;
}

INTLFORMAT SettingsOr(const INTLFORMAT* settings) { return settings ? *settings : qtime::OwnSettings(); }
TFMT FormatOr(const TFMT* format) { return format ? *format : qtime::kUsualFormat; }

std::optional<TIMEDATE> Adjusted(const TIMEDATE& moment, std::int64_t seconds, const qtime::CalendarStep& step) {
  const std::optional<TIMEDATE> moved = qtime::AddCalendar(moment, step);
  return moved ? qtime::AddTicks(*moved, seconds * qtime::kTicksPerSecond) : std::nullopt;
}

}  // namespace

int EngTimeAdjust(TIMEDATE* moment, int32_t seconds, int32_t minutes, int32_t hours, int32_t days, int32_t months,
                  int32_t years) {
  if (!moment) return kFailed;
  const std::int64_t total = seconds + std::int64_t{60} * minutes + std::int64_t{3600} * hours;
  return GuardValue(kFailed, [&] { return Replace(moment, Adjusted(*moment, total, {days, months, years})); });
}

int EngTimeAdjustTicks(TIMEDATE* moment, int32_t hundredths) {
  return moment ? Replace(moment, qtime::AddTicks(*moment, hundredths)) : kFailed;
}

int EngTimeCompare(const TIMEDATE* first, const TIMEDATE* second) {
  return first && second ? qtime::Compare(*first, *second) : 0;
}

void EngTimeCompose(uint32_t date_word, uint32_t time_word, TIMEDATE* moment) {
  if (moment) *moment = {time_word, date_word};
}

void EngTimeConstant(uint16_t selector, TIMEDATE* moment) {
  constexpr TIMEDATE kConstants[] = {{0, 0}, {0, ENG_DATE_MAXIMUM}, {ENG_TIME_WILD, ENG_TIME_WILD}};
  if (moment && selector <= ENG_TIME_WILDCARD) *moment = kConstants[selector];
}

uint32_t EngTimeDateWord(const TIMEDATE* moment) { return moment ? moment->DateWord : 0; }

int32_t EngTimeDifference(const TIMEDATE* first, const TIMEDATE* second) {
  return first && second ? qtime::DifferenceInSeconds(*first, *second) : 0;
}

int EngTimeFromParts(ENGTIME* parts) {
  return GuardValue(kFailed, [&] { return parts && qtime::FromParts(parts) ? 0 : kFailed; });
}

uint32_t EngTimeJulianDay(const ENGTIME* parts) {
  if (!parts) return 0;
  const std::optional<TIMEDATE> day = qtime::DayAlone({parts->Year, parts->Month, parts->Day});
  return day ? day->DateWord : 0;
}

void EngTimeLocalZone(int32_t* zone, int32_t* dst) {
  const qtime::Zone local = qtime::LocalZone();
  if (zone) *zone = local.number;
  if (dst) *dst = local.dst;
}

void EngTimeNow(TIMEDATE* moment) {
  if (moment) *moment = qtime::Now();
}

ENGSTATUS EngTimeParse(const INTLFORMAT* settings, const TFMT* format, const ENGCHAR** cursor, uint16_t length,
                       TIMEDATE* moment) {
  if (!cursor || !*cursor || !moment) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::string_view text = qcore::abi::Terminated(*cursor, length);
    const auto parsed = qtime::ParseMoment(SettingsOr(settings), FormatOr(format), text);
    if (!parsed) return ENG_ERR_TIME_PARSE;
    *cursor += parsed->length;
    *moment = parsed->moment;
    return ENG_OK;
  });
}

ENGSTATUS EngTimeRangeParse(const INTLFORMAT* settings, const TFMT* format, const ENGCHAR** cursor, uint16_t length,
                            TIMEDATE_PAIR* pair) {
  if (!cursor || !*cursor || !pair) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::string_view text = qcore::abi::Terminated(*cursor, length);
    const auto parsed = qtime::ParseRange(SettingsOr(settings), FormatOr(format), text);
    if (!parsed) return ENG_ERR_TIME_PARSE;
    *cursor += parsed->length;
    *pair = parsed->pair;
    return ENG_OK;
  });
}

ENGSTATUS EngTimeRangeToText(const INTLFORMAT* settings, const TFMT* format, const TIMEDATE_PAIR* pair, ENGCHAR* buffer,
                             uint16_t size, uint16_t* length) {
  if (!pair || !buffer || !length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const INTLFORMAT own = SettingsOr(settings);
    const auto lower = qtime::FormatMoment(own, FormatOr(format), pair->Lower);
    const auto upper = qtime::FormatMoment(own, FormatOr(format), pair->Upper);
    return lower && upper ? Output(*lower + " - " + *upper, buffer, size, length) : ENGSTATUS{ENG_ERR_TIME_VALUE};
  });
}

uint32_t EngTimeTimeWord(const TIMEDATE* moment) { return moment ? moment->TimeWord : 0; }

int EngTimeToPartsInZone(ENGTIME* parts) {
  return GuardValue(kFailed, [&] {
    return parts && qtime::ToParts({parts->Zone, parts->Dst != 0}, parts) ? 0 : kFailed;
  });
}

int EngTimeToPartsLocal(ENGTIME* parts) {
  return GuardValue(kFailed, [&] { return parts && qtime::ToParts(qtime::LocalZone(), parts) ? 0 : kFailed; });
}

ENGSTATUS EngTimeToText(const INTLFORMAT* settings, const TFMT* format, const TIMEDATE* moment, ENGCHAR* buffer,
                        uint16_t size, uint16_t* length) {
  if (!moment || !buffer || !length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const auto text = qtime::FormatMoment(SettingsOr(settings), FormatOr(format), *moment);
    return text ? Output(*text, buffer, size, length) : ENGSTATUS{ENG_ERR_TIME_VALUE};
  });
}
