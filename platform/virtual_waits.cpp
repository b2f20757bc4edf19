// Locks, events and sleep under virtual time.
#include "platform/fatal.h"
#include "platform/sanitizer.h"
#include "platform/virtual_base.h"

namespace platform::detail {

// Locks.

void VirtualBase::Acquire(LockState& lock) {
  const SchedulerScope scope;
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
  AnnounceLocked(&lock);
}

void VirtualBase::Release(LockState& lock) {
  const SchedulerScope scope;
  if (lock.owner.load(std::memory_order_relaxed) != running_) FailNotHolder(*running_, lock);
  if (--lock.depth > 0) return;
  AnnounceUnlock(&lock);
  lock.owner.store(nullptr, std::memory_order_relaxed);
  running_->held.Remove(&lock);
  // The lock is not handed over: whoever runs first may take it, as with a real one.
  if (Task* task = lock.firstWaiting) {
    lock.firstWaiting = task->nextWaiting;
    if (lock.firstWaiting == nullptr) lock.lastWaiting = nullptr;
    task->wantedLock = nullptr;
    Wake(*task);
  }
}

// Waits until the lock has been released once. A task that has waited for the lock and found it
// taken again goes to the front of the list.
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
  CheckCircle();
  do {
    Block(Deadline::Never());
  } while (self.wantedLock != nullptr);
}

// The one task that can end the wait of another; null if there may be several.
static const Task* WaitsOnlyFor(const Task& task) {
  if (task.wantedLock != nullptr) {
    return static_cast<const Task*>(task.wantedLock->owner.load(std::memory_order_relaxed));
  }
  return task.joined;
}

// Other tasks may go on while some wait for each other in a circle.
void VirtualBase::CheckCircle() const {
  std::string circle = "\"" + running_->threadName + "\"";
  for (const Task* task = WaitsOnlyFor(*running_); task != nullptr; task = WaitsOnlyFor(*task)) {
    circle += " waits for \"" + task->threadName + "\"";
    if (task == running_) Abandon("deadlock: " + circle);
    circle += ", which";
  }
}

// Events.

void VirtualBase::Set(EventState& event) {
  const SchedulerScope scope;
  AnnounceRelease(&event);
  Clear(event);
  event.Signal([this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
  MayLeave();
}

void VirtualBase::Reset(EventState& event) {
  const SchedulerScope scope;
  event.set = false;
}

bool VirtualBase::TryWait(EventState& event) {
  const SchedulerScope scope;
  if (!event.Take()) return false;
  AnnounceAcquire(&event);
  return true;
}

int VirtualBase::WaitForAny(std::span<EventState* const> events, std::span<WaitNode> nodes,
                            const Deadline& deadline) {
  const SchedulerScope scope;
  const int taken = Await(events, nodes, deadline);
  if (taken != kTimedOut) AnnounceAcquire(events[static_cast<size_t>(taken)]);
  return taken;
}

int VirtualBase::Await(std::span<EventState* const> events, std::span<WaitNode> nodes,
                       const Deadline& deadline) {
  MayStall();
  const int set = TakeFirst(events);
  if (set != kTimedOut) {
    MayLeave();
    return set;
  }
  if (!deadline.IsNever() && deadline.moment() <= now_) {
    // Another task has to get its turn, or a thread that keeps asking would stop all of them.
    StandBack();
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
  MayStall();
  self.wantedEvents = {};
  return UnlinkAndTake(events, nodes,
                       [this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
}

void VirtualBase::SleepUntil(const Deadline& deadline) {
  const SchedulerScope scope;
  MayStall();
  if (deadline.IsNever() || deadline.moment() > now_) {
    do {
      Block(deadline);
    } while (deadline.IsNever() || now_ < deadline.moment());
  } else {
    StandBack();
  }
}

// Lost signals.

// Longer than a thread can be held up before it announces something.
static constexpr Microseconds kMaxWithoutSignal{60'000'000};

void VirtualBase::Suspect(EventState& event) {
  const SchedulerScope scope;
  Clear(event);
  // The signal came between the time-out and the question.
  if (event.set) return;
  suspicions_.push_back({&event, running_->threadName, now_});
}

void VirtualBase::Clear(const EventState& event) {
  const SchedulerScope scope;
  if (suspicions_.empty()) return;
  std::erase_if(suspicions_, [&](const Suspicion& one) { return one.event == &event; });
}

void VirtualBase::CheckSuspicions() const {
  if (suspicions_.empty() || now_ - suspicions_.front().since < kMaxWithoutSignal) return;
  const Suspicion& oldest = suspicions_.front();
  Abandon(std::string("lost signal: the wait of \"") + oldest.thread + "\" for event \"" +
          oldest.event->name +
          "\" timed out while its condition held, and nobody has set it since");
}

// Threads.

bool Task::HasEnded() const {
  if (!hasEnded) return false;
  AnnounceAcquire(&ended);
  return true;
}

void Task::Join() {
  if (HasEnded()) return;
  VirtualBase* base = VirtualBase::Current();
  if (base == nullptr) Fatal("thread \"" + threadName + "\" outlived its time base");
  base->Join(*this);
}

}  // namespace platform::detail
