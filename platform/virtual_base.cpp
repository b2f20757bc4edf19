#include "platform/virtual_base.h"

#include <utility>

#include "platform/fatal.h"
#include "platform/interrupt_flag.h"
#include "platform/mix.h"
#include "platform/thread_body.h"

namespace platform::detail {
namespace {

// A program that goes on for so long without letting time pass never will.
constexpr uint64_t kMostStepsAtOneTime = 100'000;
constexpr uint64_t kMostPointsAtOneTime = 100'000'000;

}  // namespace

std::atomic<VirtualBase*> VirtualBase::current_{nullptr};

VirtualBase::VirtualBase(const TimeBaseOptions& options)
    : seed_(options.seed),
      taskSwitch_(options.taskSwitch),
      startTick_(options.startTick),
      thread_(std::this_thread::get_id()),
      policy_(MakeStickyPolicy(options.seed)),
      switcher_(options.taskSwitch == TaskSwitch::Fibers ? MakeFiberSwitcher()
                                                         : MakeBatonSwitcher()) {
  auto main = std::make_shared<Task>(nextNumber_++, "main");
  main->context = switcher_->Main();
  main->state = TaskState::Running;
  running_ = main.get();
  tasks_.emplace(main->number, std::move(main));
}

int VirtualBase::Run(const std::function<int()>& program) {
  struct InForce {
    explicit InForce(VirtualBase* base) { current_ = base; }
    ~InForce() { current_ = nullptr; }
    InForce(const InForce&) = delete;
    InForce& operator=(const InForce&) = delete;
  };
  const InForce inForce(this);
  int result = 0;
  try {
    result = program();
  } catch (...) {
    CheckAllEnded();
    throw;
  }
  CheckAllEnded();
  return result;
}

// Threads.

std::shared_ptr<Thread> VirtualBase::Start(const std::string& name, std::function<void()> body) {
  auto task = std::make_shared<Task>(nextNumber_, name);
  task->context = switcher_->Create(&RunTask, task.get());
  ++nextNumber_;
  task->body = std::move(body);
  tasks_.emplace(task->number, task);
  ready_.push_back(task.get());
  MayLeave();
  return task;
}

TaskContext* VirtualBase::RunTask(void* argument) {
  Task& task = *static_cast<Task*>(argument);
  RunThreadBody(task.threadName, task.body);
  return Current()->End(task);
}

TaskContext* VirtualBase::End(Task& task) {
  if (!task.held.empty()) {
    Fatal("thread \"" + task.threadName + "\" ends while it holds \"" + task.held.last()->name +
          "\"");
  }
  const auto place = tasks_.find(task.number);
  std::shared_ptr<Task> self = std::move(place->second);
  tasks_.erase(place);
  self->hasEnded = true;
  self->ended.Signal([this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
  // What it leaves may be the last reference to its own object.
  self.reset();
  running_ = nullptr;
  running_ = &ChooseNext();
  running_->state = TaskState::Running;
  ++switches_;
  return running_->context;
}

void VirtualBase::Join(Task& task) {
  if (task.hasEnded) return;
  EventState* const ended = &task.ended;
  WaitNode node;
  running_->joined = &task;
  WaitForAny({&ended, 1}, {&node, 1}, Deadline::Never());
  running_->joined = nullptr;
}

// Choice of the next task.

void VirtualBase::MayLeave() {
  if (choosing_) return;
  if (++pointsAtThisTime_ > kMostPointsAtOneTime) {
    Abandon("livelock: " + std::to_string(kMostPointsAtOneTime) + " calls without time moving");
  }
  if (!ready_.empty() && policy_->LeavesEarly()) Yield();
}

void VirtualBase::Yield() {
  running_->state = TaskState::Ready;
  ready_.push_back(running_);
  GiveWay();
}

void VirtualBase::Block(const Deadline& deadline) {
  running_->state = TaskState::Waiting;
  running_->deadline = deadline;
  if (!deadline.IsNever()) deadlines_.Push(deadline.moment(), *running_);
  GiveWay();
}

void VirtualBase::GiveWay() {
  if (taskSwitch_ == TaskSwitch::Fibers && std::this_thread::get_id() != thread_) {
    Fatal("a thread that the platform did not start waits under virtual time");
  }
  Task& self = *running_;
  Task& next = ChooseNext();
  running_ = &next;
  next.state = TaskState::Running;
  if (&next == &self) return;
  ++switches_;
  switcher_->Switch(self.context, next.context);
}

Task& VirtualBase::ChooseNext() {
  choosing_ = true;
  DeliverSignals();
  ++steps_;
  if (++stepsAtThisTime_ > kMostStepsAtOneTime) {
    Abandon("livelock: " + std::to_string(kMostStepsAtOneTime) + " steps without time moving");
  }
  while (ready_.empty()) {
    if (deadlines_.empty()) Abandon("deadlock: no thread can ever run again");
    JumpTime();
    DeliverSignals();
  }
  const size_t index = ready_.size() == 1 ? 0 : policy_->Choose(ready_.size());
  Task& next = *ready_[index];
  ready_[index] = ready_.back();
  ready_.pop_back();
  const auto moment = static_cast<uint64_t>(now_.count());
  traceHash_ = Mix64(traceHash_ ^ Mix64(moment + kGoldenGamma * (next.number + 1)));
  choosing_ = false;
  return next;
}

void VirtualBase::JumpTime() {
  now_ = deadlines_.earliest();
  stepsAtThisTime_ = 0;
  pointsAtThisTime_ = 0;
  while (!deadlines_.empty() && deadlines_.earliest() <= now_) {
    Task& task = deadlines_.Pop();
    task.state = TaskState::Ready;
    ready_.push_back(&task);
  }
}

void VirtualBase::Wake(Task& task) {
  if (task.state != TaskState::Waiting) return;
  deadlines_.Remove(task);
  task.state = TaskState::Ready;
  ready_.push_back(&task);
}

// Locks.

void VirtualBase::Acquire(LockState& lock) {
  if (lock.owner.load(std::memory_order_relaxed) == running_) {
    if (!lock.recursive) FailTakenTwice(*running_, lock);
    ++lock.depth;
    return;
  }
  CheckRank(*running_, lock);
  MayLeave();
  bool goesFirst = false;
  while (lock.owner.load(std::memory_order_relaxed) != nullptr) {
    WaitForLock(lock, goesFirst);
    goesFirst = true;
  }
  lock.owner.store(running_, std::memory_order_relaxed);
  lock.depth = 1;
  running_->held.Push(&lock);
}

void VirtualBase::Release(LockState& lock) {
  if (lock.owner.load(std::memory_order_relaxed) != running_) FailNotHolder(*running_, lock);
  if (--lock.depth > 0) return;
  lock.owner.store(nullptr, std::memory_order_relaxed);
  running_->held.Remove(&lock);
  // The lock is not handed over: whoever runs first may take it, as with a real one.
  if (Task* task = lock.firstWaiting) {
    lock.firstWaiting = task->nextWaiting;
    if (lock.firstWaiting == nullptr) lock.lastWaiting = nullptr;
    Wake(*task);
  }
}

// Waits until the lock has been released once. A task that came too late for the lock after waiting
// for it goes in front of the others.
void VirtualBase::WaitForLock(LockState& lock, bool goesFirst) {
  Task& self = *running_;
  if (lock.firstWaiting == nullptr) {
    self.nextWaiting = nullptr;
    lock.firstWaiting = lock.lastWaiting = &self;
  } else if (goesFirst) {
    self.nextWaiting = lock.firstWaiting;
    lock.firstWaiting = &self;
  } else {
    self.nextWaiting = nullptr;
    lock.lastWaiting->nextWaiting = &self;
    lock.lastWaiting = &self;
  }
  self.wantedLock = &lock;
  Block(Deadline::Never());
  self.wantedLock = nullptr;
}

// Events.

void VirtualBase::Set(EventState& event) {
  event.Signal([this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
  MayLeave();
}

int VirtualBase::WaitForAny(std::span<EventState* const> events, std::span<WaitNode> nodes,
                            const Deadline& deadline) {
  const int set = TakeFirst(events);
  if (set != kTimedOut) {
    MayLeave();
    return set;
  }
  if (!deadline.IsNever() && deadline.moment() <= now_) {
    // Somebody else has to get his turn, or a thread that asks again and again would stop all.
    Yield();
    return TakeFirst(events);
  }
  Task& self = *running_;
  EventWait wait;
  wait.thread = &self;
  LinkAll(events, nodes, wait);
  self.wantedEvents = events;
  do {
    Block(deadline);
  } while (!wait.granted && (deadline.IsNever() || now_ < deadline.moment()));
  self.wantedEvents = {};
  return UnlinkAndTake(events, nodes,
                       [this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
}

void VirtualBase::SleepUntil(const Deadline& deadline) {
  if (deadline.IsNever() || deadline.moment() > now_) {
    do {
      Block(deadline);
    } while (deadline.IsNever() || now_ < deadline.moment());
  } else {
    Yield();
  }
}

void Task::Join() {
  if (hasEnded) return;
  VirtualBase* base = VirtualBase::Current();
  if (base == nullptr) Fatal("thread \"" + threadName + "\" outlived its time base");
  base->Join(*this);
}

}  // namespace platform::detail
