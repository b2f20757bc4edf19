// The running of an instrument's tray: start, pause, resume, abort, and the tray thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "boundary/host.h"
#include "module/instrument/tray_run.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx {

class C_RVX;

// A part of C_RVX, whose tray it runs. Any thread may call it, also from a watcher's call.
class TrayController {
 public:
  explicit TrayController(C_RVX& instrument) : instrument_(instrument) {}

  // Starts the tray thread and returns 1. Throws ActionException if a tray runs already, the cell
  // is too warm or no thread can be started.
  int32_t Start(TrayWatcher* watcher);
  // Only while the tray runs and is not paused. now: at once; else after the present position.
  void Pause(bool now);
  void Resume();
  // Ends the run: calls TrayFinished of the watcher, empties the tray, stops running actions.
  void Abort();
  // Asks the user how to pause, unless the tray is in its first or last stage. Returns true if the
  // tray will pause.
  bool QueryPause();

 private:
  friend class TrayThread;
  std::shared_ptr<TrayRun> CurrentRun();
  // Forgets the run, if it is still the present one.
  void ForgetRun(const TrayRun* run);

  C_RVX& instrument_;

  // TrayRun::lock
  platform::RecursiveLock runsLock_ ACQUIRED_BEFORE(runLock_){"TrayRun", kTrayRunRecordLockRank};
  platform::PlainLock runLock_{"tray-run pointer", kTrayRunPointerLockRank};
  std::shared_ptr<TrayRun> run_ GUARDED_BY(runLock_);
};

}  // namespace rvx
