#include "qcore/settings/startup.h"

#include <time.h>

#include <atomic>
#include <mutex>
#include <string>

#include "qcore/settings/settings.h"

namespace qcore::startup {

namespace {

std::mutex mutex;
std::atomic<unsigned> starts{0};
thread_local unsigned thread_starts = 0;

ENGSTATUS FirstStart(const char* named_settings, const std::function<ENGSTATUS()>& open_all) {
  tzset();  // the zone may have changed since the C library last looked
  const std::string path = settings::Locate(named_settings);
  if (path.empty()) return ENG_ERR_NO_CONFIG;
  const ENGSTATUS status = settings::Load(path);
  return status == ENG_OK ? open_all() : status;
}

}  // namespace

ENGSTATUS Start(const char* named_settings, const std::function<ENGSTATUS()>& open_all) {
  std::lock_guard lock(mutex);
  if (starts == 0) {
    const ENGSTATUS status = FirstStart(named_settings, open_all);
    if (status != ENG_OK) {
      settings::Unload();
      return status;
    }
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
