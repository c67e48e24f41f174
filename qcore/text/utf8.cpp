#include "qcore/text/utf8.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qcore::text {

namespace {

bool IsContinuation(ENGCHAR byte) { return (byte & 0xC0) == 0x80; }

Character Invalid(ENGCHAR byte) { return {kInvalidBase + byte, 1}; }

// Shortest forms only, no surrogates, nothing above U+10FFFF: the bounds lie in the second byte.
bool SecondFits(ENGCHAR lead, ENGCHAR second) {
  switch (lead) {
    case 0xE0:
      return second >= 0xA0 && second <= 0xBF;
    case 0xED:
      return second >= 0x80 && second <= 0x9F;
    case 0xF0:
      return second >= 0x90 && second <= 0xBF;
    case 0xF4:
      return second >= 0x80 && second <= 0x8F;
    default:
      return IsContinuation(second);
  }
}

std::uint32_t LengthFor(ENGCHAR lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 1;
}

std::size_t AsciiPrefix(const ENGCHAR* text, std::size_t length) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080u;
  std::size_t done = 0;
  for (; length - done >= 8; done += 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, text + done, 8);
    if (word & kHighBits) return done + static_cast<std::size_t>(std::countr_zero(word & kHighBits)) / 8;
  }
  while (done < length && text[done] < 0x80) ++done;
  return done;
}

}  // namespace

Character DecodeMultibyte(const ENGCHAR* text, std::size_t available) {
  const ENGCHAR lead = text[0];
  const std::uint32_t length = LengthFor(lead);
  if (length == 1 || available < length || !SecondFits(lead, text[1])) return Invalid(lead);
  std::int32_t code = (lead & (0x7F >> length)) << 6 | (text[1] & 0x3F);
  for (std::uint32_t i = 2; i < length; ++i) {
    if (!IsContinuation(text[i])) return Invalid(lead);
    code = code << 6 | (text[i] & 0x3F);
  }
  return {code, length};
}

std::uint32_t StepBack(const ENGCHAR* start, const ENGCHAR* position) {
  const std::size_t most = std::min<std::size_t>(4, static_cast<std::size_t>(position - start));
  for (std::uint32_t back = 1; back <= most; ++back) {
    const ENGCHAR* lead = position - back;
    if (IsContinuation(*lead)) continue;
    return Step(lead, back) == back ? back : 1;
  }
  return 1;
}

bool IsBoundary(Text text, std::size_t position) {
  if (position >= text.size() || !IsContinuation(text[position])) return true;
  for (std::size_t back = 1; back <= 3 && back <= position; ++back) {
    const std::size_t lead = position - back;
    if (!IsContinuation(text[lead])) return Step(text.data() + lead, text.size() - lead) <= back;
  }
  return true;
}

Span Measure(Text text, std::uint32_t characters) {
  Span span{0, 0};
  while (span.bytes < text.size() && span.characters < characters) {
    const ENGCHAR* at = text.data() + span.bytes;
    const std::size_t rest = text.size() - span.bytes;
    const std::size_t ascii = AsciiPrefix(at, std::min<std::size_t>(rest, characters - span.characters));
    span.characters += static_cast<std::uint32_t>(ascii != 0 ? ascii : 1);
    span.bytes += static_cast<std::uint32_t>(ascii != 0 ? ascii : Step(at, rest));
  }
  return span;
}

void Append(std::int32_t code, std::string* text) {
  const auto put = [text](std::int32_t byte) { text->push_back(static_cast<char>(byte)); };
  if (code >= kInvalidBase) return put(code - kInvalidBase);
  if (code < 0x80) return put(code);
  if (code < 0x800) {
    put(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      put(0xE0 | code >> 12);
    } else {
      put(0xF0 | code >> 18);
      put(0x80 | (code >> 12 & 0x3F));
    }
    put(0x80 | (code >> 6 & 0x3F));
  }
  put(0x80 | (code & 0x3F));
}

std::size_t CutLength(Text text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  while (limit > 0 && !IsBoundary(text, limit)) --limit;
  return limit;
}

}  // namespace qcore::text
