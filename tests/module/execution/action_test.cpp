// What actions have in common: the table of the eighteen, starting, ending, editing.
#include <system_error>

#include "module/execution/check_visc_action.h"
#include "module/execution/measure_visc_action.h"
#include "module/execution/move_stepper_action.h"
#include "module/execution/null_action.h"
#include "module/execution/precondition_motor_action.h"
#include "module/execution/sample_action_editor.h"
#include "module/execution/view_action.h"
#include "platform/thread.h"
#include "tests/module/execution/bench.h"

namespace rvx {
namespace {

// The record of the ActionException that an operation throws.
std::optional<ActionErrorRecord> Raised(const std::function<void()>& operation) {
  try {
    operation();
  } catch (ActionException* raised) {
    ActionErrorRecord record = raised->GetRecord();
    delete raised;
    return record;
  }
  return std::nullopt;
}

TEST(ActionTableTest, MakesEighteenActionsByIndexAndKey) {
  struct Expected {
    const char* label;
    const char* key;
  };
  const std::vector<Expected> all = {
      {"No action", "Null Action"},
      {"Measure Viscosity", "RVX Measure Viscosity Action"},
      {"Verify Known Viscosity", "RVX Check Viscosity Action"},
      {"RVX Monitor", "RVX Monitor Action"},
      {"RVX Set Motor Current Service", "RVX Set Motor Current Action"},
      {"RVX Stepper Motor Service", "RVX Stepper Motor Service Action"},
      {"Instrument Settings", "RVX General Configuration"},
      {"Tray (Test) Settings", "RVX Test Configuration"},
      {"Calibration", "RVX Calib Configure"},
      {"RVX Calibration Standards", "RVX Cal Standards Configuration"},
      {"RVX Choose Calibration Standards", "RVX Choose Calibration Standards"},
      {"Precondition Motor", "RVX Precondition Motor Action"},
      {"Move to Sample Position", "RVX Move Stepper Action"},
      {"Current Cell Calibration Constants", "RVX Current Cell Calibrations"},
      {"RVX Setup", "RVX Setup"},
      {"RVX Sample List Service", "RVX Sample List Action"},
      {"Print Instrument Settings", "RVX Print Settings"},
      {"RVX Temperature Verification Service", "RVX Temperature Verification Action"}};
  InVirtualTime([&] {
    Bench bench;
    ASSERT_EQ(GetActionTable().size(), all.size());
    for (size_t i = 0; i < all.size(); ++i) {
      const std::unique_ptr<Action> action(
          bench.instrument->CreateActionByIndex(static_cast<int32_t>(i)));
      EXPECT_EQ(action->GetLabel(), all[i].label);
      EXPECT_EQ(action->GetClassName(), all[i].key);
      EXPECT_EQ(GetActionTable()[i].classKey, all[i].key);
      EXPECT_EQ(action->IsConfigured(), i == 1 || i == 2 ? 0 : 1) << all[i].key;
      EXPECT_EQ(action->GetRunResult(), -1);
      if (i != 1 && i != 2) {
        EXPECT_EQ(action->Edit(), 1);
      }
    }
  });
}

TEST(NullActionTest, ReportsAtOnce) {
  InVirtualTime([] {
    CNullAction action;
    action.Start(nullptr, "x");
    EXPECT_EQ(action.HasRun(), 1);
    RecordingWatcher watcher;
    action.Start(&watcher, "0,3");
    EXPECT_EQ(watcher.calls(), (std::vector<std::string>{"started 0,3", "finished 0,3"}));
    action.SetSampleId("blank");
    EXPECT_EQ(action.GetStateText(), "blank");
  });
}

// --- Actions with a screen ----------------------------------------------------------------------

struct TestFrame {
  std::atomic<bool> open{true};
  std::atomic<int> destroyed{0};
  platform::Event created{"test screen created"};
};

class TestHandle final : public FrameWindow {
 public:
  explicit TestHandle(TestFrame& frame) : frame_(frame) {}
  bool Exists() override { return frame_.open; }
  void Destroy() override {
    frame_.open = false;
    ++frame_.destroyed;
  }

