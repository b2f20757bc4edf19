// The lines of the list of standards, and the effect of a pick on the action.
#pragma once

#include <string>
#include <vector>

namespace rvx {

class C_RVXViscAction;
class CStandardsMap;

// One standard at one temperature.
struct StandardLine {
  std::string name;
  std::string temperature;  // a temperature text, "- 5" to "-40"
  std::string text;         // as it is shown, "name (temperature)"
};

// The usable records of all standards, in the order of their names.
std::vector<StandardLine> GetStandardLines(const CStandardsMap& standards);

// Gives the action the name, and one test at the temperature with the standard's viscosity, which
// configures it. Returns false and changes nothing if the standard or its record does not exist any
// more or the action was started meanwhile. GUI thread.
bool ApplyStandard(C_RVXViscAction& action, const StandardLine& line);

}  // namespace rvx
