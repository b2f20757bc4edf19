// What a stored sample must say, worked out anew from the frames on the line.
#pragma once

#include <cstddef>
#include <vector>

#include "tests/simulation/line_reader.h"

namespace rvx::soak {

// The constants of every slot: B0 tells the slot, so that a wrong one shows.
inline constexpr double kB0 = 1000.0;
inline constexpr double kB1 = 10.0;
inline constexpr double kB2 = 0.5;
// mPa*s, of the oils that are verified.
inline constexpr double kKnownViscosity = 4321.0;
// A cell counts as settled this near to its target, in degrees C.
inline constexpr double kSettled = 0.25;
// In the text of each planned failure of the archive.
inline constexpr char kArchiveFailure[] = "planned failure of the archive";

struct ExpectedResult {
  bool hasRun = false;       // there was a Run Test operation
  bool isWhole = false;      // it lasted for all readings
  double speed = 0.0;        // rpm/1000
  double temperature = 0.0;  // degrees C; only with steady supplies
};

// From the status frames since the start of a test, in their order.
ExpectedResult ExpectResult(const std::vector<SeenStatus>& frames, int rotorTime, char modelCode,
                            bool suppliesSteady);

// The slot of the calibration constants for an average temperature, without the ninth.
size_t SlotOf(double temperature);

}  // namespace rvx::soak
