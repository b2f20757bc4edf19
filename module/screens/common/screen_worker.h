// Work of a screen that may block, done on another thread than the window's.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace rvx {

class C_RVX;

// Does jobs one after the other on its own thread, which begins with the first job and ends after
// the last one, so an idle screen has no thread. Made, used and destroyed on the GUI thread.
class ScreenWorker {
 public:
  // The jobs keep the instrument alive, even after this object is destroyed.
  explicit ScreenWorker(C_RVX& instrument);
  // The jobs that were given are still done, so that no stored value is lost; neither `done` nor
  // `failed` is called.
  ~ScreenWorker();
  ScreenWorker(const ScreenWorker&) = delete;
  ScreenWorker& operator=(const ScreenWorker&) = delete;

  // Runs `job` on the thread, then on the GUI thread `done`, or `failed` with the text of an
  // exception, for people. Neither is called once this object is destroyed. If no thread can be
  // started, `failed` is called at once.
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
