// The screens of the actions, as far as the actions need to know them. A program with a window
// registers its screens here; without one no screen can be started.
#pragma once

#include <functional>
#include <string>

#include "boundary/action.h"
#include "module/instrument/action_table.h"

namespace platform {
class Event;
}

namespace rvx {

class ScreenMotion;

// What a screen is made from. Everything in it lives until the screen's window is gone.
struct ScreenRequest {
  C_RVX& instrument;
  const std::string& label;  // of the action
  ScreenMotion& motion;
  platform::Event& stopped;  // set for good when somebody has stopped the action
};

// Makes the screen, or raises the one that is open: as UserInterfaceClient::PerformCreation. Called
// on the user-interface thread with no lock held, so that it may ask the person something at once.
// What it raises ends the start with a report.
using ScreenMaker = std::function<FrameWindow*(const ScreenRequest& request)>;

// What an action without a screen does instead, on the user-interface thread: the result is that of
// Action::Edit.
using ActionEditor = std::function<int32_t(C_RVX& instrument)>;

// Set the maker or the editor of an action, null to take it away. The caller calls them while no
// screen is being started; once at the program's start.
void SetScreenMaker(ActionIndex index, ScreenMaker maker);
void SetActionEditor(ActionIndex index, ActionEditor editor);

// Null where there is none. Any thread.
ScreenMaker GetScreenMaker(ActionIndex index);
ActionEditor GetActionEditor(ActionIndex index);
// Whether any action has a maker or an editor. False means a program without a display.
bool HasScreens();

}  // namespace rvx
