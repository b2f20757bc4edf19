#include "tests/simulation/mutant.h"

#include <algorithm>
#include <stdexcept>

#include "platform/mutant.h"
#include "platform/sanitizer.h"

namespace rvx::soak {
namespace {

[[maybe_unused]] constexpr MutantEntry kMutants[] = {
    {"queue-reversed", "the command queued last is sent first"},
    {"locks-reversed", "the lock of the pending command is taken before the queue's"},
    {"reply-not-awaited", "the next frame goes out without waiting for a reply"},
    {"wrong-byte-order", "numbers of two bytes are sent low byte first"},
    {"resend-once-more", "a refused command is sent once too often"},
    {"dead-client-called", "the client of a command is called behind its end"},
    {"client-called-twice", "a reply is delivered twice"},
    {"wake-up-lost", "a status frame wakes nobody"},
    {"outage-reported-again", "an instrument that is silent is reported again and again"},
    {"outage-not-reported", "an instrument that is silent is not reported"},
    {"silent-test-not-polled", "an instrument that falls silent in a test is not asked"},
    {"stop-without-cab", "a stop sends no CAB"},
    {"end-told-early", "the end of an aborted tray is told while its actions still report"},
    {"end-told-twice", "a stop and the end of a run both tell the watcher"},
    {"end-not-told", "the end of a run is not told"},
    {"resume-lost", "a pause does not end"},
    {"run-marked-late", "a sample that is stored may still be paused and run again"},
    {"sample-stored-twice", "a sample is stored twice"},
    {"sample-not-stored", "a sample is not stored"},
    {"archive-failure-kept", "a failure of the archive is not reported"},
    {"position-off-by-one", "a sample is stored under the position before"},
    {"first-test-for-all", "all samples of a position have the data of its first test"},
    {"operator-missing", "a sample is stored without its operator"},
    {"last-readings-left-out", "the last second of a run does not count"},
    {"count-never-wraps", "readings stop when the instrument's counter wraps"},
    {"constant-left-out", "B1 does not enter the viscosity"},
};

// A lock that nobody takes any more. The run goes on as if nothing were: one task runs at a time.
// Only the thread sanitizer sees that two threads are in each other's way.
[[maybe_unused]] constexpr MutantEntry kRaces[] = {
    {"lock-left-out:launch record", "watcher and action of a run, without a lock"},
    {"lock-left-out:TrayRun", "the tray's watcher, without a lock"},
    {"lock-left-out:tray-run pointer", "the present run, without a lock"},
    {"lock-left-out:tray", "the actions of the tray, without a lock"},
    {"lock-left-out:action", "the state of an action, without a lock"},
    {"lock-left-out:command queue", "the queue, without a lock"},
    {"lock-left-out:pending command", "the command that was sent, without a lock"},
    {"lock-left-out:auto report", "asked and seen, without a lock"},
    {"lock-left-out:configuration", "the configuration record, without a lock"},
    {"lock-left-out:status", "the last status record, without a lock"},
    {"lock-left-out:status events", "who is told of a status, without a lock"},
    {"lock-left-out:supply means", "the means of the supplies, without a lock"},
    {"lock-left-out:instrument users", "the threads that use an instrument, without a lock"},
    {"lock-left-out:sequencer reply", "the reply that a sequencer waits for, without a lock"},
    {"lock-left-out:simulator input", "the simulator's input, without a lock"},
    {"lock-left-out:simulator motion", "the simulator's axes, without a lock"},
    {"lock-left-out:simulator stop", "the delivery of the simulator's frames, without a lock"},
};

}  // namespace

std::span<const MutantEntry> AllMutants() {
#if defined(RVX_MUTANTS)
  if (platform::detail::kFindsRaces) return kRaces;
  return kMutants;
#else
  return {};
#endif
}

void SetMutant(const std::string& name) {
  if (name.empty()) return;
  const auto mutants = AllMutants();
  const auto found = std::find_if(mutants.begin(), mutants.end(),
                                  [&](const MutantEntry& entry) { return entry.name == name; });
  if (found == mutants.end()) throw std::invalid_argument("no planted fault is named " + name);
#if defined(RVX_MUTANTS)
  // The table's own text, which outlives the run.
  platform::plantedFault = found->name;
#endif
}

}  // namespace rvx::soak
