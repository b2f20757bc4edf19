// One simulated run of a seed, in this process.
#pragma once

#include <set>
#include <string>

#include "platform/time_base.h"
#include "tests/simulation/run_page.h"
#include "tests/simulation/scenario.h"

namespace rvx::soak {

// How a seed is run. `without` names the faults that are switched off.
struct RunOptions {
  Profile profile = Profile::Short;
  std::set<Fault> without;
  platform::TaskSwitch taskSwitch = platform::TaskSwitch::Fibers;
};

// The command that repeats a seed.
std::string RepeatCommand(uint64_t seed, const RunOptions& options);

// Runs the seed and writes its figures and history to the page. Does not return if an invariant
// breaks.
void RunSeed(uint64_t seed, const RunOptions& options, RunPage& page);

}  // namespace rvx::soak
