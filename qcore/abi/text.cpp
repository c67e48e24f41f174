#include "engine/text.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/status.h"
#include "qcore/abi/guard.h"
#include "qcore/handles/handles.h"
#include "qcore/memory/memory.h"
#include "qcore/text/classes.h"
#include "qcore/text/composite.h"
#include "qcore/text/search.h"
#include "qcore/text/translate.h"
#include "qcore/text/words.h"

namespace text = qcore::text;
using qcore::abi::Guard;
using qcore::abi::GuardValue;

namespace {

constexpr std::uint32_t kMostBytes16 = 0xFFFF;

// Moves *cursor when there is an answer.
int MoveTo(const ENGCHAR** cursor, const ENGCHAR* base, std::optional<std::size_t> offset) {
  if (!offset) return 0;
  *cursor = base + *offset;
  return 1;
}

template <typename Ask>
int MoveForward(const ENGCHAR** cursor, uint16_t limit, Ask ask) {
  if (!cursor || !*cursor) return 0;
  return GuardValue(0, [&] { return MoveTo(cursor, *cursor, ask(text::Text(*cursor, limit))); });
}

template <typename Ask>
int MoveBack(const ENGCHAR** cursor, const ENGCHAR* start, Ask ask) {
  if (!cursor || !*cursor || !start || *cursor < start) return 0;
  return GuardValue(0, [&] { return MoveTo(cursor, start, ask(text::Text(start, *cursor))); });
}

int IsClass(text::Class which, const ENGCHAR* character) {
  constexpr std::size_t kLongest = 4;
  return character && text::Is(which, text::Decode(character, kLongest).code) ? 1 : 0;
}

// A NUL-terminated text of at most `length` bytes.
text::Text Terminated(const ENGCHAR* from, std::size_t length) {
  return {from, strnlen(reinterpret_cast<const char*>(from), length)};
}

}  // namespace

// There is one character set, so its handle stands for no object.
ENGHANDLE EngTextCharset(void) {
  return static_cast<ENGHANDLE>(qcore::Kind::kCharset) << qcore::HandleTable::kKindShift;
}

int EngTextCompare(const ENGCHAR* text1, uint16_t length1, const ENGCHAR* text2, uint16_t length2, uint32_t flags) {
  const text::Text first(text1, text1 ? length1 : 0);
  const text::Text second(text2, text2 ? length2 : 0);
  return GuardValue(0, [&] { return text::Compare(first, second, flags); });
}

ENGSTATUS EngTextCopyChar(const ENGCHAR** cursor, uint16_t limit, ENGCHAR* output, ENGHANDLE) {
  if (!cursor || !*cursor || !output) return ENG_ERR_ARGUMENT;
  if (limit == 0 || **cursor == 0) return ENG_ERR_TEXT_END;
  const std::uint32_t length = text::Step(*cursor, limit);
  std::copy_n(*cursor, length, output);
  output[length] = 0;
  *cursor += length;
  return ENG_OK;
}

ENGSTATUS EngTextCountBytes(const ENGCHAR* from, uint32_t n, uint16_t* size, ENGHANDLE) {
  if (!from || !size) return ENG_ERR_ARGUMENT;
  const std::size_t most = std::min<std::uint64_t>(kMostBytes16, std::uint64_t{n} * 4);
  const text::Span span = text::Measure(Terminated(from, most), n);
  *size = static_cast<uint16_t>(span.bytes);
  return span.characters == n ? ENG_OK : ENG_ERR_TEXT_END;
}

ENGSTATUS EngTextCountChars(const ENGCHAR* from, uint16_t length, uint16_t* count, ENGHANDLE) {
  if (!from || !count) return ENG_ERR_ARGUMENT;
  *count = static_cast<uint16_t>(text::Measure({from, length}, kMostBytes16).characters);
  return ENG_OK;
}

ENGSTATUS EngTextSpanBytes(const ENGCHAR* from, uint32_t length, uint32_t n, uint32_t* size) {
  if (!from || !size) return ENG_ERR_ARGUMENT;
  const text::Span span = text::Measure({from, length}, n);
  *size = span.bytes;
  return span.characters == n ? ENG_OK : ENG_ERR_TEXT_END;
}

ENGSTATUS EngTextSpanChars(const ENGCHAR* from, uint32_t length, uint32_t* count) {
  if (!from || !count) return ENG_ERR_ARGUMENT;
  *count = text::Measure({from, length}, UINT32_MAX).characters;
  return ENG_OK;
}

