// Locks with a name and a rank. A thread takes locks in rising rank only; debug and virtual builds
// stop at an acquisition against the order, with both names.
#pragma once

#include <memory>

#include "platform/annotations.h"

namespace platform {

// Position of a lock in the order: it may be taken only while all locks held have a lower rank (or
// are this same lock, if it is recursive). Each program keeps its ranks in one table.
using LockRank = int;

// The rank of locks under which nothing else is ever taken.
inline constexpr LockRank kLeafRank = 10000;

class LockState;

// A lock that its holder may take again. It gives no thread precedence. Hold it for a copy, never
// across a wait.
class CAPABILITY("mutex") RecursiveLock {
 public:
  // `name` must live as long as the lock; a literal does.
  RecursiveLock(const char* name, LockRank rank);
  ~RecursiveLock();
  RecursiveLock(const RecursiveLock&) = delete;
  RecursiveLock& operator=(const RecursiveLock&) = delete;
  void Lock() ACQUIRE();
  void Unlock() RELEASE();

 private:
  std::unique_ptr<LockState> state_;
};

// A lock that a thread takes once. Taking it twice on one thread stops debug and virtual builds.
class CAPABILITY("mutex") PlainLock {
 public:
  PlainLock(const char* name, LockRank rank);
  ~PlainLock();
  PlainLock(const PlainLock&) = delete;
  PlainLock& operator=(const PlainLock&) = delete;
  void Lock() ACQUIRE();
  void Unlock() RELEASE();

 private:
  std::unique_ptr<LockState> state_;
};

// Holds a lock for a scope.
template <class AnyLock>
class SCOPED_CAPABILITY LockGuard {
 public:
  explicit LockGuard(AnyLock& lock) ACQUIRE(lock) : lock_(lock) { lock_.Lock(); }
  ~LockGuard() RELEASE() { lock_.Unlock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  AnyLock& lock_;
};
using RecursiveGuard = LockGuard<RecursiveLock>;
using PlainGuard = LockGuard<PlainLock>;

}  // namespace platform
