// What all screens have in common: how they are made, how they end, and work outside the window's
// thread.
#include "module/screens/common/screen_view.h"

#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>
#include <stdexcept>

#include "module/screens/common/make_screen.h"
#include "module/toolkit/qt_prompter.h"
#include "tests/module/screens/common/screen_bench.h"

namespace rvx {
namespace {

constexpr int kGoId = 1030;

// A screen that runs the functions of a test's script.
class TestView final : public CScreenView {
 public:
  struct Script {
    std::function<void(TestView&)> made, go, tick;
    std::function<std::string()> refusal;
  };
  inline static Script script;

  explicit TestView(const ScreenRequest& request) : CScreenView(request) {
    auto* layout = new QVBoxLayout(this);
    for (const auto& [id, text] : {std::pair{kGoId, "Go"}, std::pair{kOkId, "Close"}}) {
      auto* button = new QPushButton(QString::fromLatin1(text), this);
      button->setProperty(kControlIdProperty, id);
      layout->addWidget(button);
    }
    BindButtons(kOkId, kGoId);
    On(FindControl<QPushButton>(*this, kGoId), &QPushButton::clicked, [this](bool) {
      if (script.go) script.go(*this);
    });
    SetTickPeriod(10);
    if (script.made) script.made(*this);
  }
  std::string GetCloseRefusal() override {
    return script.refusal ? script.refusal() : std::string();
  }
  void Tick(int32_t) override {
    if (script.tick) script.tick(*this);
  }

  using CScreenView::Ask;
  using CScreenView::AskInstrument;
  using CScreenView::instrument;
  using CScreenView::motion;
  using CScreenView::RefreshOnChange;
  using CScreenView::Work;
};

class ScreenViewTest : public testing::Test {
 protected:
  ~ScreenViewTest() override { TestView::script = {}; }

