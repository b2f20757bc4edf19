#include "host/core/user_interface.h"

#include <exception>

namespace torvell {

struct JobThread::Job {
  const std::function<void()>* body = nullptr;
  std::exception_ptr raised;
  platform::Event done{"user interface job is done"};
};

JobThread::JobThread() {
  thread_ = platform::StartThread("user interface", [this] { Main(); });
}

JobThread::~JobThread() {
  {
    platform::PlainGuard guard(lock_);
    ending_ = true;
  }
  work_.Set();
  thread_->Join();
}

void JobThread::Run(const std::function<void()>& body) {
  Job job;
  job.body = &body;
  bool direct = false;
  {
    platform::PlainGuard guard(lock_);
    direct = threadId_ == platform::CurrentThreadId();
    if (!direct) jobs_.push_back(&job);
  }
  if (direct) {
    body();
    return;
  }
  work_.Set();
  job.done.Wait();
  if (job.raised) std::rethrow_exception(job.raised);
}

void JobThread::Main() {
  {
    platform::PlainGuard guard(lock_);
    threadId_ = platform::CurrentThreadId();
  }
  for (;;) {
    std::vector<Job*> jobs;
    bool ending = false;
    {
      platform::PlainGuard guard(lock_);
      jobs.swap(jobs_);
      ending = ending_;
    }
    if (jobs.empty() && ending) return;
    if (jobs.empty()) work_.Wait();
    for (Job* job : jobs) {
      try {
        (*job->body)();
      } catch (...) {
        job->raised = std::current_exception();
      }
      job->done.Set();
    }
  }
}

}  // namespace torvell
