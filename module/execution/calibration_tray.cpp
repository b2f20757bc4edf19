#include "module/execution/calibration_tray.h"

#include <memory>
#include <utility>

#include "boundary/access_levels.h"
#include "boundary/host.h"
#include "module/execution/visc_action.h"
#include "module/instrument/c_rvx.h"

namespace rvx {
namespace {

int32_t GetRotorTime(C_RVX& instrument) {
  ConfigurationGuard guard(instrument.configuration());
  return instrument.configuration().fields.testRecord.rotorOnTimes[0];
}

std::shared_ptr<Action> MakeStandardAction(C_RVX& instrument,
                                           const CalibrationTrayPosition& position) {
  // Without constants the first kind is the one for oils of known viscosity.
  const int32_t kind =
      instrument.HasCellConstants(kAnyTemperature) ? kSecondSampleKind : kFirstSampleKind;
  std::shared_ptr<Action> action(instrument.CreateSampleAction(kind));
  action->SetSampleId(position.sampleId);
  auto* sample = dynamic_cast<C_RVXViscAction*>(action.get());
  for (size_t i = 0; sample != nullptr && i < position.points.size(); ++i) {
    const CalibrationTrayPoint& point = position.points[i];
    sample->SetTestPoint(static_cast<int>(i), point.temperature, point.viscosity,
                         GetRotorTime(instrument));
  }
  return action;
}

}  // namespace

TrayFilling FillCalibrationTray(C_RVX& instrument, const CalibrationTrayPlan& plan) {
  if (GetSecurityManager()->GetAccessLevel() < kLevelOperator) return TrayFilling::NotAllowed;
  TrayOfSampleActions& tray = *instrument.GetTray(0);
  size_t size = 0;
  {
    TrayGuard guard(tray);
    size = static_cast<size_t>(tray.GetSize());
  }
  if (plan.positions.size() > size) return TrayFilling::TooLong;
  // Made before the tray's lock is taken: making an action waits for the user-interface thread.
  std::vector<std::shared_ptr<Action>> actions;
  for (size_t i = 0; i < size; ++i) {
    if (i < plan.positions.size()) {
      actions.push_back(MakeStandardAction(instrument, plan.positions[i]));
      continue;
    }
    actions.emplace_back(instrument.CreateSampleAction(kEmptySampleKind));
    actions.back()->SetSampleId("");
  }
  {
    TrayGuard guard(tray);
    actions = tray.ReplaceAll(std::move(actions));
  }
  for (const std::shared_ptr<Action>& removed : actions) removed->Stop();
  GetInstrumentManager()->NotifyInstrumentChanged();
  return TrayFilling::Done;
}

}  // namespace rvx
