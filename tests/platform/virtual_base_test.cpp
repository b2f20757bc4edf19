#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "platform/time_base.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

struct Trace {
  std::vector<std::string> order;
  TimeBaseFigures figures;
};

// Threads that meet in locks, events, sleeps and starts of other threads, often at the same moment.
Trace RunBusyProgram(uint64_t seed, TaskSwitch taskSwitch) {
  Trace trace;
  RunUnderTimeBase(VirtualCase(taskSwitch, seed).options, [&] {
    PlainLock lock("order", 10);
    Event stop("stop", Event::Mode::ManualReset);
    Event bell("bell");
    const auto note = [&](const std::string& what) {
      const PlainGuard guard(lock);
      trace.order.push_back(CurrentThreadName() + what);
    };
    std::vector<std::shared_ptr<Thread>> threads;
    for (int i = 0; i < 5; ++i) {
      threads.push_back(StartThread("t" + std::to_string(i), [&, i] {
        for (int round = 0; round < 10; ++round) {
          if (round % 3 == i % 3) bell.Set();
          const int event =
              WaitForAny({&stop, &bell}, Deadline::After(Milliseconds(1 + round % 2)));
          note(event == 0 ? " stop" : event == 1 ? " bell" : " late");
          if (round == 5) StartThread("child", [&] { note(""); })->Join();
        }
      }));
    }
    Sleep(Milliseconds(8));
    stop.Set();
    for (const auto& thread : threads) thread->Join();
    trace.figures = GetTimeBaseFigures();
    return 0;
  });
  return trace;
}

TEST(VirtualBase, TheSeedDecidesTheRunAndNothingElse) {
  std::set<uint64_t> hashes;
  std::set<std::vector<std::string>> orders;
  for (uint64_t seed = 0; seed < 30; ++seed) {
    const Trace once = RunBusyProgram(seed, TaskSwitch::Fibers);
    for (const TaskSwitch taskSwitch : {TaskSwitch::Fibers, TaskSwitch::Threads}) {
      const Trace again = RunBusyProgram(seed, taskSwitch);
      EXPECT_EQ(once.order, again.order);
      EXPECT_EQ(once.figures.traceHash, again.figures.traceHash);
      EXPECT_EQ(once.figures.steps, again.figures.steps);
      EXPECT_EQ(once.figures.switches, again.figures.switches);
      EXPECT_EQ(once.figures.elapsed, again.figures.elapsed);
    }
    hashes.insert(once.figures.traceHash);
    orders.insert(once.order);
  }
  EXPECT_EQ(30u, hashes.size());
  EXPECT_GE(orders.size(), 28u);
}

// The same on every machine and with every compiler, so that a seed from one finds the same run on
// another. A change of the scheduler changes the number; write the new one down then.
TEST(VirtualBase, TheTraceIsTheSameEverywhere) {
  EXPECT_EQ(8222315126755785446u, RunBusyProgram(1, TaskSwitch::Fibers).figures.traceHash);
}

TEST(VirtualBase, TimeStandsStillWhileSomebodyIsReady) {
  RunVirtual(3, [] {
    std::atomic<bool> woken{false};
    const auto sleeper = StartThread("sleeper", [&] {
      Sleep(Milliseconds(1));
      woken = true;
    });
    for (int i = 0; i < 1000; ++i) {
      Sleep(Milliseconds(0));
      EXPECT_FALSE(woken);
      EXPECT_EQ(0, MonotonicTime().count());
    }
    sleeper->Join();
    EXPECT_EQ(Milliseconds(1), MonotonicTime());
  });
}

TEST(VirtualBase, SleepersWakeAtTheirMomentsInOrder) {
  for (uint64_t seed = 0; seed < 20; ++seed) {
    RunVirtual(seed, [] {
      PlainLock lock("woken", 10);
      std::vector<int> woken;
      std::vector<std::shared_ptr<Thread>> threads;
      Event cancelled("cancelled", Event::Mode::ManualReset);
      for (int i = 0; i < 60; ++i) {
        const int duration = (i * 37) % 61 + 1;
        threads.push_back(StartThread("sleeper", [&, i, duration] {
          // Every third waiter leaves the queue of deadlines early, from any place in it.
          if (i % 3 == 0) {
            EXPECT_TRUE(cancelled.Wait(Milliseconds(1000 + duration)));
            return;
          }
          Sleep(Milliseconds(duration));
          EXPECT_EQ(Milliseconds(duration), MonotonicTime());
          const PlainGuard guard(lock);
          woken.push_back(duration);
        }));
      }
      Sleep(Milliseconds(10));
      cancelled.Set();
      for (const auto& thread : threads) thread->Join();
      EXPECT_EQ(40u, woken.size());
      EXPECT_TRUE(std::is_sorted(woken.begin(), woken.end()));
      EXPECT_EQ(Milliseconds(61), MonotonicTime());
    });
  }
}

