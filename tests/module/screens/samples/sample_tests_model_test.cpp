// What the editor of a sample action shows and writes, without its window.
#include "module/screens/samples/sample_tests_model.h"

#include "module/calibration/standards_map.h"
#include "module/screens/samples/avail_chk_visc_data.h"
#include "module/screens/samples/avail_meas_visc_data.h"
#include "module/toolkit/editlist/edit_table.h"
#include "tests/module/screens/samples/editor_bench.h"

namespace rvx {
namespace {

using Refusal = SampleTestsModel::Refusal;

SampleTestsModel::Entries Entries(std::vector<std::vector<std::string>> rows) {
  SampleTestsModel::Entries entries;
  entries.rows = std::move(rows);
  entries.injectionTime = 100;
  entries.coolDownTime = 50;
  return entries;
}

bool IsRefused(const std::function<void()>& ask) {
  try {
    ask();
    return false;
  } catch (InvalidException* none) {
    delete none;
    return true;
  }
}

TEST(SampleTestsModelTest, WritesAllTestsAndClearsTheRest) {
  InPacedTime([] {
    EditorBench test;
    CCheckViscAction& action = test.Check();
    action.SetTestPoint(2, "-40", "9000", 99);
    SampleTestsModel model(action, true);
    EXPECT_EQ(model.GetRows().size(), 3u);
    EXPECT_EQ(model.GetRows()[2], (std::vector<std::string>{"-40.00", "9000.00", "99"}));
    const auto outcome = model.Accept(Entries({{"- 5", "1234.5", "30"}, {"-20.00", "7", "60"}}));
    EXPECT_EQ(outcome.refusal, Refusal::None);
    const TestRecord tests = action.CopyTestRecord();
    EXPECT_EQ(tests.testCount, 2);
    EXPECT_EQ(tests.testTemperatures[0], -5.0);
    EXPECT_EQ(tests.testTemperatures[2], kTemperatureOff);
    EXPECT_EQ(tests.rotorOnTimes[0], 30);
    EXPECT_EQ(tests.rotorOnTimes[2], 0);
    EXPECT_EQ(tests.injectionTime, 100);
    EXPECT_EQ(tests.coolDownTime, 50);
    EXPECT_EQ(action.CopyKnownViscosities()[0], 1234.5);
    EXPECT_EQ(action.CopyKnownViscosities()[2], 0.0);
  });
}

TEST(SampleTestsModelTest, NumbersFollowTheUsersLocale) {
  InPacedTime([] {
    const LocaleScope german{QLocale(QLocale::German)};
    EditorBench test;
    test.Check().SetTestPoint(0, "-20", "5400.5", 60);
    SampleTestsModel model(test.Check(), true);
    EXPECT_EQ(model.GetRows()[0], (std::vector<std::string>{"-20,00", "5400,50", "60"}));
    EXPECT_EQ(model.Accept(Entries({{"-17,50", "5400,5", "60"}})).refusal, Refusal::None);
    EXPECT_EQ(test.Check().CopyTestRecord().testTemperatures[0], -17.5);
    EXPECT_EQ(test.Check().CopyKnownViscosities()[0], 5400.5);
  });
}

TEST(SampleTestsModelTest, ARefusalWritesNothing) {
  InPacedTime([] {
    EditorBench test;
    CMeasureViscAction& action = test.Measure();
    action.SetTestPoint(0, "-20", "0", 60);
    const std::string before = action.GetStateText();
    SampleTestsModel model(action, false);
    EXPECT_EQ(model.Accept(Entries({})).refusal, Refusal::NoTest);
    const auto empty = model.Accept(Entries({{"-20", "60"}, {"", "60"}}));
    EXPECT_EQ(empty.refusal, Refusal::EmptyCell);
    EXPECT_EQ(empty.row, 1);
    EXPECT_EQ(empty.column, 0);
    auto entries = Entries({{"-20", "60"}});
    entries.hasCoolDownTime = false;
    EXPECT_EQ(model.Accept(entries).refusal, Refusal::NoCoolDownTime);
    entries.hasInjectionTime = false;
    EXPECT_EQ(model.Accept(entries).refusal, Refusal::NoInjectionTime);
    EXPECT_EQ(action.GetStateText(), before);
  });
}

TEST(SampleTestsModelTest, TheLevelCountsAtTheMomentOfOk) {
  InPacedTime([] {
    EditorBench test;
    CMeasureViscAction& action = test.Measure();
    action.SetTestPoint(0, "-20", "0", 60);
    SampleTestsModel model(action, false);
    EXPECT_EQ(model.GetColumns()[1].type, tagCICELTYPE::Whole);
    test.SetLevel(10);  // while the dialog is open
    EXPECT_EQ(model.Accept(Entries({{"-20", "60"}})).refusal, Refusal::NotAllowed);
    auto entries = Entries({{"-20", "61"}});
    entries.injectionTime = model.GetInjectionTime();
    entries.coolDownTime = model.GetCoolDownTime();
    EXPECT_EQ(model.Accept(entries).refusal, Refusal::NotAllowed);
    entries.rows = {{"-20", "60"}, {"-25", "60"}};
    EXPECT_EQ(model.Accept(entries).refusal, Refusal::None);
    EXPECT_EQ(action.CopyTestRecord().testCount, 2);
    const SampleTestsModel operators(action, false);
    EXPECT_FALSE(operators.MayChangeTimes());
    EXPECT_EQ(operators.GetColumns()[1].type, tagCICELTYPE::ReadOnly);
  });
}

TEST(AvailableDataTest, OnlyCalibratedTemperaturesCanBeMeasured) {
  InPacedTime([] {
    EditorBench test;
    test.Calibrate({-5.0, -20.0});
    CAvailMeasViscData data(test.Measure());
    EXPECT_EQ(data.GetListItem(0, 0, 0), "- 5");
    EXPECT_EQ(data.GetListItem(0, 0, 1), "-20");
    EXPECT_TRUE(IsRefused([&] { (void)data.GetListItem(0, 0, 2); }));
    IntRange range;
    data.GetIntRange(0, 1, range);
    EXPECT_EQ(range.minimum, 30);
    EXPECT_EQ(range.maximum, 255);
    test.Calibrate({});
    CAvailMeasViscData none(test.Measure());
    EXPECT_TRUE(IsRefused([&] { (void)none.GetListItem(0, 0, 0); }));
    EXPECT_TRUE(IsRefused([&] { (void)none.GetDefaultText(0, 1); }));
  });
}

TEST(AvailableDataTest, AStandardBringsItsTemperaturesAndViscosities) {
  InPacedTime([] {
    EditorBench test;
    test.SetStandards(MakeStandardRow("CL-25", "-20", "5400.5", "1") +
                      MakeStandardRow("CL-25", "-25", "0", "1") +
                      MakeStandardRow("CL-25", "-30", "20000", "1"));
    EditTable table;
    table.InsertColumn(0, tagCICELTYPE::List);
    table.InsertColumn(1, tagCICELTYPE::Decimal);
    table.InsertColumn(2, tagCICELTYPE::Whole);
    table.AppendRow({"-20", "", ""});
    table.AppendRow({"-15", "", ""});
    CAvailChkViscData data(test.Check(), table);
    EXPECT_EQ(data.GetListItem(0, 0, 0), "- 5");  // without a standard: all temperatures
    EXPECT_EQ(data.GetDefaultText(0, 1), "1.00");
    test.Check().SetSampleId("CL-25");
    EXPECT_EQ(data.GetListItem(0, 0, 0), "");
    EXPECT_EQ(data.GetListItem(0, 0, 4), "-20");
    EXPECT_EQ(data.GetListItem(0, 0, 5), "");
    EXPECT_TRUE(IsRefused([&] { (void)data.GetListItem(0, 0, 9); }));
    EXPECT_EQ(data.GetDefaultText(0, 1), "5400.5");
    EXPECT_EQ(data.GetDefaultText(1, 1), "1.00");  // not the value of another temperature
  });
}

}  // namespace
}  // namespace rvx
