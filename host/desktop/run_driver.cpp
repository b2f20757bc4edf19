#include "host/desktop/run_driver.h"

#include "host/desktop/abort_consent.h"

namespace torvell {

std::vector<TrayPosition> InstrumentRun::Start() {
  std::vector<TrayPosition> plan = ReadTray(entry_);
  runner_ = host_.StartTray(entry_, &recorder_);
  return plan;
}

void InstrumentRun::PauseAfterSample() {
  if (runner_) runner_->PauseAfterSample();
}

void InstrumentRun::PauseNow() {
  if (runner_) runner_->PauseNow();
}

void InstrumentRun::Resume() {
  if (runner_) runner_->Resume();
}

bool InstrumentRun::Abort() {
  const AbortConsent::Scope yes;
  return runner_ && !runner_->HasFinished() && runner_->Abort();
}

}  // namespace torvell
