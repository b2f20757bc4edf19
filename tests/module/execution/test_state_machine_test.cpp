// One test of a sample, from its start command to the idle instrument.
#include "module/execution/test_state_machine.h"

#include <gmock/gmock.h>

#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

using testing::DoubleNear;
using testing::Pointwise;
using TestDriver = Driver<CTestStateMachine>;

constexpr uint8_t kRunTest = 13;
constexpr uint8_t kCooldown = 11;

TestRecord ShortTest(int rotorOnTime) {
  TestRecord test;
  test.injectionTime = 2;
  test.coolDownTime = 2;
  test.rotorOnTimes[0] = rotorOnTime;
  return test;
}

std::vector<double> Seconds(const std::vector<platform::Microseconds>& times) {
  std::vector<double> gaps;
  for (size_t i = 1; i < times.size(); ++i) {
    gaps.push_back(std::chrono::duration<double>(times[i] - times[i - 1]).count());
  }
  return gaps;
}

TEST(TestStateMachineTest, FollowsAWholeTest) {
  InVirtualTime([] {
    Bench bench;
    TestRecord test = ShortTest(30);
    TestDriver driver(bench, test, 0);
    EXPECT_EQ(driver.machine.GetSpeeds(), nullptr);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_FALSE(driver.failure);
    EXPECT_EQ(bench.Heard(), "ST AB");
    // Position 4, injection 2 s, burst 25, pause 30, purge 15, cool-down 2, rotor 30 s, -20.0.
    EXPECT_EQ(bench.controller.commands()[0].substr(0, 22), "0CST0402191E0F021EAD3D");
    const std::vector<std::string> expected = {
        "status 0,4 Warm Test Cell",  "status 0,4 Locate Sample", "status 0,4 Lower Tube",
        "status 0,4 Injection Burst", "status 0,4 Raise Tube",    "status 0,4 Cooldown",
        "status 0,4 Equilibration",   "status 0,4 Run Test",      "status 0,4 IDLE"};
    EXPECT_EQ(driver.watcher.calls(), expected);
    ASSERT_NE(driver.machine.GetSpeeds(), nullptr);
    EXPECT_THAT(*driver.machine.GetSpeeds(),
                Pointwise(DoubleNear(1e-9), std::vector<double>(60, 0.24)));
    ASSERT_EQ(driver.machine.GetTemperatures()->size(), 60u);
    EXPECT_NEAR(driver.machine.GetTemperatures()->back(), -20.0, 0.001);
  });
}

// The abort is sent immediately after the last reading. One status later the instrument would be
// ending the test by itself when the next command arrives.
TEST(TestStateMachineTest, TakesOneReadingForEachNewIntCount) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    bench.controller.SetIntCount(0);
    driver.RunUntil([&] { return bench.controller.CountCommands("ST") == 1; });
    bench.controller.SetOperation(kRunTest);
    // The count 0 equals the initial value, so it looks as if it had been read already.
    driver.Show();
    bench.controller.SetSpeedCounts(4000);
    for (const uint16_t count : {7, 7, 8, 65535}) {
      bench.controller.SetIntCount(count);
      driver.Show();
      driver.StepOut();
    }
    EXPECT_EQ(bench.Heard(), "ST");
    EXPECT_EQ(driver.machine.GetSpeeds(), nullptr);
    bench.controller.SetSpeedCounts(2000);
    bench.controller.SetIntCount(1);
    driver.Show();
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), "ST AB");
    ASSERT_NE(driver.machine.GetSpeeds(), nullptr);
    EXPECT_THAT(*driver.machine.GetSpeeds(), Pointwise(DoubleNear(1e-9), {0.24, 0.24, 0.24, 0.12}));
    EXPECT_FALSE(driver.ended);
    bench.controller.SetOperation(0);
    driver.Show();
    EXPECT_TRUE(driver.ended);
  });
}

// A computer that is busy for a while must not cost readings: they would be missing from the end of
// the arrays, where the average is taken.
class HeldUpThreadTest : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(FromTheStartOn, HeldUpThreadTest, testing::Bool());

