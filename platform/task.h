// A thread under virtual time.
#pragma once

#include <pthread.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "platform/event_state.h"
#include "platform/lock_state.h"
#include "platform/task_switch.h"
#include "platform/thread.h"
#include "platform/thread_record.h"

namespace platform::detail {

enum class TaskState {
  Ready,    // could run, and will when it is chosen
  Running,  // the one that runs
  Waiting   // for a lock, events or a moment; what ends the wait makes it ready
};

// All fields belong to the scheduler: only the running task touches them, its own and those of
// others.
class Task final : public Thread, public ThreadRecord {
 public:
  static constexpr size_t kNotInHeap = static_cast<size_t>(-1);

  Task(uint32_t taskNumber, const std::string& taskName) : number(taskNumber) {
    threadName = taskName;
  }

  void Join() override;
  bool HasEnded() const override;
  const std::string& name() const override { return threadName; }

  // 0 for main, then in the order of the starts; other than the id it is the same in each program.
  const uint32_t number;
  TaskState state = TaskState::Ready;
  TaskContext* context = nullptr;
  const void* frame = nullptr;  // where it left; null until it has run
  pthread_t systemThread{};     // on which it runs; meaningful once it has run
  std::function<void()> body;
  EventState ended{"end of the thread", Event::Mode::ManualReset};
  bool hasEnded = false;

  size_t heapIndex = kNotInHeap;              // place among the deadlines
  Task* nextWaiting = nullptr;                // next task that waits for the same lock
  LockState* wantedLock = nullptr;            // null unless it is in the list of that lock
  std::span<EventState* const> wantedEvents;  // empty unless it waits for events
  Task* joined = nullptr;                     // null unless it waits for the end of that thread
  Deadline deadline = Deadline::Never();      // of its wait; meaningful while it waits
  bool stalled = false;                       // held up by the scheduler; waits for nothing else

  // The schedule policy's.
  uint64_t priority = 0;
  uint64_t priorityWindow = 0;  // for which the priority was drawn
};

}  // namespace platform::detail
