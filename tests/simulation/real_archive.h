// The host's own archive, a database with its spool, behind the simulated host. The database stands
// in memory: what a disk can do to it is looked at elsewhere, and a run has to be fast.
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

// Any thread.
class RealArchive {
 public:
  // `folder` is for the spool; it is emptied first.
  explicit RealArchive(const std::string& folder);

  // Where the runs of a process have their spool.
  static std::string FolderOf(int process);
  static void RemoveFolderOf(int process);

  // Gives the archive a sample: nothing, or why it was refused; it then waits in the spool.
  std::optional<std::string> Store(const Sample& sample);
  // Nothing can be written into the database until then.
  void BeReadOnlyUntil(platform::Microseconds moment);
  // Takes in the spool. What is wrong then: empty if every sample that was given is there once, and
  // as it was given.
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
