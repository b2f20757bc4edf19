// Runs of a tray from start to end, with pauses, aborts, failures and changes on the way.
#include <gtest/gtest.h>

#include "platform/thread.h"
#include "tests/module/entry/tray_fixture.h"

namespace rvx {
namespace {

using Lines = std::vector<std::string>;

std::string StartFailure(C_RVX& instrument, TrayWatcher* watcher, int32_t* kind = nullptr) {
  try {
    instrument.StartTray(watcher);
  } catch (ActionException* raised) {
    const std::unique_ptr<ActionException> owned(raised);
    if (kind != nullptr) *kind = owned->GetRecord().kind;
    EXPECT_EQ(owned->GetRecord().sampleFailure, 1);
    return owned->GetRecord().message;
  }
  return std::string();
}

// An action that refuses to start, with a failure of the given kind.
class RefusingAction : public CBaseAction {
 public:
  RefusingAction(C_RVX& instrument, int32_t kind) : CBaseAction(instrument, 606), kind_(kind) {}
  void Start(ActionWatcher*, const std::string&) override {
    ActionErrorRecord record;
    record.message = "refused";
    record.kind = kind_;
    throw new ActionException(record);
  }
  std::string GetClassName() override { return "Refusing Action"; }

 private:
  int32_t kind_;
};

TEST(TrayTest, RunsFilledPositionsAndGapsInOrderAndStoresEachTest) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({1, 4});
    EXPECT_EQ(bench.instrument->StartTray(&bench.log), 1);
    EXPECT_EQ(StartFailure(*bench.instrument, nullptr), "Tray is being used - ");
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    // The precondition stage and the move back are reported with position 0.
    EXPECT_EQ(bench.log.events(),
              (Lines{"tray started", "started 0", "started 0", "finished 0", "started 1",
                     "finished 1", "started 2", "finished 2", "started 3", "finished 3",
                     "started 4", "finished 4", "started 0", "tray finished"}));
    EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{2, 5}));
    EXPECT_TRUE(bench.TrayIsEmpty());
    EXPECT_EQ(bench.instrument->IsTrayRunning(), 0);
    EXPECT_EQ(bench.controller.CountCommands("MP"), 1);
    EXPECT_EQ(bench.controller.CountCommands("PM"), 0);  // the precondition time is 0
    EXPECT_TRUE(bench.ErrorTexts().empty());
  });
}

TEST(TrayTest, RefusesAWarmCellAnEmptyTrayAndASystemWithoutThreads) {
  RunVirtual([] {
    TrayBench bench;
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.log.events(), Lines{"tray finished"});  // nothing was announced as started
    bench.Fill({0});
    bench.controller.SetTemperature(10.5);
    bench.WaitForStatus();
    EXPECT_EQ(StartFailure(*bench.instrument, nullptr).substr(0, 24), "RVX cell is too warm. Pl");
    bench.controller.SetTemperature(9.5);
    bench.WaitForStatus();
    platform::FailThreadStarts(1);
    int32_t kind = 0;
    EXPECT_EQ(StartFailure(*bench.instrument, nullptr, &kind),
              "Could not start thread due to computer error.");
    EXPECT_EQ(kind, 1);
    EXPECT_EQ(bench.instrument->IsTrayRunning(), 0);
    EXPECT_EQ(StartFailure(*bench.instrument, &bench.log), "");
    ASSERT_TRUE(bench.log.WaitFor("tray finished", 2));
  });
}

TEST(TrayTest, APauseBehindTheSampleWaitsForItAndAPauseNowRunsItAgain) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0, 1});
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Run Test"));
    bench.instrument->PauseTray(0, 0);
    EXPECT_EQ(bench.instrument->IsTrayActive(), 1);  // still active until the sample ends
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    EXPECT_EQ(bench.instrument->IsTrayPaused(), 1);
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
    EXPECT_EQ(bench.instrument->ContinueTray(), 1);
    EXPECT_EQ(bench.instrument->ContinueTray(), bench.instrument->IsTrayPaused());

    ASSERT_TRUE(bench.log.WaitFor("status 1 Cooldown"));
    const int abortsBefore = bench.controller.CountCommands("AB");
    bench.instrument->PauseTray(0, 1);
    ASSERT_TRUE(bench.log.WaitFor("paused", 2));
    bench.instrument->PauseTray(0, 1);  // no effect in a pause
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{1, 2}));
    EXPECT_EQ(bench.log.Count("started 1"), 2);
    EXPECT_EQ(bench.log.Count("finished 1"), 1);
    EXPECT_GT(bench.controller.CountCommands("AB"), abortsBefore);
  });
}