// The program waits nowhere else, so the race shows only if the scheduler switches threads at
// locks.
TEST(VirtualBase, OthersGetInBetweenTwoLocks) {
  int lost = 0;
  for (uint64_t seed = 0; seed < 100; ++seed) {
    RunVirtual(seed, [&] {
      PlainLock lock("counter", 10);
      int counter = 0;
      const auto increment = [&] {
        for (int i = 0; i < 5; ++i) {
          int seen = 0;
          {
            const PlainGuard guard(lock);
            seen = counter;
          }
          const PlainGuard guard(lock);
          counter = seen + 1;
        }
      };
      const auto other = StartThread("other", increment);
      increment();
      other->Join();
      lost += counter < 10;
    });
  }
  EXPECT_GT(lost, 5);
  EXPECT_LT(lost, 100);
}

class SwitchTest : public testing::TestWithParam<TaskSwitch> {};
INSTANTIATE_TEST_SUITE_P(Both, SwitchTest, testing::Values(TaskSwitch::Fibers, TaskSwitch::Threads),
                         NameOfSwitch);

// Each thread handles its own exception, while others throw theirs between its throw and its
// rethrow.
TEST_P(SwitchTest, ExceptionsBelongToTheirThread) {
  RunUnderTimeBase(VirtualCase(GetParam()).options, [] {
    std::vector<std::shared_ptr<Thread>> threads;
    for (int i = 0; i < 4; ++i) {
      threads.push_back(StartThread("thrower", [i] {
        struct Sleeper {
          int own;
          ~Sleeper() {  // a switch during the stack's unwinding
            Sleep(Milliseconds(1 + own));
            EXPECT_EQ(1, std::uncaught_exceptions());
          }
        };
        for (int round = 0; round < 5; ++round) {
          const std::string text = std::to_string(i) + "/" + std::to_string(round);
          try {
            try {
              const Sleeper sleeper{i};
              throw std::runtime_error(text);
            } catch (const std::runtime_error&) {
              Sleep(Milliseconds(3 - i % 3));
              EXPECT_EQ(0, std::uncaught_exceptions());
              throw;
            }
          } catch (const std::runtime_error& error) {
            EXPECT_EQ(text, error.what());
          }
          EXPECT_EQ(nullptr, std::current_exception());
        }
      }));
    }
    for (const auto& thread : threads) thread->Join();
    return 0;
  });
}

// Only tasks on threads have thread-local objects of their own; fibers share those of their thread.
TEST(VirtualBase, ThreadLocalsOfAThreadEndBeforeItsJoin) {
  RunUnderTimeBase(VirtualCase(TaskSwitch::Threads).options, [] {
    // Atomic, since for the thread sanitizer the code after a task's end is not ordered before its
    // join.
    static std::atomic<bool> destroyed;
    destroyed = false;
    struct Local {
      bool used = false;
      ~Local() { destroyed = true; }
    };
    StartThread("owner", [] {
      static thread_local Local local;
      local.used = true;
    })->Join();
    EXPECT_TRUE(destroyed);
    return 0;
  });
}

size_t CountMappings() {
  std::ifstream maps("/proc/self/maps");
  size_t lines = 0;
  for (std::string line; std::getline(maps, line);) ++lines;
  return lines;
}

TEST_P(SwitchTest, ThousandsOfThreadsTakeNoMoreMemoryThanAFew) {
  const auto startMany = [](int programs) {
    for (int program = 0; program < programs; ++program) {
      RunUnderTimeBase(VirtualCase(GetParam()).options, [] {
        for (int batch = 0; batch < 20; ++batch) {
          std::vector<std::shared_ptr<Thread>> threads;
          for (int i = 0; i < 10; ++i) {
            threads.push_back(StartThread("short", [] { Sleep(Milliseconds(1)); }));
          }
          for (const auto& thread : threads) thread->Join();
        }
        return 0;
      });
    }
  };
  startMany(1);
  const size_t before = CountMappings();
  startMany(20);  // 4000 threads; each stack that is not freed would leave two mappings
  EXPECT_LT(CountMappings(), before + 100);
}

TEST(VirtualBase, IsRefusedBesideAThreadThatItDoesNotGuide) {
  Event end("test: end");
  const auto real = StartThread("real", [&end] { end.Wait(); });
  EXPECT_THROW(RunVirtual(1, [] {}), std::logic_error);
  end.Set();
  real->Join();
}

TEST(VirtualBase, RunsFromAnyThreadOfTheSystem) {
  RunVirtual(1, [] { StartThread("first", [] { Sleep(Milliseconds(1)); })->Join(); });
  // The stacks of the first program are reused on another thread of the system.
  std::thread other([] {
    RunVirtual(1, [] {
      EXPECT_EQ("main", CurrentThreadName());
      StartThread("second", [] {
        try {
          throw std::runtime_error("caught");
        } catch (const std::runtime_error&) {
          Sleep(Milliseconds(1));
        }
      })->Join();
    });
  });
  other.join();
}

}  // namespace
}  // namespace platform
