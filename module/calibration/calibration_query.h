// Which stored runs a calibration rests on: the question to the sample archive.
#pragma once

#include <optional>
#include <string>

#include "platform/date.h"

namespace rvx {

// The archive's query for the runs of known viscosity of an instrument, oldest first. The id's
// blanks at both ends are dropped; it is matched by Like and stands unescaped in the text, so an
// apostrophe in it makes a query that the archive refuses. `temperatureIndex` is a slot of
// kCalibrationTemperatures, whose runs within 0.051 degrees C are meant; nothing stands for all
// temperatures that the instrument offers. Runs stamped `hours` or more before `now` (local time)
// are left out. The same text in every locale. InvalidException for an index that is no slot.
std::string BuildCalibrationQuery(const std::string& instrumentId,
                                  std::optional<int> temperatureIndex, bool lowTemperatureOption,
                                  int hours, const platform::Date& now);

}  // namespace rvx
