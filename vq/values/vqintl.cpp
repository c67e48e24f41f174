// International settings.
#include "vq/values/vqintl.h"

#include <cstring>

#include "engine/engine.h"
#include "vq/frame/session.h"
#include "vq/frame/state.h"

VQInternational::VQInternational() : Settings{}, Initialized(0) {}

VQInternational::VQInternational(const INTLFORMAT& settings) : Settings(settings), Initialized(1) {}

VQInternational::VQInternational(const VQInternational& other) = default;

VQInternational& VQInternational::operator=(const VQInternational& other) = default;

VQCLASSID VQInternational::GetClassID() const { return VQCLASSID_VQINTERNATIONAL; }

void VQInternational::CheckReadable() const {
  if (!Initialized) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
}

VQString VQInternational::ReadText(const char* field) const {
  CheckReadable();
  return VQString(reinterpret_cast<const VQCHAR*>(field));
}

VQSTATUS VQInternational::WriteText(char* field, unsigned long size, const VQString& text) {
  if (!Initialized) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (text.GetBufLength() >= size) return vq::Apply(VQERR_STRING_TOO_LONG);
  std::memset(field, 0, size);
  std::memcpy(field, text.GetBuf(), text.GetBufLength());
  return VQ_OK;
}

int VQInternational::ReadFlag(unsigned flag) const {
  CheckReadable();
  return (Settings.Flags & flag) != 0;
}

VQSTATUS VQInternational::WriteFlag(unsigned flag, int on) {
  if (!Initialized) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  Settings.Flags = static_cast<std::uint16_t>(on ? Settings.Flags | flag : Settings.Flags & ~flag);
  return VQ_OK;
}

VQString VQInternational::GetAMText() const { return ReadText(Settings.AMString); }
VQSTATUS VQInternational::SetAMText(const VQString& text) {
  return WriteText(Settings.AMString, sizeof Settings.AMString, text);
}

VQString VQInternational::GetPMText() const { return ReadText(Settings.PMString); }
VQSTATUS VQInternational::SetPMText(const VQString& text) {
  return WriteText(Settings.PMString, sizeof Settings.PMString, text);
}

VQString VQInternational::GetCurrencySymbol() const { return ReadText(Settings.CurrencyString); }
VQSTATUS VQInternational::SetCurrencySymbol(const VQString& text) {
  return WriteText(Settings.CurrencyString, sizeof Settings.CurrencyString, text);
}

VQString VQInternational::GetThousandsSeparator() const { return ReadText(Settings.ThousandString); }
VQSTATUS VQInternational::SetThousandsSeparator(const VQString& text) {
  return WriteText(Settings.ThousandString, sizeof Settings.ThousandString, text);
}

VQString VQInternational::GetDecimalSeparator() const { return ReadText(Settings.DecimalString); }
VQSTATUS VQInternational::SetDecimalSeparator(const VQString& text) {
  return WriteText(Settings.DecimalString, sizeof Settings.DecimalString, text);
}

VQString VQInternational::GetDateSeparator() const { return ReadText(Settings.DateString); }
VQSTATUS VQInternational::SetDateSeparator(const VQString& text) {
  return WriteText(Settings.DateString, sizeof Settings.DateString, text);
}

VQString VQInternational::GetTimeSeparator() const { return ReadText(Settings.TimeString); }
VQSTATUS VQInternational::SetTimeSeparator(const VQString& text) {
  return WriteText(Settings.TimeString, sizeof Settings.TimeString, text);
}

VQString VQInternational::GetYesterdayText() const { return ReadText(Settings.YesterdayString); }
VQSTATUS VQInternational::SetYesterdayText(const VQString& text) {
  return WriteText(Settings.YesterdayString, sizeof Settings.YesterdayString, text);
}

VQString VQInternational::GetTodayText() const { return ReadText(Settings.TodayString); }
VQSTATUS VQInternational::SetTodayText(const VQString& text) {
  return WriteText(Settings.TodayString, sizeof Settings.TodayString, text);
}

VQString VQInternational::GetTomorrowText() const { return ReadText(Settings.TomorrowString); }
VQSTATUS VQInternational::SetTomorrowText(const VQString& text) {
  return WriteText(Settings.TomorrowString, sizeof Settings.TomorrowString, text);
}

unsigned long VQInternational::GetCurrencyDigits() const {
  CheckReadable();
  return Settings.CurrencyDigits;
}

VQSTATUS VQInternational::SetCurrencyDigits(unsigned long digits) {
  if (!Initialized) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (digits > 15) return vq::Apply(VQERR_OUT_OF_RANGE);
  Settings.CurrencyDigits = static_cast<std::uint8_t>(digits);
  return VQ_OK;
}

VQDATEORDER VQInternational::GetDateOrder() const {
  CheckReadable();
  return static_cast<VQDATEORDER>(Settings.DateOrder);
}

VQSTATUS VQInternational::SetDateOrder(VQDATEORDER order) {
  if (!Initialized) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (order > VQDATEORDER_YMD) return vq::Apply(VQERR_OUT_OF_RANGE);
  Settings.DateOrder = order;
  return VQ_OK;
}

long VQInternational::GetTimeZone() const {
  CheckReadable();
  return Settings.TimeZone;
}

VQSTATUS VQInternational::SetTimeZone(long zone) {
  if (!Initialized) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  if (zone != static_cast<std::int32_t>(zone)) return vq::Apply(VQERR_OUT_OF_RANGE);
  Settings.TimeZone = static_cast<std::int32_t>(zone);
  return VQ_OK;
}

int VQInternational::GetCurrencySuffix() const { return ReadFlag(ENG_INTL_CURRENCY_SUFFIX); }
VQSTATUS VQInternational::SetCurrencySuffix(int flag) { return WriteFlag(ENG_INTL_CURRENCY_SUFFIX, flag); }

int VQInternational::GetCurrencySpace() const { return ReadFlag(ENG_INTL_CURRENCY_SPACE); }
VQSTATUS VQInternational::SetCurrencySpace(int flag) { return WriteFlag(ENG_INTL_CURRENCY_SPACE, flag); }

int VQInternational::GetNumberLeadingZero() const { return ReadFlag(ENG_INTL_NUMBER_LEADING_ZERO); }
VQSTATUS VQInternational::SetNumberLeadingZero(int flag) { return WriteFlag(ENG_INTL_NUMBER_LEADING_ZERO, flag); }

int VQInternational::Get24HourClock() const { return ReadFlag(ENG_INTL_CLOCK_24_HOUR); }
VQSTATUS VQInternational::Set24HourClock(int flag) { return WriteFlag(ENG_INTL_CLOCK_24_HOUR, flag); }

int VQInternational::GetDaylightSavings() const { return ReadFlag(ENG_INTL_DAYLIGHT_SAVINGS); }
VQSTATUS VQInternational::SetDaylightSavings(int flag) { return WriteFlag(ENG_INTL_DAYLIGHT_SAVINGS, flag); }

int VQInternational::GetMetric() const { return ReadFlag(ENG_INTL_METRIC); }
VQSTATUS VQInternational::SetMetric(int flag) { return WriteFlag(ENG_INTL_METRIC, flag); }

VQInternational VQQuillonSession::GetInternational() const {
  vq::ThrowIfError(CheckInitialized());
  INTLFORMAT settings{};
  vq::ThrowIfError(vq::FromEngine(EngIntlGet(&settings)));
  return VQInternational(settings);
}
