// The record that an instrument and its tray thread share for one run of a tray.
#pragma once

#include <atomic>
#include <string>

#include "boundary/tray.h"
#include "module/instrument/lock_ranks.h"
#include "module/instrument/watcher_call.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx {

class C_RVX;

// Shared by std::shared_ptr, so neither side has to know which of them releases it last.
struct TrayRun {
  explicit TrayRun(platform::RecursiveLock& runsLock) : lock(runsLock) {}

  // One lock for all runs of an instrument, which outlives them: a host may abort a run and start
  // the next one from inside a watcher's call, and both records are then locked at the same time.
  platform::RecursiveLock& lock;
  TrayWatcher* watcher GUARDED_BY(lock) = nullptr;  // null: none, or taken by an abort
  // Null once an abort or the normal end has taken the run away: from then on the tray thread must
  // not touch the instrument.
  C_RVX* instrument GUARDED_BY(lock) = nullptr;

  // Calls an operation of the watcher, if it is still there.
  template <class... Arguments, class... Values>
  void Tell(const char* name, void (TrayWatcher::*operation)(Arguments...), Values... values)
      REQUIRES(lock) {
    TrayWatcher* const called = watcher;
    if (called == nullptr) return;
    CallWatcher(instrument, name, [&] { (called->*operation)(values...); });
  }

  // In the first or the last stage, which run no position: a pause there needs no question.
  std::atomic<bool> inStage{false};

  platform::Event abort{"tray: abort"};
  platform::Event pauseAfter{"tray: pause after"};
  platform::Event pauseNow{"tray: pause now"};
  platform::Event resume{"tray: resume"};
};

// Passes one action's reports on to the tray's watcher. Lives on the tray thread's stack.
class CActionWatcher : public ActionWatcher {
 public:
  explicit CActionWatcher(TrayRun& run) : run_(run) {}
  // Waits until a started action has finished, so that it can't report to a dead object.
  ~CActionWatcher() override;
  void ActionStarted(std::string context) override;
  void ActionStatus(std::string context, std::string text) override;
  void ActionFinished(std::string context) override;

  platform::Event& finished() { return finished_; }

 private:
  TrayRun& run_;
  platform::Event started_{"action started", platform::Event::Mode::ManualReset};
  platform::Event finished_{"action finished", platform::Event::Mode::ManualReset};
};

}  // namespace rvx
