// desktop: the window.
#include <CLI/CLI.hpp>
#include <cstdlib>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/session.h"
#include "host/desktop/desktop.h"

namespace torvell {
namespace {

// Without one the toolkit would end the program with a dump. It may also have been told to draw
// elsewhere.
bool HasDisplay() {
  for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

}  // namespace

void AddDesktopCommand(CLI::App& app, Invocation& invocation) {
  CLI::App* desktop = app.add_subcommand("desktop", "open the window");
  const auto options = std::make_shared<DesktopOptions>();
  desktop->add_flag("--demo", options->demo,
                    "fill a fresh data folder as a demonstration; with --simulate and no --data a "
                    "folder of its own is used for that");
  desktop
      ->add_option("--lock-after", options->lockMinutes,
                   "lock after so many minutes without a key; 0: never (default: 10)")
      ->type_name("MINUTES")
      ->check(CLI::Range(0, 24 * 60));
  desktop->add_option("--theme", options->theme, "light or dark; else as the desktop is")
      ->type_name("light|dark")
      ->check(CLI::IsMember({"light", "dark"}));
  desktop->callback([&invocation, options] {
    invocation.program = [&invocation, options] {
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
      options->dataFolder = invocation.options.dataFolder;
      options->simulate = invocation.options.simulate;
      options->whoActs = [&invocation](Users& users) {
        return ActingUserOf(invocation.options, users);
      };
      return RunDesktop(*options);
    };
  });
}

}  // namespace torvell
