// The user's edits of the tray, and their undo.
#pragma once

#include <QObject>
#include <vector>

#include "host/desktop/run_control.h"
#include "host/desktop/tray_jobs.h"

namespace torvell {

// Applies edits to the tray one after the other, and remembers how to undo them. The window's
// thread only.
class TrayEditor : public QObject {
  Q_OBJECT

 public:
  // All outlive this object.
  TrayEditor(TrayJobs& jobs, TrayStore& store, const RunControl& run)
      : jobs_(jobs), store_(store), run_(run) {}

  // Returns an edit for the tray that the earlier edits have left.
  using EditMaker = std::function<TrayEdit(const std::vector<TrayCell>& tray)>;
  // Asks `make` for an edit and applies it, at once or after the pending ones. No effect if a run
  // began in the meantime.
  void Change(EditMaker make);
  bool CanUndo() const { return !undo_.empty(); }
  void Undo();
  // Drops the undo steps.
  void ForgetUndo() { undo_.clear(); }
  void Load(const QString& path);
  void Save(const QString& path, const std::vector<TrayPosition>& tray);
  // Handles the tray of a run that the end of the program interrupted: removes what was measured,
  // or everything.
  void KeepRest();
  void DropInterrupted();

 Q_SIGNALS:
  // Information for the user, one line.
  void Notice(const QString& text);

 private:
  void Apply(const TrayEdit& edit);
  void Remember(TrayEdit before);

  TrayJobs& jobs_;
  TrayStore& store_;
  const RunControl& run_;
  std::vector<TrayEdit> undo_;  // the newest last
};

}  // namespace torvell
