#include <cctype>
#include <cstddef>

#include "qcore/settings/settings.h"

namespace qcore::settings {

namespace {

struct TextKey {
  const char* key;
  const char* usual;
  char* (*field)(INTLFORMAT&);
  std::uint16_t size;
};

#define QCORE_FIELD(name) [](INTLFORMAT& f) -> char* { return f.name; }, sizeof(INTLFORMAT::name)
constexpr TextKey kTexts[] = {
    {"AMString", "AM", QCORE_FIELD(AMString)},
    {"PMString", "PM", QCORE_FIELD(PMString)},
    {"CurrencySymbol", "$", QCORE_FIELD(CurrencyString)},
    {"ThousandSeparator", ",", QCORE_FIELD(ThousandString)},
    {"DecimalSeparator", ".", QCORE_FIELD(DecimalString)},
    {"DateSeparator", "/", QCORE_FIELD(DateString)},
    {"TimeSeparator", ":", QCORE_FIELD(TimeString)},
    {"YesterdayString", "Yesterday", QCORE_FIELD(YesterdayString)},
    {"TodayString", "Today", QCORE_FIELD(TodayString)},
    {"TomorrowString", "Tomorrow", QCORE_FIELD(TomorrowString)},
};
#undef QCORE_FIELD

struct FlagKey {
  const char* key;
  bool usual;
  std::uint16_t flag;
};

constexpr FlagKey kFlags[] = {
    {"CurrencySuffix", false, ENG_INTL_CURRENCY_SUFFIX},       {"CurrencySpace", false, ENG_INTL_CURRENCY_SPACE},
    {"NumberLeadingZero", true, ENG_INTL_NUMBER_LEADING_ZERO}, {"Clock24Hour", false, ENG_INTL_CLOCK_24_HOUR},
    {"DaylightSavings", true, ENG_INTL_DAYLIGHT_SAVINGS},      {"Metric", false, ENG_INTL_METRIC},
};

// A blank can't stand at the end of a settings value, so a value may be put in double quotes.
std::string Unquoted(std::string text) {
  const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return quoted ? text.substr(1, text.size() - 2) : text;
}

std::uint8_t DateOrder(const std::string& name) {
  switch (name.empty() ? 'M' : std::toupper(static_cast<unsigned char>(name.front()))) {
    case 'D':
      return 1;
    case 'Y':
      return 2;
    default:
      return 0;
  }
}

}  // namespace

INTLFORMAT ReadInternational() {
  INTLFORMAT format{};
  for (const TextKey& text : kTexts) {
    const std::string value = Get(text.key);
    CopyText(value.empty() ? text.usual : Unquoted(value), text.field(format), text.size);
  }
  for (const FlagKey& flag : kFlags) {
    if (GetInt(flag.key, flag.usual) != 0) format.Flags |= flag.flag;
  }
  const long digits = GetInt("CurrencyDigits", 2);
  format.CurrencyDigits = static_cast<std::uint8_t>(digits >= 0 && digits <= 15 ? digits : 2);
  format.DateOrder = DateOrder(Get("DateOrder"));
  return format;
}

}  // namespace qcore::settings
