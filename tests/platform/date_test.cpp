#include "platform/date.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <stdlib.h>

#include <cmath>

#include "platform/local_date.h"

namespace platform {
namespace {

rc::Gen<Date> AnyDate() {
  const int64_t first = Date(100, 1, 1).ToMilliseconds() / 1000;
  const int64_t last = Date(9999, 12, 31, 23, 59, 59).ToMilliseconds() / 1000;
  return rc::gen::map(rc::gen::inRange<int64_t>(first, last + 1),
                      [](int64_t seconds) { return Date::FromMilliseconds(seconds * 1000); });
}

RC_GTEST_PROP(DateText, EveryFormIsReadBack, ()) {
  const Date date = *AnyDate();
  RC_ASSERT(date.IsValid());
  RC_ASSERT(ParseDate(FormatEnglishDate(date)) == date);
  RC_ASSERT(ParseDate(FormatIsoDate(date)) == date);
  RC_ASSERT(ParseDate(FormatQueryDate(date)) == date);
  const Date::Fields f = date.fields();
  RC_ASSERT(Date(f.year, f.month, f.day, f.hour, f.minute, f.second, f.millisecond) == date);
}

RC_GTEST_PROP(DateText, DamagedTextsGiveADateOrNone, ()) {
  std::string text = *rc::gen::elementOf(std::vector<std::string>{
      "1/31/2026 4:05:06 PM", "2026-01-31T16:05:06.123Z", "Sat Jan  1 00:00:00 1938"});
  const auto at = *rc::gen::inRange<size_t>(0, text.size());
  text[at] = *rc::gen::arbitrary<char>();
  text.resize(*rc::gen::inRange<size_t>(0, text.size() + 1));
  const Date date = ParseDate(text);
  if (date.IsValid()) RC_ASSERT(ParseDate(FormatIsoDate(date)).IsValid());
}

TEST(DateText, EnglishForm) {
  EXPECT_EQ("1/31/2026 4:05:06 PM", FormatEnglishDate(Date(2026, 1, 31, 16, 5, 6)));
  EXPECT_EQ("1/1/1938 12:00:00 AM", FormatEnglishDate(Date(1938, 1, 1)));
  EXPECT_EQ("12/9/2026 12:30:00 PM", FormatEnglishDate(Date(2026, 12, 9, 12, 30)));
  EXPECT_EQ("", FormatEnglishDate(Date()));
  EXPECT_EQ("Invalid DateTime", FormatEnglishDate(Date::Invalid()));
  EXPECT_EQ("01/31/2026 16:05:06", FormatQueryDate(Date(2026, 1, 31, 16, 5, 6)));
  EXPECT_EQ("", FormatIsoDate(Date::Invalid()));
}

TEST(DateText, OlderForms) {
  const Date afternoon(2026, 1, 31, 16, 5, 6);
  for (const char* text :
       {"01/31/2026 04:05:06 PM", "1/31/2026 16:05:06", " 1/31/2026  4:05:06 pm ",
        "Sat Jan 31 16:05:06 2026", "2026-01-31 16:05:06", "2026-01-31T16:05:06Z"}) {
    EXPECT_EQ(afternoon, ParseDate(text)) << text;
  }
  EXPECT_EQ(Date(1938, 1, 1), ParseDate("Sat Jan  1 00:00:00 1938"));
  EXPECT_EQ(Date(2026, 1, 31), ParseDate("1/31/2026"));
  EXPECT_EQ(Date(2026, 1, 31, 4, 5), ParseDate("1/31/2026 4:05"));
  EXPECT_EQ(afternoon.PlusMilliseconds(120), ParseDate("2026-01-31T16:05:06.12"));
  EXPECT_EQ(Date::State::Null, ParseDate(" ").state());
}

TEST(DateText, WhatIsNoDateIsInvalid) {
  for (const char* text :
       {"Invalid DateTime", "2/30/2026", "13/1/2026", "0/1/2026", "1/31/26", "1/31/2026 24:00:00",
        "1/31/2026 0:05:06 AM", "1/31/2026 13:05:06 PM", "1/31/2026 4:60:06 PM", "1/31/2026 4",
        "1/31/2026 4:05:06 PM x", "2026-1-31", "2026-01-31T", "2026-01-31T16:05:06.",
        "Xyz Jan  1 00:00:00 1938", "-1/1/2026", "1/31/20260", "99999999999999999999"}) {
    EXPECT_EQ(Date::State::Invalid, ParseDate(text).state()) << text;
  }
}

TEST(DateValue, LeapYearsWeekdaysAndTheEpoch) {
  EXPECT_EQ(0, Date(1970, 1, 1).ToMilliseconds());
  EXPECT_EQ(951'782'400'000, Date(2000, 2, 29).ToMilliseconds());
  EXPECT_FALSE(Date(1900, 2, 29).IsValid());
  EXPECT_EQ(6, Date(2026, 1, 31).fields().weekday);
  const Date::Fields before = Date::FromMilliseconds(-1).fields();
  EXPECT_EQ(1969, before.year);
  EXPECT_EQ(23, before.hour);
  EXPECT_EQ(999, before.millisecond);
}

TEST(DateValue, ArithmeticStaysInRange) {
  const Date date(2026, 1, 31, 12);
  EXPECT_EQ(Date(2026, 2, 1), date.PlusDays(0.5));
  EXPECT_EQ(Date(2026, 1, 30, 13), date.PlusDays(-23 / 24.0));
  for (const double days : {1e300, -1e7, HUGE_VAL, std::nan("")}) {
    EXPECT_EQ(Date::State::Invalid, date.PlusDays(days).state()) << days;
  }
  EXPECT_EQ(Date::State::Invalid, date.PlusMilliseconds(INT64_MAX).state());
  EXPECT_EQ(Date::State::Invalid, date.PlusMilliseconds(INT64_MIN).state());
  EXPECT_EQ(Date::State::Invalid, Date::FromMilliseconds(INT64_MAX).state());
  EXPECT_EQ(Date::State::Null, Date().PlusDays(1).state());
}

TEST(DateTest, APersonReadsDatesInTheLanguageOfTheEnvironment) {
  const Date date(2026, 1, 31, 16, 5, 6);
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(FormatLocalDate(date), "Sat Jan 31 16:05:06 2026");
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  EXPECT_EQ(FormatLocalDate(date, "%x"), "31.01.2026");
  EXPECT_EQ(FormatLocalDate(date), "Sa 31 Jan 2026 16:05:06");
  setenv("LC_ALL", "no_such_place", 1);
  EXPECT_EQ(FormatLocalDate(date, "%x %X"), "01/31/26 16:05:06");
  unsetenv("LC_ALL");
  EXPECT_EQ(FormatLocalDate(Date()), "");
  EXPECT_EQ(FormatLocalDate(Date::Invalid()), "Invalid DateTime");
}

}  // namespace
}  // namespace platform
