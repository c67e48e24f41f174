#include "qcore/text/words.h"

#include "qcore/text/classes.h"

namespace qcore::text {

namespace {

enum class Skip { kWord, kGap };

// Forward walks end at a NUL: the bound may lie behind the text's own end.
bool HasMore(Text text, std::size_t at) { return at < text.size() && text[at] != 0; }

std::size_t SkipForward(Text text, std::size_t at, Skip what) {
  while (HasMore(text, at)) {
    const Character next = Decode(text.data() + at, text.size() - at);
    if (IsWord(next.code) != (what == Skip::kWord)) break;
    at += next.length;
  }
  return at;
}

std::size_t SkipBack(Text text, std::size_t at, Skip what) {
  while (at > 0) {
    const std::uint32_t length = StepBack(text.data(), text.data() + at);
    if (IsWord(Decode(text.data() + at - length, length).code) != (what == Skip::kWord)) break;
    at -= length;
  }
  return at;
}

}  // namespace

std::optional<std::size_t> NextWordStart(Text text) {
  const std::size_t start = SkipForward(text, SkipForward(text, 0, Skip::kWord), Skip::kGap);
  return HasMore(text, start) ? std::optional(start) : std::nullopt;
}

std::optional<std::size_t> NextWordEnd(Text text) {
  const std::size_t start = SkipForward(text, 0, Skip::kGap);
  return HasMore(text, start) ? std::optional(SkipForward(text, start, Skip::kWord)) : std::nullopt;
}

std::optional<std::size_t> PreviousWordStart(Text text) {
  const std::size_t end = SkipBack(text, text.size(), Skip::kGap);
  return end > 0 ? std::optional(SkipBack(text, end, Skip::kWord)) : std::nullopt;
}

std::optional<std::size_t> PreviousWordEnd(Text text) {
  const std::size_t end = SkipBack(text, SkipBack(text, text.size(), Skip::kWord), Skip::kGap);
  return end > 0 ? std::optional(end) : std::nullopt;
}

}  // namespace qcore::text
