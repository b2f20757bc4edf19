#include "platform/event.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

#include "platform/lock.h"
#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

class EventTest : public EachBase {};
INSTANTIATE_TEST_SUITE_P(Bases, EventTest, AllBases(), NameOfBase);

TEST_P(EventTest, AutoResetIsTakenOnceAndManualStays) {
  Run([] {
    Event once("once");
    Event stays("stays", Event::Mode::ManualReset);
    EXPECT_FALSE(once.TryWait());
    once.Set();
    once.Set();
    EXPECT_TRUE(once.Wait());
    EXPECT_FALSE(once.TryWait());
    stays.Set();
    EXPECT_TRUE(stays.Wait(Milliseconds(0)));
    EXPECT_TRUE(stays.TryWait());
    stays.Reset();
    EXPECT_FALSE(stays.Wait(Milliseconds(0)));
    once.Set();
    once.Reset();
    EXPECT_FALSE(once.TryWait());
  });
}

TEST_P(EventTest, WaitForAnyTakesTheFirstInOrderAndLeavesTheOthers) {
  Run([] {
    Event a("a"), b("b"), c("c");
    c.Set();
    b.Set();
    EXPECT_EQ(1, WaitForAny({&a, &b, &c}, Deadline::Never()));
    EXPECT_EQ(2, WaitForAny({&a, &b, &c}, Deadline::Never()));
    EXPECT_EQ(kTimedOut, WaitForAny({&a, &b, &c}, Deadline::Now()));
    b.Set();
    EXPECT_EQ(0, WaitForAny({&b, &b}, Deadline::Now()));
  });
}

TEST_P(EventTest, WaitEndsAtItsDeadlineAndNotBefore) {
  Run([] {
    Event never("never");
    const Microseconds begin = MonotonicTime();
    EXPECT_FALSE(never.Wait(Milliseconds(3)));
    EXPECT_GE(MonotonicTime() - begin, Milliseconds(3));
    EXPECT_EQ(kTimedOut, WaitForAny({}, Deadline::After(Milliseconds(2))));
    EXPECT_GE(MonotonicTime() - begin, Milliseconds(5));
    EXPECT_FALSE(never.Wait(Milliseconds(-5)));
  });
}

TEST_P(EventTest, MoreEventsThanStandOnTheStack) {
  Run([] {
    std::vector<std::unique_ptr<Event>> owners;
    std::vector<Event*> events;
    for (int i = 0; i < 40; ++i) {
      owners.push_back(std::make_unique<Event>("one of many"));
      events.push_back(owners.back().get());
    }
    Event woken("woken");
    const auto thread = StartThread("waiter", [&] {
      for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(i, WaitForAny(events, Deadline::Never()));
        woken.Set();
      }
    });
    for (Event* event : events) {
      event->Set();
      EXPECT_TRUE(woken.Wait());
    }
    thread->Join();
  });
}

// Several workers wait for the same two events; each piece of work is done exactly once, and the
// manual event sends all of them home.
TEST_P(EventTest, SeveralWaitersShareWorkAndAllSeeTheStop) {
  Run([] {
    constexpr int kPieces = 500;
    Event stop("stop", Event::Mode::ManualReset);
    Event work("work");
    Event done("done");
    std::atomic<int> pieces{0};
    std::vector<std::shared_ptr<Thread>> workers;
    for (int i = 0; i < 4; ++i) {
      workers.push_back(StartThread("worker", [&] {
        while (WaitForAny({&stop, &work}, Deadline::Never()) == 1) {
          ++pieces;
          done.Set();
        }
      }));
    }
    for (int i = 0; i < kPieces; ++i) {
      work.Set();
      ASSERT_TRUE(done.Wait());
    }
    stop.Set();
    for (const auto& worker : workers) worker->Join();
    EXPECT_EQ(kPieces, pieces);
    EXPECT_FALSE(work.TryWait());
  });
}

// Threads pass a token round in a ring, with locks on the way. Short deadlines make some waits end
// by event and time-out at the same moment. Mainly for the thread sanitizer.
TEST_P(EventTest, RingOfThreadsLosesNoWakeUp) {
  Run([] {
    constexpr int kThreads = 4;
    constexpr int kRounds = 300;
    struct Place {
      Event token{"token"};
      PlainLock lock{"place", 10};
      int passes = 0;
    };
    std::array<Place, kThreads> ring;
    std::vector<std::shared_ptr<Thread>> threads;
    for (size_t i = 0; i < kThreads; ++i) {
      threads.push_back(StartThread("ring", [&ring, i] {
        Place& own = ring[i];
        for (int round = 0; round < kRounds;) {
          if (!own.token.Wait(Milliseconds(1))) continue;
          ++round;
          {
            const PlainGuard guard(own.lock);
            ++own.passes;
          }
          ring[(i + 1) % kThreads].token.Set();
        }
      }));
    }
    ring[0].token.Set();
    for (const auto& thread : threads) thread->Join();
    for (Place& place : ring) {
      const PlainGuard guard(place.lock);
      EXPECT_EQ(kRounds, place.passes);
    }
    EXPECT_TRUE(ring[0].token.TryWait());
  });
}

// Under virtual time a moment's sleep is enough to know that the others wait.
constexpr Milliseconds kUntilAllWait{1};

TEST(EventGrants, TwoSetsWakeTwoWaitersAndAResetTakesNothingBack) {
  for (uint64_t seed = 0; seed < 50; ++seed) {
    RunVirtual(seed, [] {
      Event event("event");
      std::atomic<int> woken{0};
      std::vector<std::shared_ptr<Thread>> waiters;
      for (int i = 0; i < 2; ++i) {
        waiters.push_back(StartThread("waiter", [&] { woken += event.Wait(Milliseconds(9)); }));
      }
      Sleep(kUntilAllWait);
      event.Set();
      event.Set();
      event.Reset();
      for (const auto& waiter : waiters) waiter->Join();
      EXPECT_EQ(2, woken);
      EXPECT_FALSE(event.TryWait());
      EXPECT_EQ(kUntilAllWait, MonotonicTime());
    });
  }
}

TEST(EventGrants, AWaiterThatTakesAnotherEventPassesItsGrantOn) {
  int firstTookStop = 0;
  for (uint64_t seed = 0; seed < 50; ++seed) {
    RunVirtual(seed, [&] {
      Event stop("stop", Event::Mode::ManualReset);
      Event work("work");
      int first = kTimedOut;
      bool second = false;
      const auto a = StartThread("first", [&] {
        first = WaitForAny({&stop, &work}, Deadline::Never());
      });
      Sleep(kUntilAllWait);
      const auto b = StartThread("second", [&] { second = work.Wait(Milliseconds(5)); });
      Sleep(kUntilAllWait);
      work.Set();  // granted to the first thread, which may see stop before it
      stop.Set();
      a->Join();
      b->Join();
      EXPECT_EQ(first == 0, second);
      firstTookStop += first == 0;
    });
  }
  EXPECT_GT(firstTookStop, 0);
}

}  // namespace
}  // namespace platform
