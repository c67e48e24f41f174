// How often the engine has been started, by the process and by the calling thread.
#ifndef QUILLON_QCORE_SETTINGS_STARTUP_H
#define QUILLON_QCORE_SETTINGS_STARTUP_H

#include <functional>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::startup {

// The first start finds and reads the settings file and runs `open_all`; if one fails the engine stays down. Later ones
// only count.
[[nodiscard]] ENGSTATUS Start(const char* named_settings, const std::function<ENGSTATUS()>& open_all);
// The last end runs `close_all` while the engine still counts as up. An end without a start does nothing.
void End(const std::function<void()>& close_all);
bool IsUp();

// ENG_ERR_NOT_STARTED while the engine is down. Counted for each thread.
[[nodiscard]] ENGSTATUS ThreadStart();
// ENG_ERR_THREAD without a start on this thread.
[[nodiscard]] ENGSTATUS ThreadEnd();

}  // namespace qcore::startup

#endif
