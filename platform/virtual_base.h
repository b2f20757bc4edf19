// Virtual time: one task runs at a time, and when all wait, time jumps to the earliest deadline.
// Who runs next among the ready is drawn from a seed, so a run is repeated exactly by its seed.
//
// All of this is plain data that only the running task touches. A task gives its turn to another
// only inside GiveWay.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "platform/call_stack.h"
#include "platform/deadline_heap.h"
#include "platform/schedule_faults.h"
#include "platform/schedule_policy.h"
#include "platform/task.h"
#include "platform/task_switch.h"
#include "platform/time_base.h"

namespace platform::detail {

class VirtualBase {
 public:
  explicit VirtualBase(const TimeBaseOptions& options);
  VirtualBase(const VirtualBase&) = delete;
  VirtualBase& operator=(const VirtualBase&) = delete;

  // The base in force; null under the real one.
  static VirtualBase* Current() { return current_.load(std::memory_order_relaxed); }

  // Puts the base in force and runs the program as the task "main".
  int Run(const std::function<int()>& program);

  Microseconds now() const { return now_; }
  uint32_t startTick() const { return startTick_; }
  TimeBaseFigures figures() const;
  void EndStalls();
  ThreadRecord& runningRecord() { return *running_; }

  std::shared_ptr<Thread> Start(const std::string& name, std::function<void()> body);
  void Join(Task& task);

  void Acquire(LockState& lock);
  void Release(LockState& lock);

  void Set(EventState& event);
  void Reset(EventState& event);
  bool TryWait(EventState& event);
  int WaitForAny(std::span<EventState* const> events, std::span<WaitNode> nodes,
                 const Deadline& deadline);
  void SleepUntil(const Deadline& deadline);

  void OpenWindow();
  bool watchesForLostSignals() const { return options_.lostSignals; }
  // The running task's wait for the event timed out although what the event announces has happened.
  void Suspect(EventState& event);
  // The event has been set, or ends.
  void Clear(const EventState& event);
  // Reports, then ends the process. `where` is where the running task is if that is not here.
  [[noreturn]] void Abandon(const std::string& headline, const CallStack* where = nullptr) const;
  // What repeats the run, and how far it came; whole lines.
  std::string DescribeRun() const;

 private:
  static TaskContext* RunTask(void* task);
  TaskContext* End(Task& task);

  int Await(std::span<EventState* const> events, std::span<WaitNode> nodes,
            const Deadline& deadline);

  // A point at which another ready task may be let first, and the running one held up.
  void MayLeave();
  // A point at which the running task may be held up.
  void MayStall();
  void Yield();
  // Lets others go first because the running task asks for what is not there yet.
  void StandBack();
  void Block(const Deadline& deadline);
  void GiveWay();
  Task& ChooseNext();
  void JumpTime();
  void Wake(Task& task);
  void WakeOneForNothing();
  void WaitForLock(LockState& lock, bool goesFirst);
  void CheckAllEnded() const;
  void CheckCircle() const;
  void CheckSuspicions() const;
  void ReportHang() const;

  std::string DescribeTask(const Task& task) const;
  static std::string DescribeWait(const Task& task);

  static std::atomic<VirtualBase*> current_;

  const uint64_t seed_;
  const TaskSwitch taskSwitch_;
  const uint32_t startTick_;
  const VirtualOptions options_;
  const std::thread::id thread_;  // where fibers run
  const std::unique_ptr<SchedulePolicy> policy_;
  const std::unique_ptr<TaskSwitcher> switcher_;
  std::optional<ScheduleFaults> faults_;  // absent if the options ask for none

  Microseconds now_{0};
  Task* running_ = nullptr;
  uint32_t chosenLast_ = 0;   // its number, or that of the one before while nobody runs
  std::vector<Task*> ready_;  // in the order in which they became ready, but for gaps filled
  DeadlineHeap deadlines_;
  std::map<uint32_t, std::shared_ptr<Task>> tasks_;  // all that have not ended, by number
  uint32_t nextNumber_ = 0;
  int stalledTasks_ = 0;
  struct Suspicion {
    const EventState* event;
    std::string thread;
    Microseconds since;
  };
  std::vector<Suspicion> suspicions_;  // of lost signals, the oldest first
  bool choosing_ = false;              // inside ChooseNext, where nothing may give way

  uint64_t switches_ = 0;
  std::atomic<uint64_t> steps_{0};  // the hang watch reads it
  uint64_t traceHash_ = 0;
  uint64_t spuriousWakeUps_ = 0;
  uint64_t stepsAtThisTime_ = 0;   // since time last moved
  uint64_t pointsAtThisTime_ = 0;  // likewise, points at which nobody gave way counted
};

}  // namespace platform::detail
