// A run as a calibration's list and its printed report show it: figures with a point in every
// locale, its date and time in a form that the caller chooses.
#pragma once

#include <functional>
#include <string>

#include "module/calibration/calibration_fit.h"
#include "platform/date.h"

namespace rvx {

// How a valid date and time is written: as in the user's locale on a screen and on paper.
struct MomentFormat {
  std::function<std::string(const platform::Date&)> time;  // of day
  std::function<std::string(const platform::Date&)> date;
};
// "16:05:06" and "2026-01-31", in every locale.
MomentFormat IsoMomentFormat();

// A row of the list.
struct CalibrationListCells {
  std::string sampleId;
  std::string time;            // empty for a null date, "Invalid DateTime" for an invalid one
  std::string speed;           // rpm/1000
  std::string variation;       // per cent
  std::string knownViscosity;  // mPa*s
  std::string viscosity;       // mPa*s, as calculated during the run
  std::string recalculated;    // mPa*s; empty without constants
  std::string percentDiff;     // per cent, with its sign; empty without constants
  std::string temperature;     // degrees C
  std::string date;            // as `time`
  std::string origin;          // "simulated", or empty for a run of an instrument
};
// `constants` null: the two columns of the recalculation stay empty.
CalibrationListCells FormatListCells(const Sample& sample, const CellConstantValues* constants,
                                     const MomentFormat& moment);

// The same row in the report, which has fewer decimals and cuts the sample id to 21 characters.
CalibrationListCells FormatReportCells(const Sample& sample, const CellConstantValues& constants,
                                       const MomentFormat& moment);

}  // namespace rvx
