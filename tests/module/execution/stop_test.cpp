// Stops: from inside a watcher's call, from other threads, at many moments.
#include <random>

#include "module/execution/measure_visc_action.h"
#include "module/execution/precondition_motor_action.h"
#include "module/execution/visc_run.h"
#include "platform/thread.h"
#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

// Two tests of a few seconds each.
std::unique_ptr<CMeasureViscAction> MakeTwoTests(Bench& bench) {
  bench.SetTimes(2, 2, 4);
  auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
  action->ResetToInstrumentDefaults();
  action->SetTestPoint(1, "-10", "0", 4);
  return action;
}

TEST(StopTest, WithoutARunItDoesNothing) {
  InVirtualTime([] {
    Bench bench;
    MakeTwoTests(bench)->Stop();
    EXPECT_EQ(bench.Heard(), "");
  });
}

class StopInOperationTest : public testing::TestWithParam<int> {};

TEST_P(StopInOperationTest, AbortsTheInstrumentAndStoresNothing) {
  InVirtualTime([] {
    Bench bench;
    const auto action = MakeTwoTests(bench);
    RecordingWatcher watcher;
    platform::Event reached("test operation reached");
    bench.controller.AtOperation(static_cast<uint8_t>(GetParam()), [&] { reached.Set(); });
    action->Start(&watcher, "0,0");
    ASSERT_TRUE(reached.Wait(1h));
    action->Stop();
    EXPECT_EQ(watcher.calls().back(), "finished 0,0");
    EXPECT_EQ(watcher.Count("finished 0,0"), 1);
    EXPECT_EQ(action->IsRunning(), 0);
    EXPECT_EQ(action->HasRun(), 0);
    EXPECT_EQ(action->GetRunResult(), 0);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), "ST AB");
    EXPECT_TRUE(bench.host.samples.samples().empty());
    EXPECT_TRUE(bench.host.instruments.errors().empty());
  });
}

INSTANTIATE_TEST_SUITE_P(Operations, StopInOperationTest,
                         testing::Values(7, 4, 5, 8, 6, 11, 12, 13));

// The run's thread waits for the user. A CAB that it sent only after the answer would end whatever
// has been started meanwhile.
TEST(StopTest, SendsItsCabWhileThePromptStillStandsAndNoneBehindIt) {
  InVirtualTime([] {
    Bench bench('1');
    const auto action = MakeTwoTests(bench);
    RecordingWatcher watcher;
    platform::Event asked("test: asked");
    platform::Event answered("test: answered");
    bench.prompts.whileOpen = [&] {
      asked.Set();
      answered.Wait(1h);
    };
    action->Start(&watcher, "0,0");
    ASSERT_TRUE(asked.Wait(1h));
    action->Stop();
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    answered.Set();
    platform::Sleep(1min);
    EXPECT_EQ(bench.Heard(), "ST AB");
  });
}

// A message box that outlived its run would be shown beside that of the next run.
TEST(StopTest, TheInjectionPromptGoesWithItsRun) {
  struct Standing : PromptCounter {
    std::optional<platform::MessageAnswer> ShowMessageUntil(
        const std::string&, platform::MessageButtons, platform::MessageIcon,
        std::span<platform::Event* const> withdrawal) override {
      ++shown;
      EXPECT_EQ(++open, 1);
      opened.Set();
      platform::WaitForAny(withdrawal, platform::Deadline::Never());
      --open;
      return std::nullopt;
    }
    int shown = 0;
    int open = 0;
    platform::Event opened{"test: the prompt is open"};
  };
  InVirtualTime([] {
    Bench bench('1');
    Standing prompter;
    const auto action = MakeTwoTests(bench);
    RecordingWatcher watcher;
    for (int run = 1; run <= 2; ++run) {
      action->Start(&watcher, "0,0");
      ASSERT_TRUE(prompter.opened.Wait(1h));
      action->Stop();
      EXPECT_TRUE(bench.controller.WaitForCommands("AB", run, 1min));
      bench.WaitForStatus();  // idle: the next run may begin
    }
    bench.instrument.reset();  // returns although no prompt was answered
    EXPECT_EQ(prompter.shown, 2);
    EXPECT_EQ(bench.Heard(), "ST AB ST AB");
  });
}

