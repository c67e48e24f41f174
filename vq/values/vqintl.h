// Separators, clock, currency and the like that number and time formats take.
#ifndef QUILLON_VQ_VALUES_VQINTL_H
#define QUILLON_VQ_VALUES_VQINTL_H

#include "engine/types.h"
#include "vq/values/vqstring.h"

enum VQDATEORDER : unsigned char {
  VQDATEORDER_MDY = 0,
  VQDATEORDER_DMY = 1,
  VQDATEORDER_YMD = 2,
};

// A plain value. VQQuillonSession::GetInternational gives the engine's settings; one built by default is not
// initialised: getters throw VQERR_OBJECT_NOT_INITIALIZED, setters give it, and formats refuse it with
// VQERR_UNINITIALIZED_ARGUMENT. Texts are at most 7 bytes, those of days 15, else VQERR_STRING_TOO_LONG; a setter that
// fails changes nothing. Changes apply to this object alone.
class VQ_API VQInternational : public VQQuillonClass {
 public:
  VQInternational();
  explicit VQInternational(const INTLFORMAT& settings);
  VQInternational(const VQInternational& other);
  VQInternational& operator=(const VQInternational& other);
  VQCLASSID GetClassID() const override;
  int IsInitialized() const { return Initialized; }
  // The engine's form; null while not initialised.
  const INTLFORMAT* GetFormat() const { return Initialized ? &Settings : nullptr; }

  VQString GetAMText() const;
  VQSTATUS SetAMText(const VQString& text);
  VQString GetPMText() const;
  VQSTATUS SetPMText(const VQString& text);
  VQString GetCurrencySymbol() const;
  VQSTATUS SetCurrencySymbol(const VQString& text);
  VQString GetThousandsSeparator() const;
  VQSTATUS SetThousandsSeparator(const VQString& text);
  VQString GetDecimalSeparator() const;
  VQSTATUS SetDecimalSeparator(const VQString& text);
  VQString GetDateSeparator() const;
  VQSTATUS SetDateSeparator(const VQString& text);
  VQString GetTimeSeparator() const;
  VQSTATUS SetTimeSeparator(const VQString& text);
  VQString GetYesterdayText() const;
  VQSTATUS SetYesterdayText(const VQString& text);
  VQString GetTodayText() const;
  VQSTATUS SetTodayText(const VQString& text);
  VQString GetTomorrowText() const;
  VQSTATUS SetTomorrowText(const VQString& text);

  // VQERR_OUT_OF_RANGE above 15.
  unsigned long GetCurrencyDigits() const;
  VQSTATUS SetCurrencyDigits(unsigned long digits);
  // VQERR_OUT_OF_RANGE for any other value.
  VQDATEORDER GetDateOrder() const;
  VQSTATUS SetDateOrder(VQDATEORDER order);
  // In the engine's numbering of zones.
  long GetTimeZone() const;
  VQSTATUS SetTimeZone(long zone);

  // 0 or 1.
  int GetCurrencySuffix() const;
  VQSTATUS SetCurrencySuffix(int flag);
  int GetCurrencySpace() const;
  VQSTATUS SetCurrencySpace(int flag);
  int GetNumberLeadingZero() const;
  VQSTATUS SetNumberLeadingZero(int flag);
  int Get24HourClock() const;
  VQSTATUS Set24HourClock(int flag);
  int GetDaylightSavings() const;
  VQSTATUS SetDaylightSavings(int flag);
  int GetMetric() const;
  VQSTATUS SetMetric(int flag);

 private:
  void CheckReadable() const;
  VQString ReadText(const char* field) const;
  VQSTATUS WriteText(char* field, unsigned long size, const VQString& text);
  int ReadFlag(unsigned flag) const;
  VQSTATUS WriteFlag(unsigned flag, int on);

  INTLFORMAT Settings;
  int Initialized;
};

#endif
