// Controls and follows the run of one instrument's tray for the window.
#pragma once

#include <QObject>
#include <map>
#include <memory>
#include <optional>

#include "host/desktop/run_driver.h"
#include "host/desktop/run_phase.h"
#include "host/desktop/run_progress.h"
#include "host/desktop/tray_jobs.h"
#include "host/tray/run_state.h"

namespace torvell {

// Takes the user's commands and the run's events, and keeps the phase that results from both
// (run_phase.h). The window's thread only.
class RunControl : public QObject {
  Q_OBJECT

 public:
  // `jobs` and `driver` outlive this object.
  RunControl(const InstrumentEntry& entry, TrayJobs& jobs, RunDriver& driver)
      : entry_(entry), jobs_(jobs), driver_(driver) {}

  RunPhase phase() const { return phase_; }
  // The run on the screen, in progress or over; null without one.
  const RunState* run() const { return run_.get(); }
  // The result of the run; in the phase Ended only.
  const std::optional<RunSummary>& summary() const { return summary_; }
  // The rows of the run for the table. Requires a run on the screen.
  std::vector<TrayRow> Rows() const { return RowsOfRun(jobs_.tray().size, *run_, failures_); }

  // The user's commands. One that does not fit the phase does nothing, since the run may have
  // changed the phase before the command arrives.
  void Start();
  void PauseAfterSample() { Pause(&RunDriver::PauseAfterSample); }
  void PauseNow() { Pause(&RunDriver::PauseNow); }
  void Resume();
  void Abort();
  // Removes the results from the screen.
  void Acknowledge();
  // For closing the window: aborts the run, also one that a pending start begins, and prevents any
  // further run. `done` runs after the run is over.
  void End(TrayJobs::Job done);

  // Takes in the run's new events. Must be called regularly while the window exists.
  void TakeEvents();

 Q_SIGNALS:
  // The phase or the progress of the run has changed.
  void Changed();
  // The instrument has accepted the tray.
  void Began();
  // A sample or one of its tests begins: a new curve.
  void CurveBegins();
  void Paused();
  void Ended();

 private:
  // All changes of the phase are made here.
  void SetPhase(RunPhase phase);
  void StartNow();
  void Pause(void (RunDriver::*command)());
  void AbortFailed();
  void Handle(const RunEvent& event);
  void HandlePause(bool paused);
  void HandleEnd();

  const InstrumentEntry entry_;
  TrayJobs& jobs_;
  RunDriver& driver_;
  RunPhase phase_ = RunPhase::Idle;
  std::unique_ptr<RunState> run_;
  platform::Microseconds began_{0};
  std::map<int, QString> failures_;  // by position from 0: why it failed
  std::optional<RunSummary> summary_;
};

}  // namespace torvell
