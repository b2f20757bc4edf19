// The entries that the tests of a Verify Known Viscosity action may have.
#pragma once

#include <string>

#include "module/toolkit/editlist/available_data.h"

namespace rvx {

class C_RVXViscAction;
class EditTable;

// A sample id that names a standard offers the temperatures at which that standard has a usable
// viscosity, and takes the viscosity from the store; any other sample id offers all temperatures.
// Columns: temperature, known viscosity, rotor ON time. GUI thread.
class CAvailChkViscData final : public CICAvailableData {
 public:
  // Neither is owned; both must outlive it. `table` is the table that uses this object.
  CAvailChkViscData(C_RVXViscAction& action, const EditTable& table)
      : action_(action), table_(table) {}

  std::string GetListItem(int row, int column, int index) override;
  std::string GetDefaultText(int row, int column) override;
  void GetDoubleRange(int row, int column, DoubleRange& range, int& decimals) override;
  void GetIntRange(int row, int column, IntRange& range) override;

 private:
  std::string GetDefaultViscosity(int row);

  C_RVXViscAction& action_;
  const EditTable& table_;
};

}  // namespace rvx
