// What the engine asks of the machine: the clock, random bytes, sleep. One place, so that tests can drive them.
#ifndef QUILLON_QCORE_SETTINGS_PLATFORM_H
#define QUILLON_QCORE_SETTINGS_PLATFORM_H

#include <chrono>
#include <cstdint>
#include <span>

namespace qcore {

class Platform {
 public:
  virtual ~Platform() = default;
  // Hundredths of a second since 1970-01-01 00:00 GMT.
  virtual std::int64_t NowHundredths() = 0;
  // Fit for keys. Throws std::system_error when the machine has none to give.
  virtual void Random(std::span<std::uint8_t> bytes) = 0;
  virtual void Sleep(std::chrono::milliseconds time) = 0;
};

// The one in force; the machine's own unless a test has put another in its place.
Platform& CurrentPlatform();
// Null puts the machine's back. The caller keeps `platform` alive and lets no other thread run into the change.
void ReplacePlatform(Platform* platform);

}  // namespace qcore

#endif
