// Puts the constants of a calibration into force.
#pragma once

#include <optional>
#include <string>

#include "module/calibration/calibration_fit.h"
#include "platform/date.h"

namespace rvx {

class C_RVX;

struct SavedConstants {
  // Why nothing was changed, for people: the rights of the present user. Empty if they suffice.
  std::string refusal;
  CellConstantValues values;  // what the report prints and recalculates with
  platform::Date date;        // to be shown: the new one, or the old one when nothing was stored
  bool stored = false;
  std::string reason;  // from the archive, why it was not stored
};

// Checks the right to save: level 10 for one temperature, level 100 for all of them. Returns
// nothing if the present user has it; otherwise why not, for people.
std::optional<std::string> FindSaveRefusal(std::optional<int> temperatureIndex);

// Reads B0, B1 and B2 from their texts and puts them with the date `now` (local time) into a slot
// of kCalibrationTemperatures, or into all that the instrument offers; constants that are all
// exactly 0 get the date of a cell that was never calibrated. Then stores the instrument and tells
// the host. When the archive fails, `dateIndex` gets its old date back; constants and other dates
// are in force all the same, and closing the instrument stores them if the archive works by then.
// The caller tells the user, and may put the constants back. `dateIndex` is the temperature that a
// screen shows: the slot itself unless all are meant. Any thread. Without the right nothing is
// changed. Throws InvalidException for an index that is not a slot.
SavedConstants SaveCellConstants(C_RVX& instrument, std::optional<int> temperatureIndex,
                                 int dateIndex, const CalibrationTexts& texts,
                                 const platform::Date& now);

// The date of constants that were never calibrated.
inline platform::Date NeverCalibrated() { return platform::Date(1938, 1, 1); }

}  // namespace rvx
