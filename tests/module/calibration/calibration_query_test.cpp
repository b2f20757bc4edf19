#include "module/calibration/calibration_query.h"

#include <gtest/gtest.h>

#include "boundary/exceptions.h"
#include "module/calibration/calibration_temperatures.h"
#include "tests/platform/german_locale.h"

namespace rvx {
namespace {

const platform::Date kNow(2026, 1, 31, 16, 5, 6);

std::string Expected(const std::string& low, const std::string& high,
                     const std::string& cutOff = "01/31/2026 12:05:06") {
  return "SELECT * FROM SAMPLES WHERE ([Known Viscosity] = -2) AND ([Instrument] Like 'RVX 1') "
         "AND ([Constant 5] <> 0) AND ([Valid] <> 0) AND ([Average Temperature] > " +
         low + ") AND ([Average Temperature] < " + high + ") AND ([Timestamp] > #" + cutOff +
         "#) ORDER BY SAMPLES.Timestamp;";
}

void CheckAllTexts() {
  const char* limits[kCalibrationSlots][2] = {
      {"-5.051", "-4.949"},   {"-10.051", "-9.949"},  {"-15.051", "-14.949"},
      {"-18.051", "-17.949"}, {"-20.051", "-19.949"}, {"-25.051", "-24.949"},
      {"-30.051", "-29.949"}, {"-35.051", "-34.949"}, {"-40.051", "-39.949"}};
  for (int i = 0; i < kCalibrationSlots; ++i) {
    for (const bool option : {false, true}) {
      EXPECT_EQ(BuildCalibrationQuery("RVX 1", i, option, 4, kNow),
                Expected(limits[i][0], limits[i][1]));
    }
  }
  EXPECT_EQ(BuildCalibrationQuery("RVX 1", {}, false, 4, kNow), Expected("-35.051", "-4.949"));
  EXPECT_EQ(BuildCalibrationQuery("RVX 1", {}, true, 4, kNow), Expected("-40.051", "-4.949"));
}

TEST(CalibrationQuery, IsTheSameTextInEveryLocale) {
  CheckAllTexts();
  const platform::GermanLocale german;
  ASSERT_TRUE(german.set()) << "the machine lacks the locale de_DE.UTF-8";
  CheckAllTexts();
}

TEST(CalibrationQuery, HoursReachOverMonthsAndLeapDays) {
  EXPECT_EQ(BuildCalibrationQuery("RVX 1", 4, true, 366, platform::Date(2028, 3, 10, 5, 0, 1)),
            Expected("-20.051", "-19.949", "02/23/2028 23:00:01"));
  EXPECT_EQ(BuildCalibrationQuery("RVX 1", 4, true, 1, platform::Date(2026, 1, 1, 0, 30, 0)),
            Expected("-20.051", "-19.949", "12/31/2025 23:30:00"));
}

TEST(CalibrationQuery, TheIdIsTrimmedAndNotEscaped) {
  EXPECT_EQ(BuildCalibrationQuery("  RVX 1 ", 4, false, 4, kNow), Expected("-20.051", "-19.949"));
  EXPECT_NE(BuildCalibrationQuery("a'b[%", 4, false, 4, kNow).find("Like 'a'b[%')"),
            std::string::npos);
}

TEST(CalibrationQuery, KnowsItsSlots) {
  for (const int index : {-1, kCalibrationSlots}) {
    try {
      BuildCalibrationQuery("RVX", index, true, 4, kNow);
      ADD_FAILURE() << index;
    } catch (InvalidException* refused) {
      delete refused;
    }
  }
}

}  // namespace
}  // namespace rvx
