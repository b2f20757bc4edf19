// The stored text of the calibration standards in the analysis archive. Host and module both read
// and write it, so its form belongs to their boundary.
#pragma once

namespace rvx {

inline constexpr char kStandardsArchiveName[] = "Standards.RVX Oil Standards";
inline constexpr char kStandardsSection[] = "RVX Standards";

// One row: name, temperature text, known viscosity (decimal text, mPa*s), lot, each followed by the
// cell end, then the row end. No heading, no count; rows of one name need not be adjacent.
inline constexpr char kStandardsCellEnd = '\x0B';
inline constexpr char kStandardsRowEnd = '\r';

// The temperature texts, compared as exact text; the first has a blank between sign and digit. The
// ninth counts only on an instrument with the low temperature option.
inline constexpr const char* kTemperatureTexts[9] = {"- 5", "-10", "-15", "-18", "-20",
                                                     "-25", "-30", "-35", "-40"};

}  // namespace rvx
