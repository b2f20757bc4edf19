// A field for a day that may be left empty, as a filter needs it.
#pragma once

#include <QDate>
#include <QWidget>

class QDateEdit;
class QToolButton;

namespace torvell {

// A date field with a calendar, and a button that clears it. When empty it shows its name, and its
// calendar opens at today. The window's thread only.
class DayField : public QWidget {
  Q_OBJECT

 public:
  // `name` says how the day limits the search: "From".
  explicit DayField(const QString& name, QWidget* parent = nullptr);

  // Returns the day; an invalid date if the field is empty.
  QDate day() const;
  // Sets the day; an invalid date clears the field.
  void SetDay(const QDate& day);

 Q_SIGNALS:
  void Changed();

 protected:
  // Watches for the calendar to open.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QDateEdit* edit_;
  QToolButton* clear_;
};

}  // namespace torvell
