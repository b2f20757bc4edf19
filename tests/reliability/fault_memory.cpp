#include "tests/reliability/fault_memory.h"

namespace torvell {
namespace {

sqlite3_mem_methods original;

void* Allocate(int size) { return MemoryFaults().IsDue() ? nullptr : original.xMalloc(size); }
void* Reallocate(void* block, int size) {
  return MemoryFaults().IsDue() ? nullptr : original.xRealloc(block, size);
}

// SQLite takes other functions only before its first use, so before main.
[[maybe_unused]] const bool installed = [] {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &original);
  sqlite3_mem_methods counting = original;
  counting.xMalloc = Allocate;
  counting.xRealloc = Reallocate;
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &counting) == SQLITE_OK;
}();

}  // namespace

FaultCounter& MemoryFaults() {
  static FaultCounter faults;
  return faults;
}

}  // namespace torvell
