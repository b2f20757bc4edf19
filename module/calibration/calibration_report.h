// Texts and page rules of the printed report of a calibration; its rows are in calibration_cells.h.
// Lengths are whole hundredths of an inch. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rvx {

// What a calibration is for: "-20" (degrees C) for a slot of kCalibrationTemperatures, "All
// Temperatures" without a value. Throws InvalidException for an index that is no slot.
std::string CalibrationTargetText(std::optional<int> temperatureIndex);

// "RVX-A Mark 2" for the model code '1'; the empty text for a code that is none.
std::string ReportModelText(char modelCode);

// The constants of the temperature probe, with a point in every locale.
struct ProbeTexts {
  std::string a0, a1;  // six decimals
  std::string a2;      // nine decimals
};
ProbeTexts FormatProbeConstants(double a0, double a1, double a2);

// Lines of a page that is `pageHeight` high and whose printable area begins `topOffset` below its
// edge, with `lineStep` (1 and more) from one line to the next. Negative on a page of no room.
int32_t ReportLinesOfPage(int32_t pageHeight, int32_t topOffset, int32_t lineStep);

// Whether a page has no room for a further row. `y` is where the next one would be; it is 0 at the
// top of the page and negative below.
bool IsReportPageFull(int32_t y, int32_t lineStep, int32_t linesOfPage);

// Pages of a report of so many rows, `linesOfPage` (1 and more) lines to a page. The first page's
// block takes the room of 28 rows.
int32_t ReportPageCount(int32_t rows, int32_t linesOfPage);

// "Page 1 of 2".
std::string ReportPageText(int32_t page, int32_t pages);

}  // namespace rvx
