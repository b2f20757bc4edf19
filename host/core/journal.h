// The journal of tray runs: what a host that was killed finds again at its next start.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/core/lock_ranks.h"
#include "host/core/sample_store.h"
#include "platform/date.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

class Database;
class RunMarks;

enum class PositionState {
  NotRun,          // nothing of it has been stored
  PartlyMeasured,  // some of its tests are in the archive
  Measured         // all of its tests are in the archive
};

struct InterruptedPosition {
  int32_t position = 0;  // from 0
  std::string classKey;
  std::string sampleId;
  int32_t tests = 0;   // tests that it has
  int32_t stored = 0;  // results of its last attempt with any that are in the archive
  PositionState state = PositionState::NotRun;
};

// A run that ended without its end being noted: the program was killed, or the machine went down.
struct InterruptedTray {
  int64_t run = 0;
  std::string archiveKey;  // "RVXCOM1:0"
  std::string instrumentId;
  platform::Date started;                      // local time
  std::vector<InterruptedPosition> positions;  // the filled ones, in order
};

// What the journal notes of a tray as it starts.
struct TrayPlan {
  std::string archiveKey;
  std::string instrumentId;
  std::string serialNumber;
  rvx::ViscometerInstrument* instrument = nullptr;
  bool simulated = false;
  struct Position {
    int32_t position = 0;
    std::string classKey;
    std::string sampleId;
    int32_t tests = 1;
  };
  std::vector<Position> positions;  // the filled ones
};

// Any thread. The operations that note something during a run never raise: the tray goes on, and
// the log has the reason.
class TrayJournal {
 public:
  // `marksFile` tells runs that are alive, in whichever process, from those that were interrupted.
  TrayJournal(Database& database, const std::string& marksFile);
  ~TrayJournal();

  // The runs that were interrupted, latest first. Several for one archive key only if several
  // processes ran a tray there. HostError Database.
  std::vector<InterruptedTray> Interrupted();
  // The latest of them. HostError Database.
  std::optional<InterruptedTray> InterruptedOf(const std::string& archiveKey);
  // The person knows of it or has replaced the tray: it is not offered again. HostError Database.
  void Close(int64_t run);

  // A run begins: its number. Closes what was interrupted there. HostError Database if it can't be
  // noted; then nothing is closed either.
  int64_t Begin(const TrayPlan& plan);
  // A position that is started anew counts from there on, as soon as it has a result: the
  // instrument also reports its moves before and behind the samples as a start of the first
  // position.
  void NoteSampleStarted(int64_t run, int32_t position);
  void NoteSampleStatus(int64_t run, int32_t position);
  void NoteSampleFinished(int64_t run, int32_t position);
  void End(int64_t run, const std::string& how);

  // The run that a sample being stored by the calling thread belongs to.
  SampleOrigin FindOrigin(const rvx::Sample& sample);

 private:
  struct LiveRun {
    rvx::ViscometerInstrument* instrument = nullptr;
    std::string instrumentId;
    std::string serialNumber;
    bool simulated = false;
    int32_t position = -1;  // the one that is running
    int32_t attempt = 0;
    std::map<int32_t, int32_t> attempts;
    platform::ThreadId thread = 0;  // that reported last
  };

  Database& database_;
  std::unique_ptr<RunMarks> marks_;
  platform::PlainLock lock_{"journal", kJournalLockRank};
  std::map<int64_t, LiveRun> live_ GUARDED_BY(lock_);
};

}  // namespace torvell
