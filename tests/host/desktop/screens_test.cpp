// Screens and their closing, and the selection, with instruments whose screens do what a test says.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QMessageBox>
#include <atomic>

#include "tests/host/core/fake_instrument.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

constexpr char kLabel[] = "Screen of the test";

// What a screen does; it outlives the screen.
struct ScreenPlan {
  rvx::ScreenAction::Use use = rvx::ScreenAction::Use::Edit;
  std::string refusal;
  std::function<void()> onEdit;
  int edits = 0;
  std::atomic<int> stops{0};
  std::atomic<int> alive{0};
  platform::Event gone{"an action of the test is destroyed"};
};

class PlannedScreen : public FakeAction, public rvx::ScreenAction {
 public:
  explicit PlannedScreen(ScreenPlan& plan) : FakeAction(kLabel, "", 0), plan_(plan) {
    ++plan_.alive;
  }
  ~PlannedScreen() override {
    --plan_.alive;
    plan_.gone.Set();
  }
  void Stop() override { ++plan_.stops; }
  int32_t Edit() override {
    ++plan_.edits;
    if (plan_.onEdit) plan_.onEdit();
    return 1;
  }
  Use GetUse() override { return plan_.use; }
  std::string GetCloseRefusal() override { return plan_.refusal; }

 private:
  ScreenPlan& plan_;
};

// Its first configuration screen is the planned one; it has no others.
class PlannedInstrument : public FakeInstrument {
 public:
  PlannedInstrument(const std::string& port, ScreenPlan& plan)
      : FakeInstrument(port), plan_(plan) {}
  rvx::Action* CreateConfigAction(int32_t index) override {
    return index == 0 ? new PlannedScreen(plan_) : nullptr;
  }
  bool WaitForReadings(uint64_t, const platform::Deadline& deadline) override {
    return platform::Event("reading of the test").Wait(deadline);
  }

 private:
  ScreenPlan& plan_;
};

class ScreensTest : public testing::Test {
 protected:
  ~ScreensTest() override {
    RunAside(gui_, "closing", [this] { screens_.Finish(); });
  }

  GuiThread gui_;
  ScreenPlan plan_;
  PlannedInstrument instrument_{"COM8", plan_};
  const InstrumentEntry entry_{&instrument_, &instrument_, {}};
  const ScreenOffer edit_{ScreenKind::Configuration, 0, kLabel, {}, true};
  Screens screens_{gui_};
};

TEST_F(ScreensTest, AnEditOnItsWayIsDroppedByTheClosing) {
  screens_.Open(entry_, edit_);
  screens_.CloseAll();
  ASSERT_TRUE(plan_.gone.Wait());  // what follows the opening is posted and has not run yet
  bool handled = false;
  gui_.Post([&handled] { handled = true; });
  ASSERT_TRUE(DesktopBench::Until([&handled] { return handled; }));
  EXPECT_EQ(plan_.edits, 0);
}

TEST_F(ScreensTest, AnActionOutlivesItsEditDuringTheClosing) {
  bool offered = false;
  QObject::connect(&screens_, &Screens::Offered, [&offered] { offered = true; });
  plan_.onEdit = [&] {
    screens_.CloseAll();
    screens_.Ask(entry_, rvx::kLevelService);  // answered after what CloseAll has begun
    DesktopBench::Until([&offered] { return offered; });
    EXPECT_EQ(plan_.alive, 1);
  };
  screens_.Open(entry_, edit_);
  EXPECT_TRUE(DesktopBench::Until([this] { return plan_.edits == 1 && plan_.alive == 0; }));
}

// Two instruments of the test, and a window that shows the first.
class TwoInstrumentsTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* port : {"COM8", "COM9"}) {
      auto* instrument = new PlannedInstrument(port, plan_);
      instrument->Fill("oil", 1);  // the bench waits for a tray
      bench_.host().instruments().Adopt({instrument});
    }
    plan_.use = rvx::ScreenAction::Use::Start;
    bench_.Open();
    for (auto* dialog : bench_.window().findChildren<QDialog*>()) dialog->close();
  }

  ScreenPlan plan_;
  DesktopBench bench_{false};
};

class SelectionCounter : public SelectionListener {
 public:
  void InstrumentSelected(int32_t) override { ++calls; }
  int calls = 0;
};

TEST_F(TwoInstrumentsTest, OfTwoSelectionsTheWindowFollowsTheLast) {
  InstrumentList& list = bench_.host().instruments();
  SelectionCounter counter;
  list.AddSelectionListener(&counter);
  for (const int32_t index : {1, 0}) list.SelectInstrument(index, 1);
  bool handled = false;
  bench_.gui().Post([&handled] { handled = true; });
  EXPECT_TRUE(DesktopBench::Until([&handled] { return handled; }));
  EXPECT_EQ(counter.calls, 2) << "the window has selected an instrument that was overtaken";
  list.SelectInstrument(1, 1);
  EXPECT_TRUE(DesktopBench::Until(
      [this] { return bench_.window().selected() == bench_.window().sessions()[1].get(); }));
  list.RemoveSelectionListener(&counter);
}

TEST_F(TwoInstrumentsTest, AScreenThatRefusesToCloseIsEndedWhenItsUserSaysSo) {
  const auto offer = [this]() -> QAction* {
    for (auto* action : bench_.window().findChildren<QAction*>()) {
      if (action->text() == kLabel) return action;
    }
    return nullptr;
  };
  ASSERT_TRUE(DesktopBench::Until([&] { return offer() != nullptr; }));
  plan_.refusal = "It moves the table.";
  offer()->trigger();
  bool closed = false;
  QObject::connect(&bench_.window(), &MainWindow::Closed, [&closed] { closed = true; });
  for (const char* answer : {"Keep Open", "End It and Close"}) {
    ASSERT_TRUE(
        DesktopBench::Until([this] { return !bench_.window().screens().Refusals().empty(); }));
    QString details;
    bench_.WhenWindow<QMessageBox>([&](QMessageBox& box) {
      details = box.informativeText();
      for (QAbstractButton* button : box.buttons()) {
        if (button->text().remove(QLatin1Char('&')) == answer) button->click();
      }
    });
    EXPECT_EQ(plan_.stops, 0);
    bench_.window().close();
    EXPECT_EQ(details.toStdString(), std::string(kLabel) + ": It moves the table.");
  }
  EXPECT_TRUE(DesktopBench::Until([&] { return closed && plan_.stops == 1 && plan_.alive == 0; }));
}

}  // namespace
}  // namespace torvell
