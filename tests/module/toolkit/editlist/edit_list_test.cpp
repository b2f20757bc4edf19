// The table in its window, driven by mouse and keys.
#include "module/toolkit/editlist/edit_list.h"

#include <QClipboard>
#include <QDialog>
#include <QHeaderView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "module/toolkit/editlist/in_place_combo_box.h"
#include "module/toolkit/editlist/in_place_edit.h"
#include "tests/module/toolkit/editlist/table_data.h"
#include "tests/support/gui.h"

namespace rvx {
namespace {

class EditListTest : public testing::Test {
 protected:
  EditListTest() : list(new CICEditList(&data, &dialog)), button(new QPushButton("OK", &dialog)) {
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(list);
    layout->addWidget(button);
    button->setDefault(true);
    list->InsertColumn(0, tagCICELTYPE::List, "Temperature(C)");
    list->InsertColumn(1, tagCICELTYPE::Decimal, "Known Visc(mPa*s)");
    list->InsertColumn(2, tagCICELTYPE::Whole, "Rotor ON Time(s)");
    list->table().AppendRow({"-10", "1500.0", "60"});
    list->table().AppendRow({"-20", "2500.0", "60"});
    list->table().AppendAddRow();
    dialog.resize(500, 400);
    dialog.show();
    dialog.activateWindow();
    list->setFocus();
    EXPECT_TRUE(PumpUntil([&] { return list->hasFocus(); }));
  }

  QPoint Place(int row, int column) {
    return list->visualItemRect(list->item(row, column)).center();
  }
  void Click(int row, int column, Qt::MouseButton mouseButton = Qt::LeftButton) {
    QTest::mouseClick(list->viewport(), mouseButton, {}, Place(row, column));
  }
  // Makes the cell the current one and opens its editor.
  CInPlaceNumberEdit& Edit(int row, int column) {
    list->table().SetCurrent(row, column);
    QTest::keyClick(list, Qt::Key_Return);
    return dynamic_cast<CInPlaceNumberEdit&>(*list->editor());
  }
  CInPlaceComboBox* combo() { return dynamic_cast<CInPlaceComboBox*>(list->editor()); }
  const std::string& text(int row, int column) { return list->table().text(row, column); }

  BeepCounter prompts;
  TableData data;
  QDialog dialog;
  CICEditList* list;
  QPushButton* button;
};

TEST_F(EditListTest, TheFirstClickChoosesACellAndTheSecondEditsIt) {
  Click(1, 2);
  EXPECT_EQ(list->editor(), nullptr);
  EXPECT_EQ(list->table().currentRow(), 1);
  Click(1, 2);
  auto* edit = dynamic_cast<CInPlaceIntEdit*>(list->editor());
  ASSERT_NE(edit, nullptr);
  EXPECT_EQ(edit->selectedText(), "60");
  ASSERT_NE(edit->hint(), nullptr);
  EXPECT_EQ(edit->hint()->text(), "30 ... 255");
  EXPECT_TRUE(edit->hint()->isVisible());
  QTest::keyClicks(edit, "256");
  EXPECT_EQ(edit->text(), "25");
  EXPECT_EQ(prompts.TakeBeeps(), 1);
  const QPointer<QLabel> hint = edit->hint();
  Click(0, 0);  // a click elsewhere keeps the text
  EXPECT_EQ(text(1, 2), "25");
  EXPECT_TRUE(PumpUntil([&] { return hint.isNull(); }));
}

TEST_F(EditListTest, EnterKeepsAndEscapeDropsAndNeitherReachesTheDialog) {
  auto& first = Edit(0, 1);
  EXPECT_EQ(first.hint()->text(), "1000.0 ... 50000.0");
  QTest::keyClicks(&first, "60000");
  QTest::keyClick(&first, Qt::Key_Return);
  EXPECT_EQ(text(0, 1), "6000");
  QTest::keyClicks(&Edit(0, 1), "9");
  QTest::keyClick(list->editor(), Qt::Key_Escape);
  EXPECT_EQ(text(0, 1), "6000");
  EXPECT_TRUE(list->hasFocus());
  QTest::keyClick(list, Qt::Key_Escape);
  EXPECT_TRUE(dialog.isVisible());
  prompts.TakeBeeps();
  auto& emptied = Edit(0, 1);
  QTest::keyClick(&emptied, Qt::Key_Backspace);
  QTest::keyClick(&emptied, Qt::Key_Return);  // nothing to take
  EXPECT_EQ(prompts.TakeBeeps(), 1);
  EXPECT_NE(list->editor(), nullptr);
  list->EndEdit();
  EXPECT_EQ(text(0, 1), "6000");
  EXPECT_EQ(dialog.result(), 0);
}

TEST_F(EditListTest, KeysInAFieldStayThere) {
  auto& edit = Edit(0, 1);
  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_PageDown, Qt::Key_Insert, Qt::Key_Delete}) {
    QTest::keyClick(&edit, key);
  }
  EXPECT_EQ(list->editor(), &edit);
  EXPECT_EQ(list->table().rowCount(), 3);
  EXPECT_EQ(list->table().currentRow(), 0);
}

