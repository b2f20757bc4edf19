// What the sanitizers have to be told when a thread of the system goes on with another stack. Empty
// in builds without them.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define PLATFORM_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PLATFORM_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_THREAD__)
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
#endif

namespace platform::detail {

#if defined(PLATFORM_ADDRESS_SANITIZER) || defined(PLATFORM_THREAD_SANITIZER)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
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

// To be called just before leaving `from` for `to`. Part of its caller's frame: the thread
// sanitizer keeps a list of calls for each stack, and a call that began on the one must not end on
// the other.
[[gnu::always_inline]] inline void AnnounceSwitch([[maybe_unused]] SanitizedStack& from,
                                                  [[maybe_unused]] SanitizedStack& to) {
#if defined(PLATFORM_ADDRESS_SANITIZER)
  __sanitizer_start_switch_fiber(&from.fakeStack_, to.bottom_, to.size_);
#endif
#if defined(PLATFORM_THREAD_SANITIZER)
  // With synchronisation: the thread sanitizer then sees tasks as one after the other and finds
  // nothing between them, which is what the build of the real base is for.
  __tsan_switch_to_fiber(to.fiber_, 0);
#endif
}

// To be called as the first thing on the stack that was switched to.
inline void AnnounceArrival([[maybe_unused]] SanitizedStack& self) {
#if defined(PLATFORM_ADDRESS_SANITIZER)
  __sanitizer_finish_switch_fiber(self.fakeStack_, nullptr, nullptr);
#endif
}

}  // namespace platform::detail