ENGSTATUS EngTextFind(const ENGCHAR** cursor, uint16_t length, const ENGCHAR* pattern, uint16_t pattern_length,
                      ENGHANDLE) {
  if (!pattern) return ENG_ERR_ARGUMENT;
  uint32_t matched = 0;
  const auto size = static_cast<uint32_t>(Terminated(pattern, pattern_length).size());
  return EngTextSearch(cursor, length, pattern, size, 0, &matched);
}

ENGSTATUS EngTextSearch(const ENGCHAR** cursor, uint32_t length, const ENGCHAR* pattern, uint32_t pattern_length,
                        uint32_t flags, uint32_t* match_length) {
  if (!cursor || !*cursor || !pattern || !match_length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const auto match = text::Find({*cursor, length}, {pattern, pattern_length}, flags);
    if (!match) return ENG_ERR_TEXT_NOT_FOUND;
    *cursor += match->offset;
    *match_length = static_cast<uint32_t>(match->length);
    return ENG_OK;
  });
}

ENGSTATUS EngTextFindAny(const ENGCHAR** cursor, uint16_t length, const ENGCHAR* set, ENGHANDLE) {
  if (!cursor || !*cursor || !set) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const text::Text members = Terminated(set, kMostBytes16);
    return MoveTo(cursor, *cursor, text::FindAny({*cursor, length}, members)) ? ENG_OK : ENG_ERR_TEXT_NOT_FOUND;
  });
}

uint16_t EngTextNextChar(const ENGCHAR** cursor, uint16_t limit, uint16_t, ENGHANDLE) {
  if (!cursor || !*cursor || limit == 0 || **cursor == 0) return 0;
  const std::uint32_t length = text::Step(*cursor, limit);
  *cursor += length;
  return static_cast<uint16_t>(length);
}

int EngTextNextWordEnd(const ENGCHAR** cursor, uint16_t limit, ENGHANDLE) {
  return MoveForward(cursor, limit, text::NextWordEnd);
}

int EngTextNextWordStart(const ENGCHAR** cursor, uint16_t limit, ENGHANDLE) {
  return MoveForward(cursor, limit, text::NextWordStart);
}

int EngTextPreviousWordEnd(const ENGCHAR** cursor, const ENGCHAR* start, ENGHANDLE) {
  return MoveBack(cursor, start, text::PreviousWordEnd);
}

int EngTextPreviousWordStart(const ENGCHAR** cursor, const ENGCHAR* start, ENGHANDLE) {
  return MoveBack(cursor, start, text::PreviousWordStart);
}

uint16_t EngTextTranslate(uint16_t mode, const void* input, uint16_t input_length, void* output,
                          uint16_t output_limit) {
  if (!input || !output) return 0;
  return GuardValue<uint16_t>(0, [&] {
    const text::Text source(static_cast<const ENGCHAR*>(input), input_length);
    const std::string result = text::Translate(mode, source, output_limit);
    std::memcpy(output, result.data(), result.size());
    return static_cast<uint16_t>(result.size());
  });
}

ENGSTATUS EngTextFromComposite(BLOCKID block, uint32_t offset, uint32_t length, const ENGCHAR* separator,
                               uint16_t line_width, ENGHANDLE* result, uint32_t* result_length) {
  if (!result || !result_length) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const qcore::memory::LockedBlock source(block.Pool);
    if (!source.bytes()) return ENG_ERR_INVALID_HANDLE;
    const std::uint64_t start = std::uint64_t{block.Block} + offset;
    if (start + length > source.size()) return ENG_ERR_ARGUMENT;
    const char* line_end = separator ? reinterpret_cast<const char*>(separator) : "\n";
    const auto plain = text::FromComposite({source.bytes() + start, length}, line_end, line_width);
    if (!plain) return ENG_ERR_RECORD_DAMAGED;
    const auto size = static_cast<std::uint32_t>(plain->size());
    const ENGSTATUS status = qcore::memory::Allocate(qcore::Kind::kMemory, size, qcore::memory::Fill::kNone, result);
    if (status != ENG_OK) return status;
    std::memcpy(qcore::memory::LockedBlock(*result).bytes(), plain->data(), plain->size());
    *result_length = size;
    return ENG_OK;
  });
}

int EngCharIsAlnum(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kAlnum, character); }
int EngCharIsAlpha(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kAlpha, character); }
int EngCharIsArith(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kArith, character); }
int EngCharIsCntrl(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kCntrl, character); }
int EngCharIsDigit(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kDigit, character); }
int EngCharIsLower(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kLower, character); }
int EngCharIsPunct(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kPunct, character); }
int EngCharIsSpace(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kSpace, character); }
int EngCharIsUpper(const ENGCHAR* character, ENGHANDLE) { return IsClass(text::Class::kUpper, character); }
