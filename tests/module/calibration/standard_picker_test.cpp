#include "module/calibration/standard_picker.h"

#include <gtest/gtest.h>

#include "module/calibration/standard_row.h"

namespace rvx {
namespace {

class Picker : public ::testing::Test {
 protected:
  void Store(const std::string& name, const std::string& temperature, const std::string& viscosity,
             const std::string& lot = "L1") {
    standards.AddStandardRecord(name, MakeStandardRecord(temperature, viscosity, lot));
  }
  void Group(const std::string& name, const std::string& temperature, const std::string& group) {
    groups.push_back({name, temperature, group});
  }
  // A standard of each group at a temperature.
  void StoreSet(const std::string& temperature) {
    const char* const names[][2] = {{"S1", "A"}, {"S2", "B"}, {"S3", "C"}};
    for (const auto& [name, group] : names) {
      Store(name, temperature, "3000");
      Group(name, temperature, group);
    }
  }
  CStandardPicker Open(bool lowTemperature = true) {
    return CStandardPicker(
        groups, [this] { return readable ? &standards : nullptr; }, lowTemperature);
  }
  static std::vector<std::string> Texts(const std::vector<CStandardPicker::Row>& rows) {
    std::vector<std::string> texts;
    for (const auto& row : rows) texts.push_back((row.checked ? "x " : "- ") + row.text);
    return texts;
  }
  using List = std::vector<std::string>;

