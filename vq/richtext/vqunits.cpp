#include "vq/richtext/vqunits.h"

#include <cmath>

#include "engine/process.h"

namespace vq {

namespace {

constexpr double kTwipsPerInch = 1440.0;
constexpr double kCentimetersPerInch = 2.54;
constexpr double kBeyondEveryLimit = 1.0e6;

}  // namespace

VQUNITS ResolveUnits(VQUNITS units) {
  if (units != VQUNITS_DEFAULT) return units;
  INTLFORMAT settings{};
  if (EngIntlGet(&settings) != 0) return VQUNITS_INCHES;
  return settings.Flags & ENG_INTL_METRIC ? VQUNITS_CENTIMETERS : VQUNITS_INCHES;
}

double ExactTwips(double value, VQUNITS units) {
  VQUNITS unit = ResolveUnits(units);
  if (unit == VQUNITS_TWIPS) return value;
  double twips = value * kTwipsPerInch;
  return unit == VQUNITS_CENTIMETERS ? twips / kCentimetersPerInch : twips;
}

long ToTwips(double value, VQUNITS units) {
  double twips = ExactTwips(value, units);
  if (!(std::fabs(twips) < kBeyondEveryLimit)) twips = twips < 0 ? -kBeyondEveryLimit : kBeyondEveryLimit;
  return std::lround(twips);
}

double FromTwips(long twips, VQUNITS units) {
  VQUNITS unit = ResolveUnits(units);
  if (unit == VQUNITS_TWIPS) return static_cast<double>(twips);
  double inches = static_cast<double>(twips) / kTwipsPerInch;
  return unit == VQUNITS_CENTIMETERS ? inches * kCentimetersPerInch : inches;
}

}  // namespace vq
