// Watches a run under virtual time from outside. A task that neither waits nor ends stops all
// others, so none of them can report it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <semaphore>
#include <thread>

#include "platform/call_stack.h"

namespace platform::detail {

class HangWatch {
 public:
  // Calls `onHang` on a thread of its own when `steps` has not changed for so long, real time.
  HangWatch(std::chrono::milliseconds after, const std::atomic<uint64_t>& steps,
            std::function<void()> onHang);
  ~HangWatch();
  HangWatch(const HangWatch&) = delete;
  HangWatch& operator=(const HangWatch&) = delete;

 private:
  void Watch(std::chrono::milliseconds interval);

  const std::atomic<uint64_t>& steps_;
  const std::function<void()> onHang_;
  std::binary_semaphore stop_{0};
  std::thread thread_;
};

// Where another thread of the system is at present. Empty if it does not reply within a second. It
// interrupts that thread by a signal, so it is for a program that is about to end.
CallStack InterruptAndWalk(pthread_t thread);

}  // namespace platform::detail
