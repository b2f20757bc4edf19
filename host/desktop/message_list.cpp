#include "host/desktop/message_list.h"

#include <QFont>
#include <algorithm>
#include <set>
#include <utility>

#include "host/desktop/number_display.h"
#include "host/desktop/theme.h"
#include "host/tray/advice.h"
#include "host/tray/run_state.h"

namespace torvell {
namespace {

// Older messages are only in the archive, where "torvell messages" shows them.
constexpr size_t kMaxRows = 5000;

MessageRow RowOf(const ErrorReport& report) {
  MessageRow row;
  row.report = report;
  row.acknowledged = report.acknowledged;
  if (report.row != 0) row.archiveRows.push_back(report.row);
  return row;
}

MessageRow Repeated(MessageRow row, const ErrorReport& report) {
  row.report = report;
  ++row.count;
  if (report.row != 0) row.archiveRows.push_back(report.row);
  return row;
}

}  // namespace

QString WithAdvice(const QString& text, const ErrorReport& report) {
  const QString advice = QString::fromStdString(AdviceText(report.code, Reader::Window));
  return advice.isEmpty() ? text : text + QLatin1Char('\n') + advice;
}

QString SeverityText(const ErrorReport& report) {
  return IsFailure(report) ? QStringLiteral("Failure") : QStringLiteral("Message");
}

std::deque<MessageRow>::iterator MessageList::FindRepeated(const ErrorReport& report) {
  const auto newest = std::find_if(rows_.begin(), rows_.end(), [&](const MessageRow& row) {
    return row.report.source == report.source;
  });
  if (newest == rows_.end() || newest->acknowledged || newest->report.message != report.message) {
    return rows_.end();
  }
  return newest;
}

void MessageList::SetHistory(const std::vector<ErrorReport>& reports) {
  beginResetModel();
  // Messages that came while the archive was read are newer than its content, and may be part of it
  // already.
  const std::deque<MessageRow> meanwhile = std::exchange(rows_, {});
  std::set<int64_t> known;
  for (const MessageRow& row : meanwhile) {
    known.insert(row.archiveRows.begin(), row.archiveRows.end());
  }
  for (const ErrorReport& report : reports) {
    if (known.count(report.row) > 0) continue;
    const auto same = report.acknowledged ? rows_.end() : FindRepeated(report);
    MessageRow row = same != rows_.end() ? Repeated(*same, report) : RowOf(report);
    if (same != rows_.end()) rows_.erase(same);
    rows_.push_front(std::move(row));
  }
  rows_.insert(rows_.begin(), meanwhile.begin(), meanwhile.end());
  endResetModel();
  Q_EMIT OpenChanged();
}

void MessageList::Add(const ErrorReport& report) {
  const auto same = FindRepeated(report);
  MessageRow added = same != rows_.end() ? Repeated(*same, report) : RowOf(report);
  if (same != rows_.end()) {
    const int row = static_cast<int>(same - rows_.begin());
    beginRemoveRows({}, row, row);
    rows_.erase(same);
    endRemoveRows();
  }
  beginInsertRows({}, 0, 0);
  rows_.push_front(std::move(added));
  endInsertRows();
  if (rows_.size() > kMaxRows) {
    const int last = static_cast<int>(rows_.size()) - 1;
    beginRemoveRows({}, last, last);
    rows_.pop_back();
    endRemoveRows();
  }
  Q_EMIT OpenChanged();
}

void MessageList::Acknowledge(int row) {
  if (row < 0 || row >= rowCount() || at(row).acknowledged) return;
  rows_[static_cast<size_t>(row)].acknowledged = true;
  Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
  Q_EMIT OpenChanged();
  Q_EMIT Acknowledged(at(row).archiveRows);
}

void MessageList::AcknowledgeAll() {
  if (OpenCount() == 0) return;
  std::vector<int64_t> archiveRows;
  for (MessageRow& row : rows_) {
    if (row.acknowledged) continue;
    row.acknowledged = true;
    archiveRows.insert(archiveRows.end(), row.archiveRows.begin(), row.archiveRows.end());
  }
  Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
  Q_EMIT OpenChanged();
  Q_EMIT Acknowledged(archiveRows);
}

const MessageRow* MessageList::NewestOpen() const {
  for (const MessageRow& row : rows_) {
    if (!row.acknowledged) return &row;
  }
  return nullptr;
}

int MessageList::OpenCount() const {
  return static_cast<int>(std::count_if(rows_.begin(), rows_.end(),
                                        [](const MessageRow& row) { return !row.acknowledged; }));
}

int MessageList::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int MessageList::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

QString MessageList::Cell(const MessageRow& row, int column) const {
  switch (column) {
    case Time:
      return DisplayTime(row.report.time);
    case Severity:
      return SeverityText(row.report);
    case Source:
      return QString::fromStdString(row.report.source);
    case Text: {
      const QString text = QString::fromStdString(row.report.message);
      return row.count > 1 ? QStringLiteral("(%1 times) %2").arg(row.count).arg(text) : text;
    }
    case Seen:
      return row.acknowledged ? QStringLiteral("Yes") : QStringLiteral("No");
    default:
      return {};
  }
}

QVariant MessageList::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const MessageRow& row = at(index.row());
  if (role == Qt::DisplayRole) return Cell(row, index.column());
  if (role == Qt::ToolTipRole) return WithAdvice(Cell(row, Text), row.report);
  if (role == Qt::DecorationRole && index.column() == Severity) {
    return ShapeIcon(IsFailure(row.report) ? Shape::Warning : Shape::Info);
  }
  if (role == Qt::FontRole && !row.acknowledged) {
    QFont font;
    font.setBold(true);
    return font;
  }
  if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  return {};
}

QVariant MessageList::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
  if (role != Qt::DisplayRole) return {};
  static const char* const kHeadings[] = {"Time", "Severity", "Source", "Text", "Acknowledged"};
  return QString::fromLatin1(kHeadings[section]);
}

}  // namespace torvell
