// Which stored runs a calibration uses: the query to the sample archive.
#pragma once

#include <optional>
#include <string>

#include "platform/date.h"

namespace rvx {

// The archive's query for the runs of known viscosity of an instrument, oldest first. The id's
// blanks at both ends are dropped; it is matched by Like and is not escaped in the text, so the
// archive refuses a query whose id contains an apostrophe. `temperatureIndex` is a slot of
// kCalibrationTemperatures and selects the runs within 0.051 degrees C; without it all temperatures
// that the instrument offers are meant. Runs stamped `hours` or more before `now` (local time) are
// left out. The same text in every locale. Throws InvalidException for an index that is no slot.
std::string BuildCalibrationQuery(const std::string& instrumentId,
                                  std::optional<int> temperatureIndex, bool lowTemperatureOption,
                                  int hours, const platform::Date& now);

}  // namespace rvx
