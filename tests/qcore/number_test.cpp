#include <cmath>
#include <cstring>
#include <limits>

#include "tests/qcore/engine.h"

namespace {

using qtest::Store;

struct Number : qtest::Engine {
  INTLFORMAT settings{};
  Number() { EXPECT_EQ(EngIntlGet(&settings), ENG_OK); }

  std::string Text(double value, const NFMT* format, const INTLFORMAT* own = nullptr) {
    char buffer[400] = "";
    std::uint16_t length = 0;
    const ENGSTATUS status =
        EngNumberToText(own, format, &value, reinterpret_cast<ENGCHAR*>(buffer), sizeof buffer, &length);
    return status == ENG_OK ? std::string(buffer, length) : std::to_string(status);
  }
  // What was read, and what was left behind it.
  std::pair<double, std::string> Parsed(const std::string& text, const INTLFORMAT* own = nullptr,
                                        const NFMT* format = nullptr) {
    const ENGCHAR* at = Store(text);
    double value = -777;
    const ENGSTATUS status = EngNumberParse(own, format, &at, static_cast<std::uint16_t>(text.size()), &value);
    EXPECT_TRUE(status == ENG_OK || (status == ENG_ERR_NUMBER_PARSE && value == -777 && at == Store(text))) << text;
    return {value, reinterpret_cast<const char*>(at)};
  }
};

TEST_F(Number, Formats) {
  const NFMT general{8, 0, 0, 0}, fixed{2, 1, 0, 0}, scientific{3, 2, 0, 0}, money{255, 3, 3, 0};
  const NFMT unset{0, 0, 0, 0}, grouped{2, 1, 1, 0}, parentheses{0, 1, 2, 0}, percent{1, 1, 4, 0};
  const struct {
    double value;
    const NFMT* format;
    const char* text;
  } rows[] = {
      {0, nullptr, "0"},
      {1234567.891, nullptr, "1234567.9"},
      {1e20, &general, "1E+20"},
      {-0.5, &general, "-0.5"},
      {42.25, &unset, "42.25"},
      {1e300, &general, "1E+300"},
      {2.005, &fixed, "2.00"},
      {-0.001, &fixed, "0.00"},
      {12345.678, &scientific, "1.235E+04"},
      {-1234567.5, &grouped, "-1,234,567.50"},
      {123, &grouped, "123.00"},
      {-1234.5, &money, "($1,234.50)"},
      {-12, &parentheses, "(12)"},
      {0.2951, &percent, "29.5%"},
      {std::nan(""), &fixed, "NaN"},
      {-std::numeric_limits<double>::infinity(), &fixed, "-Infinity"},
  };
  for (const auto& row : rows) EXPECT_EQ(Text(row.value, row.format), row.text) << row.value;
  const NFMT unknown{8, 4, 0, 0}, widest{254, 1, 7, 0};
  EXPECT_EQ(Text(1, &unknown), std::to_string(ENG_ERR_ARGUMENT));
  EXPECT_EQ(Text(-1e300, &widest), std::to_string(ENG_ERR_BUFFER_SIZE));
}

TEST_F(Number, TakesTheSettingsSigns) {
  std::memcpy(settings.DecimalString, ",", 2);
  std::memcpy(settings.ThousandString, ".", 2);
  std::memcpy(settings.CurrencyString, "EUR", 4);
  settings.Flags = ENG_INTL_CURRENCY_SUFFIX | ENG_INTL_CURRENCY_SPACE;
  const NFMT money{2, 3, 1, 0};
  EXPECT_EQ(Text(1234.5, &money, &settings), "1.234,50 EUR");
  EXPECT_EQ(Text(0.5, &money, &settings), ",50 EUR") << "no leading zero";
  EXPECT_EQ(Parsed("1.234,50 EUR", &settings).first, 1234.5);
  EXPECT_EQ(Parsed(",5", &settings).first, 0.5);
  std::memset(settings.DecimalString, 'x', sizeof settings.DecimalString);
  EXPECT_EQ(Parsed("1xxxxxxxx5", &settings).first, 1.5) << "a field without a terminator";
}

TEST_F(Number, Parses) {
  const struct {
    const char* text;
    double value;
    const char* rest;
  } rows[] = {
      {"12", 12, ""},
      {"12 x", 12, " x"},
      {" -1,234.5 ", -1234.5, ""},
      {"1,23", 1, ",23"},
      {"1,2345", 1, ",2345"},
      {"(5)", -5, ""},
      {"$ 5", 5, ""},
      {"-$5", -5, ""},
      {"$-5", -5, ""},
      {"50%", 0.5, ""},
      {"1e3", 1000, ""},
      {"1e", 1, "e"},
      {"1.5E-2kg", 0.015, "kg"},
      {"1e-400", 0, ""},
      {"+.5", 0.5, ""},
      {"5.", 5, ""},
      {"0000000000000000000000000012", 12, ""},
  };
  for (const auto& row : rows) {
    const auto [value, rest] = Parsed(row.text);
    EXPECT_DOUBLE_EQ(value, row.value) << row.text;
    EXPECT_EQ(rest, row.rest) << row.text;
  }
  for (const char* text : {"", " ", "x", "-", ".", "$", "(5", "1e400", "--5", "NaN", "E5"}) {
    EXPECT_EQ(Parsed(text).first, -777) << text;
  }
  const NFMT percent{1, 1, 4, 0};
  EXPECT_EQ(Parsed("50", nullptr, &percent).first, 0.5);
}

}  // namespace
