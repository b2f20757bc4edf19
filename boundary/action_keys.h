// The actions of an instrument by number and by class key: what the host asks for and compares
// with, and what stored trays contain.
#pragma once

#include <array>
#include <cstdint>

namespace rvx {

// The places in the table of all actions (ViscometerInstrument::CreateActionByIndex).
enum ActionIndex : int32_t {
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

// The class key of each, which Action::GetClassName returns and CreateActionFromText takes. They
// are in the settings texts of archives and are never changed.
inline constexpr std::array<const char*, kActionCount> kActionClassKeys = {
    "Null Action",
    "RVX Measure Viscosity Action",
    "RVX Check Viscosity Action",
    "RVX Monitor Action",
    "RVX Set Motor Current Action",
    "RVX Stepper Motor Service Action",
    "RVX General Configuration",
    "RVX Test Configuration",
    "RVX Calib Configure",
    "RVX Cal Standards Configuration",
    "RVX Choose Calibration Standards",
    "RVX Precondition Motor Action",
    "RVX Move Stepper Action",
    "RVX Current Cell Calibrations",
    "RVX Setup",
    "RVX Sample List Action",
    "RVX Print Settings",
    "RVX Temperature Verification Action"};

// The key of the action in every empty tray position.
inline constexpr const char* kNullActionClassKey = kActionClassKeys[kNullAction];

// What the menus offer, in their order: the indexes of CreateConfigAction and CreateServiceAction.
inline constexpr std::array<ActionIndex, 8> kConfigActions = {
    kPrintConfigAction, kGeneralConfigAction, kTestConfigAction,      kCalibrationAction,
    kCalStandardAction, kPickStandardAction,  kCurrentCellCalsAction, kSetupAction};
inline constexpr std::array<ActionIndex, 5> kServiceActions = {
    kMonitorAction, kSamplesListAction, kSetMotorCurrentAction, kTempVerifyAction, kStepperAction};

// The kinds of CreateSampleAction. The first is Measure Viscosity, or Verify Known Viscosity on a
// cell without any constants, which can only run oils of known viscosity; the second is Verify
// Known Viscosity, and exists only on a cell with constants.
inline constexpr int32_t kEmptySampleKind = 0;
inline constexpr int32_t kFirstSampleKind = 1;
inline constexpr int32_t kSecondSampleKind = 2;

}  // namespace rvx
