#include "host/cli/options.h"

#include "host/cli/commands.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr int kFastestPace = 1000;
constexpr int64_t kMaxDescriptor = 65535;
// In the order of the help.
constexpr void (*kFamilies[])(const Command&) = {
    AddReadingCommands,   AddPortCommands,     AddConstantsCommands, AddSettingsCommands,
    AddStandardsCommands, AddTrayCommands,     AddRunCommand,        AddArchiveCommands,
    AddServiceCommands,   AddCalibrateCommand, AddSimulateCommands,  AddPrintCommands,
    AddUserCommands,      AddDesktopCommand};

void AddGlobalOptions(const Command& program, GlobalOptions& options) {
  program
      .Add("--data", options.dataFolder,
           "data folder, made on first use (default: torvell below $XDG_DATA_HOME)")
      .Named("DIR");
  program.AddFlag("--simulate", options.simulate, "run the built-in simulated instrument");
  program
      .Add("--clock", options.clock,
           "time: real, virtual (as fast as it goes, with --simulate), or xN (N times as fast)")
      .Named("real|virtual|xN")
      .Accepting([](const std::string& text) { return ParseClock(text).has_value(); },
                 "real, virtual, x1 to x1000");
  program.Add("--seed", options.seed, "repeat a run exactly, with --clock virtual")
      .Named("N")
      .Whole(0);
  program.Add("--user", options.user, "act as this user; the password is asked for").Named("NAME");
  program
      .Add("--password-fd", options.passwordDescriptor,
           "read passwords from this file descriptor, one line each")
      .Named("N")
      .Whole(0, kMaxDescriptor);
  program
      .Add("--instrument", options.instrument,
           "the instrument meant, where several are there: its port (COM1), its key (RVXCOM1:0) "
           "or its number in discover's list, from 0")
      .Named("WHICH");
  program.AddFlag("--json", options.json, "results as JSON");
  program.AddFlag("--quiet", options.quiet, "no progress on standard error");
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

void DescribeCommandLine(const Command& program, GlobalOptions& options) {
  AddGlobalOptions(program, options);
  for (const auto add : kFamilies) add(program);
}

}  // namespace torvell
