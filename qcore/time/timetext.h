// Moments as text and back. The forms are described in docs/formats/dates-and-numbers.md.
#ifndef QUILLON_QCORE_TIME_TIMETEXT_H
#define QUILLON_QCORE_TIME_TIMETEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "engine/types.h"

namespace qcore::time {

inline constexpr TFMT kUsualFormat = {0, 0, 0, 2};

// Texts of the settings, with the usual ones where they are empty.
struct TimeWords {
  explicit TimeWords(const INTLFORMAT& settings);
  std::string_view date_separator;
  std::string_view time_separator;
  std::string_view am;
  std::string_view pm;
};

// Nothing for a moment that lacks the half asked for, has neither, or lies outside the calendar, and for a format with
// a value that it does not have.
std::optional<std::string> FormatMoment(const INTLFORMAT& settings, const TFMT& format, const TIMEDATE& moment);

struct ParsedMoment {
  TIMEDATE moment;
  std::size_t length;  // bytes taken; white space behind the moment only where the text ends with it
};
struct ParsedRange {
  TIMEDATE_PAIR pair;
  std::size_t length;
};
// `format.Structure` says which halves may stand in the text. A half that does not stand there is a wild card.
std::optional<ParsedMoment> ParseMoment(const INTLFORMAT& settings, const TFMT& format, std::string_view text);
// Two moments with a '-' between them. An end without a date has the begin's.
std::optional<ParsedRange> ParseRange(const INTLFORMAT& settings, const TFMT& format, std::string_view text);

}  // namespace qcore::time

#endif