TEST_F(EditListTest, WhatIsPastedIsCheckedAsAWhole) {
  QApplication::clipboard()->setText(QString(10000, u'9'));
  auto& edit = Edit(0, 1);
  edit.paste();
  EXPECT_EQ(edit.text(), "1500.0");
  EXPECT_EQ(prompts.TakeBeeps(), 1);
  QApplication::clipboard()->setText("5400.5");
  edit.selectAll();
  QTest::keyClick(&edit, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(edit.text(), "5400.5");
  QTest::keyClick(&edit, Qt::Key_Return);
  EXPECT_EQ(text(0, 1), "5400.5");
}

TEST_F(EditListTest, TheAddRowTakesItsNameFirst) {
  Click(2, 1);
  EXPECT_EQ(list->editor(), nullptr);
  EXPECT_EQ(prompts.TakeBeeps(), 1);
  Click(2, 0);
  ASSERT_NE(combo(), nullptr);
  EXPECT_EQ(combo()->choices().currentRow(), 0);
  QTest::keyClick(&combo()->choices(), Qt::Key_Escape);
  EXPECT_EQ(list->table().rowCount(), 3);
  Click(2, 0);
  QTest::keyClick(&combo()->choices(), Qt::Key_Tab);
  EXPECT_EQ(prompts.TakeBeeps(), 1);
  QTest::keyClick(&combo()->choices(), Qt::Key_Down);
  QTest::keyClick(&combo()->choices(), Qt::Key_Return);
  EXPECT_EQ(text(2, 0), "-20");  // the line without a text was passed over
  EXPECT_EQ(text(2, 1), "1500.0");
  EXPECT_TRUE(list->table().IsAddRow(3));
  EXPECT_TRUE(list->hasFocus());
}

TEST_F(EditListTest, AChoiceIsTakenByAClickAndKeptByAClickElsewhere) {
  list->table().SetCurrent(0, 0);
  QTest::keyClick(list, Qt::Key_Return);
  QListWidget& choices = combo()->choices();
  QTest::mouseClick(choices.viewport(), Qt::LeftButton, {},
                    choices.visualItemRect(choices.item(3)).center());
  EXPECT_EQ(text(0, 0), "-30");
  QTest::keyClick(list, Qt::Key_Return);
  QTest::keyClick(&combo()->choices(), Qt::Key_Up);
  combo()->close();
  EXPECT_EQ(text(0, 0), "-20");
  // Nothing chosen: the row keeps what was typed into its other cells.
  list->table().SetText(0, 1, "4711");
  QTest::keyClick(list, Qt::Key_Return);
  combo()->close();
  EXPECT_EQ(text(0, 1), "4711");
}

TEST_F(EditListTest, AClickOnALineWithoutATextTakesNoChoice) {
  list->table().SetText(0, 1, "4711");
  list->table().SetCurrent(0, 0);
  QTest::keyClick(list, Qt::Key_Return);
  QListWidget& choices = combo()->choices();
  QTest::mouseClick(choices.viewport(), Qt::LeftButton, {},
                    choices.visualItemRect(choices.item(1)).center());
  EXPECT_NE(combo(), nullptr);  // the choice is still open
  list->EndEdit();
  EXPECT_EQ(text(0, 0), "-10");
  EXPECT_EQ(text(0, 1), "4711");
}

TEST_F(EditListTest, OnlyANewAddRowScrollsTheTable) {
  for (int i = 0; i < 18; ++i) {
    list->table().InsertNew(0);
    list->table().SetText(0, 0, "-20");
  }
  dialog.resize(500, 250);
  ASSERT_TRUE(PumpUntil([&] { return list->viewport()->height() < 240; }));
  list->scrollToTop();
  QTest::keyClicks(&Edit(1, 1), "2000");
  Click(3, 2);  // ends the edit, and must select the cell under the mouse
  EXPECT_EQ(text(1, 1), "2000");
  EXPECT_EQ(list->table().currentRow(), 3);
  QApplication::processEvents();
  EXPECT_EQ(list->rowAt(0), 0);

  const int addRow = list->table().rowCount() - 1;
  list->EditCell(addRow, 0);
  QTest::keyClick(&combo()->choices(), Qt::Key_Return);
  EXPECT_TRUE(PumpUntil([&] {
    return list->viewport()->rect().contains(list->visualItemRect(list->item(addRow + 1, 0)));
  }));
}

TEST_F(EditListTest, AColumnInTheMiddleLeavesTheOthersTheirTypesAndTexts) {
  list->InsertColumn(1, tagCICELTYPE::Text, "Lot");
  list->InsertColumn(9, tagCICELTYPE::Text, "Nowhere");
  EXPECT_EQ(list->columnCount(), 4);
  EXPECT_EQ(list->table().columnCount(), 4);
  EXPECT_EQ(text(0, 2), "1500.0");
  EXPECT_EQ(list->item(0, 3)->text(), "60");
  list->EditCell(0, 1);
  EXPECT_EQ(dynamic_cast<CInPlaceNumberEdit*>(list->editor()), nullptr);
  list->EditCell(0, 2);
  EXPECT_NE(dynamic_cast<CInPlaceNumberEdit*>(list->editor()), nullptr);
}

TEST_F(EditListTest, TheChoicesStayOnTheScreen) {
  const QRect screen = dialog.screen()->availableGeometry();
  dialog.move(screen.left(), screen.bottom() - dialog.height());
  ASSERT_TRUE(PumpUntil([&] { return dialog.geometry().bottom() > screen.bottom() - 60; }));
  for (int i = 0; i < 9; ++i) data.choices.emplace_back("-40");
  list->resize(list->width(), dialog.height());
  list->EditCell(2, 0);
  EXPECT_TRUE(screen.contains(combo()->geometry())) << combo()->geometry().bottom();
}

TEST_F(EditListTest, TheMenuInsertsAndDeletes) {
  const auto choose = [&](int row, int entry) {
    Click(row, 0, Qt::RightButton);
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    menu->actions().at(entry)->trigger();
    menu->close();
  };
  choose(1, 0);
  ASSERT_NE(combo(), nullptr);
  QTest::keyClick(&combo()->choices(), Qt::Key_Escape);
  EXPECT_EQ(list->table().rowCount(), 4);
  EXPECT_EQ(text(1, 0), "");
  choose(1, 1);
  EXPECT_EQ(list->table().rowCount(), 3);
  EXPECT_EQ(text(1, 0), "-20");
  Click(2, 0, Qt::RightButton);  // the add row
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  Click(0, 1, Qt::RightButton);  // another column
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  button->setFocus();
  Click(0, 0, Qt::RightButton);  // without the focus
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(EditListTest, KeysInsertAndDeleteAndBeepOnTheAddRow) {
  QTest::keyClick(list, Qt::Key_Delete);
  EXPECT_EQ(text(0, 0), "-20");
  QTest::keyClick(list, Qt::Key_Insert);
  QTest::keyClick(&combo()->choices(), Qt::Key_Return);
  EXPECT_EQ(text(0, 0), "-10");
  for (int i = 0; i < 5; ++i) QTest::keyClick(list, Qt::Key_Down);
  EXPECT_EQ(prompts.TakeBeeps(), 0);
  QTest::keyClick(list, Qt::Key_Insert);
  QTest::keyClick(list, Qt::Key_Delete);
  EXPECT_EQ(prompts.TakeBeeps(), 2);
  EXPECT_EQ(list->table().rowCount(), 3);
}

TEST_F(EditListTest, AFullTableBeepsAtTheAddRow) {
  list->table().SetMaximumRows(2);
  Click(2, 0);
  EXPECT_EQ(list->editor(), nullptr);
  EXPECT_EQ(prompts.TakeBeeps(), 1);
}

TEST_F(EditListTest, AReadOnlyColumnBeeps) {
  list->SetColumnType(2, tagCICELTYPE::ReadOnly);
  EXPECT_EQ(list->EditCell(0, 2), 1);
  EXPECT_EQ(list->editor(), nullptr);
  EXPECT_EQ(prompts.TakeBeeps(), 1);
}

TEST_F(EditListTest, TheListMayGoWhileAnEditorIsOpen) {
  QTest::keyClicks(&Edit(0, 1), "2");
  delete list;
  list = nullptr;
}

}  // namespace
}  // namespace rvx
