// The window as a person uses it, by mouse and keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

#include "host/core/database.h"
#include "tests/host/desktop/desktop_bench.h"

namespace torvell {
namespace {

constexpr char kHeading[] =
    "position,action,sample id,temperature,rotor on time,known viscosity,injection time,cool-down "
    "time\n";

class WindowTest : public testing::Test {
 protected:
  void SetUp() override {
    bench_.Open();
    bench_.ActAs("martin");
    bench_.window().activateWindow();
    view().setFocus();
  }

  TrayView& view() { return *bench_.window().trayPage().view(); }
  InstrumentSession& session() { return bench_.session(); }
  QString SampleId(int position) {
    return QString::fromStdString(session().cells()[static_cast<size_t>(position)].sampleId);
  }
  bool Settled() {
    return DesktopBench::Until([this] { return !session().Situation().busy; });
  }
  template <class Button>
  Button* Find(const QString& text) {
    for (auto* each : bench_.window().findChildren<Button*>()) {
      if (each->text().remove(QLatin1Char('&')) == text) return each;
    }
    return nullptr;
  }
  // Clicks the button with this label in the next message box.
  void Answer(const QString& label) {
    bench_.WhenWindow<QMessageBox>([this, label](QMessageBox& box) {
      for (QAbstractButton* button : box.buttons()) {
        if (button->text().remove(QLatin1Char('&')) == label) {
          ++answered_;
          QTest::mouseClick(button, Qt::LeftButton);
          return;
        }
      }
      ADD_FAILURE() << "no button " << qPrintable(label);
      box.close();
    });
  }
  // The text of the message box that `act` brings up.
  QString Failure(const std::function<void()>& act) {
    QString said;
    bench_.WhenWindow<QMessageBox>([&said](QMessageBox& box) {
      said = box.text();
      box.close();
    });
    act();
    DesktopBench::Until([&said] { return !said.isEmpty(); });
    return said;
  }
  void StartRun(const char* lines) {
    bench_.LoadTray(std::string(kHeading) + lines);
    bench_.PrepareInstrument();
    QTest::mouseClick(Find<QPushButton>("Start"), Qt::LeftButton);
    ASSERT_TRUE(DesktopBench::Until([this] { return session().run() != nullptr; }));
  }

  DesktopBench bench_;
  int answered_ = 0;
};

TEST_F(WindowTest, AllThirtyPositionsAreSeenAtTheUsualSize) {
  bench_.window().resize(1280, 800);
  ASSERT_EQ(view().model()->rowCount(), 30);
  EXPECT_TRUE(DesktopBench::Until([this] {
    const QRect last = view().visualRect(view().model()->index(29, 0));
    return view().viewport()->rect().contains(last);
  }));
}

TEST_F(WindowTest, TheKeyboardFillsTheTray) {
  bench_.LoadTray(std::string(kHeading) + "1,measure,FIRST,-20,,,,\n");
  view().setFocus();
  view().selectRow(1);
  // A letter begins the sample id; the position becomes a copy of the one above.
  QTest::keyClicks(&view(), "N");
  auto* editor = view().findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text().toStdString(), "N");
  QTest::keyClicks(editor, "EW");
  EXPECT_EQ(editor->text().toStdString(), "NEW");
  QTest::keyClick(editor, Qt::Key_Return);
  ASSERT_TRUE(DesktopBench::Until([&] { return SampleId(1) == "NEW"; }));

