// Work that may block, away from the window's thread.
#pragma once

#include <QPointer>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "host/desktop/gui_thread.h"
#include "host/desktop/job_runner.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace torvell {

// A thread that does jobs one after the other. Made and used on the window's thread.
class Worker {
 public:
  // `name` is the thread's.
  Worker(GuiThread& gui, const std::string& name);
  // Does what was given to it, then ends the thread; what was to happen after a job is dropped.
  // Call it only while the window's thread still takes jobs, or from a thread that is not it.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Runs `job` on the worker's thread. What it throws becomes a text for people; then `failed` runs
  // on the window's thread with that text, else `done`. Neither runs once `owner` is gone.
  void Do(QObject* owner, std::function<void()> job, std::function<void()> done = {},
          std::function<void(const QString&)> failed = {});

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
  platform::PlainLock lock_{"window worker", platform::kLeafRank};
  std::deque<std::shared_ptr<Job>> jobs_ GUARDED_BY(lock_);
  bool ending_ GUARDED_BY(lock_) = false;
  platform::Event work_{"window worker has work"};
  std::shared_ptr<platform::Thread> thread_;
};

// A worker's jobs in the name of one owner: what was to follow a job is dropped once the owner is
// gone.
class OwnedWorker : public JobRunner {
 public:
  // Both outlive this object.
  OwnedWorker(Worker& worker, QObject* owner) : worker_(worker), owner_(owner) {}
  void Do(std::function<void()> job, std::function<void()> done,
          std::function<void(const QString&)> failed) override {
    worker_.Do(owner_, std::move(job), std::move(done), std::move(failed));
  }

 private:
  Worker& worker_;
  QObject* const owner_;
};

// What a job threw, as a text for people; takes over and deletes what the module throws. To be
// called inside a catch block.
QString DescribeRaised();

}  // namespace torvell
