// Opens the instrument module's own dialog for the samples of a tray.
#pragma once

#include <QObject>
#include <vector>

#include "host/desktop/tray_editor.h"

namespace torvell {

// Shows the dialog for a new sample or that of a position, one at a time, and puts an accepted
// sample into the tray like any other edit. The dialog works on an action that is in no tray, so a
// cancelled dialog leaves nothing to undo. The window's thread only.
class SampleDialog : public QObject {
  Q_OBJECT

 public:
  // All outlive this object.
  SampleDialog(TrayJobs& jobs, TrayStore& store, TrayEditor& editor, const RunControl& run)
      : jobs_(jobs), store_(store), editor_(editor), run_(run) {}

  // Returns whether a dialog is on the screen. The jobs that wait can't go on until it is closed.
  bool IsOpen() const { return phase_ == Phase::Open; }
  // Edits a sample of this kind (of the module's sample actions) and copies it to the empty ones
  // among the positions.
  void Add(int kind, const std::vector<int>& positions);
  // Edits what a position holds; no effect if it is empty.
  void Edit(int position);

 Q_SIGNALS:
  void Notice(const QString& text);
  void Failed(const QString& text);

 private:
  enum class Phase {
    None,     // a request for a dialog leads to Waiting
    Waiting,  // for the edits that were made before; leads to Making, or to None if a run begins
    Making,   // the instrument makes the action; leads to Open, or to None if it refuses
    Open      // until the person closes it; leads to None
  };
  using ActionMaker = std::function<std::shared_ptr<rvx::Action>()>;

  // Runs `ask` with the tray that the edits before it leave.
  void Ask(std::function<void()> ask);
  // Shows the dialog for the action that `make` returns on the worker, and puts an accepted one
  // into the positions.
  void Show(ActionMaker make, const std::vector<int>& positions);
  TrayEdit Run(rvx::Action& action, const std::vector<int>& positions);

  TrayJobs& jobs_;
  TrayStore& store_;
  TrayEditor& editor_;
  const RunControl& run_;
  Phase phase_ = Phase::None;
};

}  // namespace torvell
