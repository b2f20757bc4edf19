// Work of a screen that may block, away from the window's thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace rvx {

class C_RVX;

// Does jobs one after the other on a thread of its own, which begins with the first and ends with
// the last: a screen that does nothing has no thread. Made, used and destroyed on the GUI thread.
class ScreenWorker {
 public:
  // The instrument is kept alive by the jobs, whatever becomes of this object.
  explicit ScreenWorker(C_RVX& instrument);
  // What was given to it is still done, so that no stored value is lost; nobody hears of it.
  ~ScreenWorker();
  ScreenWorker(const ScreenWorker&) = delete;
  ScreenWorker& operator=(const ScreenWorker&) = delete;

  // Runs `job` on the thread, then on the GUI thread `done`, or `failed` with what it raised as a
  // text for people. Neither is called once this object is gone. If no thread can be started,
  // `failed` is called at once.
  void Do(std::function<void()> job, std::function<void()> done,
          std::function<void(const std::string& reason)> failed);

 private:
  struct Job;
  struct Queue;

  static void Run(Queue& queue);

  C_RVX& instrument_;
  const std::shared_ptr<Queue> queue_;
  const std::shared_ptr<bool> alive_;  // GUI thread
};

}  // namespace rvx