TEST(TrayTest, APauseBehindTheLastSampleNeverComes) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0});
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Run Test"));
    bench.instrument->PauseTray(0, 0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.log.Count("paused"), 0);
  });
}

TEST(TrayTest, AnAbortEndsTheRunAtEveryMomentWithOneFinishAndACab) {
  for (const char* moment : {"tray started", "started 0", "status 0 Locate Sample",
                             "status 0 Run Test", "status 0 Writing data", "finished 0"}) {
    for (uint64_t seed = 1; seed <= 5; ++seed) {
      RunVirtual(
          [moment] {
            TrayBench bench;
            bench.Fill({0, 1});
            bench.instrument->StartTray(&bench.log);
            ASSERT_TRUE(bench.log.WaitFor(moment)) << moment;
            EXPECT_EQ(bench.instrument->QueryAbortTray(), 1);
            ASSERT_TRUE(bench.log.WaitFor("tray finished"));
            bench.instrument.reset();  // waits for every thread of the run
            EXPECT_EQ(bench.log.Count("tray finished"), 1);
            EXPECT_EQ(bench.log.events().back(), "tray finished") << moment;
            if (bench.controller.CountCommands("ST") > 0) {
              EXPECT_GT(bench.controller.CountCommands("AB"), 0) << moment;
            }
          },
          seed);
    }
  }
}

// A run empties the tray when it ends. It must have done so before it counts as ended.
TEST(TrayTest, ATrayThatIsFilledAsSoonAsTheLastOneHasEndedKeepsItsSamples) {
  for (uint64_t seed = 1; seed <= 40; ++seed) {
    RunVirtual(
        [] {
          TrayBench bench;
          TrayLog next;
          bench.Fill({0});
          bench.instrument->StartTray(&bench.log);
          ASSERT_TRUE(bench.log.WaitFor("finished 0"));
          while (bench.instrument->IsTrayRunning() != 0) platform::Sleep(1ms);
          bench.Fill({1});
          bench.instrument->StartTray(&next);
          ASSERT_TRUE(next.WaitFor("tray finished"));
          EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{1, 2}));
        },
        seed);
  }
}

TEST(TrayTest, NoToTheQuestionChangesNothing) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0});
    EXPECT_EQ(bench.instrument->QueryAbortTray(), 0);  // no question, since nothing runs
    EXPECT_TRUE(bench.prompter.messages.empty());
    bench.prompter.answer = platform::MessageAnswer::No;
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Cooldown"));
    EXPECT_EQ(bench.instrument->QueryAbortTray(), 0);
    bench.instrument->LoadSettingsText(bench.instrument->SaveSettingsText(), kLoadAll);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
    EXPECT_EQ(bench.prompter.messages.front(), "Do you wish to stop running samples now?");
  });
}

TEST(TrayTest, AnInstrumentThatIsNotReadyPausesTheTrayUntilItIs) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0, 1});
    bench.log.onLine = [&bench](const std::string& line) {
      if (line == "finished 0") bench.controller.SetMachineStatus(0x02);
    };
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("paused", 2));  // still not ready
    const ActionErrorRecord error = bench.host.instruments.errors().back();
    EXPECT_EQ(error.message, "RVX is not ready. Tray will be paused.");
    EXPECT_EQ(error.tray, 1);
    EXPECT_EQ(error.position, 2);
    EXPECT_EQ(bench.log.Count("started 1"), 0);
    bench.controller.SetMachineStatus(0);
    bench.WaitForStatus();
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{1, 2}));
  });
}

