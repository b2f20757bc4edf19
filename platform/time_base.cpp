#include "platform/time_base.h"

#include <time.h>

#include <atomic>
#include <stdexcept>
#include <string>

#include "platform/log.h"
#include "platform/real_base.h"
#include "platform/real_thread.h"
#include "platform/virtual_base.h"

namespace platform {
namespace {

// How long a program under the real base waits at its end for threads that are just ending.
constexpr Milliseconds kLastThreadsTimeout{2000};
// Likewise a program under the virtual base before it begins.
constexpr Milliseconds kEarlierThreadsTimeout{200};
constexpr int kMaxPace = 1000;

int64_t SystemMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

// The system's time of day in its time zone.
Date SystemLocal(int64_t utcMilliseconds) {
  const int64_t millisecond = utcMilliseconds % 1000;
  const auto seconds = static_cast<time_t>(utcMilliseconds / 1000);
  tm parts{};
  if (localtime_r(&seconds, &parts) == nullptr) return Date::Invalid();
  const int second = parts.tm_sec < 60 ? parts.tm_sec : 59;  // a leap second has no place here
  return {parts.tm_year + 1900,
          parts.tm_mon + 1,
          parts.tm_mday,
          parts.tm_hour,
          parts.tm_min,
          second,
          static_cast<int>(millisecond)};
}

// The time of day at the start of the base. Written between programs only.
struct ClockStart {
  bool followsSystem =
      true;  // the real base without a given start: no other clock than the system's
  Date local;
  Date utc;
};
ClockStart clockStart;

std::atomic<int64_t> movedBy{0};  // milliseconds, by MoveTimeOfDay

std::atomic<bool> programRuns{false};
std::atomic<TimeBaseKind> kindInForce{TimeBaseKind::Real};

void StartClockOfDay(const TimeBaseOptions& options) {
  clockStart.followsSystem = options.kind == TimeBaseKind::Real && !options.startOfClock;
  const int64_t now = SystemMilliseconds();
  clockStart.local = options.startOfClock ? *options.startOfClock : SystemLocal(now);
  clockStart.utc = options.startOfClock ? *options.startOfClock : Date::FromMilliseconds(now);
}

// How far the time of day has moved since the start of the base.
int64_t ElapsedOfDay() { return MonotonicTime().count() / 1000 + movedBy; }

int64_t ElapsedMilliseconds() { return MonotonicTime().count() / 1000; }

void Check(const TimeBaseOptions& options) {
  if (options.kind == TimeBaseKind::Paced && (options.pace < 1 || options.pace > kMaxPace)) {
    throw std::invalid_argument("the pace of a time base is 1 to 1000");
  }
  if (options.startOfClock && !options.startOfClock->IsValid()) {
    throw std::invalid_argument("the start of the clock is no date");
  }
}

// One program at a time; after it the real base is in force again.
class ProgramScope {
 public:
  explicit ProgramScope(const TimeBaseOptions& options) {
    if (programRuns.exchange(true)) {
      throw std::logic_error("a program runs under a time base already");
    }
    detail::RestartRealClock(options.kind == TimeBaseKind::Paced ? options.pace : 1);
    StartClockOfDay(options);
    kindInForce = options.kind;
  }
  ~ProgramScope() {
    detail::RestartRealClock(1);
    StartClockOfDay({});
    movedBy = 0;
    kindInForce = TimeBaseKind::Real;
    programRuns = false;
  }
  ProgramScope(const ProgramScope&) = delete;
  ProgramScope& operator=(const ProgramScope&) = delete;
};

// The thread's name for a scope.
class NameScope {
 public:
  explicit NameScope(const char* name) : before_(detail::CurrentRealRecord().threadName) {
    detail::CurrentRealRecord().threadName = name;
  }
  ~NameScope() { detail::CurrentRealRecord().threadName = before_; }
  NameScope(const NameScope&) = delete;
  NameScope& operator=(const NameScope&) = delete;

 private:
  std::string before_;
};

int RunReal(const std::function<int()>& program) {
  const NameScope name("main");
  const int result = program();
  for (const std::string& left : detail::AwaitRealThreads(Deadline::After(kLastThreadsTimeout))) {
    Log(LogLevel::Error, "thread \"" + left + "\" has not ended with the program");
  }
  return result;
}

}  // namespace

int RunUnderTimeBase(const TimeBaseOptions& options, const std::function<int()>& program) {
  Check(options);
  if (options.kind == TimeBaseKind::Virtual) {
    for (const std::string& left :
         detail::AwaitRealThreads(Deadline::After(kEarlierThreadsTimeout))) {
      throw std::logic_error("thread \"" + left + "\" runs already, and no virtual base guides it");
    }
  }
  const ProgramScope scope(options);
  if (options.kind != TimeBaseKind::Virtual) return RunReal(program);
  detail::VirtualBase base(options);
  return base.Run(program);
}

TimeBaseKind CurrentTimeBase() { return kindInForce.load(std::memory_order_relaxed); }

int CurrentPace() { return detail::RealPace(); }

uint32_t TickCount() {
  const auto milliseconds = static_cast<uint32_t>(ElapsedMilliseconds());
  const detail::VirtualBase* base = detail::VirtualBase::Current();
  return base != nullptr ? base->startTick() + milliseconds : milliseconds;
}

Microseconds MonotonicTime() {
  const detail::VirtualBase* base = detail::VirtualBase::Current();
  return base != nullptr ? base->now() : detail::RealElapsed();
}

Date LocalNow() {
  if (clockStart.followsSystem) return SystemLocal(SystemMilliseconds());
  return clockStart.local.PlusMilliseconds(ElapsedOfDay());
}

void MoveTimeOfDay(Milliseconds by) { movedBy += by.count(); }

Date UtcNow() {
  if (clockStart.followsSystem) return Date::FromMilliseconds(SystemMilliseconds());
  return clockStart.utc.PlusMilliseconds(ElapsedOfDay());
}

TimeBaseFigures GetTimeBaseFigures() {
  const detail::VirtualBase* base = detail::VirtualBase::Current();
  if (base != nullptr) return base->figures();
  TimeBaseFigures figures;
  figures.elapsed = MonotonicTime();
  return figures;
}

void EndStalls() {
  if (detail::VirtualBase* base = detail::VirtualBase::Current()) base->EndStalls();
}

}  // namespace platform
