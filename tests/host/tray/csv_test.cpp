// The comma-separated form, and how its problems read.
#include "host/tray/csv.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace torvell {
namespace {

std::vector<std::vector<std::string>> Cells(const std::string& text) {
  std::vector<FileProblem> problems;
  std::vector<std::vector<std::string>> cells;
  for (const CsvRow& row : ParseCsv(text, problems)) cells.push_back(row.cells);
  EXPECT_TRUE(problems.empty());
  return cells;
}

using Rows = std::vector<std::vector<std::string>>;

TEST(Csv, TakesEitherLineEndAMarkAndALastLineWithoutEnd) {
  const Rows expected = {{"a", "b"}, {"c", ""}};
  EXPECT_EQ(Cells("a,b\nc,\n"), expected);
  EXPECT_EQ(Cells("a,b\r\nc,\r\n"), expected);
  EXPECT_EQ(Cells("\xEF\xBB\xBF"
                  "a,b\n\nc,"),
            expected);
}

TEST(Csv, QuotedCellsKeepCommasQuotesAndLineEnds) {
  EXPECT_EQ(Cells("\"a,\"\"b\"\"\",\"two\nlines\"\nnext,row\n"),
            (Rows{{"a,\"b\"", "two\nlines"}, {"next", "row"}}));
}

TEST(Csv, CountsLinesInsideQuotesForTheRowsBehind) {
  std::vector<FileProblem> problems;
  const auto rows = ParseCsv("\"one\ntwo\",x\nthird\n", problems);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].line, 3);
}

TEST(Csv, ReportsQuotesThatAreOpenOrFollowedByText) {
  std::vector<FileProblem> problems;
  ParseCsv("a,\"b\"c\nd,\"e\n", problems);
  ASSERT_EQ(problems.size(), 2u);
  EXPECT_EQ(problems[0].line, 1);
  EXPECT_EQ(problems[0].column, 2);
  EXPECT_EQ(problems[1].line, 2);
  EXPECT_EQ(problems[1].found, "a quote that is never closed");
}

TEST(Csv, WhatIsWrittenReadsBack) {
  rc::check([](const std::vector<std::string>& cells) {
    // A row of one empty cell would be written as an empty line, which is not read as a row.
    RC_PRE(cells.size() > 1);
    std::vector<FileProblem> problems;
    const auto rows = ParseCsv(CsvLine(cells), problems);
    RC_ASSERT(problems.empty());
    RC_ASSERT(rows.size() == 1u);
    RC_ASSERT(rows[0].cells == cells);
  });
}

TEST(Csv, AProblemNamesFileLineColumnFoundAndAccepted) {
  EXPECT_EQ(FormatProblem("t.csv", {3, 4, "temperature", "\"abc\"", "a number"}),
            "t.csv, line 3, column 4 (temperature): found \"abc\"; accepted: a number");
  const std::string text = FormatProblems("t.csv", std::vector<FileProblem>(25));
  EXPECT_NE(text.find("and 5 more"), std::string::npos);
  EXPECT_NE(text.find("Nothing of the file was taken over"), std::string::npos);
}

}  // namespace
}  // namespace torvell
