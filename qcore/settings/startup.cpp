#include "qcore/settings/startup.h"

#include <atomic>
#include <mutex>
#include <string>

#include "qcore/settings/settings.h"

namespace qcore::startup {

namespace {

std::mutex mutex;
std::atomic<unsigned> starts{0};
thread_local unsigned thread_starts = 0;

}  // namespace

ENGSTATUS Start(const char* named_settings) {
  std::lock_guard lock(mutex);
  if (starts == 0) {
    const std::string path = settings::Locate(named_settings);
    if (path.empty()) return ENG_ERR_NO_CONFIG;
    const ENGSTATUS status = settings::Load(path);
    if (status != ENG_OK) return status;
  }
  ++starts;
  return ENG_OK;
}

void End(const std::function<void()>& close_all) {
  std::lock_guard lock(mutex);
  if (starts == 0) return;
  if (starts == 1) {
    close_all();
    settings::Unload();
  }
  --starts;
}

bool IsUp() { return starts.load(std::memory_order_acquire) != 0; }

ENGSTATUS ThreadStart() {
  if (!IsUp()) return ENG_ERR_NOT_STARTED;
  ++thread_starts;
  return ENG_OK;
}

ENGSTATUS ThreadEnd() {
  if (thread_starts == 0) return ENG_ERR_THREAD;
  --thread_starts;
  return ENG_OK;
}

}  // namespace qcore::startup
