#include "module/calibration/calibration_fit.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "boundary/sample_constants.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int kMinPoints = 3;
constexpr double kPercent = 100.0;

// x is the speed, z the viscosity times the speed, which makes the equation a polynomial.
struct Sums {
  int n = 0;
  double x = 0.0, x2 = 0.0, x3 = 0.0, x4 = 0.0;
  double z = 0.0, xz = 0.0, x2z = 0.0, zz = 0.0;

  void Add(const CalibrationPoint& point) {
    const double speed = point.speed;
    const double square = speed * speed;
    const double product = speed * point.knownViscosity;
    ++n;
    x += speed;
    x2 += square;
    x3 += square * speed;
    x4 += square * square;
    z += product;
    xz += speed * product;
    x2z += square * product;
    zz += product * product;
  }
};

}  // namespace

CalibrationPoint PointOf(const Sample& sample) {
  return {sample.speed, sample.constants[kConstantKnownViscosity]};
}

int CountDifferentSpeeds(const std::vector<CalibrationPoint>& points) {
  std::vector<double> speeds;
  for (const CalibrationPoint& point : points) {
    if (std::find(speeds.begin(), speeds.end(), point.speed) == speeds.end() &&
        !std::isnan(point.speed)) {
      speeds.push_back(point.speed);
    }
    if (speeds.size() == kMinSpeeds) break;
  }
  return static_cast<int>(speeds.size());
}

// Cramer's rule over the normal equations, in this very order of operations: laboratories compare
// constants with those of earlier calibrations to the last digit shown.
std::optional<CalibrationFitResult> FitCalibrationConstants(
    const std::vector<CalibrationPoint>& points) {
  Sums s;
  for (const CalibrationPoint& point : points) s.Add(point);
  if (s.n < kMinPoints) return std::nullopt;
  const double a = s.x4 * s.x2 - s.x3 * s.x3;
  const double c1 = s.x4 * s.x - s.x3 * s.x2;
  const double c2 = s.x3 * s.x - s.x2 * s.x2;
  const double determinant = s.n * a - c1 * s.x + c2 * s.x2;
  // No tolerance: points that are nearly of one speed give constants, and their scatter shows.
  if (determinant == 0.0) return std::nullopt;
  CalibrationFitResult fit;
  fit.b0 = (a * s.z - c1 * s.xz + c2 * s.x2z) / determinant;
  fit.b1 = (s.n * (s.xz * s.x4 - s.x2z * s.x3) - s.x * (s.z * s.x4 - s.x2z * s.x2) +
            s.x2 * (s.z * s.x3 - s.xz * s.x2)) /
           determinant;
  fit.b2 = (s.n * (s.x2z * s.x2 - s.xz * s.x3) - s.x * (s.x2z * s.x - s.z * s.x3) +
            s.x2 * (s.xz * s.x - s.z * s.x2)) /
           determinant;
  const double explained = fit.b0 * s.z + fit.b1 * s.xz + fit.b2 * s.x2z;
  fit.stdDev = std::sqrt(std::fabs((s.zz - fit.b0 * s.z - fit.b1 * s.xz - fit.b2 * s.x2z) / s.n));
  const double q = s.z * s.z / s.n;
  fit.r = std::sqrt(std::fabs((explained - q) / (s.zz - q)));
  return fit;
}

CalibrationTexts FormatFit(const CalibrationFitResult& fit) {
  return {TextOrNan(fit.b0, platform::FormatText("%.f", fit.b0)),
          TextOrNan(fit.b1, platform::FormatText("%.f", fit.b1)),
          TextOrNan(fit.b2, platform::FormatText("%.f", fit.b2)),
          TextOrNan(fit.r, platform::FormatText("%.6f", fit.r)),
          TextOrNan(fit.stdDev, platform::FormatText("%.2f", fit.stdDev))};
}

std::string TextOrNan(double value, std::string text) {
  return std::isnan(value) ? "nan" : std::move(text);
}

CellConstantValues ConstantsOf(const CalibrationTexts& texts) {
  return {platform::ParseLeadingDouble(texts.b0), platform::ParseLeadingDouble(texts.b1),
          platform::ParseLeadingDouble(texts.b2)};
}

double RecalculateViscosity(double b0, double b1, double b2, double speed) {
  return b0 / speed + b1 + b2 * speed;
}

double PercentDiff(double recalculated, double known) {
  return (recalculated - known) / known * kPercent;
}

double SpeedVariationPercent(const Sample& sample) {
  // The count is a stored column and may be damaged, so no more readings are read than there are.
  const double stored = sample.constants[kConstantAveragingCount];
  const int n = stored > 0.0 ? static_cast<int>(std::min<double>(stored, kStoredSpeeds)) : 0;
  double squares = 0.0;
  for (int i = 0; i < n; ++i) {
    const double reading = sample.constants[kConstantFirstSpeed + static_cast<size_t>(i)];
    squares += reading * reading;
  }
  const double mean = sample.speed;
  return std::sqrt(std::fabs((squares - n * mean * mean) / n)) / mean * kPercent;
}

}  // namespace rvx
