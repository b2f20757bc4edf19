// Short jobs for the user-interface thread that nobody waits for.
#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

// A queue of jobs. The host offers only calls that wait for the user-interface thread. A thread of
// this class, started with the first job, makes those calls, so that Post returns at once.
class PostedJobs {
 public:
  PostedJobs() = default;
  // Runs the jobs that were posted, then ends the thread.
  ~PostedJobs();
  PostedJobs(const PostedJobs&) = delete;
  PostedJobs& operator=(const PostedJobs&) = delete;

  // Runs `job` later on the user-interface thread, in the order of posting. Any thread.
  void Post(std::function<void()> job);

 private:
  void RunJobs();

  platform::PlainLock lock_{"posted jobs", platform::kLeafRank};
  std::deque<std::function<void()>> jobs_ GUARDED_BY(lock_);
  std::shared_ptr<platform::Thread> thread_ GUARDED_BY(lock_);
  bool closing_ GUARDED_BY(lock_) = false;
  platform::Event posted_{"posted jobs: one more"};
};

}  // namespace rvx
