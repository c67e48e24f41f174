// Numbers to and from text.
#ifndef QUILLON_ENGINE_NUMBER_H
#define QUILLON_ENGINE_NUMBER_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ENG_NUMBER_GENERAL 0
#define ENG_NUMBER_FIXED 1
#define ENG_NUMBER_SCIENTIFIC 2
#define ENG_NUMBER_CURRENCY 3

// Null settings or format mean the engine's own, and general format with 8 digits.
// Parses at *text, at most `length` bytes; on success the cursor stands behind what was taken.
// ENG_ERR_NUMBER_PARSE leaves the cursor and *result alone.
ENG_API ENGSTATUS EngNumberParse(const INTLFORMAT* settings, const NFMT* format, const ENGCHAR** text, uint16_t length,
                                 double* result);
// Terminated where `size` leaves room; ENG_ERR_BUFFER_SIZE writes nothing. Digits 255, general also 0: the usual.
ENG_API ENGSTATUS EngNumberToText(const INTLFORMAT* settings, const NFMT* format, const double* value, ENGCHAR* buffer,
                                  uint16_t size, uint16_t* length);

#ifdef __cplusplus
}
#endif

#endif
