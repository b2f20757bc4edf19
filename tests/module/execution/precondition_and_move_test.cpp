// The sequencers of the tray's first and last stage.
#include "module/execution/move_state_machine.h"
#include "module/execution/precondition_state_machine.h"
#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

using MotorDriver = Driver<CPMStateMachine>;
using MoveDriver = Driver<CMSStateMachine>;

double SecondsBetween(platform::Microseconds from, platform::Microseconds to) {
  return std::chrono::duration<double>(to - from).count();
}

TEST(PreconditionTest, WithoutATimeNothingIsSent) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(0);
    bench.controller.SetOperation(4);  // not even a busy instrument stops it
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "");
  });
}

TEST(PreconditionTest, AColdCellIsNotCooled) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(2);
    bench.controller.SetTemperature(-15.01);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    // Two minutes at 240 rpm.
    EXPECT_EQ(bench.controller.commands(), (std::vector<std::string>{"0CPM020FA0"}));
    EXPECT_EQ(driver.watcher.calls(),
              (std::vector<std::string>{"status 0,4 Seek Speed", "status 0,4 Precondition Motor",
                                        "status 0,4 IDLE"}));
  });
}

TEST(PreconditionTest, AWarmCellIsCooledAndHeldFirst) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(-5.0);
    bench.controller.SetFollowing(false);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    EXPECT_FALSE(driver.RunUntil([&] { return driver.ended; }, 60s));
    bench.controller.SetTemperature(-14.45);  // not yet near enough
    EXPECT_FALSE(driver.RunUntil([&] { return driver.ended; }, 60s));
    bench.controller.SetTemperature(-15.45);
    const platform::Microseconds reached = platform::MonotonicTime();
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "TC TC PM");
    // On at -15 degrees C, off after ten seconds there.
    EXPECT_EQ(bench.controller.commands()[0], "0CTC01C16F");
    EXPECT_EQ(bench.controller.commands()[1], "0CTC00FFFF");
    EXPECT_NEAR(SecondsBetween(reached, bench.controller.CommandTimes("TC")[1]), 10.25, 0.3);
  });
}

TEST(PreconditionTest, ATargetThatIsNeverReachedCostsFiveMinutes) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(5.0);
    bench.controller.SetFollowing(false);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    const auto times = bench.controller.CommandTimes("TC");
    ASSERT_EQ(times.size(), 2u);
    // No hold of ten seconds follows.
    EXPECT_NEAR(SecondsBetween(times[0], times[1]), 300.0, 0.1);
  });
}

// Each re-send repeats the procedure from its start, with commands that are answered. Only the
// re-sends of the unanswered command are counted on, so that the run ends.
TEST(PreconditionTest, ADeafControllerEndsTheRun) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(-20.0);
    bench.controller.Ignore("PM", -1);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Action Abort : RVX Response Timeout.");
    EXPECT_EQ(driver.failure->sampleFailure, 1);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 4, 1min));
    EXPECT_EQ(bench.Heard(), "PM AB PM AB PM AB PM AB");
    const auto times = bench.controller.CommandTimes("PM");
    EXPECT_NEAR(SecondsBetween(times[2], times[3]), 12.002, 0.05);
  });
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(-10.0);
    bench.controller.SetFollowing(false);  // stays warm, so each start cools again
    bench.controller.Ignore("PM", -1);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 4, 1min));
    EXPECT_EQ(bench.Heard(), "TC TC PM AB TC TC PM AB TC TC PM AB TC TC PM AB");
  });
}

TEST(PreconditionTest, ARecoveredCommandHasItsReSendsBack) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(-20.0);
    bench.controller.Ignore("PM", 3);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.controller.CountCommands("PM"), 4);
  });
}

TEST(PreconditionTest, TroublesEndTheRunBehindAnAbort) {
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetOperation(3);
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Action Abort : RVX already in use.");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
  });
  InVirtualTime([] {
    Bench bench;
    bench.SetPreconditionTime(1);
    bench.controller.SetTemperature(-20.0);
    bench.controller.AtOperation(3, [&] { bench.controller.SetMachineStatus(0x02); });
    bench.WaitForStatus();
    MotorDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "RVX is not ready. Tray will be paused.");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
  });
}

// --- Moves --------------------------------------------------------------------------------------

TEST(MoveTest, FollowsTheMoveToItsEnd) {
  InVirtualTime([] {
    Bench bench;
    MoveDriver driver(bench);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.controller.commands(), (std::vector<std::string>{"0CMP04"}));
    EXPECT_EQ(driver.watcher.calls(),
              (std::vector<std::string>{"status 0,4 Locate Sample", "status 0,4 IDLE"}));
  });
}

TEST(MoveTest, AnInstrumentThatIsThereAlreadyEndsItAtOnce) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetPlaying(false);  // it answers, but no stepper ever moves
    MoveDriver driver(bench);
    EXPECT_TRUE(driver.RunUntil([&] { return driver.ended; }, 2s));
    EXPECT_EQ(bench.Heard(), "MP");
  });
}

TEST(MoveTest, ARefusalEndsItWithTheInstrumentsReason) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.Refuse("MP", 0x42, 1);
    MoveDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message,
              "The stepper motors must be homed before initiating the requested operation.");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), "MP AB");
  });
}

TEST(MoveTest, ADeafControllerEndsTheMove) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.Ignore("MP", -1);
    MoveDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Action Abort : RVX Response Timeout.");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 4, 1min));
    EXPECT_EQ(bench.Heard(), "MP AB MP AB MP AB MP AB");
  });
}

// A thread that was held up while the instrument was busy only needs to see that it is idle now.
TEST(MoveTest, WhatTheInstrumentDidBeforeIsNotAskedFor) {
  InVirtualTime([] {
    Bench bench;
    MoveDriver driver(bench);
    bench.controller.SetOperation(11);
    for (int frame = 0; frame < 3; ++frame) bench.WaitForStatus();
    bench.controller.SetOperation(0);
    bench.WaitForStatus();
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(bench.Heard(), "MP");
  });
}

// Frames that came before a reply are handled before it. Otherwise a frame from before the move
// would show that no stepper moves any more.
TEST(MoveTest, AReplyIsNotTakenBeforeTheFramesThatCameFirst) {
  InVirtualTime([] {
    Bench bench;
    MoveDriver driver(bench);
    bench.instrument->SetInjection(false, nullptr);
    driver.machine.Step();
    ASSERT_TRUE(bench.controller.WaitForCommands("MP", 1, 1min));
    platform::Sleep(1s);
    driver.Run();
    EXPECT_TRUE(driver.ended);
    EXPECT_EQ(driver.watcher.calls(),
              (std::vector<std::string>{"status 0,4 Locate Sample", "status 0,4 IDLE"}));
  });
}

TEST(MoveTest, ABusyInstrumentIsNotMoved) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetOperation(11);
    bench.WaitForStatus();
    MoveDriver driver(bench);
    driver.Run();
    ASSERT_TRUE(driver.failure);
    EXPECT_EQ(driver.failure->message, "Action Abort : RVX already in use.");
    EXPECT_TRUE(bench.controller.WaitForCommands("AB", 1, 1min));
    EXPECT_EQ(bench.Heard(), "AB");
  });
}

}  // namespace
}  // namespace rvx
