#include "module/toolkit/editlist/spin_buttons.h"

#include <QKeyEvent>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "module/toolkit/editlist/num_edit.h"

namespace rvx {

CSpinButtons::CSpinButtons(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  for (const int by : {1, -1}) {
    auto* button = new QToolButton(this);
    button->setArrowType(by > 0 ? Qt::UpArrow : Qt::DownArrow);
    button->setAccessibleName(by > 0 ? QStringLiteral("More") : QStringLiteral("Less"));
    button->setAutoRepeat(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    connect(button, &QToolButton::clicked, this, [this, by] { Step(by); });
    layout->addWidget(button);
  }
}

void CSpinButtons::SetBuddy(CNumEdit* field) {
  field_ = field;
  field->installEventFilter(this);
}

void CSpinButtons::SetRange(int minimum, int maximum) {
  minimum_ = minimum;
  maximum_ = maximum;
}

void CSpinButtons::SetPosition(int position) {
  position_ = std::clamp(position, minimum_, maximum_);
  if (field_ != nullptr) field_->SetNumber(position_);
}

int CSpinButtons::GetPosition() const {
  if (field_ == nullptr) return position_;
  const std::optional<double> number = field_->GetNumber();
  if (!number) return position_;
  return static_cast<int>(std::clamp<double>(std::trunc(*number), minimum_, maximum_));
}

void CSpinButtons::Step(int by) { SetPosition(GetPosition() + by); }

bool CSpinButtons::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && isEnabled()) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
      Step(key == Qt::Key_Up ? 1 : -1);
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace rvx
