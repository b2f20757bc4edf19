// The table of the actions that an instrument can make. The floors above fill it, so that the
// instrument knows no action class.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "boundary/action.h"

namespace rvx {

class C_RVX;

struct ActionTableEntry {
  std::string classKey;  // "RVX Measure Viscosity Action"
  std::unique_ptr<Action> (*make)(C_RVX& instrument);
};

// Eighteen entries in the order of ActionIndex.
using ActionTable = std::vector<ActionTableEntry>;

// The class key of the action that stands in every empty tray position.
inline constexpr char kNullActionClassKey[] = "Null Action";

enum ActionIndex : int {
  kNullAction = 0,
  kMeasureViscAction,
  kCheckViscAction,
  kMonitorAction,
  kSetMotorCurrentAction,
  kStepperAction,
  kGeneralConfigAction,
  kTestConfigAction,
  kCalibrationAction,
  kCalStandardAction,
  kPickStandardAction,
  kPreconditionMotorAction,
  kMoveStepperAction,
  kCurrentCellCalsAction,
  kSetupAction,
  kSamplesListAction,
  kPrintConfigAction,
  kTempVerifyAction,
  kActionCount
};

}  // namespace rvx
