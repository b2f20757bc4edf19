// The dialogs of the sample actions, driven by mouse and keys through Action::Edit.
#include <QListWidget>
#include <QPushButton>

#include "module/calibration/standards_map.h"
#include "module/screens/samples/check_visc_list.h"
#include "module/screens/samples/sample_editor.h"
#include "module/screens/samples/sample_tests_editor.h"
#include "module/toolkit/controls.h"
#include "module/toolkit/editlist/edit_list.h"
#include "module/toolkit/editlist/in_place_combo_box.h"
#include "module/toolkit/editlist/num_edit.h"
#include "platform/help.h"
#include "tests/module/screens/samples/editor_bench.h"

namespace rvx {
namespace {

class DialogBench : public EditorBench {
 public:
  DialogBench() { SetSampleActionEditor(&editor_); }
  ~DialogBench() { SetSampleActionEditor(nullptr); }

 private:
  SampleEditor editor_;
};

void Press(QDialog& dialog, int id) {
  QTest::mouseClick(FindControl<>(dialog, id), Qt::LeftButton);
}

CICEditList& List(QDialog& dialog) { return *FindControl<CICEditList>(dialog, 1063); }
CNumEdit& Injection(QDialog& dialog) { return *FindControl<CNumEdit>(dialog, 1034); }

// Opens the list of a cell and picks the entry with this text.
void Choose(CICEditList& list, int row, const char* text) {
  ASSERT_EQ(list.EditCell(row, 0), 1);
  auto& choices = dynamic_cast<CInPlaceComboBox&>(*list.editor()).choices();
  choices.setCurrentItem(choices.findItems(text, Qt::MatchExactly).at(0));
  QTest::keyClick(&choices, Qt::Key_Return);
}

TEST(MeasureViscEditorTest, AManagerEntersTestsAndTimes) {
  InPacedTime([] {
    DialogBench test;
    test.Calibrate({-5.0, -20.0, -25.0});
    test.bench.SetTimes(33, 44, 60);
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      EXPECT_EQ(dialog.windowTitle(), "Action Parameters");
      CICEditList& list = List(dialog);
      const int first = list.table().dataRowCount();
      Choose(list, first, "-25");
      EXPECT_EQ(list.table().text(first, 1), "60");
      EXPECT_EQ(Injection(dialog).text(), "33");
      Injection(dialog).selectAll();
      QTest::keyClicks(&Injection(dialog), "256");
      // OK also takes the text of an open edit.
      list.EditCell(first, 1);
      QTest::keyClicks(list.editor(), "120");
      Press(dialog, kOkId);
    });
    EXPECT_EQ(test.Measure().Edit(), 1);
    const TestRecord tests = test.Measure().CopyTestRecord();
    const auto last = static_cast<size_t>(tests.testCount - 1);
    EXPECT_EQ(tests.testTemperatures[last], -25.0);
    EXPECT_EQ(tests.rotorOnTimes[last], 120);
    EXPECT_EQ(tests.injectionTime, 25);
    EXPECT_EQ(tests.coolDownTime, 44);
    EXPECT_EQ(test.Measure().IsConfigured(), 1);
    EXPECT_TRUE(test.prompts.messages.empty());
  });
}

TEST(MeasureViscEditorTest, WhatIsMissingIsBeepedAtAndCancelChangesNothing) {
  InPacedTime([] {
    DialogBench test;
    test.Calibrate({-20.0});
    test.Measure().SetTestPoint(0, "-20", "0", 60);
    const std::string before = test.Measure().GetStateText();
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      CICEditList& list = List(dialog);
      test.prompts.TakeBeeps();
      Injection(dialog).clear();
      Press(dialog, kOkId);
      EXPECT_EQ(test.prompts.TakeBeeps(), 1);
      EXPECT_EQ(dialog.focusWidget(), &Injection(dialog));
      list.setFocus();
      QTest::keyClick(&list, Qt::Key_Delete);
      Press(dialog, kOkId);
      EXPECT_EQ(test.prompts.TakeBeeps(), 1);
      EXPECT_EQ(dialog.focusWidget(), &list);
      Press(dialog, kCancelId);
    });
    EXPECT_EQ(test.Measure().Edit(), 0);
    EXPECT_EQ(test.Measure().GetStateText(), before);
    EXPECT_EQ(test.Measure().IsConfigured(), 1);
  });
}

TEST(MeasureViscEditorTest, AnOperatorChoosesTemperaturesAlone) {
  InPacedTime([] {
    DialogBench test;
    test.Calibrate({-20.0, -25.0});
    test.Measure().SetTestPoint(0, "-20", "0", 60);
    test.SetLevel(10);
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      EXPECT_FALSE(Injection(dialog).isEnabled());
      EXPECT_FALSE(FindControl<>(dialog, 1041)->isVisible());
      CICEditList& list = List(dialog);
      EXPECT_EQ(list.EditCell(0, 1), 1);
      EXPECT_EQ(list.editor(), nullptr);
      Choose(list, 1, "-25");
      Press(dialog, kOkId);
    });
    EXPECT_EQ(test.Measure().Edit(), 1);
    EXPECT_EQ(test.Measure().CopyTestRecord().testTemperatures[1], -25.0);
  });
}

