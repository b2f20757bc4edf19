#include "host/desktop/tray_model.h"

#include <QFont>

namespace torvell {
namespace {

bool SameTests(const std::vector<rvx::SampleTest>& a, const std::vector<rvx::SampleTest>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const rvx::SampleTest& x, const rvx::SampleTest& y) {
                      return x.temperature == y.temperature && x.rotorOnTime == y.rotorOnTime &&
                             x.knownViscosity == y.knownViscosity;
                    });
}

// Within a run, results are only added, so comparing their number is enough.
bool SameRow(const TrayRow& a, const TrayRow& b) {
  return a.action == b.action && a.sampleId == b.sampleId && a.state == b.state &&
         a.doing == b.doing && a.failure == b.failure && a.results.size() == b.results.size() &&
         SameTests(a.tests, b.tests);
}

bool IsActive(RowState state) { return state == RowState::Running || state == RowState::Paused; }

}  // namespace

void TrayModel::SetRows(const std::vector<TrayRow>& rows) {
  if (rows.size() != rows_.size()) {
    beginResetModel();
    rows_ = rows;
    endResetModel();
    return;
  }
  for (size_t i = 0; i < rows.size(); ++i) {
    if (SameRow(rows[i], rows_[i])) continue;
    rows_[i] = rows[i];
    const int row = static_cast<int>(i);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
  }
}

int TrayModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TrayModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

QString TrayModel::Text(int position, int column) const {
  const TrayRow& row = rows_[static_cast<size_t>(position)];
  switch (column) {
    case Number:
      return QString::number(position + 1);
    case SampleId:
      return row.sampleId;
    case Action:
      return row.filled() ? row.action : QString();
    case Tests:
      return TestsText(row);
    case State:
      return RowStateText(row.state);
    case Result:
      return ResultText(row);
    default:
      return {};
  }
}

QVariant TrayModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= static_cast<int>(rows_.size())) return {};
  const TrayRow& row = rows_[static_cast<size_t>(index.row())];
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return Text(index.row(), index.column());
    case Qt::DecorationRole:
      if (index.column() != State || !row.filled()) return {};
      return ShapeIcon(RowShape(row.state), IsActive(row.state) ? Colors().accent : Colors().text);
    case Qt::ToolTipRole:
    case Qt::AccessibleDescriptionRole:
      return DescribeRow(index.row(), row);
    case Qt::TextAlignmentRole:
      if (index.column() == Number || index.column() == Result || index.column() == Tests) {
        const bool words = index.column() == Result && !row.doing.isEmpty();
        return QVariant(Qt::Alignment(words ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
      }
      return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::FontRole:
      if (IsActive(row.state)) {
        QFont font;
        font.setBold(true);
        return font;
      }
      return {};
    case Qt::BackgroundRole:
      return IsActive(row.state) ? QVariant(Colors().running) : QVariant();
    case Qt::ForegroundRole:
      return index.column() == Number && !IsActive(row.state) ? QVariant(Colors().quiet)
                                                              : QVariant();
    default:
      return {};
  }
}

QVariant TrayModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) {
    const bool right = section == Number || section == Tests || section == Result;
    return QVariant(Qt::Alignment(right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case Number:
      return QStringLiteral("Pos.");
    case SampleId:
      return QStringLiteral("Sample ID");
    case Action:
      return QStringLiteral("Action");
    case Tests:
      return QStringLiteral("Tests (°C)");
    case State:
      return QStringLiteral("State");
    case Result:
      return QStringLiteral("Result (mPa*s)");
    default:
      return {};
  }
}

Qt::ItemFlags TrayModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (editable_ && index.column() == SampleId) flags |= Qt::ItemIsEditable;
  return flags;
}

bool TrayModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != SampleId) return false;
  const QString text = CleanSampleId(value.toString());
  if (text == rows_[static_cast<size_t>(index.row())].sampleId) return false;
  Q_EMIT SampleIdTyped(index.row(), text);
  return true;
}

}  // namespace torvell
