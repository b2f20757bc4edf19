// How far a run is, and the block that shows it.
#include "host/tray/run_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/cli/run_view.h"

namespace torvell {
namespace {

using testing::HasSubstr;

TrayPosition Filled(int position, const char* sampleId, size_t tests) {
  TrayPosition result;
  result.position = position;
  result.label = "Measure Viscosity";
  result.sampleId = sampleId;
  result.tests = rvx::SampleTests();
  result.tests->tests.resize(tests);
  result.estimatedSeconds = 600;
  return result;
}

class RunStateTest : public testing::Test {
 protected:
  RunStateTest() : state_(Found(), {Filled(0, "OIL-A", 2), Filled(3, "OIL-B", 1)}) {}

  static InstrumentEntry Found() {
    InstrumentEntry found;
    found.identity.portName = "COM1";
    found.identity.model = "RVX-D TX";
    return found;
  }

  // The tray announces its first stage as position 0.
  void SetUp() override {
    Take(RunEvent::Kind::TrayStarted);
    EXPECT_FALSE(Take(RunEvent::Kind::SampleStarted, 0));
  }

  bool Take(RunEvent::Kind kind, int32_t position = -1) {
    RunEvent event;
    event.kind = kind;
    event.position = position;
    if (kind == RunEvent::Kind::Sample) event.sample.emplace();
    if (kind == RunEvent::Kind::Sample) event.sample->constants[5] = -20.0;
    return state_.Take(event);
  }

  void TakeError(int kind, bool sampleFailure) {
    RunEvent event;
    event.kind = RunEvent::Kind::Error;
    event.error.emplace();
    event.error->kind = kind;
    event.error->sampleFailure = sampleFailure;
    state_.Take(event);
  }

  std::string Block() {
    std::string text;
    rvx::InstrumentReadings readings;
    readings.operationText = "Cooldown";
    readings.seconds = 120;
    readings.countsDown = true;
    readings.temperature = -12.345;
    for (const std::string& line : DescribeRun(state_, readings, platform::MonotonicTime(),
                                               platform::Date(2026, 1, 5, 8, 0, 0))) {
      text += line + "\n";
    }
    return text;
  }

  RunState state_;
};

TEST_F(RunStateTest, CountsSamplesAndWhatIsDue) {
  EXPECT_EQ(state_.SamplesDue(), 3);
  Take(RunEvent::Kind::SampleStarted, 0);
  Take(RunEvent::Kind::Sample, 0);
  Take(RunEvent::Kind::Sample, 0);
  EXPECT_EQ(state_.samples(), 2);
  EXPECT_EQ(state_.positions()[0].samples.size(), 2u);
}

TEST_F(RunStateTest, StagesAndEmptyPositionsAreNoSamples) {
  EXPECT_TRUE(Take(RunEvent::Kind::SampleStarted, 0));
  EXPECT_TRUE(Take(RunEvent::Kind::SampleFinished, 0));
  EXPECT_FALSE(Take(RunEvent::Kind::SampleStarted, 1));
  EXPECT_FALSE(Take(RunEvent::Kind::SampleFinished, 1));
  EXPECT_TRUE(Take(RunEvent::Kind::SampleStarted, 3));
  EXPECT_TRUE(Take(RunEvent::Kind::SampleFinished, 3));
  EXPECT_FALSE(Take(RunEvent::Kind::SampleStarted, 0));
  EXPECT_EQ(state_.Current(), nullptr);
}

TEST_F(RunStateTest, AFirstStageThatWasPausedStartsAgain) {
  Take(RunEvent::Kind::PauseChanged);
  EXPECT_FALSE(Take(RunEvent::Kind::SampleStarted, 0));
  EXPECT_TRUE(Take(RunEvent::Kind::SampleStarted, 0));
}

TEST_F(RunStateTest, AReminderIsNoError) {
  TakeError(0, false);
  EXPECT_EQ(state_.errors(), 0);
  TakeError(0, true);
  TakeError(1, false);
  EXPECT_EQ(state_.errors(), 2);
}

TEST_F(RunStateTest, ProgressGrowsWithThePositionsAndEndsWhole) {
  const auto after = [](double seconds) {
    return platform::MonotonicTime() + platform::Microseconds(static_cast<int64_t>(seconds * 1e6));
  };
  EXPECT_EQ(state_.PartDone(after(0)), 0.0);
  EXPECT_EQ(state_.SecondsLeft(after(0)), state_.TotalSeconds());
  Take(RunEvent::Kind::SampleStarted, 0);
  EXPECT_NEAR(state_.SecondsLeft(after(150)), state_.TotalSeconds() - 151, 1);
  // The second test has not begun, so its half of the sample is still to come, however late it is.
  EXPECT_NEAR(state_.SecondsLeft(after(3600)), state_.TotalSeconds() - 301, 1);
  Take(RunEvent::Kind::Sample, 0);
  EXPECT_NEAR(state_.SecondsLeft(after(150)), state_.TotalSeconds() - 301, 1);
  Take(RunEvent::Kind::Sample, 0);
  Take(RunEvent::Kind::SampleFinished, 0);
  // The first sample took no time at all, so the second one is expected to be quick too, down to a
  // limit.
  EXPECT_NEAR(state_.SecondsLeft(after(0)), 300 + 3 + 5, 1);
  EXPECT_GT(state_.PartDone(after(0)), 0.4);
  Take(RunEvent::Kind::TrayFinished);
  EXPECT_EQ(state_.PartDone(after(0)), 1.0);
  EXPECT_EQ(state_.SecondsLeft(after(0)), 0.0);
}

TEST_F(RunStateTest, TheBlockShowsPositionOperationReadingsAndEnd) {
  Take(RunEvent::Kind::SampleStarted, 0);
  Take(RunEvent::Kind::Sample, 0);
  const std::string block = Block();
  EXPECT_THAT(block, HasSubstr("COM1 RVX-D TX"));
  EXPECT_THAT(block, HasSubstr(">  1  OIL-A"));
  EXPECT_THAT(block, HasSubstr("-20.0 degC: - mPa*s"));
  EXPECT_THAT(block, HasSubstr("Cooldown, 120 s remaining; cell -12.35 degC"));
  EXPECT_THAT(block, HasSubstr("   4  OIL-B"));
  EXPECT_THAT(block, HasSubstr("1 of 3 samples"));
  EXPECT_THAT(block, HasSubstr("expected end 08:15"));
}

TEST_F(RunStateTest, APausedTrayPromisesNoEnd) {
  RunEvent event;
  event.kind = RunEvent::Kind::PauseChanged;
  event.paused = true;
  state_.Take(event);
  EXPECT_THAT(Block(), HasSubstr("paused"));
  EXPECT_THAT(Block(), testing::Not(HasSubstr("expected end")));
}

}  // namespace
}  // namespace torvell
