// Moments and ranges of moments.
//
// The engine keeps moments in Greenwich time; a VQDatetime keeps the local form beside it, in its own zone, and knows
// which halves (date, time) are meant. A date without a time is the same day in every zone. Everything here needs a
// session. A half that is missing gives VQERR_SPECIAL_DATETIME for a special value and VQERR_OBJECT_NOT_INITIALIZED for
// a plain one, thrown by getters. A failure leaves the value as it was.
#ifndef QUILLON_VQ_VALUES_VQDTIME_H
#define QUILLON_VQ_VALUES_VQDTIME_H

#include "engine/types.h"
#include "vq/values/vqintl.h"
#include "vq/values/vqstring.h"

class VQDatetimesElement;

enum VQDATETIMESPECIAL : unsigned int {
  VQDATETIMESPECIAL_MINIMUM = 0,
  VQDATETIMESPECIAL_MAXIMUM = 1,
  VQDATETIMESPECIAL_WILDCARD = 2,
};

// Hours west of Greenwich in the low two decimal digits, minutes in the next two; negative to the east.
enum VQTIMEZONE : int {
  VQTIMEZONE_GMT = 0,
  VQTIMEZONE_ATLANTIC = 4,
  VQTIMEZONE_EASTERN = 5,
  VQTIMEZONE_CENTRAL = 6,
  VQTIMEZONE_MOUNTAIN = 7,
  VQTIMEZONE_PACIFIC = 8,
  VQTIMEZONE_ALASKA = 9,
  VQTIMEZONE_HAWAII = 10,
  VQTIMEZONE_NEWFOUNDLAND = 3003,
  VQTIMEZONE_CENTRAL_EUROPE = -1,
  VQTIMEZONE_EASTERN_EUROPE = -2,
  VQTIMEZONE_MOSCOW = -3,
  VQTIMEZONE_INDIA = -3005,
  VQTIMEZONE_CHINA = -8,
  VQTIMEZONE_JAPAN = -9,
  VQTIMEZONE_CENTRAL_AUSTRALIA = -3009,
  VQTIMEZONE_EASTERN_AUSTRALIA = -10,
  VQTIMEZONE_NEW_ZEALAND = -12,
};

enum VQDATEFORMAT : unsigned char {
  VQDATEFORMAT_FULL = 0,
  VQDATEFORMAT_CURRENT_YEAR = 1,
  VQDATEFORMAT_MONTH_DAY = 2,
  VQDATEFORMAT_YEAR_MONTH = 3,
};
enum VQTIMEFORMAT : unsigned char {
  VQTIMEFORMAT_FULL = 0,
  VQTIMEFORMAT_PARTIAL = 1,
  VQTIMEFORMAT_HOUR = 2,
};
enum VQTIMEZONEDISPLAY : unsigned char {
  VQTIMEZONEDISPLAY_NEVER = 0,
  VQTIMEZONEDISPLAY_SOMETIMES = 1,
  VQTIMEZONEDISPLAY_ALWAYS = 2,
};
enum VQDATETIMEDISPLAY : unsigned char {
  VQDATETIMEDISPLAY_DATE = 0,
  VQDATETIMEDISPLAY_TIME = 1,
  VQDATETIMEDISPLAY_DATE_TIME = 2,
  VQDATETIMEDISPLAY_RELATIVE = 3,
};

// How a moment becomes text: full date and time in local form by default. Setters give 0.
class VQ_API VQDatetimeFormat : public VQQuillonClass {
 public:
  VQDatetimeFormat();
  explicit VQDatetimeFormat(const TFMT& block);
  VQDatetimeFormat(const VQDatetimeFormat& other);
  VQDatetimeFormat& operator=(const VQDatetimeFormat& other);
  VQCLASSID GetClassID() const override;

  VQDATEFORMAT GetDateFormat() const { return static_cast<VQDATEFORMAT>(Block.Date); }
  VQSTATUS SetDateFormat(VQDATEFORMAT format);
  VQTIMEFORMAT GetTimeFormat() const { return static_cast<VQTIMEFORMAT>(Block.Time); }
  VQSTATUS SetTimeFormat(VQTIMEFORMAT format);
  VQTIMEZONEDISPLAY GetTimeZoneDisplay() const { return static_cast<VQTIMEZONEDISPLAY>(Block.Zone); }
  VQSTATUS SetTimeZoneDisplay(VQTIMEZONEDISPLAY display);
  VQDATETIMEDISPLAY GetDatetimeDisplay() const { return static_cast<VQDATETIMEDISPLAY>(Block.Structure); }
  VQSTATUS SetDatetimeDisplay(VQDATETIMEDISPLAY display);
  const TFMT* GetBlock() const { return &Block; }

 private:
  TFMT Block;
};

class VQ_API VQDatetime : public VQQuillonClass {
 public:
  VQDatetime();
  VQDatetime(VQDATETIMESPECIAL special);
  VQDatetime(const VQDatetime& other);
  VQDatetime(const TIMEDATE& timedate);
  // As assignment from text. The status goes to *status while the throw switch is off and the pointer is not null.
  explicit VQDatetime(const VQString& text, unsigned long* status = nullptr);
  VQDatetime& operator=(const VQDatetime& other);
  VQDatetime& operator=(VQDATETIMESPECIAL special);
  VQDatetime& operator=(const TIMEDATE& timedate);
  // A date, a time or both. VQERR_INVALID_PARAMETER for an empty text, the engine's status for one that is none.
  VQDatetime& operator=(const VQString& text);
  VQCLASSID GetClassID() const override;

  // Seconds.
  long operator-(const VQDatetime& other) const;
  operator VQString() const;

