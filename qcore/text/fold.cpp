#include "qcore/text/fold.h"

#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <new>

#include "engine/text.h"
#include "qcore/text/classes.h"

namespace qcore::text {

namespace {

constexpr std::int32_t kMostUnits = 24;

struct Units {
  std::array<UChar, kMostUnits> unit;
  std::int32_t count;
};

const UNormalizer2* Decomposer() {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* decomposer = unorm2_getNFDInstance(&error);
  if (U_FAILURE(error)) throw std::bad_alloc();  // its data is linked in: only memory can lack
  return decomposer;
}

// Canonically decomposed, accents left out; the character itself when it has none.
Units WithoutAccents(std::int32_t code) {
  Units units{{}, 0};
  if (IsAccent(code)) return units;
  UErrorCode error = U_ZERO_ERROR;
  Units parts{{}, 0};
  parts.count = unorm2_getDecomposition(Decomposer(), code, parts.unit.data(), kMostUnits, &error);
  bool dropped = false;
  for (std::int32_t i = 0; U_SUCCESS(error) && i < parts.count;) {
    UChar32 part = 0;
    U16_NEXT(parts.unit, i, parts.count, part);
    if (IsAccent(part)) {
      dropped = true;
    } else {
      U16_APPEND_UNSAFE(units.unit, units.count, part);
    }
  }
  if (dropped) return units;
  units.count = 0;
  U16_APPEND_UNSAFE(units.unit, units.count, code);
  return units;
}

Units FoldCase(const Units& units) {
  Units folded{{}, 0};
  UErrorCode error = U_ZERO_ERROR;
  folded.count =
      u_strFoldCase(folded.unit.data(), kMostUnits, units.unit.data(), units.count, U_FOLD_CASE_DEFAULT, &error);
  return U_FAILURE(error) || folded.count > kMostUnits ? units : folded;
}

}  // namespace

Folded Fold(std::int32_t code, std::uint32_t flags) {
  if (code < 0x80) return {{FoldAscii(code, flags)}, 1};
  if (code >= kInvalidBase) return {{code}, 1};
  Units units{{}, 0};
  if (flags & ENG_COMPARE_IGNORE_ACCENTS) {
    units = WithoutAccents(code);
  } else {
    U16_APPEND_UNSAFE(units.unit, units.count, code);
  }
  if (flags & ENG_COMPARE_IGNORE_CASE) units = FoldCase(units);
  Folded folded{{}, 0};
  for (std::int32_t i = 0; i < units.count; ++folded.count) {
    U16_NEXT(units.unit, i, units.count, folded.codes[folded.count]);
  }
  return folded;
}

bool FoldedWalk::Refill() {
  do {
    if (used_ >= text_.size()) return false;
    const Character next = Decode(text_.data() + used_, text_.size() - used_);
    used_ += next.length;
    pending_ = Fold(next.code, flags_);
    taken_ = 0;
  } while (pending_.count == 0);
  return true;
}

}  // namespace qcore::text