TEST(MeasureViscEditorTest, TwentyTestsAreTheMost) {
  InPacedTime([] {
    DialogBench test;
    test.Calibrate({-20.0});
    for (int i = 0; i < 19; ++i) test.Measure().SetTestPoint(i, "-20", "0", 60);
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      CICEditList& list = List(dialog);
      Choose(list, 19, "-20");
      test.prompts.TakeBeeps();
      EXPECT_EQ(list.EditCell(20, 0), 0);
      EXPECT_EQ(test.prompts.TakeBeeps(), 1);
      Press(dialog, kOkId);
    });
    EXPECT_EQ(test.Measure().Edit(), 1);
    EXPECT_EQ(test.Measure().CopyTestRecord().testCount, 20);
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      EXPECT_FALSE(List(dialog).table().HasAddRow());
      Press(dialog, kOkId);
    });
    EXPECT_EQ(test.Measure().Edit(), 1);
    EXPECT_EQ(test.Measure().CopyTestRecord().testCount, 20);
  });
}

class TopicKeeper : public platform::HelpViewer {
 public:
  TopicKeeper() { platform::SetHelpViewer(this); }
  ~TopicKeeper() override { platform::SetHelpViewer(nullptr); }
  void ShowTopic(const std::string& path) override { last = path; }
  std::string last;
};

TEST(MeasureViscEditorTest, TheHelpKeyOpensItsTopic) {
  InPacedTime([] {
    DialogBench test;
    TopicKeeper help;
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor& dialog) {
      QTest::keyClick(&dialog, Qt::Key_F1);
      dialog.reject();
    });
    test.Measure().Edit();
    EXPECT_TRUE(
        QString::fromStdString(help.last).endsWith("\\RVX.chm::/RVX/Sample_action_options.htm"));
  });
}

TEST(MeasureViscEditorTest, AnInstrumentThatGoesCancelsIt) {
  InPacedTime([] {
    DialogBench test;
    test.Calibrate({-20.0});
    std::shared_ptr<platform::Thread> end;
    WhenShown<CMeasureViscEditor>([&](CMeasureViscEditor&) {
      end = platform::StartThread("destruction", [&] { test.bench.instrument.reset(); });
    });
    EXPECT_EQ(test.Measure().Edit(), 0);
    EXPECT_TRUE(PumpUntil([&] { return end->HasEnded(); }));
    end->Join();
  });
}

TEST(CheckViscEditorTest, AFirstEditPicksAStandard) {
  InPacedTime([] {
    DialogBench test;
    test.SetStandards(MakeStandardRow("CL-25", "-20", "5400.5", "1"));
    WhenShown<CCheckViscList>([&](CCheckViscList& dialog) {
      Press(dialog, kOkId);
      EXPECT_EQ(test.prompts.messages.back(), "Pick a standard or press \"Other ...\".");
      auto* list = FindControl<QListWidget>(dialog, 1066);
      QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                        list->visualItemRect(list->item(0)).center());
      Press(dialog, kOkId);
    });
    EXPECT_EQ(test.Check().Edit(), 1);
    EXPECT_EQ(test.Check().GetSampleId(), "CL-25");
    WhenShown<CCheckViscEditor>([&](CCheckViscEditor& dialog) {
      EXPECT_EQ(List(dialog).table().text(0, 1), "5400.50");
      Press(dialog, kCancelId);
    });
    EXPECT_EQ(test.Check().Edit(), 0);
  });
}

TEST(CheckViscEditorTest, OtherLeadsToTheTestsAndAVanishedStandardIsTold) {
  InPacedTime([] {
    DialogBench test;
    test.SetStandards(MakeStandardRow("CL-25", "-20", "5400.5", "1"));
    WhenShown<CCheckViscList>([&](CCheckViscList& dialog) {
      auto* list = FindControl<QListWidget>(dialog, 1066);
      QTest::keyClick(list, Qt::Key_Down);
      test.SetStandards("");
      list->setFocus();
      QTest::keyClick(list, Qt::Key_Space);
      QTest::keyClick(list, Qt::Key_Space);
      Press(dialog, kOkId);
      EXPECT_EQ(test.prompts.messages.back(), "An error occured. Please try again.");
      WhenShown<CCheckViscEditor>([&](CCheckViscEditor& editor) {
        EXPECT_EQ(Injection(editor).text(), "240");
        Press(editor, kOkId);
      });
      Press(dialog, 1080);
    });
    EXPECT_EQ(test.Check().Edit(), 1);
    EXPECT_EQ(test.Check().IsConfigured(), 1);
  });
}

TEST(CheckViscEditorTest, ACancelledFirstEditLeavesTheTray) {
  InPacedTime([] {
    DialogBench test;
    TrayOfSampleActions* tray = test.bench.instrument->GetTray(0);
    std::shared_ptr<Action> action(test.bench.instrument->CreateActionByIndex(kCheckViscAction));
    {
      TrayGuard guard(*tray);
      (void)tray->Replace(4, action);
    }
    WhenShown<CCheckViscList>([](CCheckViscList& dialog) { Press(dialog, kCancelId); });
    EXPECT_EQ(action->Edit(), 0);
    EXPECT_TRUE(PumpUntil([&] {
      TrayGuard guard(*tray);
      return tray->GetAt(4)->GetClassName() == "Null Action";
    }));
  });
}

}  // namespace
}  // namespace rvx