// A pause after the sample that is requested while "not ready" is being reported must not replace
// the immediate pause: no sample is running that it could wait for.
TEST(TrayTest, APauseRequestDuringTheReportOfNotReadyDoesNotHangTheTray) {
  for (uint64_t seed = 1; seed <= 40; ++seed) {
    RunVirtual(
        [] {
          TrayBench bench;
          bench.Fill({0});
          bench.controller.SetMachineStatus(0x02);
          bench.WaitForStatus();
          bench.instrument->StartTray(&bench.log);
          ASSERT_TRUE(bench.host.instruments.WaitForErrors(1, 60s));
          bench.instrument->PauseTray(0, 0);
          ASSERT_TRUE(bench.log.WaitFor("paused"));
          bench.controller.SetMachineStatus(0);
          bench.WaitForStatus();
          bench.instrument->ResumeTray(0);
          ASSERT_TRUE(bench.log.WaitFor("tray finished"));
        },
        seed);
  }
}

TEST(TrayTest, APauseWhileTheLastTestIsStoredDoesNotRunTheSampleAgain) {
  for (uint64_t seed = 1; seed <= 40; ++seed) {
    RunVirtual(
        [] {
          TrayBench bench;
          bench.Fill({0, 1});
          bench.host.samples.beforeStore = [&bench](const Sample& sample) {
            if (sample.position == 1) bench.instrument->PauseTray(0, 1);
            platform::Sleep(5ms);
          };
          bench.instrument->StartTray(&bench.log);
          ASSERT_TRUE(bench.log.WaitFor("paused"));
          bench.WaitForStatus();
          bench.instrument->ResumeTray(0);
          ASSERT_TRUE(bench.log.WaitFor("tray finished"));
          EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{1, 2}));
        },
        seed);
  }
}

TEST(TrayTest, AnInstrumentThatGoesSilentInTheMiddleOfATestIsNoticed) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0});
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Cooldown"));  // from now on frames come unasked
    bench.controller.SetSilent(true);
    const platform::Microseconds begin = platform::MonotonicTime();
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    EXPECT_LE(platform::MonotonicTime() - begin, 25s);
    EXPECT_EQ(bench.ErrorTexts().front(), "Instrument not responding.");
  });
}

TEST(TrayTest, AnActionThatRefusesToStartPausesOrEndsTheStageByItsKind) {
  RunVirtual([] {
    TrayBench bench;
    bench.Put(0, new RefusingAction(*bench.instrument, 0));
    bench.Fill({1});
    bench.Put(29, new RefusingAction(*bench.instrument, 0));  // nothing comes after it
    bench.instrument->StartTray(&bench.log);
    for (int pause = 1; pause <= 2; ++pause) {
      ASSERT_TRUE(bench.log.WaitFor("paused", pause));
      EXPECT_EQ(bench.ErrorTexts(), Lines(static_cast<size_t>(pause), "refused"));
      EXPECT_EQ(bench.instrument->ContinueTray(), 1);  // a resume ends it, not only an abort
      bench.instrument->ResumeTray(0);                 // a second one does nothing
    }
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{2});
    EXPECT_EQ(bench.log.Count("paused"), 2);

    bench.Put(0, new RefusingAction(*bench.instrument, 1));
    bench.Fill({1});
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("tray finished", 2));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{2});  // the third stage came immediately
    EXPECT_EQ(bench.controller.CountCommands("MP"), 2);

    bench.Put(0, new RefusingAction(*bench.instrument, 0));
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("paused", 3));
    EXPECT_EQ(bench.instrument->QueryAbortTray(), 1);
    ASSERT_TRUE(bench.log.WaitFor("tray finished", 3));
    EXPECT_EQ(bench.log.Count("resumed"), 2);
  });
}

// The computer can't start the thread of the first stage: that is reported, and the samples run.
TEST(TrayTest, AStageThatCannotStartIsLeftOut) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0});
    bench.log.onLine = [](const std::string& line) {
      if (line == "tray started") platform::FailThreadStarts(1);
    };
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.ErrorTexts(),
              Lines{"Could not start 'RVX Precondition Motor Action' due to computer error."});
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
  });
}

TEST(TrayTest, OfTwoStartsAtOnceOneIsRefused) {
  for (uint64_t seed = 1; seed <= 60; ++seed) {
    RunVirtual(
        [] {
          TrayLog other;  // outlives the bench, whose run may still call it
          TrayBench bench;
          bench.Fill({0});
          std::string refusals[2];
          const std::shared_ptr<platform::Thread> second = platform::StartThread(
              "second start", [&] { refusals[1] = StartFailure(*bench.instrument, &other); });
          refusals[0] = StartFailure(*bench.instrument, &bench.log);
          second->Join();
          EXPECT_EQ(refusals[0] + refusals[1], "Tray is being used - ");
          ASSERT_TRUE((refusals[0].empty() ? bench.log : other).WaitFor("tray finished"));
          EXPECT_TRUE((refusals[0].empty() ? other : bench.log).events().empty());
          EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
        },
        seed);
  }
}

