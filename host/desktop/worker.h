// Work that may block, away from the window's thread.
#pragma once

#include <QPointer>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "host/desktop/gui_thread.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

// A thread that does jobs one after the other. Made and used on the window's thread.
class Worker {
 public:
  // `name` is the thread's.
  Worker(GuiThread& gui, const std::string& name);
  // Does what was given to it, then ends the thread; what was to happen behind a job is dropped.
  // Call it only while the window's thread still takes jobs, or from a thread that is not it.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Runs `job` on the worker's thread. What it raises becomes a text for people; then `failed` runs
  // on the window's thread with that text, else `done`. Neither runs once `owner` is gone.
  void Do(QObject* owner, std::function<void()> job, std::function<void()> done = {},
          std::function<void(const QString&)> failed = {});

  bool IsIdle() const { return waiting_ == 0; }
  // Ends the thread early, on any thread: what was given is still done.
  void Finish();

 private:
  struct Job {
    QPointer<QObject> owner;
    std::function<void()> body;
    std::function<void()> done;
    std::function<void(const QString&)> failed;
  };

  void Main();
  void Report(std::shared_ptr<Job> job, const QString& failure);

  GuiThread& gui_;
  int waiting_ = 0;  // the window's thread alone: jobs whose end it has not heard of
  platform::PlainLock lock_{"window worker", platform::kLeafRank};
  std::deque<std::shared_ptr<Job>> jobs_ GUARDED_BY(lock_);
  bool ending_ GUARDED_BY(lock_) = false;
  platform::Event work_{"window worker has work"};
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);  // the window's thread alone
  std::shared_ptr<platform::Thread> thread_;
};

// What a job raised, as a text for people; takes over and deletes what the module raises. To be
// called inside a catch block.
QString DescribeRaised();

}  // namespace torvell
