// run: a tray from its file to its samples, on one instrument or on several at once.
#include <fmt/format.h>
#include <sys/stat.h>

#include <set>

#include "host/cli/commands.h"
#include "host/cli/failure.h"
#include "host/cli/run_controller.h"
#include "host/core/users.h"
#include "host/tray/preparation.h"
#include "host/tray/tray_access.h"

namespace torvell {

namespace {

struct RunArguments {
  std::vector<std::string> files;  // FILE, or WHICH=FILE for each of several
  bool prepare = false;
};

// One instrument and the file for its tray; if empty, its present tray runs.
struct Target {
  const FoundInstrument* found = nullptr;
  std::string file;
};

bool FileExists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

std::vector<Target> FindTargets(Session& session, const RunArguments& arguments) {
  std::vector<Target> targets;
  if (arguments.files.empty()) return {{&session.OneInstrument(), ""}};
  std::set<const FoundInstrument*> used;
  for (const std::string& argument : arguments.files) {
    const size_t equals = argument.find('=');
    // A file's own name may contain "=".
    const bool named = equals != std::string::npos && !FileExists(argument);
    if (!named && arguments.files.size() > 1) {
      throw CommandFailure(ExitCode::BadUse,
                           fmt::format("found \"{}\" among several trays; accepted: "
                                       "INSTRUMENT=FILE, as COM1=a.csv. Nothing was started.",
                                       argument));
    }
    Target target;
    target.found =
        named ? &session.NamedInstrument(argument.substr(0, equals)) : &session.OneInstrument();
    target.file = named ? argument.substr(equals + 1) : argument;
    if (!used.insert(target.found).second) {
      throw CommandFailure(ExitCode::BadUse,
                           fmt::format("{} is named twice; accepted: one tray for "
                                       "each instrument. Nothing was started.",
                                       target.found->identity.portName));
    }
    targets.push_back(target);
  }
  return targets;
}

// Makes a simulated instrument ready for a tray.
void Prepare(Session& session, const FoundInstrument& found, platform::InterruptWatch& interrupts) {
  const bool ready = PrepareSimulated(
      found, [&interrupts] { return interrupts.count() > 0; },
      [&session](const std::string& text) { session.output().Progress(text); });
  if (!ready) {
    throw CommandFailure(ExitCode::Interrupted, "interrupted while preparing; nothing was started");
  }
}

void FillTray(Session& session, const Target& target, TrayActions actions) {
  const FoundInstrument& found = *target.found;
  if (!target.file.empty()) {
    ReplaceTray(session.host(), found, std::move(actions));
    CloseInterrupted(session.host(), found);
    return;
  }
  const auto interrupted = session.host().journal().InterruptedOf(found.identity.archiveKey);
  if (interrupted) {
    for (const std::string& notice : KeepWhatIsNotMeasured(session.host(), found, *interrupted)) {
      session.output().Notice(notice);
    }
  }
  if (ReadTray(found).empty()) {
    if (interrupted) CloseInterrupted(session.host(), found);
    throw CommandFailure(
        ExitCode::BadUse,
        fmt::format("the tray of {} is empty, so nothing was started. Give a file, "
                    "or load one with \"torvell tray load\".",
                    found.identity.portName));
  }
}

int Run(Session& session, const RunArguments& arguments) {
  session.RequireLevel(kLevelOperator, "run a tray");
  const std::vector<Target> targets = FindTargets(session, arguments);
  std::vector<const FoundInstrument*> instruments;
  std::vector<TrayActions> actions;
  // All files are checked before anything is changed.
  for (const Target& target : targets) {
    if (arguments.prepare && !target.found->identity.simulated) {
      throw CommandFailure(ExitCode::BadUse,
                           "--prepare is for the simulated instrument only: on a real one a person "
                           "has to see to the steppers. Nothing was started. Use \"service home\" "
                           "and \"service temperature\".");
    }
    instruments.push_back(target.found);
    actions.push_back(target.file.empty() ? TrayActions() : BuildTray(*target.found, target.file));
  }
  platform::InterruptWatch interrupts;
  for (size_t i = 0; i < targets.size(); ++i) {
    FillTray(session, targets[i], std::move(actions[i]));
  }
  for (const FoundInstrument* found : instruments) {
    session.WaitForStatus(*found);
    if (arguments.prepare) Prepare(session, *found, interrupts);
  }
  RunController controller(session, interrupts, instruments);
  return static_cast<int>(controller.Run());
}

}  // namespace

void AddRunCommand(const Command& program) {
  const auto arguments = std::make_shared<RunArguments>();
  const Command run =
      program.AddCommand("run", "run a tray and wait for its end (level 10)", Run, arguments);
  run.Add("FILE", arguments->files,
          "a tray file to load first, else the tray as it stands; with several instruments "
          "COM1=FILE COM2=FILE");
  run.AddFlag("--prepare", arguments->prepare,
              "first set the home flag and cool the cell; simulated instrument only");
}

}  // namespace torvell
