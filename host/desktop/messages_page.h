// The tab of messages: what happened, and what was acknowledged.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QTableView;

namespace torvell {

class MessageList;

// A table of a MessageList, with the whole text of the chosen message below it and the buttons that
// acknowledge. The window's thread only.
class MessagesPage : public QWidget {
  Q_OBJECT

 public:
  explicit MessagesPage(MessageList& list, QWidget* parent = nullptr);

 private:
  void Refresh();
  void AcknowledgeSelected();

  MessageList& list_;
  QTableView* table_;
  QLabel* whole_;
  QLabel* count_;
  QPushButton *one_, *all_;
};

}  // namespace torvell
