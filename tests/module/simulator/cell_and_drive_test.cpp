// Physics: the cell's temperature and the stepper drive, against plain step-by-step references.
#include <rapidcheck.h>

#include "module/simulator/cell_temperature.h"
#include "module/simulator/pulse_train.h"
#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

int ReferenceCell(int a, int g, int64_t steps) {
  for (; steps > 0; --steps) {
    if (a < g) {
      if (a >= 65521) {
        a = 65520;
      } else if (g - a > 80) {
        a += 80;
      } else {
        a += 2;
      }
    } else if (a < 16) {
      a = 16;
    } else if (a - g > 80) {
      a -= 80;
    } else if (a > g) {
      a -= 2;
    }
  }
  return a;
}

TEST(SimCellModel, ManyStepsAtOnceAreManySingleSteps) {
  EXPECT_TRUE(rc::check([](uint16_t actual, uint16_t target) {
    const int64_t steps = *rc::gen::inRange<int64_t>(0, 2000);
    RC_ASSERT(AdvanceCell(actual, target, steps) == ReferenceCell(actual, target, steps));
  }));
  for (const int target : {0, 1, 15, 16, 17, 57855, 57857, 65519, 65521, 65534, 65535}) {
    for (const int steps : {1, 2, 999, 1000}) {
      EXPECT_EQ(AdvanceCell(0xE200, static_cast<uint16_t>(target), steps),
                ReferenceCell(0xE200, target, steps))
          << target << " in " << steps;
    }
  }
}

TEST(SimCellModel, LateReadersSeeWhatEarlyOnesSaw) {
  EXPECT_TRUE(rc::check([] {
    const auto script = *rc::gen::container<std::vector<std::pair<int, uint16_t>>>(
        rc::gen::pair(rc::gen::inRange(0, 40000), rc::gen::arbitrary<uint16_t>()));
    bool same = false;
    UnderVirtualTime([&] {
      platform::Event ownStop("own stop");
      SimBoard read(ownStop, nullptr);    // read every 100 ms
      SimBoard unread(ownStop, nullptr);  // read once, at the end
      for (const auto& [ms, target] : script) {
        for (int at = 0; at < ms; at += 100) {
          platform::Sleep(platform::Milliseconds(std::min(100, ms - at)));
          read.AdvanceClock(false);
          read.Cell();
        }
        read.AdvanceClock(false);
        unread.AdvanceClock(false);
        read.SetTarget(target);
        unread.SetTarget(target);
      }
      same = read.Cell().actual == unread.Cell().actual;
    });
    RC_ASSERT(same);
  }));
}

TEST(SimCellModel, SpeedFarAndNear) {
  UnderVirtualTime([] {
    SimSet set;
    set.Ask("CTC00D000");  // 57856 is 4608 counts above
    const int before = set.Status().actual();
    set.WaitMs(10000);
    EXPECT_EQ(before - set.Status().actual(), 1600);
    set.WaitMs(20000);
    EXPECT_LT(set.Status().actual(), 0xD000 + 80);
    const int near = set.Status().actual();
    set.WaitMs(2000);
    EXPECT_EQ(near - set.Status().actual(), 8);
    set.WaitMs(60000);
    EXPECT_EQ(set.Status().actual(), 0xD000);
    EXPECT_EQ(set.Status().target(), 0xFFFF);  // control is off, but the cell still follows
  });
}

TEST(SimCellModel, PassesTenDegreesOnItsWayToRoomTemperature) {
  // Counts by the conversion with a new instrument's probe: 10 degrees C is kTen.
  constexpr int kTen = 62108;
  constexpr int kTwentyFive = 64778;
  UnderVirtualTime([] {
    SimSet set;
    set.Ask("CTC00" + HexWord(kTwentyFive));
    const int64_t ms = set.TimeUntil([](const Heard& status) { return status.actual() >= kTen; });
    EXPECT_GT(ms, 26000);
    EXPECT_LE(ms, 27000);
  });
}

// A reference for the drive, which advances round by round as the hardware does.
struct ReferenceTrain {
  int steps = 0;
  bool pulse = false;
  bool busy = false;
  int64_t made = 0;
  void Round() {
    if (!busy) return;
    if (steps != 0) {
      if (pulse) {
        pulse = false;
        --steps;
        ++made;
      } else {
        pulse = true;
      }
    }
    if (steps == 0) busy = false;
  }
};

TEST(SimDrive, ServedLateAndCutAnywhere) {
  EXPECT_TRUE(rc::check([] {
    const auto steps = *rc::gen::inRange<uint16_t>(1, 60);
    const auto chunks = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 30));
    const auto cutAt = *rc::gen::inRange<size_t>(0, 12);
    PulseTrain train;
    ReferenceTrain reference{steps, false, true};
    RC_ASSERT(train.Start(SimAxis::Tube, true, steps));
    RC_ASSERT(!train.Start(SimAxis::Table, true, 1));
    int64_t expected = steps;  // steps that the firmware will count
    for (size_t i = 0; i < chunks.size(); ++i) {
      if (i == cutAt && reference.busy) {
        const int remaining = train.Cut();
        RC_ASSERT(remaining == reference.steps - 1);
        reference.steps = 1;
        expected = steps - remaining;
      }
      train.Serve(chunks[i]);
      for (int round = 0; round < chunks[i]; ++round) reference.Round();
      RC_ASSERT(train.busy() == reference.busy);
    }
    const int64_t rest = train.RoundsToEnd();
    for (int64_t round = 0; round < rest; ++round) {
      RC_ASSERT(reference.busy);
      reference.Round();
    }
    RC_ASSERT(!reference.busy);
    RC_ASSERT(reference.made == expected);
  }));
}

TEST(SimDrive, AMoveOfNoStepsTakesARoundAndCannotBeCut) {
  PulseTrain train;
  EXPECT_TRUE(train.Start(SimAxis::Tube, false, 0));
  EXPECT_EQ(train.Cut(), 0);
  EXPECT_EQ(train.RoundsToEnd(), 1);
  train.Serve(1);
  EXPECT_FALSE(train.busy());
}

}  // namespace
}  // namespace rvx::simulator