  CStandardsMap standards{true};
  std::vector<StandardGroupRow> groups;
  bool readable = true;
};

TEST_F(Picker, OffersTemperaturesWithAStandardOfEachGroup) {
  StoreSet("-20");
  StoreSet("- 5");
  StoreSet("-40");
  EXPECT_EQ(Texts(Open().temperatures()), (List{"- - 5", "- -20", "- -40"}));
  EXPECT_EQ(Texts(Open(false).temperatures()), (List{"- - 5", "- -20"}));
  standards.RemoveStandardRecord("S3", "-20");
  Store("S3", "-20", "0");
  EXPECT_EQ(Texts(Open(false).temperatures()), (List{"- - 5"}));
  EXPECT_EQ(Open().LackingGroups("-20"), (List{"C"}));
  readable = false;
  EXPECT_TRUE(Open().temperatures().empty());
}

TEST_F(Picker, OneOilDoesNotStandForTwoGroups) {
  Store("S1", "-20", "3000");
  Store("S3", "-20", "9000");
  Group("S1", "-20", "A");
  Group("S1", "-20", "B");
  Group("S3", "-20", "C");
  EXPECT_FALSE(Open().ConformsToD5293("-20", false));
  EXPECT_EQ(Open().LackingGroups("-20"), (List{"B"}));
  // With the row of B first, nothing is remembered yet.
  std::swap(groups[0], groups[1]);
  EXPECT_TRUE(Open().ConformsToD5293("-20", false));
}

TEST_F(Picker, RowsHoldTheirPiecesInOrderWhateverWasTaggedFirst) {
  StoreSet("- 5");
  StoreSet("-10");
  Store("S4", "-10", "3000");  // in the table at another temperature only
  Group("S4", "- 5", "D");
  Store("S5", "-10", "3000");  // not in the table
  const List expected = {"x S1 (- 5 A) (-10 A)", "x S2 (- 5 B) (-10 B)", "x S3 (- 5 C) (-10 C)",
                         "x S4 (-10)"};
  for (const bool warmFirst : {true, false}) {
    CStandardPicker picker = Open();
    picker.CheckTemperature(warmFirst ? 0 : 1);
    picker.CheckTemperature(warmFirst ? 1 : 0);
    picker.CheckTemperature(1);  // is checked already
    EXPECT_EQ(Texts(picker.standards()), expected);
    picker.UncheckTemperature(1);
    EXPECT_EQ(Texts(picker.standards()), (List{"x S1 (- 5 A)", "x S2 (- 5 B)", "x S3 (- 5 C)"}));
  }
}

TEST_F(Picker, AChoiceThatDoesNotConformTakesTheTemperatureAway) {
  StoreSet("-20");
  StoreSet("-25");
  Store("S4", "-25", "4000");
  Group("S4", "-25", "C");
  CStandardPicker picker = Open();
  picker.CheckTemperature(0);
  picker.CheckTemperature(1);
  picker.UncheckStandard(2);  // S3: the only one of group C at -20
  EXPECT_EQ(Texts(picker.temperatures()), (List{"- -20", "x -25"}));
  EXPECT_EQ(Texts(picker.standards()),
            (List{"x S1 (-25 A)", "x S2 (-25 B)", "- S3 (-25 C)", "x S4 (-25 C)"}));
  EXPECT_EQ(picker.MakePlan().positions.size(), 3u);
  picker.CheckStandard(2);
  EXPECT_EQ(picker.MakePlan().positions.size(), 4u);
  picker.CheckTemperature(0);  // its mark comes back on the row of S3 too
  EXPECT_EQ(picker.MakePlan().positions[2].points.size(), 2u);
}

TEST_F(Picker, ThePlanFollowsTheListWithTheWarmestTestFirst) {
  StoreSet("-20");
  StoreSet("- 5");
  standards.RemoveStandardRecord("S1", "- 5");
  Store("S1", "- 5", "1234.5", "warm lot");
  standards.RemoveStandardRecord("S2", "- 5");
  Store("S2", "- 5", "0.0", "L1");  // no viscosity, though neither "0" nor empty
  CStandardPicker picker = Open();
  EXPECT_TRUE(picker.MakePlan().positions.empty());
  picker.CheckTemperature(1);
  picker.CheckTemperature(0);
  const CalibrationTrayPlan plan = picker.MakePlan();
  ASSERT_EQ(plan.positions.size(), 3u);
  EXPECT_EQ(plan.positions[0].sampleId, "S1 warm lot");
  ASSERT_EQ(plan.positions[0].points.size(), 2u);
  EXPECT_EQ(plan.positions[0].points[0].temperature, "- 5");
  EXPECT_EQ(plan.positions[0].points[0].viscosity, "1234.5");
  EXPECT_EQ(plan.positions[0].points[1].temperature, "-20");
  EXPECT_EQ(plan.positions[1].points.size(), 1u);
}

TEST_F(Picker, NamesThatCannotBeToldApartMakeNoTray) {
  StoreSet("-20");
  Store("s1", "-20", "5000");
  Group("s1", "-20", "C");
  CStandardPicker picker = Open();
  picker.CheckTemperature(0);
  EXPECT_TRUE(picker.MakePlan().positions.empty());
  EXPECT_NE(picker.MakePlan().problem, "");
  picker.UncheckStandard(3);  // "s1" comes after the others
  EXPECT_EQ(picker.MakePlan().problem, "");
  EXPECT_EQ(picker.MakePlan().positions.size(), 3u);
}

TEST_F(Picker, AStoreThatChangesMeanwhileDoesNoHarm) {
  StoreSet("-20");
  CStandardPicker picker = Open();
  picker.CheckTemperature(0);
  picker.UncheckStandard(0);
  EXPECT_TRUE(picker.standards().empty());
  standards.Clear();
  EXPECT_TRUE(picker.CheckTemperature(0));
  EXPECT_TRUE(picker.standards().empty());
  readable = false;
  picker.UncheckTemperature(0);
  EXPECT_FALSE(picker.CheckTemperature(0));
}

TEST(StandardRow, IsReadBackFromItsText) {
  const StandardRowText row = ParseStandardRow("CL 12 (- 5 A) (-10) (-20 C)");
  EXPECT_EQ(row.name, "CL 12");
  ASSERT_EQ(row.pieces.size(), 3u);
  EXPECT_EQ(PieceTemperature(row.pieces[0]), "- 5");
  EXPECT_EQ(PieceTemperature(row.pieces[1]), "-10");
  EXPECT_EQ(PieceTemperature(row.pieces[2]), "-20");
  EXPECT_EQ(FormatStandardRow({"n", {"-20 C", "- 5 A", "-10"}}), "n (- 5 A) (-10) (-20 C)");
  for (const char* damaged : {"", "(", ")", "a (", "a (-20 A", " (x)"}) ParseStandardRow(damaged);
  // Letters that could not be removed from the text again are left out.
  EXPECT_EQ(MakePiece({{"n", "-20", "AB"}}, "n", "-20"), "-20");
}

}  // namespace
}  // namespace rvx
