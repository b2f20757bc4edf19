// The change from one task of the virtual base to another. The scheduler decides who runs; what is
// here only carries it out, so that both ways give the same run.
#pragma once

#include <memory>

namespace platform::detail {

// Where a task continues when it runs again. Belongs to the switcher that made it.
class TaskContext {
 public:
  TaskContext() = default;
  virtual ~TaskContext() = default;
  TaskContext(const TaskContext&) = delete;
  TaskContext& operator=(const TaskContext&) = delete;
};

// What a task runs. It returns when the task is over: the context that goes on in its place.
using TaskEntry = TaskContext* (*)(void* argument);

class TaskSwitcher {
 public:
  virtual ~TaskSwitcher() = default;
  // The context of the thread that made the switcher, which is the one that runs.
  virtual TaskContext* Main() = 0;
  // A context that runs `entry(argument)` when it is switched to for the first time, which has to
  // happen before the switcher ends. It is gone when the entry has returned. Throws
  // std::system_error if the system has no room for it.
  virtual TaskContext* Create(TaskEntry entry, void* argument) = 0;
  // Leaves `from`, which is running, and runs `to`. Returns when somebody switches back to `from`.
  virtual void Switch(TaskContext* from, TaskContext* to) = 0;
};

// All tasks on the calling thread, each with a stack of its own. Stacks are kept for later tasks
// and later programs.
std::unique_ptr<TaskSwitcher> MakeFiberSwitcher();

// A thread of the system for each task; one of them holds the baton, the others sleep.
std::unique_ptr<TaskSwitcher> MakeBatonSwitcher();

}  // namespace platform::detail
