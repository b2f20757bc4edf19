// Does work that may block on a thread other than the window's.
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

// A thread that runs jobs one after the other. Made and used on the window's thread.
class Worker {
 public:
  // `name` is the name of the thread.
  Worker(GuiThread& gui, const std::string& name);
  // Runs the pending jobs, then ends the thread; what was to follow a job is dropped. Call it on
  // another thread than the window's, or while the window's thread still runs posted jobs.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Runs `job` on the worker's thread. If it throws, `failed` then runs on the window's thread with
  // a text for people, else `done`. Neither runs after `owner` was destroyed.
  void Do(QObject* owner, std::function<void()> job, std::function<void()> done = {},
          std::function<void(const QString&)> failed = {});

  // Ends the thread early, after its pending jobs. Any thread.
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

// Runs a worker's jobs for one owner: what was to follow a job is dropped once the owner is
// destroyed.
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

// Describes the exception that is being handled, for people, whatever it is; deletes it if it was
// raised as a heap object. Call it inside a catch block.
QString DescribeRaised();

}  // namespace torvell
