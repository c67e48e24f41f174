// Folding of characters for comparison.
#ifndef QUILLON_QCORE_TEXT_FOLD_H
#define QUILLON_QCORE_TEXT_FOLD_H

#include <array>
#include <cstdint>

#include "qcore/text/utf8.h"

namespace qcore::text {

// What one character folds to: usually one code, none for an accent that is ignored, several for some.
struct Folded {
  std::array<std::int32_t, 24> codes;
  std::uint32_t count;
};

Folded Fold(std::int32_t code, std::uint32_t flags);

inline std::int32_t FoldAscii(std::int32_t code, std::uint32_t flags) {
  constexpr std::uint32_t kIgnoreCase = 1;
  return (flags & kIgnoreCase) && code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code;
}

// Walks a text's folded codes.
class FoldedWalk {
 public:
  static constexpr std::int32_t kEnd = -1;

  FoldedWalk(Text text, std::uint32_t flags) : text_(text), flags_(flags) {}

  std::int32_t Next() {
    if (taken_ == pending_.count) {
      if (used_ < text_.size() && text_[used_] < 0x80) return FoldAscii(text_[used_++], flags_);
      if (!Refill()) return kEnd;
    }
    return pending_.codes[taken_++];
  }
  // Whether the codes given so far are those of whole characters.
  bool BetweenCharacters() const { return taken_ == pending_.count; }
  // Bytes of the characters that have been begun.
  std::size_t Used() const { return used_; }

 private:
  bool Refill();

  Text text_;
  std::uint32_t flags_;
  std::size_t used_ = 0;
  Folded pending_{{}, 0};
  std::uint32_t taken_ = 0;
};

}  // namespace qcore::text

#endif
