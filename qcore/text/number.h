// Numbers as text. The forms are described in docs/formats/dates-and-numbers.md.
#ifndef QUILLON_QCORE_TEXT_NUMBER_H
#define QUILLON_QCORE_TEXT_NUMBER_H

#include <optional>
#include <string>
#include <string_view>

#include "engine/types.h"

namespace qcore::text {

// Digits of a format: as many as the settings say for currency, as general format has by default for the others.
inline constexpr std::uint8_t kUsualDigits = 0xFF;
inline constexpr NFMT kGeneralFormat = {8, 0, 0, 0};

// Nothing for an unknown format.
std::optional<std::string> FormatNumber(const INTLFORMAT& settings, const NFMT& format, double value);

struct ParsedNumber {
  double value;
  std::size_t length;  // bytes taken; white space behind the number only where the text ends with it
};
std::optional<ParsedNumber> ParseNumber(const INTLFORMAT& settings, const NFMT& format, std::string_view text);

// A field of INTLFORMAT: up to its NUL or its end.
template <std::size_t N>
std::string_view SettingText(const char (&field)[N]) {
  const std::string_view all(field, N);
  return all.substr(0, all.find('\0'));
}

}  // namespace qcore::text

#endif
