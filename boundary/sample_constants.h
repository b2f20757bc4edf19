// What the columns "Constant n" of a stored run hold.
#pragma once

#include <cstddef>

#include "boundary/sample.h"

namespace rvx {

// Indexes of Sample::constants.
enum SampleConstant : size_t {
  kConstantB0 = 0,
  kConstantB1 = 1,
  kConstantB2 = 2,
  kConstantAveragingCount = 3,   // 0: the readings were too few
  kConstantKnownViscosity = 4,   // mPa*s; 0: none
  kConstantTestTemperature = 5,  // degrees C
  kConstantRotorOnTime = 6,      // s
  kConstantFirstSpeed = 20       // the averaged speeds, latest first, to "Constant 40"
};
inline constexpr int kStoredSpeeds = kSampleConstants - static_cast<int>(kConstantFirstSpeed);

// `Serial Number` of every sample of the simulated instrument, which says so itself.
inline constexpr char kSimulatorSerialNumber[] = "Simulator";

// `Known Viscosity` of every sample of this module, by which a query finds them.
inline constexpr double kModuleMark = -2.0;

}  // namespace rvx
