#include <cstring>
#include <limits>
#include <vector>

#include "tests/qcore/engine.h"

namespace {

using qtest::Store;

// New York: daylight saving from 6 April to 26 October 1997.
struct Time : qtest::Engine {
  explicit Time(const char* zone = "America/New_York")
      : Engine((setenv("TZ", zone, 1), "Directory=data\n")), old_zone_("UTC") {
    EXPECT_EQ(EngIntlGet(&settings), ENG_OK);
  }
  ~Time() override { setenv("TZ", old_zone_, 1); }

  static TIMEDATE At(int year, int month, int day, int hour = 12, int minute = 0, int zone = 0, int dst = 0) {
    ENGTIME parts{year, month, day, 0, hour, minute, 0, 0, dst, zone, {}};
    EXPECT_EQ(EngTimeFromParts(&parts), 0) << year << "-" << month << "-" << day;
    return parts.GM;
  }
  std::string Text(TIMEDATE moment, TFMT format = {0, 0, 0, 2}) {
    char buffer[80];
    std::uint16_t length = 0;
    const ENGSTATUS status =
        EngTimeToText(&settings, &format, &moment, reinterpret_cast<ENGCHAR*>(buffer), sizeof buffer, &length);
    return status == ENG_OK ? std::string(buffer, length) : std::to_string(status);
  }
  // The moment on the 24-hour clock of year, month and day, and what was left behind it.
  std::string Parsed(const std::string& text, TFMT format = {0, 0, 0, 2}) {
    const ENGCHAR* at = Store(text);
    TIMEDATE moment{1, 1};
    const ENGSTATUS status = EngTimeParse(&settings, &format, &at, static_cast<std::uint16_t>(text.size()), &moment);
    if (status != ENG_OK) {
      EXPECT_TRUE(at == Store(text) && moment.TimeWord == 1) << text;
      return std::to_string(status);
    }
    const INTLFORMAT saved = settings;
    settings.Flags |= ENG_INTL_CLOCK_24_HOUR;
    settings.DateOrder = 2;
    std::memcpy(settings.DateString, "-", 2);
    const std::string result = Text(moment) + "|" + reinterpret_cast<const char*>(at);
    settings = saved;
    return result;
  }

  qtest::StandingClock clock;
  INTLFORMAT settings{};

