// Watches one simulated run and ends the process at the first broken invariant.
//
// It sees the frames on the line as the module writes and receives them, the calls of the tray's
// watchers, the samples and errors that reach the host, and what the operators do. Any thread may
// call it; no call blocks.
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

  // Adds a line to the history.
  void Note(std::string_view text);
  // Reports a broken invariant and ends the process.
  [[noreturn]] void Break(std::string_view what);
  void Require(bool good, std::string_view what) {
    if (!good) Break(what);
  }

  // --- The line
  void FrameWritten(std::string_view frame);
  // Called before the module receives bytes, and after it has handled them.
  void BytesDelivered(std::span<const uint8_t> bytes);
  void BytesTaken();

  // --- The host
  void StoreBegun(const Sample& sample);
  void StoreEnded(const Sample& sample, bool thrown);
  void ErrorReported(const ActionErrorRecord& error);
  // A watcher is about to throw, which the module has to report.
  void WatcherThrows();
  // The time of day is moved.
  void ClockJumps();

  // --- Changes of the tray; every action has a different sample id
  void SampleMade(const std::string& sampleId, const PlannedSample& plan);
  void SampleRenamed(const std::string& oldId, const std::string& newId);
  // The tray was changed, perhaps while it was running.
  void TrayEdited();
  int edits();
  // An operator starts an action outside the tray.
  void OwnRunStarted();
  // The tray's actions were replaced by new ones with the same sample ids.
  void TrayReloaded();

  // --- The runs of a tray Makes the watcher for the next start. The observer owns it and keeps it
  // to the end of the run.
  TrayRecord* MakeWatcher();
  // The number of errors that have been reported so far.
  int errors();
  // The end of the sample was reported: all its tests must have been given to the archive, or a
  // failure must have been reported since there were `errors`. Not checked if the tray was changed
  // since `edits`.
  void CheckFinishedSample(const std::string& sampleId, int edits, int errors);
  // Whether something was started at the instrument and no CAB has been sent since.
  bool IsRunOpen();
  // An abort has ended a run. If the run is still open at the instrument, a CAB is due.
  void RunEnded();

  // --- Commands of the operators, each with a number in its text
  int CommandMade(int who);
  void ClientCalled(int number, const std::string& tag);
  void ClientGone(int number);

  // --- At the end The conversation with an instrument begins.
  void InstrumentOpened();
  // Checks what must have happened when the instrument is destroyed. `lineWasAlive` says whether
  // frames could pass until then.
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
    bool abortsOpen = false;  // an earlier CAB had no answer yet
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
  // A sample that was put into the tray, even if it was renamed since.
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
  bool frameUnderWay_ GUARDED_BY(lock_) = false;  // it has come, and the module is handling it
  int answers_ GUARDED_BY(lock_) = 0;  // frames that were handled and led to no write yet
  bool suppliesSteady_ GUARDED_BY(lock_) = true;
  std::array<uint8_t, 4> supplies_ GUARDED_BY(lock_){};
  int64_t lastFrame_ GUARDED_BY(lock_) = 0;
  int openAborts_ GUARDED_BY(lock_) = 0;   // CABs without their answer
  int64_t cabDue_ GUARDED_BY(lock_) = -1;  // deadline for a CAB; -1: none is due
  bool outageReported_ GUARDED_BY(lock_) = false;
  bool outageExcused_ GUARDED_BY(lock_) = false;  // by the frame under way
  std::string lastNote_ GUARDED_BY(lock_);
  bool runOpen_ GUARDED_BY(lock_) = false;
  bool runSeen_ GUARDED_BY(lock_) = false;  // a frame has shown the run
  struct OwnCommand {
    int who = 0;
    int sends = 0;
    int calls = 0;
    bool gone = false;
  };
  std::vector<OwnCommand> commands_ GUARDED_BY(lock_);
  std::array<int, 2> lastCommand_ GUARDED_BY(lock_){-1, -1};  // of each operator
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
