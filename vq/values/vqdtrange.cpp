// Ranges of moments.
#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqdts.h"

namespace {

constexpr TIMEDATE kWild{ENG_TIME_WILD, ENG_TIME_WILD};
constexpr std::uint16_t kTextSize = 256;

}  // namespace

VQDatetimeRange::VQDatetimeRange() : Pair{kWild, kWild}, HasBegin(0), HasEnd(0) {}

VQDatetimeRange::VQDatetimeRange(const VQDatetime& datetime) : VQDatetimeRange() { TakeBoth(datetime); }

VQDatetimeRange::VQDatetimeRange(const VQDatetimesElement& element) : VQDatetimeRange(element.GetDatetimeRange()) {}

VQDatetimeRange::VQDatetimeRange(const TIMEDATE_PAIR& pair) : Pair(pair), HasBegin(1), HasEnd(1) {}

VQDatetimeRange::VQDatetimeRange(const TIMEDATE& timedate) : Pair{timedate, kWild}, HasBegin(1), HasEnd(0) {}

VQDatetimeRange::VQDatetimeRange(const VQDatetimeRange& other) = default;

VQDatetimeRange& VQDatetimeRange::operator=(const VQDatetimeRange& other) = default;

VQDatetimeRange& VQDatetimeRange::operator=(const VQDatetime& datetime) {
  TakeBoth(datetime);
  return *this;
}

VQCLASSID VQDatetimeRange::GetClassID() const { return VQCLASSID_VQDATETIMERANGE; }

void VQDatetimeRange::TakeBoth(const VQDatetime& datetime) {
  const bool set = datetime.HasDatePart() || datetime.HasTimePart();
  Pair.Lower = Pair.Upper = set ? *datetime.GetTIMEDATE() : kWild;
  HasBegin = HasEnd = set;
}

VQSTATUS VQDatetimeRange::SetBegin(const VQDatetime& begin) {
  if (begin.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  Pair.Lower = *begin.GetTIMEDATE();
  HasBegin = 1;
  return VQ_OK;
}

VQSTATUS VQDatetimeRange::SetEnd(const VQDatetime& end) {
  if (end.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  Pair.Upper = *end.GetTIMEDATE();
  HasEnd = 1;
  return VQ_OK;
}

VQSTATUS VQDatetimeRange::GetText(VQString* out, const VQDatetimeFormat* format,
                                  const VQInternational* international) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (!HasBegin) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (out == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (international != nullptr && !international->IsInitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const INTLFORMAT* settings = international == nullptr ? nullptr : international->GetFormat();
  const TFMT* block = format == nullptr ? nullptr : format->GetBlock();
  ENGCHAR text[kTextSize];
  std::uint16_t length = 0;
  const ENGSTATUS result = HasEnd ? EngTimeRangeToText(settings, block, &Pair, text, sizeof text, &length)
                                  : EngTimeToText(settings, block, &Pair.Lower, text, sizeof text, &length);
  if (result != ENG_OK) return vq::Apply(vq::FromEngine(result));
  *out = VQString(text, length);
  return VQ_OK;
}

VQDatetimeRange::operator VQString() const {
  VQString text;
  vq::ThrowIfError(GetText(&text));
  return text;
}
