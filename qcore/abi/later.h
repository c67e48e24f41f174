// Names of the operations that this release does not have.
#ifndef QUILLON_QCORE_ABI_LATER_H
#define QUILLON_QCORE_ABI_LATER_H

#include "engine/types.h"

namespace qcore {

// The operation that a status of the ENG_ERR_NOT_AVAILABLE family stands for; null for any other status.
const char* LaterOperationName(ENGSTATUS status);

}  // namespace qcore

#endif
