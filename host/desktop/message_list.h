// The messages of the archive and of this moment, repeats counted. A model without widgets.
#pragma once

#include <QAbstractTableModel>
#include <deque>

#include "host/core/error_store.h"

namespace torvell {

struct MessageRow {
  ErrorReport report;  // the latest of its repeats
  int count = 1;
  bool acknowledged = false;
};

// "Failure" or "Message".
QString SeverityText(const ErrorReport& report);

// Newest first. The window's thread.
class MessageList : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Time, Severity, Source, Text, Acknowledged, ColumnCount };

  explicit MessageList(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // What the archive had at the start, oldest first; it counts as acknowledged.
  void SetHistory(const std::vector<ErrorReport>& reports);
  // A new one. The same text of the same source as the newest of that source counts as a repeat.
  void Add(const ErrorReport& report);
  void Acknowledge(int row);
  void AcknowledgeAll();

  // The newest that nobody has acknowledged; null if there is none.
  const MessageRow* NewestOpen() const;
  int OpenCount() const;
  const MessageRow& at(int row) const { return rows_[static_cast<size_t>(row)]; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 Q_SIGNALS:
  // NewestOpen or OpenCount may have changed.
  void OpenChanged();

 private:
  QString Cell(const MessageRow& row, int column) const;

  std::deque<MessageRow> rows_;
};

}  // namespace torvell
