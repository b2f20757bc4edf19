// The journal of tray runs, from which the next start learns what a killed host was doing.
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
  int32_t stored = 0;  // results in the archive, of the last attempt that has any
  PositionState state = PositionState::NotRun;
};

// A run whose end was not noted: the program was killed, or the machine went down.
struct InterruptedTray {
  int64_t run = 0;
  std::string archiveKey;  // "RVXCOM1:0"
  std::string instrumentId;
  platform::Date started;                      // local time
  std::vector<InterruptedPosition> positions;  // the filled ones, in order
};

// What the journal notes when a tray starts.
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

// The runs of a data folder. Any thread. The operations that note something during a run never
// throw: the tray goes on, and the reason is in the log.
class TrayJournal {
 public:
  // `marksFile` tells runs that are alive in any process from interrupted ones. HostError
  // DataFolder if it can't be opened.
  TrayJournal(Database& database, const std::string& marksFile);
  ~TrayJournal();

  // Returns the interrupted runs, latest first. An archive key has several only if several
  // processes ran a tray there. HostError Database.
  std::vector<InterruptedTray> Interrupted();
  // Returns the latest interrupted run of this key. HostError Database.
  std::optional<InterruptedTray> InterruptedOf(const std::string& archiveKey);
  // Notes that the user knows of the interruption or has replaced the tray, so it is not offered
  // again. HostError Database.
  void Close(int64_t run);

  // Notes the start of a run and returns its number. Closes interrupted runs of the same archive
  // key. HostError Database if the start can't be noted; then nothing is closed either.
  int64_t Begin(const TrayPlan& plan);
  // Counts an attempt at the position. When it has a result, earlier attempts no longer count;
  // before that they do, since the instrument also reports its moves before and after the samples
  // as a start of the first position.
  void NoteSampleStarted(int64_t run, int32_t position);
  void NoteSampleStatus(int64_t run, int32_t position);
  void NoteSampleFinished(int64_t run, int32_t position);
  void End(int64_t run, const std::string& how);

  // Returns the run that a sample belongs to; the calling thread is storing it. `run` is 0 if there
  // is none.
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
    platform::ThreadId thread = 0;  // the thread that reported last
  };

  Database& database_;
  std::unique_ptr<RunMarks> marks_;
  platform::PlainLock lock_{"journal", kJournalLockRank};
  std::map<int64_t, LiveRun> live_ GUARDED_BY(lock_);
};

}  // namespace torvell
