// What all actions but the empty one have in common: their state, how they are launched, and how a
// run or a screen is ended from outside.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "boundary/action.h"
#include "boundary/exceptions.h"
#include "module/execution/launch_record.h"
#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

class C_RVX;

// A concrete class calls StopRun at the beginning of its destructor, because the thread may be
// calling one of its own operations until then.
class CBaseAction : public Action, public UserInterfaceClient {
 public:
  // `instrument` is not owned and must outlive the action. `labelId`: string of the label. Loads
  // the strings on the user-interface thread, so it must not be called under a lock.
  CBaseAction(C_RVX& instrument, int labelId);
  ~CBaseAction() override;
  CBaseAction(const CBaseAction&) = delete;
  CBaseAction& operator=(const CBaseAction&) = delete;

  // Waits for a watcher's call in progress, and for the storing of a sample. The caller holds no
  // lock of the instrument.
  void Stop() override;
  int32_t IsConfigured() override;
  int32_t HasRun() override;
  int32_t Edit() override { return 1; }
  std::string GetLabel() override { return label_; }
  std::string GetClassName() override { return std::string(); }
  std::string GetSampleId() override;
  std::string GetStateText() override { return std::string(); }
  void Lock() override ACQUIRE(lock_) { lock_.Lock(); }
  int32_t IsRunning() override;
  void SetSampleId(const std::string& text) override;
  void SetStateText(const std::string& /*text*/) override {}
  int32_t GetRunResult() override { return -1; }
  void Unlock() override RELEASE(lock_) { lock_.Unlock(); }

  // The instrument it belongs to. Any thread.
  C_RVX& instrument() const { return instrument_; }

  FrameWindow* PerformCreation() override { return nullptr; }
  int32_t LoadResources() override;

  // Ends a run that nobody has stopped: tells the watcher, then lets the action be started again.
  // Called on the run's thread; does nothing for a detached record.
  //
  // The action releases the record only after the watcher's call: until then a Stop finds the
  // record and waits for its lock, so no call is in progress after a Stop.
  static void FinishRun(LaunchRecord& record);

 protected:
  enum class StartFailure { None, Running, BadContext, NoThread };
  using RunFunction = std::function<void(LaunchRecord& record)>;

  // Ends the run, if there is one, as Stop does.
  void StopRun();
  // Starts a thread that runs `run` on a new record.
  StartFailure Launch(ActionWatcher* watcher, const std::string& context, int tray, int position,
                      const char* threadName, platform::ThreadPriority priority,
                      const RunFunction& run, RunKind kind = RunKind::DrivesInstrument)
      REQUIRES(lock_);
  // Throws ActionException with this record, in which it fills in text and code of a failure to
  // start.
  [[noreturn]] void Raise(ActionErrorRecord record, StartFailure failure);

  platform::RecursiveLock lock_{"action", kActionLockRank};
  std::string sampleId_ GUARDED_BY(lock_);
  int32_t configured_ GUARDED_BY(lock_) = 1;
  int32_t hasRun_ GUARDED_BY(lock_) = 0;
  int32_t tray_ GUARDED_BY(lock_) = 0;
  int32_t position_ GUARDED_BY(lock_) = 0;
  std::shared_ptr<LaunchRecord> launch_ GUARDED_BY(lock_);  // null when nothing runs

 private:
  // Constant after construction.
  C_RVX& instrument_;
  const int labelId_;
  std::string invalidContextText_;
  std::string runningText_;
  std::string computerErrorText_;
  std::string label_;
};

}  // namespace rvx
