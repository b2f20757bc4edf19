#include "module/simulator/oil_rotor.h"

#include <gtest/gtest.h>

#include <cmath>

#include "module/simulator/sim_board.h"
#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

constexpr double kRpmThousandOfCount = 0.06 / 1000.0;
constexpr double kColdCell = -20.0;  // degrees C, whatever the probe reads

OilRotor MakeRotor(uint64_t seed = 7) {
  return OilRotor(
      {{3, {{-20.0, 5000.0}}}, {4, {{-20.0, 20000.0}}}}, [](uint16_t) { return kColdCell; }, seed);
}

// The mean speed in rpm/1000 over a minute, which begins when the rotor is up to speed.
double MeanSpeed(OilRotor& rotor, int oil, int64_t start = 0) {
  constexpr int kSettled = 40;
  constexpr int kTicks = 160;
  double sum = 0.0;
  for (int i = 0; i < kTicks; ++i) {
    const uint16_t counts = rotor.SpeedCounts({true, 0, start + i, oil});
    if (i >= kSettled) sum += counts * kRpmThousandOfCount;
  }
  return sum / (kTicks - kSettled);
}

TEST(OilRotor, TheSpeedSolvesTheCellsEquation) {
  for (const double celsius : {-5.0, -20.0, -40.0}) {
    const TrueCellConstants cell = TrueConstantsAt(celsius);
    double last = 10.0;
    for (double viscosity = 1000.0; viscosity <= 50000.0; viscosity *= 1.3) {
      const double speed = SpeedInOil(cell, viscosity);
      EXPECT_NEAR(cell.b0 / speed + cell.b1 + cell.b2 * speed, viscosity, 1e-6 * viscosity);
      EXPECT_LT(speed, last) << "thicker oil turns slower";
      EXPECT_LT(speed / kRpmThousandOfCount, 65535.0);
      last = speed;
    }
  }
  EXPECT_DOUBLE_EQ(SpeedInOil({1000.0, 0.0, 0.0}, 5000.0), 0.2);
  EXPECT_EQ(SpeedInOil({1000.0, 100.0, 0.0}, 50.0), 0.0) << "no speed shows this viscosity";
}

TEST(OilRotor, ViscosityGoesThroughItsPointsAndOnBeyondThem) {
  const OilCurve oil = {{-20.0, 4000.0}, {-25.0, 8000.0}, {-30.0, 20000.0}};
  EXPECT_NEAR(ViscosityAt(oil, -25.0), 8000.0, 1e-6);
  EXPECT_NEAR(ViscosityAt(oil, -22.5), std::sqrt(4000.0 * 8000.0), 1e-6);
  EXPECT_NEAR(ViscosityAt(oil, -15.0), 2000.0, 1e-6);
  EXPECT_NEAR(ViscosityAt(oil, -35.0), 50000.0, 1e-3);
  EXPECT_NEAR(ViscosityAt({{-20.0, 4000.0}}, -26.0), 8000.0, 100.0);
  EXPECT_TRUE(std::isfinite(ViscosityAt(oil, -1e6)));
  EXPECT_EQ(ViscosityAt({}, -20.0), 0.0);
}

TEST(OilRotor, TurnsWithALagAndLittleNoise) {
  OilRotor rotor = MakeRotor();
  const double speed = SpeedInOil(TrueConstantsAt(kColdCell), 5000.0);
  EXPECT_EQ(rotor.SpeedCounts({false, 0, 0, 3}), 0);
  EXPECT_LT(rotor.SpeedCounts({true, 0, 1, 3}) * kRpmThousandOfCount, 0.5 * speed);
  EXPECT_NEAR(MeanSpeed(rotor, 3, 2), speed, 0.0005 * speed);
  const uint16_t once = rotor.SpeedCounts({true, 0, 500, 3});
  EXPECT_EQ(rotor.SpeedCounts({true, 0, 500, 3}), once) << "one tick has one reading";
  bool scatters = false;
  for (int64_t tick = 501; tick < 520; ++tick) {
    scatters = scatters || rotor.SpeedCounts({true, 0, tick, 3}) != once;
  }
  EXPECT_TRUE(scatters);
  EXPECT_EQ(rotor.SpeedCounts({false, 0, 10000, 3}), 0);
}

TEST(OilRotor, AnOilThatNobodyDescribedTurnsAsUsual) {
  OilRotor rotor = MakeRotor();
  EXPECT_NEAR(MeanSpeed(rotor, 9), 0.24, 1e-9);
  EXPECT_NEAR(MeanSpeed(rotor, 0, 1000), 0.24, 1e-9);
}

TEST(OilRotor, TheSeedMakesTheNoise) {
  OilRotor first = MakeRotor(7), same = MakeRotor(7), other = MakeRotor(8);
  int differences = 0;
  for (int64_t tick = 0; tick < 50; ++tick) {
    const RotorConditions conditions{true, 0, tick, 3};
    const uint16_t counts = first.SpeedCounts(conditions);
    EXPECT_EQ(same.SpeedCounts(conditions), counts);
    if (other.SpeedCounts(conditions) != counts) ++differences;
    EXPECT_LE(std::abs(first.TemperatureNoise(tick)), 12);
  }
  EXPECT_GT(differences, 10);
}

TEST(OilRotor, TheBoardKeepsTheOilThatWasInjectedLast) {
  // Shows the number of the oil that it is given as the speed.
  class OilShower : public RotorModel {
   public:
    uint16_t SpeedCounts(const RotorConditions& conditions) override {
      return static_cast<uint16_t>(conditions.oil);
    }
  };
  platform::Event stop("test: stop");
  SimBoard board(stop, std::make_unique<OilShower>());
  board.outputs().sample = 3;
  board.AdvanceClock(false);
  EXPECT_EQ(board.RotorSpeedCounts(), 0) << "nothing was injected";
  board.outputs().injection = true;
  board.AdvanceClock(false);
  board.outputs().injection = false;
  board.outputs().sample = 5;
  board.AdvanceClock(false);
  EXPECT_EQ(board.RotorSpeedCounts(), 3);
}

TEST(OilRotor, TheOilIsAsColdAsTheCellAndNotAsItsReading) {
  // Shows the temperature that it is given as the speed, and adds noise to the probe.
  class NoisyProbe : public RotorModel {
   public:
    uint16_t SpeedCounts(const RotorConditions& conditions) override {
      return conditions.cellCounts;
    }
    int TemperatureNoise(int64_t /*tick*/) const override { return 100; }
  };
  platform::Event stop("test: stop");
  SimBoard board(stop, std::make_unique<NoisyProbe>());
  EXPECT_EQ(board.RotorSpeedCounts(), SimCell().actual);
  EXPECT_EQ(board.Cell().actual, SimCell().actual + 100);
}

}  // namespace
}  // namespace rvx::simulator
