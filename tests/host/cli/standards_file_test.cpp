// The standards as a file and as their stored text.
#include "host/cli/standards_file.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace torvell {
namespace {

constexpr char kHeading[] = "name,temperature,known viscosity,lot\n";

std::string Refusal(const std::string& lines) {
  std::vector<FileProblem> problems;
  ParseStandardsFile(kHeading + lines, problems);
  return problems.empty() ? "" : FormatProblem("f", problems.front());
}

TEST(StandardsFile, TakesTemperaturesInTheFormsThatPeopleType) {
  std::vector<FileProblem> problems;
  const auto rows = ParseStandardsFile(
      std::string(kHeading) + "A,-5,1000,L1\nA,- 5.0 ,1000,\nB,-20.00,2e3,\n", problems);
  // The first two lines name the same temperature.
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].line, 3);
  EXPECT_EQ(rows[0], (StandardRow{"A", "- 5", "1000", "L1"}));
  EXPECT_EQ(rows[2], (StandardRow{"B", "-20", "2e3", ""}));
}

TEST(StandardsFile, RefusesWhatTheStoreCouldNotKeep) {
  EXPECT_EQ(
      Refusal(",-20,100,\n"),
      "f, line 2, column 1 (name): found an empty cell; accepted: a name in one line, without "
      "control characters");
  EXPECT_EQ(Refusal("A,-21,100,\n"),
            "f, line 2, column 2 (temperature): found \"-21\"; accepted: one of -5, -10, -15, -18, "
            "-20, -25, -30, -35, -40");
  EXPECT_EQ(Refusal("A,-20,0,\n"),
            "f, line 2, column 3 (known viscosity): found \"0\"; accepted: a number above 0 in "
            "mPa*s, with a point as decimal sign");
  EXPECT_NE(Refusal("A,-20,1,\"x\ry\"\n"), "");
}

TEST(StandardsFile, StoredTextHasACellEndBehindEachCellAndARowEnd) {
  EXPECT_EQ(FormatStandardsText({{"A", "- 5", "1000", ""}}), "A\v- 5\v1000\v\v\r");
}

TEST(StandardsFile, ReadingTheStoredTextDropsRepeatsAndARowWithoutEnd) {
  const std::string text = "A\v-20\v1\vL\v\rA\v-20\v2\vM\v\rA\v-25\v3\v\v\rB\v-20";
  EXPECT_EQ(ParseStandardsText(text),
            (std::vector<StandardRow>{{"A", "-20", "1", "L"}, {"A", "-25", "3", ""}}));
  EXPECT_TRUE(ParseStandardsText("").empty());
}

TEST(StandardsFile, TheTextReadsBackWhatTheFileGave) {
  const std::string file =
      std::string(kHeading) + "A,-20,3950,\"x, y\"\nA,-5,700,\nB,-40,90000,z\n";
  std::vector<FileProblem> problems;
  const auto rows = ParseStandardsFile(file, problems);
  EXPECT_EQ(ParseStandardsText(FormatStandardsText(rows)), rows);
  EXPECT_EQ(FormatStandardsFile(rows), file);
}

}  // namespace
}  // namespace torvell
