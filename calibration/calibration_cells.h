// The figures of a run as a calibration's list and its printed report show them: texts with a point
// in every locale. Times and dates are left to whoever shows them.
#pragma once

#include <cstdint>
#include <string>

#include "calibration/calibration_fit.h"

namespace rvx {

// A row of the list.
struct CalibrationListCells {
  std::string sampleId;
  std::string speed;           // rpm/1000
  std::string variation;       // per cent
  std::string knownViscosity;  // mPa*s
  std::string viscosity;       // mPa*s, as calculated during the run
  std::string recalculated;    // mPa*s; empty without constants
  std::string percentDiff;     // per cent, with its sign; empty without constants
  std::string temperature;     // degrees C
};
// `constants` null: the two columns of the recalculation stay empty.
CalibrationListCells FormatListCells(const Sample& sample, const CellConstantValues* constants);

// The same row in the report, which has fewer decimals and cuts the sample id to 21 characters.
CalibrationListCells FormatReportCells(const Sample& sample, const CellConstantValues& constants);

// "RVX-A Mark 2" for the model code '1'; the empty text for a code that is none.
std::string ReportModelText(char modelCode);

// Pages of a report of so many rows, `linesOfPage` (1 and more) lines to a page. The first page's
// block takes the room of 28 rows.
int32_t ReportPageCount(int32_t rows, int32_t linesOfPage);

}  // namespace rvx
