// The constants of a cell from runs of oils of known viscosity:
//
//   viscosity = B0 / speed + B1 + B2 * speed
//
// Plain arithmetic without state or lock; any thread. Viscosities are in mPa*s, speeds in rpm/1000.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "boundary/sample.h"

namespace rvx {

// The values of a run that the fit uses.
struct CalibrationPoint {
  double speed = 0.0;           // rpm/1000
  double knownViscosity = 0.0;  // mPa*s
};
CalibrationPoint PointOf(const Sample& sample);

// With fewer different speeds than this the constants mean nothing: other constants fit the same
// points as well, and the fit returns some only because its arithmetic is not exact.
inline constexpr int kMinSpeeds = 3;
// Stops counting at that number.
int CountDifferentSpeeds(const std::vector<CalibrationPoint>& points);

struct CellConstantValues {
  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
};

struct CalibrationFitResult {
  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
  double r = 0.0;       // correlation, 0 to 1
  double stdDev = 0.0;  // of viscosity * speed
};

// The least squares fit, with the sums in the order of the points. Nothing for fewer than three
// points, or if the determinant of the normal equations is exactly 0. Points of too few different
// speeds need not give a determinant of 0, so call CountDifferentSpeeds too. R is not a number when
// all points have one viscosity * speed; points that are not finite give results that are not
// finite.
std::optional<CalibrationFitResult> FitCalibrationConstants(
    const std::vector<CalibrationPoint>& points);

// A result as the fields of a screen show it, with a point in every locale. Recalculation and
// storing use the constants of these texts, so everybody who sees them can repeat the figures.
struct CalibrationTexts {
  std::string b0, b1, b2;  // whole numbers when they come from a fit; as typed otherwise
  std::string r;           // six decimals
  std::string stdDev;      // two decimals
};
CalibrationTexts FormatFit(const CalibrationFitResult& fit);
// 0 for a text that is no number.
CellConstantValues ConstantsOf(const CalibrationTexts& texts);

// The text of a value, or "nan" for one that is not a number: the C library would write its sign,
// which means nothing.
std::string TextOrNan(double value, std::string text);

// mPa*s; infinite for a speed of 0.
double RecalculateViscosity(double b0, double b1, double b2, double speed);
// How far a viscosity is off a known one, in per cent; not finite for a known viscosity of 0.
double PercentDiff(double recalculated, double known);
// How far the stored speed readings of a run scatter about its average, in per cent of it. Not a
// number for a run without readings or of speed 0.
double SpeedVariationPercent(const Sample& sample);

}  // namespace rvx
