#include "module/toolkit/editlist/edit_list.h"

#include <QHeaderView>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>

#include "module/toolkit/editlist/edit_list_delegate.h"
#include "module/toolkit/editlist/in_place_combo_box.h"
#include "module/toolkit/editlist/in_place_edit.h"
#include "module/toolkit/gui_thread.h"
#include "platform/prompt.h"

namespace rvx {
namespace {

constexpr int kRowSpare = 8;  // pixels above the height of a line
constexpr int kEveryColumn = 1000000;

void Beep() { platform::GetPrompter().Beep(); }

}  // namespace

CICEditList::CICEditList(QWidget* parent) : QTableWidget(parent) { SetUp(); }

CICEditList::CICEditList(CICAvailableData* available, QWidget* parent) : QTableWidget(parent) {
  SetUp();
  SetAvailableData(available);
}

CICEditList::~CICEditList() {
  table_.SetObserver(nullptr);
  delete editor_;
}

void CICEditList::SetUp() {
  AssertGuiThread("CICEditList");
  table_.SetObserver(this);
  setItemDelegate(new EditListDelegate(table_, this));
  setEditTriggers(NoEditTriggers);
  setSelectionMode(NoSelection);
  setShowGrid(false);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setHorizontalScrollMode(ScrollPerPixel);
  setVerticalScrollMode(ScrollPerItem);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowSpare);
  horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  horizontalHeader()->setDefaultAlignment(Qt::AlignCenter);
  horizontalHeader()->setSectionsClickable(false);
  horizontalHeader()->setHighlightSections(false);
  for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()}) {
    connect(bar, &QScrollBar::actionTriggered, this, [this] { EndEdit(); });
  }
}

void CICEditList::InsertColumn(int number, tagCICELTYPE type, const std::string& heading) {
  const int before = columnCount();
  insertColumn(number);
  if (columnCount() == before) return;
  setHorizontalHeaderItem(number, new QTableWidgetItem(QString::fromStdString(heading)));
  table_.InsertColumn(number, type);
  for (int row = 0; row < rowCount(); ++row) RowChanged(row);
}

void CICEditList::DeleteColumn(int number) {
  EndEdit();
  removeColumn(number);
  table_.DeleteColumn(number);
}

// --- The table's changes

void CICEditList::RowInserted(int row) {
  insertRow(row);
  RowChanged(row);
}

void CICEditList::RowRemoved(int row) { removeRow(row); }

void CICEditList::RowChanged(int row) {
  for (int column = 0; column < table_.columnCount(); ++column) {
    setItem(row, column, new QTableWidgetItem(QString::fromStdString(table_.text(row, column))));
  }
}

// --- Editing

int CICEditList::EditCell(int row, int column) {
  EndEdit();
  const bool allowed = table_.MayEdit(row, column);
  if (row >= 0 && row < rowCount()) scrollToItem(item(row, column));
  if (!allowed) {
    Beep();
    return 0;
  }
  const std::optional<CellEdit> edit = table_.BeginEdit(row, column);
  if (!edit || (edit->type == tagCICELTYPE::List && edit->choices.empty())) {
    Beep();
    return 1;
  }
  OpenEditor(*edit);
  return 1;
}

void CICEditList::OpenEditor(const CellEdit& edit) {
  QRect cell = visualItemRect(item(edit.row, edit.column));
  cell.setRight(std::min(cell.right(), viewport()->width() - 1));
  const auto end = [this](const CellEdit& ended, const std::optional<std::string>& text) {
    EditEnded(ended, text);
  };
  switch (edit.type) {
    case tagCICELTYPE::ReadOnly:
      return;
    case tagCICELTYPE::List:
      editor_ = new CInPlaceComboBox(viewport(), this, cell, edit, end);
      break;
    case tagCICELTYPE::Text:
      editor_ = new CInPlaceStrEdit(viewport(), this, cell, edit, end);
      break;
    case tagCICELTYPE::Whole:
      editor_ = new CInPlaceIntEdit(viewport(), this, cell, edit, end);
      break;
    case tagCICELTYPE::Decimal:
      editor_ = new CInPlaceDblEdit(viewport(), this, cell, edit, end);
      break;
  }
  editor_->setAccessibleName(horizontalHeaderItem(edit.column)->text());
}

void CICEditList::EditEnded(const CellEdit& edit, const std::optional<std::string>& text) {
  editor_ = nullptr;
  if (!text) return;
  const int before = table_.rowCount();
  table_.AcceptEdit(edit.row, edit.column, *text);
  if (table_.rowCount() > before) ShowAddRowSoon();
  viewport()->update();
}

// After the click that may have ended the edit: a cell must not move away under the mouse.
void CICEditList::ShowAddRowSoon() {
  const auto show = [this] {
    if (editor_ == nullptr) scrollToItem(item(table_.rowCount() - 1, 0));
  };
  QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
}

void CICEditList::EndEdit() {
  if (editor_ == nullptr) return;
  setFocus();
  // In a window in the background nothing gets the focus, and a list of choices closes with its
  // window.
  if (editor_ != nullptr) editor_->hide();
}

