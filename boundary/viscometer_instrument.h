// An instrument as the host sees it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "boundary/action.h"
#include "boundary/tray.h"

namespace rvx {

// The parent of an embedded status window, and that window; what they are is the window toolkit's.
class WindowHandle;

// The host owns it after CreateInstruments and deletes it through this interface, from a thread
// other than the user-interface thread (a run that is ending may need that one). The operations may
// be called from any thread unless they say otherwise.
class ViscometerInstrument {
 public:
  // If a tray is running, asks whether to stop it.
  virtual void StopTray(int32_t tray) = 0;
  // Asks whether to stop a running tray, and aborts it unless the answer is No: 1 if it was
  // aborted.
  virtual int32_t QueryAbortTray() = 0;
  virtual int32_t StartTrayFor(int32_t tray, TrayWatcher* watcher) = 0;
  // Starts the tray, 1; raises ActionException if it runs already, the cell is too warm or no
  // thread can be started. `watcher` may be null; it must live until TrayFinished.
  virtual int32_t StartTray(TrayWatcher* watcher) = 0;
  // A new action for a class key, an index of the action table, of the configuration actions, of
  // the sample actions (kinds 0 to 2) or of the service actions. The caller owns it.
  // InvalidException for anything else.
  virtual Action* CreateActionFromText(const std::string& classKey) = 0;
  virtual Action* CreateActionByIndex(int32_t index) = 0;
  virtual std::string GetHelpFile() = 0;
  virtual Action* CreateConfigAction(int32_t index) = 0;
  virtual Action* CreateSampleAction(int32_t kind) = 0;
  virtual Action* CreateServiceAction(int32_t index) = 0;
  // The whole instrument as text; LoadSettingsText takes it back. Flags: 1 tray, 2 run parameters,
  // 4 calibration, 8 identity.
  virtual std::string SaveSettingsText() = 0;
  // User-interface thread. Null if there is none.
  virtual WindowHandle* ShowStatusWindow(WindowHandle* parent) = 0;
  virtual void CloseStatusWindow() = 0;
  virtual TrayOfSampleActions* GetTray(int32_t index) = 0;
  virtual std::string GetTypeName() = 0;
  virtual int32_t GetTrayCount() = 0;
  virtual std::string GetPortAddressText() = 0;
  virtual std::string GetInstrumentId() = 0;
  virtual std::string GetInstrumentName() = 0;
  // Only while the tray runs and is not paused: now 0 pauses behind the present position.
  virtual void PauseTray(int32_t tray, int32_t now) = 0;
  virtual int32_t QueryPauseTray() = 0;
  virtual void ResumeTray(int32_t tray) = 0;
  virtual int32_t ContinueTray() = 0;
  virtual void LoadSettingsText(const std::string& text, int32_t flags) = 0;
  virtual void SetInstrumentId(const std::string& text) = 0;
  virtual void SetInstrumentName(const std::string& text) = 0;
  virtual int32_t IsTrayRunning() = 0;
  virtual int32_t IsTrayActive() = 0;
  virtual int32_t IsTrayPaused() = 0;
  virtual int32_t IsIdle() = 0;
  virtual ~ViscometerInstrument() = default;
};

// The host's growable array that CreateInstruments appends to.
using ArrayOfInstruments = std::vector<ViscometerInstrument*>;

}  // namespace rvx
