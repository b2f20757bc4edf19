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

// A table of a SamplesModel below the fields that say what is looked for. What reads or writes goes
// to the worker. The window's thread only.
class SamplesPage : public QWidget {
  Q_OBJECT

 public:
  SamplesPage(SampleStore& store, Worker& worker, QWidget* parent = nullptr);

  SamplesModel& model() { return *model_; }
  // A sample was stored: the table is brought up to date soon.
  void NoteStored();

 public Q_SLOTS:
  // Rows as text with TABs, with their headings.
  void CopySelected();
  // Every column of the archive, of all that match or of the selected rows.
  void ExportAll();
  void ExportSelected();
  // The same columns, of samples that somebody else has at hand.
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