TEST_P(HeldUpThreadTest, LosesNothing) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(10);
    TestDriver driver(bench, test, 0);
    driver.RunUntil([&] { return bench.controller.CountCommands("ST") == 1; });
    // With the parameter true even the reply to the start is seen late, and all states up to the
    // readings are passed late.
    if (!GetParam()) {
      bench.controller.SetOperation(kCooldown);
      driver.Show();
    }
    bench.controller.SetOperation(kRunTest);
    for (uint16_t count = 101; count <= 120; ++count) {
      bench.controller.SetSpeedCounts(static_cast<uint16_t>(count * 10));
      bench.controller.SetIntCount(count);
      bench.WaitForStatus();
    }
    ASSERT_TRUE(driver.RunUntil([&] { return driver.machine.GetSpeeds() != nullptr; }, 1min));
    EXPECT_NEAR(driver.machine.GetSpeeds()->front(), 0.0606, 1e-9);
    EXPECT_NEAR(driver.machine.GetSpeeds()->back(), 0.0720, 1e-9);
  });
}

TEST(TestStateMachineTest, AnInstrumentThatGoesIdleLeavesTheRestAtZero) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.RunUntil([&] { return bench.controller.CountCommands("ST") == 1; });
    bench.controller.SetOperation(kRunTest);
    bench.controller.SetSpeedCounts(4000);
    bench.controller.SetIntCount(9);
    driver.Show();
    bench.controller.SetOperation(0);
    driver.Show();
    EXPECT_TRUE(driver.ended);
    EXPECT_THAT(*driver.machine.GetSpeeds(), Pointwise(DoubleNear(1e-9), {0.24, 0.0, 0.0, 0.0}));
    EXPECT_EQ(driver.machine.GetTemperatures()->at(1), 0.0);
    EXPECT_EQ(bench.Heard(), "ST");
  });
}

TEST(TestStateMachineTest, SendsTheStartThriceMoreAndThenFails) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.Ignore("ST", -1);
    TestRecord test = ShortTest(30);
    TestDriver driver(bench, test, 0);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Sample Abort : RVX Response Timeout.");
    EXPECT_EQ(driver.failure->kind, 0);
    EXPECT_EQ(driver.failure->sampleFailure, 1);
    EXPECT_EQ(driver.failure->tray, 1);
    EXPECT_EQ(driver.failure->position, 5);
    EXPECT_EQ(driver.failure->source, bench.instrument.get());
    EXPECT_EQ(driver.failure->operatorName, "tester");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 4, 1min));
    EXPECT_EQ(bench.Heard(), "ST AB ST AB ST AB ST AB");
    // One response time-out until the abort, one more until the next start.
    for (const double gap : Seconds(bench.controller.CommandTimes("ST"))) {
      EXPECT_NEAR(gap, 12.002, 0.05);
    }
  });
}

TEST(TestStateMachineTest, AStartThatIsHeardAtLastGoesOn) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.Ignore("ST", 3);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "ST AB ST AB ST AB ST AB");
  });
}

// Delays the thread that writes the next status query.
class HeldUpLine : public LineFilter {
 public:
  void FromHost(std::span<const uint8_t> bytes, const Hear& hear) override {
    if (bytes[2] == 'Q') platform::Sleep(platform::Milliseconds(holdUp.exchange(0)));
    hear(bytes);
  }
  void FromInstrument(std::string_view bytes, platform::Milliseconds delay,
                      const Deliver& deliver) override {
    deliver(bytes, delay);
  }
  std::atomic<int> holdUp{0};  // ms
};

// The start and the abort that follows its time-out wait in the queue meanwhile. If the first start
// were sent late, the run would take its test for that of the second start, until the abort ended
// it.
TEST(TestStateMachineTest, AStartThatHasTimedOutInTheQueueIsNotSent) {
  InVirtualTime([] {
    HeldUpLine line;
    Bench bench('2', &line);
    line.holdUp = 13'000;
    while (line.holdUp != 0) platform::Sleep(100ms);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "AB ST AB");
    EXPECT_NE(driver.machine.GetSpeeds()->back(), 0.0);
  });
}

// A fault in a test: the operation in which it occurs, its cause, and the message that it leads to.
struct Trouble {
  const char* name;
  uint8_t operation;  // 0: before the start
  std::function<void(Bench&)> cause;
  const char* message;
};

class TestTroubleTest : public testing::TestWithParam<Trouble> {};

