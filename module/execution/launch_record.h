// The record that an action and the thread of its run share.
#pragma once

#include <memory>
#include <string>

#include "boundary/action.h"
#include "module/execution/screen_motion.h"
#include "module/instrument/lock_ranks.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx {

class C_RVX;
class CBaseAction;

// A stop of a run that drives the instrument sends the abort. A screen gives the instrument nothing
// to do by itself: a stop ends what its user has set moving.
enum class RunKind { DrivesInstrument, Screen };

// Made by Start, held by the action and by the thread, so that it outlives an action that is
// stopped or destroyed while its thread still runs. The instrument outlives the thread, since the
// thread is registered there from before its start to its very end.
//
// The lock is held during the watcher's calls, so once a stop has detached the watcher, no call is
// in progress and none follows. A watcher may stop or destroy the action from inside a call (the
// lock is recursive), so after each call the thread reads `watcher` and `action` again.
struct LaunchRecord : std::enable_shared_from_this<LaunchRecord> {
  LaunchRecord(C_RVX& ownInstrument, CBaseAction* ownAction, ActionWatcher* ownWatcher,
               std::string ownContext, int ownTray, int ownPosition,
               RunKind ownKind = RunKind::DrivesInstrument);
  LaunchRecord(const LaunchRecord&) = delete;
  LaunchRecord& operator=(const LaunchRecord&) = delete;

  // Tell the watcher, if one is still attached. On the run's thread.
  void ReportStarted();
  void ReportStatus(const std::string& text);

  // Calls `send` with the lock held and returns true; returns false without a call if the run was
  // stopped. So no command that starts something can follow the CAB of a stop.
  template <class Send>
  bool SendUnlessStopped(const Send& send) {
    platform::RecursiveGuard guard(lock);
    if (stopped) return false;
    send();
    return true;
  }

  // True once the action was stopped or destroyed.
  bool IsDetached();

  // Constant after construction.
  C_RVX& instrument;
  const std::string context;
  const int tray;      // raw number of the context; sample and move actions only
  const int position;  // raw number of the context; sample and move actions only

  const RunKind kind;

  // Set once by a stop; it stays set, so that every wait for it sees it.
  platform::Event stopEvent{"action stop", platform::Event::Mode::ManualReset};

  // What the record's screen has set moving; used by screens only.
  ScreenMotion motion{instrument};

  platform::RecursiveLock lock{"launch record", kLaunchRecordLockRank};
  ActionWatcher* watcher GUARDED_BY(lock);  // not owned; null once detached
  CBaseAction* action GUARDED_BY(lock);     // not owned; null once detached
  // After a stop the run sends nothing any more. The stop itself has queued the CAB, since the
  // run's thread may be delayed for long (by a question to the user, for example) and its CAB would
  // then end a run that has been started meanwhile.
  bool stopped GUARDED_BY(lock) = false;
  // The window of the record's screen; null before it is made and for runs without one.
  std::shared_ptr<FrameWindow> frame GUARDED_BY(lock);
};

}  // namespace rvx
