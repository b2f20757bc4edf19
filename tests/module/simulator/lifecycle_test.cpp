// Start and end of the simulator's threads, and what it costs while it waits.
#include <system_error>

#include "platform/thread.h"
#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

TEST(SimLifecycle, EndsAtOnceInEveryOrder) {
  UnderVirtualTime([] {
    { SimSet set; }
    {
      SimSet set;
      set.Home();
      set.Ask("CMP1D");  // mid-move
      set.stop.RequestStop();
      set.stop.RequestStop();
    }
    {
      SimSet set;
      set.Ask("CAR01");
    }
    EXPECT_EQ(platform::GetTimeBaseFigures().elapsed.count(), 0);
  });
}

TEST(SimLifecycle, NoFrameBehindAStop) {
  for (uint64_t seed = 1; seed <= 20; ++seed) {
    UnderVirtualTime(
        [] {
          SimSet set;
          set.Ask("CAR01");
          set.WaitUntil(500);  // a frame is due now
          set.Send("QST");
          set.stop.RequestStop();
          set.line.Rest();
          set.WaitMs(2000);
          EXPECT_TRUE(set.line.Rest().empty());
        },
        seed);
  }
}

TEST(SimLifecycle, SwitchedOffThereIsNobody) {
  UnderVirtualTime([] {
    SimLine line;
    SimStopHandle stop(line);
    SimulatedInstrument instrument(stop, false);
    instrument.Feed("/0QST\r");
    EXPECT_EQ(line.Next().text, "");
  });
}

TEST(SimLifecycle, AThreadThatCannotStartLeavesNothingBehind) {
  UnderVirtualTime([] {
    SimLine line;
    SimStopHandle stop(line);
    platform::FailThreadStarts(1);
    EXPECT_THROW(SimulatedInstrument{stop}, std::system_error);
  });
}

TEST(SimLifecycle, ConversationUnderTheRealClock) {
  SimSet set;
  set.Home();
  EXPECT_EQ(set.Ask("CMM080001").error(), 0);
  while (set.Status().operation() != 0) set.WaitMs(1);
  EXPECT_EQ(set.Status().switches(), 0);
}

// Switches from task to task while `body` runs, for each second of it.
double SwitchesPerSecond(const std::function<void()>& body) {
  const platform::TimeBaseFigures before = platform::GetTimeBaseFigures();
  body();
  const platform::TimeBaseFigures after = platform::GetTimeBaseFigures();
  const double seconds = static_cast<double>((after.elapsed - before.elapsed).count()) / 1e6;
  return static_cast<double>(after.switches - before.switches) / seconds;
}

TEST(SimLifecycle, IdleItSleeps) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CTC00F000");  // the cell changes while no status is requested
    EXPECT_LT(SwitchesPerSecond([&] { set.WaitMs(3600000); }), 0.01);
    EXPECT_EQ(set.Status().intCount(), 7200);
    EXPECT_EQ(set.Status().actual(), 0xF000);
  });
}

TEST(SimLifecycle, InARunItWakesForTicksAndMoves) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CST010A02010178F0AC00E20000000010");
    EXPECT_LT(SwitchesPerSecond([&] { set.WaitMs(600000); }), 5.0);
    EXPECT_GT(set.line.Rest().size(), 600u);
  });
}

}  // namespace
}  // namespace rvx::simulator
