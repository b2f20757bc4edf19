// Each fixed message that an instrument can report has advice, which names only what its reader has
// at hand.
#include "host/tray/advice.h"

#include <gtest/gtest.h>

#include <set>

#include "module/resources/string_table.h"

namespace torvell {
namespace {

TEST(AdviceTest, EachMessageOfTheModuleHasIt) {
  // The strings that are headings, states or questions rather than messages.
  const std::set<int> others = {300, 307, 315, 340};
  int found = 0;
  for (int id = 300; id <= 367; ++id) {
    if (rvx::LoadResourceString(id).empty() || others.count(id) > 0) continue;
    const rvx::MessageCode code = rvx::MessageCodeOf(id);
    EXPECT_EQ(AdviceText(code, Reader::Window).find("torvell "), std::string::npos) << id;
    const std::string onCommandLine = AdviceText(code, Reader::CommandLine);
    EXPECT_NE(onCommandLine.find("\nWhat to do: "), std::string::npos) << id;
    for (const char* ofWindow : {"Open ", "press ", "close ", "menu"}) {
      EXPECT_EQ(onCommandLine.find(ofWindow), std::string::npos) << id << ": " << onCommandLine;
    }
    ++found;
  }
  EXPECT_GT(found, 25);
  EXPECT_EQ(AdviceText(rvx::MessageCode::None, Reader::Window), "");
}

TEST(AdviceTest, ARefusalSaysWhereToLookInItsReadersWords) {
  rvx::ScriptingProblem problem;
  problem.code = rvx::ScriptingProblem::Code::NoCellConstants;
  problem.found = "No constants for -20 degC.";
  problem.accepted = "a calibrated temperature";
  problem.outcome = "Nothing was changed.";
  const std::string sentences =
      "No constants for -20 degC. Accepted: a calibrated temperature. Nothing was changed.";
  EXPECT_EQ(ProblemText(problem, Reader::CommandLine),
            sentences + " See \"torvell constants show\".");
  EXPECT_EQ(ProblemText(problem, Reader::Window).find("torvell"), std::string::npos);
  problem.code = rvx::ScriptingProblem::Code::OutOfRange;
  EXPECT_EQ(ProblemText(problem, Reader::Window), sentences);
}

}  // namespace
}  // namespace torvell
