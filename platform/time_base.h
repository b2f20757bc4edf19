// The one clock of the process. Everything that waits, measures time or asks the time of day goes
// through here, so that a program runs the same in real, paced and virtual time.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/date.h"
#include "platform/virtual_options.h"

namespace platform {

using Milliseconds = std::chrono::milliseconds;
using Microseconds = std::chrono::microseconds;

enum class TimeBaseKind {
  Real,    // durations as they are
  Paced,   // real threads, all durations divided by the pace
  Virtual  // deterministic: one task at a time, time jumps to the earliest deadline
};

// How the virtual base changes from task to task. Both give the same trace for the same seed.
enum class TaskSwitch {
  Fibers,  // Boost.Context; the default
  Threads  // a thread for each task, a baton passed between them; for a debugger
};

struct TimeBaseOptions {
  TimeBaseKind kind = TimeBaseKind::Real;
  int pace = 1;       // Paced: 1 to 1000
  uint64_t seed = 0;  // Virtual: decides which runnable task goes next
  TaskSwitch taskSwitch = TaskSwitch::Fibers;
  std::optional<Date> startOfClock;  // time of day at the start; the real one when absent
  uint32_t startTick = 0;            // TickCount() at the start in virtual time
  VirtualOptions virtualTime;        // Virtual: how unkind it is, what it watches for
};

// Runs a program under a time base: `program` runs as the first thread ("main"), and its result is
// returned. One call at a time in a process; calls may follow one another. When `program` returns,
// all threads that StartThread made must have ended: in virtual time one that is left is reported
// with its name, and the process ends (exit code 70). The caller's own thread runs `program`.
// Throws std::logic_error if a program runs already, and for virtual time also if a thread that
// StartThread made still runs.
int RunUnderTimeBase(const TimeBaseOptions& options, const std::function<int()>& program);

// The base in force; Real outside of RunUnderTimeBase.
TimeBaseKind CurrentTimeBase();

// Pace in force, 1 for the real and the virtual base.
int CurrentPace();

// Milliseconds since an arbitrary start, in the base's time. Wraps at 2^32: compare by unsigned
// difference only.
uint32_t TickCount();

// Microseconds since the start of the base, never decreasing, in the base's time. Does not wrap.
Microseconds MonotonicTime();

// Local time of day in the base's time.
Date LocalNow();

// Same moment as LocalNow in UTC. With startOfClock set, local time and UTC are the same clock.
Date UtcNow();

// Moves the time of day, as if somebody had set the computer's clock; for tests only. Durations and
// waits are not touched, nor is a clock that follows the system's. The end of RunUnderTimeBase
// undoes it.
void MoveTimeOfDay(Milliseconds by);

// A moment to wait until, in the base's time.
class Deadline {
 public:
  static Deadline Never() { return Deadline(); }
  static Deadline Now() { return Deadline(MonotonicTime()); }
  // A duration of centuries means for ever: the sum would not fit.
  static Deadline After(Milliseconds duration) {
    if (duration >= kForEver) return Never();
    return Deadline(MonotonicTime() + duration);
  }
  static Deadline At(Microseconds moment) { return Deadline(moment); }

  bool IsNever() const { return never_; }
  Microseconds moment() const { return moment_; }  // meaningful unless IsNever
  bool HasPassed() const { return !never_ && MonotonicTime() >= moment_; }
  // The earlier of two.
  static Deadline Earliest(const Deadline& a, const Deadline& b) {
    if (a.never_) return b;
    if (b.never_) return a;
    return a.moment_ <= b.moment_ ? a : b;
  }

 private:
  static constexpr Milliseconds kForEver = std::chrono::hours(24 * 365 * 1000);
  Deadline() = default;
  explicit Deadline(Microseconds moment) : never_(false), moment_(moment) {}
  bool never_ = true;
  Microseconds moment_{0};
};

// Figures of the running base, for benchmarks and reports.
struct TimeBaseFigures {
  uint64_t switches = 0;    // changes from one task to another (virtual), else 0
  uint64_t steps = 0;       // choices of the next task (virtual), else 0
  uint64_t traceHash = 0;   // hash over (task, time) of each step (virtual), else 0
  Microseconds elapsed{0};  // MonotonicTime()
  // Virtual time with the unkindness of VirtualOptions on, else 0.
  uint64_t points = 0;           // scheduling points passed, at which a thread may be held up
  uint64_t stalls = 0;           // threads held up
  uint64_t lateWakeUps = 0;      // jumps of time that went too far
  uint64_t spuriousWakeUps = 0;  // waits woken for nothing

  // Changes of task for each second of the base's time; 0 before any has passed.
  double SwitchesPerSecond() const {
    return elapsed.count() > 0
               ? 1e6 * static_cast<double>(switches) / static_cast<double>(elapsed.count())
               : 0;
  }
};
TimeBaseFigures GetTimeBaseFigures();

// From this call on virtual time holds up no thread; one that is held up already continues within
// 30 s. For the end of a simulated run, when everything has to settle. Any thread may call it; it
// does nothing on other bases.
void EndStalls();

}  // namespace platform
