// A day that may be left open, as a filter needs it.
#pragma once

#include <QDate>
#include <QWidget>

class QDateEdit;
class QToolButton;

namespace torvell {

// A date field with a calendar, and a button that empties it. Empty, it shows its name, and its
// calendar opens at today. GUI thread.
class DayField : public QWidget {
  Q_OBJECT

 public:
  // `name` says what the day limits: "From".
  explicit DayField(const QString& name, QWidget* parent = nullptr);

  // An invalid date while the field is empty.
  QDate day() const;
  // An invalid date empties it.
  void SetDay(const QDate& day);

 Q_SIGNALS:
  void Changed();

 protected:
  // The calendar's opening.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QDateEdit* edit_;
  QToolButton* clear_;
};

}  // namespace torvell
