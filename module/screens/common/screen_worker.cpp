#include "module/screens/common/screen_worker.h"

#include <deque>
#include <system_error>
#include <utility>

#include "module/execution/screen_failure.h"
#include "module/instrument/c_rvx.h"
#include "module/toolkit/gui_thread.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

struct ScreenWorker::Job {
  std::function<void()> body;
  std::function<void()> done;
  std::function<void(const std::string&)> failed;
  std::weak_ptr<bool> alive;
};

// Shared with the thread.
struct ScreenWorker::Queue {
  platform::PlainLock lock{"screen work", platform::kLeafRank};
  std::deque<Job> jobs GUARDED_BY(lock);
  bool running GUARDED_BY(lock) = false;  // a thread is running that takes the jobs
};

ScreenWorker::ScreenWorker(C_RVX& instrument)
    : instrument_(instrument),
      queue_(std::make_shared<Queue>()),
      alive_(std::make_shared<bool>(true)) {
  AssertGuiThread("ScreenWorker");
}

ScreenWorker::~ScreenWorker() = default;

void ScreenWorker::Do(std::function<void()> job, std::function<void()> done,
                      std::function<void(const std::string&)> failed) {
  AssertGuiThread("ScreenWorker::Do");
  {
    platform::PlainGuard guard(queue_->lock);
    queue_->jobs.push_back({std::move(job), std::move(done), failed, alive_});
    if (std::exchange(queue_->running, true)) return;
  }
  try {
    auto use = std::make_shared<InstrumentUse>(instrument_);
    platform::StartThread("screen work", [queue = queue_, use = std::move(use)] {
      use->NoteOwnThread();
      Run(*queue);
    });
  } catch (const std::system_error&) {
    {
      platform::PlainGuard guard(queue_->lock);
      queue_->running = false;
      queue_->jobs.clear();
    }
    failed(
        "The computer has no thread left for this. Nothing was done. Close other programs and "
        "try again.");
  }
}

void ScreenWorker::Run(Queue& queue) {
  for (;;) {
    Job job;
    {
      platform::PlainGuard guard(queue.lock);
      if (queue.jobs.empty()) {
        queue.running = false;
        return;
      }
      job = std::move(queue.jobs.front());
      queue.jobs.pop_front();
    }
    std::string failure;
    try {
      job.body();
    } catch (...) {
      failure = DescribeRaised();
    }
    job.body = nullptr;  // so that its contents are destroyed here and not on the GUI thread
    PostToGuiThread([job = std::move(job), failure] {
      if (job.alive.expired()) return;
      if (failure.empty()) {
        job.done();
      } else {
        job.failed(failure);
      }
    });
  }
}

}  // namespace rvx
