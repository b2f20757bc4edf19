// Which keys number fields take.
#include "module/toolkit/editlist/number_filter.h"

#include <gtest/gtest.h>

namespace rvx {
namespace {

// Types the keys at the end of the field, and returns its text.
template <class Rules>
std::string Typed(const Rules& rules, const char* keys) {
  FieldText field;
  for (const QChar key : QString(keys)) {
    if (!rules.AcceptsKey(field, key)) continue;
    field.text = field.With(key);
    field.start = static_cast<int>(field.text.size());
  }
  return field.text.toStdString();
}

CellNumberFilter Whole(double minimum, double maximum) { return {true, minimum, maximum, u'.'}; }
CellNumberFilter Decimal(double minimum, double maximum) { return {false, minimum, maximum, u'.'}; }

TEST(CellNumberFilterTest, AValueAboveTheRangeStopsAtTheDigitThatLeadsThere) {
  EXPECT_EQ(Typed(Decimal(1000, 50000), "60000"), "6000");
  EXPECT_EQ(Typed(Decimal(1000, 50000), "600"), "600");  // below the range, as while typing
  EXPECT_EQ(Typed(Decimal(1000, 50000), "50000.05"), "50000.0");
  EXPECT_EQ(Typed(Whole(30, 255), "256"), "25");
  EXPECT_EQ(Typed(Whole(30, 255), "2.5x5"), "255");
  EXPECT_EQ(Typed(Decimal(1, 1), "99999999"), "99999999");  // no range
}

TEST(CellNumberFilterTest, AMinusStandsFirstAndOnlyWhereItCanHelp) {
  EXPECT_EQ(Typed(Decimal(0, 100), "-5"), "5");
  EXPECT_EQ(Typed(Decimal(-40, 25), "-5-.5"), "-5.5");
  EXPECT_EQ(Typed(Decimal(-40, 25), "-41"), "-4");
  EXPECT_EQ(Typed(Decimal(-40, -5), "-20"), "-20");
  const CellNumberFilter filter = Decimal(-40, 25);
  EXPECT_FALSE(filter.AcceptsKey({"-5", 0, 0}, u'-'));
  EXPECT_TRUE(filter.AcceptsKey({"-5", 0, 1}, u'-'));  // the selection covers the first
  EXPECT_FALSE(filter.AcceptsKey({"-5", 0, 0}, u'1'));
  EXPECT_FALSE(filter.AcceptsKey({"1.5", 3, 0}, u'.'));
  EXPECT_TRUE(filter.AcceptsKey({"1.5", 1, 1}, u'.'));
}

TEST(CellNumberFilterTest, TheDecimalSignIsTheUsers) {
  const CellNumberFilter german(false, 1000, 50000, u',');
  EXPECT_EQ(Typed(german, "540.0,5"), "5400,5");
  EXPECT_EQ(Typed(german, "49999,9"), "49999,9");
  EXPECT_EQ(Typed(german, "50000,9"), "50000,");
}

TEST(CellNumberFilterTest, APastedTextIsTakenWholeOrNotAtAll) {
  const CellNumberFilter filter = Decimal(1000, 50000);
  EXPECT_TRUE(filter.AcceptsText("5400.5"));
  for (const QString& bad : {QString("60000"), QString("54-00"), QString("1.2.3"), QString("abc"),
                             QString(" 5400"), QString(10000, u'1')}) {
    EXPECT_FALSE(filter.AcceptsText(bad)) << bad.left(10).toStdString();
  }
}

TEST(NumEditRulesTest, BothLimitsAreOutside) {
  const NumEditRules rules{3, 0, 366.1, 0.0, u'.'};
  EXPECT_EQ(Typed(rules, "366"), "366");
  EXPECT_EQ(Typed(rules, "367"), "36");
  EXPECT_EQ(Typed(rules, "0"), "");
  EXPECT_EQ(Typed(rules, "-1.5"), "15");
  EXPECT_EQ(Typed(rules, "1234"), "123");
}

TEST(NumEditRulesTest, DigitsOnEitherSideAreCounted) {
  const NumEditRules rules{2, 1, 99.0, -99.0, u','};
  EXPECT_EQ(Typed(rules, "-123,45"), "-12,4");
  EXPECT_TRUE(rules.AcceptsKey({"1,5", 0, 0}, u'-'));
  EXPECT_FALSE(rules.AcceptsKey({"-1,5", 0, 0}, u'2'));
  EXPECT_FALSE(rules.AcceptsKey({"12,4", 1, 0}, u'9'));
}

TEST(NumEditRulesTest, WhatRemainsMustBeAllowed) {
  const NumEditRules rules{2, 2, 50.0, 0.0, u'.'};
  EXPECT_TRUE(rules.AcceptsRemoval(""));
  EXPECT_TRUE(rules.AcceptsRemoval("4.2"));
  EXPECT_FALSE(rules.AcceptsRemoval("425"));  // the decimal point of 4.25 gone
  EXPECT_FALSE(rules.AcceptsRemoval("0"));
  EXPECT_FALSE(rules.AcceptsText("60"));
  EXPECT_FALSE(rules.AcceptsText("4.255"));
  EXPECT_TRUE(rules.AcceptsText("4.25"));
}

}  // namespace
}  // namespace rvx
