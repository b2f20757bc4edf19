// What the simulated instrument has in its tray.
#pragma once

#include <map>
#include <memory>
#include <string_view>

#include "module/simulator/oil_rotor.h"

namespace rvx {

// The rows of the stored text (boundary/simulated_oils_text.h) by tray position. Rows that are
// damaged or out of range are left out.
std::map<int, simulator::OilCurve> ParseSimulatedOils(std::string_view text);

// The rotor for the stored oils; null, which means the default rotor, when there are none or they
// can't be read. It converts the probe's readings to temperatures with the settings of a new
// instrument.
std::unique_ptr<simulator::RotorModel> MakeStoredRotor();

}  // namespace rvx
