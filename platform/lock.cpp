#include "platform/lock.h"

#include <string>

#include "platform/fatal.h"
#include "platform/lock_state.h"
#include "platform/real_base.h"
#include "platform/virtual_base.h"

namespace platform {

namespace detail {

void HeldLocks::Push(LockState* lock) {
  if (count_ == kMaxLocks) Fatal(std::string("too many locks held, the last: ") + lock->name);
  locks_[count_++] = lock;
}

void HeldLocks::Remove(const LockState* lock) {
  // Searches from the end: locks are nearly always released in the reverse order.
  for (size_t i = count_; i > 0; --i) {
    if (locks_[i - 1] != lock) continue;
    for (; i < count_; ++i) locks_[i - 1] = locks_[i];
    --count_;
    return;
  }
}

void CheckRank(const ThreadRecord& thread, const LockState& lock) {
  if (thread.held.empty()) return;
  const LockState& last = *thread.held.last();
  if (last.rank < lock.rank && last.rank < kLeafRank) return;
  Fatal("lock order: thread \"" + thread.threadName + "\" takes \"" + lock.name + "\" (rank " +
        std::to_string(lock.rank) + ") while it holds \"" + last.name + "\" (rank " +
        std::to_string(last.rank) + ")");
}

void FailTakenTwice(const ThreadRecord& thread, const LockState& lock) {
  Fatal("thread \"" + thread.threadName + "\" takes the plain lock \"" + lock.name +
        "\" while it holds \"" + lock.name + "\"");
}

void FailNotHolder(const ThreadRecord& thread, const LockState& lock) {
  Fatal("thread \"" + thread.threadName + "\" releases the lock \"" + lock.name +
        "\", which it does not hold");
}

}  // namespace detail

namespace {

void Acquire(LockState& lock) {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    base->Acquire(lock);
  } else {
    detail::AcquireReal(lock);
  }
}

void Release(LockState& lock) {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    base->Release(lock);
  } else {
    detail::ReleaseReal(lock);
  }
}

}  // namespace

RecursiveLock::RecursiveLock(const char* name, LockRank rank)
    : state_(std::make_unique<LockState>(name, rank, true)) {}
RecursiveLock::~RecursiveLock() = default;
// The analysis checks the callers, which name the lock. It cannot see that Acquire takes it.
void RecursiveLock::Lock() NO_THREAD_SAFETY_ANALYSIS { Acquire(*state_); }
void RecursiveLock::Unlock() NO_THREAD_SAFETY_ANALYSIS { Release(*state_); }

PlainLock::PlainLock(const char* name, LockRank rank)
    : state_(std::make_unique<LockState>(name, rank, false)) {}
PlainLock::~PlainLock() = default;
void PlainLock::Lock() NO_THREAD_SAFETY_ANALYSIS { Acquire(*state_); }
void PlainLock::Unlock() NO_THREAD_SAFETY_ANALYSIS { Release(*state_); }

}  // namespace platform
