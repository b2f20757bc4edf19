// One instrument as the window works with it: its tray, its run, its readings.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "host/desktop/cell_preparation.h"
#include "host/desktop/instrument_state.h"
#include "host/desktop/latest_readings.h"
#include "host/desktop/run_control.h"
#include "host/desktop/sample_dialog.h"
#include "host/desktop/tray_editor.h"
#include "host/desktop/worker.h"

namespace torvell {

// Puts the parts together: the order of the jobs (TrayJobs), the edits (TrayEditor, SampleDialog),
// the run (RunControl), the readings and the preparation, and passes on what they tell. Whatever
// may block is a job of a worker of this object's own. The window's thread only, Finish apart. Its
// life ends before the instrument's.
class InstrumentSession : public QObject {
  Q_OBJECT

 public:
  InstrumentSession(Host& host, GuiThread& gui, const InstrumentEntry& entry);
  // After EndRun and Finish.
  ~InstrumentSession() override;

  const InstrumentEntry& entry() const { return entry_; }
  int traySize() const { return jobs_.tray().size; }
  // The tray, or the run's while it goes on and until its summary is acknowledged.
  const std::vector<TrayRow>& rows() const { return rows_; }
  const std::vector<TrayCell>& cells() const { return jobs_.tray().cells; }
  // Who acts is filled in by the caller.
  InstrumentSituation Situation() const;
  // The run on the screen; null without one.
  const RunState* run() const { return run_.run(); }
  const std::optional<RunSummary>& summary() const { return run_.summary(); }
  // Also while a start is on its way, when run() is still null.
  bool IsRunning() const { return torvell::IsRunning(run_.phase()); }
  // Seconds of the base's time that the tray as it is would take.
  int EstimatedSeconds() const { return jobs_.tray().EstimatedSeconds(); }
  bool CanUndo() const { return editor_.CanUndo(); }

  // For the closing window: aborts what runs, or what a start that is still on its way has set
  // going, and puts in the edits that wait; nothing else begins any more. `done` runs on the
  // window's thread.
  void EndRun(const std::function<void()>& done);
  // Ends this object's threads, after what was given to them; waits for the abort of EndRun. Not on
  // the window's thread, whose events a run's end needs.
  void Finish();

  // Commands; refusals come as Failed. The offers of instrument_state.h say when they make sense,
  // the parts' headers what they do.
  void Start() { run_.Start(); }
  void PauseAfterSample() { run_.PauseAfterSample(); }
  void PauseNow() { run_.PauseNow(); }
  void Resume() { run_.Resume(); }
  void Abort() { run_.Abort(); }
  void AcknowledgeSummary() { run_.Acknowledge(); }
  void Prepare() { preparation_.Start(); }
  void Change(TrayEditor::EditMaker make) { editor_.Change(std::move(make)); }
  void Undo() { editor_.Undo(); }
  void LoadFile(const QString& path) { editor_.Load(path); }
  void SaveFile(const QString& path);
  void KeepRest() { editor_.KeepRest(); }
  void DropInterrupted() { editor_.DropInterrupted(); }
  void AddSample(int kind, const std::vector<int>& positions) { dialog_.Add(kind, positions); }
  void Edit(int position) { dialog_.Edit(position); }
  // Somebody else may have changed the tray.
  void Reload() { jobs_.Read(); }

 Q_SIGNALS:
  void TrayChanged();
  void StateChanged();
  // One or more status frames have come.
  void ReadingsArrived(const std::vector<torvell::TimedReadings>& readings);
  // A sample or one of its tests begins: a new curve.
  void CurveBegins();
  void RunPaused();
  void RunEnded();
  // Something was refused or went wrong: complete text.
  void Failed(const QString& text);
  // Something that a person may like to know, one line.
  void Notice(const QString& text);

 private:
  void ConnectParts();
  void Poll();
  void RebuildRows();

  const InstrumentEntry entry_;
  InstrumentTray tray_;
  InstrumentRun driver_;
  Worker worker_;
  OwnedWorker runner_{worker_, this};
  TrayJobs jobs_{runner_, tray_};
  RunControl run_{entry_, jobs_, driver_};
  TrayEditor editor_{jobs_, tray_, run_};
  SampleDialog dialog_{jobs_, tray_, editor_, run_};
  CellPreparation preparation_;
  ReadingsFeed feed_;
  LatestReadings readings_;
  std::vector<TrayRow> rows_;
};

}  // namespace torvell
