#include "platform/interrupt.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <stdexcept>

#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

class InterruptTest : public EachBase {};
INSTANTIATE_TEST_SUITE_P(Bases, InterruptTest, AllBases(), NameOfBase);

TEST_P(InterruptTest, SignalsWakeTheOneWhoWaits) {
  Run([] {
    InterruptWatch watch;
    EXPECT_THROW(InterruptWatch(), std::logic_error);
    const auto sender = StartThread("sender", [] { raise(SIGINT); });
    EXPECT_TRUE(watch.event().Wait(Milliseconds(60'000)));
    sender->Join();
    EXPECT_EQ(1, watch.count());
    raise(SIGTERM);
    EXPECT_TRUE(watch.event().Wait(Milliseconds(60'000)));
    EXPECT_EQ(2, watch.count());
    EXPECT_FALSE(watch.event().TryWait());
  });
}

// A program that only sleeps, so that virtual time jumps, sees a signal too.
TEST(Interrupt, IsSeenWhileTimeJumps) {
  RunVirtual(1, [] {
    InterruptWatch watch;
    Event stop("stop");
    int ticks = 0;
    const auto ticker = StartThread("ticker", [&] {
      while (!stop.Wait(Milliseconds(100))) {
        if (++ticks == 50) raise(SIGINT);
      }
    });
    EXPECT_TRUE(watch.event().Wait());
    EXPECT_LE(MonotonicTime(), Milliseconds(5100));
    stop.Set();
    ticker->Join();
  });
}

TEST(InterruptDeathTest, WithoutAWatchSignalsEndTheProcessAsBefore) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        { const InterruptWatch watch; }
        raise(SIGTERM);
      },
      testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace platform
