#include "host/desktop/message_list.h"

#include <QFont>
#include <algorithm>

#include "host/desktop/number_display.h"
#include "host/desktop/theme.h"
#include "host/tray/run_state.h"

namespace torvell {
namespace {

// Older ones are in the archive, where "torvell messages" shows them.
constexpr size_t kMostRows = 5000;

}  // namespace

QString SeverityText(const ErrorReport& report) {
  return IsFailure(report) ? QStringLiteral("Failure") : QStringLiteral("Message");
}

void MessageList::SetHistory(const std::vector<ErrorReport>& reports) {
  beginResetModel();
  for (const ErrorReport& report : reports) {
    MessageRow row;
    row.report = report;
    row.acknowledged = true;
    rows_.push_back(row);
  }
  // What came while the archive was read is newer than all of it.
  std::stable_sort(rows_.begin(), rows_.end(), [](const MessageRow& a, const MessageRow& b) {
    return b.report.time < a.report.time;
  });
  endResetModel();
}

void MessageList::Add(const ErrorReport& report) {
  const auto same = std::find_if(rows_.begin(), rows_.end(), [&](const MessageRow& row) {
    return row.report.source == report.source;
  });
  if (same != rows_.end() && !same->acknowledged && same->report.message == report.message) {
    MessageRow repeated = *same;
    repeated.report = report;
    ++repeated.count;
    const int row = static_cast<int>(same - rows_.begin());
    beginRemoveRows({}, row, row);
    rows_.erase(same);
    endRemoveRows();
    beginInsertRows({}, 0, 0);
    rows_.push_front(repeated);
    endInsertRows();
  } else {
    beginInsertRows({}, 0, 0);
    MessageRow row;
    row.report = report;
    rows_.push_front(row);
    endInsertRows();
  }
  if (rows_.size() > kMostRows) {
    const int last = static_cast<int>(rows_.size()) - 1;
    beginRemoveRows({}, last, last);
    rows_.pop_back();
    endRemoveRows();
  }
  Q_EMIT OpenChanged();
}

void MessageList::Acknowledge(int row) {
  if (row < 0 || row >= rowCount() || rows_[static_cast<size_t>(row)].acknowledged) return;
  rows_[static_cast<size_t>(row)].acknowledged = true;
  Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
  Q_EMIT OpenChanged();
}

void MessageList::AcknowledgeAll() {
  if (rows_.empty()) return;
  for (MessageRow& row : rows_) row.acknowledged = true;
  Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
  Q_EMIT OpenChanged();
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
    case Acknowledged:
      return row.acknowledged ? QStringLiteral("Yes") : QStringLiteral("No");
    default:
      return {};
  }
}

QVariant MessageList::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const MessageRow& row = at(index.row());
  if (role == Qt::DisplayRole) return Cell(row, index.column());
  if (role == Qt::ToolTipRole) return Cell(row, Text);
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
