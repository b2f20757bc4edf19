#include "host/cli/oils_file.h"

#include <gtest/gtest.h>

namespace torvell {
namespace {

const std::vector<StandardRow> kStandards = {{"CL 1", "- 5", "1200", "L"},
                                             {"CL 1", "-20", "4000.5", "L"},
                                             {"CL 2", "-20", "0", ""},
                                             {"6000", "-20", "6100", ""}};

std::vector<OilRow> Parse(const std::string& lines, std::string* problems = nullptr) {
  std::vector<FileProblem> found;
  auto rows = ParseOilsFile("position,temperature,true viscosity\n" + lines, kStandards, found);
  if (problems != nullptr) *problems = FormatProblems("oils.csv", found);
  EXPECT_EQ(problems == nullptr, found.empty());
  return rows;
}

TEST(OilsFile, TakesNumbersAndStandards) {
  EXPECT_EQ(
      Parse("1,-20,5000\n1,-25,9000\n2,-20,CL 1\n3,,CL 1\n"),
      (std::vector<OilRow>{
          {1, -20, 5000}, {1, -25, 9000}, {2, -20, 4000.5}, {3, -5, 1200}, {3, -20, 4000.5}}));
}

TEST(OilsFile, AStandardThatIsCalledLikeANumberComesFirst) {
  EXPECT_EQ(Parse("1,-20,6000\n2,,6000\n3,-20,6000.0\n"),
            (std::vector<OilRow>{{1, -20, 6100}, {2, -20, 6100}, {3, -20, 6000}}));
}

TEST(OilsFile, SaysWhatIsWrongWhere) {
  for (const auto& [line, expected] :
       std::vector<std::pair<std::string, std::string>>{{"0,-20,5000", "column 1"},
                                                        {"31,-20,5000", "1 to 30"},
                                                        {"1,-46,5000", "-45 to 25"},
                                                        {"1,,5000", "column 2"},
                                                        {"1,-20,99", "100 to 1000000"},
                                                        {"1,-20,nobody", "stored standard"},
                                                        {"1,,CL 2", "stored standard"},
                                                        {"1,-25,CL 1", "at that temperature"},
                                                        {"1,-20,5000\n1,-20,7000", "line 3"}}) {
    std::string problems;
    Parse(line + "\n", &problems);
    EXPECT_NE(problems.find(expected), std::string::npos) << line << "\n" << problems;
  }
}

TEST(OilsFile, TheStoredTextGivesTheSameRows) {
  const std::vector<OilRow> rows = {{1, -20, 5000.25}, {30, -5.5, 1e5}};
  EXPECT_EQ(ParseOilsText(FormatOilsText(rows)), rows);
  EXPECT_TRUE(ParseOilsText("1\x0B-20").empty());
}

}  // namespace
}  // namespace torvell
