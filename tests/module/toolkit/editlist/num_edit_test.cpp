// The number field and its arrows in a window.
#include "module/toolkit/editlist/num_edit.h"

#include <QClipboard>
#include <QToolButton>

#include "module/toolkit/editlist/spin_buttons.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

TEST(NumEditTest, DeletesPastACharacterThatCantGo) {
  CNumEdit field(3, 1, 99.0, 400.0);
  field.show();
  field.setText("250.5");
  QTest::keyClick(&field, Qt::Key_End);
  QTest::keyClick(&field, Qt::Key_Backspace);
  EXPECT_EQ(field.text(), "250.");
  QTest::keyClick(&field, Qt::Key_Backspace);
  EXPECT_EQ(field.text(), "250");
  QTest::keyClick(&field, Qt::Key_Backspace);  // 25 would be too little
  EXPECT_EQ(field.text(), "250");
  EXPECT_EQ(field.cursorPosition(), 2);
  QTest::keyClick(&field, Qt::Key_Delete);
  EXPECT_EQ(field.text(), "250");
  EXPECT_EQ(field.cursorPosition(), 2);
  field.selectAll();
  QTest::keyClick(&field, Qt::Key_Delete);
  EXPECT_EQ(field.text(), "");
  EXPECT_EQ(field.GetNumber(), std::nullopt);
}

TEST(NumEditTest, TypesAndPastesWithinItsLimits) {
  CNumEdit field(3, 0, 0.0, 366.1);
  field.show();
  QTest::keyClicks(&field, "0-3.67x6");
  EXPECT_EQ(field.text(), "366");
  QApplication::clipboard()->setText("400");
  field.selectAll();
  field.paste();
  EXPECT_EQ(field.text(), "366");
  QApplication::clipboard()->setText(QString(10000, u'1'));
  field.selectAll();
  field.paste();
  EXPECT_EQ(field.text(), "366");
  field.SetNumber(999);  // a number that the program sets is not checked
  EXPECT_EQ(field.text(), "999");
}

TEST(SpinButtonsTest, StepWithinTheRange) {
  CNumEdit field(3, 0, 0.0, 255.01);
  CSpinButtons spin;
  spin.SetBuddy(&field);
  spin.SetRange(0, 255);
  spin.SetPosition(254);
  QTest::keyClick(&field, Qt::Key_Up);
  QTest::keyClick(&field, Qt::Key_Up);
  EXPECT_EQ(field.text(), "255");
  spin.SetPosition(1);
  spin.resize(20, 30);
  spin.show();
  const auto arrows = spin.findChildren<QToolButton*>();
  QTest::mouseClick(arrows.at(1), Qt::LeftButton);
  EXPECT_EQ(spin.GetPosition(), 0);
  field.setText("");
  EXPECT_EQ(spin.GetPosition(), 0);
  field.setText("77");
  EXPECT_EQ(spin.GetPosition(), 77);
}

}  // namespace
}  // namespace rvx
