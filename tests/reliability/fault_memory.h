// The database's memory, for tests: counts and fails its allocations.
#pragma once

#include "tests/reliability/fault_disk.h"

namespace torvell {

// The counter of the process, installed before main, since SQLite accepts it only before its first
// use.
FaultCounter& MemoryFaults();

}  // namespace torvell