  // By the calendar of the value's own zone, held at the month's end; the time of day stays.
  VQSTATUS AdjustDate(long months, long days, long years);
  // A time without a date wraps at midnight.
  VQSTATUS AdjustTime(long hours, long minutes, long seconds, long hundredths);
  // The same moment in another zone's form.
  VQSTATUS AdjustTimeZone(VQTIMEZONE zone);
  // The same form in another zone, so another moment.
  VQSTATUS SetTimeZone(VQTIMEZONE zone);
  // A value wild in both halves equals everything but the minimum and the maximum. A plain value without a date throws.
  int Compare(const VQDatetime& other) const;

  // Null pointers are passed over.
  VQSTATUS GetDate(unsigned long* month, unsigned long* day, unsigned long* year) const;
  VQSTATUS GetTime(unsigned long* hour, unsigned long* minute, unsigned long* second, unsigned long* hundredth) const;
  unsigned long GetDay() const;
  unsigned long GetDayOfWeek() const;  // 1 Sunday to 7 Saturday
  unsigned long GetDayOfYear() const;
  unsigned long GetMonth() const;
  unsigned long GetYear() const;
  VQTIMEZONE GetTimeZone() const;
  int IsDSTInEffect() const;
  // Every fourth year before 1753.
  int IsLeapYear() const;
  unsigned long GetHour() const;
  unsigned long GetMinute() const;
  unsigned long GetSecond() const;
  unsigned long GetHundredth() const;

  VQSTATUS GetText(VQString* out) const;
  VQSTATUS GetText(VQString* out, const VQDatetimeFormat* format, const VQInternational* international) const;
  // The engine's forms, good while this value stays.
  const ENGTIME* GetTIME() const;
  const TIMEDATE* GetTIMEDATE() const;

  // VQERR_INVALID_PARAMETER for parts that make no moment.
  VQSTATUS SetDate(unsigned long month, unsigned long day, unsigned long year);
  VQSTATUS SetTime(unsigned long hour, unsigned long minute, unsigned long second, unsigned long hundredth);
  VQSTATUS SetDatetime(const TIMEDATE* timedate);
  VQSTATUS SetDay(unsigned long day);
  VQSTATUS SetMonth(unsigned long month);
  VQSTATUS SetYear(unsigned long year);
  VQSTATUS SetHour(unsigned long hour);
  VQSTATUS SetMinute(unsigned long minute);
  VQSTATUS SetSecond(unsigned long second);
  VQSTATUS SetHundredth(unsigned long hundredth);
  // The half that is left stays as it is shown.
  VQSTATUS SetDateToWildCard();
  VQSTATUS SetTimeToWildCard();

  int HasDatePart() const { return HasDate; }
  int HasTimePart() const { return HasTime; }
  // Neither half, and no special value.
  bool IsUninitialized() const { return Special == kOrdinary && !HasDate && !HasTime; }

 private:
  static constexpr std::uint16_t kOrdinary = 3;

  [[nodiscard]] VQSTATUS CheckHalf(std::uint16_t has) const;
  const ENGTIME& DateParts() const;
  const ENGTIME& TimeParts() const;
  [[nodiscard]] VQSTATUS FromTimedate(const TIMEDATE& timedate);
  [[nodiscard]] VQSTATUS FromSpecial(VQDATETIMESPECIAL special);
  [[nodiscard]] VQSTATUS FromText(const VQString& text);
  [[nodiscard]] VQSTATUS ChangeDate(unsigned long month, unsigned long day, unsigned long year);
  [[nodiscard]] VQSTATUS ChangeTime(unsigned long hour, unsigned long minute, unsigned long second,
                                    unsigned long hundredth);
  [[nodiscard]] VQSTATUS MoveTime(long hours, long minutes, long seconds, long hundredths);
  [[nodiscard]] VQSTATUS MoveDate(long months, long days, long years);
  [[nodiscard]] VQSTATUS PrintableMoment(TIMEDATE* moment) const;
  void TakeHalves();

  ENGTIME Parts;
  std::uint16_t HasDate;
  std::uint16_t HasTime;
  std::uint16_t Special;
};

// Two moments, of which the end or both may be missing.
class VQ_API VQDatetimeRange : public VQQuillonClass {
 public:
  VQDatetimeRange();
  // Both ends.
  VQDatetimeRange(const VQDatetime& datetime);
  VQDatetimeRange(const VQDatetimesElement& element);
  VQDatetimeRange(const TIMEDATE_PAIR& pair);
  // Begin only.
  VQDatetimeRange(const TIMEDATE& timedate);
  VQDatetimeRange(const VQDatetimeRange& other);
  VQDatetimeRange& operator=(const VQDatetimeRange& other);
  VQDatetimeRange& operator=(const VQDatetime& datetime);
  VQCLASSID GetClassID() const override;

  operator VQString() const;
  // A range without an end prints its begin alone.
  VQSTATUS GetText(VQString* out, const VQDatetimeFormat* format = nullptr,
                   const VQInternational* international = nullptr) const;
  const TIMEDATE_PAIR* GetTIMEDATEPAIR() const { return &Pair; }
  // VQERR_UNINITIALIZED_ARGUMENT for a moment that is not set.
  VQSTATUS SetBegin(const VQDatetime& begin);
  VQSTATUS SetEnd(const VQDatetime& end);
  int HasBeginPart() const { return HasBegin; }
  int HasEndPart() const { return HasEnd; }

 private:
  void TakeBoth(const VQDatetime& datetime);

  TIMEDATE_PAIR Pair;
  std::int32_t HasBegin;
  std::int32_t HasEnd;
};

#endif
