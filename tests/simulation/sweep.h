// Runs many seeds in child processes. A run that breaks ends its process, and the sweep goes on
// with the next seed in a new one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/simulation/run.h"

namespace rvx::soak {

// What to sweep and how. The seeds are `first` to `last`; `jobs` is the number of child processes
// at a time.
struct SweepOptions {
  RunOptions run;
  uint64_t first = 1;
  uint64_t last = 1;
  int jobs = 2;
  uint64_t chunk = 50;            // seeds that one child takes
  bool checkDeterminism = false;  // each seed twice, with equal hashes
  bool checkThreads = false;      // each with fibers and with threads, with equal hashes
  bool printHashes = false;       // a line for each seed
  std::optional<double> minutes;  // no new seeds after this time
  size_t mostFailures = 5;        // ends the sweep
  size_t historyLines = 60;       // of a failing seed
};

// The outcome of a seed's run.
struct Outcome {
  uint64_t seed = 0;
  bool failed = false;
  std::string what;     // the invariant, or what ended the process
  std::string history;  // the last events, and what the process wrote
};

struct SweepResult {
  uint64_t seeds = 0;
  RunFigures sum;                 // over all seeds; its hash has no meaning
  double seconds = 0.0;           // of real time
  double cpuSeconds = 0.0;        // of all children
  std::vector<Outcome> failures;  // in order of their seeds
};

// Runs the seeds. Ends early after `minutes` or `mostFailures`.
SweepResult Sweep(const SweepOptions& options);
// Runs the first of the seeds alone.
Outcome RunAlone(const SweepOptions& options);

// The faults of a failing seed without which it would not fail, found by switching off one after
// the other. All other faults are then switched off in `options.run`.
std::vector<Fault> FindSmallestFaults(SweepOptions& options);

}  // namespace rvx::soak
