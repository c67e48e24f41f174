#include "qcore/text/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "engine/number.h"

namespace qcore::text {

namespace {

constexpr std::uint8_t kPunctuated = 0x01;
constexpr std::uint8_t kParentheses = 0x02;
constexpr std::uint8_t kPercentage = 0x04;

std::string_view DecimalPoint(const INTLFORMAT& settings) {
  const std::string_view text = SettingText(settings.DecimalString);
  return text.empty() ? "." : text;
}

int DigitsOf(const INTLFORMAT& settings, const NFMT& format) {
  // Formats of fields and columns that nobody has set are all 0.
  const bool unset = format.Digits == 0 && format.Format == ENG_NUMBER_GENERAL;
  if (format.Digits != kUsualDigits && !unset) return format.Digits;
  return format.Format == ENG_NUMBER_CURRENCY ? settings.CurrencyDigits : kGeneralFormat.Digits;
}

// Digits, '.', 'e' of a value that is not negative.
std::string PlainDigits(const NFMT& format, int digits, double value) {
  std::array<char, 640> buffer{};  // 309 digits ahead of the point, 254 behind it
  std::chars_format form = std::chars_format::fixed;
  if (format.Format == ENG_NUMBER_SCIENTIFIC) form = std::chars_format::scientific;
  if (format.Format == ENG_NUMBER_GENERAL) {
    form = std::chars_format::general;
    digits = std::clamp(digits, 1, 17);
  }
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, form, digits);
  return std::string(buffer.data(), result.ptr);
}

std::string Punctuate(std::string_view digits, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i != 0 && (digits.size() - i) % 3 == 0) text += separator;
    text += digits[i];
  }
  return text;
}

// The settings' own signs in place of '.' and 'e'.
std::string Localized(const INTLFORMAT& settings, const NFMT& format, const std::string& plain) {
  const std::size_t exponent = std::min(plain.find('e'), plain.size());
  const std::size_t point = std::min(plain.find('.'), exponent);
  std::string text = plain.substr(0, point);
  if (format.Attributes & kPunctuated) text = Punctuate(text, SettingText(settings.ThousandString));
  if (point < exponent) {
    if (text == "0" && !(settings.Flags & ENG_INTL_NUMBER_LEADING_ZERO)) text.clear();
    text += DecimalPoint(settings);
    text += plain.substr(point + 1, exponent - point - 1);
  }
  if (exponent < plain.size()) text += "E" + plain.substr(exponent + 1);
  return text;
}

