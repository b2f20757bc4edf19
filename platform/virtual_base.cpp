#include "platform/virtual_base.h"

#include <utility>

#include "platform/fatal.h"
#include "platform/hang_watch.h"
#include "platform/interrupt_flag.h"
#include "platform/mix.h"
#include "platform/sanitizer.h"
#include "platform/thread_body.h"

namespace platform::detail {
namespace {

// A program that has run for so many steps without letting time pass never will.
constexpr uint64_t kMaxStepsAtOneTime = 100'000;
constexpr uint64_t kMaxPointsAtOneTime = 100'000'000;

// The price of a question without a time-out while a thread is held up.
constexpr Microseconds kAskingTime{1000};

}  // namespace

std::atomic<VirtualBase*> VirtualBase::current_{nullptr};

VirtualBase::VirtualBase(const TimeBaseOptions& options)
    : seed_(options.seed),
      taskSwitch_(options.taskSwitch),
      startTick_(options.startTick),
      options_(options.virtualTime),
      thread_(std::this_thread::get_id()),
      policy_(MakeSchedulePolicy(options.virtualTime, options.seed)),
      switcher_(options.taskSwitch == TaskSwitch::Fibers ? MakeFiberSwitcher()
                                                         : MakeBatonSwitcher()) {
  if (options_.stalls || options_.lateWakeUps || options_.spuriousWakeUps) {
    faults_.emplace(options_, seed_);
  }
  auto main = std::make_shared<Task>(nextNumber_++, "main");
  main->context = switcher_->Main();
  main->state = TaskState::Running;
  main->systemThread = pthread_self();
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
  std::optional<HangWatch> watch;
  if (options_.hangAfter.count() > 0) {
    watch.emplace(options_.hangAfter, steps_, [this] { ReportHang(); });
  }
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

void VirtualBase::EndStalls() {
  const SchedulerScope scope;
  if (faults_) faults_->EndStalls();
}

TimeBaseFigures VirtualBase::figures() const {
  const SchedulerScope scope;
  TimeBaseFigures figures;
  figures.switches = switches_;
  figures.steps = steps_;
  figures.traceHash = traceHash_;
  figures.elapsed = now_;
  if (faults_) {
    figures.points = faults_->points();
    figures.stalls = faults_->stalls();
    figures.lateWakeUps = faults_->overshoots();
    figures.spuriousWakeUps = spuriousWakeUps_;
  }
  return figures;
}

// Threads.

std::shared_ptr<Thread> VirtualBase::Start(const std::string& name, std::function<void()> body) {
  const SchedulerScope scope;
  auto task = std::make_shared<Task>(nextNumber_, name);
  task->context = switcher_->Create(&RunTask, task.get());
  ++nextNumber_;
  task->body = std::move(body);
  tasks_.emplace(task->number, task);
  AnnounceRelease(task.get());
  ready_.push_back(task.get());
  policy_->OpenWindow();
  MayLeave();
  return task;
}

TaskContext* VirtualBase::RunTask(void* argument) {
  Task& task = *static_cast<Task*>(argument);
  AnnounceAcquire(&task);
  task.systemThread = pthread_self();
  RunThreadBody(task.threadName, task.body);
  return Current()->End(task);
}

TaskContext* VirtualBase::End(Task& task) {
  const SchedulerScope scope;
  if (!task.held.empty()) {
    Fatal("thread \"" + task.threadName + "\" ends while it holds \"" + task.held.last()->name +
          "\"");
  }
  const auto place = tasks_.find(task.number);
  std::shared_ptr<Task> self = std::move(place->second);
  tasks_.erase(place);
  self->hasEnded = true;
  AnnounceRelease(&self->ended);
  self->ended.Signal([this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
  // What it releases may be the last reference to its own object.
  self.reset();
  policy_->OpenWindow();
  running_ = nullptr;
  running_ = &ChooseNext();
  running_->state = TaskState::Running;
  ++switches_;
  return running_->context;
}

void VirtualBase::Join(Task& task) {
  const SchedulerScope scope;
  EventState* const ended = &task.ended;
  WaitNode node;
  running_->joined = &task;
  CheckCircle();
  WaitForAny({&ended, 1}, {&node, 1}, Deadline::Never());
  running_->joined = nullptr;
}

// Choice of the next task.

void VirtualBase::OpenWindow() {
  const SchedulerScope scope;
  policy_->OpenWindow();
}

void VirtualBase::MayLeave() {
  if (choosing_) return;
  if (++pointsAtThisTime_ > kMaxPointsAtOneTime) {
    Abandon("livelock: " + std::to_string(kMaxPointsAtOneTime) + " calls without time moving");
  }
  MayStall();
  if (!ready_.empty() && policy_->LeavesEarly(*running_, ready_)) Yield();
}

void VirtualBase::MayStall() {
  if (!faults_ || choosing_) return;
  const Microseconds length = faults_->StallHere();
  if (length.count() == 0) return;
  const Microseconds end = now_ + length;
  Task& self = *running_;
  self.stalled = true;
  ++stalledTasks_;
  do {
    Block(Deadline::At(end));
  } while (now_ < end);
  self.stalled = false;
  --stalledTasks_;
}

void VirtualBase::StandBack() {
  policy_->StandBack(*running_);
  if (stalledTasks_ == 0) {
    Yield();
    return;
  }
  // What it asks for may have to come from a thread that is held up, and asking takes time.
  const Microseconds end = now_ + kAskingTime;
  do {
    Block(Deadline::At(end));
  } while (now_ < end);
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
  self.frame = PLATFORM_THIS_FRAME;
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
  steps_.store(steps_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  if (++stepsAtThisTime_ > kMaxStepsAtOneTime) {
    Abandon("livelock: " + std::to_string(kMaxStepsAtOneTime) + " steps without time moving");
  }
  if (faults_ && faults_->WakesForNothing()) WakeOneForNothing();
  while (ready_.empty()) {
    if (deadlines_.empty()) Abandon("deadlock: no thread can ever run again");
    JumpTime();
    DeliverSignals();
  }
  const size_t index = ready_.size() == 1 ? 0 : policy_->Choose(ready_, chosenLast_);
  Task& next = *ready_[index];
  ready_[index] = ready_.back();
  ready_.pop_back();
  chosenLast_ = next.number;
  const auto moment = static_cast<uint64_t>(now_.count());
  traceHash_ = Mix64(traceHash_ ^ Mix64(moment + kGoldenGamma * (next.number + 1)));
  choosing_ = false;
  return next;
}

void VirtualBase::JumpTime() {
  now_ = deadlines_.earliest();
  if (faults_) now_ += faults_->Overshoot();
  CheckSuspicions();
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

// Every wait goes round until what it waits for has come, so this must change nothing but the
// order.
void VirtualBase::WakeOneForNothing() {
  std::vector<Task*> waiting;
  for (const auto& [number, task] : tasks_) {
    if (task->state == TaskState::Waiting) waiting.push_back(task.get());
  }
  if (waiting.empty()) return;
  ++spuriousWakeUps_;
  Wake(*waiting[faults_->ChooseWaiting(waiting.size())]);
}

}  // namespace platform::detail
