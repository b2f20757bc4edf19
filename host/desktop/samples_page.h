// The tab of all stored samples: filters, sorting, copying, CSV.
#pragma once

#include <QWidget>

#include "host/desktop/samples_model.h"

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableView;

namespace torvell {

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

 Q_SIGNALS:
  void Notice(const QString& text);
  void Failed(const QString& text);

 private:
  void MakeFilters();
  void Search();
  void Export(std::vector<int64_t> rows);
  std::vector<int> SelectedRows() const;
  void ShowCount();

  SampleStore& store_;
  Worker& worker_;
  SamplesModel* model_;
  QTableView* table_;
  QLineEdit* instrument_;
  QLineEdit* sampleId_;
  QComboBox* kind_;
  QDateEdit *from_, *to_;
  QLabel* count_;
  class QTimer* soon_;
};

}  // namespace torvell
