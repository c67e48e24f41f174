// Reading a moment: its parts and its text, and formats.
#include "engine/engine.h"
#include "vq/frame/state.h"
#include "vq/values/vqdtime.h"

namespace {

constexpr std::uint16_t kTextSize = 256;

}  // namespace

VQDatetimeFormat::VQDatetimeFormat() : Block{0, 0, 0, ENG_STRUCTURE_DATE_TIME} {}

VQDatetimeFormat::VQDatetimeFormat(const TFMT& block) : Block(block) {}
VQDatetimeFormat::VQDatetimeFormat(const VQDatetimeFormat& other) = default;

VQDatetimeFormat& VQDatetimeFormat::operator=(const VQDatetimeFormat& other) = default;

VQCLASSID VQDatetimeFormat::GetClassID() const { return VQCLASSID_VQDATETIMEFORMAT; }

VQSTATUS VQDatetimeFormat::SetDateFormat(VQDATEFORMAT format) {
  Block.Date = format;
  return VQ_OK;
}

VQSTATUS VQDatetimeFormat::SetTimeFormat(VQTIMEFORMAT format) {
  Block.Time = format;
  return VQ_OK;
}

VQSTATUS VQDatetimeFormat::SetTimeZoneDisplay(VQTIMEZONEDISPLAY display) {
  Block.Zone = display;
  return VQ_OK;
}

VQSTATUS VQDatetimeFormat::SetDatetimeDisplay(VQDATETIMEDISPLAY display) {
  Block.Structure = display;
  return VQ_OK;
}

const ENGTIME& VQDatetime::DateParts() const {
  vq::ThrowIfError(CheckHalf(HasDate));
  return Parts;
}

const ENGTIME& VQDatetime::TimeParts() const {
  vq::ThrowIfError(CheckHalf(HasTime));
  return Parts;
}

VQSTATUS VQDatetime::GetDate(unsigned long* month, unsigned long* day, unsigned long* year) const {
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  if (month != nullptr) *month = GetMonth();
  if (day != nullptr) *day = GetDay();
  if (year != nullptr) *year = GetYear();
  return VQ_OK;
}

VQSTATUS VQDatetime::GetTime(unsigned long* hour, unsigned long* minute, unsigned long* second,
                             unsigned long* hundredth) const {
  if (const VQSTATUS status = CheckHalf(HasTime)) return vq::Apply(status);
  if (hour != nullptr) *hour = GetHour();
  if (minute != nullptr) *minute = GetMinute();
  if (second != nullptr) *second = GetSecond();
  if (hundredth != nullptr) *hundredth = GetHundredth();
  return VQ_OK;
}

unsigned long VQDatetime::GetDay() const { return static_cast<unsigned long>(DateParts().Day); }

unsigned long VQDatetime::GetDayOfWeek() const { return static_cast<unsigned long>(DateParts().Weekday); }

unsigned long VQDatetime::GetDayOfYear() const {
  const ENGTIME& parts = DateParts();
  VQDatetime first;
  vq::ThrowIfError(first.ChangeDate(1, 1, GetYear()));
  return EngTimeJulianDay(&parts) - EngTimeJulianDay(&first.Parts) + 1;
}

unsigned long VQDatetime::GetMonth() const { return static_cast<unsigned long>(DateParts().Month); }

unsigned long VQDatetime::GetYear() const { return static_cast<unsigned long>(DateParts().Year); }

VQTIMEZONE VQDatetime::GetTimeZone() const { return static_cast<VQTIMEZONE>(DateParts().Zone); }

int VQDatetime::IsDSTInEffect() const { return DateParts().Dst != 0; }

// The calendar was reformed with 1753.
int VQDatetime::IsLeapYear() const {
  const std::int32_t year = DateParts().Year;
  if (year % 4 != 0) return 0;
  if (year < 1753 || year % 400 == 0) return 1;
  return year % 100 != 0;
}

unsigned long VQDatetime::GetHour() const { return static_cast<unsigned long>(TimeParts().Hour); }

unsigned long VQDatetime::GetMinute() const { return static_cast<unsigned long>(TimeParts().Minute); }

unsigned long VQDatetime::GetSecond() const { return static_cast<unsigned long>(TimeParts().Second); }

unsigned long VQDatetime::GetHundredth() const { return static_cast<unsigned long>(TimeParts().Hundredth); }

const ENGTIME* VQDatetime::GetTIME() const {
  if (IsUninitialized()) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  return &Parts;
}

const TIMEDATE* VQDatetime::GetTIMEDATE() const { return &GetTIME()->GM; }

// A time that once had a date is put back on no date, so that the day's daylight saving does not show.
VQSTATUS VQDatetime::PrintableMoment(TIMEDATE* moment) const {
  *moment = Parts.GM;
  if (HasDate) return VQ_OK;
  ENGTIME parts = Parts;
  parts.Year = parts.Month = parts.Day = 0;
  if (EngTimeFromParts(&parts) != 0) return VQERR_CANT_CONVERT_DATETIME;
  EngTimeCompose(ENG_TIME_WILD, EngTimeTimeWord(&parts.GM), moment);
  return VQ_OK;
}

VQSTATUS VQDatetime::GetText(VQString* out) const { return GetText(out, nullptr, nullptr); }

VQSTATUS VQDatetime::GetText(VQString* out, const VQDatetimeFormat* format,
                             const VQInternational* international) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (out == nullptr) return vq::Apply(VQERR_INVALID_PARAMETER);
  if (!HasDate && !HasTime) return vq::Apply(CheckHalf(0));
  if (international != nullptr && !international->IsInitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  TIMEDATE moment;
  if (const VQSTATUS status = PrintableMoment(&moment)) return vq::Apply(status);
  ENGCHAR text[kTextSize];
  std::uint16_t length = 0;
  const ENGSTATUS result =
      EngTimeToText(international == nullptr ? nullptr : international->GetFormat(),
                    format == nullptr ? nullptr : format->GetBlock(), &moment, text, sizeof text, &length);
  if (result != ENG_OK) return vq::Apply(vq::FromEngine(result));
  *out = VQString(text, length);
  return VQ_OK;
}

VQDatetime::operator VQString() const {
  VQString text;
  vq::ThrowIfError(GetText(&text));
  return text;
}
