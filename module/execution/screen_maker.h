// The screens of the actions, as an interface for the actions. A program with windows registers its
// screens here; without one no screen can be started.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "boundary/action.h"
#include "module/instrument/action_table.h"

namespace platform {
class Event;
}

namespace rvx {

class ScreenMotion;

// The arguments for making a screen. What is referred to lives until the screen's window is gone.
struct ScreenRequest {
  C_RVX& instrument;
  const std::string& label;  // of the action
  ScreenMotion& motion;
  // Set for good when the action was stopped. A screen that waits for the user keeps a copy, since
  // the stop destroys the screen, and may end the action's run, before that wait returns.
  std::shared_ptr<platform::Event> stopped;
};

// Makes the screen and returns its frame's handle, which the caller owns, or brings the one that is
// open to the front and returns null. Called on the user-interface thread with no lock held, so
// that it may ask the user something at once. An exception from it ends the start with a report.
using ScreenMaker = std::function<FrameWindow*(const ScreenRequest& request)>;

// The work of an action without a screen, on the user-interface thread: the result is that of
// Action::Edit.
using ActionEditor = std::function<int32_t(C_RVX& instrument)>;

// Set the maker or the editor of an action; null removes it. To be called while no screen is being
// started; once at the program's start.
void SetScreenMaker(ActionIndex index, ScreenMaker maker);
void SetActionEditor(ActionIndex index, ActionEditor editor);

// Null where there is none. Any thread.
ScreenMaker GetScreenMaker(ActionIndex index);
ActionEditor GetActionEditor(ActionIndex index);
// Whether any action has a maker or an editor. False means a program without a display.
bool HasScreens();

}  // namespace rvx
