#include "host/cli/options.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "host/cli/arguments.h"
#include "host/cli/commands.h"
#include "host/cli/exit_codes.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr int kFastestPace = 1000;
constexpr int64_t kMostDescriptor = 65535;
// In the order of the help.
constexpr void (*kFamilies[])(CLI::App&, Invocation&) = {
    AddReadingCommands,   AddPortCommands,     AddConstantsCommands, AddSettingsCommands,
    AddStandardsCommands, AddTrayCommands,     AddRunCommand,        AddArchiveCommands,
    AddServiceCommands,   AddCalibrateCommand, AddSimulateCommands,  AddUserCommands,
    AddDesktopCommand};
constexpr char kVersionText[] = "torvell 0.1.0";

void AddGlobalOptions(CLI::App& app, GlobalOptions& options) {
  app.add_option("--data", options.dataFolder,
                 "data folder, made on first use (default: torvell below $XDG_DATA_HOME)")
      ->type_name("DIR");
  app.add_flag("--simulate", options.simulate, "run the built-in simulated instrument");
  app.add_option(
         "--clock", options.clock,
         "time: real, virtual (as fast as it goes, with --simulate), or xN (N times as fast)")
      ->type_name("real|virtual|xN")
      ->check([](const std::string& text) {
        return ParseClock(text) ? std::string()
                                : "found \"" + text + "\"; accepted: real, virtual, x1 to x1000";
      });
  app.add_option("--seed", options.seed, "repeat a run exactly, with --clock virtual")
      ->type_name("N")
      ->check(WholeNumber(0));
  app.add_option("--user", options.user, "act as this user; the password is asked for")
      ->type_name("NAME");
  app.add_option("--password-fd", options.passwordDescriptor,
                 "read passwords from this file descriptor, one line each")
      ->type_name("N")
      ->check(WholeNumber(0, kMostDescriptor));
  app.add_option(
         "--instrument", options.instrument,
         "the instrument meant, where several are there: its port (COM1), its key (RVXCOM1:0) "
         "or its number in discover's list, from 0")
      ->type_name("WHICH");
  app.add_flag("--json", options.json, "results as JSON");
  app.add_flag("--quiet", options.quiet, "no progress on standard error");
}

}  // namespace

std::optional<platform::TimeBaseOptions> ParseClock(const std::string& text) {
  platform::TimeBaseOptions base;
  if (text == "real") return base;
  if (text == "virtual") {
    base.kind = platform::TimeBaseKind::Virtual;
    return base;
  }
  if (text.size() < 2 || text[0] != 'x' || text[1] < '0' || text[1] > '9') return std::nullopt;
  const std::optional<int> pace = platform::ParseInt(text.substr(1));
  if (!pace || *pace < 1 || *pace > kFastestPace) return std::nullopt;
  base.kind = platform::TimeBaseKind::Paced;
  base.pace = *pace;
  return base;
}

platform::TimeBaseOptions MakeTimeBase(const GlobalOptions& options) {
  platform::TimeBaseOptions base = ParseClock(options.clock).value();
  if (base.kind == platform::TimeBaseKind::Virtual && options.seed) {
    base.seed = *options.seed;
    base.startOfClock = platform::Date(2026, 1, 5, 8, 0, 0);
  }
  return base;
}

std::optional<int> ParseCommandLine(int argc, char** argv, Invocation& invocation) {
  CLI::App app{"Runs RVX viscometers: trays of samples, settings, archives.", "torvell"};
  app.set_version_flag("--version", kVersionText);
  app.set_help_flag("-h,--help", "print this help and exit");
  app.set_help_all_flag("--help-all", "print the help of all commands and exit");
  app.require_subcommand(1);
  app.fallthrough();
  AddGlobalOptions(app, invocation.options);
  for (const auto add : kFamilies) add(app, invocation);
  app.footer(
      "Exit codes: 0 good, 1 the run ended with errors or without a sample that was due,\n"
      "2 bad use or bad input, 3 no instrument, 4 not allowed, 5 archive or data failure,\n"
      "130 interrupted. See torvell(1).");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining();
    const bool isUnknownCommand = app.get_subcommands().empty() && !unknown.empty();
    std::cerr << "error: "
              << (isUnknownCommand ? "there is no command '" + unknown.front() + "'" : error.what())
              << "\nTry: torvell --help\n";
    return static_cast<int>(ExitCode::BadUse);
  }
  return std::nullopt;
}

}  // namespace torvell
