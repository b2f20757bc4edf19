#include "platform/hang_watch.h"

#include <execinfo.h>
#include <pthread.h>
#include <signal.h>

#include <array>

namespace platform::detail {
namespace {

// A process that was stopped for a while counts at most one look for that time.
constexpr int kLooks = 10;

std::array<void*, 40> interruptedCalls;
int interruptedCount = 0;
std::binary_semaphore interrupted{0};

// The handler does what a handler may not do: the thread that it interrupts never runs again.
void TakeStack(int /*signal*/) {
  interruptedCount = backtrace(interruptedCalls.data(), static_cast<int>(interruptedCalls.size()));
  interrupted.release();
}

}  // namespace

HangWatch::HangWatch(std::chrono::milliseconds after, const std::atomic<uint64_t>& steps,
                     std::function<void()> onHang)
    : steps_(steps), onHang_(std::move(onHang)) {
  // The first call loads a library, which a hung thread may not be able to.
  backtrace(interruptedCalls.data(), 1);
  thread_ =
      std::thread([this, after] { Watch(std::max(after / kLooks, std::chrono::milliseconds(1))); });
}

HangWatch::~HangWatch() {
  stop_.release();
  thread_.join();
}

void HangWatch::Watch(std::chrono::milliseconds interval) {
  uint64_t seen = steps_.load(std::memory_order_relaxed);
  int looks = 0;
  while (!stop_.try_acquire_for(interval)) {
    const uint64_t now = steps_.load(std::memory_order_relaxed);
    looks = now == seen ? looks + 1 : 0;
    seen = now;
    if (looks == kLooks) onHang_();
  }
}

CallStack InterruptAndWalk(pthread_t thread) {
  const int signal = SIGRTMAX - 1;  // one that nobody else uses
  struct sigaction action {};
  action.sa_handler = TakeStack;
  sigemptyset(&action.sa_mask);
  if (sigaction(signal, &action, nullptr) != 0 || pthread_kill(thread, signal) != 0) return {};
  if (!interrupted.try_acquire_for(std::chrono::seconds(1))) return {};
  // Leaves out the handler itself and the system's frame of the signal.
  constexpr int kOwnFrames = 2;
  CallStack stack;
  for (int i = kOwnFrames; i < interruptedCount; ++i) {
    stack.push_back(interruptedCalls[static_cast<size_t>(i)]);
  }
  return stack;
}

}  // namespace platform::detail
