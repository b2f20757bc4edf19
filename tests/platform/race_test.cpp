// One task runs at a time, which must not hide races from the thread sanitizer: it must see an
// order only by locks, events, starts and joins. The tests run in every build, but only the thread
// sanitizer's can find a race.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "platform/event.h"
#include "platform/lock.h"
#include "platform/sanitizer.h"
#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

int shared = 0;

// A correct program: each access to shared data is ordered by a lock, an event, a start or a join.
TEST(Race, OrderedTasksAreReportedByNobody) {
  for (uint64_t seed = 0; seed < 10; ++seed) {
    TimeBaseOptions options = DrawTimeBaseOptions(seed);
    options.virtualTime.expectedPoints = 200;
    RunUnderTimeBase(options, [] {
      RecursiveLock lock("shared", 10);
      Event full("full"), empty("empty"), stop("stop", Event::Mode::ManualReset);
      int counter = 0;
      int box = 0;
      const std::vector<int> start = {1};
      std::vector<int> end;
      std::vector<std::shared_ptr<Thread>> threads;
      const auto count = [&] {
        const RecursiveGuard guard(lock);
        ++counter;
      };
      for (int i = 0; i < 3; ++i) {
        threads.push_back(StartThread("counter", [&] {
          EXPECT_EQ(1, start[0]);
          for (int round = 0; round < 10; ++round) {
            const RecursiveGuard guard(lock);
            count();  // takes the lock once more
          }
          stop.Wait();
          EXPECT_EQ(7, end[0]);  // filled before the event
        }));
      }
      threads.push_back(StartThread("taker", [&] {
        for (int round = 0; round < 10; ++round) {
          full.Wait(Milliseconds(100'000));
          EXPECT_EQ(round, box);
          empty.Set();
        }
      }));
      for (int round = 0; round < 10; ++round) {
        box = round;
        full.Set();
        WaitForAny({&stop, &empty}, Deadline::Never());
      }
      end.push_back(7);
      stop.Set();
      for (const auto& thread : threads) thread->Join();
      EXPECT_EQ(30, counter);
      shared = 0;  // after the joins

      const auto last = StartThread("last", [] { ++shared; });
      while (!last->HasEnded()) Sleep(Milliseconds(1));
      EXPECT_EQ(1, shared);
      return 0;
    });
  }
}

class RaceDeathTest : public testing::TestWithParam<TaskSwitch> {
 protected:
  void SetUp() override {
    if (!detail::kFindsRaces) GTEST_SKIP() << "the build has no thread sanitizer";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
  // Only a race ends the process with the sanitizer's exit code.
  static void ExpectOneRace(const std::function<void()>& program) {
    constexpr int kSanitizersExitCode = 66;
    EXPECT_EXIT(
        {
          RunUnderTimeBase(VirtualCase(GetParam()).options, [&] {
            program();
            return 0;
          });
          std::exit(0);
        },
        testing::ExitedWithCode(kSanitizersExitCode), "data race.*shared.*reported 1 warnings");
  }
};

[[gnu::noinline]] void TouchShared() { ++shared; }

TEST_P(RaceDeathTest, TwoTasksWithoutALock) {
  ExpectOneRace([] {
    const auto other = StartThread("other", [] { TouchShared(); });
    TouchShared();
    other->Join();
  });
}

// A time-out is not an order, although the thread that changed the variable has long gone to sleep.
TEST_P(RaceDeathTest, ATimeOutIsNoOrder) {
  ExpectOneRace([] {
    const auto other = StartThread("other", [] {
      TouchShared();
      Sleep(Milliseconds(100));
    });
    Sleep(Milliseconds(50));
    TouchShared();
    other->Join();
  });
}

// Different locks do not order their holders.
TEST_P(RaceDeathTest, AnotherLockIsNoOrder) {
  ExpectOneRace([] {
    PlainLock first("first", 10);
    PlainLock second("second", 20);
    const auto other = StartThread("other", [&] {
      const PlainGuard guard(first);
      TouchShared();
    });
    Sleep(Milliseconds(1));
    {
      const PlainGuard guard(second);
      TouchShared();
    }
    other->Join();
  });
}

// A task that reuses another's stack is not ordered after it either.
TEST_P(RaceDeathTest, TwoTasksOneAfterTheOther) {
  ExpectOneRace([] {
    const auto first = StartThread("first", [] { TouchShared(); });
    Sleep(Milliseconds(1));
    const auto second = StartThread("second", [] { TouchShared(); });
    first->Join();
    second->Join();
  });
}

// The lock of a test's own records must not hide the races that the test looks for.
TEST_P(RaceDeathTest, AnUnseenLockIsNoOrder) {
  ExpectOneRace([] {
    PlainLock lock("unseen", 10);
    const auto stepAside = [&lock] {
      const detail::UnseenScope scope;
      const PlainGuard guard(lock);
    };
    const auto other = StartThread("other", [&] {
      TouchShared();
      stepAside();
    });
    Sleep(Milliseconds(1));
    stepAside();
    TouchShared();
    other->Join();
  });
}

INSTANTIATE_TEST_SUITE_P(Switches, RaceDeathTest,
                         testing::Values(TaskSwitch::Fibers, TaskSwitch::Threads), NameOfSwitch);

}  // namespace
}  // namespace platform
