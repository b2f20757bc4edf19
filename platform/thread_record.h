// What the platform knows of a thread, whichever base runs it. It belongs to the thread and is not
// thread_local, because under virtual time many threads share one of the system's.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/thread.h"

namespace platform {

class LockState;

namespace detail {

// The locks that a thread holds, in the order in which it took them. Since they are taken in rising
// rank, the last one has the highest.
class HeldLocks {
 public:
  void Push(LockState* lock);
  void Remove(const LockState* lock);
  bool empty() const { return count_ == 0; }
  size_t size() const { return count_; }
  LockState* operator[](size_t index) const { return locks_[index]; }
  LockState* last() const { return locks_[count_ - 1]; }

 private:
  // No order of ranks has room for more locks at once, so more of them are a fault.
  static constexpr size_t kMaxLocks = 24;
  std::array<LockState*, kMaxLocks> locks_{};
  size_t count_ = 0;
};

// The next number for CurrentThreadId.
ThreadId NextThreadId();

struct ThreadRecord {
  ThreadId id = NextThreadId();
  std::string threadName;
  HeldLocks held;
  std::string libraryError;  // of the last call of the loader that failed
};

// The record of the calling thread, under whichever base is in force. A thread that the platform
// did not start gets one at its first call.
ThreadRecord& CurrentRecord();

}  // namespace detail
}  // namespace platform