  // Runs a test with an instrument whose monitor action opens the scripted screen.
  void Run(const std::function<void(ScreenBench&)>& body) {
    InPacedTime([&] {
      ScreenBench test(kMonitorAction, MakeScreen<TestView>);
      body(test);
    });
  }
  TestView::Script& script() { return TestView::script; }
  static void PressGo() { QTest::keyClick(ScreenBench::frame()->view(), Qt::Key_Return); }
  static void Move(TestView& view) {
    view.motion().Begin([&] {
      view.instrument().MoveStepper(0x08, 0, nullptr);
      return true;
    });
  }
};

enum class End { Closed, Stopped, ActionGone, InstrumentGone, Failed };

void Bring(End end, ScreenBench& test) {
  switch (end) {
    case End::Closed:
      QTest::keyClick(ScreenBench::frame()->view(), Qt::Key_Escape);
      return;
    case End::Stopped:
      test.action->Stop();
      return;
    case End::ActionGone:
      test.action.reset();
      return;
    case End::InstrumentGone:
      test.CloseInstrument();
      return;
    case End::Failed:
      TestView::script.tick = [](TestView&) { throw std::runtime_error("a fault"); };
      return;
  }
}

class ScreenEndTest : public ScreenViewTest, public testing::WithParamInterface<End> {};

TEST_P(ScreenEndTest, SendsOneAbortForWhatMovesAndNoneForWhatRests) {
  for (const char* what : {"moves", "rests", "keeps moving"}) {
    const bool moves = std::string_view(what) != "rests";
    Run([&](ScreenBench& test) {
      script() = {};
      script().go = [&](TestView& view) {
        Move(view);
        if (!moves) view.motion().NoteRest();
        // It queues nothing, so it leaves what moves moving and what rests at rest.
        if (std::string_view(what) != "moves") view.motion().Begin([] { return false; });
      };
      test.Open();
      PressGo();
      ASSERT_TRUE(PumpUntil([&] { return test.bench.controller.CountCommands("MM") == 1; }));
      Bring(GetParam(), test);
      EXPECT_TRUE(test.IsOver());
      // The instrument's end sends what is queued.
      test.CloseInstrument();
      EXPECT_EQ(test.bench.controller.CountCommands("AB"), moves ? 1 : 0);
    });
  }
}

INSTANTIATE_TEST_SUITE_P(AllEnds, ScreenEndTest,
                         testing::Values(End::Closed, End::Stopped, End::ActionGone,
                                         End::InstrumentGone, End::Failed));

TEST_F(ScreenViewTest, AFailureAfterTheMoveWasQueuedSendsTheAbort) {
  Run([&](ScreenBench& test) {
    script().go = [](TestView& view) {
      view.motion().Begin([&]() -> bool {
        view.instrument().MoveStepper(0x08, 0, nullptr);
        throw std::runtime_error("a fault");
      });
    };
    test.Open();
    PressGo();
    EXPECT_TRUE(test.IsOver());
    test.CloseInstrument();
    EXPECT_EQ(test.bench.controller.CountCommands("AB"), 1);
  });
}

// The stop has sent the CAB. A press between the CAB and the end of the window must not send
// another move.
TEST_F(ScreenViewTest, NothingMovesAfterAStop) {
  Run([&](ScreenBench& test) {
    script().go = [&](TestView& view) {
      test.action->Stop();
      Move(view);
    };
    test.Open();
    PressGo();
    EXPECT_TRUE(test.IsOver());
    test.CloseInstrument();
    EXPECT_EQ(test.bench.Heard(), "");
  });
}

class AskingScreenTest : public ScreenViewTest, public testing::WithParamInterface<End> {
 protected:
  using Place = std::function<void(TestView&)> TestView::Script::*;
  void AskAndEnd(Place place);
};

void AskingScreenTest::AskAndEnd(Place place) {
  QtPrompter prompter;
  Run([&](ScreenBench& test) {
    platform::SetPrompter(&prompter);
    bool answered = true;
    TestView* asking = nullptr;
    script() = {};
    QWidget
        other;  // the question's parent, so that the end of the screen leaves the question alone
    script().*place = [&](TestView& view) {
      if (std::exchange(asking, &view) != nullptr) return;
      other.show();
      other.activateWindow();
      EXPECT_TRUE(PumpUntil([&] { return other.isActiveWindow(); }));
      answered = view.Ask("Use the stored values?", platform::MessageButtons::YesNo,
                          platform::MessageIcon::Question)
                     .has_value();
    };
    std::shared_ptr<platform::Thread> closer;
    const auto end = [&](QMessageBox&) {
      RecordingWatcher second;
      const std::unique_ptr<Action> raises = test.MakeAction();
      raises->Start(&second, "0,0");
      EXPECT_TRUE(PumpUntil([&] { return raises->IsRunning() == 0; }));
      if (GetParam() == End::Failed) {
        asking->Work([] {}, [] { throw std::runtime_error("a fault"); }, {});
      } else if (GetParam() == End::InstrumentGone) {
        // On another thread: the question closes only when this call has returned.
        closer = platform::StartThread("closer", [&] { test.bench.instrument.reset(); });
      } else {
        Bring(GetParam(), test);
      }
    };
    if (script().go) {
      test.Open();
      WhenShown<QMessageBox>(end);
      PressGo();
    } else {
      WhenShown<QMessageBox>(end);
      test.action->Start(&test.watcher, "0,0");
    }
    EXPECT_TRUE(PumpUntil([&] { return !answered; }));
    EXPECT_TRUE(test.IsOver());
    EXPECT_TRUE(PumpUntil([&] { return closer == nullptr || closer->HasEnded(); }));
  });
}

// Ending the action must not wait for a lock or for the person, and closes the question.
TEST_P(AskingScreenTest, AQuestionHoldsNobodyUp) {
  AskAndEnd(&TestView::Script::go);
  AskAndEnd(&TestView::Script::made);
  AskAndEnd(&TestView::Script::tick);
}

INSTANTIATE_TEST_SUITE_P(Ends, AskingScreenTest,
                         testing::Values(End::Stopped, End::InstrumentGone, End::Failed));

TEST_F(ScreenViewTest, AFailureClosesTheScreenAndIsReported) {
  const auto fail = [](TestView&) { throw std::runtime_error("a fault"); };
  const auto raise = [](TestView&) {
    ActionErrorRecord record;
    record.message = "a fault";
    throw new InvalidException(record);
  };
  const std::vector<std::function<void()>> places = {
      [&] { script().made = fail; },
      [&] { script().made = raise; },
      [&] { script().tick = fail; },
      [&] { script().go = raise; },
      [&] {
        script().go = [fail](TestView& view) {
          view.Work([] {}, [fail, &view] { fail(view); }, {});
        };
      },
      [&] { script().refusal = []() -> std::string { throw std::runtime_error("a fault"); }; }};
  for (const auto& plan : places) {
    Run([&](ScreenBench& test) {
      script() = {};
      plan();
      const bool beeps = !script().made && !script().refusal;
      test.action->Start(&test.watcher, "0,0");
      if (script().go) {
        ASSERT_TRUE(PumpUntil([] { return ScreenBench::frame() != nullptr; }));
        ASSERT_TRUE(PumpUntil([] { return ScreenBench::frame()->isVisible(); }));
        PressGo();
      }
      if (script().refusal) {
        ASSERT_TRUE(PumpUntil([] { return ScreenBench::frame() != nullptr; }));
        EXPECT_EQ(dynamic_cast<ScreenAction&>(*test.action).GetCloseRefusal(), "");
      }
      EXPECT_TRUE(test.IsOver());
      const auto errors = test.bench.host.instruments.errors();
      ASSERT_EQ(errors.size(), 1u);
      EXPECT_NE(errors[0].message.find("\"RVX Monitor\" was closed because it failed (a fault)"),
                std::string::npos);
      EXPECT_EQ(test.bench.prompts.beeps, beeps ? 1 : 0);
    });
  }
}

TEST_F(ScreenViewTest, ARefusalKeepsItOpenAndIsToldToUserAndHost) {
  Run([&](ScreenBench& test) {
    auto& screen = dynamic_cast<ScreenAction&>(*test.action);
    EXPECT_EQ(screen.GetUse(), ScreenAction::Use::Start);
    EXPECT_EQ(screen.GetCloseRefusal(), "");
    script().refusal = [] { return "The motor is running."; };
    test.Open();
    QTest::keyClick(ScreenBench::frame()->view(), Qt::Key_Escape);
    EXPECT_FALSE(ScreenBench::frame()->close());
    EXPECT_EQ(test.bench.prompts.beeps, 2);
    EXPECT_EQ(ScreenBench::frame()->statusBar()->currentMessage(), "The motor is running.");
    EXPECT_EQ(screen.GetCloseRefusal(), "The motor is running.");
    script().refusal = nullptr;
    QTest::mouseClick(FindControl<>(*ScreenBench::frame()->view(), kOkId), Qt::LeftButton);
    EXPECT_TRUE(test.IsOver());
  });
}

TEST_F(ScreenViewTest, WorkEndsOnTheWindowsThreadIfTheScreenIsStillThere) {
  Run([&](ScreenBench& test) {
    platform::Event mayEnd("test: the job may end", platform::Event::Mode::ManualReset);
    std::string heard;
    int jobs = 0;
    script().go = [&](TestView& view) {
      const auto done = [&] { heard += IsGuiThread() ? "done " : "elsewhere "; };
      const auto failed = [&](const std::string& why) { heard += why + " "; };
      view.Work(
          [&] {
            mayEnd.Wait();
            ++jobs;
          },
          done, failed);
      view.Work([] { throw new InvalidException; }, done, failed);
    };
    test.Open();
    PressGo();
    EXPECT_EQ(heard, "");  // the window's thread has not waited
    mayEnd.Set();
    EXPECT_TRUE(PumpUntil([&] { return heard == "done CViscoException "; })) << heard;
    mayEnd.Reset();
    PressGo();
    Bring(End::Closed, test);
    EXPECT_TRUE(test.IsOver());
    mayEnd.Set();
    test.CloseInstrument();  // waits for the job, which is still completed
    EXPECT_EQ(jobs, 2);
    EXPECT_EQ(heard, "done CViscoException ");
  });
}

TEST_F(ScreenViewTest, ACommandIsAnsweredOrTimesOutOrLosesItsScreen) {
  Run([&](ScreenBench& test) {
    std::vector<CommandResult> results;
    script().go = [&](TestView& view) {
      const auto send = [&](CommandClient* client) { view.instrument().SetHomeFlag(client); };
      const auto done = [&](const CommandResult& result) { results.push_back(result); };
      EXPECT_TRUE(view.AskInstrument(send, 4s, done));
      EXPECT_FALSE(view.AskInstrument(send, 4s, done));  // one at a time
    };
    test.Open();
    PressGo();
    ASSERT_TRUE(PumpUntil([&] { return results.size() == 1; }));
    EXPECT_EQ(results[0].kind, CommandResult::Kind::Replied);
    EXPECT_EQ(results[0].tag, "HO");
    // An error beside the right tag, which the screen alone reports.
    test.bench.controller.Refuse("HO", 0x83, 1);
    PressGo();
    ASSERT_TRUE(PumpUntil([&] { return results.size() == 2; }));
    EXPECT_EQ(results[1].kind, CommandResult::Kind::Refused);
    EXPECT_EQ(results[1].tag, "HO");
    EXPECT_EQ(results[1].error, 0x83);
    test.bench.WaitForStatus();
    EXPECT_TRUE(test.bench.host.instruments.errors().empty());
    test.bench.controller.SetSilent(true);
    PressGo();
    ASSERT_TRUE(PumpUntil([&] { return results.size() == 3; }));
    EXPECT_EQ(results[2].kind, CommandResult::Kind::NoReply);
    PressGo();
    Bring(End::Closed, test);
    EXPECT_TRUE(test.IsOver());
    test.bench.controller.SetSilent(false);
    test.bench.WaitForStatus();
    EXPECT_EQ(results.size(), 3u);
  });
}

TEST_F(ScreenViewTest, ManyChangesAreOneRefreshAndNoneAfterTheEnd) {
  Run([&](ScreenBench& test) {
    int refreshes = 0;
    script().made = [&](TestView& view) { view.RefreshOnChange([&] { ++refreshes; }); };
    test.Open();
    FakeInstrumentManager& manager = test.bench.host.instruments;
    for (int i = 0; i < 100; ++i) manager.NotifyInstrumentChanged();
    EXPECT_TRUE(PumpUntil([&] { return refreshes > 0; }));
    EXPECT_EQ(refreshes, 1);
    RunBeside([&] { manager.NotifyInstrumentChanged(); });
    EXPECT_TRUE(PumpUntil([&] { return refreshes == 2; }));
    manager.NotifyInstrumentChanged();  // still pending when the screen is deleted
    delete ScreenBench::frame();
    EXPECT_TRUE(test.IsOver());
    EXPECT_EQ(refreshes, 2);
  });
}

}  // namespace
}  // namespace rvx
