// Which body is built for which kind of element: one table, filled by vq/library.cpp.
#ifndef QUILLON_VQ_RICHTEXT_RTMAKERS_H
#define QUILLON_VQ_RICHTEXT_RTMAKERS_H

#include <span>

#include "vq/richtext/vqrtbase.h"

namespace vq {

using RTElementMaker = VQRTElementBody* (*)(VQRTTYPE type, RecordSource* source, std::uint32_t offset,
                                            std::uint32_t length);

// For the type and those below it. The first row that fits counts.
struct RTElementRow {
  VQRTTYPE Type;
  RTElementMaker Make;
};

extern const std::span<const RTElementRow> kRTElementMakers;

// A plain VQRTElementBody for a type without a row.
VQRTElementBody* MakeRTElement(VQRTTYPE type, RecordSource* source, std::uint32_t offset, std::uint32_t length);

}  // namespace vq

#endif
