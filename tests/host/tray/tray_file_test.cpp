// The tray as a file: what is read, and that everything else is refused with line and column.
#include "host/tray/tray_file.h"

#include <gtest/gtest.h>

namespace torvell {
namespace {

constexpr char kHeading[] =
    "position,action,sample id,temperature,rotor on time,known viscosity,injection "
    "time,cool-down time\n";

std::vector<TrayFilePosition> Read(const std::string& lines) {
  std::vector<FileProblem> problems;
  auto positions = ParseTrayFile(kHeading + lines, 30, problems);
  for (const FileProblem& problem : problems) ADD_FAILURE() << FormatProblem("file", problem);
  return positions;
}

// The first problem of a file with these lines after the heading.
std::string Refusal(const std::string& lines) {
  std::vector<FileProblem> problems;
  ParseTrayFile(kHeading + lines, 30, problems);
  return problems.empty() ? "" : FormatProblem("f", problems.front());
}

TEST(TrayFile, LinesOfOnePositionAreItsTestsInOrder) {
  const auto tray = Read(
      "4,Verify,STD,-25,60,5400,,\n"
      "1,measure,\"oil, red\",-20,,,200,100\n"
      "1,measure,,-25,45,,,\n");
  ASSERT_EQ(tray.size(), 2u);
  EXPECT_EQ(tray[0].position, 1);
  EXPECT_EQ(tray[0].sampleId, "oil, red");
  EXPECT_EQ(tray[0].injectionTime, 200);
  EXPECT_EQ(tray[0].coolDownTime, 100);
  ASSERT_EQ(tray[0].tests.size(), 2u);
  EXPECT_EQ(tray[0].tests[0].temperature, -20.0);
  EXPECT_FALSE(tray[0].tests[0].rotorOnTime);
  EXPECT_EQ(tray[0].tests[1].rotorOnTime, 45);
  EXPECT_EQ(tray[0].tests[1].line, 4);
  EXPECT_TRUE(tray[1].verify);
  EXPECT_EQ(tray[1].tests[0].knownViscosity, 5400.0);
}

TEST(TrayFile, TheSameTemperatureTwiceIsAllowed) {
  EXPECT_EQ(Read("2,measure,A,-20,,,,\n2,measure,A,-20,,,,\n")[0].tests.size(), 2u);
}

TEST(TrayFile, WhatIsWrittenReadsBack) {
  const std::string lines =
      "1,measure,\"a \"\"b\"\", c\",-20.5,45,,240,180\n7,verify,S,,,5400.5,,\n";
  EXPECT_EQ(FormatTrayFile(Read(lines)), kHeading + lines);
}

struct RefusalCase {
  const char* lines;
  const char* message;
};

class TrayFileRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(TrayFileRefusal, NamesThePlaceAndWhatIsAccepted) {
  EXPECT_EQ(Refusal(GetParam().lines), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, TrayFileRefusal,
    testing::Values(
        RefusalCase{"1,melt,A,-20,,,,\n",
                    "f, line 2, column 2 (action): found \"melt\"; accepted: measure, verify"},
        RefusalCase{"1,,A,-20,,,,\n",
                    "f, line 2, column 2 (action): found an empty cell; accepted: measure, verify"},
        RefusalCase{"31,measure,A,-20,,,,\n",
                    "f, line 2, column 1 (position): found \"31\"; accepted: a position from 1 to "
                    "30"},
        RefusalCase{"0,measure,A,-20,,,,\n",
                    "f, line 2, column 1 (position): found \"0\"; accepted: a position from 1 to "
                    "30"},
        RefusalCase{"1,measure,A,-20,,,,\n1,measure,A,\"-20,5\",,,,\n",
                    "f, line 3, column 4 (temperature): found \"-20,5\"; accepted: a number from "
                    "-60 to 40 degrees C with a point as decimal sign, or nothing for the "
                    "instrument's default"},
        RefusalCase{"1,measure,A,nan,,,,\n",
                    "f, line 2, column 4 (temperature): found \"nan\"; accepted: a number from "
                    "-60 to 40 degrees C with a point as decimal sign, or nothing for the "
                    "instrument's default"},
        RefusalCase{"1,measure,A,-20,29,,,\n",
                    "f, line 2, column 5 (rotor on time): found \"29\"; accepted: a whole number "
                    "from 30 to 255 seconds, or nothing for the instrument's default"},
        RefusalCase{"1,measure,A,-20,,5000,,\n",
                    "f, line 2, column 6 (known viscosity): found \"5000\"; accepted: nothing, "
                    "since the action is measure"},
        RefusalCase{"1,measure,A,-20,,,256,\n",
                    "f, line 2, column 7 (injection time): found \"256\"; accepted: a whole number "
                    "from 0 to 255 seconds, or nothing for the instrument's default"},
        RefusalCase{"1,measure,A,-20,,,,1.5\n",
                    "f, line 2, column 8 (cool-down time): found \"1.5\"; accepted: a whole number "
                    "from 0 to 255 seconds, or nothing for the instrument's default"},
        RefusalCase{"1,measure,A,-20,,,,\n1,verify,A,-25,,,,\n",
                    "f, line 3, column 2 (action): found \"verify\"; accepted: nothing, or what "
                    "line 2 says for this position"},
        RefusalCase{"1,measure,A,-20,,,,\n1,measure,B,-25,,,,\n",
                    "f, line 3, column 3 (sample id): found \"B\"; accepted: nothing, or what line "
                    "2 says for this position"},
        RefusalCase{"1,measure,\"A\x0B\",-20,,,,\n",
                    "f, line 2, column 3 (sample id): found \"A\x0B\"; accepted: a text in one "
                    "line, without control characters"},
        RefusalCase{"1,measure,A,-20,,,,,9\n",
                    "f, line 2, column 9: found \"9\"; accepted: 8 columns; put a text with a "
                    "comma into quotes"},
        RefusalCase{"", "f: found no line behind the heading; accepted: at least one position"}));

TEST(TrayFile, RefusesThe21stTestAndReportsEveryBadLine) {
  std::string lines;
  for (int i = 0; i < 21; ++i) lines += "3,measure,A,-20,,,,\n";
  EXPECT_EQ(Refusal(lines),
            "f, line 22: found test number 21 of position 3; accepted: at most 20 tests in one "
            "position");
  std::vector<FileProblem> problems;
  ParseTrayFile(std::string(kHeading) + "x,measure,A,,,,,\n1,y,A,,,,,\n2,measure,A,z,,,,\n", 30,
                problems);
  EXPECT_EQ(problems.size(), 3u);
}

TEST(TrayFile, RefusesAnotherHeading) {
  std::vector<FileProblem> problems;
  ParseTrayFile("position,action,oil\n1,measure,A\n", 30, problems);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_EQ(problems[0].column, 3);
  EXPECT_EQ(problems[0].found, "\"oil\"");
}

}  // namespace
}  // namespace torvell
