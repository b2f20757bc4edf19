// The window as a program: from the folder that is opened to the last thread that has ended.
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
  // Says who acts, once the folder is open, by the command line's rules; null or a name that may do
  // nothing: the window asks.
  // What it throws ends the program.
  std::function<std::string(Users&)> whoActs;
  int lockMinutes = 10;  // without a key or a mouse movement; 0: never
  std::string theme;     // "light", "dark"; empty: as the desktop is
};

// Shows the window and returns the program's exit code when it was closed. On the main thread,
// under the real or a paced base. HostError if the folder can't be opened.
int RunDesktop(const DesktopOptions& options);

// Runs `work` on a thread of its own while the window's thread goes on with its events; returns
// when it is done.
class GuiThread;
void RunAside(GuiThread& gui, const std::string& name, std::function<void()> work);

}  // namespace torvell
