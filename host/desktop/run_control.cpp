#include "host/desktop/run_control.h"

#include <utility>

namespace torvell {

void RunControl::SetPhase(RunPhase phase) {
  phase_ = phase;
  Q_EMIT Changed();
}

void RunControl::Start() {
  if (phase_ != RunPhase::Idle || jobs_.IsClosing()) return;
  SetPhase(RunPhase::StartWaiting);
  jobs_.WhenIdle([this] { StartNow(); });
}

void RunControl::StartNow() {
  if (jobs_.IsClosing()) {  // a new run would begin after the one that was ended
    SetPhase(RunPhase::Idle);
    return;
  }
  SetPhase(RunPhase::Starting);
  failures_.clear();
  driver_.TakeEvents();  // drops events of an earlier run
  auto plan = std::make_shared<std::vector<TrayPosition>>();
  jobs_.Do([this, plan] { *plan = driver_.Start(); },
           [this, plan] {
             run_ = std::make_unique<RunState>(entry_, *plan);
             began_ = platform::MonotonicTime();
             Q_EMIT Began();
             SetPhase(RunPhase::Running);
           },
           [this] { SetPhase(RunPhase::Idle); });
}

void RunControl::Pause(void (RunDriver::*command)()) {
  const RunPhase before = phase_;
  if (before != RunPhase::Running && before != RunPhase::PauseRequested) return;
  SetPhase(RunPhase::PauseRequested);
  jobs_.Do([this, command] { (driver_.*command)(); }, {},
           [this, before] {
             if (phase_ == RunPhase::PauseRequested) SetPhase(before);
           });
}

void RunControl::Resume() {
  if (phase_ != RunPhase::Paused && phase_ != RunPhase::PauseRequested) return;
  // The phase of a paused run changes when the instrument reports that it goes on.
  if (phase_ == RunPhase::PauseRequested) SetPhase(RunPhase::Running);
  jobs_.Do([this] { driver_.Resume(); });
}

void RunControl::Abort() {
  if (run_ == nullptr || !IsRunning(phase_) || phase_ == RunPhase::Aborting) return;
  SetPhase(RunPhase::Aborting);
  auto aborted = std::make_shared<bool>(false);
  jobs_.Do([this, aborted] { *aborted = driver_.Abort(); },
           [this, aborted] {
             if (!*aborted) AbortFailed();
           },
           [this] { AbortFailed(); });
}

void RunControl::AbortFailed() {
  if (phase_ == RunPhase::Aborting) {
    SetPhase(run_->paused() ? RunPhase::Paused : RunPhase::Running);
  }
}

void RunControl::Acknowledge() {
  if (phase_ != RunPhase::Ended) return;
  summary_.reset();
  run_.reset();
  failures_.clear();
  SetPhase(RunPhase::Idle);
  jobs_.Read();
}

void RunControl::End(TrayJobs::Job done) {
  jobs_.Do(
      [this] {
        driver_.Abort();
        driver_.Release();
      },
      done, done);
}

void RunControl::TakeEvents() {
  if (run_ == nullptr) return;
  const std::vector<RunEvent> events = driver_.TakeEvents();
  for (const RunEvent& event : events) Handle(event);
  if (!events.empty()) Q_EMIT Changed();
}

void RunControl::Handle(const RunEvent& event) {
  const RunPosition* current = run_->Current();
  if (event.kind == RunEvent::Kind::Error && IsFailure(*event.error) && current != nullptr) {
    failures_[current->plan.position] = QString::fromStdString(event.error->message);
  }
  const bool counts = run_->Take(event);
  switch (event.kind) {
    case RunEvent::Kind::SampleStarted:
      // The way back after the last sample must not replace that sample's curve.
      if (counts) Q_EMIT CurveBegins();
      break;
    case RunEvent::Kind::Sample:
      // The last curve stays on the screen.
      if (current != nullptr &&
          static_cast<int>(current->samples.size()) < current->plan.TestCount()) {
        Q_EMIT CurveBegins();
      }
      break;
    case RunEvent::Kind::PauseChanged:
      HandlePause(event.paused);
      break;
    case RunEvent::Kind::TrayFinished:
      HandleEnd();
      break;
    case RunEvent::Kind::TrayStarted:
    case RunEvent::Kind::Status:
    case RunEvent::Kind::SampleFinished:
    case RunEvent::Kind::Error:
      break;
  }
}

void RunControl::HandlePause(bool paused) {
  // A pause or resume does not end the phase of an abort that was asked for.
  if (phase_ != RunPhase::Aborting) SetPhase(paused ? RunPhase::Paused : RunPhase::Running);
  if (paused) Q_EMIT Paused();
}

void RunControl::HandleEnd() {
  // An abort after the last result aborted nothing.
  if (phase_ == RunPhase::Aborting && run_->samples() < run_->SamplesDue()) run_->MarkAborted();
  RunSummary summary;
  summary.samples = run_->samples();
  summary.samplesDue = run_->SamplesDue();
  summary.errors = run_->errors();
  summary.aborted = run_->aborted();
  summary.duration = platform::MonotonicTime() - began_;
  for (const TrayRow& row : Rows()) {
    if (row.state == RowState::Failed) ++summary.failedPositions;
  }
  summary_ = summary;
  SetPhase(RunPhase::Ended);
  // Release waits until the run's threads have finished their last calls.
  jobs_.Do([this] { driver_.Release(); });
  Q_EMIT Ended();
  jobs_.Read();
}

}  // namespace torvell
