// The instrument's status window.
#include "module/instrument/c_rvx.h"

namespace rvx {

WindowHandle* C_RVX::ShowStatusWindow(WindowHandle* parent) {
  platform::RecursiveGuard guard(statusWindowLock_);
  // A window that stands is the one that is answered; one that went with its parent is made anew.
  if (statusWindow_) {
    if (WindowHandle* open = statusWindow_->GetHandle()) return open;
  }
  const StatusWindowMaker maker = GetStatusWindowMaker();
  statusWindow_ = maker != nullptr ? maker(parent) : nullptr;
  hasStatusWindow_ = statusWindow_ != nullptr;
  if (!statusWindow_) return nullptr;
  statusWindow_->Refresh(ReadForStatusWindow());
  return statusWindow_->GetHandle();
}

void C_RVX::CloseStatusWindow() {
  platform::RecursiveGuard guard(statusWindowLock_);
  hasStatusWindow_ = false;
  statusWindow_.reset();
}

void C_RVX::RefreshStatusWindow() {
  if (!hasStatusWindow_) return;
  platform::RecursiveGuard guard(statusWindowLock_);
  if (statusWindow_) statusWindow_->Refresh(ReadForStatusWindow());
}

StatusReadings C_RVX::ReadForStatusWindow() {
  StatusReadings readings;
  {
    platform::PlainGuard guard(statusLock_);
    readings.received = statusSequence_ > 0;
    // A window that opens on a silent instrument must not show its last values as new.
    readings.time = statusTime_;
  }
  readings.temperature = GetTemperature();
  readings.targetTemperature = GetTargetTemperature();
  readings.speed = GetRotorSpeed();
  readings.countsDown = GetOperationTimer(readings.seconds) != 0;
  readings.machineStatusText = GetMachineStatusText(GetMachineStatus());
  return readings;
}

}  // namespace rvx
