// The database's memory, for tests: counts and fails its allocations.
#pragma once

#include "tests/reliability/fault_disk.h"

namespace torvell {

// Of the whole process, in force from before the database's first use.
FaultCounter& MemoryFaults();

}  // namespace torvell
