// The oils of the simulated instrument as a CSV file, and their stored text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/cli/standards_file.h"
#include "host/tray/csv.h"

namespace torvell {

// The true viscosity of the oil in a tray position at a temperature.
struct OilRow {
  int position = 0;          // from 1
  double temperature = 0.0;  // degrees C, -45 to 25
  double viscosity = 0.0;    // mPa*s, 100 to 1000000

  bool operator==(const OilRow& other) const = default;
};

// Reads position,temperature,true viscosity. The name of a stored standard may take the place of a
// viscosity: then the standard's value at that temperature is used, or all its values if the
// temperature is empty. A text that is both a name and a number is taken as the name. The result
// must not be used if anything was added to `problems`.
std::vector<OilRow> ParseOilsFile(std::string_view text, const std::vector<StandardRow>& standards,
                                  std::vector<FileProblem>& problems);

std::vector<OilRow> ParseOilsText(std::string_view text);
std::string FormatOilsText(const std::vector<OilRow>& rows);

}  // namespace torvell