std::string WithCurrency(const INTLFORMAT& settings, const std::string& number) {
  const std::string symbol(SettingText(settings.CurrencyString));
  const std::string gap = settings.Flags & ENG_INTL_CURRENCY_SPACE ? " " : "";
  return settings.Flags & ENG_INTL_CURRENCY_SUFFIX ? number + gap + symbol : symbol + gap + number;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

class Parser {
 public:
  Parser(const INTLFORMAT& settings, const NFMT& format, std::string_view text)
      : settings_(settings), format_(format), text_(text) {}

  std::optional<ParsedNumber> Parse() {
    Blanks();
    const bool parenthesis = Take("(");
    TakeSignAndCurrency();
    if (!TakeDigits()) return std::nullopt;
    TakeExponent();
    const bool percent = TakeSuffix();
    if (parenthesis && !TakeBehindBlanks(")")) return std::nullopt;
    std::optional<double> value = Value();
    if (!value) return std::nullopt;
    if (percent || (format_.Attributes & kPercentage)) *value /= 100;
    if (std::all_of(text_.begin() + static_cast<std::ptrdiff_t>(at_), text_.end(), IsBlank)) at_ = text_.size();
    return ParsedNumber{negative_ || parenthesis ? -*value : *value, at_};
  }

 private:
  std::string_view Rest() const { return text_.substr(at_); }
  bool DigitAt(std::size_t at) const { return at < text_.size() && IsDigit(text_[at]); }
  void Blanks() {
    while (at_ < text_.size() && IsBlank(text_[at_])) ++at_;
  }
  bool Take(std::string_view sign) {
    if (sign.empty() || !Rest().starts_with(sign)) return false;
    at_ += sign.size();
    return true;
  }
  bool TakeBehindBlanks(std::string_view sign) {
    const std::size_t before = at_;
    Blanks();
    if (Take(sign)) return true;
    at_ = before;
    return false;
  }
  void TakeSign() {
    if (signed_) return;
    negative_ = Take("-");
    signed_ = negative_ || Take("+");
  }
  void TakeSignAndCurrency() {
    Blanks();
    TakeSign();
    if (Take(SettingText(settings_.CurrencyString))) Blanks();
    TakeSign();
  }

  // A separator counts where three digits follow it and no fourth.
  bool TakeThousands() {
    const std::string_view separator = SettingText(settings_.ThousandString);
    if (separator.empty() || separator == DecimalPoint(settings_) || !Rest().starts_with(separator)) return false;
    const std::size_t group = at_ + separator.size();
    if (!DigitAt(group) || !DigitAt(group + 1) || !DigitAt(group + 2) || DigitAt(group + 3)) return false;
    at_ = group;
    return true;
  }
  bool TakeDigits() {
    do {
      while (DigitAt(at_)) digits_ += text_[at_++];
    } while (!digits_.empty() && TakeThousands());
    whole_ = digits_.size();
    const std::string_view point = DecimalPoint(settings_);
    if (Rest().starts_with(point) && (whole_ != 0 || DigitAt(at_ + point.size()))) {
      at_ += point.size();
      digits_ += '.';
      while (DigitAt(at_)) digits_ += text_[at_++];
    }
    return !digits_.empty();
  }
  void TakeExponent() {
    if (Rest().empty() || (Rest().front() | 0x20) != 'e') return;
    const std::size_t sign = at_ + 1;
    const bool has_sign = sign < text_.size() && (text_[sign] == '+' || text_[sign] == '-');
    const std::size_t first = sign + (has_sign ? 1 : 0);
    if (!DigitAt(first)) return;
    shrinks_ = has_sign && text_[sign] == '-';
    digits_ += shrinks_ ? "e-" : "e";
    for (at_ = first; DigitAt(at_);) digits_ += text_[at_++];
  }
  bool TakeSuffix() {
    if (TakeBehindBlanks("%")) return true;
    TakeBehindBlanks(SettingText(settings_.CurrencyString));
    return false;
  }

  // Too large is no number here; too small is zero.
  std::optional<double> Value() const {
    double value = 0;
    const std::string plain = whole_ == 0 ? "0" + digits_ : digits_;
    const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (result.ec == std::errc()) return value;
    const bool no_whole = std::all_of(digits_.begin(), digits_.begin() + static_cast<std::ptrdiff_t>(whole_),
                                      [](char c) { return c == '0'; });
    const bool exponent = digits_.find('e') != std::string::npos;
    return shrinks_ || (no_whole && !exponent) ? std::optional(0.0) : std::nullopt;
  }

  const INTLFORMAT& settings_;
  const NFMT& format_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::string digits_;
  std::size_t whole_ = 0;
  bool signed_ = false;
  bool negative_ = false;
  bool shrinks_ = false;
};

}  // namespace

std::optional<std::string> FormatNumber(const INTLFORMAT& settings, const NFMT& format, double value) {
  if (format.Format > ENG_NUMBER_CURRENCY) return std::nullopt;
  if (std::isnan(value)) return "NaN";
  bool negative = std::signbit(value);
  if (format.Attributes & kPercentage) value *= 100;
  std::string text = "Infinity";
  if (std::isfinite(value)) {
    const std::string plain = PlainDigits(format, DigitsOf(settings, format), std::fabs(value));
    negative = negative && plain.substr(0, plain.find('e')).find_first_not_of("0.") != std::string::npos;
    text = Localized(settings, format, plain);
  }
  if (format.Format == ENG_NUMBER_CURRENCY) text = WithCurrency(settings, text);
  if (format.Attributes & kPercentage) text += "%";
  if (!negative) return text;
  return format.Attributes & kParentheses ? "(" + text + ")" : "-" + text;
}

std::optional<ParsedNumber> ParseNumber(const INTLFORMAT& settings, const NFMT& format, std::string_view text) {
  return Parser(settings, format, text).Parse();
}

}  // namespace qcore::text
