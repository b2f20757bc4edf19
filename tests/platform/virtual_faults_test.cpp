// What the virtual base finds, and what it says about it.
#include <gtest/gtest.h>

#include <functional>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

using testing::ExitedWithCode;

class VirtualFaultDeathTest : public testing::TestWithParam<TaskSwitch> {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  static void Run(const std::function<void()>& program) {
    RunUnderTimeBase(VirtualCase(GetParam(), 4711).options, [&] {
      program();
      return 0;
    });
  }
};
INSTANTIATE_TEST_SUITE_P(Both, VirtualFaultDeathTest,
                         testing::Values(TaskSwitch::Fibers, TaskSwitch::Threads), NameOfSwitch);

void WaitForNothing() {
  PlainLock lock("ledger", 10);
  Event never("the bus"), neither("the tram");
  const auto waiter = StartThread("passenger", [&] {
    const PlainGuard guard(lock);
    WaitForAny({&never, &neither}, Deadline::Never());
  });
  Sleep(Milliseconds(1500));
  const auto second = StartThread("clerk", [&] { const PlainGuard guard(lock); });
  waiter->Join();
}

TEST_P(VirtualFaultDeathTest, DeadlockNamesThreadsWaitsOwnersAndSeed) {
  EXPECT_EXIT(Run(WaitForNothing), ExitedWithCode(70),
              "deadlock: no thread.*\n.*seed 4711 .*\n.*virtual time 1\\.500000 s.*\n"
              ".*thread 0 \"main\": waits for the end of thread \"passenger\"\n"
              ".*thread 1 \"passenger\": waits for event \"the bus\" or \"the tram\"; "
              "holds \"ledger\"\n"
              ".*thread 2 \"clerk\": waits for lock \"ledger\", owned by \"passenger\"");
}

// The rank order leaves no circle of lock waits, so that a long wait for a lock is only that.
TEST_P(VirtualFaultDeathTest, ALongWaitForALockIsNoDeadlock) {
  Run([] {
    RecursiveLock first("first", 10);
    RecursiveLock second("second", 20);
    Event held("held");
    const auto holder = StartThread("holder", [&] {
      const RecursiveGuard guard(second);
      held.Set();
      Sleep(Milliseconds(5));
    });
    held.Wait();
    {
      const RecursiveGuard a(first);
      const RecursiveGuard b(second);
      EXPECT_EQ(Milliseconds(5), MonotonicTime());
    }
    holder->Join();
  });
}

TEST_P(VirtualFaultDeathTest, LivelockIsFound) {
  EXPECT_EXIT(Run([] {
                Event never("never");
                while (!never.Wait(Milliseconds(0))) {
                }
              }),
              ExitedWithCode(70),
              "livelock: 100000 steps.*\n.*seed 4711.*\n.*\n.*\"main\": ready, ran last");
}

// What a harness adds: the command that repeats the run, and what it saw of it.
TEST_P(VirtualFaultDeathTest, AHarnessAddsItsCommandAndItsHistory) {
  TimeBaseOptions options = DrawTimeBaseOptions(3);
  options.taskSwitch = GetParam();
  options.virtualTime.spuriousWakeUps = false;
  options.virtualTime.repeatCommand = "soak --seed 3";
  options.virtualTime.history = [] { return std::string("  the last event\n"); };
  EXPECT_EXIT(RunUnderTimeBase(options,
                               [] {
                                 AbandonVirtualRun("two samples for one test");
                                 return 0;
                               }),
              ExitedWithCode(70),
              "platform: two samples for one test\n"
              ".*seed 3 .*, stalls, late wake-ups, clock from [0-9]+ ms\\): soak --seed 3\n.*\n"
              ".*thread 0 \"main\": running\n  the last event\n$");
}

TEST_P(VirtualFaultDeathTest, ThreadsLeftAtTheEndAreNamed) {
  EXPECT_EXIT(Run([] { StartThread("forgotten", [] { Sleep(Milliseconds(10)); }); }),
              ExitedWithCode(70), "threads left.*\n.*\n.*\n.*\n.*thread 1 \"forgotten\": ");
}

TEST_P(VirtualFaultDeathTest, AnEventMustOutliveItsWaits) {
  EXPECT_DEATH(Run([] {
                 auto event = std::make_unique<Event>("short-lived");
                 const auto thread = StartThread("waiter", [&] { event->Wait(); });
                 Sleep(Milliseconds(1));
                 event.reset();
                 thread->Join();
               }),
               "\"short-lived\" ends while thread \"waiter\" waits");
}

TEST_P(VirtualFaultDeathTest, AThreadMustReleaseItsLocks) {
  EXPECT_DEATH(Run([] {
                 PlainLock lock("kept", 10);
                 StartThread("keeper", [&]() NO_THREAD_SAFETY_ANALYSIS { lock.Lock(); })->Join();
               }),
               "\"keeper\" ends while it holds \"kept\"");
}

}  // namespace
}  // namespace platform
