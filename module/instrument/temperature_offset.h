// The temperature offset of an instrument that nobody has set up otherwise.
#pragma once

namespace rvx {

// Given to a model "3" or "4" whose stored offset is exactly 0; degrees C.
inline constexpr double kUsualTemperatureOffset = 0.12;

}  // namespace rvx
