// The table's rules, without its window.
#include "module/toolkit/editlist/edit_table.h"

#include <gmock/gmock.h>

#include <QString>

#include "tests/module/toolkit/editlist/table_data.h"

namespace rvx {
namespace {

class EditTableTest : public testing::Test {
 protected:
  EditTableTest() {
    table.SetAvailableData(&data);
    table.InsertColumn(0, tagCICELTYPE::List);
    table.InsertColumn(1, tagCICELTYPE::Decimal);
    table.InsertColumn(2, tagCICELTYPE::Whole);
  }
  std::string Row(int row) {
    return table.text(row, 0) + "|" + table.text(row, 1) + "|" + table.text(row, 2);
  }

  TableData data;
  EditTable table;
};

TEST_F(EditTableTest, NamingTheAddRowMakesARowWithDefaultsAndAnotherAddRow) {
  table.AppendAddRow();
  EXPECT_FALSE(table.MayEdit(0, 1));
  ASSERT_TRUE(table.MayEdit(0, 0));
  EXPECT_EQ(table.BeginEdit(0, 0)->startText, "");
  table.AcceptEdit(0, 0, "-20");
  EXPECT_EQ(table.rowCount(), 2);
  EXPECT_EQ(table.dataRowCount(), 1);
  EXPECT_EQ(Row(0), "-20|1500.0|60");
  EXPECT_TRUE(table.IsAddRow(1));
  table.AcceptEdit(0, 1, "5400");
  EXPECT_EQ(Row(0), "-20|5400|60");
  table.AcceptEdit(1, 0, kAddRowText);  // the add row's own text is not data
  EXPECT_EQ(table.dataRowCount(), 1);
}

TEST_F(EditTableTest, TheNextChoiceIsOfferedBehindTheLastOne) {
  table.AppendAddRow();
  EXPECT_EQ(table.BeginEdit(0, 0)->selected, 0);
  table.AcceptEdit(0, 0, "-20");
  EXPECT_EQ(table.BeginEdit(1, 0)->selected, 3);
  table.AcceptEdit(1, 0, "-30");
  EXPECT_EQ(table.BeginEdit(2, 0)->selected, 0);  // after the last choice comes the first
  table.AcceptEdit(2, 0, "-77");
  EXPECT_EQ(table.BeginEdit(3, 0)->selected, 0);
  // The cell's own choice is selected even where it is written in another way.
  table.SetText(0, 0, "-20.00");
  EXPECT_EQ(table.BeginEdit(0, 0)->selected, 2);
}

TEST_F(EditTableTest, ADeletedRowLeavesTheAddRowAndAValidCurrentCell) {
  table.AppendRow({"-10", "1", "2"});
  table.AppendAddRow();
  table.SetCurrent(0, 2);
  EXPECT_TRUE(table.Delete(0));
  EXPECT_EQ(table.rowCount(), 1);
  EXPECT_FALSE(table.Delete(0));
  EXPECT_FALSE(table.InsertNew(0));
  EXPECT_EQ(table.currentRow(), 0);
}

TEST_F(EditTableTest, AFullTableRefusesAndTakesAgainBehindADelete) {
  table.SetMaximumRows(2);
  table.AppendRow({"-10", "1", "2"});
  table.AppendAddRow();
  table.AcceptEdit(1, 0, "-20");
  EXPECT_EQ(table.dataRowCount(), 2);
  EXPECT_FALSE(table.MayEdit(2, 0));  // the add row
  EXPECT_FALSE(table.InsertNew(0));
  EXPECT_TRUE(table.Delete(0));
  EXPECT_TRUE(table.MayEdit(1, 0));
  // A table that is full when it is opened has no add row. It gets one as soon as there is room.
  EditTable opened;
  opened.InsertColumn(0, tagCICELTYPE::Text);
  opened.SetMaximumRows(1);
  opened.AppendRow({"a"});
  opened.AcceptEdit(0, 0, "b");
  EXPECT_EQ(opened.rowCount(), 1);
  opened.Delete(0);
  EXPECT_TRUE(opened.HasAddRow());
}

TEST_F(EditTableTest, TheCurrentCellStaysInTheList) {
  for (int i = 0; i < 9; ++i) table.AppendRow({"-10", "1", "2"});
  table.AppendAddRow();
  table.SetCurrent(5, 1);
  table.PageUp(4, 3);
  EXPECT_EQ(table.currentRow(), 4);  // to the top visible row
  table.PageUp(4, 3);
  EXPECT_EQ(table.currentRow(), 1);  // then a page further
  table.PageUp(1, 3);
  EXPECT_EQ(table.currentRow(), 0);
  table.PageDown(6, 3);
  EXPECT_EQ(table.currentRow(), 8);
  table.PageDown(6, 3);
  EXPECT_EQ(table.currentRow(), 9);
  table.MoveCurrent(1, 5);
  EXPECT_EQ(table.currentRow(), 9);
  EXPECT_EQ(table.currentColumn(), 2);
}

TEST_F(EditTableTest, ARemovedColumnTakesItsTypeAlong) {
  table.AppendRow({"-10", "1", "2"});
  table.DeleteColumn(1);
  EXPECT_EQ(table.text(0, 1), "2");
  EXPECT_EQ(table.BeginEdit(0, 1)->type, tagCICELTYPE::Whole);
  table.SetColumnType(1, tagCICELTYPE::ReadOnly);
  EXPECT_FALSE(table.BeginEdit(0, 1));
}

TEST(ClipTextTest, LongTextsEndInDots) {
  const auto measure = [](const QString& text) { return static_cast<int>(text.size()) * 10; };
  const auto clip = [&](const char* text, int width) {
    return ClipText(QString(text), width, measure, QString("...")).toStdString();
  };
  EXPECT_EQ(clip("12345", 54), "12345");
  EXPECT_EQ(clip("123456", 54), "12...");
  EXPECT_EQ(clip("12345", 10), "...");
}

}  // namespace
}  // namespace rvx
