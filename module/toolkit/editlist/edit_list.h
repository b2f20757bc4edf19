// The table whose cells a person edits in place.
#pragma once

#include <QPointer>
#include <QTableWidget>
#include <string>

#include "module/toolkit/editlist/edit_table.h"

namespace rvx {

// An EditTable in a window: mouse, keys, and the editors that open over its cells. A screen inserts
// its columns, fills the rows of table() and adds the add row itself. GUI thread.
class CICEditList final : public QTableWidget, private EditTableObserver {
 public:
  explicit CICEditList(QWidget* parent = nullptr);
  // `available` is not owned and must outlive the list.
  explicit CICEditList(CICAvailableData* available, QWidget* parent = nullptr);
  ~CICEditList() override;

  void SetAvailableData(CICAvailableData* available) { table_.SetAvailableData(available); }
  // Columns count from 0. The columns from this number on move up; a number above the next free one
  // changes nothing. All share the width equally.
  void InsertColumn(int number, tagCICELTYPE type, const std::string& heading);
  // At any time: a screen uses it to follow the rights of its user.
  void SetColumnType(int number, tagCICELTYPE type) { table_.SetColumnType(number, type); }
  void DeleteColumn(int number);

  // Opens the editor of a cell. 0 if the cell can't be edited (it has beeped); otherwise 1, also
  // where a read-only column has beeped.
  int EditCell(int row, int column);
  // Ends an open edit and keeps its text, as a click elsewhere does.
  void EndEdit();
  // The open editor, null without one.
  QWidget* editor() const { return editor_; }

  EditTable& table() { return table_; }
  const EditTable& table() const { return table_; }

 protected:
  bool event(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void SetUp();
  // --- EditTableObserver
  void RowInserted(int row) override;
  void RowRemoved(int row) override;
  void RowChanged(int row) override;

  void Press(const QMouseEvent& event);
  void Click(int row, int column);
  void OpenMenu(int row, const QPoint& place);
  void InsertNewAt(int row);
  void DeleteAt(int row);
  bool HandleKey(int key);
  int VisibleRows() const;
  void ShowCurrent();
  void OpenEditor(const CellEdit& edit);
  void EditEnded(const CellEdit& edit, const std::optional<std::string>& text);
  void ShowAddRowSoon();

  EditTable table_;
  QPointer<QWidget> editor_;  // owns itself
  bool focusCameByMouse_ = false;
};

}  // namespace rvx
