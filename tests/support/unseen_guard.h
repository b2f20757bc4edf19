// What surrounds the module in a test (the host, the line, an observer) has locks of its own. To
// the thread sanitizer each of them would order the module's threads, and so hide races that occur
// in a laboratory.
#pragma once

#include "platform/lock.h"
#include "platform/sanitizer.h"

namespace rvx {

using platform::detail::UnseenScope;

// Holds a lock for a scope in which the thread sanitizer sees neither the lock nor what it guards.
class SCOPED_CAPABILITY UnseenGuard {
 public:
  explicit UnseenGuard(platform::PlainLock& lock) ACQUIRE(lock) : guard_(lock) {}
  ~UnseenGuard() RELEASE() {}
  UnseenGuard(const UnseenGuard&) = delete;
  UnseenGuard& operator=(const UnseenGuard&) = delete;

 private:
  UnseenScope scope_;
  platform::PlainGuard guard_;
};

}  // namespace rvx
