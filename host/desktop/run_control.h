// The run of one instrument's tray as the window steers and follows it.
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

// Takes the commands of a person and the events of the run, and keeps the one phase that both lead
// to (run_phase.h). The window's thread only.
class RunControl : public QObject {
  Q_OBJECT

 public:
  // `jobs` and `driver` outlive this object.
  RunControl(const InstrumentEntry& entry, TrayJobs& jobs, RunDriver& driver)
      : entry_(entry), jobs_(jobs), driver_(driver) {}

  RunPhase phase() const { return phase_; }
  // The run on the screen, on its way or over; null without one.
  const RunState* run() const { return run_.get(); }
  // What the run came to; in the phase Ended only.
  const std::optional<RunSummary>& summary() const { return summary_; }
  // The tray of the run for the table. Only with a run on the screen.
  std::vector<TrayRow> Rows() const { return RowsOfRun(jobs_.tray().size, *run_, failures_); }

  // Commands of a person. One that does not fit the phase does nothing, since the person may have
  // been overtaken by the run.
  void Start();
  void PauseAfterSample() { Pause(&RunDriver::PauseAfterSample); }
  void PauseNow() { Pause(&RunDriver::PauseNow); }
  void Resume();
  void Abort();
  // Puts the results away.
  void Acknowledge();
  // For the closing window: aborts what runs, or what a start that is on its way sets going, and
  // lets no run begin any more. `done` runs once the run is over.
  void End(TrayJobs::Job done);

  // Takes in what the run has told. To be called again and again while the window lives.
  void TakeEvents();

 Q_SIGNALS:
  // The phase or the progress of the run.
  void Changed();
  // The instrument has taken the tray over.
  void Began();
  // A sample or one of its tests begins: a new curve.
  void CurveBegins();
  void Paused();
  void Ended();

 private:
  // Every change of the phase goes through here.
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
