// What the host can do with an instrument: actions, and who watches them.
#pragma once

#include <cstdint>
#include <string>

namespace rvx {

// Hears of an action's run. Called on the action's thread or on the one that stops it, never with
// the action's lock held. `context` is the one of Start, "tray,position", both from 0. A call may
// stop or delete the action. An exception that leaves one is reported, and the run goes on.
class ActionWatcher {
 public:
  virtual void ActionStarted(std::string context) = 0;
  // `text` names the operation that has begun, for people.
  virtual void ActionStatus(std::string context, std::string text) = 0;
  // Exactly once for each Start that did not raise; nothing is called after it.
  virtual void ActionFinished(std::string context) = 0;
  virtual ~ActionWatcher() = default;
};

// One thing that can be done with an instrument. Whoever asked for it owns it and deletes it (any
// thread; a run that is going on is stopped first); a tray owns the actions in it. The instrument
// must outlive it. Every operation may be called from any thread unless it says otherwise. The lock
// is recursive.
class Action {
 public:
  // Ends a run or closes a screen from outside, and tells its watcher of the end; no effect when
  // nothing runs. Waits for a watcher's call that is under way and for the storing of a sample, so
  // call it without locks that these want. The thread itself may end later.
  virtual void Stop() = 0;
  // Starts the action on a thread of its own and returns. `watcher` is not owned, may be null and
  // must live until ActionFinished. Raises ActionException with its record filled when it can't
  // start; the watcher hears nothing then.
  virtual void Start(ActionWatcher* watcher, const std::string& context) = 0;
  // 1 once a person or a program has given it its parameters, else 0.
  virtual int32_t IsConfigured() = 0;
  // 1 once a run has ended by itself, well or not; 0 before, and after one that was stopped.
  virtual int32_t HasRun() = 0;
  // Lets the user edit the action: nonzero when it was accepted, 0 when not or where no editor is.
  // Raises ActionException for one that runs or has run. User-interface thread, which is in the
  // call as long as the dialog is open: hold the action (TrayOfSampleActions::Hold) meanwhile.
  virtual int32_t Edit() = 0;
  // Its name for people, and its class key (action_keys.h).
  virtual std::string GetLabel() = 0;
  virtual std::string GetClassName() = 0;
  virtual std::string GetSampleId() = 0;
  // The parameters as one line of text; SetStateText takes them back.
  virtual std::string GetStateText() = 0;
  // Holds off every change of the action until Unlock on the same thread. Nothing else of the
  // instrument may be called in between.
  virtual void Lock() = 0;
  // 1 from an accepted Start to the end of the run, else 0.
  virtual int32_t IsRunning() = 0;
  virtual void SetSampleId(const std::string& text) = 0;
  // A text that can't be read changes nothing. Raises ActionException for a sample action that
  // runs.
  virtual void SetStateText(const std::string& text) = 0;
  // -1 before any run; sample actions: 0 from the start of a run, 1 after a run without a failure.
  virtual int32_t GetRunResult() = 0;
  virtual void Unlock() = 0;
  virtual ~Action() = default;
};

// A window of a screen, as far as the host and an action's thread need it: not the window itself,
// which the user may close and so delete at any moment, but a handle that stays good. Whoever gets
// it from PerformCreation owns it and deletes it, on any thread; that leaves the window as it is.
class FrameWindow {
 public:
  // Whether the window is still there. Any thread, at once.
  virtual bool Exists() = 0;
  // Destroys the window, if it is still there. Returns when it is gone, so that what it uses may go
  // next. Any thread; the user-interface thread must run.
  virtual void Destroy() = 0;
  // Why the window does not want to close now, a sentence for its user; empty if it may close.
  // User-interface thread.
  virtual std::string GetCloseRefusal() { return std::string(); }
  virtual ~FrameWindow() = default;
};

// What an action with a screen tells a host that offers it. A host reaches it from an Action by
// dynamic_cast; an action without a screen has none.
class ScreenAction {
 public:
  enum class Use {
    None,   // this program has nothing to show for it, and Start is refused: do not offer it
    Start,  // Start opens its screen
    Edit    // it has no screen: Edit does at once what it is for, as a printout
  };
  // Any thread.
  virtual Use GetUse() = 0;
  // Why its open screen does not want to close now, a sentence for its user; empty if it may close
  // or is not open. A Stop ends it all the same. User-interface thread.
  virtual std::string GetCloseRefusal() = 0;
  virtual ~ScreenAction() = default;
};

// Something that has to happen on the host's user-interface thread; the module implements it. Not
// called directly: ExecutePerformCreation and ExecuteLoadResources do, and hand an exception that
// leaves the call on to their caller.
class UserInterfaceClient {
 public:
  // The frame of the screen it has opened, which is the caller's; null if it opened none, also
  // where it raised one that was open.
  virtual FrameWindow* PerformCreation() = 0;
  // Loads texts; the result counts for nothing.
  virtual int32_t LoadResources() = 0;
  virtual ~UserInterfaceClient() = default;
};

}  // namespace rvx