// A stopped action has not run, so it can be started again.
TEST(StopTest, AStoppedActionCanBeStartedAgain) {
  InVirtualTime([] {
    Bench bench;
    const auto action = MakeTwoTests(bench);
    for (int i = 0; i < 2; ++i) {
      RecordingWatcher watcher;
      action->Start(&watcher, "0,0");
      action->Stop();
      EXPECT_EQ(watcher.Count("finished 0,0"), 1);
    }
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 2, 1min));
  });
}

TEST(StopTest, FromInsideACall) {
  for (const char* call : {"started 0,0", "status 0,0 Cooldown", "finished 0,0"}) {
    InVirtualTime([&] {
      Bench bench;
      const auto action = MakeTwoTests(bench);
      RecordingWatcher watcher;
      watcher.On(call, [&] { action->Stop(); });
      action->Start(&watcher, "0,0");
      EXPECT_TRUE(watcher.WaitForFinish());
      EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
      bench.instrument->SetRotorTime(0);
      EXPECT_EQ(watcher.Count("finished 0,0"), 1) << call;
    });
  }
}

TEST(StopTest, DestroyedFromInsideACall) {
  for (const char* call :
       {"started 0,0", "status 0,0 Cooldown", "status 0,0 Writing data", "finished 0,0"}) {
    InVirtualTime([&] {
      Bench bench;
      std::unique_ptr<CMeasureViscAction> action = MakeTwoTests(bench);
      RecordingWatcher watcher;
      watcher.On(call, [&] { action.reset(); });
      action->Start(&watcher, "0,0");
      EXPECT_TRUE(watcher.WaitForFinish());
      bench.instrument.reset();  // waits for the run's thread
      EXPECT_EQ(watcher.Count("finished 0,0"), 1) << call;
    });
  }
}

// A sample that is already being written is stored, even if the stop comes from inside the call
// that reports the writing.
TEST(StopTest, AStopWhileASampleIsWrittenKeepsTheSample) {
  InVirtualTime([] {
    Bench bench;
    const auto action = MakeTwoTests(bench);
    action->SetSampleId("kept");
    RecordingWatcher watcher;
    watcher.On("status 0,0 Writing data", [&] { action->Stop(); });
    action->Start(&watcher, "0,0");
    EXPECT_TRUE(watcher.WaitForFinish());
    EXPECT_TRUE(bench.host.samples.WaitForSamples(1, 1min));
    bench.instrument.reset();
    ASSERT_EQ(bench.host.samples.samples().size(), 1u);
    EXPECT_EQ(bench.host.samples.samples()[0].sampleId, "kept");
    EXPECT_EQ(bench.controller.CountCommands("ST"), 1);
    EXPECT_EQ(watcher.calls().back(), "finished 0,0");
  });
}

TEST(StopTest, AnotherThreadsStopWaitsForTheStoring) {
  InVirtualTime([] {
    Bench bench;
    platform::Event storing("test storing");
    platform::Event pause("test never set");
    bench.host.samples.beforeStore = [&](const Sample&) {
      storing.Set();
      pause.Wait(3s);  // a slow archive
    };
    const auto action = MakeTwoTests(bench);
    RecordingWatcher watcher;
    action->Start(&watcher, "0,0");
    EXPECT_TRUE(storing.Wait(1h));
    action->Stop();
    EXPECT_EQ(bench.host.samples.samples().size(), 1u);
    EXPECT_EQ(watcher.Count("finished 0,0"), 1);
  });
}

