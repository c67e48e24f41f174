// Text in the store character set (UTF-8).
//
// An invalid byte counts as one character of one byte: it is never lost, and no operation steps over the end
// for it. `limit` arguments bound how many bytes may be looked at; a NUL byte ends the text earlier where an
// operation takes no exact length. EngTextCharset() is the last argument of the operations that carry one.
#ifndef QUILLON_ENGINE_TEXT_H
#define QUILLON_ENGINE_TEXT_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ENG_COMPARE_IGNORE_CASE 0x0001
#define ENG_COMPARE_IGNORE_ACCENTS 0x0002

#define ENG_TRANSLATE_PLATFORM_TO_STORE 0
#define ENG_TRANSLATE_STORE_TO_PLATFORM 1
#define ENG_TRANSLATE_UPPER 3
#define ENG_TRANSLATE_LOWER 4
#define ENG_TRANSLATE_STRIP_ACCENTS 5

ENG_API ENGHANDLE EngTextCharset(void);

// With flags 0 the order is that of the bytes; otherwise that of the folded texts, by character.
ENG_API int EngTextCompare(const ENGCHAR* text1, uint16_t length1, const ENGCHAR* text2, uint16_t length2,
                           uint32_t flags);
// Copies the character at *text to `output` (up to 4 bytes and a terminator) and moves *text behind it.
// ENG_ERR_TEXT_END at the end.
ENG_API ENGSTATUS EngTextCopyChar(const ENGCHAR** text, uint16_t limit, ENGCHAR* output, ENGHANDLE charset);
// Bytes of the next n characters of a NUL-terminated text; fewer characters give ENG_ERR_TEXT_END, and *size
// is then what there was.
ENG_API ENGSTATUS EngTextCountBytes(const ENGCHAR* text, uint32_t n, uint16_t* size, ENGHANDLE charset);
// Characters in exactly `length` bytes; NUL bytes count like any other.
ENG_API ENGSTATUS EngTextCountChars(const ENGCHAR* text, uint16_t length, uint16_t* count, ENGHANDLE charset);
// The two spans below are EngTextCountBytes and EngTextCountChars over an exact length, in 32 bits.
ENG_API ENGSTATUS EngTextSpanBytes(const ENGCHAR* text, uint32_t length, uint32_t n, uint32_t* size);
ENG_API ENGSTATUS EngTextSpanChars(const ENGCHAR* text, uint32_t length, uint32_t* count);
// On success *text stands at the match; ENG_ERR_TEXT_NOT_FOUND leaves it alone. An empty pattern matches. A NUL ends
// the pattern.
ENG_API ENGSTATUS EngTextFind(const ENGCHAR** text, uint16_t length, const ENGCHAR* pattern, uint16_t pattern_length,
                              ENGHANDLE charset);
// As EngTextFind with comparison options, over an exact length in 32 bits; *match_length gets the bytes matched.
ENG_API ENGSTATUS EngTextSearch(const ENGCHAR** text, uint32_t length, const ENGCHAR* pattern, uint32_t pattern_length,
                                uint32_t flags, uint32_t* match_length);
// `set` is NUL-terminated.
ENG_API ENGSTATUS EngTextFindAny(const ENGCHAR** text, uint16_t length, const ENGCHAR* set, ENGHANDLE charset);
// Moves *text by one character of a NUL-terminated text; bytes stepped, 0 at the end.
ENG_API uint16_t EngTextNextChar(const ENGCHAR** text, uint16_t limit, uint16_t reserved, ENGHANDLE charset);
// Words are runs of letters, digits and marks. Each moves *text and gives 1, or gives 0 and leaves it.
ENG_API int EngTextNextWordEnd(const ENGCHAR** text, uint16_t limit, ENGHANDLE charset);
ENG_API int EngTextNextWordStart(const ENGCHAR** text, uint16_t limit, ENGHANDLE charset);
ENG_API int EngTextPreviousWordEnd(const ENGCHAR** text, const ENGCHAR* start, ENGHANDLE charset);
ENG_API int EngTextPreviousWordStart(const ENGCHAR** text, const ENGCHAR* start, ENGHANDLE charset);
// Writes at most `output_limit` bytes without a terminator, never a part of a character; gives the bytes written.
// A character that the target set lacks becomes '?'; invalid store bytes pass through where both sets are UTF-8.
ENG_API uint16_t EngTextTranslate(uint16_t mode, const void* input, uint16_t input_length, void* output,
                                  uint16_t output_limit);
// Plain text of a composite value's records [offset, offset + length) in a new block: runs joined, `separator`
// for each paragraph, lines folded at `line_width` characters unless that is 0. The caller frees *text.
ENG_API ENGSTATUS EngTextFromComposite(BLOCKID block, uint32_t offset, uint32_t length, const ENGCHAR* separator,
                                       uint16_t line_width, ENGHANDLE* text, uint32_t* text_length);

// Classes of Unicode; an invalid byte is in none. Arithmetic signs are + - * / % ^ < = > and mathematical symbols.
ENG_API int EngCharIsAlnum(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsAlpha(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsArith(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsCntrl(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsDigit(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsLower(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsPunct(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsSpace(const ENGCHAR* character, ENGHANDLE charset);
ENG_API int EngCharIsUpper(const ENGCHAR* character, ENGHANDLE charset);

// Text list values: [type word if `prefixed`], entry count, one length per entry, the texts back to back.
// `size` arguments are the value's bytes as `prefixed` says; damaged values give ENG_ERR_LIST_DAMAGED.
// `count` empty entries; `flags` non-zero puts the type word in front. With a non-null `value` the block comes locked,
// and *value is its address.
ENG_API ENGSTATUS EngTextListCreate(uint16_t count, uint16_t flags, ENGHANDLE* handle, void** value, uint16_t* size);
ENG_API uint16_t EngTextListCount(const void* value, int prefixed);
ENG_API ENGSTATUS EngTextListGetEntry(const void* value, int prefixed, uint16_t index, const ENGCHAR** text,
                                      uint16_t* length);
// Replaces the text of one entry. As EngTextListAddEntry otherwise.
ENG_API ENGSTATUS EngTextListSetEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index,
                                      const ENGCHAR* text, uint16_t length);
// `handle` must be unlocked; it is reallocated. `text` lies outside the block. Past 65,535 bytes: ENG_ERR_LIST_FULL and
// nothing changes.
ENG_API ENGSTATUS EngTextListAddEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index,
                                      const ENGCHAR* text, uint16_t length);
ENG_API ENGSTATUS EngTextListRemoveEntry(ENGHANDLE handle, int prefixed, uint16_t* size, uint16_t index);
ENG_API ENGSTATUS EngTextListRemoveAll(ENGHANDLE handle, int prefixed, uint16_t* size);
ENG_API uint16_t EngTextListSize(const void* value, int prefixed);
// Checks a value of exactly `size` bytes: counts and lengths stay inside it.
ENG_API ENGSTATUS EngTextListVerify(const void* value, int prefixed, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
