// The sequences as the module sees them: one status frame a tick, from the start to idle.
#include <map>

#include "tests/module/simulator/sim_fixture.h"

namespace rvx::simulator {
namespace {

constexpr int kLocate = 4;
constexpr int kLower = 5;
constexpr int kRaise = 6;
constexpr int kWarm = 7;
constexpr int kBurst = 8;
constexpr int kPause = 9;
constexpr int kPurge = 10;
constexpr int kCooldown = 11;
constexpr int kEquilibration = 12;
constexpr int kRunTest = 13;

// A value with the first and the last tick that showed it.
struct Span {
  int value, first, last;
  bool operator==(const Span&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Span& span) {
    return out << span.value << " at " << span.first << " to " << span.last;
  }
};

template <class Field>
std::vector<Span> Spans(const std::vector<Heard>& frames, Field field) {
  std::vector<Span> spans;
  for (const Heard& frame : frames) {
    const int value = field(frame);
    if (spans.empty() || spans.back().value != value) {
      spans.push_back({value, frame.intCount(), frame.intCount()});
    }
    spans.back().last = frame.intCount();
  }
  return spans;
}

std::vector<Span> Operations(const std::vector<Heard>& frames) {
  return Spans(frames, [](const Heard& frame) { return frame.operation(); });
}

// The payload of a test, in seconds and counts.
struct TestPayload {
  int position = 8, injection = 6, burst = 2, pause = 1, purge = 1, cooldown = 5, rotor = 10;
  int testCounts = 57900, injectionCounts = 57856 + 160, undershoot = 40, tolerance = 10;
  std::string Test() const {
    return "CST" + HexByte(position) + HexByte(injection) + HexByte(burst) + HexByte(pause) +
           HexByte(purge) + HexByte(cooldown) + HexByte(rotor) + HexWord(testCounts) +
           HexWord(injectionCounts) + HexWord(undershoot) + HexWord(tolerance);
  }
  std::string MotorCurrent() const {
    return "CMC" + HexByte(position) + HexWord(testCounts) + HexWord(injectionCounts) +
           HexByte(injection) + HexByte(burst) + HexByte(pause) + HexByte(purge) +
           HexByte(cooldown) + HexByte(rotor) + HexWord(undershoot) + HexWord(tolerance);
  }
};

// Starts a sequence a quarter of a second after the start of the clock, and returns all frames
// until the line has been silent for a second.
std::vector<Heard> RunSequence(SimSet& set, const std::string& command) {
  set.Home();
  set.WaitUntil(250);
  const Heard reply = set.Ask(command);
  EXPECT_EQ(reply.error(), 0);
  EXPECT_EQ(reply.tag(), command.substr(1, 2));
  std::vector<Heard> frames;
  for (Heard frame = set.line.Next(); !frame.text.empty(); frame = set.line.Next()) {
    EXPECT_EQ(frame.ms, 500 * frame.intCount());
    EXPECT_EQ(frame.error(), 0);
    frames.push_back(frame);
    if (frames.size() > 1000) {
      ADD_FAILURE() << "the sequence does not end";
      break;
    }
  }
  return frames;
}

TEST(SimSequence, AWholeTestTickByTick) {
  UnderVirtualTime([] {
    SimSet set;
    const std::vector<Heard> frames = RunSequence(set, TestPayload().Test());
    // Warm: 80 counts in the first tick, then 2 a tick to 160. Trolley 1215 and table 123 steps
    // from 20.5 s on, tube 942 steps from 33.88 s on, injection from tick 86 for 12 ticks, tube up
    // from 49.0 s to 58.42 s. Meanwhile the cell falls 80, then 2 counts a tick from 156 counts
    // above the undershot target, into the tolerance at tick 132, and stays for 11 ticks since 131.
    const std::vector<Span> expected = {
        {kWarm, 1, 41},        {kLocate, 42, 67},          {kLower, 68, 86},     {kBurst, 87, 90},
        {kPause, 91, 92},      {kPurge, 93, 94},           {kBurst, 95, 98},     {kRaise, 99, 116},
        {kCooldown, 117, 141}, {kEquilibration, 142, 152}, {kRunTest, 153, 173}, {0, 174, 174}};
    EXPECT_EQ(Operations(frames), expected);

    const auto injecting = Spans(frames, [](const Heard& f) { return f.switches() & 0x01; });
    EXPECT_EQ(injecting,
              (std::vector<Span>{
                  {1, 1, 40}, {0, 41, 86}, {1, 87, 89}, {0, 90, 91}, {1, 92, 97}, {0, 98, 174}}));
    const auto targets = Spans(frames, [](const Heard& f) { return f.target(); });
    EXPECT_EQ(targets,
              (std::vector<Span>{
                  {0xFFFF, 1, 98}, {57860, 99, 152}, {57900, 153, 173}, {0xFFFF, 174, 174}}));
    for (const Heard& frame : frames) {
      const int tick = frame.intCount();
      // During the injection the rotor is on every other tick, during the run always.
      const bool pulsed = tick >= 87 && tick < 98 && tick % 2 == 0;
      const bool running = tick >= 153 && tick < 174;
      EXPECT_EQ(frame.speed(), pulsed || running ? 4000 : 0) << tick;
      EXPECT_EQ(frame.switches() & 0xA0, tick < 174 ? 0xA0 : 0) << tick;
    }
    EXPECT_EQ(frames.back().switches(), 0);
    EXPECT_EQ(set.Ask(TestPayload().Test()).error(), 0);
  });
}

TEST(SimSequence, AHeldUpThreadReportsEveryTickAllTheSame) {
  UnderVirtualTime([] {
    SimSet set;
    set.Home();
    set.Ask("CTC00E22C");
    TestPayload payload;
    payload.injection = 0;
    bool heldUp = false;
    set.line.SetOnFrame([&heldUp](const Heard& frame) {
      if (heldUp || frame.operation() != kRunTest) return;
      heldUp = true;
      platform::Sleep(platform::Milliseconds(2600));  // five ticks, as in a suspended computer
    });
    set.Ask(payload.Test());
    set.WaitMs(120000);
    std::vector<int> counts;
    for (const Heard& frame : set.line.Rest()) {
      if (frame.operation() == kRunTest) counts.push_back(frame.intCount());
    }
    ASSERT_TRUE(heldUp);
    // The readings of the whole rotor time, one for each count.
    EXPECT_EQ(counts.size(), 21u);
    for (size_t i = 1; i < counts.size(); ++i) EXPECT_EQ(counts[i], counts[i - 1] + 1);
  });
}

TEST(SimSequence, TheOilInTheCellGoesStraightToCooldown) {
  UnderVirtualTime([] {
    SimSet set;
    TestPayload payload;
    payload.injection = 0;
    payload.testCounts = 57856 + 40;  // in the tolerance from the start
    payload.tolerance = 0;
    const std::vector<Heard> frames = RunSequence(set, payload.Test());
    EXPECT_EQ(Operations(frames),
              (std::vector<Span>{
                  {kCooldown, 1, 10}, {kEquilibration, 11, 21}, {kRunTest, 22, 42}, {0, 43, 43}}));
  });
}

TEST(SimSequence, LeavingTheToleranceStartsTheHoldAgain) {
  UnderVirtualTime([] {
    platform::Event ownStop("own stop");
    SimBoard board(ownStop, nullptr);
    SimFirmware firmware(board);
    firmware.SetHome();
    int tick = 0;
    const auto pass = [&] {
      while (firmware.Pass(static_cast<uint16_t>(tick))) {
      }
      platform::Sleep(platform::Milliseconds(500));
      board.AdvanceClock(true);
      ++tick;
      return firmware.ShownOperation();
    };
    pass();
    SimRunProgram program;
    program.testCounts = 0xE200;
    program.tolerance = 40;
    EXPECT_EQ(firmware.StartTest(program), SimError::None);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(pass(), SimOperation::Cooldown);
    board.SetTarget(0);  // out of the tolerance with the next step of the cell
    for (int i = 0; i < 3; ++i) EXPECT_EQ(pass(), SimOperation::Cooldown);
    board.SetTarget(0xE200);
    int lastOut = 0;
    int presentTick = tick;
    do {
      presentTick = tick;
      if (board.Cell().actual < 0xE200 - 40) lastOut = presentTick;
    } while (pass() == SimOperation::Cooldown);
    EXPECT_GT(lastOut, 13);
    EXPECT_EQ(presentTick - lastOut, 11);
  });
}

TEST(SimSequence, MotorCurrentFromAColdCell) {
  UnderVirtualTime([] {
    SimSet set;
    TestPayload payload;
    payload.position = 6;
    const std::vector<Heard> frames = RunSequence(set, payload.MotorCurrent());
    // As a test, with trolley 405 and table 123 steps, and motor current at both ends.
    EXPECT_EQ(Operations(frames), (std::vector<Span>{{kWarm, 1, 41},
                                                     {kLocate, 42, 51},
                                                     {kLower, 52, 70},
                                                     {kBurst, 71, 74},
                                                     {kPause, 75, 76},
                                                     {kPurge, 77, 78},
                                                     {kBurst, 79, 82},
                                                     {kRaise, 83, 100},
                                                     {kCooldown, 101, 125},
                                                     {kEquilibration, 126, 136},
                                                     {1, 137, 157},
                                                     {0, 158, 158}}));
    for (const Heard& frame : frames) {
      EXPECT_EQ(frame.switches() & 0x60, frame.intCount() < 158 ? 0x40 : 0);
    }
  });
}

TEST(SimSequence, MotorCurrentFromAWarmCellGoesDownWhereItStands) {
  UnderVirtualTime([] {
    SimSet set;
    TestPayload payload;
    payload.position = 6;
    payload.injectionCounts = 57000;
    set.Home();
    set.WaitUntil(250);
    set.Ask(payload.MotorCurrent());
    EXPECT_EQ(set.line.Next().operation(), kLower);
    EXPECT_EQ(set.Ask("CAS01").error(), 0x82);
    EXPECT_EQ(set.Ask("CTC00FFFF").error(), 0x82);
    EXPECT_EQ(set.Ask("CMM080000").error(), 0x82);
    EXPECT_EQ(set.Ask("CPM010FA0").error(), 0x40);
    EXPECT_EQ(set.line.Next().operation(), kLower);
  });
}

TEST(SimSequence, PreconditionInTheSpeedBand) {
  for (const int speed : {3967, 4000, 4033}) {
    UnderVirtualTime([speed] {
      SimSet set;
      const std::vector<Heard> frames = RunSequence(set, "CPM01" + HexWord(speed));
      EXPECT_EQ(Operations(frames), (std::vector<Span>{{3, 1, 120}, {0, 121, 121}})) << speed;
      EXPECT_EQ(frames.front().switches(), 0xD2);
      EXPECT_EQ(frames.front().speed(), 4000);
      // Held at the temperature at which the speed was reached.
      EXPECT_EQ(frames.front().actual(), 0xE200);
      EXPECT_EQ(frames[100].actual(), 0xE200);
      EXPECT_EQ(frames[100].target(), 0xE200);
    });
  }
}

TEST(SimSequence, PreconditionOutsideTheBandSeeksUntilAborted) {
  const std::map<int, int> cases = {{3966, 0xFFFE - 32 * 2047},  // too fast: colder and colder
                                    {4034, 0xFFFE}};             // too slow: as warm as it gets
  for (const auto& [speed, target] : cases) {
    UnderVirtualTime([speed = speed, target = target] {
      SimSet set;
      set.Home();
      set.WaitUntil(250);
      EXPECT_EQ(set.Ask("CPM01" + HexWord(speed)).switches(), 0xD2);
      set.WaitUntil(100250);
      std::vector<Heard> frames = set.line.Rest();
      EXPECT_EQ(Operations(frames), (std::vector<Span>{{2, 1, 200}}));
      EXPECT_EQ(frames.front().target(), target);
      EXPECT_EQ(frames.back().target(), target);
      EXPECT_EQ(set.Ask("CAB").switches(), 0);
      set.WaitMs(5000);
      EXPECT_EQ(set.line.Rest().size(), 1u);
      EXPECT_EQ(set.Status().operation(), 0);
    });
  }
}

TEST(SimSequence, AbortInEachPhaseOfATest) {
  // Seconds into the run of AWholeTestTickByTick, one in each operation.
  for (const int at : {10, 25, 40, 44, 46, 47, 52, 60, 72, 80}) {
    UnderVirtualTime([at] {
      SimSet set;
      set.Home();
      set.WaitUntil(250);
      set.Ask(TestPayload().Test());
      set.WaitUntil(at * 1000 + 250);
      set.line.Rest();
      EXPECT_NE(set.Status().operation(), 0) << at;
      EXPECT_EQ(set.Ask(TestPayload().Test()).error(), 0x40) << at;
      EXPECT_EQ(set.Ask("CAI01").error(), 0x82) << at;
      const Heard reply = set.Ask("CAB");
      EXPECT_EQ(reply.tag(), "AB");
      EXPECT_EQ(reply.switches(), 0) << at;
      const Heard after = set.Status();
      EXPECT_EQ(after.operation(), 0) << at;
      EXPECT_EQ(after.speed(), 0) << at;
      EXPECT_EQ(after.target(), 0xFFFF) << at;
      set.WaitMs(5000);
      EXPECT_EQ(set.line.Rest().size(), 1u) << at;  // the one report after the end
      // Everything can start again; the tube comes up first if it was down.
      EXPECT_EQ(set.Ask("CMP01").error(), 0) << at;
      set.WaitMs(20000);
      EXPECT_EQ(set.Status().operation(), 0) << at;
      EXPECT_EQ(set.Ask(TestPayload().Test()).error(), 0) << at;
    });
  }
}

TEST(SimSequence, PhasesOfNoLengthDoNotHangTheController) {
  UnderVirtualTime([] {
    SimSet set;
    TestPayload payload;
    payload.burst = payload.pause = payload.purge = 0;
    payload.injectionCounts = 57000;
    payload.position = 0;
    payload.injection = 3;
    set.Home();
    set.WaitUntil(250);
    set.Ask(payload.Test());
    set.WaitUntil(11250);
    set.line.Rest();
    EXPECT_EQ(set.Ask("CAI00").error(), 0x82);
    set.WaitUntil(13250);
    set.line.Rest();
    EXPECT_EQ(set.Status().operation(), kRaise);
  });
}

class ColdIsSlow : public RotorModel {
 public:
  uint16_t SpeedCounts(const RotorConditions& conditions) override {
    return conditions.on ? static_cast<uint16_t>(conditions.cellCounts / 10) : 0;
  }
};

TEST(SimSequence, AnotherRotorShowsItsOwnSpeed) {
  UnderVirtualTime([] {
    SimLine line;
    SimStopHandle stop(line);
    SimulatedInstrument instrument(stop, true, std::make_unique<ColdIsSlow>());
    instrument.Feed("/0CAS01\r/0QST\r");
    line.Next();
    EXPECT_EQ(line.Next().speed(), 0);  // from the moment before
    instrument.Feed("/0QST\r");
    EXPECT_EQ(line.Next().speed(), 5785);
  });
}

}  // namespace
}  // namespace rvx::simulator
