// An instrument as the host sees it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "boundary/action.h"
#include "boundary/tray.h"

namespace rvx {

// The parent of an embedded status window, and that window; the window toolkit defines the type.
class WindowHandle;

// The host owns it after CreateInstruments and deletes it through this interface, from a thread
// other than the user-interface thread (a run that is ending may need that one) and not from inside
// a call that the instrument makes. Deleting it stores its settings, ends a run after a question to
// the user, waits for its threads and closes its port; the actions that it made for others must be
// gone by then.
//
// The operations may be called from any thread and return at once unless they say otherwise. Trays
// are counted from 0, and there is one: the argument `tray` of an operation is ignored. Questions
// to the user go through the installed prompter (platform/prompt.h), on the caller's thread, which
// waits for the answer.
class ViscometerInstrument {
 public:
  // The same as QueryAbortTray, without its result.
  virtual void StopTray(int32_t tray) = 0;
  // Asks whether to stop a running tray, and aborts it unless the answer is No: 1 if it was
  // aborted, and its watcher was told of the end; 0 if not, or nothing runs.
  virtual int32_t QueryAbortTray() = 0;
  virtual int32_t StartTrayFor(int32_t tray, TrayWatcher* watcher) = 0;
  // Starts the tray and returns 1. Throws ActionException if it runs already, the cell is too warm
  // or no thread can be started; the watcher is not called then. `watcher` may be null; it is not
  // owned and must live until TrayFinished.
  virtual int32_t StartTray(TrayWatcher* watcher) = 0;
  // A new action for a class key, an index of the table of all actions, of the configuration
  // menu's, of the sample kinds or of the service menu's (action_keys.h). The caller owns it.
  // Throws InvalidException for anything else, for Setup below level 100, the steppers on a model
  // without them and the second sample kind on a cell without constants. Needs the user-interface
  // thread, which must not hold a lock that the caller holds.
  virtual Action* CreateActionFromText(const std::string& classKey) = 0;
  virtual Action* CreateActionByIndex(int32_t index) = 0;
  // The name of the help file, without a folder.
  virtual std::string GetHelpFile() = 0;
  virtual Action* CreateConfigAction(int32_t index) = 0;
  virtual Action* CreateSampleAction(int32_t kind) = 0;
  virtual Action* CreateServiceAction(int32_t index) = 0;
  // The whole instrument with its tray as text; LoadSettingsText takes it back. Its form is the
  // module's own.
  virtual std::string SaveSettingsText() = 0;
  // Makes the embedded status window, or returns the one that is open. The instrument owns it; null
  // where the module has no windows. CloseStatusWindow destroys the window, without effect if none
  // is open. Both: user-interface thread.
  virtual WindowHandle* ShowStatusWindow(WindowHandle* parent) = 0;
  virtual void CloseStatusWindow() = 0;
  // The tray, owned by the instrument; InvalidException for an index other than 0.
  virtual TrayOfSampleActions* GetTray(int32_t index) = 0;
  // "RVX" for every instrument of the family.
  virtual std::string GetTypeName() = 0;
  virtual int32_t GetTrayCount() = 0;
  // For titles, "RVX 0h".
  virtual std::string GetPortAddressText() = 0;
  // The two names that people give it, without blanks at their ends; may be empty.
  virtual std::string GetInstrumentId() = 0;
  virtual std::string GetInstrumentName() = 0;
  // Asks a tray that runs and is not paused to pause; otherwise without effect. `now` 0: after the
  // present position, else at once, and an unfinished sample is run again. The watcher is told when
  // the pause has begun.
  virtual void PauseTray(int32_t tray, int32_t now) = 0;
  // Asks the user when to pause, and does it. Returns 1; 0 if nothing runs, it is paused already or
  // the question was cancelled.
  virtual int32_t QueryPauseTray() = 0;
  // Lets a paused tray go on; otherwise without effect.
  virtual void ResumeTray(int32_t tray) = 0;
  // The same, and 1 if there was a paused tray, else 0.
  virtual int32_t ContinueTray() = 0;
  // Takes over a text of SaveSettingsText and tells the host of the change; any other text is
  // ignored. `flags` says what is taken: 1 tray, 2 run parameters, 4 calibration, 8 identity; the
  // tray only when none runs, or when the user agrees to stop it. Needs the user-interface thread,
  // as the making of actions does.
  virtual void LoadSettingsText(const std::string& text, int32_t flags) = 0;
  // An empty text changes nothing. Does not store the text; tells the host of the change.
  virtual void SetInstrumentId(const std::string& text) = 0;
  virtual void SetInstrumentName(const std::string& text) = 0;
  // Each 1 or 0: a tray has been started and has not ended; that, and it is not paused; that, and
  // it is paused.
  virtual int32_t IsTrayRunning() = 0;
  virtual int32_t IsTrayActive() = 0;
  virtual int32_t IsTrayPaused() = 0;
  // 1 if the instrument reports that it is ready, no switch is on and no tray is running.
  virtual int32_t IsIdle() = 0;
  virtual ~ViscometerInstrument() = default;
};

// The host's growable array that CreateInstruments appends to.
using ArrayOfInstruments = std::vector<ViscometerInstrument*>;

}  // namespace rvx
