// desktop: the window.
#include <cstdlib>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/session.h"
#include "host/desktop/desktop.h"

namespace torvell {
namespace {

// Without a display the toolkit would end the program with a core dump. The toolkit may also have
// been told to draw somewhere else.
bool HasDisplay() {
  for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

int OpenDesktop(const GlobalOptions& global, DesktopOptions& options) {
  if (platform::CurrentTimeBase() == platform::TimeBaseKind::Virtual) {
    throw CommandFailure(ExitCode::BadUse,
                         "a window can't live in virtual time: nobody could follow it. Nothing "
                         "was opened. Use --clock x20 or the like.");
  }
  if (!HasDisplay()) {
    throw CommandFailure(ExitCode::BadUse,
                         "there is no display to open a window on: neither DISPLAY nor "
                         "WAYLAND_DISPLAY is set, as in a plain remote session. Nothing was "
                         "opened. Start it from a desktop, or use the other commands, which "
                         "need none (torvell --help).");
  }
  options.dataFolder = global.dataFolder;
  options.simulate = global.simulate;
  options.whoActs = [&global](Users& users) { return ActingUserOf(global, users); };
  return RunDesktop(options);
}

}  // namespace

void AddDesktopCommand(const Command& program) {
  const auto options = std::make_shared<DesktopOptions>();
  const Command desktop = program.AddProgram(
      "desktop", "open the window",
      [options](const GlobalOptions& global) { return OpenDesktop(global, *options); });
  desktop.AddFlag("--demo", options->demo,
                  "fill a fresh data folder as a demonstration; with --simulate and no --data a "
                  "folder of its own is used for that");
  desktop
      .Add("--lock-after", options->lockMinutes,
           "lock after so many minutes without a key; 0: never (default: 10)")
      .Named("MINUTES")
      .Whole(0, 24 * 60);
  desktop.Add("--theme", options->theme, "light or dark; else as the desktop is")
      .Named("light|dark")
      .Word({"light", "dark"});
}

}  // namespace torvell
