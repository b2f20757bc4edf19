#include "module/screens/samples/visc_list_check_box.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace rvx {

CViscListCheckBox::CViscListCheckBox(QWidget* parent) : QListWidget(parent) {
  setSelectionMode(SingleSelection);
  constexpr int kLineSpace = 2;  // pixels
  setSpacing(kLineSpace);
}

void CViscListCheckBox::SetLines(const QStringList& lines) {
  clear();
  checkedLine_ = -1;
  for (const QString& line : lines) {
    auto* item = new QListWidgetItem(line, this);
    // Only this class sets the boxes, so that never two are checked.
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    item->setCheckState(Qt::Unchecked);
  }
}

void CViscListCheckBox::Toggle(int line) {
  if (line == checkedLine_) {
    Uncheck();
  } else {
    Check(line);
  }
}

void CViscListCheckBox::Check(int line) {
  Uncheck();
  checkedLine_ = line;
  setCurrentRow(line, QItemSelectionModel::ClearAndSelect);
  item(line)->setCheckState(Qt::Checked);
}

void CViscListCheckBox::Uncheck() {
  if (checkedLine_ >= 0) item(checkedLine_)->setCheckState(Qt::Unchecked);
  checkedLine_ = -1;
  clearSelection();
}

void CViscListCheckBox::mousePressEvent(QMouseEvent* event) {
  const QListWidgetItem* pressed = itemAt(event->position().toPoint());
  if (event->button() == Qt::LeftButton && pressed != nullptr) Toggle(row(pressed));
}

// The list's own handling of the mouse would select lines that are not checked.
void CViscListCheckBox::mouseMoveEvent(QMouseEvent* /*event*/) {}
void CViscListCheckBox::mouseReleaseEvent(QMouseEvent* /*event*/) {}

// The second click of a double click must not undo the first.
void CViscListCheckBox::mouseDoubleClickEvent(QMouseEvent* /*event*/) {}

void CViscListCheckBox::keyPressEvent(QKeyEvent* event) {
  const int before = currentRow();
  if (event->key() == Qt::Key_Space) {
    if (before >= 0) Toggle(before);
    return;
  }
  QListWidget::keyPressEvent(event);
  if (currentRow() >= 0 && currentRow() != before) Check(currentRow());
}

}  // namespace rvx
