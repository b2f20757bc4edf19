// The questions of a program about calibrations and the results (instrument_scripting.h).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "boundary/sample.h"
#include "platform/date.h"

namespace rvx {

// How old a run may be, in hours, as a person may ask for it.
inline constexpr int32_t kMinCalibrationHours = 1;
inline constexpr int32_t kMaxCalibrationHours = 366;
inline constexpr int32_t kUsualCalibrationHours = 4;

// Which runs of known viscosity a calibration is made of.
struct CalibrationQuestion {
  std::optional<double> temperature;  // a calibration temperature, degrees C; nothing: all of them
  int32_t hours = kUsualCalibrationHours;
  // Whether a run that was found takes part in the fit, called once for each run; null: all do.
  std::function<bool(const Sample&)> takesPart;
};

// One run with what the new constants make of it. The texts are those of the screen's list, with
// time and date in ISO 8601.
struct CalibrationRun {
  Sample sample;
  bool used = false;                   // took part in the fit
  double variationPercent = 0.0;       // of the speed readings; not a number if there are none
  std::optional<double> recalculated;  // mPa*s; nothing without a fit
  std::optional<double> percentDiff;   // of the recalculated and the known viscosity
  std::string speedText, variationText, knownText, viscosityText, recalculatedText, percentDiffText,
      temperatureText, timeText, dateText;
};

// The values as computed, and the texts in which a screen shows them. Runs are recalculated with
// the constants of the texts, and these are stored.
struct CalibrationFit {
  double b0 = 0.0, b1 = 0.0, b2 = 0.0, r = 0.0, stdDev = 0.0;
  std::string b0Text, b1Text, b2Text, rText, stdDevText;
};

struct CalibrationSummary {
  std::string targetText;            // "-20" (degrees C), or "All Temperatures"
  std::vector<CalibrationRun> runs;  // oldest first
  int32_t usedCount = 0;             // runs that took part in the fit
  // Nothing: fewer than three runs took part, or their equations have no solution.
  std::optional<CalibrationFit> fit;
  // Fewer than three different speeds took part: their equations have no meaningful solution, and a
  // fit that results from rounding must not be saved.
  bool hasTooFewSpeeds = false;
  std::optional<double> largestPercentDiff;       // of the runs that took part, with its sign
  std::optional<platform::Date> lastCalibration;  // local time; nothing: never, or all are meant
};

// Whether the stored standards allow a calibration at a temperature, by the groups of ASTM D5293.
struct ConformityOfTemperature {
  struct Lack {
    std::string group;   // "A", "B" or "C"
    std::string reason;  // for people
  };
  double temperature = 0.0;  // degrees C
  bool conforms = false;
  std::vector<std::string> standards;  // that take part, by name
  std::vector<Lack> lacks;             // empty if it conforms
};

struct ConformityReport {
  std::string groupFile;  // its path
  int32_t groupRows = 0;  // rows read from it; 0 also if it can't be read
  std::vector<ConformityOfTemperature> temperatures;
};

struct CalibrationTrayRequest {
  std::vector<double> temperatures;  // degrees C
  std::vector<std::string> only;     // names of the standards to be used; empty: all that take part
};

}  // namespace rvx
