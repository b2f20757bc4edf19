// The contents of the list of the current cell constants, without the widget.
#pragma once

#include <string>
#include <vector>

#include "module/instrument/configuration_record.h"

namespace rvx {

// The constants of one calibration temperature, with which viscosity = b0 / speed + b1 + b2 * speed
// (mPa*s, speed in rpm/1000).
struct CellConstantsRow {
  std::string temperature;  // degrees C, as the standards write it: "- 5", "-10"
  std::string b0, b1, b2;   // without decimals
  platform::Date date;      // of the calibration; 1 January 1938 if there was none yet

  bool operator==(const CellConstantsRow& other) const = default;
};

// One row for each temperature that the instrument offers, in the order of the slots. Takes the
// configuration lock for a copy, so that no row has constants of two calibrations.
std::vector<CellConstantsRow> ReadCellConstants(const ConfigurationRecord& configuration);

}  // namespace rvx
