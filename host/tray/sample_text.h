// Results of a sample as people read them.
#pragma once

#include <string>

#include "boundary/sample.h"
#include "host/tray/number_text.h"

namespace torvell {

// The temperature at which the test was to run, degrees C.
inline double TestTemperature(const rvx::Sample& sample) { return sample.constants[5]; }

// Returns the empty text for exactly 0, which means that a viscosity, speed or known viscosity is
// missing.
inline std::string OrMissing(double value, int decimals) {
  return value == 0.0 ? "" : FixedNumber(value, decimals);
}

// mPa*s with one decimal; empty without a result.
inline std::string ViscosityText(const rvx::Sample& sample) {
  return OrMissing(sample.viscosity, 1);
}

// Where a sample comes from, in a word.
inline const char* OriginText(bool simulated) { return simulated ? "simulated" : "instrument"; }

}  // namespace torvell
