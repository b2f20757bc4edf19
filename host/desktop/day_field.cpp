#include "host/desktop/day_field.h"

#include <QCalendarWidget>
#include <QDateEdit>
#include <QEvent>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QToolButton>

namespace torvell {
namespace {

// The earliest day means an empty field, since a date field always has a date.
const QDate& NoDay() {
  static const QDate date(2000, 1, 1);
  return date;
}

}  // namespace

DayField::DayField(const QString& name, QWidget* parent)
    : QWidget(parent), edit_(new QDateEdit(this)), clear_(new QToolButton(this)) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  edit_->setMinimumDate(NoDay());
  edit_->setDate(NoDay());
  edit_->setSpecialValueText(name);
  edit_->setCalendarPopup(true);
  edit_->setAccessibleName(name);
  edit_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  edit_->setMinimumWidth(84);
  edit_->calendarWidget()->installEventFilter(this);
  clear_->setText(QStringLiteral("×"));
  clear_->setAutoRaise(true);
  clear_->setAccessibleName(QStringLiteral("No limit: %1").arg(name));
  clear_->setToolTip(QStringLiteral("Take this limit away"));
  clear_->setEnabled(false);
  row->addWidget(edit_, 1);
  row->addWidget(clear_);
  setFocusProxy(edit_);
  connect(edit_, &QDateEdit::dateChanged, this, [this] {
    clear_->setEnabled(day().isValid());
    Q_EMIT Changed();
  });
  connect(clear_, &QToolButton::clicked, this, [this] { SetDay(QDate()); });
}

QDate DayField::day() const { return edit_->date() == NoDay() ? QDate() : edit_->date(); }

void DayField::SetDay(const QDate& day) { edit_->setDate(day.isValid() ? day : NoDay()); }

bool DayField::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show && !day().isValid()) {
    // This chooses no day: the field stays empty until the user picks one.
    QCalendarWidget* calendar = edit_->calendarWidget();
    const QSignalBlocker quiet(calendar);
    calendar->setSelectedDate(QDate::currentDate());
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace torvell
