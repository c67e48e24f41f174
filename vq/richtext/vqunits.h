// Units of measure in rich text. Records keep twips; 1,440 twips are an inch.
#ifndef QUILLON_VQ_RICHTEXT_VQUNITS_H
#define QUILLON_VQ_RICHTEXT_VQUNITS_H

#include "vq/frame/export.h"

enum VQUNITS : int {
  VQUNITS_INCHES = 0,
  VQUNITS_CENTIMETERS = 1,
  VQUNITS_TWIPS = 2,
  VQUNITS_DEFAULT = 3,  // as an argument: centimetres where the settings are metric, else inches
};

inline constexpr long VQ_MAX_MARGIN_TWIPS = 64800;

namespace vq {

// Inches or centimetres in place of VQUNITS_DEFAULT, by the settings file.
VQ_API VQUNITS ResolveUnits(VQUNITS units);
// Rounded to the nearest twip. Values that no measure of a record can hold give a number beyond every limit.
VQ_API long ToTwips(double value, VQUNITS units);
// Without rounding.
VQ_API double ExactTwips(double value, VQUNITS units);
VQ_API double FromTwips(long twips, VQUNITS units);

}  // namespace vq

#endif
