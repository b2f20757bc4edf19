// The tray as a table for Qt's views; what it shows is decided in tray_rows.h.
#pragma once

#include <QAbstractTableModel>

#include "host/desktop/tray_rows.h"

namespace torvell {

// A row for each position and a column for each of its properties. The window's thread only.
class TrayModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Number, SampleId, Action, Tests, State, Result, ColumnCount };

  explicit TrayModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // Notifies the views only of what has changed, so that an open editor and the selection stay.
  void SetRows(const std::vector<TrayRow>& rows);
  // Sets whether sample ids can be typed.
  void SetEditable(bool editable) { editable_ = editable; }
  const std::vector<TrayRow>& rows() const { return rows_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Requests the change; it is shown when the instrument has accepted it.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 Q_SIGNALS:
  void SampleIdTyped(int position, const QString& text);

 private:
  QString Text(int position, int column) const;

  std::vector<TrayRow> rows_;
  bool editable_ = false;
};

}  // namespace torvell
