// Runs the window as a program: opens the folder, shows the window, ends all threads.
#pragma once

#include <functional>
#include <string>

#include "host/core/users.h"
#include "host/desktop/theme.h"

namespace torvell {

struct DesktopOptions {
  std::string dataFolder;  // empty: the default one, or with `simulate` the demonstration's
  bool simulate = false;
  bool demo = false;  // fill a fresh data folder as a demonstration
  // Returns who acts once the folder is open, by the command line's rules. If it is null or returns
  // a user without rights, the window asks. An exception from it ends the program.
  std::function<std::string(Users&)> whoActs;
  int lockMinutes = 10;  // minutes without input until the window locks; 0: never
  std::string theme;     // "light", "dark"; empty: the desktop's
};

// Shows the window and returns the program's exit code after it was closed. On the main thread,
// with the real or a paced time base. HostError if the folder can't be opened.
int RunDesktop(const DesktopOptions& options);

// Runs `work` on a separate thread, called `name`, while the window's thread handles its events;
// returns when `work` is done.
class GuiThread;
void RunAside(GuiThread& gui, const std::string& name, std::function<void()> work);

}  // namespace torvell
