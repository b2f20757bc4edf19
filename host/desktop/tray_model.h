// The tray as a table for Qt's views; what it shows is decided in tray_rows.h.
#pragma once

#include <QAbstractTableModel>

#include "host/desktop/tray_rows.h"

namespace torvell {

// A row for each position, a column for each thing that is known of it. The window's thread only.
class TrayModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Number, SampleId, Action, Tests, State, Result, ColumnCount };

  explicit TrayModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // Tells the views only what has changed, so that an open editor and the selection stay.
  void SetRows(const std::vector<TrayRow>& rows);
  // Sample ids can be typed.
  void SetEditable(bool editable) { editable_ = editable; }
  const std::vector<TrayRow>& rows() const { return rows_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Asks for the change; it shows when the instrument has taken it.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 Q_SIGNALS:
  void SampleIdTyped(int position, const QString& text);

 private:
  QString Text(int position, int column) const;

  std::vector<TrayRow> rows_;
  bool editable_ = false;
};

}  // namespace torvell
