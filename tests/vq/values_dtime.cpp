// Moments, ranges and time items.
#include <functional>
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "vq/values/vqdts.h"

using namespace vqtest;

namespace {

// Each test runs in one local zone, whose rules it knows.
class Times : public SwitchFixture {
 protected:
  Times() {
    ::setenv("TZ", "America/New_York", 1);
    ::tzset();
  }
  ~Times() override {
    ::unsetenv("TZ");
    ::tzset();
  }

  static VQDatetime Date(unsigned long month, unsigned long day, unsigned long year) {
    VQDatetime date;
    EXPECT_EQ(date.SetDate(month, day, year), VQ_OK);
    return date;
  }
  static VQDatetime Clock(unsigned long hour, unsigned long minute) {
    VQDatetime time;
    EXPECT_EQ(time.SetTime(hour, minute, 0, 0), VQ_OK);
    return time;
  }
  static VQDatetime Moment(unsigned long month, unsigned long day, unsigned long year, unsigned long hour) {
    VQDatetime moment = Date(month, day, year);
    EXPECT_EQ(moment.SetTime(hour, 0, 0, 0), VQ_OK);
    return moment;
  }
};

INSTANTIATE_TEST_SUITE_P(Switch, Times, ::testing::Values(0, 1));

TEST_P(Times, EmptyAndSpecialValues) {
  const struct {
    VQDatetime Value;
    VQSTATUS Status;
  } rows[] = {{VQDatetime(), VQERR_OBJECT_NOT_INITIALIZED},
              {VQDatetime(VQDATETIMESPECIAL_MINIMUM), VQERR_SPECIAL_DATETIME},
              {VQDatetime(VQDATETIMESPECIAL_MAXIMUM), VQERR_SPECIAL_DATETIME},
              {VQDatetime(VQDATETIMESPECIAL_WILDCARD), VQERR_SPECIAL_DATETIME}};
  for (const auto& row : rows) {
    VQDatetime value = row.Value;
    VQString text;
    EXPECT_EQ(StatusOf([&] { value.GetDay(); }), row.Status);
    EXPECT_EQ(StatusOf([&] { value.GetHour(); }), row.Status);
    EXPECT_EQ(ReturnedStatusOf([&] { return value.GetDate(nullptr, nullptr, nullptr); }), row.Status);
    EXPECT_EQ(ReturnedStatusOf([&] { return value.SetMinute(1); }), row.Status);
    EXPECT_EQ(ReturnedStatusOf([&] { return value.AdjustDate(1, 0, 0); }), row.Status);
    EXPECT_EQ(ReturnedStatusOf([&] { return value.AdjustTime(1, 0, 0, 0); }), row.Status);
    EXPECT_EQ(ReturnedStatusOf([&] { return value.GetText(&text); }), row.Status);
  }
  VQDatetime value;
  EXPECT_EQ(StatusOf([&] { value = static_cast<VQDATETIMESPECIAL>(3); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([&] { VQDatetime().GetTIMEDATE(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_P(Times, HalvesComeTogether) {
  VQDatetime value = Date(7, 4, 1997);
  EXPECT_EQ(value.GetTIMEDATE()->TimeWord, ENG_TIME_WILD);
  EXPECT_EQ(StatusOf([&] { value.GetHour(); }), VQERR_SPECIAL_DATETIME);
  EXPECT_EQ(value.GetDayOfWeek(), 6u);
  EXPECT_EQ(value.SetTime(15, 30, 15, 25), VQ_OK);
  EXPECT_EQ(value.GetTIMEDATE()->TimeWord, ((19 * 60 + 30) * 60 + 15) * 100 + 25u);  // four hours west in summer
  EXPECT_EQ(value.IsDSTInEffect(), 1);
  unsigned long parts[7];
  EXPECT_EQ(value.GetDate(&parts[0], &parts[1], &parts[2]), VQ_OK);
  EXPECT_EQ(value.GetTime(&parts[3], &parts[4], &parts[5], &parts[6]), VQ_OK);
  EXPECT_THAT(parts, ::testing::ElementsAre(7, 4, 1997, 15, 30, 15, 25));
  EXPECT_EQ(VQDatetime(*value.GetTIMEDATE()).GetHour(), 15u);
  EXPECT_EQ(value.SetTimeToWildCard(), VQ_OK);
  EXPECT_EQ(value.GetDay(), 4u);
  EXPECT_EQ(value.SetDateToWildCard(), VQ_OK);
  EXPECT_EQ(StatusOf([&] { value.GetDay(); }), VQERR_SPECIAL_DATETIME);
}

TEST_P(Times, FailedChangesLeaveTheValue) {
  VQDatetime value = Moment(1, 31, 1999, 10);
  const std::function<VQSTATUS()> rows[] = {[&] { return value.SetDate(2, 30, 1999); },
                                            [&] { return value.SetDate(0, 0, 0); },
                                            [&] { return value.SetDate(1, 1, 1UL << 40); },
                                            [&] { return value.SetMonth(2); },
                                            [&] { return VQDatetime().SetDate(1, 1, 50000); },
                                            [&] { return value.SetTime(24, 0, 0, 0); },
                                            [&] { return value.SetDay(32); },
                                            [&] { return value.SetHour(24); },
                                            [&] { return value.SetHundredth(100); },
                                            [&] { return value.SetTime(1UL << 40, 0, 0, 0); },
                                            [&] { return value.SetSecond(60); }};
  for (const auto& run : rows) EXPECT_EQ(StatusOf(run), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(ReturnedStatusOf([&] { return value.AdjustDate(0, 1L << 40, 0); }), VQERR_CANT_ADJUST_DATETIME);
  EXPECT_EQ(ReturnedStatusOf([&] { return value.AdjustTime(1L << 40, 0, 0, 0); }), VQERR_CANT_ADJUST_DATETIME);
  EXPECT_EQ(StatusOf([&] { return Clock(1, 2).SetYear(2000); }), VQERR_SPECIAL_DATETIME);
  EXPECT_EQ(StatusOf([&] { return Date(1, 2, 2000).SetHour(3); }), VQERR_SPECIAL_DATETIME);
  EXPECT_EQ(ReturnedStatusOf([&] { return value.SetDatetime(nullptr); }), VQERR_ASSERTION_FAILED);
  EXPECT_EQ(value.GetDay(), 31u);
  EXPECT_EQ(value.GetHour(), 10u);
}

TEST_P(Times, Adjusting) {
  VQDatetime value = Moment(1, 31, 1999, 10);
  EXPECT_EQ(value.AdjustDate(1, 0, 0), VQ_OK);
  EXPECT_EQ(value.GetMonth(), 2u);
  EXPECT_EQ(value.GetDay(), 28u);
  EXPECT_EQ(value.AdjustTime(14, 0, 0, -1), VQ_OK);
  EXPECT_EQ(value.GetDay(), 28u);
  EXPECT_EQ(value.GetHundredth(), 99u);
  VQDatetime time = Clock(23, 30);
  EXPECT_EQ(time.AdjustTime(25, 0, 0, 0), VQ_OK);
  EXPECT_EQ(time.GetHour(), 0u);
  EXPECT_EQ(time.GetMinute(), 30u);
  EXPECT_EQ(StatusOf([&] { time.GetDay(); }), VQERR_SPECIAL_DATETIME);
  EXPECT_EQ(VQDatetime(*time.GetTIMEDATE()).GetHour(), 0u);  // reads back the same
  VQDatetime date = Date(12, 31, 1999);
  EXPECT_EQ(date.AdjustDate(0, 1, 0), VQ_OK);
  EXPECT_EQ(date.GetYear(), 2000u);
  EXPECT_EQ(StatusOf([&] { return date.AdjustTime(1, 0, 0, 0); }), VQERR_SPECIAL_DATETIME);
}

TEST_P(Times, Zones) {
  VQDatetime value = Moment(1, 15, 1999, 10);
  EXPECT_EQ(value.GetTimeZone(), VQTIMEZONE_EASTERN);
  const TIMEDATE moment = *value.GetTIMEDATE();
  EXPECT_EQ(value.AdjustTimeZone(VQTIMEZONE_INDIA), VQ_OK);
  EXPECT_EQ(value.GetHour(), 20u);
  EXPECT_EQ(value.GetMinute(), 30u);
  EXPECT_EQ(value.GetTIMEDATE()->TimeWord, moment.TimeWord);
  EXPECT_EQ(value.SetTimeZone(VQTIMEZONE_GMT), VQ_OK);
  EXPECT_EQ(value.GetHour(), 20u);
  EXPECT_EQ(value.GetTIMEDATE()->TimeWord, (20 * 60 + 30) * 6000u);
  EXPECT_EQ(value.AdjustTimeZone(VQTIMEZONE_EASTERN_AUSTRALIA), VQ_OK);
  EXPECT_EQ(value.SetDate(1, 31, 1999), VQ_OK);
  EXPECT_EQ(value.AdjustDate(1, 0, 0), VQ_OK);  // by the calendar of its own zone, not by that of New York
  EXPECT_EQ(value.GetDay(), 28u);
  value = Moment(7, 1, 1999, 10);
  EXPECT_EQ(value.SetTimeZone(VQTIMEZONE_PACIFIC), VQ_OK);
  EXPECT_EQ(value.IsDSTInEffect(), 0);
  EXPECT_EQ(value.SetTimeZone(VQTIMEZONE_EASTERN), VQ_OK);
  EXPECT_EQ(value.IsDSTInEffect(), 1);
  EXPECT_EQ(value.GetHour(), 10u);
  EXPECT_EQ(ReturnedStatusOf([&] { return value.SetTimeZone(static_cast<VQTIMEZONE>(99)); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(value.GetTimeZone(), VQTIMEZONE_EASTERN);
  VQDatetime date = Date(6, 15, 1999);
  EXPECT_EQ(date.AdjustTimeZone(VQTIMEZONE_GMT), VQ_OK);
  EXPECT_EQ(date.GetDay(), 15u);
  EXPECT_EQ(date.GetTIMEDATE()->TimeWord, ENG_TIME_WILD);
}

TEST_P(Times, TheDayShownIsTheDayStored) {
  for (const char* zone :
       {"Pacific/Auckland", "Pacific/Kiritimati", "Etc/GMT+12", "Pacific/Apia", "America/New_York"}) {
    ::setenv("TZ", zone, 1);
    ::tzset();
    for (const auto& [month, day, year] : {std::tuple{1UL, 5UL, 1997UL}, {7UL, 5UL, 1997UL}, {12UL, 30UL, 2011UL}}) {
      const VQDatetime date = Date(month, day, year);
      const VQDatetime stored(*date.GetTIMEDATE());
      EXPECT_EQ(stored.GetDay(), day) << zone;
      EXPECT_EQ(stored.GetTIME()->Hour, 12) << zone;
      EXPECT_EQ(VQDatetime(static_cast<VQString>(date)).GetDay(), day) << zone;
    }
    VQDatetime late = Moment(7, 4, 1997, 23);
    EXPECT_EQ(late.SetTimeToWildCard(), VQ_OK);
    EXPECT_EQ(TextOf(late), TextOf(Date(7, 4, 1997))) << zone;
    VQDatetime time = Clock(10, 0);
    EXPECT_EQ(time.AdjustTime(5000, 0, 0, 0), VQ_OK);  // more than half a year
    EXPECT_EQ(time.GetHour(), 18u) << zone;
    EXPECT_EQ(TextOf(time), TextOf(Clock(18, 0))) << zone;
  }
}

TEST_P(Times, Calendar) {
  const struct {
    unsigned long Year;
    int Leap;
    unsigned long LastDay;
  } rows[] = {{1700, 1, 366}, {1800, 0, 365}, {2000, 1, 366}, {1999, 0, 365}, {2100, 0, 365}};
  for (const auto& row : rows) {
    EXPECT_EQ(Date(2, 1, row.Year).IsLeapYear(), row.Leap) << row.Year;
    EXPECT_EQ(Date(12, 31, row.Year).GetDayOfYear(), row.LastDay) << row.Year;
  }
}

TEST_P(Times, Comparing) {
  const VQDatetime early = Moment(1, 1, 1999, 1);
  const VQDatetime late = Moment(1, 1, 1999, 2);
  const VQDatetime minimum(VQDATETIMESPECIAL_MINIMUM);
  const VQDatetime maximum(VQDATETIMESPECIAL_MAXIMUM);
  const VQDatetime wild(VQDATETIMESPECIAL_WILDCARD);
  const struct {
    const VQDatetime& First;
    const VQDatetime& Second;
    int Sign;
  } rows[] = {{early, late, -1}, {early, early, 0},   {minimum, early, -1}, {maximum, late, 1},
              {wild, early, 0},  {minimum, wild, -1}, {maximum, wild, 1},   {minimum, maximum, -1}};
  for (const auto& row : rows) {
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    EXPECT_EQ(sign(row.First.Compare(row.Second)), row.Sign);
    EXPECT_EQ(sign(row.Second.Compare(row.First)), -row.Sign);
  }
  EXPECT_EQ(late - early, 3600);
  EXPECT_EQ(StatusOf([&] { early.Compare(VQDatetime()); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { early - VQDatetime(); }), VQERR_OBJECT_NOT_INITIALIZED);
}

TEST_P(Times, TextBothWays) {
  for (const VQDatetime& value : {Date(7, 4, 1997), Clock(13, 5), Moment(12, 31, 1999, 23)}) {
    const VQString text = value;
    unsigned long status = 1;
    const VQDatetime back(text, &status);
    EXPECT_EQ(status, VQ_OK) << TextOf(text);
    EXPECT_EQ(back.HasDatePart(), value.HasDatePart()) << TextOf(text);
    EXPECT_EQ(back.HasTimePart(), value.HasTimePart()) << TextOf(text);
    EXPECT_EQ(TextOf(static_cast<VQString>(back)), TextOf(text));
  }
  VQDatetimeFormat format;
  format.SetTimeFormat(VQTIMEFORMAT_PARTIAL);
  format.SetDatetimeDisplay(VQDATETIMEDISPLAY_TIME);
  VQInternational settings = Session->GetInternational();
  settings.Set24HourClock(1);
  settings.SetTimeSeparator(".");
  VQString text;
  EXPECT_EQ(Moment(7, 4, 1997, 15).GetText(&text, &format, &settings), VQ_OK);
  EXPECT_EQ(TextOf(text), "15.00");
  const VQInternational none;
  EXPECT_EQ(StatusOf([&] { return Date(1, 1, 1999).GetText(&text, nullptr, &none); }), VQERR_UNINITIALIZED_ARGUMENT);
  VQDatetime kept = Date(1, 1, 1999);
  EXPECT_EQ(StatusOf([&] { kept = VQString(); }), VQERR_INVALID_PARAMETER);
  EXPECT_NE(StatusOf([&] { kept = VQString("no date at all"); }), VQ_OK);
  EXPECT_EQ(kept.GetYear(), 1999u);
}

TEST_P(Times, Ranges) {
  VQDatetimeRange range;
  VQString text;
  EXPECT_EQ(StatusOf([&] { return range.GetText(&text); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(StatusOf([&] { return range.SetEnd(VQDatetime()); }), VQERR_UNINITIALIZED_ARGUMENT);
  EXPECT_EQ(range.SetBegin(Date(1, 1, 1999)), VQ_OK);
  EXPECT_EQ(range.GetText(&text), VQ_OK);
  EXPECT_EQ(TextOf(text), TextOf(Date(1, 1, 1999)));
  EXPECT_EQ(range.SetEnd(Date(1, 3, 1999)), VQ_OK);
  EXPECT_THAT(TextOf(range),
              ::testing::AllOf(::testing::StartsWith(TextOf(text)), ::testing::SizeIs(::testing::Gt(12u))));
  EXPECT_EQ(VQDatetimeRange(VQDatetime()).HasBeginPart(), 0);
  EXPECT_EQ(VQDatetimeRange(Date(1, 1, 1999)).HasEndPart(), 1);
  EXPECT_EQ(VQDatetimeRange(*Date(1, 1, 1999).GetTIMEDATE()).HasEndPart(), 0);
}

// A list as text: moments by their year, ranges by both years.
std::string YearsOf(const VQDatetimes& list) {
  std::string years;
  for (unsigned long i = 0; i < list.GetCount(); ++i) {
    const VQDatetimeRange range = list[i].GetDatetimeRange();
    years += std::to_string(static_cast<VQDatetime>(list[i]).GetYear());
    if (range.HasEndPart()) years += "-" + std::to_string(VQDatetime(range.GetTIMEDATEPAIR()->Upper).GetYear());
    years += " ";
  }
  return years;
}

class TimeItems : public Times {
 protected:
  static VQDatetime Year(unsigned long year) { return Date(6, 1, year); }
  static VQDatetimeRange Years(unsigned long from, unsigned long to) {
    VQDatetimeRange range(Year(from));
    range.SetEnd(Year(to));
    return range;
  }
  static VQDatetimes Some() {
    VQDatetimes list;
    list << Years(2003, 2004) << Year(2001) << Year(2002);
    return list;
  }
};

INSTANTIATE_TEST_SUITE_P(Switch, TimeItems, ::testing::Values(0, 1));

struct Edit {
  const char* Name;
  std::function<VQSTATUS(VQDatetimes&)> Run;
  VQSTATUS Status;
  const char* After;
};

TEST_P(TimeItems, Edits) {
  const char* before = "2001 2002 2003-2004 ";
  VQDatetimeRange open;
  open.SetBegin(Year(1990));
  VQDatetimes singles;
  singles << Year(1990);
  const Edit rows[] = {
      {"single in front", [](auto& d) { return d.Insert(0, Year(1990)); }, VQ_OK, "1990 2001 2002 2003-2004 "},
      {"single behind singles", [](auto& d) { return d.Insert(2, Year(1990)); }, VQ_OK, "2001 2002 1990 2003-2004 "},
      {"single behind ranges", [](auto& d) { return d.Insert(3, Year(1)); }, VQERR_DATETIMES_MUST_BE_RANGE, before},
      {"behind the end", [](auto& d) { return d.Insert(4, Year(1)); }, VQERR_OUT_OF_RANGE, before},
      {"range among singles", [](auto& d) { return d.Insert(1, Years(1, 2)); }, VQERR_DATETIMES_NOT_RANGE, before},
      {"range in front of ranges", [](auto& d) { return d.Insert(2, Years(1990, 1991)); }, VQ_OK,
       "2001 2002 1990-1991 2003-2004 "},
      {"open range", [&](auto& d) { return d.Insert(0, open); }, VQ_OK, "1990 2001 2002 2003-2004 "},
      {"unset moment", [](auto& d) { return d.Insert(0, VQDatetime()); }, VQERR_UNINITIALIZED_ARGUMENT, before},
      {"unset list", [](auto& d) { return d.Insert(0, VQDatetimes()); }, VQERR_UNINITIALIZED_ARGUMENT, before},
      {"both where they meet", [](auto& d) { return d.Insert(2, Some()); }, VQ_OK,
       "2001 2002 2001 2002 2003-2004 2003-2004 "},
      {"both elsewhere", [](auto& d) { return d.Insert(1, Some()); }, VQERR_DATETIMES_USE_APPEND, before},
      {"singles alone", [&](auto& d) { return d.Insert(1, singles); }, VQ_OK, "2001 1990 2002 2003-2004 "},
      {"append itself", [](auto& d) { return d.Append(d); }, VQ_OK, "2001 2002 2001 2002 2003-2004 2003-2004 "},
      {"append a moment", [](auto& d) { return d.Append(Year(1990)); }, VQ_OK, "2001 2002 1990 2003-2004 "},
      {"delete across the kinds", [](auto& d) { return d.Delete(1, 2); }, VQ_OK, "2001 "},
      {"delete none", [](auto& d) { return d.Delete(1, 0); }, VQERR_INVALID_PARAMETER, before},
      {"delete too many", [](auto& d) { return d.Delete(1, 3); }, VQERR_OUT_OF_RANGE, before},
      {"delete all", [](auto& d) { return d.DeleteAll(); }, VQ_OK, ""},
      {"set a moment", [](auto& d) { return d.SetValue(Year(1990)); }, VQ_OK, "1990 "},
      {"set a range", [](auto& d) { return d.SetValue(Years(1990, 1991)); }, VQ_OK, "1990-1991 "},
  };
  for (const Edit& row : rows) {
    VQDatetimes list = Some();
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Run(list); }), row.Status) << row.Name;
    EXPECT_EQ(YearsOf(list), row.After) << row.Name;
  }
}

TEST_P(TimeItems, Elements) {
  VQDatetimes list = Some();
  list[0] = Year(1990);
  list[2] = Years(1991, 1992);
  EXPECT_EQ(YearsOf(list), "1990 2002 1991-1992 ");
  EXPECT_EQ(StatusOf([&] { list[2] = Year(1); }), VQERR_DATETIMES_MUST_BE_RANGE);
  EXPECT_EQ(StatusOf([&] { list[0] = Years(1, 2); }), VQERR_DATETIMES_NOT_RANGE);
  EXPECT_EQ(StatusOf([&] { list[3]; }), VQERR_BAD_SUBSCRIPT);
  EXPECT_EQ(StatusOf([&] { VQDatetimes()[0]; }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(list.GetDatetimeCount(), 2u);
  EXPECT_EQ(list.GetDatetimeRangeCount(), 1u);
  VQDatetimes none;
  EXPECT_EQ(StatusOf([&] { return none.Insert(1, list); }), VQERR_BAD_SUBSCRIPT);
  EXPECT_EQ(none.Insert(0, list), VQ_OK);
  EXPECT_EQ(YearsOf(none), YearsOf(list));
}

TEST_P(TimeItems, FormsAndText) {
  VQDatetimes list;
  EXPECT_EQ(list.SetValue(Year(2001)), VQ_OK);
  EXPECT_EQ(list.GetType(), TYPE_TIME);
  EXPECT_EQ(list.GetValueSize(), 10u);
  VQString text;
  EXPECT_EQ(list.GetText(&text, "; "), VQ_OK);
  EXPECT_EQ(TextOf(text), TextOf(Year(2001)));
  list << Year(2002);
  EXPECT_EQ(list.GetType(), TYPE_TIME_RANGE);
  EXPECT_EQ(list.GetText(&text, "; "), VQ_OK);
  EXPECT_EQ(TextOf(text), TextOf(Year(2001)) + "; " + TextOf(Year(2002)));
  EXPECT_EQ(StatusOf([&] { return list.GetText(nullptr, ""); }), VQERR_NULL_POINTER);
  VQDatetimes ranges;
  EXPECT_EQ(ranges.SetValue(Years(2001, 2002)), VQ_OK);
  EXPECT_EQ(ranges.GetValueSize(), 22u);
}

}  // namespace
