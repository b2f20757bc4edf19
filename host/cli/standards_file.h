// The calibration standards as a CSV file, and their stored text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/tray/csv.h"

namespace torvell {

// One certified value of one oil, as texts, since they are stored as texts.
struct StandardRow {
  std::string name;
  std::string temperature;  // one of the temperature texts
  std::string viscosity;    // decimal text, mPa*s
  std::string lot;

  bool operator==(const StandardRow& other) const = default;
};

const std::vector<std::string>& StandardsFileHeading();

// Reads name,temperature,known viscosity,lot. Temperatures may have a blank after the sign, and
// zeros at the end of their decimals. A second row of a name and temperature is refused, since the
// store drops it. The result must not be used if anything was added to `problems`.
std::vector<StandardRow> ParseStandardsFile(std::string_view text,
                                            std::vector<FileProblem>& problems);
std::string FormatStandardsFile(const std::vector<StandardRow>& rows);

// Reads the stored text. Reading ends at a row without an end; a repeated row of a name and
// temperature is left out, as the instrument does.
std::vector<StandardRow> ParseStandardsText(std::string_view text);
std::string FormatStandardsText(const std::vector<StandardRow>& rows);

}  // namespace torvell
