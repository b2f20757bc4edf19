// What may be asked of virtual time beyond the seed: in which ways the scheduler is unkind to the
// program, what it watches for, and what its reports say. The defaults are those of a program that
// people use; a test harness takes DrawTimeBaseOptions.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// Who runs next among the threads that could.
enum class ScheduleStrategy {
  Sticky,      // a thread continues unless a draw says otherwise; then all have the same chance
  Priority,    // the highest of drawn priorities; in windows of at most 500 choices the running
               // thread becomes the last at a few drawn moments
  StallHeavy,  // as Sticky, with many more stalls if stalls are on
  Uniform,     // all have the same chance at each point
  RoundRobin   // one after the other, at each point
};

// For people: "sticky", "priority", "stall-heavy", "uniform", "round robin".
const char* NameOf(ScheduleStrategy strategy);

struct VirtualOptions {
  ScheduleStrategy strategy = ScheduleStrategy::Sticky;
  // Sticky and StallHeavy: a thread that could continue is left once in so many points. 0: 5, 20 or
  // 100, by the seed.
  int leaveOneIn = 0;
  // Priority: how often in a window the running thread becomes the last. 0: 2, 3, 5 or 10, by the
  // seed.
  int priorityChanges = 0;

  // Unkindness. Each draws from a stream of its own, so switching one off changes none of the
  // others.
  bool stalls = false;  // a thread is held up for 1 ms to 2 s, rarely up to 30 s; 1 to 20 a run
  bool lateWakeUps = false;  // a jump of time goes 1 to 64 ms too far and wakes all that are due
  bool spuriousWakeUps = false;  // a wait inside the platform wakes for nothing and waits on

  // Scheduling points that a run is expected to have (TimeBaseFigures::points), at least 1. Stalls
  // are spread over them; a run that turns out longer has none after them.
  uint64_t expectedPoints = 20'000;

  // Watches. A run that fails one of them is reported, and the process ends with exit code 70.
  bool lostSignals = false;  // see ExpectNoLostSignal in lost_signal.h
  // Real time without a step of any thread; 0 switches the watch off, as a debugger requires.
  std::chrono::milliseconds hangAfter{0};

  // For reports: the command that repeats the run ("" leaves only the seed), and what a harness
  // knows of the run, as whole lines. `history` is called while nothing else runs and must not
  // wait, lock or call the platform's threads, events or sleep.
  std::string repeatCommand;
  std::function<std::string()> history;
};

struct TimeBaseOptions;

// Options for one run of a harness: virtual time with this seed, a strategy drawn from it (40 %
// Sticky, 30 % Priority, 20 % StallHeavy, 5 % each of the others), all unkindness and all watches
// on, and for a quarter of the seeds a start of the millisecond clock shortly before 2^31 or 2^32.
// The start of the time of day is left to the caller.
TimeBaseOptions DrawTimeBaseOptions(uint64_t seed);

// Announces that something has just begun during which a race is likely: an operator acts, an error
// is reported. Opens a window of the strategy Priority unless one is open; without effect
// otherwise. Starts and ends of threads open one by themselves. Any thread of the program may call
// it.
void OpenScheduleWindow();

// Ends the run as failed: writes the headline, the line that repeats the run, the history and the
// state of every thread to standard error, and ends the process with exit code 70 without
// unwinding. Under virtual time only, from a thread of the program.
[[noreturn]] void AbandonVirtualRun(const std::string& headline);

}  // namespace platform
