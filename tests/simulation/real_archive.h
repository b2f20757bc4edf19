// The host's own archive, a database with its spool, used by the simulated host. The database is in
// memory: other tests cover the disk's failures, and a run has to be fast.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/core/database.h"
#include "host/core/journal.h"
#include "host/core/sample_store.h"
#include "platform/lock.h"
#include "platform/time_base.h"

namespace rvx::soak {

// Any thread may call it.
class RealArchive {
 public:
  // `folder` is for the spool; it is emptied first.
  explicit RealArchive(const std::string& folder);

  // The folder for the spool of the runs of a process.
  static std::string FolderOf(int process);
  static void RemoveFolderOf(int process);

  // Stores a sample. Returns nothing, or why the database refused it; it then waits in the spool.
  std::optional<std::string> Store(const Sample& sample);
  // Makes the database read-only until this moment of monotonic time.
  void BeReadOnlyUntil(platform::Microseconds moment);
  // Takes in the spool and compares. Returns what is wrong; empty if every stored sample is there
  // once and unchanged.
  std::string Check();

 private:
  void SetReadOnly(bool isReadOnly);

  torvell::Database database_;
  torvell::TrayJournal journal_;
  torvell::SampleStore store_;
  platform::PlainLock lock_{"soak archive", platform::kLeafRank};
  platform::Microseconds readOnlyUntil_ GUARDED_BY(lock_){0};
  std::vector<Sample> given_ GUARDED_BY(lock_);
};

}  // namespace rvx::soak
