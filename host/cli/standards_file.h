// The calibration standards as a CSV file, and their stored text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/tray/csv.h"

namespace torvell {

// One certified value of one oil. Texts, as they are stored.
struct StandardRow {
  std::string name;
  std::string temperature;  // one of the temperature texts
  std::string viscosity;    // decimal text, mPa*s
  std::string lot;

  bool operator==(const StandardRow& other) const = default;
};

const std::vector<std::string>& StandardsFileHeading();

// Reads name,temperature,known viscosity,lot. When anything was added to `problems` the result must
// not be used. Temperatures are taken with and without a blank behind the sign, and with zeros
// behind the point; a second row of a name and temperature is refused, since the store drops it.
std::vector<StandardRow> ParseStandardsFile(std::string_view text,
                                            std::vector<FileProblem>& problems);
std::string FormatStandardsFile(const std::vector<StandardRow>& rows);

// The stored text's rows. Reading ends at a row without an end; rows of a name and temperature that
// came before are left out, as the instrument leaves them out.
std::vector<StandardRow> ParseStandardsText(std::string_view text);
std::string FormatStandardsText(const std::vector<StandardRow>& rows);

}  // namespace torvell
