// What the host does to the module: an archive that fails, watchers that are slow or call back,
// people who take their time over a question.
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

class HostFaults : private platform::Prompter {
 public:
  // Puts itself into the host and into force as the one who answers questions.
  HostFaults(FakeHost& host, const Scenario& scenario, Observer& observer);
  ~HostFaults() override;

  // From now on the host works well.
  void EndFaults() { calm_ = true; }
  // Where the samples go that the host does not refuse by itself; null: nowhere. Not owned.
  RealArchive* archive = nullptr;
  // At the end of a watcher's call: waits, or calls what the host calls from inside.
  void InsideWatcher();
  // Raises something at the end of a watcher's call, at times.
  void MayThrow();
  // What the host calls from inside a watcher: a deed drawn from those that are allowed there.
  std::function<void(OperatorDeed)> callBack;

 private:
  platform::MessageAnswer ShowMessage(const std::string& text, platform::MessageButtons buttons,
                                      platform::MessageIcon icon) override;
  std::optional<int> Choose(const std::string& title, const std::vector<std::string>& options,
                            int initial) override;
  void Beep() override {}
  void BeforeStore(const Sample& sample);
  void CallBack();
  // Draws under the lock.
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
