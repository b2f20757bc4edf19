// What a host may do in the calls of its tray watcher, and what ends the program.
#include <gtest/gtest.h>

#include "tests/module/entry/tray_fixture.h"

namespace rvx {
namespace {

using Lines = std::vector<std::string>;

TEST(TrayWatcherTest, AnAbortFromInsideAWatchersCallIsAsGood) {
  for (const char* moment :
       {"tray started", "started 0", "status 0 Cooldown", "finished 0", "paused"}) {
    RunVirtual([moment] {
      TrayBench bench;
      bench.Fill({0, 1});
      C_RVX* instrument = bench.instrument.get();
      bench.log.onLine = [instrument, moment](const std::string& line) {
        if (line == moment) instrument->QueryAbortTray();
      };
      bench.instrument->StartTray(&bench.log);
      if (moment == std::string("paused")) {
        ASSERT_TRUE(bench.log.WaitFor("status 0 Cooldown"));
        bench.instrument->PauseTray(0, 1);
      }
      ASSERT_TRUE(bench.log.WaitFor("tray finished")) << moment;
      EXPECT_EQ(bench.log.Count("tray finished"), 1);
      EXPECT_EQ(bench.log.Count("resumed"), 0);
      EXPECT_TRUE(bench.TrayIsEmpty());
    });
  }
}

// Throws one of the kinds of objects that a host may throw.
[[noreturn]] void RaiseSomething(int which) {
  switch (which % 3) {
    case 0:
      throw new InvalidException;
    case 1:
      throw std::runtime_error("no window");
    default:
      throw 1;
  }
}

// Whatever a host throws in its watcher, the run goes on and the failure is reported, if the host
// can take a report at all.
TEST(TrayWatcherTest, AWatcherThatThrowsDoesNotDisturbTheRun) {
  for (const bool hostFails : {false, true}) {
    RunVirtual([hostFails] {
      TrayBench bench;
      bench.Fill({1});
      int calls = 0;
      bench.log.onLine = [&](const std::string&) { RaiseSomething(++calls); };
      int reports = 0;
      if (hostFails) {
        bench.host.instruments.onError = [&](const ActionErrorRecord&) {
          RaiseSomething(reports++);
        };
      }
      bench.instrument->StartTray(&bench.log);
      ASSERT_TRUE(bench.log.WaitFor("tray finished"));
      EXPECT_EQ(bench.StoredPositions(), (std::vector<int>{2}));
      EXPECT_TRUE(bench.TrayIsEmpty());
      bench.instrument.reset();
      if (hostFails) {
        EXPECT_EQ(reports, calls);
        return;
      }
      const Lines errors = bench.ErrorTexts();
      EXPECT_EQ(errors.size(), static_cast<size_t>(calls));
      EXPECT_EQ(errors.front().substr(0, 61),
                "The host failed when it was told of TrayStarted (no window), ");
    });
  }
}

using TrayWatcherDeathTest = testing::Test;

// The destructor could only wait for ever. Instead it stops the instrument and ends the program
// with a message for the host's developer.
TEST(TrayWatcherDeathTest, AnInstrumentThatIsDestroyedFromInsideItsOwnCallEndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const char* line : {"tray started", "started 1", "status 1 Cooldown", "tray finished"}) {
    EXPECT_DEATH(RunVirtual([&] {
                   TrayBench bench;
                   bench.Fill({1});
                   bench.log.onLine = [&](const std::string& told) {
                     if (told == line) bench.instrument.reset();
                   };
                   bench.instrument->StartTray(&bench.log);
                   bench.log.WaitFor("tray finished");
                   platform::Sleep(1h);
                 }),
                 "destroyed from inside a call that it makes");
  }
}

TEST(TrayWatcherTest, AHostMayStartTheNextTrayFromInsideTheEndOfTheLast) {
  RunVirtual([] {
    TrayBench bench;
    TrayLog next;
    bench.Fill({0, 1});
    C_RVX* instrument = bench.instrument.get();
    bench.log.onLine = [&](const std::string& line) {
      if (line == "tray started") instrument->QueryAbortTray();
      if (line != "tray finished") return;
      bench.Fill({2});
      instrument->StartTray(&next);
    };
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(next.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{3});
  });
}

TEST(TrayWatcherTest, AWatcherMayPauseFromInsideTheCallOfAnEmptyPosition) {
  RunVirtual([] {
    TrayBench bench;
    bench.Fill({2});
    bench.log.onLine = [&bench](const std::string& line) {
      if (line == "started 1") bench.instrument->PauseTray(0, 0);
    };
    bench.instrument->StartTray(&bench.log);
    ASSERT_TRUE(bench.log.WaitFor("paused"));
    bench.instrument->ResumeTray(0);
    ASSERT_TRUE(bench.log.WaitFor("tray finished"));
    EXPECT_EQ(bench.StoredPositions(), std::vector<int>{3});
  });
}

TEST(TrayWatcherTest, ARunNeedsNoWatcher) {
  RunVirtual([] {
    TrayBench bench;
    for (const bool abort : {false, true}) {
      bench.Fill({0});
      bench.instrument->StartTray(nullptr);
      if (abort) bench.instrument->QueryAbortTray();
      while (bench.instrument->IsTrayRunning() != 0) platform::Sleep(1s);
      EXPECT_EQ(bench.StoredPositions(), std::vector<int>{1});
      EXPECT_TRUE(bench.TrayIsEmpty());
    }
  });
}

}  // namespace
}  // namespace rvx
