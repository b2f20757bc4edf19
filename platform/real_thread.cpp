#include "platform/real_thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

#include "platform/fatal.h"
#include "platform/log.h"
#include "platform/thread_body.h"

namespace platform::detail {
namespace {

// The threads that have not ended. Never destroyed: threads may end while the process does.
struct LiveThreads {
  std::mutex mutex;
  std::map<uint64_t, std::string> running;  // by number
  uint64_t nextNumber = 0;
  Event changed{"a thread has ended"};
};

LiveThreads& GetLiveThreads() {
  static auto* const threads = new LiveThreads;
  return *threads;
}

// Nice values; on this system they belong to a thread and not to its process.
int NicenessOf(ThreadPriority priority) {
  switch (priority) {
    case ThreadPriority::Normal:
      return 0;
    case ThreadPriority::BelowNormal:
      return 5;
    case ThreadPriority::Lowest:
      return 15;
  }
  return 0;
}

// Gives the calling thread its name and its priority.
void SetNameAndPriority(const std::string& name, ThreadPriority priority) {
  CurrentRealRecord().threadName = name;
  pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());  // the system takes no more
  if (priority == ThreadPriority::Normal) return;
  const auto thread = static_cast<id_t>(syscall(SYS_gettid));
  if (setpriority(PRIO_PROCESS, thread, NicenessOf(priority)) != 0) {
    Log(LogLevel::Warning, "no lower priority for thread \"" + name + "\"");
  }
}

class RealThread final : public Thread {
 public:
  explicit RealThread(const std::string& name) : name_(name) {}

  // The thread itself may be the last to release this object.
  ~RealThread() override {
    if (thread_.joinable()) thread_.detach();
  }
  RealThread(const RealThread&) = delete;
  RealThread& operator=(const RealThread&) = delete;

  void Join() override {
    if (&CurrentRealRecord() == record_.load()) {
      Fatal("thread \"" + name_ + "\" waits for its own end");
    }
    // Other threads that join meanwhile wait for the same end.
    const std::lock_guard<std::mutex> guard(joinMutex_);
    if (thread_.joinable()) thread_.join();
  }
  bool HasEnded() const override { return ended_.load(); }
  const std::string& name() const override { return name_; }

  static std::shared_ptr<RealThread> Start(const std::string& name, std::function<void()> body,
                                           ThreadPriority priority) {
    auto thread = std::make_shared<RealThread>(name);
    LiveThreads& live = GetLiveThreads();
    uint64_t number = 0;
    {
      const std::lock_guard<std::mutex> guard(live.mutex);
      number = live.nextNumber++;
      live.running.emplace(number, name);
    }
    try {
      const std::lock_guard<std::mutex> guard(thread->joinMutex_);
      thread->thread_ = std::thread(&RealThread::Run, thread, std::move(body), priority, number);
    } catch (...) {
      Leave(number);
      throw;
    }
    return thread;
  }

 private:
  static void Leave(uint64_t number) {
    LiveThreads& live = GetLiveThreads();
    {
      const std::lock_guard<std::mutex> guard(live.mutex);
      live.running.erase(number);
    }
    live.changed.Set();
  }

  static void Run(std::shared_ptr<RealThread> self, std::function<void()> body,
                  ThreadPriority priority, uint64_t number) {
    self->record_ = &CurrentRealRecord();
    SetNameAndPriority(self->name_, priority);
    RunThreadBody(self->name_, body);
    self->record_ = nullptr;
    self->ended_ = true;
    self.reset();
    Leave(number);
  }

  const std::string name_;
  std::atomic<const RealRecord*> record_{nullptr};  // while it runs
  std::atomic<bool> ended_{false};
  std::mutex joinMutex_;  // guards thread_
  std::thread thread_;
};

}  // namespace

std::shared_ptr<Thread> StartRealThread(const std::string& name, std::function<void()> body,
                                        ThreadPriority priority) {
  return RealThread::Start(name, std::move(body), priority);
}

std::vector<std::string> AwaitRealThreads(const Deadline& deadline) {
  LiveThreads& live = GetLiveThreads();
  for (;;) {
    const bool passed = deadline.HasPassed();
    {
      const std::lock_guard<std::mutex> guard(live.mutex);
      std::vector<std::string> names;
      for (const auto& [number, name] : live.running) names.push_back(name);
      if (passed || names.empty()) return names;
    }
    live.changed.Wait(deadline);
  }
}

}  // namespace platform::detail
