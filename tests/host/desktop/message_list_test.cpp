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

TEST(MessageListTest, AnAcknowledgedMessageOrOneThatIsNotTheLastIsNotCountedOn) {
  MessageList list;
  list.Add(Report("COM1", "silent"));
  list.Acknowledge(0);
  EXPECT_EQ(list.NewestOpen(), nullptr);
  for (const char* text : {"silent", "back", "silent"}) list.Add(Report("COM1", text));
  EXPECT_EQ(list.rowCount(), 4);
  EXPECT_EQ(list.OpenCount(), 3);
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
  EXPECT_EQ(list.OpenCount(), 3);
}

TEST(MessageListTest, WhatNobodyAcknowledgedIsOpenAgainAtTheNextStart) {
  std::vector<ErrorReport> stored;
  for (int row = 1; row <= 4; ++row) {
    stored.push_back(Report("COM1", row < 4 ? "silent" : "too warm", row));
    stored.back().row = row;
    stored.back().acknowledged = row == 1;
  }
  MessageList list;
  ErrorReport meanwhile = stored.back();
  list.Add(meanwhile);  // reported before the archive was read, which has it too
  list.SetHistory(stored);
  ASSERT_EQ(list.rowCount(), 3);
  EXPECT_EQ(list.at(1).count, 2);  // of the two open ones
  EXPECT_EQ(list.OpenCount(), 2);
  std::vector<int64_t> told;
  QObject::connect(&list, &MessageList::Acknowledged,
                   [&](const std::vector<int64_t>& rows) { told = rows; });
  list.Acknowledge(1);
  EXPECT_EQ(told, (std::vector<int64_t>{2, 3}));
  list.AcknowledgeAll();
  EXPECT_EQ(told, (std::vector<int64_t>{4}));
  EXPECT_EQ(list.NewestOpen(), nullptr);
}

TEST(MessageListTest, AFixedMessageIsShownWithItsAdvice) {
  MessageList list;
  ErrorReport report = Report("COM1", "Instrument not responding.");
  report.code = rvx::MessageCode::NotResponding;
  list.Add(report);
  const QString whole = list.data(list.index(0, MessageList::Text), Qt::ToolTipRole).toString();
  EXPECT_TRUE(whole.startsWith("Instrument not responding.\nLikely cause: "))
      << whole.toStdString();
  EXPECT_EQ(list.data(list.index(0, MessageList::Text), Qt::DisplayRole).toString(),
            "Instrument not responding.");
}

}  // namespace
}  // namespace torvell
