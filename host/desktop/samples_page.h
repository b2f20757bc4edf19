// The tab of all stored samples: filters, sorting, copying, CSV.
#pragma once

#include <QWidget>
#include <functional>

#include "host/desktop/samples_model.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QTableView;

namespace torvell {

class DayField;

// A table of a SamplesModel below the fields of the search. Reading and writing is done by the
// worker. The window's thread only.
class SamplesPage : public QWidget {
  Q_OBJECT

 public:
  SamplesPage(SampleStore& store, Worker& worker, QWidget* parent = nullptr);

  SamplesModel& model() { return *model_; }
  // Updates the table soon, after a sample was stored.
  void NoteStored();

 public Q_SLOTS:
  // Copies the selected rows as text with TABs, with their headings.
  void CopySelected();
  // Exports every column of the archive, for all matches or for the selected rows.
  void ExportAll();
  void ExportSelected();
  // Exports the same columns of samples that the caller has.
  void ExportThese(std::vector<StoredSample> samples);

 Q_SIGNALS:
  void Notice(const QString& text);
  void Failed(const QString& text);

 private:
  void MakeFilters();
  void Search();
  void Export(std::vector<int64_t> rows);
  // Asks for a file, then reads `count` samples on the worker and writes them.
  void Write(int count, std::function<std::vector<StoredSample>()> read);
  std::vector<int> SelectedRows() const;
  void ShowCount();

  SampleStore& store_;
  Worker& worker_;
  SamplesModel* model_;
  QTableView* table_;
  QLineEdit* instrument_;
  QLineEdit* sampleId_;
  QComboBox* kind_;
  DayField *from_, *to_;
  QLabel* count_;
  class QTimer* soon_;
};

}  // namespace torvell
