// The messages of the archive and of this session, with repeats counted. A model without widgets.
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

// Returns `text` of the report followed by the advice for it, if there is any.
QString WithAdvice(const QString& text, const ErrorReport& report);

// A row for each message, newest first. The window's thread only.
class MessageList : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Time, Severity, Source, Text, Seen, ColumnCount };

  explicit MessageList(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // Sets the messages that the archive had at the start, oldest first. Those that were not
  // acknowledged are still open.
  void SetHistory(const std::vector<ErrorReport>& reports);
  // Adds a new message. It counts as a repeat if the newest message of the same source has the same
  // text.
  void Add(const ErrorReport& report);
  void Acknowledge(int row);
  void AcknowledgeAll();

  // Returns the newest open (not acknowledged) message; null if there is none.
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
  // The user has acknowledged these rows of the archive.
  void Acknowledged(const std::vector<int64_t>& archiveRows);

 private:
  // Returns the message that a new one repeats; the end if there is none.
  std::deque<MessageRow>::iterator FindRepeated(const ErrorReport& report);
  QString Cell(const MessageRow& row, int column) const;

  std::deque<MessageRow> rows_;
};

}  // namespace torvell
