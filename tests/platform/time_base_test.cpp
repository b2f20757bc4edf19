#include "platform/time_base.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/event.h"
#include "platform/thread.h"
#include "tests/platform/bases.h"

namespace platform {
namespace {

TEST(TimeBase, RunsOneProgramAtATimeAndGivesItsResult) {
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Virtual;
  for (const TimeBaseKind kind : {TimeBaseKind::Virtual, TimeBaseKind::Real, TimeBaseKind::Paced}) {
    options.kind = kind;
    EXPECT_EQ(42, RunUnderTimeBase(options, [&] {
                EXPECT_EQ(kind, CurrentTimeBase());
                EXPECT_THROW(RunUnderTimeBase({}, [] { return 0; }), std::logic_error);
                return 42;
              }));
    EXPECT_THROW(RunUnderTimeBase(options, []() -> int { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(TimeBaseKind::Real, CurrentTimeBase());
  }
  options.kind = TimeBaseKind::Paced;
  options.pace = 1001;
  EXPECT_THROW(RunUnderTimeBase(options, [] { return 0; }), std::invalid_argument);
}

TEST(TimeBase, PacedTimeRunsFasterThanTheRealOne) {
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Paced;
  options.pace = 1000;
  options.startOfClock = Date(2026, 1, 31, 16, 5, 6);
  RunUnderTimeBase(options, [] {
    EXPECT_EQ(1000, CurrentPace());
    const uint32_t tick = TickCount();
    const Microseconds begin = MonotonicTime();
    Sleep(Milliseconds(3000));
    Event never("never");
    EXPECT_FALSE(never.Wait(Milliseconds(2000)));
    EXPECT_GE(MonotonicTime() - begin, Milliseconds(5000));
    EXPECT_GE(TickCount() - tick, 4999u);
    EXPECT_FALSE(LocalNow() < Date(2026, 1, 31, 16, 5, 11));
    return 0;
  });
  EXPECT_EQ(1, CurrentPace());
}

TEST(TimeBase, AClockThatIsSetMovesTheTimeOfDayAlone) {
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Virtual;
  options.startOfClock = Date(2026, 1, 31, 16, 0, 0);
  for (int i = 0; i < 2; ++i) {  // the first run leaves no state for the second
    RunUnderTimeBase(options, [] {
      MoveTimeOfDay(std::chrono::hours(-24));
      Sleep(Milliseconds(3000));
      EXPECT_EQ(LocalNow(), Date(2026, 1, 30, 16, 0, 3));
      EXPECT_EQ(UtcNow(), LocalNow());
      EXPECT_EQ(MonotonicTime(), Milliseconds(3000));
      return 0;
    });
  }
}

TEST(TimeBase, VirtualClocksShowTheSameTime) {
  TimeBaseOptions options;
  options.kind = TimeBaseKind::Virtual;
  options.startOfClock = Date(2028, 2, 28, 23, 0, 0);
  options.startTick = 0xFFFFFFFFu - 999;
  RunUnderTimeBase(options, [] {
    const uint32_t tick = TickCount();
    Sleep(std::chrono::hours(25));
    EXPECT_EQ(Microseconds(std::chrono::hours(25)), MonotonicTime());
    EXPECT_EQ(25u * 3600 * 1000, TickCount() - tick);
    EXPECT_EQ(25u * 3600 * 1000 - 1000, TickCount());
    EXPECT_EQ(Date(2028, 3, 1), LocalNow());
    EXPECT_EQ(LocalNow(), UtcNow());
    EXPECT_EQ(MonotonicTime(), GetTimeBaseFigures().elapsed);
    return 0;
  });
}

TEST(TimeBase, RealTimeOfDayIsTheSystems) {
  const int64_t before =
      std::chrono::duration_cast<Milliseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count();
  const int64_t now = UtcNow().ToMilliseconds();
  EXPECT_GE(now, before);
  EXPECT_LT(now - before, 3'600'000);
  // Time zones differ by whole quarters of an hour.
  const int64_t offset = LocalNow().ToMilliseconds() - now;
  EXPECT_LE(std::abs(offset), 14 * 3'600'000);
  EXPECT_LT((offset + 24 * 3'600'000 + 60'000) % 900'000, 120'000);
}

TEST(TimeBase, DeadlinesOrderThemselves) {
  RunVirtual(1, [] {
    const Deadline soon = Deadline::After(Milliseconds(5));
    const Deadline never = Deadline::Never();
    EXPECT_EQ(soon.moment(), Deadline::Earliest(never, soon).moment());
    EXPECT_EQ(soon.moment(), Deadline::Earliest(Deadline::After(Milliseconds(6)), soon).moment());
    EXPECT_TRUE(Deadline::Earliest(never, never).IsNever());
    EXPECT_TRUE(Deadline::After(Milliseconds::max()).IsNever());
    EXPECT_FALSE(soon.HasPassed());
    Sleep(Milliseconds(5));
    EXPECT_TRUE(soon.HasPassed());
    EXPECT_FALSE(never.HasPassed());
  });
}

}  // namespace
}  // namespace platform
