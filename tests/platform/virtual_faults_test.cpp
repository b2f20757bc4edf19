// The faults that the virtual base finds, and its reports of them.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <optional>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/lost_signal.h"
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

[[gnu::noinline]] void WaitInVain(Event& event) {
  event.Wait();
  EXPECT_TRUE(event.TryWait());  // keeps the call from being the last one
}

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

// A report shows the call stack of each thread, whichever thread ran last.
TEST_P(VirtualFaultDeathTest, AReportSaysWhereEachThreadStands) {
  EXPECT_EXIT(Run([] {
                Event never("never");
                const auto waiter = StartThread("waiter", [&] { WaitInVain(never); });
                Sleep(Milliseconds(1));
                StartThread("last", [] {});
                Sleep(Milliseconds(1));
                waiter->Join();
              }),
              ExitedWithCode(70),
              "\"main\": waits for the end.*\n.*    in .*virtual_faults_test.*"
              "\"waiter\": waits for event \"never\"\n    in .*WaitInVain");
}

// With the rank order, lock waits cannot form a circle, so a long wait for a lock is not a
// deadlock.
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

// A third thread keeps running, so that the deadlock is not found by everything waiting.
TEST_P(VirtualFaultDeathTest, ACircleOfWaitsIsFoundAtOnce) {
  EXPECT_EXIT(Run([] {
                PlainLock lock("ledger", 10);
                Event never("never");
                StartThread("ticker", [&] {
                  for (;;) never.Wait(Milliseconds(100));
                });
                const auto clerk = StartThread("clerk", [&] {
                  Sleep(Milliseconds(2));
                  const PlainGuard guard(lock);
                });
                const PlainGuard guard(lock);
                clerk->Join();
              }),
              ExitedWithCode(70),
              "deadlock: \"clerk\" waits for \"main\", which waits for \"clerk\"\n"
              ".*virtual time 0\\.002000 s");
}

TEST_P(VirtualFaultDeathTest, AHangIsFoundFromOutside) {
  TimeBaseOptions options = VirtualCase(GetParam(), 4711).options;
  options.virtualTime.hangAfter = Milliseconds(50);
  std::atomic<bool> forever{true};
  EXPECT_EXIT(RunUnderTimeBase(options,
                               [&] {
                                 StartThread("spinner", [&] {
                                   while (forever) {
                                   }
                                 })->Join();
                                 return 0;
                               }),
              ExitedWithCode(70),
              "hang: no step for 0\\.05 s of real time\n.*seed 4711.*"
              "\"main\": waits for the end of thread \"spinner\".*\"spinner\": running");
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

// A harness adds the command that repeats the run, and its own history of the run.
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
              ".*thread 0 \"main\": running\n(    in .*\n)*  the last event\n$");
}

class LostSignalDeathTest : public VirtualFaultDeathTest {
 protected:
  // A thread fills a box and announces it `late` after the taker's time-out, or never.
  static void Run(std::optional<Milliseconds> late) {
    TimeBaseOptions options = VirtualCase(GetParam(), 4711).options;
    options.virtualTime.lostSignals = true;
    RunUnderTimeBase(options, [&] {
      std::atomic<bool> full{false};
      Event filled("filled");
      const auto filler = StartThread("filler", [&] {
        Sleep(Milliseconds(1900));
        full = true;
        Sleep(Milliseconds(100) + late.value_or(Milliseconds(0)));
        if (late) filled.Set();
      });
      EXPECT_FALSE(filled.Wait(Milliseconds(2000)));
      ExpectNoLostSignal(filled, [&] { return full.load(); });
      Sleep(Milliseconds(300'000));
      filler->Join();
      return 0;
    });
  }
};
INSTANTIATE_TEST_SUITE_P(Both, LostSignalDeathTest,
                         testing::Values(TaskSwitch::Fibers, TaskSwitch::Threads), NameOfSwitch);

TEST_P(LostSignalDeathTest, ASignalThatNeverComesIsReported) {
  EXPECT_EXIT(Run(std::nullopt), ExitedWithCode(70),
              "lost signal: the wait of \"main\" for event \"filled\" timed out");
}

TEST_P(LostSignalDeathTest, OneThatIsOnlyLateIsNot) { Run(Milliseconds(30'000)); }

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
