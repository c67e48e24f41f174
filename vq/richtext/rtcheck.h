// What must hold before a tree is written, so that the parser takes the records back.
#ifndef QUILLON_VQ_RICHTEXT_RTCHECK_H
#define QUILLON_VQ_RICHTEXT_RTCHECK_H

#include "vq/richtext/rtfwd.h"
#include "vq/richtext/rttype.h"

namespace vq {

// Whether a client may put an object of the type into a text: other types are parts of some structure, which without
// it nobody could read.
bool StandsAlone(VQRTTYPE type);

// VQERR_RT_INVALID for a record whose header claims bytes that are not there, and for a structure without its end;
// VQERR_RT_CORRUPT_TABLE for cells and table ends outside of tables; VQERR_RT_STACK_OVERFLOW for too deep a nesting.
[[nodiscard]] VQSTATUS CheckStream(const VQRTBaseContainerBody& top);

}  // namespace vq

#endif