// In every state the instrument gets an abort before the failure is thrown.
TEST_P(TestTroubleTest, EndsTheTest) {
  InVirtualTime([] {
    Bench bench;
    const Trouble& trouble = GetParam();
    const auto cause = [&] { trouble.cause(bench); };
    if (trouble.operation == 0) {
      cause();
      bench.WaitForStatus();
    } else {
      bench.controller.AtOperation(trouble.operation, cause);
    }
    TestRecord test = ShortTest(5);
    TestDriver driver(bench, test, 0);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, trouble.message);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), trouble.operation == 0 ? "AB" : "ST AB");
  });
}

INSTANTIATE_TEST_SUITE_P(
    Troubles, TestTroubleTest,
    testing::Values(
        Trouble{"Busy", 0, [](Bench& b) { b.controller.SetOperation(kCooldown); },
                "Sample Abort : RVX already in use."},
        Trouble{"NotReady", 0, [](Bench& b) { b.controller.SetMachineStatus(0x02); },
                "RVX is not ready. Tray will be paused."},
        Trouble{"NotReadyLater", 5, [](Bench& b) { b.controller.SetMachineStatus(0x04); },
                "RVX is not ready. Tray will be paused."},
        Trouble{"Error", 8, [](Bench& b) { b.controller.RaiseError(0x41); },
                "The instrument was instructed to go to an invalid tray position."},
        Trouble{"ErrorSaysMore", kRunTest,
                [](Bench& b) {
                  b.controller.SetMachineStatus(0x01);
                  b.controller.RaiseError(0x42);
                },
                "The stepper motors must be homed before initiating the requested operation."}),
    [](const testing::TestParamInfo<Trouble>& trouble) { return std::string(trouble.param.name); });

TEST(TestStateMachineTest, AnErrorBehindTheLastReadingStillFailsTheTest) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(0);
    TestDriver driver(bench, test, 0);
    driver.RunUntil([&] { return bench.controller.CountCommands("ST") == 1; });
    bench.controller.SetOperation(kRunTest);
    driver.RunUntil([&] { return driver.machine.GetSpeeds() != nullptr; });
    bench.controller.RaiseError(0xE0);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_FALSE(driver.ended);
  });
}

TEST(TestStateMachineTest, NothingButTheRunOrATroubleEndsTheWaits) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    // Accepted, but no operation begins; then one that never becomes Run Test.
    EXPECT_FALSE(driver.RunUntil([&] { return driver.ended; }, 30min));
    bench.controller.SetOperation(kCooldown);
    EXPECT_FALSE(driver.RunUntil([&] { return driver.ended; }, 30min));
    EXPECT_FALSE(driver.failure);
    EXPECT_EQ(bench.Heard(), "ST");
  });
}

// --- Models on which the user lowers the tube ---------------------------------------------------

// A test has begun on a controller whose state is set by hand. The prompt comes next.
struct BenchBeforeThePrompt : Bench {
  BenchBeforeThePrompt() : Bench('1') {
    controller.SetPlaying(false);
    driver.RunUntil([this] { return controller.CountCommands("ST") == 1; });
    controller.SetOperation(5);
    driver.Show();
  }

  TestRecord test = ShortTest(2);
  TestDriver driver{*this, test, 0};
};

TEST(ManualInjectionTest, AsksTheUserOnce) {
  InVirtualTime([] {
    Bench bench('1');
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "ST UA AB");
    EXPECT_EQ(bench.prompts.beeps, 1);
    ASSERT_EQ(bench.prompts.texts.size(), 1u);
    EXPECT_EQ(bench.prompts.texts[0],
              "Lower injection tube into the sample then press OK.\n"
              "Raise injection tube when injection sequence is complete.");
  });
}

// The answer belongs to the prompt that was shown. A prompt that rises after it is a new one.
TEST(ManualInjectionTest, APromptThatRisesAgainIsAskedAgain) {
  InVirtualTime([] {
    BenchBeforeThePrompt bench;
    TestDriver& driver = bench.driver;
    for (int prompt = 1; prompt <= 2; ++prompt) {
      bench.controller.SetPromptFlag(1);
      driver.RunUntil([&] { return bench.controller.CountCommands("UA") == prompt; });
      bench.controller.SetPromptFlag(0);
      driver.RunUntil([] { return false; }, 3s);
    }
    EXPECT_EQ(bench.prompts.texts.size(), 2u);
    EXPECT_EQ(bench.Heard(), "ST UA UA");
  });
}

