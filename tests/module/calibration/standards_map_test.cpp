#include "module/calibration/standards_map.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <functional>

#include "boundary/exceptions.h"

namespace rvx {
namespace {

using Names = std::vector<std::string>;

bool RaisesInvalid(const std::function<void()>& operation) {
  try {
    operation();
  } catch (InvalidException* error) {
    delete error;
    return true;
  }
  return false;
}

CStandardsMap Loaded(const std::string& text, bool lowTemperature = true) {
  CStandardsMap map(lowTemperature);
  map.LoadFromText(text);
  return map;
}

const char kTwoRows[] = "CL-1\v-20\v5000\vlot 7\v\rCL-1\v-25\v7200.5\v\v\r";

TEST(StandardsMap, RowsOfOneNameMakeOneStandard) {
  const CStandardsMap map = Loaded(kTwoRows);
  EXPECT_EQ(map.GetStandardNames(), Names{"CL-1"});
  EXPECT_EQ(map.GetStandardTemperature("CL-1", 0), "-20");
  EXPECT_EQ(map.GetStandardViscosityText("CL-1", 0), "5000");
  EXPECT_EQ(map.GetStandardLot("CL-1", 0), "lot 7");
  EXPECT_EQ(map.GetStandardViscosity("CL-1", 1), 7200.5);
  EXPECT_EQ(map.GetStandardLot("CL-1", 1), "");
  EXPECT_EQ(map.GetStandardRecord("CL-1", 0), "-20\v5000\vlot 7\v");
}

TEST(StandardsMap, MinusOneIsTheLastRecord) {
  const CStandardsMap map = Loaded(kTwoRows);
  EXPECT_EQ(map.GetStandardTemperature("CL-1", kLastRecord), "-25");
  EXPECT_EQ(map.GetStandardViscosityText("CL-1", kLastRecord), "7200.5");
  EXPECT_EQ(map.GetStandardViscosity("CL-1", kLastRecord), 7200.5);
  EXPECT_EQ(map.GetStandardLot("CL-1", kLastRecord), "");
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardRecord("CL-1", kLastRecord); }));
}

TEST(StandardsMap, UnknownNameOrIndexRaises) {
  CStandardsMap map = Loaded(kTwoRows);
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardRecord("none", 0); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardLot("none", kLastRecord); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardViscosity("cl-1", 0); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardTemperature("CL-1", 2); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.GetStandardViscosityText("CL-1", -2); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.FindStandardTemperature("none", "-20"); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.FindUsableTemperature("none", "-20"); }));
  EXPECT_TRUE(RaisesInvalid([&] { map.RemoveStandardRecord("none", "-20"); }));
  EXPECT_FALSE(map.HasUsableRecord("none"));
}

TEST(StandardsMap, FirstRecordOfATemperatureStays) {
  CStandardsMap map = Loaded(std::string(kTwoRows) + "CL-1\v-25\v1\vx\v\rCL-1\v-20\v2\vy\v\r");
  EXPECT_EQ(map.GetStandardViscosity("CL-1", 0), 5000.0);
  EXPECT_EQ(map.GetStandardViscosity("CL-1", 1), 7200.5);
  EXPECT_EQ(map.AddStandardRecord("CL-1", "-25\v1\v\v"), 2);
  EXPECT_EQ(map.AddStandardRecord("CL-1", "-30\v1\v\v"), 3);
  EXPECT_EQ(map.AddStandardRecord("CL-2", "-25\v1\v\v"), 1);
}

TEST(StandardsMap, ZeroOrNoViscosityIsNotUsable) {
  const CStandardsMap map =
      Loaded("a\v-20\v0\v\v\ra\v-25\v\vx\v\ra\v-30\v0.0\v\v\rb\v-20\v0\v\v\r");
  EXPECT_EQ(map.FindStandardTemperature("a", "-25"), 1);
  EXPECT_EQ(map.FindStandardTemperature("a", "-35"), -1);
  EXPECT_EQ(map.FindUsableTemperature("a", "-20"), -1);
  EXPECT_EQ(map.FindUsableTemperature("a", "-25"), -1);
  EXPECT_EQ(map.FindUsableTemperature("a", "-30"), 2) << "only the text \"0\" counts";
  EXPECT_TRUE(map.HasUsableRecord("a"));
  EXPECT_FALSE(map.HasUsableRecord("b"));
}

