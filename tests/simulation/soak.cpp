// Simulated runs of whole trays by the thousand, with faults. See docs/reliability.md.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/sanitizer.h"
#include "tests/simulation/sweep.h"

namespace rvx::soak {
namespace {

struct Arguments {
  SweepOptions sweep;
  bool oneSeed = false;
  bool untilFailure = false;
};

std::string RepeatLine(const SweepOptions& sweep) {
  std::string line = "  repeat: " + RepeatCommand(sweep.first, sweep.run);
  if (sweep.checkDeterminism) line += " --check-determinism";
  if (sweep.checkThreads) line += " --check-threads";
  return line + "\n";
}

void PrintFailure(const Outcome& failure, SweepOptions sweep) {
  sweep.first = failure.seed;
  fmt::print("\nseed {}: {}\n{}{}", failure.seed, failure.what, RepeatLine(sweep), failure.history);
  // Only what can be repeated can be narrowed down. The thread sanitizer forgets old accesses, and
  // which ones depends on all seeds that the process has run.
  if (!RunAlone(sweep).failed) {
    fmt::print("  alone it is good\n");
    return;
  }
  const std::vector<Fault> needed = FindSmallestFaults(sweep);
  std::string names;
  for (const Fault fault : needed) names += fmt::format(" {}", KindOf(fault).name);
  fmt::print("  smallest set of faults:{}\n{}", needed.empty() ? " none" : names,
             RepeatLine(sweep));
}

int RunOneSeed(const Arguments& arguments) {
  const Outcome outcome = RunAlone(arguments.sweep);
  if (outcome.failed) {
    PrintFailure(outcome, arguments.sweep);
    return 1;
  }
  fmt::print("{}seed {}: good\n", outcome.history, outcome.seed);
  return 0;
}

int RunSweep(const Arguments& arguments) {
  const SweepResult result = Sweep(arguments.sweep);
  for (const Outcome& failure : result.failures) PrintFailure(failure, arguments.sweep);
  const double hours = static_cast<double>(result.sum.simulated) / 3.6e9;
  fmt::print(
      "{} seeds in {:.1f} s ({:.0f} a second; {:.2f} ms of CPU each), {} samples stored\n"
      "{:.1f} hours of instrument time, {:.0f} for each CPU-minute; {:.1f} switches for each "
      "second of it\n{} failed\n",
      result.seeds, result.seconds, static_cast<double>(result.seeds) / result.seconds,
      1e3 * result.cpuSeconds / static_cast<double>(std::max<uint64_t>(result.seeds, 1)),
      result.sum.samples, hours, hours / (result.cpuSeconds / 60.0),
      static_cast<double>(result.sum.switches) / (hours * 3600.0), result.failures.size());
  return result.failures.empty() ? 0 : 1;
}

// For scripts: without the repetitions that narrow the failure down.
int RunUntilFailure(SweepOptions sweep) {
  sweep.jobs = 1;
  sweep.chunk = 10;
  sweep.mostFailures = 1;
  const SweepResult result = Sweep(sweep);
  if (result.failures.empty()) {
    fmt::print("{} seeds: good\n", result.seeds);
    return 0;
  }
  const Outcome& failure = result.failures.front();
  fmt::print("seed {}: {}\n", failure.seed, failure.what);
  return 1;
}

// "A..B" or one number.
void ReadRange(const std::string& text, SweepOptions& sweep) {
  const size_t dots = text.find("..");
  sweep.first = std::stoull(text);
  sweep.last = dots == std::string::npos ? sweep.first : std::stoull(text.substr(dots + 2));
  if (sweep.last < sweep.first) throw CLI::ValidationError("--seeds", "is A..B, A not above B");
}

void AddFault(const std::string& name, SweepOptions& sweep) {
  if (name == "all") {
    for (size_t i = 0; i < kFaultCount; ++i) sweep.run.without.insert(static_cast<Fault>(i));
    return;
  }
  const std::optional<Fault> fault = FaultByName(name);
  if (!fault) throw CLI::ValidationError("--without", "no fault is named " + name);
  sweep.run.without.insert(*fault);
}

int Main(int argc, char** argv) {
  Arguments arguments;
  SweepOptions& sweep = arguments.sweep;
  CLI::App app("Simulated runs of whole trays, with faults; each is repeated by its seed.");
  app.add_option_function<uint64_t>(
      "--seed",
      [&](const uint64_t& seed) {
        sweep.first = sweep.last = seed;
        arguments.oneSeed = true;
      },
      "one seed, with its history");
  app.add_option_function<std::string>(
      "--seeds", [&](const std::string& text) { ReadRange(text, sweep); }, "seeds A..B");
  app.add_option_function<double>(
      "--minutes",
      [&](const double& minutes) {
        sweep.minutes = minutes;
        sweep.last = UINT64_MAX;
      },
      "seeds for so long");
  app.add_option_function<std::string>(
         "--profile",
         [&](const std::string& name) {
           sweep.run.profile = name == "tray" ? Profile::Tray : Profile::Short;
         },
         "short (1 to 3 samples) or tray (up to 30)")
      ->check(CLI::IsMember({"short", "tray"}));
  app.add_option_function<std::vector<std::string>>(
         "--without",
         [&](const std::vector<std::string>& names) {
           for (const std::string& name : names) AddFault(name, sweep);
         },
         "switches a fault off; \"all\" of them")
      ->expected(1, 100);
  app.add_option("--first", sweep.first, "the first seed of --minutes");
  app.add_flag("--check-determinism", sweep.checkDeterminism, "runs each seed twice");
  app.add_flag("--check-threads", sweep.checkThreads,
               "runs each seed on fibers and on threads, which must give the same trace");
  app.add_flag_callback(
      "--threads", [&] { sweep.run.taskSwitch = platform::TaskSwitch::Threads; },
      "runs on threads of the system in place of fibers");
  app.add_flag("--hashes", sweep.printHashes, "prints the hash of each seed");
  app.add_option("--jobs", sweep.jobs, "processes at a time")->check(CLI::Range(1, 64));
  app.add_option("--history", sweep.historyLines, "lines of history that are printed");
  app.add_option("--failures", sweep.mostFailures, "ends the sweep behind so many");
  app.add_flag("--until-failure", arguments.untilFailure,
               "one seed after the other, up to the first that fails; a single line says which");
  CLI11_PARSE(app, argc, argv);
  if (arguments.untilFailure) return RunUntilFailure(sweep);
  return arguments.oneSeed ? RunOneSeed(arguments) : RunSweep(arguments);
}

}  // namespace
}  // namespace rvx::soak

#if defined(PLATFORM_THREAD_SANITIZER)
// If a process went on after a report, it would not be clear to which of its seeds the report
// belongs.
extern "C" const char* __tsan_default_options() {
  return "halt_on_error=1:stack_trace_format='    #%n %f %S'";
}
#endif

int main(int argc, char** argv) { return rvx::soak::Main(argc, argv); }
