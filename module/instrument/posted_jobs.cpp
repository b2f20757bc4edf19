#include "module/instrument/posted_jobs.h"

#include <utility>

#include "boundary/host.h"

namespace rvx {
namespace {

class JobClient : public UserInterfaceClient {
 public:
  explicit JobClient(const std::function<void()>& job) : job_(job) {}
  FrameWindow* PerformCreation() override { return nullptr; }
  int32_t LoadResources() override {
    job_();
    return 0;
  }

 private:
  const std::function<void()>& job_;
};

}  // namespace

PostedJobs::~PostedJobs() {
  std::shared_ptr<platform::Thread> thread;
  {
    platform::PlainGuard guard(lock_);
    closing_ = true;
    thread = thread_;
  }
  posted_.Set();
  if (thread) thread->Join();
}

void PostedJobs::Post(std::function<void()> job) {
  {
    platform::PlainGuard guard(lock_);
    if (!thread_) thread_ = platform::StartThread("posted jobs", [this] { RunJobs(); });
    jobs_.push_back(std::move(job));
  }
  posted_.Set();
}

void PostedJobs::RunJobs() {
  for (;;) {
    std::function<void()> job;
    {
      platform::PlainGuard guard(lock_);
      if (jobs_.empty() && closing_) return;
      if (!jobs_.empty()) {
        job = std::move(jobs_.front());
        jobs_.pop_front();
      }
    }
    if (job) {
      JobClient client(job);
      ExecuteLoadResources(&client);
    } else {
      posted_.Wait();
    }
  }
}

}  // namespace rvx
