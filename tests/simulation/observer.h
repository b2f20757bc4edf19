// Watches one simulated run and ends it at the first thing that must not be.
//
// It sees the frames on the line as the module writes and receives them, the calls of the tray's
// watchers, the samples and errors that reach the host, and what the operators do. Any thread may
// call it; it waits for nobody.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "boundary/exceptions.h"
#include "boundary/host.h"
#include "boundary/sample.h"
#include "platform/lock.h"
#include "tests/simulation/line_reader.h"
#include "tests/simulation/run_page.h"
#include "tests/simulation/scenario.h"
#include "tests/simulation/tray_record.h"

namespace rvx::soak {

class Observer {
 public:
  Observer(RunPage& page, const Scenario& scenario) : page_(page), scenario_(scenario) {}

  // A line of the history.
  void Note(std::string_view text);
  // Something that must not be: ends the process.
  [[noreturn]] void Break(std::string_view what);
  void Require(bool good, std::string_view what) {
    if (!good) Break(what);
  }

  // --- The line
  void FrameWritten(std::string_view frame);
  // Before the module receives them, and when it has.
  void BytesDelivered(std::span<const uint8_t> bytes);
  void BytesTaken();

  // --- The host
  void StoreBegun(const Sample& sample);
  void StoreEnded(const Sample& sample, bool thrown);
  void ErrorReported(const ActionErrorRecord& error);
  // A watcher raises something, which has to be reported.
  void WatcherThrows();
  // The time of day is moved.
  void ClockJumps();

  // --- What was put into the tray: every action has a sample id of its own.
  void SampleMade(const std::string& sampleId, const PlannedSample& plan);
  void SampleRenamed(const std::string& oldId, const std::string& newId);
  // The tray was changed while it may be running.
  void TrayEdited();
  int edits();
  // Somebody runs an action past the tray.
  void OwnRunStarted();
  // Its actions were replaced by new ones with the same names.
  void TrayReloaded();

  // --- The runs of a tray
  // A watcher for the next start; the observer keeps it to the end.
  TrayRecord* MakeWatcher();
  // Errors that have been reported so far.
  int errors();
  // The sample was told as finished: all its tests were given to the archive, or a failure was
  // reported since there were `errors`; not asked for a tray that was changed since `edits`.
  void CheckFinishedSample(const std::string& sampleId, int edits, int errors);
  // Whether something was started at the instrument and no CAB has gone out since.
  bool IsRunOpen();
  // An abort has ended a run that was open: if it still is, a CAB is due.
  void RunEnded();

  // --- Commands of the operators, each with a number in its text
  int CommandMade(int who);
  void ClientCalled(int number, const std::string& tag);
  void ClientGone(int number);

  // --- At the end
  // An instrument begins to talk.
  void InstrumentOpened();
  // What must have happened when the instrument is gone; whether the line was alive till then.
  void InstrumentClosed(bool lineWasAlive);
  uint64_t stored() const { return stored_; }
  // When a frame last reached the module.
  platform::Microseconds lastDelivered();

 private:
  static constexpr int64_t kNoJump = 1'000'000'000;
  // A test that was started, with the status frames up to the next start.
  struct StartedTest {
    std::vector<uint8_t> payload;  // of its CST
    std::vector<SeenStatus> frames;
    bool isStored = false;
    bool abortsOpen = false;  // a CAB of before had no answer yet
  };
  void CheckSpacing(int64_t now) REQUIRES(lock_);
  void CountOwnCommand(std::string_view payload) REQUIRES(lock_);
  StartedTest* FindStart(const Sample& sample) REQUIRES(lock_);
  void CheckResponding(int64_t now) REQUIRES(lock_);
  void FollowRun(const SeenStatus& status) REQUIRES(lock_);
  void CheckCabDue(int64_t now) REQUIRES(lock_);
  void CheckIdentity(const Sample& sample, const PlannedSample& plan);
  void CheckMeasured(const Sample& sample, const PlannedTest& test);
  void CheckViscosity(const Sample& sample);
  void CheckTime(const Sample& sample);
  // A sample that was put into the tray, whatever it is called now.
  struct KnownSample {
    PlannedSample plan;
    size_t stores = 0;      // tests given to the archive since its run began
    bool isUnsure = false;  // they may be those of an action that was replaced
  };

  RunPage& page_;
  const Scenario& scenario_;

  platform::PlainLock lock_{"soak observer", platform::kLeafRank - 1};
  // The line.
  ReplyWatcher reader_ GUARDED_BY(lock_);
  std::deque<StartedTest> starts_ GUARDED_BY(lock_);  // the last few
  int64_t lastWrite_ GUARDED_BY(lock_) = -1;
  bool frameUnderWay_ GUARDED_BY(lock_) = false;  // it has come, and the module is not done with it
  int answers_ GUARDED_BY(lock_) = 0;  // frames that it was done with and no later write is due to
  bool suppliesSteady_ GUARDED_BY(lock_) = true;
  std::array<uint8_t, 4> supplies_ GUARDED_BY(lock_){};
  int64_t lastFrame_ GUARDED_BY(lock_) = 0;
  int openAborts_ GUARDED_BY(lock_) = 0;   // CABs without their answer
  int64_t cabDue_ GUARDED_BY(lock_) = -1;  // by when a CAB must have gone out
  bool outageReported_ GUARDED_BY(lock_) = false;
  bool outageExcused_ GUARDED_BY(lock_) = false;  // a second report, by the frame under way
  std::string lastNote_ GUARDED_BY(lock_);
  bool runOpen_ GUARDED_BY(lock_) = false;
  bool runSeen_ GUARDED_BY(lock_) = false;  // a frame has shown it
  struct OwnCommand {
    int who = 0;
    int sends = 0;
    int calls = 0;
    bool gone = false;
  };
  std::vector<OwnCommand> commands_ GUARDED_BY(lock_);
  std::array<int, 2> lastCommand_ GUARDED_BY(lock_){-1, -1};  // of each operator, sent first
  // The host.
  std::map<std::string, std::shared_ptr<KnownSample>> samples_ GUARDED_BY(lock_);  // by sample id
  int thrown_ GUARDED_BY(lock_) = 0;
  int archiveErrors_ GUARDED_BY(lock_) = 0;
  int errors_ GUARDED_BY(lock_) = 0;
  int watcherThrows_ GUARDED_BY(lock_) = 0;
  int watcherErrors_ GUARDED_BY(lock_) = 0;
  int64_t lastJump_ GUARDED_BY(lock_) = -kNoJump;  // of the time of day
  uint64_t stored_ = 0;
  int edits_ GUARDED_BY(lock_) = 0;
  int ownRuns_ GUARDED_BY(lock_) = 0;
  std::vector<std::unique_ptr<TrayRecord>> records_ GUARDED_BY(lock_);
};

}  // namespace rvx::soak