 private:
  const char* old_zone_;
};

TEST_F(Time, DaysAreJulianAndTheCalendarChangesIn1752) {
  const auto day = [](int year, int month, int day_of_month) {
    const ENGTIME parts{year, month, day_of_month, 0, 0, 0, 0, 0, 0, 0, {}};
    return EngTimeJulianDay(&parts);
  };
  EXPECT_EQ(day(1970, 1, 1), 2440588u);
  EXPECT_EQ(day(2000, 2, 29), 2451604u);
  EXPECT_EQ(day(1752, 9, 14), day(1752, 9, 2) + 1);
  EXPECT_EQ(day(1700, 3, 1), day(1700, 2, 28) + 2) << "a leap year by the old calendar";
  for (const auto& [y, m, d] : {std::tuple{1752, 9, 10}, {1900, 2, 29}, {1997, 13, 1}, {1997, 4, 31}, {-1, 1, 1}}) {
    EXPECT_EQ(day(y, m, d), 0u) << y << "-" << m << "-" << d;
  }
}

TEST_F(Time, EveryDayGoesToPartsAndBack) {
  for (std::uint32_t day = 1721424; day < 2600000; day += 13) {
    ENGTIME parts{};
    parts.GM = {360000 * 5 + 1, day};
    ASSERT_EQ(EngTimeToPartsLocal(&parts), 0) << day;
    const TIMEDATE before = parts.GM;
    ASSERT_EQ(EngTimeFromParts(&parts), 0) << day;
    ASSERT_EQ(std::memcmp(&before, &parts.GM, sizeof before), 0) << day;
  }
}

TEST_F(Time, LocalPartsFollowDaylightSaving) {
  ENGTIME summer{};
  summer.GM = At(1997, 7, 4, 16, 30);
  ASSERT_EQ(EngTimeToPartsLocal(&summer), 0);
  EXPECT_EQ(summer.Hour, 12);
  EXPECT_EQ(summer.Dst, 1);
  EXPECT_EQ(summer.Zone, 5);
  EXPECT_EQ(summer.Weekday, 6);
  summer.Zone = -3005;
  summer.Dst = 0;
  ASSERT_EQ(EngTimeToPartsInZone(&summer), 0);
  EXPECT_EQ(summer.Hour, 22);
  EXPECT_EQ(summer.Minute, 0);
  std::int32_t zone = 0, dst = 1;
  EngTimeLocalZone(&zone, &dst);
  EXPECT_EQ(zone, 5);
  EXPECT_EQ(dst, 0) << "in March";
}

TEST_F(Time, ClockChangesAreResolvedByTheMarkAndFromBefore) {
  EXPECT_EQ(At(1997, 10, 26, 1, 30, 5, 1).TimeWord, 5u * 360000 + 180000);
  EXPECT_EQ(At(1997, 10, 26, 1, 30, 5, 0).TimeWord, 6u * 360000 + 180000);
  EXPECT_EQ(At(1997, 4, 6, 2, 30, 5, 0).TimeWord, 7u * 360000 + 180000) << "a time that was skipped";
}

TEST_F(Time, PartsThatMakeNoMomentAreRefused) {
  const ENGTIME good{1997, 3, 5, 0, 12, 0, 0, 0, 0, 0, {7, 7}};
  for (std::int32_t ENGTIME::*field : {&ENGTIME::Month, &ENGTIME::Day, &ENGTIME::Hour, &ENGTIME::Minute,
                                       &ENGTIME::Second, &ENGTIME::Hundredth, &ENGTIME::Zone, &ENGTIME::Year}) {
    for (std::int32_t value : {-99999, 99999}) {
      ENGTIME parts = good;
      parts.*field = value;
      EXPECT_NE(EngTimeFromParts(&parts), 0);
      EXPECT_EQ(parts.GM.DateWord, 7u);
    }
  }
  for (TIMEDATE bad : {TIMEDATE{0, 0}, TIMEDATE{8640000, 2440588}, TIMEDATE{ENG_TIME_WILD, ENG_TIME_WILD}}) {
    ENGTIME parts = good;
    parts.GM = bad;
    EXPECT_NE(EngTimeToPartsLocal(&parts), 0);
    EXPECT_EQ(parts.Year, 1997);
  }
}

TEST_F(Time, Adjusts) {
  const struct {
    TIMEDATE from;
    int seconds, minutes, hours, days, months, years;
    TIMEDATE to;
  } rows[] = {
      {At(1997, 1, 31), 0, 0, 0, 0, 1, 0, At(1997, 2, 28)},
      {At(1996, 2, 29), 0, 0, 0, 0, 0, 1, At(1997, 2, 28)},
      {At(1997, 3, 31), 0, 0, 0, 0, -1, 0, At(1997, 2, 28, 12)},
      {At(1997, 12, 31), 0, 0, 0, 1, 0, 0, At(1998, 1, 1)},
      {At(1997, 1, 15), 0, 0, 0, 0, -13, 0, At(1995, 12, 15)},
      {At(1997, 4, 5, 12, 0, 5), 0, 0, 0, 1, 0, 0, At(1997, 4, 6, 12, 0, 5)},
      {At(1997, 4, 5, 12, 0, 5), 0, 0, 24, 0, 0, 0, At(1997, 4, 6, 13, 0, 5)},
      {At(1997, 1, 1, 0), -1, -59, -23, 0, 0, 0, At(1996, 12, 31, 0, 0)},
      {{360000, ENG_TIME_WILD}, 0, 0, -2, 0, 0, 0, {23 * 360000, ENG_TIME_WILD}},
      {{ENG_TIME_WILD, 2450513}, 0, 0, 0, 2, 0, 0, {ENG_TIME_WILD, 2450515}},
  };
  for (const auto& row : rows) {
    TIMEDATE moment = row.from;
    EXPECT_EQ(EngTimeAdjust(&moment, row.seconds, row.minutes, row.hours, row.days, row.months, row.years), 0);
    const int lost = row.minutes == -59 ? 59 * 100 : 0;
    EXPECT_EQ(moment.TimeWord, row.to.TimeWord + lost) << Text(moment) << " " << Text(row.to);
    EXPECT_EQ(moment.DateWord, row.to.DateWord) << Text(moment) << " " << Text(row.to);
  }
}

TEST_F(Time, AnAdjustmentThatFailsChangesNothing) {
  const int most = std::numeric_limits<int>::max();
  const struct {
    TIMEDATE from;
    int hours, days, years;
  } rows[] = {{{0, 2450513}, 0, most, 0}, {{0, 2450513}, 0, 0, -3000},         {{0, ENG_TIME_WILD}, 0, 1, 0},
              {{0, 2450513}, 0, 0, most}, {{ENG_TIME_WILD, 2450513}, 1, 0, 0}, {{0, ENG_DATE_MAXIMUM}, 24, 0, 0}};
  for (const auto& row : rows) {
    TIMEDATE moment = row.from;
    EXPECT_NE(EngTimeAdjust(&moment, 0, 0, row.hours, row.days, 0, row.years), 0);
    EXPECT_EQ(std::memcmp(&moment, &row.from, sizeof moment), 0);
  }
}

TEST_F(Time, OrderAndDistance) {
  const TIMEDATE a = At(1997, 3, 5), b = At(1997, 3, 6), day{ENG_TIME_WILD, a.DateWord};
  EXPECT_LT(EngTimeCompare(&a, &b), 0);
  EXPECT_EQ(EngTimeCompare(&a, &day), 0);
  EXPECT_GT(EngTimeCompare(&b, &day), 0);
  EXPECT_EQ(EngTimeDifference(&b, &a), 86400);
  const TIMEDATE first{0, 0}, last{0, ENG_DATE_MAXIMUM};
  EXPECT_EQ(EngTimeDifference(&last, &first), std::numeric_limits<std::int32_t>::max());
  TIMEDATE now{};
  EngTimeNow(&now);
  EXPECT_EQ(Text(now), "03/05/1997 10:04:05 AM");
}

TEST_F(Time, Formats) {
  const TIMEDATE moment = At(1996, 7, 4, 4, 5, 0);
  const TIMEDATE today = At(1997, 3, 5, 20), date{ENG_TIME_WILD, today.DateWord};
  const TIMEDATE clock_time{5 * 360000, ENG_TIME_WILD};
  const struct {
    TIMEDATE moment;
    TFMT format;
    const char* text;
  } rows[] = {
      {moment, {0, 0, 0, 2}, "07/04/1996 12:05:00 AM"},
      {moment, {0, 1, 2, 2}, "07/04/1996 12:05 AM GMT-04:00"},
      {moment, {2, 2, 1, 2}, "07/04 12 AM"},
      {moment, {3, 0, 0, 0}, "07/1996"},
      {moment, {1, 0, 0, 0}, "07/04/1996"},
      {today, {1, 0, 0, 0}, "03/05"},
      {today, {0, 1, 0, 3}, "Today 03:00 PM"},
      {date, {0, 0, 0, 2}, "03/05/1997"},
      {clock_time, {0, 1, 0, 2}, "12:00 AM"},
      {clock_time, {0, 0, 0, 0}, "1032"},
      {moment, {4, 0, 0, 2}, "1032"},
      {{0, 0}, {0, 0, 0, 2}, "1032"},
  };
  for (const auto& row : rows) EXPECT_EQ(Text(row.moment, row.format), row.text);
  settings.TimeZone = -3005;
  EXPECT_EQ(Text(moment, {0, 1, 1, 1}), "09:35 AM GMT+05:30");
}

TEST_F(Time, Parses) {
  const struct {
    const char* text;
    const char* result;
  } rows[] = {
      {"3/5/97", "1997-03-05|"},
      {"03/05/2001 4:05 PM", "2001-03-05 16:05:00|"},
      {"1997-03-05T10:30:15.25-05:00", "1997-03-05 10:30:15|"},
      {"1997-07-05T10:30:15Z", "1997-07-05 06:30:15|"},
      {"5 March 1997 23:59", "1997-03-05 23:59:00|"},
      {"Wed, 5-Mar-97", "1997-03-05|"},
      {"march 5, 1997, 1 am", "1997-03-05 01:00:00|"},
      {"Mar 1997", "1997-03-01|"},
      {"Mar 5 10:30", "1997-03-05 10:30:00|"},
      {"3/5", "1997-03-05|"},
      {"3/1998", "1998-03-01|"},
      {"tomorrow 9:00", "1997-03-06 09:00:00|"},
      {"10:30 GMT", "05:30:00|"},
      {"12 AM", "00:00:00|"},
      {"10:30 3/5/97", "1997-03-05 10:30:00|"},
      {"7/4/1997 12:00 PST", "1997-07-04 16:00:00|"},
      {"3/5/97 and so on", "1997-03-05| and so on"},
      {"10:30  ", "10:30:00|"},
      {"3/5/97/", "1997-03-05|/"},
  };
  for (const auto& row : rows) EXPECT_EQ(Parsed(row.text), row.result) << row.text;
  for (const char* text :
       {"", "x", "5", "2/30/97", "13:00 PM", "24:00", "10:60", "1997", "99999/1/1", "1/1/0000 1:00 GMT+6"}) {
    EXPECT_EQ(Parsed(text), "1031") << text;
  }
  settings.DateOrder = 1;
  EXPECT_EQ(Parsed("3/5/97"), "1997-05-03|");
}

TEST_F(Time, RangesReadBackWhatTheyPrint) {
  const TIMEDATE_PAIR pair{At(1997, 3, 5, 15), At(1997, 3, 6, 16)};
  char text[80];
  std::uint16_t length = 0;
  ASSERT_EQ(EngTimeRangeToText(nullptr, nullptr, &pair, reinterpret_cast<ENGCHAR*>(text), sizeof text, &length),
            ENG_OK);
  EXPECT_STREQ(text, "03/05/1997 10:00:00 AM - 03/06/1997 11:00:00 AM");
  TIMEDATE_PAIR again{};
  const ENGCHAR* at = reinterpret_cast<const ENGCHAR*>(text);
  ASSERT_EQ(EngTimeRangeParse(nullptr, nullptr, &at, length, &again), ENG_OK);
  EXPECT_EQ(std::memcmp(&pair, &again, sizeof pair), 0);
  const std::string same_day = "3/5/97 10:00 AM-11:30 AM", alone = "3/5/97";
  at = Store(same_day);
  ASSERT_EQ(EngTimeRangeParse(nullptr, nullptr, &at, 80, &again), ENG_OK);
  EXPECT_EQ(EngTimeDifference(&again.Upper, &again.Lower), 5400);
  at = Store(alone);
  EXPECT_EQ(EngTimeRangeParse(nullptr, nullptr, &at, 80, &again), ENG_ERR_TIME_PARSE);
  EXPECT_EQ(EngTimeRangeToText(nullptr, nullptr, &pair, reinterpret_cast<ENGCHAR*>(text), 46, &length),
            ENG_ERR_BUFFER_SIZE);
}

// Half a day and more from Greenwich, where noon is on another date there or at its edge.
struct FarTime : Time, ::testing::WithParamInterface<const char*> {
  FarTime() : Time(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Zones, FarTime,
                         ::testing::Values("Pacific/Auckland", "Pacific/Kiritimati", "Etc/GMT+12", "Pacific/Apia"));

TEST_P(FarTime, ADateWithoutATimeIsTheSameDayEverywhere) {
  for (const auto& [text, result] : {std::pair{"1/5/1997", "1997-01-05|"},
                                     {"7/5/1997", "1997-07-05|"},
                                     {"12/30/2011", "2011-12-30|"}}) {  // Apia skipped it
    EXPECT_EQ(Parsed(text), result);
  }
  const std::string text = "7/5/1997";
  const ENGCHAR* at = Store(text);
  TIMEDATE day{};
  ASSERT_EQ(EngTimeParse(&settings, nullptr, &at, 80, &day), ENG_OK);
  EXPECT_EQ(day.DateWord, At(1997, 7, 5).DateWord);
  settings.TimeZone = 5;
  EXPECT_EQ(Text(day), "07/05/1997");
  EXPECT_EQ(EngTimeAdjust(&day, 0, 0, 0, -4, 1, 0), 0);
  EXPECT_EQ(day.DateWord, At(1997, 8, 1).DateWord);
  EXPECT_EQ(Parsed("11:00"), "11:00:00|") << "no daylight saving without a date";
}

}  // namespace
