// Averages, viscosity and the csv file, by figures worked out by hand.
#include "module/execution/sample_result.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/fake_host.h"

namespace rvx {
namespace {

// Readings: speeds 0.001, 0.002, ... and temperatures -20.00, -20.01, ...
std::vector<double> Speeds(int n) {
  std::vector<double> values;
  for (int i = 1; i <= n; ++i) values.push_back(i * 0.001);
  return values;
}
std::vector<double> Temperatures(int n) {
  std::vector<double> values;
  for (int i = 0; i < n; ++i) values.push_back(-20.0 - i * 0.01);
  return values;
}

TEST(AverageRunTest, TakesTheLastSecondsLatestFirst) {
  const RunAverages averages = AverageRun(Speeds(120), Temperatures(120), 5);
  EXPECT_EQ(averages.count, 5);
  EXPECT_NEAR(averages.speed, 0.1155, 1e-12);        // mean of 0.111 to 0.120
  EXPECT_NEAR(averages.temperature, -21.145, 1e-9);  // mean of -21.10 to -21.19
  EXPECT_NEAR(averages.speeds[0], 0.1195, 1e-12);
  EXPECT_NEAR(averages.speeds[4], 0.1115, 1e-12);
  EXPECT_EQ(averages.speeds[5], 0.0);
}

TEST(AverageRunTest, TooFewReadingsAverageNothing) {
  for (const auto& [readings, count] : std::vector<std::pair<int, int>>{
           {10, 5}, {8, 5}, {0, 5}, {120, 0}, {120, -3}, {120, 0x7FFFFFFF}}) {
    const RunAverages averages = AverageRun(Speeds(readings), Temperatures(readings), count);
    EXPECT_EQ(averages.count, 0) << readings << " readings, count " << count;
    EXPECT_EQ(averages.speed, 0.0);
    EXPECT_EQ(averages.temperature, 0.0);
  }
  EXPECT_EQ(AverageRun(Speeds(11), Temperatures(11), 5).count, 5);
}

TEST(AverageRunTest, MoreThanTwentyPairsKeepTheFirstTwenty) {
  const RunAverages averages = AverageRun(Speeds(120), Temperatures(120), 30);
  EXPECT_EQ(averages.count, 30);
  EXPECT_NEAR(averages.speed, 0.0905, 1e-12);  // mean of 0.061 to 0.120
  EXPECT_NEAR(averages.speeds[19], 0.0815, 1e-12);
}

TEST(ViscosityTest, FollowsTheCellsEquation) {
  EXPECT_DOUBLE_EQ(CalculateViscosity(1200.0, -50.0, 10.0, 0.24), 4952.4);
  EXPECT_EQ(CalculateViscosity(1200.0, -50.0, 10.0, 0.0), 0.0);
}

TEST(CsvTest, NamesTheFileByTestAndTime) {
  // Nine days and a second and a half after the beginning of 2000.
  const platform::Date now(2000, 1, 10, 0, 0, 1, 500);
  EXPECT_EQ(GetCsvFileName("Oil 7", -20.0, now), "Oil 7_-20.0C_777602.csv");
  EXPECT_EQ(GetCsvFileName("", -5.04, platform::Date(2000, 1, 1, 0, 0, 59, 499)), "_-5.0C_59.csv");
}

TEST(CsvTest, ASampleNameChoosesNoFolder) {
  const platform::Date now(2000, 1, 1);
  EXPECT_EQ(GetCsvFileName("../../etc/x\\y\n", -10.0, now), ".._.._etc_x_y__-10.0C_0.csv");
}

TEST(CsvTest, LeavesTheLastReadingOut) {
  EXPECT_EQ(MakeCsvText({0.24, 0.25, 0.26}, {-20.0, -20.0125, -21.0}),
            "Speed,Temperature\n0.240000,-20.000000\n0.250000,-20.012500\n");
  EXPECT_EQ(MakeCsvText({0.24}, {-20.0}), "Speed,Temperature\n");
  EXPECT_EQ(MakeCsvText({}, {}), "Speed,Temperature\n");
}

TEST(EstimateTest, CountsOnlyTheTestsThereAre) {
  FakeHost host;
  TestRecord test;  // injection 240, cool-down 180, rotor ON 60
  test.testTemperatures.fill(-20.0);
  test.rotorOnTimes[1] = 100;
  const int one = EstimateRunSeconds(test, 1);
  EXPECT_GE(one, 240 + 180 + 60);
  EXPECT_NEAR(EstimateRunSeconds(test, 2), 2 * one + 40, 1);
  EXPECT_EQ(EstimateRunSeconds(test, 0), 0);
  EXPECT_EQ(EstimateRunSeconds(test, 21), EstimateRunSeconds(test, 20));
  // A colder test takes longer. A test on the same oil as the one before neither moves nor warms.
  test.testTemperatures[1] = -35.0;
  EXPECT_GT(EstimateRunSeconds(test, 2), 2 * one + 100);
  test.injectionTime = 0;
  EXPECT_LT(EstimateRunSeconds(test, 1), 260);
  test.testTemperatures[0] = std::nan("");
  EXPECT_GT(EstimateRunSeconds(test, 1), 0);
}

}  // namespace
}  // namespace rvx
