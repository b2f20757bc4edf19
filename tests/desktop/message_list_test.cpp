// Messages: repeats are counted, and the newest open one is known.
#include "host/desktop/message_list.h"

#include <gtest/gtest.h>

namespace torvell {
namespace {

ErrorReport Report(const char* source, const char* text, int hour = 8) {
  ErrorReport report;
  report.time = platform::Date(2026, 1, 5, hour, 0, 0);
  report.source = source;
  report.message = text;
  return report;
}

TEST(MessageListTest, RepeatsOfASourceCountAndMoveToTheTop) {
  MessageList list;
  list.Add(Report("COM1", "silent"));
  list.Add(Report("COM2", "silent"));
  list.Add(Report("COM1", "silent", 9));
  ASSERT_EQ(list.rowCount(), 2);
  EXPECT_EQ(list.at(0).count, 2);
  EXPECT_EQ(list.at(0).report.time.fields().hour, 9);
  EXPECT_EQ(list.at(1).count, 1);
}

TEST(MessageListTest, AnAcknowledgedMessageThatComesAgainIsNew) {
  MessageList list;
  list.Add(Report("COM1", "silent"));
  list.Acknowledge(0);
  EXPECT_EQ(list.NewestOpen(), nullptr);
  list.Add(Report("COM1", "silent"));
  EXPECT_EQ(list.rowCount(), 2);
  EXPECT_EQ(list.OpenCount(), 1);
}

TEST(MessageListTest, ADifferentMessageBetweenEndsTheRepeats) {
  MessageList list;
  list.Add(Report("COM1", "silent"));
  list.Add(Report("COM1", "back"));
  list.Add(Report("COM1", "silent"));
  EXPECT_EQ(list.rowCount(), 3);
  ASSERT_NE(list.NewestOpen(), nullptr);
  EXPECT_EQ(list.NewestOpen()->report.message, "silent");
}

TEST(MessageListTest, HistoryLiesBelowWhatCameMeanwhile) {
  MessageList list;
  list.Add(Report("COM1", "now", 12));
  list.SetHistory({Report("COM1", "first", 7), Report("COM1", "second", 8)});
  ASSERT_EQ(list.rowCount(), 3);
  EXPECT_EQ(list.at(0).report.message, "now");
  EXPECT_EQ(list.at(1).report.message, "second");
  EXPECT_EQ(list.OpenCount(), 1) << "what is old needs no notice";
}

}  // namespace
}  // namespace torvell
