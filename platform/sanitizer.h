// What the sanitizers have to be told about virtual time, where one thread of the system runs on
// one stack after the other. Empty in builds without them.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define PLATFORM_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PLATFORM_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
// Defined by the build for a file that is itself left out of the instrumentation.
#elif defined(__SANITIZE_THREAD__)
#define PLATFORM_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define PLATFORM_THREAD_SANITIZER 1
#endif
#endif

#if defined(PLATFORM_ADDRESS_SANITIZER)
#include <pthread.h>
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
#include <sanitizer/tsan_interface.h>

#include <thread>

// In the sanitizer's library, but not in its header.
extern "C" void __tsan_ignore_thread_begin();
extern "C" void __tsan_ignore_thread_end();
extern "C" void AnnotateIgnoreSyncBegin(const char* file, int line);
extern "C" void AnnotateIgnoreSyncEnd(const char* file, int line);
#endif

namespace platform::detail {

#if defined(PLATFORM_ADDRESS_SANITIZER) || defined(PLATFORM_THREAD_SANITIZER)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

#if defined(PLATFORM_THREAD_SANITIZER)
inline constexpr bool kFindsRaces = true;
#else
inline constexpr bool kFindsRaces = false;
#endif

// A stack as the sanitizers know it.
class SanitizedStack {
 public:
  // A new stack of `size` bytes from `bottom` up.
  void Describe([[maybe_unused]] const void* bottom, [[maybe_unused]] size_t size) {
#if defined(PLATFORM_ADDRESS_SANITIZER)
    bottom_ = bottom;
    size_ = size;
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
    fiber_ = __tsan_create_fiber(0);
#endif
  }

  // The described stack is gone; it is not the running one.
  void Forget() {
#if defined(PLATFORM_THREAD_SANITIZER)
    __tsan_destroy_fiber(fiber_);
#endif
  }

  // The stack of the calling thread.
  void DescribeThisThread() {
#if defined(PLATFORM_ADDRESS_SANITIZER)
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
      void* bottom = nullptr;
      pthread_attr_getstack(&attributes, &bottom, &size_);
      bottom_ = bottom;
      pthread_attr_destroy(&attributes);
    }
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
    fiber_ = __tsan_get_current_fiber();
#endif
  }

 private:
  friend void AnnounceSwitch(SanitizedStack& from, SanitizedStack& to);
  friend void AnnounceArrival(SanitizedStack& self);
#if defined(PLATFORM_ADDRESS_SANITIZER)
  const void* bottom_ = nullptr;
  size_t size_ = 0;
  void* fakeStack_ = nullptr;
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
  void* fiber_ = nullptr;
#endif
};

// To be called just before leaving `from` for `to`, by code that the thread sanitizer does not see:
// it keeps a list of calls for each stack, and a call that began on the one must not end on the
// other.
[[gnu::always_inline]] inline void AnnounceSwitch([[maybe_unused]] SanitizedStack& from,
                                                  [[maybe_unused]] SanitizedStack& to) {
#if defined(PLATFORM_ADDRESS_SANITIZER)
  __sanitizer_start_switch_fiber(&from.fakeStack_, to.bottom_, to.size_);
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
  // Without synchronisation: the program may not rely on the fact that one task runs at a time.
  // What does order its tasks is announced for each lock, event, start and join.
  __tsan_switch_to_fiber(to.fiber_, __tsan_switch_to_fiber_no_sync);
#endif
}

// To be called as the first thing on the stack that was switched to.
inline void AnnounceArrival([[maybe_unused]] SanitizedStack& self) {
#if defined(PLATFORM_ADDRESS_SANITIZER)
  __sanitizer_finish_switch_fiber(self.fakeStack_, nullptr, nullptr);
#endif
}

// While a process has never had a second thread of the system, the standard library counts
// references without atomic operations. Tasks need none, but the thread sanitizer would take every
// shared_ptr for a race.
inline void HaveHadTwoThreads() {
#if defined(PLATFORM_THREAD_SANITIZER)
  static const bool had = [] {
    std::thread([] {}).join();
    return true;
  }();
  static_cast<void>(had);
#endif
}

// A stretch of the scheduler's own work. Its data goes from task to task without any order that the
// thread sanitizer knows of, so what is read and written in here is hidden from it. Each task has
// its own count of scopes: a task may be left inside one.
class SchedulerScope {
 public:
#if defined(PLATFORM_THREAD_SANITIZER)
  SchedulerScope() { __tsan_ignore_thread_begin(); }
  ~SchedulerScope() { __tsan_ignore_thread_end(); }
#else
  SchedulerScope() {}
  ~SchedulerScope() {}
#endif
  SchedulerScope(const SchedulerScope&) = delete;
  SchedulerScope& operator=(const SchedulerScope&) = delete;
};

// The thread sanitizer sees nothing of what happens in this scope: its locks and events order
// nothing, and what it reads and writes is part of no race. For the code that passes the turn from
// task to task, and for a test whose own locks would order the threads of the program that it
// tests.
class UnseenScope {
 public:
#if defined(PLATFORM_THREAD_SANITIZER)
  UnseenScope() {
    __tsan_ignore_thread_begin();
    AnnotateIgnoreSyncBegin(__FILE__, __LINE__);
  }
  ~UnseenScope() {
    AnnotateIgnoreSyncEnd(__FILE__, __LINE__);
    __tsan_ignore_thread_end();
  }
#else
  UnseenScope() {}
  ~UnseenScope() {}
#endif
  UnseenScope(const UnseenScope&) = delete;
  UnseenScope& operator=(const UnseenScope&) = delete;
};

// A task that has called AnnounceAcquire may rely on what another task did before AnnounceRelease
// of the same object: a set event, a started or ended thread.
inline void AnnounceRelease([[maybe_unused]] const void* object) {
#if defined(PLATFORM_THREAD_SANITIZER)
  __tsan_release(const_cast<void*>(object));
#endif
}

inline void AnnounceAcquire([[maybe_unused]] const void* object) {
#if defined(PLATFORM_THREAD_SANITIZER)
  __tsan_acquire(const_cast<void*>(object));
#endif
}

// To be called when the running task has just taken `lock`, or is about to release it.
inline void AnnounceLocked([[maybe_unused]] void* lock) {
#if defined(PLATFORM_THREAD_SANITIZER)
  __tsan_mutex_pre_lock(lock, __tsan_mutex_not_static);
  __tsan_mutex_post_lock(lock, __tsan_mutex_not_static, 0);
#endif
}

inline void AnnounceUnlock([[maybe_unused]] void* lock) {
#if defined(PLATFORM_THREAD_SANITIZER)
  __tsan_mutex_pre_unlock(lock, 0);
  __tsan_mutex_post_unlock(lock, 0);
#endif
}

}  // namespace platform::detail
