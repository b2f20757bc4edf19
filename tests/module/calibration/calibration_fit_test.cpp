#include "module/calibration/calibration_fit.h"

#include <gtest/gtest.h>

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "boundary/sample_constants.h"

namespace rvx {
namespace {

using Points = std::vector<CalibrationPoint>;

double TrueViscosity(double speed) { return 1103.6 / speed - 395.2 + 36.7 * speed; }

// Runs of a cell, with a reproducible error in each known viscosity.
Points MakePoints(size_t count, double slowest, double fastest, double error) {
  Points points;
  for (size_t i = 0; i < count; ++i) {
    const double part = static_cast<double>(i) / static_cast<double>(count - 1);
    const double speed = slowest * std::pow(fastest / slowest, part);
    const double sign = i % 3 == 0 ? 1.0 : i % 3 == 1 ? -0.6 : 0.3;
    points.push_back({speed, TrueViscosity(speed) * (1.0 + sign * error)});
  }
  return points;
}

// The same fit by another method: an orthogonal decomposition, in extended precision.
Eigen::Matrix<long double, 3, 1> FitByQr(const Points& points) {
  const auto rows = static_cast<Eigen::Index>(points.size());
  Eigen::Matrix<long double, Eigen::Dynamic, 3> matrix(rows, 3);
  Eigen::Matrix<long double, Eigen::Dynamic, 1> right(rows);
  for (Eigen::Index i = 0; i < rows; ++i) {
    const long double x = points[static_cast<size_t>(i)].speed;
    matrix.row(i) << 1.0L, x, x * x;
    right(i) = x * points[static_cast<size_t>(i)].knownViscosity;
  }
  return matrix.colPivHouseholderQr().solve(right);
}

// The number of decimal digits in which the fit's viscosity agrees with that of the other method,
// at the speed of the worst run. Wrong constants show to people as wrong viscosities.
double DigitsOfViscosity(const Points& points) {
  const auto fit = FitCalibrationConstants(points);
  const auto reference = FitByQr(points);
  double worst = 0.0;
  for (const CalibrationPoint& point : points) {
    const double other =
        static_cast<double>(reference(0) / point.speed + reference(1) + reference(2) * point.speed);
    const double mine = RecalculateViscosity(fit->b0, fit->b1, fit->b2, point.speed);
    worst = std::max(worst, std::fabs(mine - other) / std::fabs(other));
  }
  return worst == 0.0 ? 16.0 : -std::log10(worst);
}

TEST(CalibrationFit, PassesThroughThreePoints) {
  const Points points = {{0.05, 22000.0}, {0.2, 5100.0}, {0.6, 1500.0}};
  const auto fit = FitCalibrationConstants(points);
  ASSERT_TRUE(fit);
  for (const CalibrationPoint& point : points) {
    EXPECT_NEAR(RecalculateViscosity(fit->b0, fit->b1, fit->b2, point.speed), point.knownViscosity,
                1e-6);
  }
  EXPECT_EQ(FormatFit(*fit).r, "1.000000");
  EXPECT_EQ(FormatFit(*fit).stdDev, "0.00");
}

// The figures were worked out by hand with exact fractions: z = 1 + 2 x + 3 x^2 with the errors +1,
// -1, -1, +1 at x = 1, 2, 3, 4, to which the nearest parabola is z = 6 - 3 x + 4 x^2.
TEST(CalibrationFit, GivesTheLeastSquares) {
  const double z[] = {7.0, 16.0, 33.0, 58.0};
  Points points;
  for (int x = 1; x <= 4; ++x) points.push_back({double(x), z[x - 1] / x});
  const auto fit = FitCalibrationConstants(points);
  ASSERT_TRUE(fit);
  EXPECT_NEAR(fit->b0, 6.0, 1e-9);
  EXPECT_NEAR(fit->b1, -3.0, 1e-9);
  EXPECT_NEAR(fit->b2, 4.0, 1e-9);
  // One more point, off by 5: the standard deviation has the unit of z.
  points.push_back({2.5, (6.0 - 7.5 + 25.0 + 5.0) / 2.5});
  const auto other = FitCalibrationConstants(points);
  const auto reference = FitByQr(points);
  EXPECT_NEAR(other->b0, double(reference(0)), 1e-8);
  double squares = 0.0, mean = 0.0, total = 0.0;
  for (const auto& p : points) mean += p.speed * p.knownViscosity / 5.0;
  for (const auto& p : points) {
    const double value = p.speed * p.knownViscosity;
    const double fitted = other->b0 + other->b1 * p.speed + other->b2 * p.speed * p.speed;
    squares += (value - fitted) * (value - fitted);
    total += (value - mean) * (value - mean);
  }
  EXPECT_NEAR(other->stdDev, std::sqrt(squares / 5.0), 1e-7);
  EXPECT_NEAR(other->r, std::sqrt(1.0 - squares / total), 1e-9);
}

TEST(CalibrationFit, NothingFromTooFewPointsOrOneSpeed) {
  EXPECT_FALSE(FitCalibrationConstants({}));
  EXPECT_FALSE(FitCalibrationConstants({{0.1, 5000.0}, {0.2, 3000.0}}));
  EXPECT_FALSE(FitCalibrationConstants({{0.25, 5000.0}, {0.25, 3000.0}, {0.25, 4000.0}}));
  // Whether equal speeds cancel to exactly 0 is an accident of their last digits, so different
  // speeds are counted: saving a fit requires three.
  for (const double factor : {1.0, 3.0, 4.0, 5.0}) {
    const double speed = 0.24 * factor;
    EXPECT_EQ(CountDifferentSpeeds({{speed, 5000.0}, {speed, 3000.0}, {speed, 4000.0}}), 1);
  }
  EXPECT_EQ(CountDifferentSpeeds({{0.24, 1.0}, {0.48, 1.0}, {0.24, 2.0}}), 2);
  EXPECT_EQ(CountDifferentSpeeds({{0.24, 1.0}, {0.48, 1.0}, {0.6, 1.0}, {0.1, 1.0}}), 3);
  EXPECT_EQ(CountDifferentSpeeds({}), 0);
  // Points that are not numbers give constants that are not numbers, and no crash.
  const auto fit = FitCalibrationConstants({{NAN, 1.0}, {0.2, 2.0}, {0.3, 3.0}});
  ASSERT_TRUE(fit);
  EXPECT_TRUE(std::isnan(fit->b0));
  EXPECT_EQ(FormatFit({-NAN, NAN, 1.0, -NAN, 0.0}).b0, "nan");
  EXPECT_EQ(FormatFit({1.0, 1.0, 1.0, -NAN, -NAN}).stdDev, "nan");
}

TEST(CalibrationFit, IsRecalculatedWithWhatIsShown) {
  const CalibrationTexts texts = FormatFit({123456.7, -400.5, 2.49, 0.99999949, 1.005});
  EXPECT_EQ(texts.b0, "123457");
  EXPECT_EQ(texts.b1, "-400");
  EXPECT_EQ(texts.b2, "2");
  EXPECT_EQ(texts.r, "0.999999");
  EXPECT_EQ(ConstantsOf(texts).b0, 123457.0);
  EXPECT_EQ(RecalculateViscosity(123457.0, -400.0, 2.0, 0.5), 246515.0);
  // Constants that were typed over are used as typed.
  EXPECT_EQ(ConstantsOf({"1100.5", "x", "", "", ""}).b0, 1100.5);
  EXPECT_EQ(ConstantsOf({"1100.5", "x", "", "", ""}).b1, 0.0);
}

TEST(CalibrationFit, SpeedVariationIsThatOfTheStoredReadings) {
  Sample sample;
  sample.speed = 0.2;
  sample.constants[kConstantAveragingCount] = 4.9;  // cut to a whole number
  const double readings[] = {0.19, 0.21, 0.19, 0.21, 99.0};
  std::copy(std::begin(readings), std::end(readings),
            sample.constants.begin() + kConstantFirstSpeed);
  EXPECT_NEAR(SpeedVariationPercent(sample), 5.0, 1e-9);
  sample.constants[kConstantAveragingCount] = 1e300;
  EXPECT_GT(SpeedVariationPercent(sample), 0.0);
  for (const double none : {0.0, -3.0, double(NAN)}) {
    sample.constants[kConstantAveragingCount] = none;
    EXPECT_TRUE(std::isnan(SpeedVariationPercent(sample)));
  }
}

// ARCHITECTURE.md gives the digits. Measured against the other method, they must not become fewer.
TEST(CalibrationFit, CanBeTrustedOverTheSpeedsOfTheInstrument) {
  struct Case {
    const char* what;
    Points points;
    double digits;
  };
  const Case cases[] = {
      {"whole range, 10 runs", MakePoints(10, 0.02, 0.8, 0.005), 12.5},
      {"whole range, 10,000 runs", MakePoints(10000, 0.02, 0.8, 0.005), 12.5},
      {"fast third", MakePoints(10, 0.4, 0.8, 0.005), 10.0},
      {"slow third", MakePoints(10, 0.02, 0.06, 0.005), 11.5},
      {"within 10 %", MakePoints(10, 0.2, 0.22, 0.005), 5.5},
      {"within 1 %", MakePoints(10, 0.2, 0.202, 0.005), 0.5},
  };
  for (const Case& each : cases) {
    const double digits = DigitsOfViscosity(each.points);
    std::printf("%-26s %.1f digits\n", each.what, digits);
    EXPECT_GE(digits, each.digits) << each.what;
  }
}

}  // namespace
}  // namespace rvx
