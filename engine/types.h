// Basic types of the engine boundary. Plain C; every width is fixed.
//
// Text comes in two kinds. Store text (ENGCHAR) is UTF-8 in the store character set; platform text
// (char) is in the platform's character set and is used for paths and settings. Lengths are in bytes.
#ifndef QUILLON_ENGINE_TYPES_H
#define QUILLON_ENGINE_TYPES_H

#include <stdint.h>

#if defined(__GNUC__)
#define ENG_API __attribute__((visibility("default")))
#else
#define ENG_API
#endif

typedef uint16_t ENGSTATUS;     // 0 is success; ENG_ERROR_MASK takes the engine's flag bits off
typedef uint32_t ENGHANDLE;     // a kind, a generation and a slot; 0 is no handle
typedef unsigned char ENGCHAR;  // one byte of store text

#define ENG_ERROR_MASK 0x3FFF

// Hundredths of a second since midnight GMT, then a day number (Julian) in the low 24 bits.
// A word of all ones is a wild card: that half is absent.
typedef struct TIMEDATE {
  uint32_t TimeWord;
  uint32_t DateWord;
} TIMEDATE;

#define ENG_TIME_WILD 0xFFFFFFFFu
#define ENG_DATE_MAXIMUM 0x00FFFFFFu

typedef struct TIMEDATE_PAIR {
  TIMEDATE Lower;
  TIMEDATE Upper;
} TIMEDATE_PAIR;

// The broken-down form that the calendar operations work on: 48 bytes.
typedef struct ENGTIME {
  int32_t Year;
  int32_t Month;    // 1 to 12
  int32_t Day;      // 1 to 31
  int32_t Weekday;  // 1 Sunday to 7 Saturday
  int32_t Hour;
  int32_t Minute;
  int32_t Second;
  int32_t Hundredth;
  int32_t Dst;   // 1 while daylight saving is in effect
  int32_t Zone;  // see engine/time.h
  TIMEDATE GM;
} ENGTIME;

typedef struct UNIVERSALSLATEID {
  TIMEDATE File;
  TIMEDATE Slate;
} UNIVERSALSLATEID;

// A slate's universal identifier with its sequence data: 28 bytes.
typedef struct ORIGINATORID {
  TIMEDATE File;
  TIMEDATE Slate;
  uint32_t Sequence;
  TIMEDATE SequenceTime;
} ORIGINATORID;

// A place inside engine memory: lock Pool, add Block.
typedef struct BLOCKID {
  ENGHANDLE Pool;
  uint16_t Block;
} BLOCKID;

typedef struct REPLICAINFO {
  TIMEDATE ID;
  uint16_t Flags;
  uint16_t CutoffInterval;  // days
  TIMEDATE Cutoff;
} REPLICAINFO;

// Four bytes that say how a number becomes text.
typedef struct NFMT {
  uint8_t Digits;
  uint8_t Format;      // ENG_NUMBER_..., see engine/number.h
  uint8_t Attributes;  // 0x01 punctuated, 0x02 parentheses, 0x04 percentage
  uint8_t Unused;
} NFMT;

// Four bytes that say how a moment becomes text; the values are listed in engine/time.h.
typedef struct TFMT {
  uint8_t Date;
  uint8_t Time;
  uint8_t Zone;
  uint8_t Structure;
} TFMT;

// International settings that formats take. Texts are NUL-terminated store text.
typedef struct INTLFORMAT {
  uint16_t Flags;  // ENG_INTL_...
  uint8_t CurrencyDigits;
  uint8_t DateOrder;  // 0 month day year, 1 day month year, 2 year month day
  int32_t TimeZone;
  char AMString[8];
  char PMString[8];
  char CurrencyString[8];
  char ThousandString[8];
  char DecimalString[8];
  char DateString[8];
  char TimeString[8];
  char YesterdayString[16];
  char TodayString[16];
  char TomorrowString[16];
} INTLFORMAT;

#define ENG_INTL_CURRENCY_SUFFIX 0x0001
#define ENG_INTL_CURRENCY_SPACE 0x0002
#define ENG_INTL_NUMBER_LEADING_ZERO 0x0004
#define ENG_INTL_CLOCK_24_HOUR 0x0008
#define ENG_INTL_DAYLIGHT_SAVINGS 0x0010
#define ENG_INTL_METRIC 0x0020

#endif
