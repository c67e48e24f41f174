// One moment: making it, changing it, comparing it.
#include "vq/values/vqdtime.h"

#include <limits>

#include "engine/engine.h"
#include "vq/frame/session.h"
#include "vq/frame/state.h"

namespace {

constexpr std::uint32_t kNoon = 4320000;  // hundredths of a second
constexpr std::uint32_t kMaximumDate = 0x00FFFFFF;
constexpr std::uint16_t kParseLimit = 80;

bool FitsInt(long value) { return value == static_cast<std::int32_t>(value); }

bool SameMoment(const TIMEDATE& a, const TIMEDATE& b) { return a.TimeWord == b.TimeWord && a.DateWord == b.DateWord; }

bool SetPart(std::int32_t* part, unsigned long value) {
  *part = static_cast<std::int32_t>(value);
  return value <= static_cast<unsigned long>(std::numeric_limits<std::int32_t>::max());
}

// Parts without a date: the engine keeps them out of the calendar and of daylight saving.
void ClearDate(ENGTIME* parts) {
  parts->Year = parts->Month = parts->Day = parts->Weekday = 0;
  EngTimeLocalZone(&parts->Zone, &parts->Dst);
}

// The moment of parts without a time: a day, the same one in every zone. False for a date that there is not.
bool MakeDay(ENGTIME* parts) {
  const std::uint32_t day = EngTimeJulianDay(parts);
  if (day == 0) return false;
  EngTimeCompose(day, ENG_TIME_WILD, &parts->GM);
  return true;
}

// The moment of the parts, and the parts as they are then: a time that was skipped moves on.
VQSTATUS MakeMoment(ENGTIME* parts, std::uint16_t has_time) {
  if (has_time ? EngTimeFromParts(parts) != 0 : !MakeDay(parts)) return VQERR_INVALID_PARAMETER;
  return EngTimeToPartsInZone(parts) == 0 ? VQ_OK : VQERR_CANT_CONVERT_DATETIME;
}

}  // namespace

VQDatetime::VQDatetime() : Parts{}, HasDate(0), HasTime(0), Special(kOrdinary) {}

VQDatetime::VQDatetime(VQDATETIMESPECIAL special) : VQDatetime() { vq::ThrowIfError(FromSpecial(special)); }

VQDatetime::VQDatetime(const VQDatetime& other) = default;

VQDatetime::VQDatetime(const TIMEDATE& timedate) : VQDatetime() { vq::ThrowIfError(FromTimedate(timedate)); }

VQDatetime::VQDatetime(const VQString& text, unsigned long* status) : VQDatetime() {
  const VQSTATUS result = FromText(text);
  if (status != nullptr && (result == VQ_OK || VQGetThrowAllErrors() == 0)) {
    *status = result;
  } else {
    vq::ThrowIfError(result);
  }
}

VQDatetime& VQDatetime::operator=(const VQDatetime& other) = default;

VQDatetime& VQDatetime::operator=(VQDATETIMESPECIAL special) {
  vq::ThrowIfError(FromSpecial(special));
  return *this;
}

VQDatetime& VQDatetime::operator=(const TIMEDATE& timedate) {
  vq::ThrowIfError(FromTimedate(timedate));
  return *this;
}

VQDatetime& VQDatetime::operator=(const VQString& text) {
  vq::ThrowIfError(FromText(text));
  return *this;
}

VQCLASSID VQDatetime::GetClassID() const { return VQCLASSID_VQDATETIME; }

// Which halves GM has.
void VQDatetime::TakeHalves() {
  HasDate = EngTimeDateWord(&Parts.GM) != ENG_TIME_WILD;
  HasTime = EngTimeTimeWord(&Parts.GM) != ENG_TIME_WILD;
  Special = HasDate && HasTime ? kOrdinary : static_cast<std::uint16_t>(VQDATETIMESPECIAL_WILDCARD);
}

