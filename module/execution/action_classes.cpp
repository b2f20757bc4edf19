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
};

constexpr std::array kScreenClasses = {
    ScreenClass{kMonitorAction, 550},         ScreenClass{kSetMotorCurrentAction, 552},
    ScreenClass{kStepperAction, 551},         ScreenClass{kGeneralConfigAction, 603},
    ScreenClass{kTestConfigAction, 604},      ScreenClass{kCalibrationAction, 601},
    ScreenClass{kCalStandardAction, 612},     ScreenClass{kPickStandardAction, 613},
    ScreenClass{kCurrentCellCalsAction, 607}, ScreenClass{kSetupAction, 614},
    ScreenClass{kSamplesListAction, 553},     ScreenClass{kPrintConfigAction, 554},
    ScreenClass{kTempVerifyAction, 555},
};

// A table entry is a plain function without state, so each screen action needs its own.
template <size_t kPlace>
std::unique_ptr<Action> MakeScreen(C_RVX& instrument) {
  constexpr const ScreenClass& kClass = kScreenClasses[kPlace];
  return std::make_unique<CScreenAction>(instrument, kClass.index, kClass.labelId,
                                         kActionClassKeys[kClass.index]);
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
  ((table.at(kScreenClasses[kPlaces].index) = {kActionClassKeys[kScreenClasses[kPlaces].index],
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
