#include "module/instrument/tray_thread.h"

#include <memory>

#include "module/instrument/c_rvx.h"
#include "module/resources/string_ids.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr platform::Milliseconds kBetweenPositions{1000};

bool IsEmptyPosition(Action& action) { return action.GetClassName() == kNullActionClassKey; }

}  // namespace

void TrayThread::Run() {
  if (!HasFilledPosition()) {
    controller_.Abort();
    return;
  }
  {
    platform::RecursiveGuard guard(run_->lock);
    run_->Tell("TrayStarted", &TrayWatcher::TrayStarted, 0);
  }
  PromptForCheckStandard();
  // Each returns false when the run was aborted: Abort has done the rest then.
  if (RunOwnAction(kPreconditionMotorAction, platform::Milliseconds(0)) && RunPositions() &&
      RunOwnAction(kMoveStepperAction, kBetweenPositions)) {
    Finish();
  }
}

bool TrayThread::HasFilledPosition() {
  platform::RecursiveGuard guard(run_->lock);
  if (run_->instrument == nullptr) return true;  // aborted already: nothing left to end
  TrayOfSampleActions* tray = instrument_.GetTray(0);
  TrayGuard trayGuard(*tray);
  for (int32_t position = 0; position < tray->GetSize(); ++position) {
    if (!IsEmptyPosition(*tray->GetAt(position))) return true;
  }
  return false;
}

void TrayThread::PromptForCheckStandard() {
  {
    platform::RecursiveGuard guard(run_->lock);
    if (run_->instrument == nullptr) return;
  }
  bool wanted = false;
  int32_t interval = 0;
  int32_t samples = 0;
  {
    const ConfigurationGuard guard(instrument_.configuration());
    ConfigurationFields& fields = instrument_.configuration().fields;
    wanted = fields.checkStandardFlag != 0;
    interval = fields.checkStandardInterval;
    samples = fields.samplesSinceCheck;
  }
  if (!wanted || interval > samples) return;
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  const bool checkedOnce = samples < kNeverChecked;
  record.message = checkedOnce ? instrument_.FormatCheckStandardDue(samples)
                               : instrument_.Text(kTextCheckStandardNeverRun);
  record.code = checkedOnce ? MessageCode::CheckStandardDue : MessageCode::CheckStandardNeverRun;
  C_RVX::ReportError(record);
}

bool TrayThread::RunOwnAction(int actionIndex, platform::Milliseconds sleepBefore) {
  static const std::string kContext = "0,0";
  run_->inStage = true;
  const std::unique_ptr<Action> action(instrument_.CreateActionByIndex(actionIndex));
  for (;;) {
    if (!SleepUnlessAborted(sleepBefore)) return false;
    CActionWatcher watcher(*run_);
    Wait end = Wait::PauseNow;
    switch (StartAction(*action, watcher, kContext, 0, 0)) {
      case StartResult::Started:
        end = WaitForAction(watcher);
        break;
      case StartResult::NotReady:
        break;
      case StartResult::GoOn:
      case StartResult::LeaveStage:
        run_->inStage = false;
        return true;
      case StartResult::Aborted:
        return false;
    }
    action->Stop();
    if (end == Wait::Aborted) return false;
    if (end == Wait::Finished) break;
    if (!PauseBlock()) return false;
  }
  run_->inStage = false;
  return true;
}

bool TrayThread::RunPositions() {
  for (int32_t position = 0;; ++position) {
    if (!SleepUnlessAborted(kBetweenPositions)) return false;
    const std::shared_ptr<Action> action = HoldPosition(position);
    if (!action) return true;  // past the last position
    CActionWatcher watcher(*run_);
    const std::string context = platform::FormatText("0,%d", position);
    Wait end = Wait::PauseNow;
    switch (StartAction(*action, watcher, context, 1, position + 1)) {
      case StartResult::Started:
        end = WaitForAction(watcher);
        break;
      case StartResult::NotReady:
        break;
      case StartResult::GoOn:
        continue;
      case StartResult::LeaveStage:
        return true;
      case StartResult::Aborted:
        return false;
    }
    // Also after a normal end: waits until the run of the action's thread is over, so that no run
    // is in progress while the watcher is called.
    action->Stop();
    if (end == Wait::Aborted) return false;
    if (end == Wait::PauseNow) {
      if (action->GetRunResult() < 1) --position;  // not completed: it will run again
      if (!PauseBlock()) return false;
      continue;
    }
    TellSampleFinished(position);
    if (OnlyEmptyBehind(position)) return true;
    if (run_->pauseAfter.TryWait() && !PauseBlock()) return false;
  }
}

