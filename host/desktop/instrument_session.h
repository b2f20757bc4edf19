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

// Combines the parts and passes on their signals: the order of the jobs (TrayJobs), the edits
// (TrayEditor, SampleDialog), the run (RunControl), the readings and the preparation. Whatever may
// block is a job of this object's worker. The window's thread only, except Finish. Must be
// destroyed before the instrument.
class InstrumentSession : public QObject {
  Q_OBJECT

 public:
  InstrumentSession(Host& host, GuiThread& gui, const InstrumentEntry& entry);
  // Requires that EndRun and Finish were called.
  ~InstrumentSession() override;

  const InstrumentEntry& entry() const { return entry_; }
  int traySize() const { return jobs_.tray().size; }
  // The rows of the tray, or those of a run until its summary is acknowledged.
  const std::vector<TrayRow>& rows() const { return rows_; }
  const std::vector<TrayCell>& cells() const { return jobs_.tray().cells; }
  // The caller fills in who acts.
  InstrumentSituation Situation() const;
  // The run on the screen; null without one.
  const RunState* run() const { return run_.run(); }
  const std::optional<RunSummary>& summary() const { return run_.summary(); }
  // True from the request to start, when run() is still null.
  bool IsRunning() const { return torvell::IsRunning(run_.phase()); }
  // Estimated seconds, of the time base, that the present tray takes.
  int EstimatedSeconds() const { return jobs_.tray().EstimatedSeconds(); }
  bool CanUndo() const { return editor_.CanUndo(); }

  // For closing the window: aborts the run, also one that a pending start begins, and applies the
  // edits that wait; nothing new begins afterwards. `done` runs on the window's thread.
  void EndRun(const std::function<void()>& done);
  // Ends this object's threads after their pending jobs; waits for the abort of EndRun. Not on the
  // window's thread, which must handle events for the run to end.
  void Finish();

  // Commands; refusals arrive as Failed. instrument_state.h says when each is offered, the headers
  // of the parts say what it does.
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
  // Reads the tray again, since it may have been changed elsewhere.
  void Reload() { jobs_.Read(); }

 Q_SIGNALS:
  void TrayChanged();
  void StateChanged();
  // One or more status frames have arrived.
  void ReadingsArrived(const std::vector<torvell::TimedReadings>& readings);
  // A sample or one of its tests begins: a new curve.
  void CurveBegins();
  void RunPaused();
  void RunEnded();
  // Something was refused or went wrong: complete text.
  void Failed(const QString& text);
  // Information for the user, one line.
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
