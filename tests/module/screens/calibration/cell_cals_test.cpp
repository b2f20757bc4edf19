// The current cell constants on their screen, by mouse and keys.
#include <QClipboard>
#include <QLineEdit>
#include <QScrollBar>
#include <QTreeWidget>
#include <cstdlib>

#include "module/screens/calibration/cell_cals_vw.h"
#include "module/screens/common/make_screen.h"
#include "platform/help.h"
#include "tests/module/screens/common/screen_bench.h"

namespace rvx {
namespace {

constexpr int kListId = 1000;
constexpr uint8_t kLowTemperatureOption = 0x02;

class CellCalsTest : public testing::Test {
 protected:
  // Dates are in the language of the environment.
  CellCalsTest() { setenv("LC_ALL", "C", 1); }
  ~CellCalsTest() override { unsetenv("LC_ALL"); }

  void Run(const std::function<void(ScreenBench&)>& body) {
    InPacedTime([&] {
      ScreenBench test(kCurrentCellCalsAction, MakeScreen<CCellCalsVw>);
      configuration_ = &test.bench.instrument->configuration();
      body(test);
    });
  }
  // Changes the configuration as a save does, and tells of it on another thread.
  void Change(ScreenBench& test, const std::function<void(ConfigurationFields&)>& change) {
    {
      const ConfigurationGuard guard(*configuration_);
      change(configuration_->fields);
    }
    RunBeside([&] { test.bench.host.instruments.NotifyInstrumentChanged(); });
  }
  static QTreeWidget& List() {
    return *FindControl<QTreeWidget>(*ScreenBench::frame()->view(), kListId);
  }
  static std::string Row(int row) {
    std::string text;
    for (int column = 0; column < List().columnCount(); ++column) {
      text += (column > 0 ? "|" : "") + List().topLevelItem(row)->text(column).toStdString();
    }
    return text;
  }

  ConfigurationRecord* configuration_ = nullptr;
};

TEST_F(CellCalsTest, ShowsWhatIsInForceAndFollowsIt) {
  Run([&](ScreenBench& test) {
    Change(test, [](ConfigurationFields& configuration) {
      configuration.b0[0] = 12345.6;
      configuration.b1[0] = -0.4;
      configuration.calibrationDates[1] = platform::Date();
      configuration.calibrationDates[2] = platform::Date::Invalid();
    });
    test.Open();
    EXPECT_EQ(ScreenBench::frame()->windowTitle(),
              "Current Cell Calibration Constants (RVX 0h : RVX : Unsaved)");
    ASSERT_EQ(List().topLevelItemCount(), 8);
    EXPECT_EQ(Row(0), "- 5|12346|-0|0|Sat Jan  1 00:00:00 1938");
    EXPECT_EQ(Row(1), "-10|0|0|0|");
    EXPECT_EQ(Row(2), "-15|0|0|0|Invalid DateTime");
    EXPECT_EQ(Row(7), "-35|0|0|0|Sat Jan  1 00:00:00 1938");
    EXPECT_FALSE(List().horizontalScrollBar()->isVisible());
    EXPECT_FALSE(List().verticalScrollBar()->isVisible());

    QTest::keyClick(&List(), Qt::Key_Down);
    const std::string other = Row(3);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    Change(test, [](ConfigurationFields& configuration) {
      configuration.b2[4] = 7.0;
      configuration.calibrationDates[4] = platform::Date(2026, 1, 31, 16, 5, 6);
    });
    EXPECT_TRUE(PumpUntil([&] { return Row(4) == "-20|0|0|7|Sa 31 Jan 2026 16:05:06"; })) << Row(4);
    EXPECT_EQ(Row(3), other);
    EXPECT_EQ(List().selectedItems().size(), 1);  // what the user was looking at
    Change(test, [](ConfigurationFields& configuration) {
      configuration.modelCode = '4';
      configuration.optionByte = kLowTemperatureOption;
    });
    EXPECT_TRUE(PumpUntil([&] { return List().topLevelItemCount() == 9; }));
    EXPECT_EQ(Row(8).substr(0, 3), "-40");
  });
}

class TopicViewer final : public platform::HelpViewer {
 public:
  TopicViewer() { platform::SetHelpViewer(this); }
  ~TopicViewer() override { platform::SetHelpViewer(nullptr); }
  void ShowTopic(const std::string& path) override { topic = path.substr(path.find('\\') + 1); }
  std::string topic;
};

TEST_F(CellCalsTest, KeysAndMouseDoEverything) {
  Run([&](ScreenBench& test) {
    test.Open();
    TopicViewer help;
    QTest::keyClick(&List(), Qt::Key_F1);
    EXPECT_EQ(help.topic, "RVX.chm::/RVX/Instrument_Settings.htm");
    QTest::keyClick(&List(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().count(u'\n'), 9);
    QTest::mouseClick(List().viewport(), Qt::LeftButton, {},
                      List().visualItemRect(List().topLevelItem(2)).center());
    QTest::keyClick(&List(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(),
              "Temperature(C)\tB0\tB1\tB2\tLast Calibration Date\n"
              "-15\t0\t0\t0\tSat Jan  1 00:00:00 1938\n");
    QTest::keyClick(&List(), Qt::Key_F2);  // read only
    EXPECT_EQ(List().findChild<QLineEdit*>(), nullptr);
    QTest::keyClick(&List(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), FindControl<>(*ScreenBench::frame()->view(), kOkId));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(test.IsOver());
    test.bench.host.instruments.NotifyInstrumentChanged();  // the screen no longer listens

    RecordingWatcher again;
    test.action->Start(&again, "0,0");
    ASSERT_TRUE(PumpUntil(
        [] { return ScreenBench::frame() != nullptr && ScreenBench::frame()->isVisible(); }));
    QTest::mouseClick(FindControl<>(*ScreenBench::frame()->view(), kOkId), Qt::LeftButton);
    EXPECT_TRUE(PumpUntil([&] { return again.Count("finished 0,0") == 1; }));
  });
}

}  // namespace
}  // namespace rvx