VQSTATUS VQDatetime::FromSpecial(VQDATETIMESPECIAL special) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (special > VQDATETIMESPECIAL_WILDCARD) return VQERR_INVALID_PARAMETER;
  VQDatetime work;
  work.Special = static_cast<std::uint16_t>(special);
  EngTimeConstant(work.Special, &work.Parts.GM);
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::FromTimedate(const TIMEDATE& timedate) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  VQDatetime work;
  work.Parts.GM = timedate;
  const std::uint32_t date = EngTimeDateWord(&timedate);
  const std::uint32_t time = EngTimeTimeWord(&timedate);
  if (time == 0 && (date == 0 || date == kMaximumDate)) {
    work.Special = date == 0 ? VQDATETIMESPECIAL_MINIMUM : VQDATETIMESPECIAL_MAXIMUM;
    *this = work;
    return VQ_OK;
  }
  if (date == ENG_TIME_WILD && time == ENG_TIME_WILD) work.Parts.GM.TimeWord = kNoon;
  EngTimeLocalZone(&work.Parts.Zone, &work.Parts.Dst);
  if (EngTimeToPartsInZone(&work.Parts) != 0) return VQERR_INVALID_PARAMETER;
  work.Parts.GM = timedate;
  work.TakeHalves();
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::FromText(const VQString& text) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (text.IsNull()) return VQERR_INVALID_PARAMETER;
  VQDatetime work;
  const ENGCHAR* cursor = text.GetBuf();
  const auto length = static_cast<std::uint16_t>(text.GetBufLength() < kParseLimit ? text.GetBufLength() : kParseLimit);
  const ENGSTATUS parsed = EngTimeParse(nullptr, nullptr, &cursor, length, &work.Parts.GM);
  if (parsed != ENG_OK) return vq::FromEngine(parsed);
  if (EngTimeToPartsLocal(&work.Parts) != 0) return VQERR_CANT_CONVERT_DATETIME;
  work.TakeHalves();
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::SetDatetime(const TIMEDATE* timedate) {
  VQ_ASSERT(timedate, "VQDTIME");
  return vq::Apply(FromTimedate(*timedate));
}

VQSTATUS VQDatetime::CheckHalf(std::uint16_t has) const {
  if (has) return VQ_OK;
  return Special == kOrdinary ? VQERR_OBJECT_NOT_INITIALIZED : VQERR_SPECIAL_DATETIME;
}

VQSTATUS VQDatetime::ChangeDate(unsigned long month, unsigned long day, unsigned long year) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  VQDatetime work(*this);
  if (!SetPart(&work.Parts.Month, month) || !SetPart(&work.Parts.Day, day) || !SetPart(&work.Parts.Year, year)) {
    return VQERR_INVALID_PARAMETER;
  }
  std::int32_t zone = 0;
  std::int32_t dst = 0;
  EngTimeLocalZone(&zone, &dst);
  if (!HasDate) work.Parts.Zone = zone;
  if (work.Parts.Zone == zone) work.Parts.Dst = dst;
  // All zero would be parts without a date.
  if (month == 0) return VQERR_INVALID_PARAMETER;
  if (const VQSTATUS status = MakeMoment(&work.Parts, HasTime)) return status;
  work.TakeHalves();
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::ChangeTime(unsigned long hour, unsigned long minute, unsigned long second,
                                unsigned long hundredth) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  VQDatetime work(*this);
  ENGTIME& parts = work.Parts;
  if (!SetPart(&parts.Hour, hour) || !SetPart(&parts.Minute, minute) || !SetPart(&parts.Second, second) ||
      !SetPart(&parts.Hundredth, hundredth)) {
    return VQERR_INVALID_PARAMETER;
  }
  if (!HasDate) ClearDate(&parts);
  if (EngTimeFromParts(&parts) != 0) return VQERR_INVALID_PARAMETER;
  if (EngTimeToPartsInZone(&parts) != 0) return VQERR_CANT_CONVERT_DATETIME;
  if (!HasDate) parts.GM.DateWord = ENG_TIME_WILD;
  work.TakeHalves();
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::SetDate(unsigned long month, unsigned long day, unsigned long year) {
  return vq::Apply(ChangeDate(month, day, year));
}