  view().selectRow(1);
  view().Cut();
  view().selectRow(4);
  view().Paste();
  ASSERT_TRUE(DesktopBench::Until([&] { return SampleId(4) == "NEW" && SampleId(1).isEmpty(); }));
}

TEST_F(WindowTest, AnArchiveThatFailsLeavesTheTrayAsItWas) {
  bench_.LoadTray(std::string(kHeading) + "1,measure,FIRST,-20,,,,\n");
  ExecuteSql(bench_.host().database(),
             "CREATE TRIGGER FULL BEFORE INSERT ON INSTRUMENTS BEGIN SELECT RAISE(ABORT, 'full'); "
             "END");
  view().selectRow(0);
  const QString said = Failure([this] { view().Clear(); });
  EXPECT_TRUE(said.contains("The tray is as it was")) << qPrintable(said);
  ASSERT_TRUE(Settled());
  EXPECT_EQ(SampleId(0), "FIRST");
  ExecuteSql(bench_.host().database(), "DROP TRIGGER FULL");
  view().Clear();
  EXPECT_TRUE(DesktopBench::Until([this] { return SampleId(0).isEmpty(); }));
}

TEST_F(WindowTest, AnEditorThatIsCancelledChangesNothingAndOneThatIsAcceptedFillsThePositions) {
  view().selectRow(0);
  const auto answerEditor = [this](Qt::Key key) {
    bench_.WhenWindow<QDialog>([this, key](QDialog& dialog) {
      ++answered_;
      QTest::keyClick(&dialog, key);
    });
  };
  answerEditor(Qt::Key_Escape);
  session().AddSample(1, {0, 1});
  ASSERT_TRUE(DesktopBench::Until([this] { return answered_ == 1; }));
  ASSERT_TRUE(Settled());
  EXPECT_TRUE(session().cells()[0].empty());

  bench_.WhenWindow<QDialog>([this](QDialog& dialog) {
    ++answered_;
    dialog.accept();
  });
  session().AddSample(1, {0, 1});
  ASSERT_TRUE(DesktopBench::Until([this] { return !session().cells()[1].empty(); }));
  EXPECT_FALSE(session().cells()[0].empty());
  EXPECT_EQ(answered_, 2);
}

TEST_F(WindowTest, WhoIsNotLoggedInEmptiesNoTray) {
  bench_.LoadTray(std::string(kHeading) + "1,measure,FIRST,-20,,,,\n");
  bench_.ActAs("");
  EXPECT_FALSE(Failure([this] { session().DropInterrupted(); }).isEmpty());
  ASSERT_TRUE(Settled());
  EXPECT_EQ(SampleId(0), "FIRST");
}

TEST_F(WindowTest, PastedTextOfAnyLengthIsCutAndSaid) {
  bench_.LoadTray(std::string(kHeading) + "1,measure,FIRST,-20,,,,\n");
  QApplication::clipboard()->setText(QString(10000, QLatin1Char('x')) + "\nSECOND\n");
  view().selectRow(0);
  view().Paste();
  ASSERT_TRUE(DesktopBench::Until([&] { return SampleId(1) == "SECOND"; }));
  EXPECT_EQ(SampleId(0).size(), kMaxSampleIdLength);
  EXPECT_TRUE(bench_.window().statusBar()->currentMessage().contains("cut"));
}

TEST_F(WindowTest, ATrayRunsFromTheButtonToItsSummary) {
  StartRun("1,measure,OIL-A,-20,30,,20,10\n2,verify,CRM-25,-25,30,,20,10\n");
  EXPECT_EQ(session().rows()[1].tests[0].knownViscosity, 5400.0) << "the demonstration's";
  EXPECT_FALSE(Find<QPushButton>("Start")->isVisible());
  EXPECT_FALSE(session().Situation().summaryOpen);
  session().Start();  // a second start while one runs does nothing
  ASSERT_TRUE(DesktopBench::Until([this] { return session().summary().has_value(); }));
  EXPECT_EQ(session().summary()->samples, 2);
  EXPECT_EQ(session().summary()->failedPositions, 0);
  EXPECT_EQ(session().rows()[1].state, RowState::Done);
  EXPECT_EQ(bench_.host().samples().Count(), 2);
  bench_.host().samples().StoreSample(StoredSample());  // of another run: must not be written
  SampleQuery others;
  others.sampleId = "nothing of this run";
  bench_.window().samplesPage().model().SetQuery(others);
  const QString file = QString::fromStdString(bench_.folder() + "/run.csv");
  QTimer::singleShot(0, &bench_.window(), [file] {
    auto* dialog = DesktopBench::WaitForWindow<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    dialog->selectFile(file);
    QMetaObject::invokeMethod(dialog, "accept");
  });
  Q_EMIT bench_.window().trayPage().ExportAsked();
  ASSERT_TRUE(DesktopBench::Until([&] {
    return bench_.window().statusBar()->currentMessage().startsWith("2 samples were written");
  })) << bench_.window().statusBar()->currentMessage().toStdString();
  ASSERT_TRUE(Find<QPushButton>("New Tray")->isVisible());
  QTest::mouseClick(Find<QPushButton>("New Tray"), Qt::LeftButton);
  ASSERT_TRUE(DesktopBench::Until([this] { return !session().rows()[0].filled(); }));
}

TEST_F(WindowTest, GoingBackFromAnAbortOrAClosingChangesNothing) {
  StartRun("1,measure,OIL-A,-20,,,,\n1,measure,,-25,,,,\n");
  Answer("Keep Running");
  bench_.window().trayPage().AskAbort();
  Answer("Keep Running");
  bench_.window().close();
  EXPECT_EQ(answered_, 2);
  EXPECT_TRUE(session().IsRunning());
  EXPECT_TRUE(bench_.window().isVisible());
  EXPECT_TRUE(bench_.window().centralWidget()->isEnabled());

  Answer("Abort the Run");
  bench_.window().trayPage().AskAbort();
  ASSERT_TRUE(DesktopBench::Until([this] { return session().summary().has_value(); }));
  EXPECT_TRUE(session().summary()->aborted);
  EXPECT_EQ(session().rows()[0].state, RowState::NotRun);
}

TEST_F(WindowTest, WhatALevelForbidsIsGreyAndNamesTheLevel) {
  bench_.ActAs("");
  QAbstractButton* start = Find<QPushButton>("Start");
  EXPECT_FALSE(start->isEnabled());
  EXPECT_TRUE(start->toolTip().contains("level 10"));
  view().selectRow(0);
  view().Paste();
  ASSERT_TRUE(Settled());
}

TEST_F(WindowTest, TheMenusOfferTheScreensThatTheModuleHas) {
  const auto labels = [this](const QString& title) {
    std::vector<std::string> texts;
    for (QAction* menu : bench_.window().menuBar()->actions()) {
      if (menu->text().remove(QLatin1Char('&')) != title) continue;
      for (QAction* action : menu->menu()->actions()) texts.push_back(action->text().toStdString());
    }
    return texts;
  };
  const std::vector<std::string> there = {"Current Cell Calibration Constants"};
  EXPECT_TRUE(DesktopBench::Until([&] { return labels("Configuration") == there; }));
  EXPECT_TRUE(labels("Service").empty());
}

TEST_F(WindowTest, AScreenOpensFromTheMenuAndGoesWithTheWindow) {
  // Looks for the action each time: a change in the instrument may rebuild the menu.
  const auto choose = [this] {
    ASSERT_TRUE(DesktopBench::Until([&] {
      QAction* offered = Find<QAction>("Current Cell Calibration Constants");
      if (offered == nullptr || !offered->isEnabled()) return false;
      offered->trigger();
      return true;
    }));
  };
  const auto frame = []() -> QWidget* {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() && widget->windowTitle().startsWith("Current Cell")) return widget;
    }
    return nullptr;
  };
  choose();
  ASSERT_TRUE(DesktopBench::Until([&] { return frame() != nullptr; }));
  const QPointer<QWidget> first = frame();
  choose();  // brings it to the front
  bool closed = false;
  QObject::connect(&bench_.window(), &MainWindow::Closed, [&closed] { closed = true; });
  bench_.window().close();
  EXPECT_TRUE(DesktopBench::Until([&] { return closed && frame() == nullptr; }));
  EXPECT_TRUE(first.isNull());
}

TEST_F(WindowTest, AWrongPasswordChangesNobody) {
  Worker worker(bench_.gui(), "login test");
  LoginDialog dialog(bench_.host().users(), worker, QString(), QString(), &bench_.window());
  dialog.show();
  dialog.nameField().setText("sara");
  dialog.passwordField().setText("wrong");
  QTest::keyClick(&dialog.passwordField(), Qt::Key_Return);
  ASSERT_TRUE(DesktopBench::Until([&] { return dialog.passwordField().text().isEmpty(); }));
  EXPECT_EQ(bench_.host().users().ActingUser(), "martin");
  dialog.passwordField().setText("sara");
  QTest::keyClick(&dialog.passwordField(), Qt::Key_Return);
  ASSERT_TRUE(DesktopBench::Until([&] { return dialog.result() == QDialog::Accepted; }));
  EXPECT_EQ(bench_.host().users().ActingUser(), "sara");
}

}  // namespace
}  // namespace torvell
