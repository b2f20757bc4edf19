// How the cells of an editable table look.
#pragma once

#include <QStyledItemDelegate>

#include "module/toolkit/editlist/edit_table.h"

namespace rvx {

// A thin grey frame around each cell, the first column left-aligned, the others right-aligned, long
// texts cut, the add row in grey, a focus rectangle on the current cell. GUI thread.
class EditListDelegate final : public QStyledItemDelegate {
 public:
  // `table` must outlive it. `owner` is the list: the focus rectangle is drawn while it has the
  // focus.
  EditListDelegate(const EditTable& table, QWidget* owner);

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;

 private:
  const EditTable& table_;
  const QWidget* const owner_;
};

}  // namespace rvx
