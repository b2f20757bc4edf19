// The oils that the simulated instrument finds in its tray: a text in the analysis archive that the
// host writes and the module reads whenever it makes a simulator.
#pragma once

namespace rvx {

inline constexpr char kSimulatedOilsArchiveName[] = "Simulator.RVX Oils";
inline constexpr char kSimulatedOilsSection[] = "RVX Simulated Oils";

// One row: tray position (from 1), temperature (degrees C), true viscosity (mPa*s), each a decimal
// number with a point, followed by the cell end, then the row end (standards_text.h). The empty
// text: no oils; the rotor turns at one speed in everything.

}  // namespace rvx
