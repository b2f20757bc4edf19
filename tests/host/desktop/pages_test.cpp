// The pages beside the tray, the menus around them, and the files that they write.
#include <gtest/gtest.h>

#include <QAction>
#include <QCalendarWidget>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>
#include <algorithm>
#include <map>

#include "host/desktop/day_field.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

// The shortcut letters of one window: each letter must belong to one control only.
class Letters {
 public:
  void Add(const QString& text) {
    const QKeySequence letter = QKeySequence::mnemonic(text);
    if (letter.isEmpty()) return;
    const std::string key = letter.toString().toStdString();
    EXPECT_EQ(taken_.count(key), 0u) << key << ": " << taken_[key] << " and " << text.toStdString();
    taken_[key] = text.toStdString();
  }
  size_t size() const { return taken_.size(); }

 private:
  std::map<std::string, std::string> taken_;
};

TEST(PagesTest, NoTwoCommandsShareALetter) {
  DesktopBench bench;
  bench.Open();
  bench.ActAs("sara");
  // All controls that can be visible together, in any state of a run.
  Letters window;
  for (QAction* menu : bench.window().menuBar()->actions()) {
    window.Add(menu->text());
    Letters entries;
    for (QAction* action : menu->menu()->actions()) entries.Add(action->text());
  }
  for (auto* button : bench.window().findChildren<QAbstractButton*>()) {
    if (button->window() == &bench.window()) window.Add(button->text());
  }
  for (auto* tabs : bench.window().findChildren<QTabBar*>()) {
    for (int i = 0; i < tabs->count(); ++i) window.Add(tabs->tabText(i));
  }
  for (auto* label : bench.window().findChildren<QLabel*>()) {
    if (label->buddy() != nullptr) window.Add(label->text());
  }
  EXPECT_GE(window.size(), 8u);
}

TEST(PagesTest, AnEmptyTableSaysWhetherAFilterIsWhy) {
  DesktopBench bench;
  bench.Open();
  SamplesPage& page = bench.window().samplesPage();
  const auto says = [&](const QString& text) {
    return DesktopBench::Until([&] {
      const auto labels = page.findChildren<QLabel*>();
      return std::any_of(labels.begin(), labels.end(),
                         [&](const QLabel* label) { return label->text().contains(text); });
    });
  };
  EXPECT_TRUE(says("No samples. Results appear here"));
  auto* sampleId = page.findChild<QLineEdit*>();
  sampleId->setText("nothing");
  EXPECT_TRUE(says("No sample matches."));
  sampleId->clear();
  EXPECT_TRUE(says("No samples. Results appear here"));
  page.findChild<DayField*>()->SetDay(QDate(2026, 1, 5));
  EXPECT_TRUE(says("No sample matches."));
}

TEST(PagesTest, ADayOpensAtTodayAndCanBeTakenAway) {
  DayField field("From");
  field.show();
  auto* edit = field.findChild<QDateEdit*>();
  int changes = 0;
  QObject::connect(&field, &DayField::Changed, [&] { ++changes; });
  QCalendarWidget* calendar = edit->calendarWidget();
  QShowEvent opening;
  QApplication::sendEvent(calendar, &opening);
  EXPECT_EQ(calendar->selectedDate(), QDate::currentDate());
  EXPECT_FALSE(field.day().isValid()) << "to open it chooses nothing";
  EXPECT_EQ(changes, 0);
  field.SetDay(QDate(2026, 1, 5));
  EXPECT_EQ(field.day(), QDate(2026, 1, 5));
  auto* clear = field.findChild<QToolButton*>();
  QTest::mouseClick(clear, Qt::LeftButton);
  EXPECT_FALSE(field.day().isValid());
  EXPECT_FALSE(clear->isEnabled());
  EXPECT_EQ(changes, 2);
}

TEST(PagesTest, WhatCanBeAddedFollowsTheConstants) {
  DesktopBench bench;
  bench.Open();
  bench.ActAs("sara");
  const auto offers = [&](const QString& label) {
    const auto actions = bench.window().trayPage().findChildren<QAction*>();
    return std::any_of(actions.begin(), actions.end(),
                       [&](const QAction* action) { return action->text() == label; });
  };
  ASSERT_TRUE(DesktopBench::Until([&] { return offers("Measure Viscosity"); }));
  const auto setAll = [&](double b0) {
    RunAside(bench.gui(), "constants", [&] {
      rvx::InstrumentScripting& instrument = *bench.session().entry().scripting;
      for (const rvx::CellConstants& slot : instrument.GetCellConstants()) {
        EXPECT_FALSE(instrument.SetCellConstants(slot.temperature, b0, 0.0, 0.0).has_value());
      }
    });
  };
  setAll(0.0);
  EXPECT_TRUE(DesktopBench::Until([&] { return !offers("Measure Viscosity"); }));
  setAll(1200.0);
  EXPECT_TRUE(DesktopBench::Until([&] { return offers("Measure Viscosity"); }));
}

TEST(PagesTest, WhoAcknowledgesIsNotAskedAgain) {
  DesktopBench bench;
  ErrorReport report;
  report.source = "COM1 RVX";
  report.kind = 1;
  report.time = platform::Date(2026, 1, 5, 3, 0, 0);
  report.message = "Instrument not responding.";
  bench.host().errors().Report(report);
  bench.Open();
  const auto banner = [&]() -> QPushButton* {
    for (auto* button : bench.window().findChildren<QPushButton*>()) {
      if (button->text() == "Acknowledge" && button->isVisible()) return button;
    }
    return nullptr;
  };
  ASSERT_TRUE(DesktopBench::Until([&] { return banner() != nullptr; }));
  QTest::mouseClick(banner(), Qt::LeftButton);
  EXPECT_TRUE(DesktopBench::Until([&] { return bench.host().errors().Last(1)[0].acknowledged; }));
  // The instrument may have reported something too.
  bench.window().messages().AcknowledgeAll();
  EXPECT_EQ(banner(), nullptr);
  EXPECT_TRUE(DesktopBench::Until([&] {
    const auto reports = bench.host().errors().Last(0);
    return std::all_of(reports.begin(), reports.end(),
                       [](const ErrorReport& each) { return each.acknowledged; });
  }));
}

}  // namespace
}  // namespace torvell
