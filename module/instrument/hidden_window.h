// Short jobs for the user-interface thread that nobody waits for.
#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

// The host offers only calls that wait for the user-interface thread. A thread of this class,
// started with the first job, makes those calls, so that Post returns at once as a posted message
// would.
class HiddenWindow {
 public:
  HiddenWindow() = default;
  // Runs what was posted, then ends its thread.
  ~HiddenWindow();
  HiddenWindow(const HiddenWindow&) = delete;
  HiddenWindow& operator=(const HiddenWindow&) = delete;

  // Runs `job` later on the user-interface thread, in the order of posting. Any thread.
  void Post(std::function<void()> job);

 private:
  void RunJobs();

  platform::PlainLock lock_{"hidden window", platform::kLeafRank};
  std::deque<std::function<void()>> jobs_ GUARDED_BY(lock_);
  std::shared_ptr<platform::Thread> thread_ GUARDED_BY(lock_);
  bool closing_ GUARDED_BY(lock_) = false;
  platform::Event posted_{"hidden window: posted"};
};

}  // namespace rvx
