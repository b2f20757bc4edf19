// The messages of the archive and of this moment, repeats counted. A model without widgets.
#pragma once

#include <QAbstractTableModel>
#include <cstdint>
#include <deque>
#include <vector>

#include "host/core/error_store.h"

namespace torvell {

struct MessageRow {
  ErrorReport report;  // the latest of its repeats
  int count = 1;
  bool acknowledged = false;
  std::vector<int64_t> archiveRows;  // of all its repeats
};

// "Failure" or "Message".
QString SeverityText(const ErrorReport& report);

// A text of the report with the advice below it, where there is any.
QString WithAdvice(const QString& text, const ErrorReport& report);

// A row for each message, newest first. The window's thread only.
class MessageList : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Time, Severity, Source, Text, Seen, ColumnCount };

  explicit MessageList(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // What the archive had at the start, oldest first. What nobody has acknowledged is open still.
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
  // Somebody has acknowledged these rows of the archive.
  void Acknowledged(const std::vector<int64_t>& archiveRows);

 private:
  // The message that a new one repeats; the end if it is another.
  std::deque<MessageRow>::iterator FindRepeated(const ErrorReport& report);
  QString Cell(const MessageRow& row, int column) const;

  std::deque<MessageRow> rows_;
};

}  // namespace torvell
