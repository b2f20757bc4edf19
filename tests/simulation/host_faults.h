// The faults of the host: an archive that fails, watchers that are slow or call back, people who
// answer questions late.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/lock.h"
#include "platform/prompt.h"
#include "tests/simulation/draws.h"
#include "tests/simulation/observer.h"
#include "tests/simulation/real_archive.h"
#include "tests/simulation/scenario.h"
#include "tests/support/fake_host.h"

namespace rvx::soak {

// Any thread may call it.
class HostFaults : private platform::Prompter {
 public:
  // Registers itself with the host and as the prompter.
  HostFaults(FakeHost& host, const Scenario& scenario, Observer& observer);
  ~HostFaults() override;

  // From now on the host has no faults.
  void EndFaults() { calm_ = true; }
  // Gets the samples that are not refused here; null: they go nowhere. Not owned.
  RealArchive* archive = nullptr;
  // Called at the end of a watcher's call. Waits or calls callBack, as drawn.
  void InsideWatcher();
  // Called at the end of a watcher's call. Throws, as drawn.
  void MayThrow();
  // Called inside a watcher's call with a deed that is allowed there.
  std::function<void(OperatorDeed)> callBack;

 private:
  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override {}
  void BeforeStore(const Sample& sample);
  void CallBack();
  // These draw under the lock.
  bool Happens(Fault fault);
  platform::Milliseconds DrawTime(platform::Milliseconds low, platform::Milliseconds high);
  int DrawBelow(int bound);

  const Scenario& scenario_;
  Observer& observer_;
  std::atomic<bool> calm_{false};
  platform::PlainLock lock_{"soak host", platform::kLeafRank};
  Draws draws_ GUARDED_BY(lock_);
};

}  // namespace rvx::soak
