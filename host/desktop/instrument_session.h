// One instrument as the window works with it: its tray, its run, its readings.
#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>

#include "host/desktop/instrument_state.h"
#include "host/desktop/readings_feed.h"
#include "host/desktop/tray_rows.h"
#include "host/desktop/worker.h"
#include "host/tray/run_events.h"

namespace torvell {

// How a run ended, until somebody has taken notice.
struct RunSummary {
  int samples = 0;
  int samplesDue = 0;
  int failedPositions = 0;
  int errors = 0;
  bool aborted = false;
  platform::Microseconds duration{0};
};

// The window's thread. Everything that may block goes to a worker of this object's own; signals
// say when it is done. Its life ends before the instrument's.
class InstrumentSession : public QObject {
  Q_OBJECT

 public:
  InstrumentSession(Host& host, GuiThread& gui, const InstrumentEntry& entry);
  // Behind EndRun and Finish.
  ~InstrumentSession() override;

  const InstrumentEntry& entry() const { return entry_; }
  int traySize() const { return traySize_; }
  // The tray, or the run's while it goes on and until its summary is acknowledged.
  const std::vector<TrayRow>& rows() const { return rows_; }
  const std::vector<TrayCell>& cells() const { return cells_; }
  // Who acts is filled in by the caller.
  InstrumentSituation Situation() const;
  // The run on the screen; null without one.
  const RunState* run() const { return run_.get(); }
  const std::optional<RunSummary>& summary() const { return summary_; }
  // Also while a start is on its way, when run() is still null.
  bool IsRunning() const { return starting_ || (run_ != nullptr && !run_->finished()); }
  // Seconds of the base's time that the tray as it stands would take.
  int EstimatedSeconds() const { return estimatedSeconds_; }
  bool CanUndo() const { return !undo_.empty(); }

  // Aborts what runs, or what a start that is still on its way has set going, and puts in the edits
  // that are on their way; nothing else begins any more. Finish waits for the abort. `done` runs on
  // the window's thread.
  void EndRun(const std::function<void()>& done);
  // Ends this object's threads, behind what was given to them. Not on the window's thread, whose
  // events a run's end needs.
  void Finish();

  // Commands; refusals come as Failed. The offers of instrument_state.h say when they make sense.
  void Start();
  void PauseAfterSample();
  void PauseNow();
  void Resume();
  // Aborts without a further question.
  void Abort();
  void Prepare();
  void AcknowledgeSummary();
  // Asks `make` for an edit of the tray and puts it in: at once, or behind what is on its way,
  // since an edit that was made from an older tray would lose samples. Nothing happens once a run
  // began.
  using EditMaker = std::function<TrayEdit(const std::vector<TrayCell>& tray)>;
  void Change(EditMaker make);
  void Undo();
  // Adds an action of this kind (of the module's sample actions) to the empty ones among the
  // positions: edits the first in the module's dialog, and copies it to the rest when accepted.
  void AddSample(int kind, const std::vector<int>& positions);
  void Edit(int position);
  void LoadFile(const QString& path);
  void SaveFile(const QString& path);
  // The tray has changed behind our back.
  void Reload();
  // An interrupted run is found again: takes out what was measured, or the whole tray.
  void KeepRest();
  void DropInterrupted();

 Q_SIGNALS:
  void TrayChanged();
  void StateChanged();
  // One or more status frames have come.
  void ReadingsArrived(const std::vector<torvell::TimedReadings>& readings);
  // A sample or one of its tests begins: a new curve.
  void CurveBegins();
  void RunBegan();
  void RunPaused();
  void RunEnded();
  // A position has finished or a result has come.
  void ResultStored();
  // Something was refused or went wrong: complete text.
  void Failed(const QString& text);
  // Something that a person may like to know, one line.
  void Notice(const QString& text);

 private:
  void Poll();
  void Handle(const RunEvent& event);
  void HandleEnd();
  void RebuildRows();
  // `failed` runs before the refusal is told.
  void Work(std::function<void()> job, std::function<void()> done = {},
            std::function<void()> failed = {});
  // Something is being asked or changed, or the tray on the screen is older than the instrument's.
  bool IsBusy() const { return busy_ > 0 || reloading_; }
  void StartNow();
  void AskInDialog(std::function<void()> ask);
  void AddSampleNow(int kind, const std::vector<int>& positions);
  // Shows the module's dialog for what `make` makes on the worker, and puts what is accepted into
  // the positions.
  void EditInDialog(std::function<std::shared_ptr<rvx::Action>()> make,
                    const std::vector<int>& positions);
  void SetBusy(int change);
  void Apply(const TrayEdit& edit);
  // Runs the job as soon as the session is not busy.
  void WhenIdle(std::function<void()> job);
  void RunWaiting();

  Host& host_;
  GuiThread& gui_;
  const InstrumentEntry entry_;
  int traySize_ = 0;
  int estimatedSeconds_ = 0;
  std::vector<TrayPosition> tray_;
  std::vector<TrayCell> cells_;
  std::vector<TrayRow> rows_;
  std::vector<TrayEdit> undo_;
  rvx::InstrumentReadings latest_;
  std::optional<platform::Microseconds> latestTime_;
  // When the feed was asked last. Ages are counted to here and not to now: between two looks a fast
  // clock passes many frames that have come and are not taken yet.
  platform::Microseconds lookedAt_{0};
  bool wasStale_ = true;
  int busy_ = 0;
  bool reloading_ = false;
  bool reloadAgain_ = false;
  bool pauseRequested_ = false;
  bool aborted_ = false;
  bool preparing_ = false;
  bool starting_ = false;
  bool dialogAsked_ = false;  // a dialog is open or about to be
  bool dialogOpen_ = false;
  std::atomic<bool> closing_{false};  // tells a preparation to end

  RunEventQueue events_;
  RunRecorder recorder_{events_, 0};
  std::unique_ptr<RunState> run_;
  std::map<int, QString> failures_;
  platform::Microseconds runStarted_{0};
  std::optional<RunSummary> summary_;
  std::unique_ptr<TrayRunner> runner_;  // the worker's jobs alone
  std::vector<std::function<void()>> waiting_;
  std::unique_ptr<ReadingsFeed> feed_;
  // Last, so that its jobs have ended before what they use goes.
  std::unique_ptr<Worker> worker_;
  std::unique_ptr<Worker> preparation_;
};

}  // namespace torvell
