// The user-interface thread, as the module reaches it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/core/lock_ranks.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

// Runs jobs on one thread. A window supplies its own executor; without one JobThread is used.
class UserInterfaceExecutor {
 public:
  virtual ~UserInterfaceExecutor() = default;
  // Runs the job on the user-interface thread and returns when it is done; at once if the caller is
  // that thread. Passes on what the job throws. Any thread, without locks that a job may need.
  virtual void Run(const std::function<void()>& job) = 0;
};

// A separate thread for jobs, named "user interface", for programs without a display.
class JobThread : public UserInterfaceExecutor {
 public:
  JobThread();
  ~JobThread() override;
  void Run(const std::function<void()>& job) override;

 private:
  struct Job;
  void Main();

  platform::PlainLock lock_{"user interface jobs", kUserInterfaceLockRank};
  std::vector<Job*> jobs_ GUARDED_BY(lock_);  // oldest first
  bool ending_ GUARDED_BY(lock_) = false;
  platform::ThreadId threadId_ GUARDED_BY(lock_) = 0;
  platform::Event work_{"user interface work"};
  std::shared_ptr<platform::Thread> thread_;
};

}  // namespace torvell
