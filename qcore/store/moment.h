// The present moment as a time-date.
#ifndef QUILLON_QCORE_STORE_MOMENT_H
#define QUILLON_QCORE_STORE_MOMENT_H

#include "engine/types.h"
#include "qcore/settings/platform.h"

namespace qcore {

inline TIMEDATE Now() {
  constexpr std::int64_t kHundredthsADay = 8640000;
  constexpr std::int64_t kEpochDay = 2440588;  // Julian day of 1970-01-01
  const std::int64_t now = CurrentPlatform().NowHundredths();
  return {static_cast<std::uint32_t>(now % kHundredthsADay),
          static_cast<std::uint32_t>(kEpochDay + now / kHundredthsADay)};
}

}  // namespace qcore

#endif
