#include "module/toolkit/editlist/in_place_edit.h"

#include <QKeyEvent>
#include <algorithm>
#include <utility>

#include "module/toolkit/local_numbers.h"
#include "platform/prompt.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr int kHintRight = 20;  // pixels from the cell's left edge
constexpr int kHintDown = 17;   // pixels from its upper edge, at the least

bool IsEnter(const QKeyEvent& event) {
  return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

// A key that inserts a character and is no command.
bool IsCharacter(const QKeyEvent& event) {
  return !event.text().isEmpty() && event.text().front().isPrint() &&
         (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
}

}  // namespace

// --- CInPlaceStrEdit

CInPlaceStrEdit::CInPlaceStrEdit(QWidget* parent, QWidget* list, const QRect& cell,
                                 const CellEdit& edit, EditEnd end)
    : QLineEdit(parent), edit_(edit), list_(list), end_(std::move(end)) {
  setText(QString::fromStdString(edit.startText));
  setGeometry(cell);
  setFont(list->font());
  setFrame(false);
  // As in the cell, so that the text does not jump when it is edited.
  if (edit.column > 0) setAlignment(Qt::AlignRight);
  setAutoFillBackground(true);
  connect(this, &QLineEdit::textChanged, this, [this] { GrowToText(); });
  show();
  setFocus();
  selectAll();
}

bool CInPlaceStrEdit::event(QEvent* event) {
  // These arrive here before the accelerators and the buttons of the dialog around the table.
  if (event->type() == QEvent::ShortcutOverride) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (IsEnter(*key) || key->key() == Qt::Key_Escape || key->key() == Qt::Key_Delete ||
        (key->modifiers() & Qt::ControlModifier) != 0) {
      event->accept();
      return true;
    }
  }
  return QLineEdit::event(event);
}

void CInPlaceStrEdit::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    cancelled_ = true;
    list_->setFocus();
  } else if (IsEnter(*event)) {
    if (MayEnd()) {
      list_->setFocus();
    } else {
      platform::GetPrompter().Beep();
    }
  } else {
    QLineEdit::keyPressEvent(event);
    // Keys that the field does not use must not move or delete rows of the list below it.
    if (!event->matches(QKeySequence::HelpContents)) event->accept();
  }
}

void CInPlaceStrEdit::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  // The field's own menu takes the focus for a moment.
  if (event->reason() != Qt::PopupFocusReason) End();
}

// Also in a window that is not active, in which nothing has the focus.
void CInPlaceStrEdit::hideEvent(QHideEvent* event) {
  QLineEdit::hideEvent(event);
  End();
}

void CInPlaceStrEdit::GrowToText() {
  constexpr int kSpare = 5;
  const int wanted = fontMetrics().horizontalAdvance(text()) + kSpare;
  const int most = parentWidget()->width() - x();
  if (wanted > width()) resize(std::max(width(), std::min(wanted, most)), height());
}

void CInPlaceStrEdit::End() {
  if (std::exchange(ended_, true)) return;
  std::optional<std::string> result;
  if (!cancelled_ && !text().isEmpty()) result = text().toStdString();
  hide();
  deleteLater();
  end_(edit_, result);
}

// --- CInPlaceNumberEdit

CInPlaceNumberEdit::CInPlaceNumberEdit(QWidget* parent, QWidget* list, const QRect& cell,
                                       const CellEdit& edit, EditEnd end, CellNumberFilter filter)
    : CInPlaceStrEdit(parent, list, cell, edit, std::move(end)),
      filter_(std::move(filter)),
      acceptedText_(text()) {
  setMaxLength(std::max<int>(filter_.GetMaximumLength(), static_cast<int>(text().size())));
  selectAll();  // the new limit has cleared the selection
  setInputMethodHints(Qt::ImhFormattedNumbersOnly);
  connect(this, &QLineEdit::textEdited, this, [this](const QString& now) { CheckText(now); });
}

CInPlaceNumberEdit::~CInPlaceNumberEdit() { delete hint_; }

void CInPlaceNumberEdit::ShowHint(const QRect& cell, const QString& text) {
  QWidget* window = this->window();
  hint_ = new QLabel(text, window);
  hint_->setFont(font());
  hint_->setFrameStyle(QFrame::Box | QFrame::Plain);
  hint_->setMargin(2);
  hint_->setAutoFillBackground(true);
  hint_->setBackgroundRole(QPalette::ToolTipBase);
  hint_->setForegroundRole(QPalette::ToolTipText);
  hint_->setAttribute(Qt::WA_TransparentForMouseEvents);
  hint_->adjustSize();
  setAccessibleDescription(text);
  QPoint place = parentWidget()->mapTo(window, cell.topLeft()) +
                 QPoint(kHintRight, std::max(kHintDown, cell.height()));
  place.setX(std::min(place.x(), window->width() - hint_->width()));
  place.setY(std::min(place.y(), window->height() - hint_->height()));
  hint_->move(place);
  hint_->show();
  hint_->raise();
}

void CInPlaceNumberEdit::keyPressEvent(QKeyEvent* event) {
  if (IsCharacter(*event)) {
    if (!HandleCharacter(event->text())) platform::GetPrompter().Beep();
    return;
  }
  removing_ = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
  CInPlaceStrEdit::keyPressEvent(event);
  removing_ = false;
}

bool CInPlaceNumberEdit::HandleCharacter(const QString& typed) {
  const int start = hasSelectedText() ? selectionStart() : cursorPosition();
  const FieldText field{text(), start, static_cast<int>(selectedText().size())};
  if (typed.size() != 1 || !filter_.AcceptsKey(field, typed.front())) return false;
  if (field.text.size() - field.length >= maxLength()) return false;
  acceptedText_ = field.With(typed);
  insert(typed);
  return true;
}

void CInPlaceNumberEdit::CheckText(const QString& now) {
  if (removing_ || now == acceptedText_ || filter_.AcceptsText(now)) {
    acceptedText_ = now;
    return;
  }
  platform::GetPrompter().Beep();
  setText(acceptedText_);
}

namespace {

CellNumberFilter WholeFilter(const CellEdit& edit) {
  return {true, static_cast<double>(edit.intRange.minimum),
          static_cast<double>(edit.intRange.maximum), DecimalSign()};
}

CellNumberFilter DecimalFilter(const CellEdit& edit) {
  return {false, edit.doubleRange.minimum, edit.doubleRange.maximum, DecimalSign()};
}

}  // namespace

CInPlaceIntEdit::CInPlaceIntEdit(QWidget* parent, QWidget* list, const QRect& cell,
                                 const CellEdit& edit, EditEnd end)
    : CInPlaceNumberEdit(parent, list, cell, edit, std::move(end), WholeFilter(edit)) {
  if (!edit.intRange.IsRange()) return;
  ShowHint(cell, QString::fromStdString(platform::FormatText("%d ... %d", edit.intRange.minimum,
                                                             edit.intRange.maximum)));
}

CInPlaceDblEdit::CInPlaceDblEdit(QWidget* parent, QWidget* list, const QRect& cell,
                                 const CellEdit& edit, EditEnd end)
    : CInPlaceNumberEdit(parent, list, cell, edit, std::move(end), DecimalFilter(edit)) {
  if (!edit.doubleRange.IsRange()) return;
  const std::string least = platform::FormatText("%.*f", edit.decimals, edit.doubleRange.minimum);
  const std::string most = platform::FormatText("%.*f", edit.decimals, edit.doubleRange.maximum);
  ShowHint(cell, QString::fromStdString(ToLocal(least) + " ... " + ToLocal(most)));
}

}  // namespace rvx
