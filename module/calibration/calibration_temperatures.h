// The temperatures at which a cell is calibrated.
#pragma once

#include <array>

namespace rvx {

inline constexpr int kCalibrationSlots = 9;
// In degrees C; the index is the slot of the constants and the date.
inline constexpr std::array<double, kCalibrationSlots> kCalibrationTemperatures = {
    -5.0, -10.0, -15.0, -18.0, -20.0, -25.0, -30.0, -35.0, -40.0};

// How many of them an instrument offers: all with the low temperature option, else all but the
// coldest.
constexpr int CalibrationSlotCount(bool lowTemperatureOption) {
  return lowTemperatureOption ? kCalibrationSlots : kCalibrationSlots - 1;
}

}  // namespace rvx
