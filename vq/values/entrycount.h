// The number of an item's entries as a status operation gets it: a damaged value's is returned, not thrown.
#ifndef QUILLON_VQ_VALUES_ENTRYCOUNT_H
#define QUILLON_VQ_VALUES_ENTRYCOUNT_H

#include "vq/store/vqitem.h"

namespace vq {

// 0 for no body.
[[nodiscard]] inline VQSTATUS CountEntries(VQItemBody* body, unsigned long* count) {
  *count = 0;
  if (body == nullptr) return VQ_OK;
  try {
    *count = body->GetEntryCount();
    return VQ_OK;
  } catch (VQSTATUS status) {
    return status;
  }
}

}  // namespace vq

#endif
