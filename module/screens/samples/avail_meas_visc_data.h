// The entries that the tests of a Measure Viscosity action may have.
#pragma once

#include <string>
#include <vector>

#include "module/toolkit/editlist/available_data.h"

namespace rvx {

class C_RVXViscAction;

// Only temperatures at which the cell is calibrated can be chosen. Columns: temperature, rotor ON
// time.
class CAvailMeasViscData final : public CICAvailableData {
 public:
  // Collects the temperatures. `action` is not owned and must outlive it.
  explicit CAvailMeasViscData(C_RVXViscAction& action);

  std::string GetListItem(int row, int column, int index) override;
  std::string GetDefaultText(int row, int column) override;
  void GetDoubleRange(int row, int column, DoubleRange& range, int& decimals) override;
  void GetIntRange(int row, int column, IntRange& range) override;

 private:
  C_RVXViscAction& action_;
  std::vector<std::string> temperatures_;
};

}  // namespace rvx
