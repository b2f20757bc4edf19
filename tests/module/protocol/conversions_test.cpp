// Reference figures come from a separate solution of the bridge and the polynomial, the latter by
// bisection.
#include "module/protocol/conversions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace rvx {
namespace {

constexpr ProbeConstants kProbe;
constexpr SupplyPair kSupply;
constexpr double kOffset = 0.12;

double Counts(double temperature, char model = '1', double offset = 0.0) {
  return TemperatureToCounts(temperature, kProbe, kSupply, model, offset);
}
double Celsius(uint16_t counts, char model = '1', double offset = 0.0) {
  return CountsToTemperature(counts, kProbe, kSupply, model, offset);
}

TEST(Volts, SuppliesReachTheConverterHalved) {
  EXPECT_EQ(CountsToVolts(0), -10.0);
  EXPECT_EQ(CountsToVolts(0x8000), 0.0);
  EXPECT_EQ(CountsToSupplyVolts(0xE000), 15.0);
  EXPECT_EQ(CountsToSupplyVolts(0x2000), -15.0);
}

TEST(Temperature, ToCounts) {
  struct {
    double celsius;
    double counts;
  } const cases[] = {{-40.0, 2078.905},  {-35.0, 17150.143}, {-25.0, 37584.983}, {-20.0, 44349.409},
                     {-10.0, 53479.925}, {-5.0, 56523.419},  {15.0, 63217.439},  {25.0, 64778.859}};
  // The search stops at an error of 1e-06, which is up to a quarter of a count.
  for (const auto& c : cases) EXPECT_NEAR(Counts(c.celsius), c.counts, 0.3) << c.celsius;
  EXPECT_EQ(std::trunc(Counts(-20.0)), 44349.0);
}

TEST(Temperature, ToCountsWithOtherSupplies) {
  const SupplyPair supply{14.9, -15.1};
  EXPECT_NEAR(TemperatureToCounts(-20.0, kProbe, supply, '1', 0.0), 40744.929, 0.3);
  EXPECT_EQ(TemperatureToCounts(-40.0, kProbe, supply, '1', 0.0), 0.0) << "-1525.6, limited";
}

TEST(Temperature, FromCounts) {
  EXPECT_NEAR(Celsius(44349), -20.000347, 1e-6);
  EXPECT_NEAR(Celsius(0x2000), -38.125763, 1e-6);
  EXPECT_NEAR(Celsius(0x8000), -27.884660, 1e-6);
  EXPECT_NEAR(Celsius(0xE200), -2.321708, 1e-6);
  EXPECT_NEAR(CountsToTemperature(44349, kProbe, {14.9, -15.1}, '1', 0.0), -16.660611, 1e-5);
}

TEST(Temperature, BackAndForth) {
  for (double t = -40.0; t <= 0.0; t += 0.25) {
    const auto counts = static_cast<uint16_t>(Counts(t, '4', kOffset));
    EXPECT_NEAR(Celsius(counts, '4', kOffset), t, 0.005) << t;
  }
}

TEST(Temperature, OffsetBelongsToModelsThreeAndFour) {
  for (const char model : {'1', '2'}) {
    EXPECT_EQ(Celsius(44349, model, kOffset), Celsius(44349)) << model;
    EXPECT_EQ(Counts(-20.0, model, kOffset), Counts(-20.0)) << model;
  }
  for (const char model : {'3', '4'}) {
    EXPECT_DOUBLE_EQ(Celsius(44349, model, kOffset), Celsius(44349) + kOffset) << model;
    EXPECT_DOUBLE_EQ(Counts(-20.0, model, kOffset), Counts(-20.12)) << model;
  }
}

TEST(Temperature, OffIsExact) {
  EXPECT_EQ(Counts(65535.0, '4', kOffset), 65535.0);
  EXPECT_EQ(TargetCountsToTemperature(0xFFFF, kProbe, kSupply, '4', kOffset), 65535.0);
  EXPECT_EQ(TargetCountsToTemperature(44349, kProbe, kSupply, '1', 0.0), Celsius(44349));
}

TEST(Temperature, NoTemperatureGivesTheCountsOfOff) {
  // At -100 the search still converges (42 steps), at -150 it runs away.
  EXPECT_EQ(Counts(-100.0), 0.0);
  EXPECT_EQ(Counts(-150.0), 65534.0);
  EXPECT_EQ(Counts(-273.0), 65534.0);
  EXPECT_EQ(Counts(std::nan("")), 65534.0);
  for (double t = -272.0; t < 400.0; t += 1.0) {
    EXPECT_GE(Counts(t), 0.0) << t;
    EXPECT_LE(Counts(t), 65534.0) << t;
  }
}

TEST(Speed, ScaleAndRounding) {
  EXPECT_DOUBLE_EQ(SpeedFromCounts(4000, 0x00), 0.24);
  EXPECT_DOUBLE_EQ(SpeedFromCounts(4000, 0x01), 0.06);
  EXPECT_DOUBLE_EQ(SpeedFromCounts(16000, 0x03), 0.24);
  EXPECT_DOUBLE_EQ(SpeedFromCounts(16000, 0x02), 0.96);
  EXPECT_DOUBLE_EQ(SpeedFromCounts(65535, 0x00), 3.9321);
  EXPECT_EQ(SpeedFromCounts(0, 0x01), 0.0);
  // 65535 * 1.5e-05 is 0.983025: the half goes up.
  EXPECT_NEAR(SpeedFromCounts(65535, 0x01), 0.98303, 1e-9);
}

TEST(SupplyMeans, StartsAtTheNominalPair) {
  const SupplyMeans means;
  EXPECT_EQ(means.means().plus, 15.0);
  EXPECT_EQ(means.inUse().minus, -15.0);
}

TEST(SupplyMeans, MeanOfWhatHasBeenRead) {
  SupplyMeans means;
  means.Update(14.0, -14.0);
  means.Update(15.0, -16.0);
  EXPECT_DOUBLE_EQ(means.means().plus, 14.5);
  EXPECT_DOUBLE_EQ(means.means().minus, -15.0);
}

TEST(SupplyMeans, OldestOfTwentyLeaves) {
  SupplyMeans means;
  for (int i = 0; i < 25; ++i) means.Update(i < 5 ? 100.0 : 15.0, -15.0);
  EXPECT_DOUBLE_EQ(means.means().plus, 15.0);
}

TEST(SupplyMeans, ZeroEndsTheMean) {
  SupplyMeans means;
  means.Update(0.0, -3.0);
  EXPECT_EQ(means.means().plus, 15.0) << "nothing was summed";
  means.Update(14.0, -14.0);
  EXPECT_EQ(means.means().plus, 15.0) << "slot 0 still ends the sum";
  SupplyMeans other;
  other.Update(14.0, -14.0);
  other.Update(0.0, -1.0);
  other.Update(20.0, -20.0);
  EXPECT_DOUBLE_EQ(other.means().plus, 14.0);
  EXPECT_DOUBLE_EQ(other.means().minus, -14.0);
}

TEST(SupplyMeans, PairInUseChangesOnlyWhenLatched) {
  SupplyMeans means;
  means.Update(14.0, -14.5);
  EXPECT_EQ(means.inUse().plus, 15.0);
  EXPECT_DOUBLE_EQ(means.Latch().plus, 14.0);
  EXPECT_DOUBLE_EQ(means.inUse().minus, -14.5);
}

}  // namespace
}  // namespace rvx
