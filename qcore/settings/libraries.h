// Converter libraries, loaded at run time, and the callbacks that they read back.
#ifndef QUILLON_QCORE_SETTINGS_LIBRARIES_H
#define QUILLON_QCORE_SETTINGS_LIBRARIES_H

#include <cstdint>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::libraries {

inline constexpr std::uint32_t kCallbackSlots = 16;

[[nodiscard]] ENGSTATUS Open(const char* name, ENGHANDLE* handle, void** entry);
[[nodiscard]] ENGSTATUS Close(ENGHANDLE handle);
// Closes what is open and clears the callbacks.
void CloseAll();

[[nodiscard]] ENGSTATUS SetCallback(std::uint32_t slot, void* callback);
// Null for a slot that is empty or does not exist.
void* Callback(std::uint32_t slot);

}  // namespace qcore::libraries

#endif
