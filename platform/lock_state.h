// The state of both kinds of lock. The same object serves every base: `mutex` blocks under the real
// base, the list of waiting tasks under the virtual one.
#pragma once

#include <atomic>
#include <mutex>

#include "platform/lock.h"
#include "platform/thread_record.h"

namespace platform {

namespace detail {
class Task;
}

class LockState {
 public:
  LockState(const char* lockName, LockRank lockRank, bool isRecursive)
      : name(lockName), rank(lockRank), recursive(isRecursive) {}

  const char* const name;
  const LockRank rank;
  const bool recursive;

  // The holder, null when free. Only a thread itself writes or clears its own record here, so
  // comparing it with the calling thread's record needs no stronger memory order.
  std::atomic<detail::ThreadRecord*> owner{nullptr};
  int depth = 0;  // how often its holder has taken it; only the holder looks

  std::mutex mutex;

  // Virtual base: tasks waiting for the lock, first come first, linked through the tasks.
  detail::Task* firstWaiting = nullptr;
  detail::Task* lastWaiting = nullptr;
};

namespace detail {

// Stops the process if the thread may not take `lock` with the locks that it holds. Not to be
// called for a lock that the thread holds already.
void CheckRank(const ThreadRecord& thread, const LockState& lock);

[[noreturn]] void FailTakenTwice(const ThreadRecord& thread, const LockState& lock);
[[noreturn]] void FailNotHolder(const ThreadRecord& thread, const LockState& lock);

}  // namespace detail
}  // namespace platform
