// A look from outside at a run under virtual time: a task that neither waits nor ends stops all
// others, and none of them can say so.
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

// Where another thread of the system is just now. Empty if it does not answer within a second.
// Interrupts that thread by a signal: for a program that is about to end.
CallStack InterruptAndWalk(pthread_t thread);

}  // namespace platform::detail
