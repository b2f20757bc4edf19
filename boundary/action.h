// What the host can do with an instrument: actions, and who watches them.
#pragma once

#include <cstdint>
#include <string>

namespace rvx {

// Is told about an action's run. Called on the action's thread or on the one that stops it, never
// with the action's lock held. `context` is the text that Start was given, "tray,position", both
// from 0. A call may stop or delete the action. An exception that leaves a call is reported, and
// the run goes on.
class ActionWatcher {
 public:
  virtual void ActionStarted(std::string context) = 0;
  // `text` names the operation that has begun, for people.
  virtual void ActionStatus(std::string context, std::string text) = 0;
  // Exactly once for each Start that did not throw; nothing is called after it.
  virtual void ActionFinished(std::string context) = 0;
  virtual ~ActionWatcher() = default;
};

// One thing that can be done with an instrument. The caller of the Create... operation owns it and
// deletes it (any thread; a run in progress is stopped first); a tray owns the actions in it. The
// instrument must outlive the action. Every operation may be called from any thread unless it says
// otherwise. The lock is recursive.
class Action {
 public:
  // Ends a run or closes a screen from outside, and tells its watcher of the end; no effect when
  // nothing runs. Waits for a watcher's call in progress and for the storing of a sample, so the
  // caller holds no lock that these may need. The thread itself may end later.
  virtual void Stop() = 0;
  // Starts the action on a new thread and returns. `watcher` is not owned, may be null and must
  // live until ActionFinished. Throws ActionException with its record filled when the action can't
  // start; the watcher is not called then.
  virtual void Start(ActionWatcher* watcher, const std::string& context) = 0;
  // 1 once a person or a program has given it its parameters, else 0.
  virtual int32_t IsConfigured() = 0;
  // 1 once a run has ended by itself, well or not; 0 before, and after one that was stopped.
  virtual int32_t HasRun() = 0;
  // Lets the user edit the action: nonzero when the edit was accepted, 0 when not or where there is
  // no editor. Throws ActionException for an action that runs or has run. User-interface thread.
  // The call lasts as long as the dialog is open: hold the action (TrayOfSampleActions::Hold)
  // meanwhile.
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
  // A text that can't be read changes nothing. Throws ActionException for a sample action that
  // runs.
  virtual void SetStateText(const std::string& text) = 0;
  // -1 before any run; sample actions: 0 from the start of a run, 1 after a run without a failure.
  virtual int32_t GetRunResult() = 0;
  virtual void Unlock() = 0;
  virtual ~Action() = default;
};

// A window of a screen, as far as the host and an action's thread need it: not the window itself,
// which the user may close and so delete at any moment, but a handle that stays valid. The caller
// of PerformCreation owns the handle and deletes it, on any thread; that leaves the window as it
// is.
class FrameWindow {
 public:
  // Whether the window is still there. Any thread, at once.
  virtual bool Exists() = 0;
  // Destroys the window, if it is still there. Returns when the window is gone, so that what the
  // window uses may be deleted next. Any thread; the user-interface thread must run.
  virtual void Destroy() = 0;
  // Why the window refuses to close now, a sentence for its user; empty if it may close.
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
    Edit    // it has no screen: Edit does its work at once, for example a printout
  };
  // Any thread.
  virtual Use GetUse() = 0;
  // Why its open screen refuses to close now, a sentence for its user; empty if it may close or is
  // not open. Stop closes it all the same. A screen that fails to say it is reported and closed.
  // Throws nothing. User-interface thread.
  virtual std::string GetCloseRefusal() = 0;
  virtual ~ScreenAction() = default;
};

// Something that has to happen on the host's user-interface thread; the module implements it.
// Called only by ExecutePerformCreation and ExecuteLoadResources, which pass an exception that
// leaves the call on to their caller.
class UserInterfaceClient {
 public:
  // Returns the frame of the screen that it has opened, which the caller owns; null if it opened
  // none, brought an open screen to the front, or keeps the handle itself.
  virtual FrameWindow* PerformCreation() = 0;
  // Loads texts; the result is ignored.
  virtual int32_t LoadResources() = 0;
  virtual ~UserInterfaceClient() = default;
};

}  // namespace rvx
