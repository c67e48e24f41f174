#include "qcore/settings/platform.h"

#include <sys/random.h>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <thread>

namespace qcore {

namespace {

class Machine final : public Platform {
 public:
  std::int64_t NowHundredths() override {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::duration<std::int64_t, std::centi>>(now).count();
  }

  void Random(std::span<std::uint8_t> bytes) override {
    while (!bytes.empty()) {
      const ssize_t got = getrandom(bytes.data(), bytes.size(), 0);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) throw std::system_error(errno, std::generic_category(), "getrandom");
      bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
  }

  void Sleep(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }
};

Machine machine;
std::atomic<Platform*> current{&machine};

}  // namespace

Platform& CurrentPlatform() { return *current.load(std::memory_order_acquire); }

void ReplacePlatform(Platform* platform) { current.store(platform ? platform : &machine, std::memory_order_release); }

}  // namespace qcore