VQSTATUS VQDatetime::SetTime(unsigned long hour, unsigned long minute, unsigned long second, unsigned long hundredth) {
  return vq::Apply(ChangeTime(hour, minute, second, hundredth));
}

VQSTATUS VQDatetime::SetDay(unsigned long day) {
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  return SetDate(GetMonth(), day, GetYear());
}

VQSTATUS VQDatetime::SetMonth(unsigned long month) {
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  return SetDate(month, GetDay(), GetYear());
}

VQSTATUS VQDatetime::SetYear(unsigned long year) {
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  return SetDate(GetMonth(), GetDay(), year);
}

VQSTATUS VQDatetime::SetHour(unsigned long hour) {
  if (const VQSTATUS status = CheckHalf(HasTime)) return vq::Apply(status);
  return SetTime(hour, GetMinute(), GetSecond(), GetHundredth());
}

VQSTATUS VQDatetime::SetMinute(unsigned long minute) {
  if (const VQSTATUS status = CheckHalf(HasTime)) return vq::Apply(status);
  return SetTime(GetHour(), minute, GetSecond(), GetHundredth());
}

VQSTATUS VQDatetime::SetSecond(unsigned long second) {
  if (const VQSTATUS status = CheckHalf(HasTime)) return vq::Apply(status);
  return SetTime(GetHour(), GetMinute(), second, GetHundredth());
}

VQSTATUS VQDatetime::SetHundredth(unsigned long hundredth) {
  if (const VQSTATUS status = CheckHalf(HasTime)) return vq::Apply(status);
  return SetTime(GetHour(), GetMinute(), GetSecond(), hundredth);
}

VQSTATUS VQDatetime::SetDateToWildCard() {
  Parts.GM.DateWord = ENG_TIME_WILD;
  if (!HasTime) Parts.GM.TimeWord = ENG_TIME_WILD;
  HasDate = 0;
  Special = VQDATETIMESPECIAL_WILDCARD;
  return VQ_OK;
}

VQSTATUS VQDatetime::SetTimeToWildCard() {
  // The day shown stays, also where it is another one in Greenwich.
  if (!HasDate || !MakeDay(&Parts)) Parts.GM = {ENG_TIME_WILD, ENG_TIME_WILD};
  HasTime = 0;
  Special = VQDATETIMESPECIAL_WILDCARD;
  return VQ_OK;
}

VQSTATUS VQDatetime::MoveDate(long months, long days, long years) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (const VQSTATUS status = CheckHalf(HasDate)) return status;
  if (!FitsInt(months) || !FitsInt(days) || !FitsInt(years)) return VQERR_CANT_ADJUST_DATETIME;
  // The engine would move a moment by the local zone's calendar; the day moves by that of the value's own.
  VQDatetime work(*this);
  ENGTIME day = Parts;
  if (!MakeDay(&day) || EngTimeAdjust(&day.GM, 0, 0, 0, static_cast<std::int32_t>(days),
                                      static_cast<std::int32_t>(months), static_cast<std::int32_t>(years)) != 0) {
    return VQERR_CANT_ADJUST_DATETIME;
  }
  if (EngTimeToPartsInZone(&day) != 0) return VQERR_CANT_CONVERT_DATETIME;
  work.Parts.Year = day.Year;
  work.Parts.Month = day.Month;
  work.Parts.Day = day.Day;
  if (MakeMoment(&work.Parts, HasTime) != VQ_OK) return VQERR_CANT_CONVERT_DATETIME;
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::MoveTime(long hours, long minutes, long seconds, long hundredths) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (const VQSTATUS status = CheckHalf(HasTime)) return status;
  if (!FitsInt(hours) || !FitsInt(minutes) || !FitsInt(seconds) || !FitsInt(hundredths)) {
    return VQERR_CANT_ADJUST_DATETIME;
  }
  VQDatetime work(*this);
  ENGTIME& parts = work.Parts;
  if (!HasDate) {
    // The engine wraps a time alone; on a day to stand on it could meet a change of daylight saving.
    ClearDate(&parts);
    if (EngTimeFromParts(&parts) != 0) return VQERR_CANT_ADJUST_DATETIME;
  }
  if (hundredths != 0 && EngTimeAdjustTicks(&parts.GM, static_cast<std::int32_t>(hundredths)) != 0) {
    return VQERR_CANT_ADJUST_DATETIME;
  }
  if (EngTimeAdjust(&parts.GM, static_cast<std::int32_t>(seconds), static_cast<std::int32_t>(minutes),
                    static_cast<std::int32_t>(hours), 0, 0, 0) != 0 ||
      EngTimeToPartsInZone(&parts) != 0) {
    return VQERR_CANT_ADJUST_DATETIME;
  }
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::AdjustDate(long months, long days, long years) { return vq::Apply(MoveDate(months, days, years)); }

