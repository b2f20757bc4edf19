#include "module/instrument/tray_controller.h"

#include <system_error>

#include "boundary/instrument_limits.h"
#include "module/instrument/c_rvx.h"
#include "module/instrument/tray_thread.h"
#include "module/resources/string_ids.h"
#include "platform/prompt.h"
#include "platform/thread.h"

namespace rvx {
namespace {

// `textId`: the instrument's text that says why the tray was not started.
[[noreturn]] void Raise(C_RVX& instrument, ActionErrorRecord record, int textId, int32_t kind) {
  record.message = instrument.Text(textId);
  record.code = MessageCodeOf(textId);
  record.kind = kind;
  record.sampleFailure = 1;
  throw new ActionException(std::move(record));
}

}  // namespace

int32_t TrayController::Start(TrayWatcher* watcher) {
  const ActionErrorRecord record = instrument_.MakeErrorRecord();
  if (CurrentRun()) Raise(instrument_, record, kTextTrayInUse, 0);
  // Negated so that NaN does not pass.
  if (!(instrument_.GetTemperature() < kWarmestStart)) {
    Raise(instrument_, record, kTextCellTooWarm, 0);
  }
  auto run = std::make_shared<TrayRun>(runsLock_);
  {
    platform::RecursiveGuard guard(run->lock);
    run->watcher = watcher;
    run->instrument = &instrument_;
  }
  {
    // Two simultaneous starts may both have passed the first check.
    platform::PlainGuard guard(runLock_);
    if (!run_) run_ = run;
  }
  if (CurrentRun() != run) Raise(instrument_, record, kTextTrayInUse, 0);
  {
    const ConfigurationGuard guard(instrument_.configuration());
    instrument_.configuration().fields.runFlags = kTrayRunning;
  }
  try {
    auto use = std::make_shared<InstrumentUse>(instrument_);
    platform::StartThread("tray", [this, run, use = std::move(use)] {
      use->NoteOwnThread();
      TrayThread(*this, run).Run();
    });
  } catch (const std::system_error&) {
    {
      const ConfigurationGuard guard(instrument_.configuration());
      instrument_.configuration().fields.runFlags &= ~static_cast<uint32_t>(kTrayRunning);
    }
    ForgetRun(run.get());
    Raise(instrument_, record, kTextNoThread, 1);
  }
  return 1;
}

void TrayController::Pause(bool now) {
  platform::PlainGuard guard(runLock_);
  {
    const ConfigurationGuard configurationGuard(instrument_.configuration());
    const uint32_t flags = instrument_.configuration().fields.runFlags;
    if ((flags & (kTrayRunning | kTrayPaused)) != kTrayRunning) return;
  }
  if (!run_) return;
  (now ? run_->pauseNow : run_->pauseAfter).Set();
  (now ? run_->pauseAfter : run_->pauseNow).Reset();
  run_->resume.Reset();
}

void TrayController::Resume() {
  platform::PlainGuard guard(runLock_);
  {
    const ConfigurationGuard configurationGuard(instrument_.configuration());
    if ((instrument_.configuration().fields.runFlags & kTrayPaused) == 0) return;
  }
  if (!run_) return;
  run_->pauseAfter.Reset();
  run_->pauseNow.Reset();
  run_->resume.Set();
}

void TrayController::Abort() {
  const std::shared_ptr<TrayRun> run = CurrentRun();
  if (!run) return;
  TrayWatcher* watcher = nullptr;
  std::vector<std::shared_ptr<Action>> empty = instrument_.MakeEmptyTray();
  std::vector<std::shared_ptr<Action>> removed;
  {
    platform::RecursiveGuard guard(run->lock);
    if (run->instrument == nullptr) return;  // it ended, or another abort came first
    watcher = std::exchange(run->watcher, nullptr);
    run->instrument = nullptr;
    // Before the run is forgotten: a host that sees no run any more may fill the tray anew.
    removed = instrument_.EmptyTray(std::move(empty));
    {
      const ConfigurationGuard configurationGuard(instrument_.configuration());
      instrument_.configuration().fields.runFlags = 0;
    }
    ForgetRun(run.get());
  }
  run->abort.Set();
  // After the locks are released: a running action's thread may be in a call to the watcher, which
  // takes the TrayRun's lock, and stopping the action waits for that call.
  for (const std::shared_ptr<Action>& action : removed) action->Stop();
  removed.clear();
  if (watcher != nullptr) {
    CallWatcher(&instrument_, "TrayFinished", [&] { watcher->TrayFinished(0); });
  }
  GetInstrumentManager()->NotifyInstrumentChanged();
}

bool TrayController::QueryPause() {
  const std::shared_ptr<TrayRun> run = CurrentRun();
  if (run && run->inStage) {
    Pause(true);
    return true;
  }
  if (instrument_.IsTrayActive() == 0) return false;
  // No lock is held while the question is open: the tray thread goes on meanwhile.
  const std::optional<int> choice =
      platform::GetPrompter().Choose("Pause Tray", {"Now", "After sample is complete"}, 0);
  if (!choice) return false;
  Pause(*choice == 0);
  return true;
}

std::shared_ptr<TrayRun> TrayController::CurrentRun() {
  platform::PlainGuard guard(runLock_);
  return run_;
}

void TrayController::ForgetRun(const TrayRun* run) {
  platform::PlainGuard guard(runLock_);
  if (run_.get() == run) run_.reset();
}

}  // namespace rvx
