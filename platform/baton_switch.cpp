#include <semaphore>
#include <thread>

#include "platform/sanitizer.h"
#include "platform/task_switch.h"

namespace platform::detail {
namespace {

struct BatonContext final : TaskContext {
  std::binary_semaphore baton{0};
  std::thread thread;                // none for the main context
  BatonContext* finished = nullptr;  // the task that gave the baton to this one by ending
};

// The passing of the baton is no order that the program may rely on: races must be found in spite
// of it.
void Pass(BatonContext& to, BatonContext* finished) {
  const UnseenScope scope;
  to.finished = finished;
  to.baton.release();
}

// Waits for the baton. A task that gives it by ending may still run destructors of its thread_local
// objects: they are over before anybody else runs. The sanitizer does not see the join either,
// because the next task need not be the one that waits for this task's end.
void Await(BatonContext& self) {
  const UnseenScope scope;
  self.baton.acquire();
  if (self.finished == nullptr) return;
  self.finished->thread.join();
  delete self.finished;
  self.finished = nullptr;
}

class BatonSwitcher final : public TaskSwitcher {
 public:
  TaskContext* Main() override { return &main_; }

  TaskContext* Create(TaskEntry entry, void* argument) override {
    auto context = std::make_unique<BatonContext>();
    BatonContext& self = *context;
    self.thread = std::thread([&self, entry, argument] {
      Await(self);
      Pass(*static_cast<BatonContext*>(entry(argument)), &self);
    });
    return context.release();
  }

  void Switch(TaskContext* from, TaskContext* to) override {
    Pass(*static_cast<BatonContext*>(to), nullptr);
    Await(*static_cast<BatonContext*>(from));
  }

 private:
  BatonContext main_;
};

}  // namespace

std::unique_ptr<TaskSwitcher> MakeBatonSwitcher() { return std::make_unique<BatonSwitcher>(); }

}  // namespace platform::detail
