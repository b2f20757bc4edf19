// Questions in windows, asked on the window's thread and on others.
#include <QAbstractButton>
#include <QMessageBox>
#include <QPointer>
#include <QRadioButton>

#include "module/toolkit/controls.h"
#include "module/toolkit/pause_tray_query.h"
#include "module/toolkit/qt_prompter.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

using platform::MessageAnswer;
using platform::MessageButtons;
using platform::MessageIcon;

void Click(QMessageBox& box, QMessageBox::StandardButton button) {
  QTest::mouseClick(box.button(button), Qt::LeftButton);
}

TEST(PrompterTest, TheGuiThreadIsAnsweredInsideItsCall) {
  QtPrompter prompter;
  WhenShown<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Do you wish to stop running samples now?");
    Click(box, QMessageBox::Yes);
  });
  EXPECT_EQ(prompter.ShowMessage("Do you wish to stop running samples now?", MessageButtons::YesNo,
                                 MessageIcon::Question),
            MessageAnswer::Yes);
  WhenShown<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
  EXPECT_EQ(prompter.ShowMessage("Stop?", MessageButtons::YesNo, MessageIcon::Question),
            MessageAnswer::No);
}

TEST(PrompterTest, AnotherThreadWaitsWhileTheWindowsStayUsable) {
  QtPrompter prompter;
  QWidget window;
  window.show();
  MessageAnswer answer = MessageAnswer::No;
  WhenShown<QMessageBox>([&](QMessageBox& box) {
    EXPECT_FALSE(box.isModal());
    Click(box, QMessageBox::Yes);
  });
  RunBeside([&] {
    answer = prompter.ShowMessage("Stop?", MessageButtons::YesNo, MessageIcon::Question);
  });
  EXPECT_EQ(answer, MessageAnswer::Yes);
}

TEST(PrompterTest, AboveAModalDialogAQuestionCanStillBeAnswered) {
  QtPrompter prompter;
  QDialog dialog;
  dialog.setModal(true);
  dialog.show();
  WhenShown<QMessageBox>([&](QMessageBox& box) {
    EXPECT_TRUE(box.isModal());
    dialog.close();  // the box outlives the dialog
    Click(box, QMessageBox::Ok);
  });
  RunBeside([&] { prompter.ShowMessage("Lower it.", MessageButtons::Ok, MessageIcon::Warning); });
}

TEST(PrompterTest, AtItsEndNothingIsConfirmed) {
  QtPrompter prompter;
  WhenShown<QMessageBox>([&](QMessageBox&) { prompter.Close(); });
  for (int i = 0; i < 2; ++i) {  // while a question is open, and after the prompter's end
    MessageAnswer answer = MessageAnswer::Yes;
    RunBeside([&] {
      answer = prompter.ShowMessage("Stop?", MessageButtons::YesNo, MessageIcon::Question);
    });
    EXPECT_EQ(answer, MessageAnswer::No);
  }
}

TEST(PrompterTest, AQuestionThatIsTakenBackGoesWithoutAnAnswer) {
  for (const bool beside : {false, true}) {
    QtPrompter prompter;
    platform::Event ended("test: the run has ended", platform::Event::Mode::ManualReset);
    platform::Event* const withdrawal[] = {&ended};
    std::optional<MessageAnswer> answer = MessageAnswer::Ok;
    QPointer<QMessageBox> shown;
    WhenShown<QMessageBox>([&](QMessageBox& box) {
      shown = &box;
      ended.Set();
    });
    const auto ask = [&] {
      answer = prompter.ShowMessageUntil("Lower it.", MessageButtons::Ok, MessageIcon::Information,
                                         withdrawal);
    };
    if (beside) {
      RunBeside(ask);
    } else {
      ask();
    }
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_TRUE(PumpUntil([&] { return shown.isNull(); }));
  }
}

TEST(PauseTrayQueryTest, NowIsSetAndOkTellsTheChoice) {
  QtPrompter prompter;
  const std::vector<std::string> answers = {"Now", "After sample is complete"};
  WhenShown<CPauseTrayQuery>([](CPauseTrayQuery& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Pause Tray");
    EXPECT_TRUE(FindControl<QRadioButton>(dialog, 1165)->isChecked());
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  EXPECT_EQ(prompter.Choose("Pause Tray", answers, 0), 0);
  WhenShown<CPauseTrayQuery>([](CPauseTrayQuery& dialog) {
    QTest::mouseClick(FindControl<>(dialog, 1166), Qt::LeftButton);
    QTest::mouseClick(FindControl<>(dialog, kOkId), Qt::LeftButton);
  });
  EXPECT_EQ(prompter.Choose("Pause Tray", answers, 0), 1);
  WhenShown<CPauseTrayQuery>([](CPauseTrayQuery& dialog) {
    QTest::mouseClick(FindControl<>(dialog, 1166), Qt::LeftButton);
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  EXPECT_EQ(prompter.Choose("Pause Tray", answers, 0), std::nullopt);
}

}  // namespace
}  // namespace rvx