TEST(TrayTest, AsksForACheckStandardFromTheIntervalOn) {
  struct Case {
    int32_t samples;
    const char* message;
  };
  for (const Case& c :
       {Case{24, nullptr}, Case{25, "A check standard is due ( 25 samples have been run)."},
        Case{kNeverChecked, "A check standard is due (one has never been run)."}}) {
    RunVirtual([&c] {
      TrayBench bench;
      bench.instrument->Lock();
      bench.instrument->configuration().fields.checkStandardFlag = 1;
      bench.instrument->configuration().fields.samplesSinceCheck = c.samples;
      bench.instrument->Unlock();
      bench.Put(0, bench.instrument->CreateActionByIndex(kCheckViscAction));
      bench.instrument->StartTray(&bench.log);
      ASSERT_TRUE(bench.log.WaitFor("tray finished"));
      EXPECT_EQ(bench.ErrorTexts(), c.message == nullptr ? Lines{} : Lines{c.message});
      ConfigurationGuard guard(bench.instrument->configuration());
      EXPECT_EQ(bench.instrument->configuration().fields.samplesSinceCheck, 0);  // one was verified
    });
  }
}

TEST(TrayTest, APauseInTheFirstStageNeedsNoQuestionAndStartsItAnew) {
  RunVirtual([] {
    TrayBench bench;
    bench.instrument->Lock();
    bench.instrument->configuration().fields.testRecord.preconditionTime = 1;
    bench.instrument->Unlock();
    bench.Fill({0});
    EXPECT_EQ(bench.instrument->QueryPauseTray(), 0);
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Precondition Motor"));
    EXPECT_EQ(bench.instrument->QueryPauseTray(), 1);
    EXPECT_EQ(bench.prompter.choices, 0);
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    bench.WaitForStatus();  // it is not ready until it shows that it has stopped
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("status 0 Cooldown"));
    EXPECT_EQ(bench.controller.CountCommands("PM"), 2);
    bench.prompter.choice = std::nullopt;
    EXPECT_EQ(bench.instrument->QueryPauseTray(), 0);  // cancelled
    bench.prompter.choice = 0;
    EXPECT_EQ(bench.instrument->QueryPauseTray(), 1);
    ASSERT_TRUE(bench.log.WaitFor("paused", 2));
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
  });
}

TEST(TrayTest, LosingContactPausesAtOnceAndNothingResumesByItself) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({0});
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("finished 0"));  // the next frames are polls of the move
    bench.controller.SetSilent(true);
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    EXPECT_EQ(bench.ErrorTexts().front(), "Instrument not responding.");
    bench.controller.SetSilent(false);
    platform::Sleep(600s);
    EXPECT_EQ(bench.instrument->IsTrayPaused(), 1);
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
  });
}

TEST(TrayTest, TheInstrumentTakesItsRunWithItWhateverTheAnswerIs) {
  for (const platform::MessageAnswer answer :
       {platform::MessageAnswer::Yes, platform::MessageAnswer::No}) {
    RunVirtual([answer] {
      TrayBench bench;
      bench.prompter.answer = answer;
      bench.Fill({0, 1});
      bench.instrument->StartTray(&bench.log);
      ASSERT_TRUE(bench.log.WaitFor("status 0 Run Test"));
      bench.instrument.reset();
      EXPECT_EQ(bench.log.Count("tray finished"), 1);
      EXPECT_GE(bench.controller.CountCommands("AB"), 1);
      // The answer No can't be carried out, which is reported.
      EXPECT_EQ(bench.ErrorTexts().size(), answer == platform::MessageAnswer::No ? 1u : 0u);
      // The text that was stored first still contains the tray.
      EXPECT_NE(bench.host.instrumentArchive.GetText("RVXCOM1:0").find("oil 1"), std::string::npos);
    });
  }
}

}  // namespace
}  // namespace rvx
