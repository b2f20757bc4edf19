#include "module/execution/action_classes.h"

#include <array>

#include "module/execution/check_visc_action.h"
#include "module/execution/measure_visc_action.h"
#include "module/execution/move_stepper_action.h"
#include "module/execution/null_action.h"
#include "module/execution/precondition_motor_action.h"
#include "module/execution/view_action.h"

namespace rvx {
namespace {

struct ScreenClass {
  ActionIndex index;
  int labelId;
  const char* classKey;
};

constexpr std::array kScreenClasses = {
    ScreenClass{kMonitorAction, 550, "RVX Monitor Action"},
    ScreenClass{kSetMotorCurrentAction, 552, "RVX Set Motor Current Action"},
    ScreenClass{kStepperAction, 551, "RVX Stepper Motor Service Action"},
    ScreenClass{kGeneralConfigAction, 603, "RVX General Configuration"},
    ScreenClass{kTestConfigAction, 604, "RVX Test Configuration"},
    ScreenClass{kCalibrationAction, 601, "RVX Calib Configure"},
    ScreenClass{kCalStandardAction, 612, "RVX Cal Standards Configuration"},
    ScreenClass{kPickStandardAction, 613, "RVX Choose Calibration Standards"},
    ScreenClass{kCurrentCellCalsAction, 607, "RVX Current Cell Calibrations"},
    ScreenClass{kSetupAction, 614, "RVX Setup"},
    ScreenClass{kSamplesListAction, 553, "RVX Sample List Action"},
    ScreenClass{kPrintConfigAction, 554, "RVX Print Settings"},
    ScreenClass{kTempVerifyAction, 555, "RVX Temperature Verification Action"},
};

// A table entry's function has no state of its own, so there is one for each screen class.
template <size_t kPlace>
std::unique_ptr<Action> MakeScreen(C_RVX& instrument) {
  constexpr const ScreenClass& kClass = kScreenClasses[kPlace];
  return std::make_unique<CScreenAction>(instrument, kClass.labelId, kClass.classKey);
}

template <class AnyAction>
std::unique_ptr<Action> MakeAction(C_RVX& instrument) {
  return std::make_unique<AnyAction>(instrument);
}

std::unique_ptr<Action> MakeNull(C_RVX& /*instrument*/) { return std::make_unique<CNullAction>(); }

template <class AnyAction>
void Fill(ActionTable& table, ActionIndex index) {
  table.at(index) = {AnyAction::kClassKey, MakeAction<AnyAction>};
}

template <size_t... kPlaces>
void FillScreens(ActionTable& table, std::index_sequence<kPlaces...> /*places*/) {
  ((table.at(kScreenClasses[kPlaces].index) = {kScreenClasses[kPlaces].classKey,
                                               MakeScreen<kPlaces>}),
   ...);
}

ActionTable MakeTable() {
  ActionTable table(kActionCount);
  table.at(kNullAction) = {CNullAction::kClassKey, MakeNull};
  Fill<CMeasureViscAction>(table, kMeasureViscAction);
  Fill<CCheckViscAction>(table, kCheckViscAction);
  Fill<CPreconditionMotorAction>(table, kPreconditionMotorAction);
  Fill<CMoveStepperAction>(table, kMoveStepperAction);
  FillScreens(table, std::make_index_sequence<kScreenClasses.size()>());
  return table;
}

}  // namespace

const ActionTable& GetActionTable() {
  static const ActionTable table = MakeTable();
  return table;
}

}  // namespace rvx