TEST(ManualInjectionTest, AnUnheardAnswerIsAskedForAgain) {
  InVirtualTime([] {
    Bench bench('3');
    bench.controller.Ignore("UA", 2);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.prompts.texts.size(), 3u);
    EXPECT_EQ(bench.Heard(), "ST UA UA UA AB");
  });
}

// The controller took the answer, but its reply was lost. The prompt is down, so the user is not
// asked again.
TEST(ManualInjectionTest, ALostReplyToTheAnswerAbortsTheInjection) {
  InVirtualTime([] {
    BenchBeforeThePrompt bench;
    TestDriver& driver = bench.driver;
    bench.controller.Ignore("UA", 1);
    bench.prompts.whileOpen = [&] { bench.controller.SetPromptFlag(0); };
    bench.controller.SetPromptFlag(1);
    driver.RunUntil([&] { return bench.controller.CountCommands("AB") == 1; });
    EXPECT_EQ(bench.Heard(), "ST UA AB");
    EXPECT_EQ(bench.prompts.texts.size(), 1u);
    // It then waits until the test goes on.
    bench.controller.SetOperation(kRunTest);
    driver.RunUntil([&] { return driver.machine.GetSpeeds() != nullptr; });
    EXPECT_NE(driver.machine.GetSpeeds(), nullptr);
  });
}

// The abort after the lost reply ends the test, so the run must not wait for its readings.
TEST(ManualInjectionTest, ATestThatItHasAbortedItselfFails) {
  InVirtualTime([] {
    BenchBeforeThePrompt bench;
    TestDriver& driver = bench.driver;
    bench.controller.Ignore("UA", 1);
    bench.prompts.whileOpen = [&] { bench.controller.SetPromptFlag(0); };
    bench.controller.SetPromptFlag(1);
    driver.RunUntil([&] { return bench.controller.CountCommands("AB") == 1; });
    bench.controller.SetOperation(0);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Sample Abort : RVX Response Timeout.");
  });
}

TEST(ManualInjectionTest, AnInstrumentThatGoesOnHasHeardTheAnswer) {
  InVirtualTime([] {
    Bench bench('3');
    bench.controller.Delay("UA", 5s, 1);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.prompts.texts.size(), 1u);
    EXPECT_EQ(bench.Heard(), "ST UA AB");  // the one after the last reading
  });
}

// A report that is on its way when the answer goes out ends the wait for its reply.
TEST(ManualInjectionTest, AReportInPlaceOfTheReplyCountsOnceThePromptHasFallen) {
  InVirtualTime([] {
    BenchBeforeThePrompt bench;
    TestDriver& driver = bench.driver;
    bench.controller.Ignore("UA", 1);
    bench.controller.SetPromptFlag(1);
    driver.RunUntil([&] { return !bench.prompts.texts.empty(); });
    ASSERT_TRUE(bench.controller.WaitForCommands("UA", 1, 1s));
    bench.controller.Report();
    bench.controller.SetPromptFlag(0);
    EXPECT_FALSE(driver.RunUntil([&] { return bench.controller.CountCommands("AB") == 1; }, 20s));
    bench.controller.SetOperation(kRunTest);
    driver.RunUntil([&] { return bench.controller.CountCommands("AB") == 1; });
    EXPECT_NE(driver.machine.GetSpeeds(), nullptr);
    EXPECT_EQ(bench.prompts.texts.size(), 1u);
    EXPECT_EQ(bench.Heard().substr(0, 8), "ST UA AB");
    EXPECT_EQ(bench.controller.CountCommands("AB"), 1);  // the one after the last reading
  });
}

TEST(ManualInjectionTest, AModelThatInjectsByItselfIsNotPrompted) {
  InVirtualTime([] {
    Bench bench('4');
    bench.controller.SetPlaying(false);
    TestRecord test = ShortTest(2);
    TestDriver driver(bench, test, 0);
    driver.RunUntil([&] { return bench.controller.CountCommands("ST") == 1; });
    bench.controller.SetOperation(5);
    bench.controller.SetPromptFlag(1);
    driver.Show();
    EXPECT_TRUE(bench.prompts.texts.empty());
  });
}

}  // namespace
}  // namespace rvx
