#include "module/toolkit/editlist/num_edit.h"

#include <QKeyEvent>
#include <algorithm>

#include "module/toolkit/local_numbers.h"
#include "platform/text.h"

namespace rvx {

CNumEdit::CNumEdit(QWidget* parent) : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  setInputMethodHints(Qt::ImhFormattedNumbersOnly);
  connect(this, &QLineEdit::textChanged, this, [this] {
    // A user's change is checked first, below; what the program sets is not checked.
    if (!isModified()) acceptedText_ = text();
  });
  connect(this, &QLineEdit::textEdited, this, [this](const QString& now) { CheckText(now); });
}

CNumEdit::CNumEdit(uint8_t integerDigits, uint8_t decimalDigits, double minimum, double maximum,
                   QWidget* parent)
    : CNumEdit(parent) {
  SetRules(integerDigits, decimalDigits, minimum, maximum);
}

void CNumEdit::SetRules(uint8_t integerDigits, uint8_t decimalDigits, double minimum,
                        double maximum) {
  integerDigits_ = integerDigits;
  decimalDigits_ = decimalDigits;
  minimum_ = minimum;
  maximum_ = maximum;
}

NumEditRules CNumEdit::GetRules() const {
  return {integerDigits_, decimalDigits_, maximum_, minimum_, DecimalSign()};
}

std::optional<double> CNumEdit::GetNumber() const {
  if (text().isEmpty()) return std::nullopt;
  return ReadNumber(text(), DecimalSign());
}

void CNumEdit::SetNumber(double value) {
  setText(QString::fromStdString(ToLocal(platform::FormatText("%.*f", decimalDigits_, value))));
}

void CNumEdit::keyPressEvent(QKeyEvent* event) {
  const bool command =
      (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
  if (isReadOnly() || command) {
    QLineEdit::keyPressEvent(event);
  } else if (event->key() == Qt::Key_Backspace) {
    Backspace();
  } else if (event->key() == Qt::Key_Delete) {
    Delete();
  } else if (!event->text().isEmpty() && event->text().front().isPrint()) {
    TypeCharacter(event->text());
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void CNumEdit::TypeCharacter(const QString& typed) {
  const FieldText field{text(), hasSelectedText() ? selectionStart() : cursorPosition(),
                        static_cast<int>(selectedText().size())};
  if (typed.size() != 1 || !GetRules().AcceptsKey(field, typed.front())) return;
  Apply(field.With(typed), field.start + 1);
}

void CNumEdit::Backspace() {
  FieldText field{text(), cursorPosition(), 0};
  if (hasSelectedText()) {
    field.start = selectionStart();
    field.length = static_cast<int>(selectedText().size());
  } else {
    if (field.start == 0) return;
    --field.start;
    field.length = 1;
  }
  if (GetRules().AcceptsRemoval(field.Remaining())) {
    Apply(field.Remaining(), field.start);
  } else {
    // Moves past what can't be deleted, so that the user can continue deleting.
    setCursorPosition(field.start);
  }
}

void CNumEdit::Delete() {
  if (!hasSelectedText()) {
    if (cursorPosition() == text().size()) return;
    setCursorPosition(cursorPosition() + 1);
  }
  Backspace();
}

void CNumEdit::Apply(const QString& now, int caret) {
  acceptedText_ = now;
  setText(now);
  setModified(true);
  setCursorPosition(caret);
}

// Input that does not come by typing: the clipboard, a drop, an input method.
void CNumEdit::CheckText(const QString& now) {
  if (now == acceptedText_ || GetRules().AcceptsText(now)) {
    acceptedText_ = now;
    return;
  }
  const int caret = std::min<int>(cursorPosition(), static_cast<int>(acceptedText_.size()));
  setText(acceptedText_);
  setCursorPosition(caret);
}

}  // namespace rvx
