#include "module/screens/samples/standard_choice.h"

#include "module/calibration/standards_map.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"

namespace rvx {

std::vector<StandardLine> GetStandardLines(const CStandardsMap& standards) {
  std::vector<StandardLine> lines;
  for (const std::string& name : standards.GetStandardNames()) {
    try {
      for (int32_t record = 0;; ++record) {
        const std::string temperature = standards.GetStandardTemperature(name, record);
        if (standards.GetStandardViscosity(name, record) <= 0.0) continue;
        lines.push_back({name, temperature, name + " (" + temperature + ")"});
      }
    } catch (InvalidException* end) {
      delete end;  // after the last record
    }
  }
  return lines;
}

bool ApplyStandard(C_RVXViscAction& action, const StandardLine& line) {
  const CStandardsMap* standards = action.instrument().GetStandards();
  if (standards == nullptr || action.IsRunning() != 0 || action.HasRun() != 0) return false;
  try {
    const int32_t record = standards->FindStandardTemperature(line.name, line.temperature);
    if (record < 0) return false;
    const std::string viscosity = standards->GetStandardViscosityText(line.name, record);
    action.SetSampleId(line.name);
    action.SetTestPoint(0, line.temperature, viscosity, -1);
    return true;
  } catch (InvalidException* gone) {
    delete gone;
    return false;
  }
}

}  // namespace rvx