TEST(StandardsMap, NinthTemperatureNeedsTheOption) {
  const std::string text = "a\v-40\v90000\v\v\rb\v- 5\v900\v\v\rc\v-5\v900\v\v\r";
  EXPECT_TRUE(Loaded(text, true).HasUsableRecord("a"));
  EXPECT_FALSE(Loaded(text, false).HasUsableRecord("a"));
  EXPECT_EQ(Loaded(text, false).FindUsableTemperature("a", "-40"), 0);
  EXPECT_TRUE(Loaded(text, false).HasUsableRecord("b"));
  EXPECT_FALSE(Loaded(text, true).HasUsableRecord("c")) << "written without its blank";
}

TEST(StandardsMap, LastRecordTakesTheStandardAlong) {
  CStandardsMap map = Loaded(kTwoRows);
  EXPECT_EQ(map.RemoveStandardRecord("CL-1", "-30"), -1);
  EXPECT_EQ(map.RemoveStandardRecord("CL-1", "-20"), 1);
  EXPECT_EQ(map.GetStandardTemperature("CL-1", 0), "-25");
  EXPECT_EQ(map.RemoveStandardRecord("CL-1", "-25"), 0);
  EXPECT_TRUE(map.GetStandardNames().empty());
}

TEST(StandardsMap, NamesAreSortedWithoutCase) {
  const CStandardsMap map = Loaded("Abe\v-20\v1\v\v\rABD\v-20\v1\v\v\rabc\v-20\v1\v\v\r");
  EXPECT_EQ(map.GetStandardNames(), (Names{"abc", "ABD", "Abe"}));
}

TEST(StandardsText, CutRowEndsTheLoad) {
  EXPECT_EQ(Loaded("a\v-20\v1\v\v\rb\v-20\v1\v\v").GetStandardNames(), Names{"a"});
  EXPECT_EQ(Loaded("a\v-20\v1\v\v\rb").GetStandardNames(), Names{"a"});
  EXPECT_TRUE(Loaded("").GetStandardNames().empty());
  EXPECT_TRUE(Loaded("no cells\r").GetStandardNames().empty());
}

TEST(StandardsText, MissingCellsAreEmpty) {
  const CStandardsMap map = Loaded("a\v-20\v500\r");
  EXPECT_EQ(map.GetStandardTemperature("a", 0), "-20");
  EXPECT_EQ(map.GetStandardViscosityText("a", 0), "");
  EXPECT_EQ(map.GetStandardLot("a", 0), "");
  EXPECT_EQ(map.FindUsableTemperature("a", "-20"), -1);
}

TEST(StandardsText, ComesBackAsItWas) {
  EXPECT_EQ(Loaded(kTwoRows).ToText(), kTwoRows);
  EXPECT_EQ(Loaded("b\v-20\v1\v\v\ra\v-20\v2\v\v\rb\v-25\v3\v\v\r").ToText(),
            "a\v-20\v2\v\v\rb\v-20\v1\v\v\rb\v-25\v3\v\v\r");
  EXPECT_EQ(MakeStandardRow("a\vb", "-20", "1\r2", "l"), "a b\v-20\v1 2\vl\v\r");
}

RC_GTEST_PROP(StandardsTextProperty, WrittenRowsComeBack, ()) {
  std::string text;
  for (int rows = *rc::gen::inRange(0, 8); rows > 0; --rows) {
    text += MakeStandardRow(*rc::gen::arbitrary<std::string>(),
                            *rc::gen::elementOf(std::vector<std::string>{"- 5", "-10", "-40"}),
                            *rc::gen::arbitrary<std::string>(), *rc::gen::arbitrary<std::string>());
  }
  const std::string once = Loaded(text).ToText();
  RC_ASSERT(Loaded(once).ToText() == once);
  RC_ASSERT(Loaded(once).GetStandardNames() == Loaded(text).GetStandardNames());
}

RC_GTEST_PROP(StandardsTextProperty, DamagedTextSettles, ()) {
  const auto text = *rc::gen::container<std::string>(rc::gen::oneOf(
      rc::gen::elementOf(std::string("\v\v\v\r\rab-205")), rc::gen::arbitrary<char>()));
  // A row end inside a name becomes a blank when it is written, which moves the name in the order
  // or makes it equal to another. The text no longer changes after the second time.
  const std::string twice = Loaded(Loaded(text).ToText()).ToText();
  RC_ASSERT(Loaded(twice).ToText() == twice);
}

}  // namespace
}  // namespace rvx
