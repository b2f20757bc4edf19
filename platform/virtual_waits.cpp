// Locks, events and sleep under virtual time.
#include "platform/fatal.h"
#include "platform/virtual_base.h"

namespace platform::detail {

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
    task->wantedLock = nullptr;
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
  do {
    Block(Deadline::Never());
  } while (self.wantedLock != nullptr);
}

// Events.

void VirtualBase::Set(EventState& event) {
  event.Signal([this](ThreadRecord& thread) { Wake(static_cast<Task&>(thread)); });
  MayLeave();
}

int VirtualBase::WaitForAny(std::span<EventState* const> events, std::span<WaitNode> nodes,
                            const Deadline& deadline) {
  MayStall();
  const int set = TakeFirst(events);
  if (set != kTimedOut) {
    MayLeave();
    return set;
  }
  if (!deadline.IsNever() && deadline.moment() <= now_) {
    // Somebody else has to get his turn, or a thread that asks again and again would stop all.
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
  MayStall();
  if (deadline.IsNever() || deadline.moment() > now_) {
    do {
      Block(deadline);
    } while (deadline.IsNever() || now_ < deadline.moment());
  } else {
    StandBack();
  }
}

void Task::Join() {
  if (hasEnded) return;
  VirtualBase* base = VirtualBase::Current();
  if (base == nullptr) Fatal("thread \"" + threadName + "\" outlived its time base");
  base->Join(*this);
}

}  // namespace platform::detail
