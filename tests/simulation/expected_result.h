// What a stored sample must contain, computed from the frames on the line without the module's
// code.
#pragma once

#include <cstddef>
#include <vector>

#include "tests/simulation/line_reader.h"

namespace rvx::soak {

// The cell constants of the runs. The number of the slot is added to B0, so that a wrong slot
// shows.
inline constexpr double kB0 = 1000.0;
inline constexpr double kB1 = 10.0;
inline constexpr double kB2 = 0.5;
// Known viscosity of the oils that are verified, mPa*s.
inline constexpr double kKnownViscosity = 4321.0;
// Greatest distance of a settled cell from its target, degrees C.
inline constexpr double kSettled = 0.25;
// Part of the text of each planned failure of the archive.
inline constexpr char kArchiveFailure[] = "planned failure of the archive";

struct ExpectedResult {
  bool hasRun = false;       // there was a Run Test operation
  bool isWhole = false;      // it gave all readings
  double speed = 0.0;        // rpm/1000
  double temperature = 0.0;  // degrees C; only with steady supplies
};

// Computes the result from the status frames since the start of a test, in their order. `rotorTime`
// in seconds. The temperature is valid only with `suppliesSteady`.
ExpectedResult ExpectResult(const std::vector<SeenStatus>& frames, int rotorTime, char modelCode,
                            bool suppliesSteady);

// The slot of the calibration constants for an average temperature in degrees C. Never the ninth
// slot.
size_t SlotOf(double temperature);

}  // namespace rvx::soak
