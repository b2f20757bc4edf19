// Threads of the program: each has a name, is logged at its start and end, and lets no exception
// escape.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {

enum class ThreadPriority { Normal, BelowNormal, Lowest };

// One started thread. Its starter and the thread itself share it, so either may release it first.
class Thread {
 public:
  virtual ~Thread() = default;
  // Waits until the thread's function has returned and its state is released. Any other thread
  // may call it, also several and after the end.
  virtual void Join() = 0;
  virtual bool HasEnded() const = 0;
  virtual const std::string& name() const = 0;
};

// Starts a thread. The name is for people: logs, reports of a deadlock, the table of threads in
// ARCHITECTURE.md. An exception that leaves `body` is logged and ends the process. Throws
// std::system_error when the system has no thread left. Any thread may call it.
std::shared_ptr<Thread> StartThread(const std::string& name, std::function<void()> body,
                                    ThreadPriority priority = ThreadPriority::Normal);

// Makes the next StartThread calls fail as if the system had no thread left; for tests only.
void FailThreadStarts(int count);

// The name of the calling thread; "main" for the first, "" for one that the platform did not start.
std::string CurrentThreadName();

// A number that tells the calling thread (in virtual time: task) from all others that live, and
// that is not used again; never 0. Threads that the platform did not start have one too.
using ThreadId = uint64_t;
ThreadId CurrentThreadId();

}  // namespace platform
