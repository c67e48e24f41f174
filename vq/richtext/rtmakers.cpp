#include "vq/richtext/rtmakers.h"

namespace vq {

VQRTElementBody* MakeRTElement(VQRTTYPE type, RecordSource* source, std::uint32_t offset, std::uint32_t length) {
  for (const RTElementRow& row : kRTElementMakers) {
    if (IsRTType(type, row.Type)) return row.Make(type, source, offset, length);
  }
  return new VQRTElementBody(type, source, offset, length);
}

}  // namespace vq
