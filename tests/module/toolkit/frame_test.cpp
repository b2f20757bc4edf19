// Screens with their frames, opened and ended by their actions.
#include <QLineEdit>
#include <QVBoxLayout>
#include <functional>
#include <utility>

#include "module/execution/view_action.h"
#include "module/toolkit/form_view.h"
#include "module/toolkit/screen_table.h"
#include "tests/module/execution/bench.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

class TestView final : public CFormView {
 public:
  explicit TestView(C_RVX& instrument) : instrument_(instrument), edit_(new QLineEdit) {
    (new QVBoxLayout(this))->addWidget(edit_);
    setFocusProxy(edit_);
  }
  // A screen may read its instrument until its end.
  ~TestView() override { (void)instrument_.GetTemperature(); }
  int32_t QueryClose() override {
    if (whenAsked) std::exchange(whenAsked, nullptr)();
    return refuses ? 1 : 0;
  }
  QLineEdit& edit() { return *edit_; }
  inline static bool refuses = false;
  inline static std::function<void()> whenAsked;

 private:
  C_RVX& instrument_;
  QLineEdit* edit_;
};

ScreenTable& Table() {
  static ScreenTable table;
  return table;
}

class TestScreenAction final : public CScreenAction {
 public:
  explicit TestScreenAction(C_RVX& instrument)
      : CScreenAction(instrument, kMonitorAction, 550, std::string()) {}
};

class ScreenBench {
 public:
  ScreenBench() {
    bench.host.userInterface = RunOnGuiThread;
    TestView::refuses = false;
    SetScreenMaker(kMonitorAction, [](const ScreenRequest& request) {
      return Table().OpenOrRaise(request.instrument, request.label, [&request] {
        return std::make_unique<TestView>(request.instrument);
      });
    });
  }
  // The instrument's destructor may wait for screens, which need this thread.
  ~ScreenBench() {
    RunBeside([this] { bench.instrument.reset(); });
    SetScreenMaker(kMonitorAction, nullptr);
  }
  CChildFrame* frame() { return Table().Find(*bench.instrument); }
  TestView& view() { return dynamic_cast<TestView&>(*frame()->view()); }

  // Starts an action and waits for its screen.
  void Open(CBaseAction& action, RecordingWatcher& watcher) {
    action.Start(&watcher, "0,0");
    ASSERT_TRUE(PumpUntil([this] { return frame() != nullptr && frame()->isVisible(); }));
  }

  Bench bench;
};

const std::vector<std::string> kWholeLife = {"started 0,0", "finished 0,0"};

TEST(FrameTest, TheUserClosesAScreenAndItsActionEnds) {
  InPacedTime([] {
    ScreenBench test;
    test.bench.instrument->SetInstrumentId("Cell 7");
    test.bench.instrument->SetInstrumentName("Cold room");
    TestScreenAction action(*test.bench.instrument);
    RecordingWatcher watcher;
    test.Open(action, watcher);
    EXPECT_EQ(test.frame()->windowTitle(), "RVX Monitor (RVX 0h : Cell 7 : Cold room)");
    TestView::refuses = true;
    EXPECT_FALSE(test.frame()->close());
    EXPECT_EQ(action.IsRunning(), 1);
    TestView::refuses = false;
    EXPECT_TRUE(test.frame()->close());
    EXPECT_EQ(test.frame(), nullptr);
    EXPECT_TRUE(PumpUntil([&] { return action.IsRunning() == 0; }));
    EXPECT_EQ(watcher.calls(), kWholeLife);
  });
}

TEST(FrameTest, AFrameMayGoWhileItsViewAsks) {
  InPacedTime([] {
    ScreenBench test;
    TestScreenAction action(*test.bench.instrument);
    RecordingWatcher watcher;
    test.Open(action, watcher);
    TestView::whenAsked = [frame = test.frame()] { delete frame; };
    test.frame()->close();
    EXPECT_EQ(test.frame(), nullptr);
    EXPECT_TRUE(PumpUntil([&] { return action.IsRunning() == 0; }));
    EXPECT_EQ(watcher.calls(), kWholeLife);
  });
}

TEST(FrameTest, ASecondStartRaisesTheOpenScreen) {
  InPacedTime([] {
    ScreenBench test;
    RecordingWatcher firstWatcher;
    RecordingWatcher secondWatcher;
    TestScreenAction first(*test.bench.instrument);
    test.Open(first, firstWatcher);
    CChildFrame* const frame = test.frame();
    frame->showMinimized();
    TestScreenAction second(*test.bench.instrument);
    second.Start(&secondWatcher, "0,0");
    EXPECT_TRUE(PumpUntil([&] { return second.IsRunning() == 0; }));
    EXPECT_EQ(secondWatcher.calls(), kWholeLife);
    EXPECT_EQ(test.frame(), frame);
    EXPECT_FALSE(frame->isMinimized());
    EXPECT_EQ(first.IsRunning(), 1);
  });
}

TEST(FrameTest, AStopWhileTheUserTypesTakesTheScreenAway) {
  InPacedTime([] {
    ScreenBench test;
    TestScreenAction action(*test.bench.instrument);
    RecordingWatcher watcher;
    test.Open(action, watcher);
    QTest::keyClicks(&test.view().edit(), "half a wo");
    const QPointer<CChildFrame> frame = test.frame();
    action.Stop();  // on this thread, as a host may do it
    EXPECT_EQ(watcher.calls(), kWholeLife);
    EXPECT_TRUE(PumpUntil([&] { return frame.isNull(); }));
  });
}

TEST(FrameTest, AnInstrumentThatGoesTakesItsScreensAlong) {
  InPacedTime([] {
    ScreenBench test;
    TestScreenAction action(*test.bench.instrument);
    RecordingWatcher watcher;
    test.Open(action, watcher);
    const QPointer<CChildFrame> frame = test.frame();
    RunBeside([&] { test.bench.instrument.reset(); });
    EXPECT_TRUE(frame.isNull());
    EXPECT_EQ(watcher.calls(), kWholeLife);
  });
}

TEST(FrameTest, TheHostDecidesAboutAFrameWithAnIndex) {
  FakeHost host;
  CChildFrame frame(3);
  EXPECT_EQ(frame.QueryClose(), 0);
  frame.show();
  EXPECT_FALSE(frame.close());
  EXPECT_EQ(host.instruments.releasedFrames(), (std::vector<int32_t>{3}));
}

}  // namespace
}  // namespace rvx
