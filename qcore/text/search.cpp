#include "qcore/text/search.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/text.h"
#include "qcore/text/fold.h"

namespace qcore::text {

namespace {

constexpr std::uint32_t kFolding = ENG_COMPARE_IGNORE_CASE | ENG_COMPARE_IGNORE_ACCENTS;

int Sign(auto first, auto second) { return first < second ? -1 : first > second; }

int CompareBytes(Text first, Text second) {
  const std::size_t common = std::min(first.size(), second.size());
  const int order = common == 0 ? 0 : std::memcmp(first.data(), second.data(), common);
  return order != 0 ? order : Sign(first.size(), second.size());
}

std::optional<Match> FindExact(Text text, Text pattern) {
  for (std::size_t from = 0; from <= text.size();) {
    const void* hit = memmem(text.data() + from, text.size() - from, pattern.data(), pattern.size());
    if (!hit) return std::nullopt;
    const std::size_t at = static_cast<std::size_t>(static_cast<const ENGCHAR*>(hit) - text.data());
    if (IsBoundary(text, at) && IsBoundary(text, at + pattern.size())) return Match{at, pattern.size()};
    from = at + 1;
  }
  return std::nullopt;
}

// Bytes at the text's start that fold to the pattern's codes.
std::optional<std::size_t> MatchHere(Text text, const std::vector<std::int32_t>& pattern, std::uint32_t flags) {
  FoldedWalk walk(text, flags);
  for (std::int32_t code : pattern) {
    if (walk.Next() != code) return std::nullopt;
  }
  if (!walk.BetweenCharacters()) return std::nullopt;
  std::size_t used = walk.Used();
  while (used < text.size()) {
    const Character next = Decode(text.data() + used, text.size() - used);
    if (Fold(next.code, flags).count != 0) break;
    used += next.length;
  }
  return used;
}

std::optional<Match> FindFolded(Text text, Text pattern, std::uint32_t flags) {
  std::vector<std::int32_t> codes;
  FoldedWalk walk(pattern, flags);
  for (std::int32_t code = walk.Next(); code != FoldedWalk::kEnd; code = walk.Next()) codes.push_back(code);
  if (codes.empty()) return Match{0, 0};
  for (std::size_t at = 0; at < text.size();) {
    const Character next = Decode(text.data() + at, text.size() - at);
    const Folded folded = Fold(next.code, flags);
    if (folded.count != 0 && folded.codes[0] == codes[0]) {
      if (const auto length = MatchHere(text.subspan(at), codes, flags)) return Match{at, *length};
    }
    at += next.length;
  }
  return std::nullopt;
}

}  // namespace

int Compare(Text first, Text second, std::uint32_t flags) {
  flags &= kFolding;
  if (flags == 0) return CompareBytes(first, second);
  FoldedWalk left(first, flags);
  FoldedWalk right(second, flags);
  for (;;) {
    const std::int32_t a = left.Next();
    const std::int32_t b = right.Next();
    if (a != b) return Sign(a, b);
    if (a == FoldedWalk::kEnd) return 0;
  }
}

std::optional<Match> Find(Text text, Text pattern, std::uint32_t flags) {
  if (pattern.empty()) return Match{0, 0};
  flags &= kFolding;
  return flags == 0 ? FindExact(text, pattern) : FindFolded(text, pattern, flags);
}

std::optional<std::size_t> FindAny(Text text, Text set) {
  std::vector<std::int32_t> codes;
  for (std::size_t at = 0; at < set.size();) {
    const Character next = Decode(set.data() + at, set.size() - at);
    codes.push_back(next.code);
    at += next.length;
  }
  for (std::size_t at = 0; at < text.size();) {
    const Character next = Decode(text.data() + at, text.size() - at);
    if (std::ranges::find(codes, next.code) != codes.end()) return at;
    at += next.length;
  }
  return std::nullopt;
}

}  // namespace qcore::text
