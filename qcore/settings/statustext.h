// English texts of the engine's statuses.
#ifndef QUILLON_QCORE_SETTINGS_STATUSTEXT_H
#define QUILLON_QCORE_SETTINGS_STATUSTEXT_H

#include "engine/types.h"

namespace qcore {

// For a status without its flag bits; null when there is no text.
const char* StatusText(ENGSTATUS status);

}  // namespace qcore

#endif
