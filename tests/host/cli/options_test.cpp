// The command line's options.
#include "host/cli/options.h"

#include <gtest/gtest.h>

#include "host/cli/exit_codes.h"
#include "host/cli/parser.h"

namespace torvell {
namespace {

std::optional<int> Parse(std::vector<std::string> words, Invocation& invocation) {
  std::vector<char*> arguments;
  words.insert(words.begin(), "torvell");
  for (std::string& word : words) arguments.push_back(word.data());
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  const auto result =
      ParseCommandLine(static_cast<int>(arguments.size()), arguments.data(), invocation);
  testing::internal::GetCapturedStdout();
  const std::string said = testing::internal::GetCapturedStderr();
  if (result && *result != 0) {
    EXPECT_EQ(said.substr(0, 7), "error: ");
  }
  return result;
}

TEST(Options, GlobalOptionsStandBeforeOrBehindTheCommand) {
  Invocation invocation;
  ASSERT_FALSE(
      Parse({"--data", "d", "samples", "--json", "--last", "3", "--simulate"}, invocation));
  EXPECT_EQ(invocation.options.dataFolder, "d");
  EXPECT_TRUE(invocation.options.json);
  EXPECT_TRUE(invocation.options.simulate);
  EXPECT_TRUE(invocation.command);
}

TEST(Options, NegativeNumbersAreValues) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"constants", "set", "-20", "-1.5", "2", "-3"},
        {"service", "temperature", "-20"},
        {"service", "temperature", "off"},
        {"service", "switch", "motor", "on"},
        {"service", "jog", "table", "615"}}) {
    Invocation invocation;
    EXPECT_FALSE(Parse(words, invocation)) << words[1];
  }
}

TEST(Options, BadUseIsRefusedWithItsExitCode) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{},
                                                {"--nonsense", "samples"},
                                                {"frobnicate"},
                                                {"service"},
                                                {"--clock", "x0", "samples"},
                                                {"--clock", "x1001", "samples"},
                                                {"--clock", "fast", "samples"},
                                                {"--seed", "-1", "samples"},
                                                {"samples", "--last", "0"},
                                                {"service", "move", "0"},
                                                {"service", "switch", "motor", "maybe"},
                                                {"service", "jog", "table", "far"},
                                                {"constants", "set", "-20", "one", "2", "3"},
                                                {"users", "add", "anna"}}) {
    Invocation invocation;
    const auto result = Parse(words, invocation);
    ASSERT_TRUE(result) << words.back();
    EXPECT_EQ(*result, static_cast<int>(ExitCode::BadUse));
  }
}

TEST(Options, TheClockGivesTheTimeBase) {
  EXPECT_EQ(ParseClock("real")->kind, platform::TimeBaseKind::Real);
  EXPECT_EQ(ParseClock("x50")->pace, 50);
  EXPECT_FALSE(ParseClock("x"));
  EXPECT_FALSE(ParseClock("x 5"));

  GlobalOptions options;
  options.clock = "virtual";
  EXPECT_FALSE(MakeTimeBase(options).startOfClock);
  options.seed = 7;
  EXPECT_EQ(MakeTimeBase(options).seed, 7u);
  EXPECT_EQ(*MakeTimeBase(options).startOfClock, platform::Date(2026, 1, 5, 8, 0, 0));
  options.clock = "real";
  EXPECT_FALSE(MakeTimeBase(options).startOfClock);
}

}  // namespace
}  // namespace torvell
