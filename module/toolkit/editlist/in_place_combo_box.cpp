#include "module/toolkit/editlist/in_place_combo_box.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/prompt.h"

namespace rvx {
namespace {

constexpr int kCellsHigh = 11;

}  // namespace

CInPlaceComboBox::CInPlaceComboBox(QWidget* parent, QWidget* list, const QRect& cell,
                                   const CellEdit& edit, EditEnd end)
    : QFrame(parent, Qt::Popup),
      edit_(edit),
      list_(list),
      end_(std::move(end)),
      choices_(new QListWidget(this)) {
  setFrameStyle(QFrame::Box | QFrame::Plain);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(choices_);
  choices_->setFont(list->font());
  choices_->setFrameShape(QFrame::NoFrame);
  choices_->installEventFilter(this);
  FillChoices(cell.height());
  connect(choices_, &QListWidget::itemClicked, this, [this](QListWidgetItem* clicked) {
    // A click on a disabled line arrives here too, while another line stays the current one.
    if (!clicked->text().isEmpty()) Take(clicked);
  });
  setGeometry(PlaceAt(QRect(parent->mapToGlobal(cell.topLeft()), cell.size())));
  setFocusProxy(choices_);
  show();
  choices_->setFocus();
}

QRect CInPlaceComboBox::PlaceAt(const QRect& cell) const {
  const int rows = std::min<int>(kCellsHigh, static_cast<int>(edit_.choices.size()) + 1);
  QRect place(cell.topLeft(), QSize(cell.width(), rows * cell.height()));
  // For a cell low on the screen the list is above its cell, so that each choice can be reached.
  const QRect screen = list_->screen()->availableGeometry();
  place.moveBottom(std::min(place.bottom(), screen.bottom()));
  place.moveTop(std::max(place.top(), screen.top()));
  return place;
}

void CInPlaceComboBox::FillChoices(int height) {
  for (const std::string& choice : edit_.choices) {
    auto* item = new QListWidgetItem(QString::fromStdString(choice), choices_);
    item->setSizeHint(QSize(0, height));
    // A line without a text keeps its place but can't be chosen.
    if (choice.empty()) item->setFlags(Qt::NoItemFlags);
  }
  choices_->setCurrentRow(edit_.selected);
}

bool CInPlaceComboBox::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) {
    const bool pressed = event->type() == QEvent::KeyPress;
    switch (static_cast<QKeyEvent*>(event)->key()) {
      case Qt::Key_Escape:
        if (pressed) End(std::nullopt);
        break;
      case Qt::Key_Return:
      case Qt::Key_Enter:
        if (pressed) Take(choices_->currentItem());
        break;
      case Qt::Key_Tab:
      case Qt::Key_Backtab:
        if (pressed) platform::GetPrompter().Beep();
        break;
      default:
        return QFrame::eventFilter(watched, event);
    }
    event->accept();
    return true;
  }
  return QFrame::eventFilter(watched, event);
}

void CInPlaceComboBox::hideEvent(QHideEvent* event) {
  QFrame::hideEvent(event);
  // Closed from outside. The text that the cell has already is no new choice.
  const bool moved = choices_->currentRow() != edit_.selected || edit_.startText.empty();
  if (moved) {
    Take(choices_->currentItem());
  } else {
    End(std::nullopt);
  }
}

void CInPlaceComboBox::Take(const QListWidgetItem* item) {
  if (item == nullptr || item->text().isEmpty()) {
    End(std::nullopt);
    return;
  }
  End(item->text().toStdString());
}

void CInPlaceComboBox::End(const std::optional<std::string>& text) {
  if (std::exchange(ended_, true)) return;
  hide();
  deleteLater();
  list_->setFocus();
  end_(edit_, text);
}

}  // namespace rvx