void CICEditList::InsertNewAt(int row) {
  if (!table_.InsertNew(row)) {
    Beep();
    return;
  }
  viewport()->update();
  EditCell(row, 0);
}

void CICEditList::DeleteAt(int row) {
  if (!table_.Delete(row)) Beep();
  viewport()->update();
}

// --- Mouse

void CICEditList::mousePressEvent(QMouseEvent* event) { Press(*event); }

// The second press of a quick pair is a click like any other.
void CICEditList::mouseDoubleClickEvent(QMouseEvent* event) { Press(*event); }

void CICEditList::mouseMoveEvent(QMouseEvent* /*event*/) {}

void CICEditList::mouseReleaseEvent(QMouseEvent* /*event*/) { focusCameByMouse_ = false; }

void CICEditList::wheelEvent(QWheelEvent* event) {
  EndEdit();
  QTableWidget::wheelEvent(event);
}

void CICEditList::Press(const QMouseEvent& event) {
  const QPersistentModelIndex index = indexAt(event.position().toPoint());
  EndEdit();
  if (!index.isValid()) return;
  if (event.button() == Qt::LeftButton) {
    Click(index.row(), index.column());
  } else if (event.button() == Qt::RightButton && index.column() == 0 &&
             !table_.IsAddRow(index.row()) && hasFocus() && !focusCameByMouse_) {
    OpenMenu(index.row(), event.globalPosition().toPoint());
  }
}

void CICEditList::Click(int row, int column) {
  const bool current = row == table_.currentRow() && column == table_.currentColumn();
  if (!current && !table_.IsAddRow(row)) {
    table_.SetCurrent(row, column);
    ShowCurrent();
    return;
  }
  if (EditCell(row, column) == 1) table_.SetCurrent(row, column);
  viewport()->update();
}

void CICEditList::OpenMenu(int row, const QPoint& place) {
  table_.SetCurrent(row, 0);
  viewport()->update();
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(QStringLiteral("Insert New"), this, [this, row] { InsertNewAt(row); });
  menu->addAction(QStringLiteral("Delete"), this, [this, row] { DeleteAt(row); });
  menu->popup(place);
}

// --- Keyboard

bool CICEditList::event(QEvent* event) {
  // Before the buttons and accelerators of the dialog around the list.
  if (event->type() == QEvent::ShortcutOverride) {
    switch (static_cast<QKeyEvent*>(event)->key()) {
      case Qt::Key_Return:
      case Qt::Key_Enter:
      case Qt::Key_Escape:
      case Qt::Key_Insert:
      case Qt::Key_Delete:
        event->accept();
        return true;
      default:
        break;
    }
  }
  return QTableWidget::event(event);
}

void CICEditList::keyPressEvent(QKeyEvent* event) {
  if ((event->modifiers() & ~Qt::KeypadModifier) == 0 && HandleKey(event->key())) {
    event->accept();
  } else {
    event->ignore();
  }
}

bool CICEditList::HandleKey(int key) {
  const int row = table_.currentRow();
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      EditCell(row, table_.currentColumn());
      return true;
    case Qt::Key_Escape:
      return true;  // it must not close the dialog in the middle of a table
    case Qt::Key_Insert:
      InsertNewAt(row);
      return true;
    case Qt::Key_Delete:
      DeleteAt(row);
      return true;
    case Qt::Key_Up:
      table_.MoveCurrent(-1, 0);
      break;
    case Qt::Key_Down:
      table_.MoveCurrent(1, 0);
      break;
    case Qt::Key_Left:
      table_.MoveCurrent(0, -1);
      break;
    case Qt::Key_Right:
      table_.MoveCurrent(0, 1);
      break;
    case Qt::Key_Home:
      table_.MoveCurrent(0, -kEveryColumn);
      break;
    case Qt::Key_End:
      table_.MoveCurrent(0, kEveryColumn);
      break;
    case Qt::Key_PageUp:
      table_.PageUp(rowAt(0), VisibleRows());
      break;
    case Qt::Key_PageDown:
      table_.PageDown(rowAt(0), VisibleRows());
      break;
    default:
      return false;
  }
  ShowCurrent();
  return true;
}

int CICEditList::VisibleRows() const {
  return std::max(1, viewport()->height() / verticalHeader()->defaultSectionSize());
}

void CICEditList::ShowCurrent() {
  if (table_.rowCount() > 0) {
    const QModelIndex index = model()->index(table_.currentRow(), table_.currentColumn());
    // Qt's own current cell is what a screen reader follows.
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    scrollTo(index);
  }
  viewport()->update();
}

void CICEditList::focusInEvent(QFocusEvent* event) {
  QTableWidget::focusInEvent(event);
  focusCameByMouse_ = event->reason() == Qt::MouseFocusReason;
  if (event->reason() != Qt::MouseFocusReason) {
    // With the row below, which is often the one to fill next.
    const int below = std::min(table_.currentRow() + 1, table_.rowCount() - 1);
    if (below >= 0) scrollTo(model()->index(below, table_.currentColumn()));
    ShowCurrent();
  }
  viewport()->update();
}

void CICEditList::focusOutEvent(QFocusEvent* event) {
  QTableWidget::focusOutEvent(event);
  viewport()->update();
}

}  // namespace rvx
