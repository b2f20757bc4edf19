#include "platform/thread.h"

#include <atomic>
#include <exception>
#include <system_error>

#include "platform/exception.h"
#include "platform/fatal.h"
#include "platform/log_level.h"
#include "platform/real_thread.h"
#include "platform/thread_body.h"
#include "platform/virtual_base.h"

namespace platform {

namespace detail {
namespace {

std::string TextOf(CException& exception) {
  char text[512];
  if (exception.GetErrorMessage(text, sizeof text, nullptr) == 0) return "exception without a text";
  return text;
}

// Ends the process with the text of the exception that is being handled.
[[noreturn]] void FailEscaped(const std::string& name) {
  const std::string start = "an exception leaves thread \"" + name + "\": ";
  try {
    throw;
  } catch (CException* exception) {
    Fatal(start + TextOf(*exception));
  } catch (const std::exception& exception) {
    Fatal(start + exception.what());
  } catch (...) {
    Fatal(start + "of an unknown type");
  }
}

}  // namespace

void RunThreadBody(const std::string& name, std::function<void()>& body) {
  if (IsLogged(LogLevel::Debug)) Log(LogLevel::Debug, "thread \"" + name + "\" starts");
  try {
    body();
    body = nullptr;
  } catch (...) {
    FailEscaped(name);
  }
  if (IsLogged(LogLevel::Debug)) Log(LogLevel::Debug, "thread \"" + name + "\" ends");
}

ThreadId NextThreadId() {
  static std::atomic<ThreadId> last{0};
  // Relaxed: two starts of threads are in no order because of their numbers.
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

ThreadRecord& CurrentRecord() {
  if (VirtualBase* base = VirtualBase::Current()) return base->runningRecord();
  return CurrentRealRecord();
}

}  // namespace detail

namespace {

std::atomic<int> startsToFail{0};

// Takes one of the failures that a test asked for.
bool TakeFailure() {
  int left = startsToFail.load();
  while (left > 0) {
    if (startsToFail.compare_exchange_weak(left, left - 1)) return true;
  }
  return false;
}

}  // namespace

std::shared_ptr<Thread> StartThread(const std::string& name, std::function<void()> body,
                                    ThreadPriority priority) {
  if (TakeFailure()) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                            "no thread for \"" + name + "\"");
  }
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) {
    return base->Start(name, std::move(body));  // tasks have no priorities
  }
  return detail::StartRealThread(name, std::move(body), priority);
}

void FailThreadStarts(int count) { startsToFail = count; }

ThreadId CurrentThreadId() { return detail::CurrentRecord().id; }

std::string CurrentThreadName() { return detail::CurrentRecord().threadName; }

}  // namespace platform
