// A host library in memory, for tests: every entry point that the module calls, over plain objects
// that a test fills, fails and looks into.
//
//   FakeHost host;                                // the entry points answer from here on
//   host.ports.Add("COM1");
//   host.samples.FailNext(1);
//   ...
//   EXPECT_TRUE(host.instruments.WaitForErrors(1, 30s));
//
// Under virtual time make it inside the program that RunUnderTimeBase runs, and before everything
// that calls it. One at a time in a process. Without one the entry points throw InvalidException,
// as they do when the host library is missing.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "boundary/host.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "tests/support/fake_port.h"

namespace rvx {

// How often an operation is still to fail with an ArchiveException.
class FailurePlan {
 public:
  // The next `count` calls fail; -1: all from now on.
  void FailNext(int count);
  // Throws the exception if this call is to fail.
  void Check(const std::string& what);

 private:
  platform::PlainLock lock_{"fake failure plan", 5900};
  int remaining_ GUARDED_BY(lock_) = 0;
};

class FakeInstrumentManager : public InstrumentManager {
 public:
  // --- InstrumentManager
  int32_t RegisterMonitor(ViscometerArrayMonitor* monitor) override;
  ViscometerInstrument* GetInstrument(int32_t index) override;
  void ReleaseFrame(int32_t index) override;
  void ReportError(ActionException* error) override;
  void UnregisterMonitor(int32_t handle) override;
  void NotifyInstrumentChanged() override;  // calls the monitors, without a lock
  int32_t SelectInstrument(int32_t index, int32_t select) override;

  // --- For tests. The list is not owned.
  // Called first in each ReportError, on its thread, without a lock. Set it before there are
  // threads.
  std::function<void(const ActionErrorRecord&)> onError;
  void SetInstruments(std::vector<ViscometerInstrument*> instruments);
  std::vector<ActionErrorRecord> errors();
  int notifications();
  std::vector<int32_t> releasedFrames();
  // Waits until at least `count` errors have been reported. Returns false at the deadline.
  bool WaitForErrors(size_t count, platform::Milliseconds timeout);

 private:
  platform::PlainLock lock_{"fake instrument manager", 5100};
  platform::Event errorReported_{"fake error reported"};
  std::vector<ViscometerInstrument*> instruments_ GUARDED_BY(lock_);
  std::vector<ActionErrorRecord> errors_ GUARDED_BY(lock_);
  std::map<int32_t, ViscometerArrayMonitor*> monitors_ GUARDED_BY(lock_);
  std::vector<int32_t> releasedFrames_ GUARDED_BY(lock_);
  int32_t nextHandle_ GUARDED_BY(lock_) = 1;
  int notifications_ GUARDED_BY(lock_) = 0;
};

class FakeInstrumentArchive : public InstrumentArchive {
 public:
  void LoadInstrument(const std::string& key, ViscometerInstrument* instrument,
                      int32_t flags) override;
  void StoreInstrument(const std::string& key, ViscometerInstrument* instrument) override;

  void SetText(const std::string& key, const std::string& text);
  std::string GetText(const std::string& key);  // empty if there is none
  int stores();
  FailurePlan loadFailures;
  FailurePlan storeFailures;

 private:
  platform::PlainLock lock_{"fake instrument archive", 5200};
  std::map<std::string, std::string> texts_ GUARDED_BY(lock_);
  int stores_ GUARDED_BY(lock_) = 0;
};

class FakeSampleArchive : public SampleArchive {
 public:
  // Every stored sample that the filter accepts, oldest first; the query's text is only kept.
  void QuerySamples(ArrayOfSamples& out, SampleArchiveFilter* filter) override;
  void StoreSample(const Sample& sample) override;

  ArrayOfSamples samples();
  std::string lastQuery();
  // Waits until at least `count` samples are stored. Returns false at the deadline.
  bool WaitForSamples(size_t count, platform::Milliseconds timeout);
  // Called first in each StoreSample, on its thread, without a lock: to delay it, or to let
  // something happen in the middle. Set it before there are threads.
  std::function<void(const Sample&)> beforeStore;
  FailurePlan storeFailures;
  FailurePlan queryFailures;

 private:
  platform::PlainLock lock_{"fake sample archive", 5300};
  platform::Event stored_{"fake sample stored"};
  ArrayOfSamples samples_ GUARDED_BY(lock_);
  std::string lastQuery_ GUARDED_BY(lock_);
};

class FakeAnalysisArchive : public AnalysisArchive {
 public:
  void ReadAnalysisText(const std::string& name, const std::string& section,
                        std::string& text) override;
  void WriteAnalysisText(const std::string& name, const std::string& section,
                         const std::string& text) override;

  FailurePlan readFailures;
  FailurePlan writeFailures;
  // Called last in each ReadAnalysisText, on its thread, without a lock: if it takes long, the text
  // that was read is old when the call returns. Set it before there are threads.
  std::function<void()> afterRead;

 private:
  platform::PlainLock lock_{"fake analysis archive", 5400};
  std::map<std::pair<std::string, std::string>, std::string> texts_ GUARDED_BY(lock_);
};

class FakeArchiveManager : public ArchiveManager {
 public:
  void GetDefaultName(std::string& text) override;
  void SetDefaultName(const std::string& folder);  // with its trailing separator

 private:
  platform::PlainLock lock_{"fake archive manager", 5500};
  std::string folder_ GUARDED_BY(lock_) = "/fake/";
};

class FakeSecurityManager : public SecurityManager {
 public:
  void GetUserName(std::string& text) override;
  int32_t GetAccessLevel() override;
  void SetUser(const std::string& name, int32_t level);

 private:
  platform::PlainLock lock_{"fake security manager", 5600};
  std::string name_ GUARDED_BY(lock_) = "tester";
  int32_t level_ GUARDED_BY(lock_) = 100;
};

class FakeHost {
 public:
  FakeHost();
  ~FakeHost();
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  // What ExecutePerformCreation and ExecuteLoadResources do: they run the job on the caller's
  // thread, or where `userInterface` runs it. Set that before there are threads.
  void RunOnUserInterface(const std::function<void()>& job) {
    userInterface ? userInterface(job) : job();
  }
  std::function<void(const std::function<void()>&)> userInterface;

  FakePortManager ports;
  FakeInstrumentManager instruments;
  FakeInstrumentArchive instrumentArchive;
  FakeSampleArchive samples;
  FakeAnalysisArchive analysis;
  FakeArchiveManager archiveManager;
  FakeSecurityManager security;
};

}  // namespace rvx
