// No exception leaves an exported function.
#ifndef QUILLON_QCORE_ABI_GUARD_H
#define QUILLON_QCORE_ABI_GUARD_H

#include <new>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore::abi {

// Runs `body`, which gives an ENGSTATUS; an exception becomes a status.
template <typename Body>
ENGSTATUS Guard(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return ENG_ERR_MEMORY;
  } catch (...) {
    return ENG_ERR_INTERNAL;
  }
}

// For functions that have no status: an exception becomes `failed`.
template <typename Result, typename Body>
Result GuardValue(Result failed, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return failed;
  }
}

}  // namespace qcore::abi

#endif
