// The action that does nothing: it is in each tray position without a sample.
#pragma once

#include <string>

#include "boundary/action.h"
#include "module/instrument/action_table.h"
#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

class CNullAction final : public Action {
 public:
  static constexpr const char* kClassKey = kNullActionClassKey;

  CNullAction() = default;

  void Stop() override {}
  // Reports start and finish at once, on the caller's thread. `watcher` may be null.
  void Start(ActionWatcher* watcher, const std::string& context) override;
  int32_t IsConfigured() override { return 1; }
  int32_t HasRun() override;
  int32_t Edit() override { return 1; }
  std::string GetLabel() override { return "No action"; }
  std::string GetClassName() override { return kClassKey; }
  std::string GetSampleId() override;
  std::string GetStateText() override { return GetSampleId(); }
  void Lock() override ACQUIRE(lock_) { lock_.Lock(); }
  int32_t IsRunning() override { return 0; }
  void SetSampleId(const std::string& text) override;
  void SetStateText(const std::string& text) override { SetSampleId(text); }
  int32_t GetRunResult() override { return -1; }
  void Unlock() override RELEASE(lock_) { lock_.Unlock(); }

 private:
  platform::RecursiveLock lock_{"null action", kActionLockRank};
  std::string text_ GUARDED_BY(lock_);  // sample id and state text in one
  int32_t hasRun_ GUARDED_BY(lock_) = 0;
};

}  // namespace rvx
