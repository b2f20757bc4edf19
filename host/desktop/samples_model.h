// The stored samples as a table that fetches only what is shown.
#pragma once

#include <QAbstractTableModel>
#include <map>
#include <set>
#include <vector>

#include "host/core/sample_store.h"
#include "host/desktop/worker.h"

namespace torvell {

// The window's thread only; a worker reads the archive. Memory holds only the row numbers of all
// matches and the pages that were shown, so an archive of any size opens quickly.
class SamplesModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // The indices in SampleFields().
  enum Column {
    Time,
    Instrument,
    Position,
    SampleId,
    Temperature,
    Average,
    Speed,
    Viscosity,
    Known,
    Operator,
    Origin,
    ColumnCount
  };

  SamplesModel(SampleStore& store, Worker& worker, QObject* parent = nullptr);

  // Searches with this query. The old rows stay on the screen until the result arrives.
  void SetQuery(const SampleQuery& query);
  const SampleQuery& query() const { return query_; }
  // Searches again, since the archive has grown.
  void Refresh();

  // Returns the row numbers in the archive of these rows of the table.
  std::vector<int64_t> ArchiveRows(const std::vector<int>& rows) const;
  const std::vector<int64_t>& AllArchiveRows() const { return rows_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void sort(int column, Qt::SortOrder order) override;

 Q_SIGNALS:
  void Searched();
  void Failed(const QString& text);

 private:
  void TakeRows(std::vector<int64_t> found);
  void Fetch(int page) const;
  void TakePage(int generation, int page, std::vector<StoredSample> samples);

  SampleStore& store_;
  Worker& worker_;
  SampleQuery query_;
  bool searching_ = false;
  bool searchAgain_ = false;
  int generation_ = 0;  // counts results, so that late pages of an old one are dropped
  std::vector<int64_t> rows_;
  std::map<int, std::vector<StoredSample>> pages_;
  // Mutable, because data() starts fetching, which does not change the table.
  mutable std::set<int> fetching_;
};

// Returns a cell as people read it; empty if the value is missing.
QString SampleCell(const StoredSample& sample, int column);
// Returns the heading of a column with its unit.
QString SampleHeading(int column);

}  // namespace torvell
