// Homing, moves and their durations, and what an abort leaves behind.
#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

constexpr int kLocate = 4;
constexpr int kLower = 5;
constexpr int kRaise = 6;

bool AtRest(const Heard& status) { return status.operation() == 0; }

// The operations of a move in order with their durations in ms, from a poll every five
// milliseconds, which is a round of the drive.
std::vector<std::pair<int, int64_t>> Watch(SimSet& set) {
  std::vector<std::pair<int, int64_t>> seen;
  int64_t since = set.line.Now();
  for (int present = set.Status().operation(); present != 0;) {
    set.WaitMs(5);
    const int next = set.Status().operation();
    if (next == present) continue;
    seen.emplace_back(present, set.line.Now() - since);
    since = set.line.Now();
    present = next;
  }
  return seen;
}
using Moves = std::vector<std::pair<int, int64_t>>;

TEST(SimMotion, HomingOnceForLife) {
  UnderVirtualTime([] {
    SimSet set;
    EXPECT_EQ(set.Status().machineStatus(), 6);
    set.Home();
    EXPECT_EQ(set.Status().machineStatus(), 0);
    // Home is where the axes were: their positions are 0 now, and no move is needed.
    EXPECT_EQ(set.Ask("CMM080000").switches(), 0x08);
    EXPECT_EQ(set.Status().switches(), 0x00);
    EXPECT_EQ(set.Ask("CMM080064").switches(), 0x08);
    EXPECT_EQ(set.Ask("CHO").error(), 0x84);
    EXPECT_EQ(set.TimeUntil(AtRest), 1000);
    // A second homing does not move the origin.
    set.Home();
    set.Ask("CMM080000");
    EXPECT_EQ(set.TimeUntil(AtRest), 1000);
  });
}

TEST(SimMotion, JogsBeforeHomingCountFromTheFarEnds) {
  UnderVirtualTime([] {
    SimSet set;
    set.Ask("CMM0803AC");  // tube to 940, from 942: two steps up
    EXPECT_EQ(Watch(set), (Moves{{kRaise, 20}}));
    set.Ask("CMM0803AE");
    EXPECT_EQ(Watch(set), (Moves{{kLower, 20}}));
    set.Ask("CMM10026B");  // table to 619; a lowered tube stays down before the axes have a home
    EXPECT_EQ(Watch(set), (Moves{{kLocate, 40}}));
    set.Ask("CMM200654");  // trolley where it is: a move of no steps
    EXPECT_EQ(Watch(set), (Moves{{kLocate, 5}}));
    EXPECT_EQ(set.Status().switches(), 0);
  });
}

TEST(SimMotion, TubeComesUpBeforeAnythingPassesUnderIt) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    EXPECT_EQ(set.Ask("CMM0803AE").error(), 0);
    EXPECT_EQ(set.Ask("CMM100010").error(), 0x84);
    EXPECT_EQ(Watch(set), (Moves{{kLower, 9420}}));
    set.Ask("CMM10000A");
    EXPECT_EQ(set.Status().switches(), 0x08);
    EXPECT_EQ(Watch(set), (Moves{{kRaise, 9420}, {kLocate, 100}}));
    EXPECT_EQ(set.Status().switches(), 0x00);
  });
}

TEST(SimMotion, MoveToAPosition) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CMM0803AE");
    set.TimeUntil(AtRest);
    const Heard reply = set.Ask("CMP09");  // second row, fourth place
    EXPECT_EQ(reply.tag(), "MP");
    EXPECT_EQ(reply.switches(), 0x08);
    EXPECT_EQ(set.Ask("CMP00").error(), 0x40);
    EXPECT_EQ(Watch(set), (Moves{{kRaise, 9420}, {kLocate, 16200 + 1230}}));
    EXPECT_EQ(set.Ask("CMP1D").error(), 0);  // last row, fourth place: only the table
    EXPECT_EQ(Watch(set), (Moves{{kLocate, 4920}}));
    EXPECT_EQ(set.Ask("CMP00").error(), 0);
    EXPECT_EQ(Watch(set), (Moves{{kLocate, 16200 + 6150}}));
    EXPECT_EQ(set.Ask("CMP00").switches(), 0x08);  // there already
    EXPECT_EQ(set.Status().switches(), 0);
  });
}

TEST(SimMotion, AbortEndsWithTheStepUnderWay) {
  for (const int64_t ms : {0, 1, 4, 5, 9, 10, 14, 3333, 9419}) {
    UnderVirtualTime([ms] {
      SimSet set;
      set.Home();
      set.Ask("CMM0803AE");
      set.WaitMs(ms);
      const Heard reply = set.Ask("CAB");
      EXPECT_EQ(reply.tag(), "AB");
      EXPECT_EQ(reply.switches(), 0);
      EXPECT_EQ(set.Status().operation(), 0);
      set.WaitMs(10);
      set.Ask("CMM080000");
      // The way back shows the number of steps: ten milliseconds each.
      EXPECT_EQ(set.TimeUntil(AtRest), (ms / 10 + 1) * 10) << ms;
    });
  }
}

TEST(SimMotion, AMoveRightBehindAnAbortWaitsForTheLastStep) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CMM0803AE");
    set.WaitMs(1002);
    set.Ask("CAB");
    EXPECT_EQ(set.Ask("CMM080000").error(), 0);
    set.WaitMs(900);  // without a poll, which would wake the controller
    EXPECT_EQ(set.TimeUntil(AtRest, 1), 8 + 1010 - 900);
  });
}

TEST(SimMotion, AnAbortedMoveDoesNotComeBackWithTheNext) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CMM08000A");
    set.TimeUntil(AtRest);
    set.Ask("CMM200100");  // the tube first, then the trolley
    set.WaitMs(45);
    set.Ask("CAB");
    set.WaitMs(10);
    set.Ask("CMM080000");
    EXPECT_EQ(Watch(set), (Moves{{kRaise, 50}}));
  });
}

TEST(SimMotion, AbortBetweenTwoMovesCountsNoStepTwice) {
  // At the millisecond at which the trolley arrives and the table starts.
  for (uint64_t seed = 1; seed <= 20; ++seed) {
    UnderVirtualTime(
        [] {
          SimSet set;
          set.Home();
          set.Ask("CMP06");
          set.WaitMs(4050);
          set.Ask("CAB");
          set.WaitMs(10);
          EXPECT_EQ(set.Ask("CMP06").error(), 0);
          const int64_t rest = set.TimeUntil(AtRest);
          EXPECT_TRUE(rest == 1230 || rest == 1220) << rest;
        },
        seed);
  }
}

}  // namespace
}  // namespace rvx::simulator