 private:
  TestFrame& frame_;
};

// Without a frame it only brings an open screen to the front.
class FramedAction final : public CScreenAction {
 public:
  FramedAction(C_RVX& instrument, TestFrame* frame)
      : CScreenAction(instrument, kMonitorAction, 550, std::string()) {
    SetScreenMaker(kMonitorAction, [frame](const ScreenRequest&) -> FrameWindow* {
      if (frame == nullptr) return nullptr;
      frame->created.Set();
      return new TestHandle(*frame);
    });
  }
  ~FramedAction() override { SetScreenMaker(kMonitorAction, nullptr); }
};

TEST(ScreenTest, EndsWhenTheUserClosesIt) {
  InVirtualTime([] {
    TestFrame frame;  // outlives the screen's thread, for which the instrument waits
    Bench bench;
    FramedAction action(*bench.instrument, &frame);
    RecordingWatcher watcher;
    action.Start(&watcher, "no comma is no error");
    EXPECT_FALSE(watcher.WaitForFinish(5s));
    EXPECT_EQ(action.IsRunning(), 1);
    frame.open = false;
    EXPECT_TRUE(watcher.WaitForFinish(1s));
    action.Stop();
    EXPECT_EQ(watcher.calls().size(), 2u);
    EXPECT_EQ(frame.destroyed, 0);
    EXPECT_EQ(action.IsRunning(), 0);
  });
}

TEST(ScreenTest, AStopDestroysIt) {
  InVirtualTime([] {
    TestFrame frame;  // outlives the screen's thread, for which the instrument waits
    Bench bench;
    RecordingWatcher watcher;
    {
      FramedAction action(*bench.instrument, &frame);
      action.Start(&watcher, "0,0");
      EXPECT_TRUE(frame.created.Wait(1s));
      action.Stop();
      EXPECT_EQ(watcher.calls(), (std::vector<std::string>{"started 0,0", "finished 0,0"}));
      action.Stop();
    }
    EXPECT_EQ(watcher.calls().size(), 2u);
    bench.instrument.reset();  // waits for the screen's thread
    EXPECT_EQ(frame.destroyed, 1);
  });
}

TEST(ScreenTest, ADyingInstrumentClosesIt) {
  InVirtualTime([] {
    TestFrame frame;  // outlives the screen's thread, for which the instrument waits
    Bench bench;
    RecordingWatcher watcher;
    auto action = std::make_unique<FramedAction>(*bench.instrument, &frame);
    action->Start(&watcher, "0,0");
    EXPECT_TRUE(frame.created.Wait(1s));
    bench.instrument.reset();
    EXPECT_EQ(frame.destroyed, 1);
    EXPECT_EQ(watcher.calls(), (std::vector<std::string>{"started 0,0", "finished 0,0"}));
    EXPECT_EQ(action->IsRunning(), 0);
  });
}

TEST(ScreenTest, AScreenThatIsOpenAlreadyEndsTheNewActionSoon) {
  InVirtualTime([] {
    Bench bench;
    FramedAction action(*bench.instrument, nullptr);
    RecordingWatcher watcher;
    action.Start(&watcher, "0,0");
    EXPECT_TRUE(watcher.WaitForFinish(101ms));
    EXPECT_EQ(watcher.calls(), (std::vector<std::string>{"started 0,0", "finished 0,0"}));
  });
}

TEST(ScreenTest, WhatTheProgramCannotShowIsRefusedWithASentence) {
  InVirtualTime([] {
    Bench bench;
    RecordingWatcher watcher;
    const auto monitor = bench.Make<CScreenAction>(kMonitorAction);
    const auto refusal = [&] {
      const auto record = Raised([&] { monitor->Start(&watcher, "0,0"); });
      return record ? record->message : std::string();
    };
    EXPECT_NE(refusal().find("without a display"), std::string::npos);
    // An action without a screen, which does its work in Edit.
    const auto print = bench.Make<CScreenAction>(kPrintConfigAction);
    EXPECT_EQ(print->GetUse(), ScreenAction::Use::None);
    SetActionEditor(kPrintConfigAction, [](C_RVX&) { return 7; });
    EXPECT_EQ(print->GetUse(), ScreenAction::Use::Edit);
    EXPECT_EQ(print->Edit(), 7);
    EXPECT_NE(refusal().find("no screen in this version"), std::string::npos);
    SetActionEditor(kPrintConfigAction, nullptr);
    SetScreenMaker(kMonitorAction, [](const ScreenRequest&) { return nullptr; });
    bench.host.security.SetUser("", 9);
    EXPECT_NE(refusal().find("\"RVX Monitor\" needs level 10"), std::string::npos);
    SetScreenMaker(kMonitorAction, nullptr);
    EXPECT_TRUE(watcher.calls().empty());
  });
}

TEST(ScreenTest, ASecondStartAndAFailedOneSayWhy) {
  InVirtualTime([] {
    TestFrame frame;  // outlives the screen's thread, for which the instrument waits
    Bench bench;
    FramedAction action(*bench.instrument, &frame);
    platform::FailThreadStarts(1);
    auto record = Raised([&] { action.Start(nullptr, "3,4"); });
    ASSERT_TRUE(record);
    EXPECT_EQ(record->message, "Could not start '' due to computer error.");
    EXPECT_EQ(record->code, MessageCode::ComputerError);
    EXPECT_EQ(record->tray, 4);
    EXPECT_EQ(record->position, 5);
    EXPECT_EQ(record->kind, 0);
    EXPECT_EQ(record->sampleFailure, 0);
    EXPECT_EQ(action.IsRunning(), 0);
    RecordingWatcher watcher;
    action.Start(&watcher, "0,0");
    record = Raised([&] { action.Start(&watcher, "0,0"); });
    ASSERT_TRUE(record);
    EXPECT_EQ(record->message, "'' is running.");
    EXPECT_EQ(record->code, MessageCode::ActionRunning);
    action.Stop();
    EXPECT_EQ(watcher.Count("finished 0,0"), 1);
  });
}

// --- Starts of the actions without a screen -----------------------------------------------------

TEST(StartTest, ContextsOutsideTheTrayAreRefused) {
  InVirtualTime([] {
    Bench bench;
    for (const char* context : {"5", "", "1,0", "0,-1", "0,30", "-1,0"}) {
      const auto sample = bench.Make<CMeasureViscAction>(kMeasureViscAction);
      auto record = Raised([&] { sample->Start(nullptr, context); });
      ASSERT_TRUE(record) << context;
      EXPECT_EQ(record->message,
                "Could not start 'RVX Measure Viscosity Action' due to invalid context.");
      EXPECT_EQ(record->sampleFailure, 1);
      EXPECT_EQ(record->kind, 0);
      const auto move = bench.Make<CMoveStepperAction>(kMoveStepperAction);
      record = Raised([&] { move->Start(nullptr, context); });
      ASSERT_TRUE(record) << context;
      EXPECT_EQ(record->message,
                "Could not start 'RVX Move Stepper Action' due to invalid context.");
    }
    EXPECT_EQ(bench.Heard(), "");
  });
}

TEST(StartTest, NoThreadIsAComputerFailure) {
  InVirtualTime([] {
    Bench bench;
    for (const ActionIndex index :
         {kMeasureViscAction, kPreconditionMotorAction, kMoveStepperAction}) {
      const std::unique_ptr<Action> action(bench.instrument->CreateActionByIndex(index));
      platform::FailThreadStarts(1);
      RecordingWatcher watcher;
      const auto record = Raised([&] { action->Start(&watcher, "0,0"); });
      ASSERT_TRUE(record);
      EXPECT_EQ(record->message,
                "Could not start '" + action->GetClassName() + "' due to computer error.");
      EXPECT_EQ(record->kind, 1);
      EXPECT_EQ(record->sampleFailure, 1);
      EXPECT_EQ(action->IsRunning(), 0);
      action->Stop();
      EXPECT_TRUE(watcher.calls().empty());
    }
  });
}

TEST(StartTest, AMoveAndAPreconditionRunAgainBehindTheirEnd) {
  InVirtualTime([] {
    Bench bench;
    const auto move = bench.Make<CMoveStepperAction>(kMoveStepperAction);
    for (int i = 0; i < 2; ++i) {
      RecordingWatcher watcher;
      move->Start(&watcher, "0,29");
      const auto record = Raised([&] { move->Start(&watcher, "0,29"); });
      ASSERT_TRUE(record);
      EXPECT_EQ(record->message, "'RVX Move Stepper Action' is running.");
      EXPECT_TRUE(watcher.WaitForFinish());
      move->Stop();
      EXPECT_EQ(watcher.Count("finished 0,29"), 1);
    }
    EXPECT_EQ(bench.controller.commands(), (std::vector<std::string>{"0CMP1D", "0CMP1D"}));
    bench.SetPreconditionTime(0);
    const auto motor = bench.Make<CPreconditionMotorAction>(kPreconditionMotorAction);
    RecordingWatcher watcher;
    motor->Start(&watcher, "any context");
    EXPECT_TRUE(watcher.WaitForFinish());
    EXPECT_EQ(motor->HasRun(), 0);
  });
}

TEST(StartTest, AFailedMoveIsReportedAndEnds) {
  InVirtualTime([] {
    Bench bench;
    bench.controller.SetMachineStatus(0x02);
    bench.WaitForStatus();
    const auto move = bench.Make<CMoveStepperAction>(kMoveStepperAction);
    RecordingWatcher watcher;
    move->Start(&watcher, "0,0");
    EXPECT_TRUE(watcher.WaitForFinish());
    ASSERT_EQ(bench.host.instruments.errors().size(), 1u);
    EXPECT_EQ(bench.host.instruments.errors()[0].message, "RVX is not ready. Tray will be paused.");
  });
}

// --- Editing ------------------------------------------------------------------------------------

class TestEditor : public SampleActionEditor {
 public:
  TestEditor() { SetSampleActionEditor(this); }
  ~TestEditor() override { SetSampleActionEditor(nullptr); }
  StandardPick PickStandard(C_RVXViscAction& action) override {
    ++picks;
    if (pick == StandardPick::Picked) action.SetTestPoint(0, "- 5", "1500", -1);
    return pick;
  }
  bool EditTests(C_RVXViscAction&, bool withKnownViscosity) override {
    ++edits;
    known = withKnownViscosity;
    return accept;
  }
  StandardPick pick = StandardPick::Cancelled;
  bool accept = false;
  bool known = false;
  int picks = 0;
  int edits = 0;
};

TEST(EditTest, WithoutAnEditorTheDefaultsAreTaken) {
  InVirtualTime([] {
    Bench bench;
    bench.SetTimes(11, 12, 13);
    const auto action = bench.Make<CCheckViscAction>(kCheckViscAction);
    EXPECT_EQ(action->Edit(), 0);
    EXPECT_EQ(action->IsConfigured(), 0);
    EXPECT_EQ(action->CopyTestRecord().coolDownTime, 12);
    EXPECT_EQ(action->CopyTestRecord().injectionTime, 240);
    EXPECT_EQ(action->CopyKnownViscosities()[19], 1.0);
  });
}

struct ChangeMonitor : ViscometerArrayMonitor {
  void ErrorReported(rvx::ActionErrorRecord) override {}
  void InstrumentsChanged(int32_t) override { changed.Set(); }
  platform::Event changed{"test instruments changed"};
};

TEST(EditTest, ACancelledFirstEditLeavesTheTray) {
  InVirtualTime([] {
    ChangeMonitor monitor;  // outlives the threads that may still be telling it
    Bench bench;
    TestEditor editor;
    auto action =
        std::shared_ptr<Action>(bench.instrument->CreateActionByIndex(kMeasureViscAction));
    TrayOfSampleActions* tray = bench.instrument->GetTray(0);
    {
      TrayGuard guard(*tray);
      (void)tray->Replace(7, action);
    }
    editor.accept = true;
    EXPECT_EQ(action->Edit(), 1);
    EXPECT_FALSE(editor.known);
    editor.accept = false;
    EXPECT_EQ(action->Edit(), 0);  // configured now: it stays in the tray
    EXPECT_EQ(action->IsConfigured(), 1);
    auto fresh = std::shared_ptr<Action>(bench.instrument->CreateActionByIndex(kMeasureViscAction));
    {
      TrayGuard guard(*tray);
      EXPECT_EQ(tray->GetAt(7), action.get());
      (void)tray->Replace(8, fresh);
    }
    const int32_t handle = bench.host.instruments.RegisterMonitor(&monitor);
    EXPECT_EQ(fresh->Edit(), 0);
    // Another thread takes it out of the tray later.
    const auto isOut = [&] {
      TrayGuard guard(*tray);
      return tray->GetAt(8)->GetClassName() == CNullAction::kClassKey;
    };
    while (!isOut()) ASSERT_TRUE(monitor.changed.Wait(1min));
    bench.host.instruments.UnregisterMonitor(handle);
  });
}

TEST(EditTest, AStandardIsPickedOnceOrTheTestsEntered) {
  InVirtualTime([] {
    Bench bench;
    TestEditor editor;
    const auto action = bench.Make<CCheckViscAction>(kCheckViscAction);
    EXPECT_EQ(action->Edit(), 0);
    EXPECT_EQ(action->IsConfigured(), 0);
    editor.pick = StandardPick::Other;
    EXPECT_EQ(action->Edit(), 0);
    EXPECT_EQ(editor.edits, 1);
    EXPECT_TRUE(editor.known);
    editor.pick = StandardPick::Picked;
    EXPECT_EQ(action->Edit(), 1);
    EXPECT_EQ(action->CopyTestRecord().testTemperatures[0], -5.0);
    EXPECT_EQ(action->CopyKnownViscosities()[0], 1500.0);
    EXPECT_EQ(editor.edits, 1);
    editor.accept = true;
    EXPECT_EQ(action->Edit(), 1);
    EXPECT_EQ(editor.picks, 3);  // configured: goes directly to the tests
    EXPECT_EQ(editor.edits, 2);
  });
}

TEST(EditTest, ARunningActionIsNeitherEditedNorRestarted) {
  InVirtualTime([] {
    Bench bench;
    bench.SetTimes(0, 1, 2);
    const auto action = bench.Make<CMeasureViscAction>(kMeasureViscAction);
    action->SetSampleId("Oil 7");
    RecordingWatcher watcher;
    action->Start(&watcher, "0,0");
    const std::string edit =
        "Could not start 'RVX Measure Viscosity Action' due to computer error.";
    const std::string start = "'RVX Measure Viscosity Action' is running.";
    for (int i = 0; i < 2; ++i) {
      auto record = Raised([&] { action->Edit(); });
      ASSERT_TRUE(record);
      EXPECT_EQ(record->message, edit);
      EXPECT_EQ(record->sampleId, "Oil 7");
      record = Raised([&] { action->Start(&watcher, "0,0"); });
      ASSERT_TRUE(record);
      EXPECT_EQ(record->message, start);
      EXPECT_FALSE(action->AssignTests(TestRecord(), {}));
      EXPECT_TRUE(watcher.WaitForFinish());  // in the second round it has run
    }
    EXPECT_EQ(watcher.Count("finished 0,0"), 1);
  });
}

}  // namespace
}  // namespace rvx
