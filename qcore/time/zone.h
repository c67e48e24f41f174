// Zones, and the way between moments and broken-down times.
//
// A zone number follows engine/time.h. The number of the local zone stands for the machine's rules, with daylight
// saving as it is in force at each moment; any other for a fixed distance, an hour more while Dst is set. Before 1902
// the local zone is at its present standard distance: no zone kept whole minutes then.
#ifndef QUILLON_QCORE_TIME_ZONE_H
#define QUILLON_QCORE_TIME_ZONE_H

#include <cstdint>
#include <optional>

#include "engine/types.h"

namespace qcore::time {

struct Zone {
  std::int32_t number;
  bool dst;
};

// As of now.
Zone LocalZone();

// Seconds east of Greenwich. Nothing for a number that is no zone.
std::optional<std::int64_t> SecondsEast(std::int32_t zone);

// From parts->GM to the fields, Zone and Dst with them; false, and nothing changes, for a moment outside the calendar.
// Without a date the date fields become 0 and daylight saving does not count. Without a time they are those of
// noon of that very day, in any zone.
bool ToParts(const Zone& zone, ENGTIME* parts);

// From the fields to parts->GM, in parts->Zone. Year, month and day all 0 mean no date. Where clocks are set back, Dst
// picks one of the two moments; a time that was skipped counts from before the change.
bool FromParts(ENGTIME* parts);

// The settings for formats, with the local zone.
INTLFORMAT OwnSettings();

}  // namespace qcore::time

#endif
