// The embedded status window: what it shows, and its life with the host's windows.
#include <QLabel>
#include <QPointer>

#include "module/screens/status/custom_status_wnd.h"
#include "module/toolkit/controls.h"
#include "module/toolkit/window_handle.h"
#include "tests/module/execution/bench.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

const StatusWindowTexts kTexts{"OFF", "Elapsed Time", "Time Remaining"};

StatusReadings SomeReadings() {
  StatusReadings readings;
  readings.received = true;
  readings.time = 10s;
  readings.temperature = -4.987;
  readings.targetTemperature = -20.0;
  readings.speed = 1.23456;
  readings.seconds = 42;
  readings.countsDown = true;
  readings.machineStatusText = "Not Ready, Init Steppers,";
  return readings;
}

TEST(StatusDisplayTest, ShowsWhatTheFrameSays) {
  StatusReadings readings = SomeReadings();
  StatusDisplay display = MakeStatusDisplay(readings, kTexts, 10s);
  EXPECT_EQ(display.temperature, " -4.99");
  EXPECT_EQ(display.target, "-20.00");
  EXPECT_EQ(display.speed, "1.2346");
  EXPECT_EQ(display.seconds, "42");
  EXPECT_EQ(display.timerHeading, "Time Remaining");
  EXPECT_EQ(display.machineStatus, "Not Ready\n Init Steppers\n");
  EXPECT_EQ(display.age, "");
  readings.targetTemperature = 65535.0;
  readings.countsDown = false;
  display = MakeStatusDisplay(readings, kTexts, 10s);
  EXPECT_EQ(display.target, "OFF");
  EXPECT_EQ(display.timerHeading, "Elapsed Time");
}

TEST(StatusDisplayTest, OldAndMissingValuesAreNoMeasurements) {
  const StatusDisplay old = MakeStatusDisplay(SomeReadings(), kTexts, 22s);
  EXPECT_EQ(old.age, "No reply for 12 s");
  EXPECT_EQ(old.temperature, " -4.99");
  const StatusDisplay none = MakeStatusDisplay(StatusReadings(), kTexts, 22s);
  EXPECT_EQ(none.temperature + none.target + none.speed + none.seconds, "----");
  EXPECT_NE(none.age, "");
}

class StatusWindowBench {
 public:
  StatusWindowBench() {
    bench.host.userInterface = RunOnGuiThread;
    SetStatusWindowMaker(MakeStatusWindow);
  }
  ~StatusWindowBench() {
    bench.instrument->CloseStatusWindow();
    SetStatusWindowMaker(nullptr);
    RunBeside([this] { bench.instrument.reset(); });
  }
  QWidget* Show(QWidget& parent) {
    return ToWidget(bench.instrument->ShowStatusWindow(ToHandle(&parent)));
  }

  Bench bench;
};

TEST(StatusWindowTest, FollowsTheInstrument) {
  InPacedTime([] {
    StatusWindowBench test;
    QWidget parent;
    parent.show();
    const QPointer<QWidget> window = test.Show(parent);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->parentWidget(), &parent);
    EXPECT_TRUE(window->isVisible());
    test.bench.controller.SetTemperature(-12.5);
    auto* current = FindControl<QLabel>(*window, 1151);
    EXPECT_TRUE(PumpUntil([&] { return current->text().trimmed() == "-12.50"; }));
    {
      const LocaleScope german{QLocale(QLocale::German)};
      EXPECT_TRUE(PumpUntil([&] { return current->text().trimmed() == "-12,50"; }));
    }
    EXPECT_EQ(test.Show(parent), window);
    test.bench.instrument->CloseStatusWindow();
    EXPECT_EQ(window, nullptr);
    test.bench.instrument->CloseStatusWindow();
    test.bench.WaitForStatus();  // frames without a window have no effect
  });
}

// Records the calls of a status window.
class ToldWindow final : public StatusWindow {
 public:
  WindowHandle* GetHandle() override { return nullptr; }
  void Refresh(const StatusReadings& readings) override { told = readings; }
  static inline StatusReadings told;
};

TEST(StatusWindowTest, AWindowThatOpensLateShowsTheAgeOfTheLastFrame) {
  InVirtualTime([] {
    Bench bench;
    SetStatusWindowMaker([](WindowHandle*) -> std::unique_ptr<StatusWindow> {
      return std::make_unique<ToldWindow>();
    });
    bench.WaitForStatus();
    const platform::Microseconds latest = platform::MonotonicTime();
    platform::Sleep(200ms);  // less than until the next frame
    bench.instrument->ShowStatusWindow(nullptr);
    EXPECT_TRUE(ToldWindow::told.received);
    EXPECT_LE(ToldWindow::told.time, latest);
    bench.instrument->CloseStatusWindow();
    SetStatusWindowMaker(nullptr);
  });
}

TEST(StatusWindowTest, TheHostMayDestroyItsParentAtAnyMoment) {
  InPacedTime([] {
    StatusWindowBench test;
    auto parent = std::make_unique<QWidget>();
    const QPointer<QWidget> window = test.Show(*parent);
    parent.reset();
    EXPECT_EQ(window, nullptr);
    test.bench.WaitForStatus();
    QWidget another;
    EXPECT_NE(test.Show(another), nullptr);
  });
}

}  // namespace
}  // namespace rvx