void TrayThread::Finish() {
  std::vector<std::shared_ptr<Action>> empty = instrument_.MakeEmptyTray();
  std::vector<std::shared_ptr<Action>> removed;
  TrayWatcher* watcher = nullptr;
  {
    platform::RecursiveGuard guard(run_->lock);
    if (run_->instrument == nullptr) return;
    // Before the run is forgotten: a host that sees no run any more may fill the tray anew.
    removed = instrument_.EmptyTray(std::move(empty));
    {
      const ConfigurationGuard configurationGuard(instrument_.configuration());
      instrument_.configuration().fields.runFlags &= ~static_cast<uint32_t>(kTrayRunning);
    }
    controller_.ForgetRun(run_.get());
    watcher = std::exchange(run_->watcher, nullptr);
    run_->instrument = nullptr;
  }
  removed.clear();
  if (watcher != nullptr) {
    CallWatcher(&instrument_, "TrayFinished", [&] { watcher->TrayFinished(0); });
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

TrayThread::StartResult TrayThread::StartAction(Action& action, CActionWatcher& watcher,
                                                const std::string& context, int32_t errorTray,
                                                int32_t errorPosition) {
  CViscoException* failure = nullptr;
  {
    // The test and the start under one lock: an abort comes either before both or after both. The
    // tray's lock is not needed, since the action is held, and an empty position calls the watcher
    // from inside its start, which may take locks of a lower rank than the tray's.
    platform::RecursiveGuard guard(run_->lock);
    if (run_->instrument == nullptr) return StartResult::Aborted;
    if (IsReady()) {
      try {
        action.Start(&watcher, context);
        return StartResult::Started;
      } catch (CViscoException* raised) {
        failure = raised;
      }
    } else {
      controller_.Pause(true);
    }
  }
  if (failure != nullptr) return HandleStartFailure(failure);
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  record.message = instrument_.Text(kTextNotReady);
  record.code = MessageCode::NotReady;
  record.sampleFailure = 1;
  record.tray = errorTray;
  record.position = errorPosition;
  C_RVX::ReportError(record);
  return StartResult::NotReady;
}

TrayThread::StartResult TrayThread::HandleStartFailure(CViscoException* failure) {
  const std::unique_ptr<CViscoException> owned(failure);
  const ActionErrorRecord record = owned->GetRecord();
  C_RVX::ReportError(record);
  if (record.kind != 0) return StartResult::LeaveStage;
  // Shown as a pause like any other, so that ResumeTray can end it. The resume resets the events of
  // the request.
  controller_.Pause(true);
  return PauseBlock() ? StartResult::GoOn : StartResult::Aborted;
}

TrayThread::Wait TrayThread::WaitForAction(CActionWatcher& watcher) {
  switch (platform::WaitForAny({&run_->abort, &watcher.finished(), &run_->pauseNow},
                               platform::Deadline::Never())) {
    case 0:
      return Wait::Aborted;
    case 1:
      return Wait::Finished;
    default:
      return Wait::PauseNow;
  }
}

bool TrayThread::PauseBlock() {
  TellPause(true);
  if (platform::WaitForAny({&run_->abort, &run_->resume}, platform::Deadline::Never()) == 0) {
    return false;
  }
  TellPause(false);
  return true;
}

void TrayThread::TellPause(bool paused) {
  platform::RecursiveGuard guard(run_->lock);
  if (run_->instrument == nullptr) return;
  {
    const ConfigurationGuard configurationGuard(instrument_.configuration());
    uint32_t& flags = instrument_.configuration().fields.runFlags;
    flags &= ~static_cast<uint32_t>(kTrayPaused);
    if (paused) flags |= kTrayPaused;
  }
  run_->Tell("TrayPauseChanged", &TrayWatcher::TrayPauseChanged, 0, paused ? 1 : 0);
}

bool TrayThread::SleepUnlessAborted(platform::Milliseconds duration) {
  return duration.count() == 0 || !run_->abort.Wait(duration);
}

bool TrayThread::IsReady() {
  MonitorReadings status;
  instrument_.GetMonitorReadings(status);
  return status.machineStatus == 0 && status.switchByte == 0 && status.errorCode == 0;
}

bool TrayThread::OnlyEmptyBehind(int32_t position) {
  TrayOfSampleActions* tray = instrument_.GetTray(0);
  TrayGuard guard(*tray);
  for (int32_t next = position + 1; next < tray->GetSize(); ++next) {
    if (!IsEmptyPosition(*tray->GetAt(next))) return false;
  }
  return true;
}

std::shared_ptr<Action> TrayThread::HoldPosition(int32_t position) {
  TrayOfSampleActions* tray = instrument_.GetTray(0);
  TrayGuard guard(*tray);
  return position < tray->GetSize() ? tray->Hold(position) : nullptr;
}

void TrayThread::TellSampleFinished(int32_t position) {
  platform::RecursiveGuard guard(run_->lock);
  run_->Tell("SampleFinished", &TrayWatcher::SampleFinished, 0, position);
}

}  // namespace rvx
