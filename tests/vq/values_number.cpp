// Numbers and number items.
#include <cstddef>
#include <cstring>
#include <functional>
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "tests/vq/support/property_rows.h"
#include "vq/values/vqnumber.h"

using namespace vqtest;

namespace {

using Values = std::vector<double>;

class Numbers : public SwitchFixture {
 protected:
  static VQNumbers Make(const Values& values) {
    VQNumbers numbers;
    for (const double value : values) numbers << value;
    return numbers;
  }
  static Values ValuesOf(const VQNumbers& numbers) {
    Values values;
    for (unsigned long i = 0; i < numbers.GetCount(); ++i) values.push_back(numbers[i]);
    return values;
  }
};

INSTANTIATE_TEST_SUITE_P(Switch, Numbers, ::testing::Values(0, 1));

TEST_P(Numbers, FromText) {
  VQNumber number(5);
  EXPECT_EQ(number.ConvertString("12"), VQ_OK);
  EXPECT_EQ(number.Value, 12);
  EXPECT_EQ(number.ConvertString("-1.5e3"), VQ_OK);
  EXPECT_EQ(number.Value, -1500);
  EXPECT_EQ(StatusOf([&] { return number.ConvertString("12 x"); }), VQSTATUS{ENG_ERR_NUMBER_PARSE});
  EXPECT_EQ(number.Value, 0);
  EXPECT_EQ(StatusOf([&] { return number.ConvertString(VQString()); }), VQERR_NULL_STRING);
  EXPECT_EQ(StatusOf([&] { number = VQString("x"); }), VQSTATUS{ENG_ERR_NUMBER_PARSE});
  unsigned long status = 7;
  const bool throws = GetParam() != 0;
  EXPECT_EQ(StatusOf([&] { VQNumber made("x", &status); }), throws ? VQSTATUS{ENG_ERR_NUMBER_PARSE} : VQ_OK);
  EXPECT_EQ(status, throws ? 7u : 1029u);
  EXPECT_EQ(VQNumber("42", &status).Value, 42);
  EXPECT_EQ(status, VQ_OK);
}

TEST_P(Numbers, ToText) {
  VQString text("before");
  const VQNumber number(-1234.5);
  EXPECT_EQ(number.GetText(&text), VQ_OK);
  EXPECT_EQ(TextOf(text), "-1234.5");
  VQNumberFormat format;
  EXPECT_EQ(format.SetFormat(static_cast<VQNUMBERFORMAT>(4)), VQERR_OUT_OF_RANGE);  // never thrown
  EXPECT_EQ(format.GetDigits(), 8u);
  format.SetFormat(VQNUMBERFORMAT_FIXED);
  format.SetDigits(2);
  format.SetParentheses(5);
  format.SetPunctuated(1);
  EXPECT_EQ(format.GetParentheses(), 1);
  VQInternational settings = Session->GetInternational();
  EXPECT_EQ(settings.SetDecimalSeparator(","), VQ_OK);
  EXPECT_EQ(settings.SetThousandsSeparator("."), VQ_OK);
  EXPECT_EQ(number.GetText(format, settings, &text), VQ_OK);
  EXPECT_EQ(TextOf(text), "(1.234,50)");
  EXPECT_EQ(StatusOf([&] { return number.GetText(format, VQInternational(), &text); }), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(StatusOf([&] { return number.GetText(nullptr); }), VQERR_NULL_POINTER);
  EXPECT_EQ(TextOf(text), "(1.234,50)");
  const VQString wide = Store(std::string(65534, '-'));
  EXPECT_EQ(ReturnedStatusOf([&] { return Make({1, 2}).GetText(&text, wide); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(TextOf(text), "(1.234,50)");
  format.SetDigits(254);
  EXPECT_EQ(VQNumber(1e308).GetText(format, settings, &text), VQ_OK);
  EXPECT_EQ(text.GetBufLength(), 309u + 102 + 1 + 254);
}

TEST_P(Numbers, Settings) {
  VQInternational settings = Session->GetInternational();
  EXPECT_EQ(StatusOf([&] { return settings.SetDateSeparator("12345678"); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(StatusOf([&] { return settings.SetDateOrder(static_cast<VQDATEORDER>(3)); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(settings.SetMetric(1), VQ_OK);
  EXPECT_EQ(settings.Set24HourClock(0), VQ_OK);
  EXPECT_EQ(settings.GetMetric(), 1);
  EXPECT_EQ(settings.SetTodayText("aujourd'hui"), VQ_OK);
  EXPECT_EQ(TextOf(VQInternational(settings).GetTodayText()), "aujourd'hui");
  VQInternational none;
  EXPECT_EQ(StatusOf([&] { return none.SetMetric(1); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { none.GetAMText(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

using Settings = VQInternational;

// Each owns its bytes of the engine's settings, whatever the others hold.
TEST_P(Numbers, SettingsOwnTheirBytes) {
  const PropertyRow<Settings> rows[] = {
      {"digits",
       Of<&Settings::GetCurrencyDigits, &Settings::SetCurrencyDigits>(),
       offsetof(INTLFORMAT, CurrencyDigits),
       0xFF,
       Each({0, 15}),
       {{16, VQERR_OUT_OF_RANGE}, {256, VQERR_OUT_OF_RANGE}}},
      {"order",
       Of<&Settings::GetDateOrder, &Settings::SetDateOrder>(),
       offsetof(INTLFORMAT, DateOrder),
       0xFF,
       Each({0, 1, 2}),
       {{3, VQERR_OUT_OF_RANGE}}},
      {"zone",
       Of<&Settings::GetTimeZone, &Settings::SetTimeZone>(),
       offsetof(INTLFORMAT, TimeZone),
       0xFFFFFFFF,
       Each({0, 5, 0x7FFFFFFF}),
       {{0x80000000, VQERR_OUT_OF_RANGE}, {0x100000005, VQERR_OUT_OF_RANGE}}},
      {"suffix", Of<&Settings::GetCurrencySuffix, &Settings::SetCurrencySuffix>(), 0, 1, OnOff(1), {}},
      {"space", Of<&Settings::GetCurrencySpace, &Settings::SetCurrencySpace>(), 0, 2, OnOff(2), {}},
      {"leading zero", Of<&Settings::GetNumberLeadingZero, &Settings::SetNumberLeadingZero>(), 0, 4, OnOff(4), {}},
      {"24 hours", Of<&Settings::Get24HourClock, &Settings::Set24HourClock>(), 0, 8, OnOff(8), {}},
      {"summer time", Of<&Settings::GetDaylightSavings, &Settings::SetDaylightSavings>(), 0, 16, OnOff(16), {}},
      {"metric", Of<&Settings::GetMetric, &Settings::SetMetric>(), 0, 32, OnOff(32), {}},
  };
  for (const char fill : {'\0', '\1'}) {
    INTLFORMAT format;
    std::memset(&format, fill, sizeof format);
    const std::string before(reinterpret_cast<const char*>(&format), sizeof format);
    const auto bytes = [](const Settings& s) {
      return std::string(reinterpret_cast<const char*>(s.GetFormat()), sizeof(INTLFORMAT));
    };
    for (const auto& row : rows) {
      SCOPED_TRACE(row.Name);
      for (const auto& [value, stored] : row.Values) {
        Settings settings(format);
        EXPECT_EQ(row.Access.Set(settings, value), VQ_OK);
        EXPECT_EQ(row.Access.Get(settings), value);
        EXPECT_EQ(bytes(settings), With(before, {row.At, row.Mask, stored}));
      }
      Settings settings(format), none;
      for (const auto& [value, status] : row.Refused) {
        EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(settings, value); }), status) << value;
      }
      EXPECT_EQ(bytes(settings), before);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Access.Set(none, 0); }), VQERR_OBJECT_NOT_INITIALIZED);
      EXPECT_EQ(StatusOf([&] { return row.Access.Get(none) > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
    }
  }
}

TEST_P(Numbers, SettingsKeepTheirTexts) {
  const struct {
    VQString (Settings::*Get)() const;
    VQSTATUS (Settings::*Set)(const VQString&);
    std::size_t At, Size;
  } rows[] = {
      {&Settings::GetAMText, &Settings::SetAMText, offsetof(INTLFORMAT, AMString), 8},
      {&Settings::GetPMText, &Settings::SetPMText, offsetof(INTLFORMAT, PMString), 8},
      {&Settings::GetCurrencySymbol, &Settings::SetCurrencySymbol, offsetof(INTLFORMAT, CurrencyString), 8},
      {&Settings::GetThousandsSeparator, &Settings::SetThousandsSeparator, offsetof(INTLFORMAT, ThousandString), 8},
      {&Settings::GetDecimalSeparator, &Settings::SetDecimalSeparator, offsetof(INTLFORMAT, DecimalString), 8},
      {&Settings::GetDateSeparator, &Settings::SetDateSeparator, offsetof(INTLFORMAT, DateString), 8},
      {&Settings::GetTimeSeparator, &Settings::SetTimeSeparator, offsetof(INTLFORMAT, TimeString), 8},
      {&Settings::GetYesterdayText, &Settings::SetYesterdayText, offsetof(INTLFORMAT, YesterdayString), 16},
      {&Settings::GetTodayText, &Settings::SetTodayText, offsetof(INTLFORMAT, TodayString), 16},
      {&Settings::GetTomorrowText, &Settings::SetTomorrowText, offsetof(INTLFORMAT, TomorrowString), 16},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.At);
    Settings settings(INTLFORMAT{}), none;
    std::string expected(sizeof(INTLFORMAT), '\0');
    for (const std::string& text : {std::string(row.Size - 1, 'x'), std::string("\xE2\x82\xAC"), std::string()}) {
      EXPECT_EQ((settings.*row.Set)(Store(text)), VQ_OK);
      EXPECT_EQ(TextOf((settings.*row.Get)()), text);
      expected.replace(row.At, row.Size, text + std::string(row.Size - text.size(), '\0'));
      EXPECT_EQ(std::string(reinterpret_cast<const char*>(settings.GetFormat()), sizeof(INTLFORMAT)), expected);
    }
    EXPECT_EQ(ReturnedStatusOf([&] { return (settings.*row.Set)(Store(std::string(row.Size, 'x'))); }),
              VQERR_STRING_TOO_LONG);
    EXPECT_EQ(TextOf((settings.*row.Get)()), "");
    EXPECT_EQ(ReturnedStatusOf([&] { return (none.*row.Set)("x"); }), VQERR_OBJECT_NOT_INITIALIZED);
    EXPECT_EQ(StatusOf([&] { return (none.*row.Get)().IsNull(); }), VQERR_OBJECT_NOT_INITIALIZED);
  }
}

struct Edit {
  const char* Name;
  Values Before;
  std::function<VQSTATUS(VQNumbers&)> Run;
  VQSTATUS Status;
  Values After;
};

TEST_P(Numbers, Edits) {
  const Edit rows[] = {
      {"first", {}, [](VQNumbers& n) { return n.Insert(0, 2.5); }, VQ_OK, {2.5}},
      {"first elsewhere", {}, [](VQNumbers& n) { return n.Insert(1, 2.5); }, VQERR_OUT_OF_RANGE, {}},
      {"insert", {1, 3}, [](VQNumbers& n) { return n.Insert(1, 2); }, VQ_OK, {1, 2, 3}},
      {"insert behind", {1}, [](VQNumbers& n) { return n.Insert(2, 2); }, VQERR_OUT_OF_RANGE, {1}},
      {"insert a list",
       {1, 4},
       [](VQNumbers& n) {
         return n.Insert(1, Make({2, 3}));
       },
       VQ_OK,
       {1, 2, 3, 4}},
      {"insert none", {1}, [](VQNumbers& n) { return n.Insert(0, VQNumbers()); }, VQERR_UNINITIALIZED_ARGUMENT, {1}},
      {"delete", {1, 2, 3}, [](VQNumbers& n) { return n.Delete(0, 2); }, VQ_OK, {3}},
      {"delete none", {1}, [](VQNumbers& n) { return n.Delete(0, 0); }, VQERR_INVALID_PARAMETER, {1}},
      {"delete too many", {1}, [](VQNumbers& n) { return n.Delete(0, 2); }, VQERR_OUT_OF_RANGE, {1}},
      {"delete unattached", {}, [](VQNumbers& n) { return n.Delete(0, 1); }, VQERR_OBJECT_NOT_INITIALIZED, {}},
      {"delete all", {1, 2}, [](VQNumbers& n) { return n.DeleteAll(); }, VQ_OK, {}},
      {"assign", {1, 2}, [](VQNumbers& n) { return n[1] = 9, VQ_OK; }, VQ_OK, {1, 9}},
      {"assign the only one", {1}, [](VQNumbers& n) { return n[0] = 9, VQ_OK; }, VQ_OK, {9}},
      {"set", {1, 2}, [](VQNumbers& n) { return n.SetValue(7); }, VQ_OK, {7}},
      {"set a list",
       {},
       [](VQNumbers& n) {
         return n.SetValue(Make({7, 8}));
       },
       VQ_OK,
       {7, 8}},
  };
  for (const Edit& row : rows) {
    VQNumbers numbers = Make(row.Before);
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Run(numbers); }), row.Status) << row.Name;
    EXPECT_EQ(ValuesOf(numbers), row.After) << row.Name;
  }
}

// 1.0, 2.0 and the range 3.0 to 4.0.
const unsigned char kWithRange[] = {2, 0,  1, 0, 0, 0, 0, 0, 0, 0,  0xF0, 0x3F, 0, 0, 0, 0, 0,    0,
                                    0, 64, 0, 0, 0, 0, 0, 0, 8, 64, 0,    0,    0, 0, 0, 0, 0x10, 64};

TEST_P(Numbers, StoredRangesStay) {
  VQNumbers numbers(new VQNumbersBody(TYPE_NUMBER_RANGE, kWithRange, sizeof kWithRange));
  EXPECT_EQ(ValuesOf(numbers), (Values{1, 2, 3}));
  EXPECT_EQ(StatusOf([&] { numbers[2] = 9; }), VQERR_INAPPROPRIATE);
  EXPECT_EQ(numbers.Delete(0, 1), VQ_OK);
  numbers << 5;
  EXPECT_EQ(ValuesOf(numbers), (Values{2, 5, 3}));
  EXPECT_EQ(numbers.GetValueSize(), 2u + 4 + 16 + 16);
  EXPECT_EQ(StatusOf([&] { numbers[3]; }), VQERR_BAD_SUBSCRIPT);
  EXPECT_EQ(numbers.Delete(0, 3), VQ_OK);
  EXPECT_EQ(numbers.GetType(), TYPE_NUMBER);
  EXPECT_EQ(numbers.GetValueSize(), 2u);
}

TEST_P(Numbers, DamagedListsAreRefused) {
  for (unsigned long size = 1; size < sizeof kWithRange; ++size) {
    VQNumbers numbers(new VQNumbersBody(TYPE_NUMBER_RANGE, kWithRange, size));
    EXPECT_EQ(ReturnedStatusOf([&] { return numbers.Insert(0, 9); }), VQERR_CORRUPTED) << size;
    EXPECT_EQ(numbers.GetValueSize(), size + 2);
    EXPECT_NE(StatusOf([&] { static_cast<double>(numbers[2]); }), VQ_OK) << size;
  }
}

}  // namespace
