#include "host/desktop/samples_model.h"

#include <algorithm>
#include <memory>

#include "host/desktop/number_display.h"
#include "host/tray/sample_fields.h"

namespace torvell {
namespace {

// A page holds more than a screen shows, so that scrolling rarely needs a new one.
constexpr int kPageRows = 200;
// Pages in memory: a few megabytes.
constexpr size_t kMaxPages = 40;

bool IsNumber(int column) { return SampleFields()[static_cast<size_t>(column)].isNumber; }

struct CellText {
  QString operator()(const platform::Date& date) const { return DisplayTime(date); }
  QString operator()(const std::string& text) const { return QString::fromStdString(text); }
  QString operator()(int64_t number) const { return QString::number(number); }
  QString operator()(const ShownNumber& number) const {
    if (number.isZeroNone && number.value == 0.0) return {};
    return DisplayNumber(number.value, number.decimals);
  }
  QString operator()(const ShownOrigin& origin) const {
    return origin.isSimulated ? QStringLiteral("Simulated") : QStringLiteral("Measured");
  }
};

}  // namespace

QString SampleCell(const StoredSample& sample, int column) {
  return std::visit(CellText(), SampleFields()[static_cast<size_t>(column)].value(sample));
}

QString SampleHeading(int column) {
  return QString::fromUtf8(SampleFields()[static_cast<size_t>(column)].screenHeading);
}

SamplesModel::SamplesModel(SampleStore& store, Worker& worker, QObject* parent)
    : QAbstractTableModel(parent), store_(store), worker_(worker) {}

void SamplesModel::SetQuery(const SampleQuery& query) {
  query_ = query;
  Refresh();
}

void SamplesModel::Refresh() {
  // One search at a time: while the user types, only the latest query is searched for.
  if (searching_) {
    searchAgain_ = true;
    return;
  }
  searching_ = true;
  auto found = std::make_shared<std::vector<int64_t>>();
  const auto over = [this] {
    searching_ = false;
    if (std::exchange(searchAgain_, false)) Refresh();
  };
  worker_.Do(
      this, [this, query = query_, found] { *found = store_.FindRows(query); },
      [this, found, over] {
        TakeRows(std::move(*found));
        over();
        Q_EMIT Searched();
      },
      [this, over](const QString& text) {
        over();
        Q_EMIT Failed(text);
      });
}

// If the archive has grown, selection and scroll position are kept: new rows come before or after
// the old ones.
void SamplesModel::TakeRows(std::vector<int64_t> found) {
  const auto old = static_cast<int64_t>(rows_.size());
  const auto grown = static_cast<int64_t>(found.size()) - old;
  const bool inFront =
      old > 0 && grown > 0 && std::equal(rows_.begin(), rows_.end(), found.begin() + grown);
  const bool behind = old > 0 && grown > 0 && std::equal(rows_.begin(), rows_.end(), found.begin());
  pages_.clear();
  fetching_.clear();
  ++generation_;
  if (inFront || behind) {
    const int first = inFront ? 0 : static_cast<int>(old);
    beginInsertRows({}, first, first + static_cast<int>(grown) - 1);
    rows_ = std::move(found);
    endInsertRows();
  } else {
    beginResetModel();
    rows_ = std::move(found);
    endResetModel();
  }
}

std::vector<int64_t> SamplesModel::ArchiveRows(const std::vector<int>& rows) const {
  std::vector<int64_t> found;
  for (const int row : rows) {
    if (row >= 0 && row < rowCount()) found.push_back(rows_[static_cast<size_t>(row)]);
  }
  return found;
}

int SamplesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int SamplesModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

void SamplesModel::Fetch(int page) const {
  if (!fetching_.insert(page).second) return;
  const size_t first = static_cast<size_t>(page) * kPageRows;
  const size_t last = std::min(rows_.size(), first + kPageRows);
  std::vector<int64_t> wanted(rows_.begin() + static_cast<int64_t>(first),
                              rows_.begin() + static_cast<int64_t>(last));
  auto samples = std::make_shared<std::vector<StoredSample>>();
  auto* self = const_cast<SamplesModel*>(this);
  worker_.Do(
      self, [self, wanted, samples] { *samples = self->store_.ReadRows(wanted); },
      [self, generation = generation_, page, samples] {
        self->TakePage(generation, page, std::move(*samples));
      },
      [self](const QString& text) { Q_EMIT self->Failed(text); });
}

void SamplesModel::TakePage(int generation, int page, std::vector<StoredSample> samples) {
  if (generation != generation_) return;
  fetching_.erase(page);
  // The page that is farthest from the one on the screen is dropped first.
  if (pages_.size() >= kMaxPages) {
    const auto lowest = pages_.begin();
    const auto highest = std::prev(pages_.end());
    pages_.erase(page - lowest->first > highest->first - page ? lowest : highest);
  }
  pages_[page] = std::move(samples);
  const int first = page * kPageRows;
  const int last = std::min(rowCount(), first + kPageRows) - 1;
  Q_EMIT dataChanged(index(first, 0), index(last, ColumnCount - 1));
}

QVariant SamplesModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  if (role == Qt::TextAlignmentRole) {
    return QVariant(Qt::Alignment(IsNumber(index.column()) ? Qt::AlignRight : Qt::AlignLeft) |
                    Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  const int page = index.row() / kPageRows;
  const auto found = pages_.find(page);
  if (found == pages_.end()) {
    Fetch(page);
    return {};
  }
  const auto row = static_cast<size_t>(index.row() % kPageRows);
  return row < found->second.size() ? SampleCell(found->second[row], index.column()) : QString();
}

QVariant SamplesModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) {
    return QVariant(Qt::Alignment(IsNumber(section) ? Qt::AlignRight : Qt::AlignLeft) |
                    Qt::AlignVCenter);
  }
  return role == Qt::DisplayRole ? QVariant(SampleHeading(section)) : QVariant();
}

void SamplesModel::sort(int column, Qt::SortOrder order) {
  const bool isColumn = column >= 0 && column < ColumnCount;
  query_.order =
      isColumn ? SampleFields()[static_cast<size_t>(column)].order : SampleQuery::Order::Time;
  query_.descending = order == Qt::DescendingOrder;
  Refresh();
}

}  // namespace torvell
