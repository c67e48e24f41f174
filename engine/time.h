// Moments and calendars.
//
// Zones are numbers: the low two decimal digits are hours, the next two are minutes, positive west of
// Greenwich (5 is Eastern, -1 is Central European, -3005 is India). The local zone follows the machine's
// rules for daylight saving; fixed zones have none unless Dst is set in the structure.
// Operations with an int result give non-zero on failure, but for EngTimeCompare, and change nothing then.
//
// Parts whose Year, Month and Day are all 0 have no date; their moment has a wild date word. Without a date the local
// zone counts at its standard distance. A moment without a time is a day, the same in every zone:
// its date word is that day's number, and it breaks down to noon of it.
#ifndef QUILLON_ENGINE_TIME_H
#define QUILLON_ENGINE_TIME_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// TFMT.Date
#define ENG_DATE_FULL 0          // month, day and year
#define ENG_DATE_CURRENT_YEAR 1  // year left out when it is this year
#define ENG_DATE_MONTH_DAY 2
#define ENG_DATE_YEAR_MONTH 3
// TFMT.Time
#define ENG_TIME_FULL 0     // hour, minute, second
#define ENG_TIME_PARTIAL 1  // hour, minute
#define ENG_TIME_HOUR 2
// TFMT.Zone
#define ENG_ZONE_NEVER 0      // local form, no zone shown
#define ENG_ZONE_SOMETIMES 1  // shown when it is not the local zone
#define ENG_ZONE_ALWAYS 2
// TFMT.Structure
#define ENG_STRUCTURE_DATE 0
#define ENG_STRUCTURE_TIME 1
#define ENG_STRUCTURE_DATE_TIME 2
#define ENG_STRUCTURE_RELATIVE 3  // "Today", "Yesterday" or "Tomorrow" for the date where it fits

// EngTimeConstant
#define ENG_TIME_MINIMUM 0
#define ENG_TIME_MAXIMUM 1
#define ENG_TIME_WILDCARD 2

// Years and months by the local calendar, held at the month's end, then days; the local time of day stays. Then the
// rest as time that passes. A time alone wraps at midnight and takes no days; a date alone takes nothing below days.
ENG_API int EngTimeAdjust(TIMEDATE* moment, int32_t seconds, int32_t minutes, int32_t hours, int32_t days,
                          int32_t months, int32_t years);
ENG_API int EngTimeAdjustTicks(TIMEDATE* moment, int32_t hundredths);
// Negative, zero or positive. A half that either side lacks counts as equal.
ENG_API int EngTimeCompare(const TIMEDATE* first, const TIMEDATE* second);
ENG_API void EngTimeCompose(uint32_t date_word, uint32_t time_word, TIMEDATE* moment);
// An unknown selector leaves *moment alone.
ENG_API void EngTimeConstant(uint16_t selector, TIMEDATE* moment);
ENG_API uint32_t EngTimeDateWord(const TIMEDATE* moment);
ENG_API int32_t EngTimeDifference(const TIMEDATE* first, const TIMEDATE* second);  // seconds, held at 32 bits
// From the fields, in Zone, to GM. Where clocks are set back Dst picks the moment.
ENG_API int EngTimeFromParts(ENGTIME* parts);
// Of the year, month and day; 0 for a date that the calendar does not have or a date word does not hold.
ENG_API uint32_t EngTimeJulianDay(const ENGTIME* parts);
ENG_API void EngTimeLocalZone(int32_t* zone, int32_t* dst);
ENG_API void EngTimeNow(TIMEDATE* moment);
// Null settings or format mean the engine's own, and date and time in full. On success the cursor stands behind what
// was taken; ENG_ERR_TIME_PARSE leaves cursor and result alone. A half that the text lacks becomes a wild card.
ENG_API ENGSTATUS EngTimeParse(const INTLFORMAT* settings, const TFMT* format, const ENGCHAR** text, uint16_t length,
                               TIMEDATE* moment);
ENG_API ENGSTATUS EngTimeRangeParse(const INTLFORMAT* settings, const TFMT* format, const ENGCHAR** text,
                                    uint16_t length, TIMEDATE_PAIR* pair);
// Terminated where `size` leaves room. ENG_ERR_BUFFER_SIZE and ENG_ERR_TIME_VALUE, for a moment without the half asked
// for or outside the calendar, write nothing.
ENG_API ENGSTATUS EngTimeRangeToText(const INTLFORMAT* settings, const TFMT* format, const TIMEDATE_PAIR* pair,
                                     ENGCHAR* buffer, uint16_t size, uint16_t* length);
ENG_API uint32_t EngTimeTimeWord(const TIMEDATE* moment);
// From GM to the fields, in Zone as it stands or in the local zone.
ENG_API int EngTimeToPartsInZone(ENGTIME* parts);
ENG_API int EngTimeToPartsLocal(ENGTIME* parts);
ENG_API ENGSTATUS EngTimeToText(const INTLFORMAT* settings, const TFMT* format, const TIMEDATE* moment, ENGCHAR* buffer,
                                uint16_t size, uint16_t* length);

#ifdef __cplusplus
}
#endif

#endif
