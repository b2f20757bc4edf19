// Runs many seeds, each in a child process's hands: a run that breaks ends its process, and the
// sweep goes on with the next seed in a new one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/simulation/run.h"

namespace rvx::soak {

struct SweepOptions {
  RunOptions run;
  uint64_t first = 1;
  uint64_t last = 1;
  int jobs = 2;
  uint64_t chunk = 50;            // seeds that one child takes
  bool checkDeterminism = false;  // each seed twice, with equal hashes
  bool checkThreads = false;      // each with fibers and with threads, with equal hashes
  bool printHashes = false;       // a line for each seed
  std::optional<double> minutes;  // takes no new seeds behind this
  size_t mostFailures = 5;        // ends the sweep
  size_t historyLines = 60;       // of a failing seed
};

// What is known of a seed's run.
struct Outcome {
  uint64_t seed = 0;
  bool failed = false;
  std::string what;     // the invariant, or what ended the process
  std::string history;  // the last events, and what the process wrote
};

struct SweepResult {
  uint64_t seeds = 0;
  RunFigures sum;                 // over all seeds; the hash says nothing
  double seconds = 0.0;           // of real time
  double cpuSeconds = 0.0;        // of all children
  std::vector<Outcome> failures;  // by their seeds
};

SweepResult Sweep(const SweepOptions& options);
// Runs the first of the seeds alone.
Outcome RunAlone(const SweepOptions& options);

// The faults of a failing seed without which it would not fail, found by switching off one after
// the other; `options.run` then has the rest switched off.
std::vector<Fault> FindSmallestFaults(SweepOptions& options);

}  // namespace rvx::soak
