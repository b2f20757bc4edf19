#include "platform/lock.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/event.h"
#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

// Made before any base is in force, and used under all of them.
RecursiveLock staticLock("static lock", 20);
Event staticEvent("static event");

class LockTest : public EachBase {};
INSTANTIATE_TEST_SUITE_P(Bases, LockTest, AllBases(), NameOfBase);

TEST_P(LockTest, ExcludesOthersAlsoWhereTheHolderWaits) {
  Run([] {
    constexpr int kRounds = 200;
    PlainLock lock("lock", 10);
    int counter = 0;
    bool inside = false;
    std::vector<std::shared_ptr<Thread>> threads;
    for (int i = 0; i < 3; ++i) {
      threads.push_back(StartThread("counter", [&] {
        for (int round = 0; round < kRounds; ++round) {
          const PlainGuard guard(lock);
          EXPECT_FALSE(inside);
          inside = true;
          const int before = counter;
          if (round % 50 == 0) Sleep(Milliseconds(0));  // a wait under a lock, on purpose
          counter = before + 1;
          inside = false;
        }
      }));
    }
    for (const auto& thread : threads) thread->Join();
    EXPECT_EQ(3 * kRounds, counter);
  });
}

// The thread-safety analysis accepts no lock that is taken twice, not even a recursive one.
TEST_P(LockTest, RecursiveLockIsFreeAfterItsLastRelease) {
  Run([]() NO_THREAD_SAFETY_ANALYSIS {
    RecursiveLock inner("inner", 30);
    Event taken("taken");
    staticLock.Lock();
    {
      const RecursiveGuard higher(inner);
      const RecursiveGuard again(staticLock);  // the same lock again, although of lower rank
    }
    const auto thread = StartThread("other", [&] {
      const RecursiveGuard guard(staticLock);
      taken.Set();
    });
    EXPECT_FALSE(taken.Wait(Milliseconds(2)));
    staticLock.Unlock();
    EXPECT_TRUE(taken.Wait());
    thread->Join();
  });
}

TEST_P(LockTest, ObjectsMadeBeforeTheProgramWork) {
  Run([] {
    const auto thread = StartThread("setter", [] {
      const RecursiveGuard guard(staticLock);
      staticEvent.Set();
    });
    EXPECT_TRUE(staticEvent.Wait());
    thread->Join();
  });
}

TEST_P(LockTest, LocksMayBeReleasedInAnyOrder) {
  Run([] {
    PlainLock low("low", 10), middle("middle", 20), high("high", 30), leaf("leaf", kLeafRank);
    low.Lock();
    middle.Lock();
    high.Lock();
    middle.Unlock();
    low.Unlock();
    leaf.Lock();
    leaf.Unlock();
    high.Unlock();
    low.Lock();
    low.Unlock();
  });
}

using LockDeathTest = LockTest;
INSTANTIATE_TEST_SUITE_P(Bases, LockDeathTest, AllBases(), NameOfBase);

// The real base checks the order in debug builds only; the tests are built like the library.
bool ChecksOrder(const BaseCase& base) {
#ifdef NDEBUG
  return base.options.kind == TimeBaseKind::Virtual;
#else
  return base.options.kind == TimeBaseKind::Virtual || base.options.kind == TimeBaseKind::Real;
#endif
}

TEST_P(LockDeathTest, StopsAtALockAgainstTheOrder) {
  if (!ChecksOrder(GetParam())) GTEST_SKIP() << "this build does not look at the order";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto takeBoth = [](LockRank first, LockRank second) {
    Run([&] {
      PlainLock a("first lock", first);
      PlainLock b("second lock", second);
      const PlainGuard guardA(a);
      const PlainGuard guardB(b);
    });
  };
  takeBoth(10, 11);
  const char* const names = "\"main\" takes \"second lock\".*holds \"first lock\"";
  EXPECT_DEATH(takeBoth(20, 10), names);
  EXPECT_DEATH(takeBoth(10, 10), names);
  EXPECT_DEATH(takeBoth(kLeafRank, kLeafRank), names);
  EXPECT_DEATH(takeBoth(kLeafRank, kLeafRank + 1), names);
}

TEST_P(LockDeathTest, StopsAtAPlainLockTakenTwiceAndAtAForeignRelease) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(Run([]() NO_THREAD_SAFETY_ANALYSIS {
                 PlainLock lock("once", 10);
                 lock.Lock();
                 lock.Lock();
               }),
               "plain lock \"once\" while it holds \"once\"");
  EXPECT_DEATH(Run([]() NO_THREAD_SAFETY_ANALYSIS {
                 PlainLock lock("never taken", 10);
                 lock.Unlock();
               }),
               "releases the lock \"never taken\"");
}

}  // namespace
}  // namespace platform
