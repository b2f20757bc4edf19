// What a person changes in the tray, and how it is taken back.
#pragma once

#include <QObject>
#include <vector>

#include "host/desktop/run_control.h"
#include "host/desktop/tray_jobs.h"

namespace torvell {

// Puts edits into the tray one after the other, and remembers how to undo them. The window's thread
// only.
class TrayEditor : public QObject {
  Q_OBJECT

 public:
  // All outlive this object.
  TrayEditor(TrayJobs& jobs, TrayStore& store, const RunControl& run)
      : jobs_(jobs), store_(store), run_(run) {}

  // Makes an edit from the tray that the edits before it leave.
  using EditMaker = std::function<TrayEdit(const std::vector<TrayCell>& tray)>;
  // Asks `make` for an edit and puts it in: at once, or after what is on its way. Nothing happens
  // if a run began meanwhile.
  void Change(EditMaker make);
  bool CanUndo() const { return !undo_.empty(); }
  void Undo();
  // What was changed can no longer be taken back.
  void ForgetUndo() { undo_.clear(); }
  void Load(const QString& path);
  void Save(const QString& path, const std::vector<TrayPosition>& tray);
  // A run that was interrupted by the end of the program has left its tray: takes out what was
  // measured, or everything.
  void KeepRest();
  void DropInterrupted();

 Q_SIGNALS:
  // Something that a person may like to know, one line.
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