// A stop detaches the action first and sets the event afterwards. The run may check between the
// two.
TEST(StopTest, ARunThatIsDetachedBehindItsLastStepStoresNothing) {
  InVirtualTime([] {
    Bench bench;
    const auto action = MakeTwoTests(bench);
    RecordingWatcher watcher;
    LaunchRecord record(*bench.instrument, action.get(), &watcher, "0,0", 0, 0);
    watcher.On("status 0,0 IDLE", [&] {
      platform::RecursiveGuard guard(record.lock);
      record.watcher = nullptr;
      record.action = nullptr;
    });
    ViscRun::RunThread(record);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 2, 1min));
    EXPECT_EQ(bench.Heard(), "ST AB AB");
    EXPECT_TRUE(bench.host.samples.samples().empty());
    EXPECT_EQ(watcher.calls().back(), "status 0,0 IDLE");
  });
}

// --- By seeds -----------------------------------------------------------------------------------

// Two stops and the run's own end meet. Whichever ends the run, the watcher is told once and not
// called afterwards, and the stored samples are complete.
void StopAtSomeMoments(uint64_t seed) {
  InVirtualTime(
      [seed] {
        Bench bench;
        std::mt19937_64 random(seed);
        auto action = MakeTwoTests(bench);
        auto watcher = std::make_unique<RecordingWatcher>();
        platform::Event never("test never set");
        // The whole run takes about half a minute.
        std::uniform_int_distribution<int> moment(0, 45000);
        std::vector<std::shared_ptr<platform::Thread>> stoppers;
        action->Start(watcher.get(), "0,0");
        for (int i = 0; i < 2; ++i) {
          const platform::Milliseconds delay(moment(random));
          stoppers.push_back(platform::StartThread("stopper", [&, delay] {
            never.Wait(delay);
            action->Stop();
          }));
        }
        for (const auto& stopper : stoppers) stopper->Join();
        EXPECT_TRUE(watcher->WaitForFinish(1s));
        EXPECT_EQ(watcher->Count("finished 0,0"), 1) << "seed " << seed;
        EXPECT_LE(watcher->Count("started 0,0"), 1);
        EXPECT_EQ(watcher->calls().back(), "finished 0,0");
        const bool ran = action->HasRun() != 0;
        EXPECT_EQ(action->IsRunning(), 0);
        EXPECT_EQ(action->GetRunResult() == 1, ran);
        action.reset();
        watcher.reset();
        bench.instrument.reset();
        const ArrayOfSamples samples = bench.host.samples.samples();
        if (ran) {
          EXPECT_EQ(samples.size(), 2u);
        }
        EXPECT_GE(bench.controller.CountCommands("AB"), 1);
        EXPECT_EQ(bench.controller.commands().back().substr(2, 2), "AB");
        for (size_t i = 0; i < samples.size(); ++i) {
          EXPECT_EQ(samples[i].constants[5], i == 0 ? -20.0 : -10.0);
        }
        EXPECT_TRUE(bench.host.instruments.errors().empty());
      },
      seed);
}

TEST(StopBySeedsTest, EndsOnceWhoeverEndsIt) {
  for (uint64_t seed = 1; seed <= 150; ++seed) StopAtSomeMoments(seed);
}

TEST(StopBySeedsTest, AStopThatMeetsTheEndOfAMotorRun) {
  for (uint64_t seed = 1; seed <= 60; ++seed) {
    InVirtualTime(
        [seed] {
          Bench bench;
          bench.SetPreconditionTime(0);  // ends at once
          auto motor = bench.Make<CPreconditionMotorAction>(kPreconditionMotorAction);
          RecordingWatcher watcher;
          const auto stopper = platform::StartThread("stopper", [&] { motor->Stop(); });
          motor->Start(&watcher, "0,0");
          stopper->Join();
          EXPECT_TRUE(watcher.WaitForFinish(1s));
          motor.reset();
          bench.instrument.reset();
          EXPECT_EQ(watcher.Count("finished 0,0"), 1) << "seed " << seed;
        },
        seed);
  }
}

}  // namespace
}  // namespace rvx
