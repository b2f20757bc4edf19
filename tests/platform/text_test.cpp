#include "platform/text.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>

#include "tests/platform/german_locale.h"

namespace platform {
namespace {

TEST(Text, NumbersHaveAPointUnderEveryLocale) {
  const GermanLocale german;
  ASSERT_TRUE(german.set()) << "the machine lacks the locale de_DE.UTF-8";
  char native[16];
  std::snprintf(native, sizeof native, "%.1f", 1.5);
  ASSERT_STREQ("1,5", native);
  EXPECT_EQ("-1234567.50 x 7", FormatText("%.2f %s %d", -1234567.5, "x", 7));
  EXPECT_EQ(1.5, ParseLeadingDouble("1.5"));
  EXPECT_EQ(1.0, ParseLeadingDouble("1,5"));
  EXPECT_EQ(1.5, ParseDouble(" 1.5 "));
  EXPECT_EQ(std::nullopt, ParseDouble("1,5"));
  std::snprintf(native, sizeof native, "%.1f", 1.5);
  EXPECT_STREQ("1,5", native) << "the process's locale has changed";
}

TEST(Text, LongTextsAreFormattedWhole) {
  for (const size_t length : {254u, 255u, 256u, 257u, 5000u}) {
    const std::string text(length, 'x');
    EXPECT_EQ(text + "!", FormatText("%s!", text.c_str()));
  }
}

RC_GTEST_PROP(Text, DoublesSurviveTextAndBack, (double value)) {
  RC_ASSERT(ParseDouble(FormatText("%.17g", value)) == value);
}

RC_GTEST_PROP(Text, LeadingNumbersAreReadAsTheCLibraryDoes, ()) {
  const auto text =
      *rc::gen::container<std::string>(rc::gen::elementOf(std::string(" \t+-.019eExinfa")));
  const double expected = std::strtod(text.c_str(), nullptr);
  const double actual = ParseLeadingDouble(text);
  RC_ASSERT(actual == expected || (std::isnan(actual) && std::isnan(expected)));
  if (text.size() < 10) RC_ASSERT(ParseLeadingInt(text) == std::atoi(text.c_str()));
  // A text that is a number as a whole has the same value as its leading number.
  if (const auto whole = ParseDouble(text)) RC_ASSERT(*whole == expected);
  if (const auto whole = ParseInt(text)) RC_ASSERT(*whole == std::atoi(text.c_str()));
}

TEST(Text, WholeNumbersAreClampedOrRefused) {
  EXPECT_EQ(INT_MAX, ParseLeadingInt("99999999999999999999"));
  EXPECT_EQ(INT_MIN, ParseLeadingInt(" -99999999999999999999x"));
  EXPECT_EQ(INT_MIN, ParseInt("-2147483648"));
  EXPECT_EQ(std::nullopt, ParseInt("2147483648"));
  EXPECT_EQ(7, ParseInt("\t+7\r\n"));
  for (const char* text : {"", " ", "+", "-", "+-7", "7 7", "7.", "0x10", "seven"}) {
    EXPECT_EQ(std::nullopt, ParseInt(text)) << text;
  }
}

TEST(Text, NumbersThatAreNoneAreRefused) {
  for (const char* text :
       {"", ".", "-", "e5", "1e", "1e+", "0x1p3", "inf", "-nan", "1e999", "1 2", "1.2.3"}) {
    EXPECT_EQ(std::nullopt, ParseDouble(text)) << text;
  }
  EXPECT_EQ(-0.5, ParseDouble("-.5"));
  EXPECT_EQ(500.0, ParseDouble("5.E+2"));
}

TEST(Text, FieldsAreCutAtSeparators) {
  using Fields = std::vector<std::string>;
  EXPECT_EQ(Fields(), SplitFields("", ','));
  EXPECT_EQ(Fields({""}), SplitFields(",", ','));
  EXPECT_EQ(Fields({"a", "", "b"}), SplitFields("a,,b,", ','));
  EXPECT_EQ(Fields({"a", "b"}), SplitFields("a,b,c,d", ',', 2));
  EXPECT_EQ(Fields({"a"}), SplitFields("a", ',', 1));
}

TEST(Text, BlanksAndCase) {
  EXPECT_EQ("a b", Trim(" \t\r\na b\n "));
  EXPECT_EQ("", Trim(" \n"));
  EXPECT_EQ("-5", RemoveBlanks(" - 5 "));
  EXPECT_EQ(0, CompareNoCase("ABCz", "abcZ"));
  EXPECT_LT(CompareNoCase("abc", "ABCD"), 0);
  EXPECT_GT(CompareNoCase("b", "A"), 0);
  EXPECT_NE(0, CompareNoCase("\xC3\x84", "\xC3\xA4"));
}

}  // namespace
}  // namespace platform
