// The lines of the list of standards, and a pick among them.
#include "module/screens/samples/standard_choice.h"

#include "module/calibration/standards_map.h"
#include "module/screens/samples/visc_list_check_box.h"
#include "tests/module/screens/samples/editor_bench.h"

namespace rvx {
namespace {

TEST(StandardChoiceTest, ListsUsableRecordsAndGivesThePickToTheAction) {
  InPacedTime([] {
    EditorBench test;
    test.SetStandards(MakeStandardRow("oil (blend)", "-20", "5400.5", "1") +
                      MakeStandardRow("Alpha", "- 5", "0", "1") +
                      MakeStandardRow("Alpha", "-10", "1200", "1"));
    const auto lines = GetStandardLines(*test.bench.instrument->GetStandards());
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Alpha (-10)");
    EXPECT_EQ(lines[1].text, "oil (blend) (-20)");
    ASSERT_TRUE(ApplyStandard(test.Check(), lines[1]));
    EXPECT_EQ(test.Check().GetSampleId(), "oil (blend)");
    EXPECT_EQ(test.Check().CopyTestRecord().testCount, 1);
    EXPECT_EQ(test.Check().CopyTestRecord().testTemperatures[0], -20.0);
    EXPECT_EQ(test.Check().CopyKnownViscosities()[0], 5400.5);
    EXPECT_EQ(test.Check().IsConfigured(), 1);
    test.SetStandards("");
    EXPECT_FALSE(ApplyStandard(test.Check(), lines[0]));
    EXPECT_EQ(test.Check().GetSampleId(), "oil (blend)");
  });
}

TEST(ViscListCheckBoxTest, AtMostOneLineIsChecked) {
  CViscListCheckBox list;
  list.SetLines({"a", "b", "c"});
  list.show();
  const auto click = [&](int line) {
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                      list.visualItemRect(list.item(line)).center());
  };
  click(0);
  click(2);
  EXPECT_EQ(list.checkedLine(), 2);
  EXPECT_EQ(list.item(0)->checkState(), Qt::Unchecked);
  EXPECT_EQ(list.item(2)->checkState(), Qt::Checked);
  click(2);
  EXPECT_EQ(list.checkedLine(), -1);
  EXPECT_TRUE(list.selectedItems().isEmpty());
  QTest::keyClick(&list, Qt::Key_Up);
  EXPECT_EQ(list.checkedLine(), 1);
  QTest::keyClick(&list, Qt::Key_Space);
  EXPECT_EQ(list.checkedLine(), -1);
}

}  // namespace
}  // namespace rvx