VQSTATUS VQDatetime::AdjustTime(long hours, long minutes, long seconds, long hundredths) {
  return vq::Apply(MoveTime(hours, minutes, seconds, hundredths));
}

VQSTATUS VQDatetime::AdjustTimeZone(VQTIMEZONE zone) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  VQDatetime work(*this);
  if (zone != work.Parts.Zone) work.Parts.Dst = 0;
  work.Parts.Zone = zone;
  if (EngTimeToPartsInZone(&work.Parts) != 0 || EngTimeFromParts(&work.Parts) != 0) {
    return vq::Apply(VQERR_CANT_CONVERT_DATETIME);
  }
  work.Parts.GM = Parts.GM;
  *this = work;
  return VQ_OK;
}

VQSTATUS VQDatetime::SetTimeZone(VQTIMEZONE zone) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (const VQSTATUS status = CheckHalf(HasDate)) return vq::Apply(status);
  if (zone == Parts.Zone) return VQ_OK;
  VQDatetime work(*this);
  work.Parts.Zone = zone;
  work.Parts.Dst = 0;
  if (MakeMoment(&work.Parts, HasTime) != VQ_OK) return vq::Apply(VQERR_INVALID_PARAMETER);
  *this = work;
  return VQ_OK;
}

int VQDatetime::Compare(const VQDatetime& other) const {
  vq::ThrowIfError(vq::CheckInitialized());
  if ((Special == kOrdinary && !HasDate) || (other.Special == kOrdinary && !other.HasDate)) {
    vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  }
  if (SameMoment(Parts.GM, other.Parts.GM)) return 0;
  if (Special == VQDATETIMESPECIAL_MINIMUM || other.Special == VQDATETIMESPECIAL_MAXIMUM) return -1;
  if (Special == VQDATETIMESPECIAL_MAXIMUM || other.Special == VQDATETIMESPECIAL_MINIMUM) return 1;
  const auto wild = [](const VQDatetime& value) { return !value.HasDate && !value.HasTime; };
  if (wild(*this) || wild(other)) return 0;
  return EngTimeCompare(&Parts.GM, &other.Parts.GM);
}

long VQDatetime::operator-(const VQDatetime& other) const {
  vq::ThrowIfError(vq::CheckInitialized());
  if ((Special == kOrdinary && !HasDate) || (other.Special == kOrdinary && !other.HasDate)) {
    vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  }
  return EngTimeDifference(&Parts.GM, &other.Parts.GM);
}

VQDatetime VQQuillonSession::GetCurrentDatetime() const {
  vq::ThrowIfError(CheckInitialized());
  TIMEDATE now{};
  EngTimeNow(&now);
  return VQDatetime(now);
}
