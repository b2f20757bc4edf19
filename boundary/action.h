// What the host can do with an instrument: actions, and who watches them.
#pragma once

#include <cstdint>
#include <string>

namespace rvx {

// Hears of an action's run. Called on the action's thread or on the one that stops it, never under
// the action's lock. `context` is "tray,position", both from 0.
class ActionWatcher {
 public:
  virtual void ActionStarted(std::string context) = 0;
  virtual void ActionStatus(std::string context, std::string text) = 0;
  virtual void ActionFinished(std::string context) = 0;
  virtual ~ActionWatcher() = default;
};

// One thing that can be done with an instrument. Whoever asked for it owns it and deletes it; a
// tray owns the actions in it. Every operation may be called from any thread. The lock is
// recursive.
class Action {
 public:
  // Ends a run or closes a screen from outside. No effect when nothing runs.
  virtual void Stop() = 0;
  // Starts the action. `watcher` is not owned and must live until ActionFinished. Raises
  // ActionException when it can't start.
  virtual void Start(ActionWatcher* watcher, const std::string& context) = 0;
  virtual int32_t IsConfigured() = 0;
  virtual int32_t HasRun() = 0;
  // Lets the user edit the action: nonzero when it was accepted. User-interface thread, which is in
  // the call as long as the dialog is open: hold the action (TrayOfSampleActions::Hold) meanwhile.
  virtual int32_t Edit() = 0;
  virtual std::string GetLabel() = 0;
  virtual std::string GetClassName() = 0;
  virtual std::string GetSampleId() = 0;
  // The parameters as one line of text; SetStateText takes them back.
  virtual std::string GetStateText() = 0;
  virtual void Lock() = 0;
  virtual int32_t IsRunning() = 0;
  virtual void SetSampleId(const std::string& text) = 0;
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
  virtual ~FrameWindow() = default;
};

// Something that has to happen on the host's user-interface thread. Not called directly:
// ExecutePerformCreation and ExecuteLoadResources do.
class UserInterfaceClient {
 public:
  // The frame of the screen it has opened, which is the caller's; null if it opened none, also
  // where it raised one that was open.
  virtual FrameWindow* PerformCreation() = 0;
  virtual int32_t LoadResources() = 0;
  virtual ~UserInterfaceClient() = default;
};

}  // namespace rvx
