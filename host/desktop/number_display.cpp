#include "host/desktop/number_display.h"

#include <QDate>
#include <QLocale>
#include <QTime>
#include <cmath>

namespace torvell {
namespace {

QTime TimeOf(const platform::Date& date) {
  const platform::Date::Fields fields = date.fields();
  return QTime(fields.hour, fields.minute, fields.second);
}

}  // namespace

QString DisplayNumber(double value, int decimals) {
  if (!std::isfinite(value)) return QStringLiteral("-");
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  const QString text = locale.toString(value, 'f', decimals);
  // A small negative value that rounds to zero would otherwise read "-0.0".
  return value < 0.0 && locale.toDouble(text) == 0.0 ? locale.toString(0.0, 'f', decimals) : text;
}

QString DisplayClock(const platform::Date& date) {
  if (!date.IsValid()) return QStringLiteral("-");
  return TimeOf(date).toString(QStringLiteral("HH:mm:ss"));
}

QString DisplayTime(const platform::Date& date) {
  if (!date.IsValid()) return QStringLiteral("-");
  const platform::Date::Fields fields = date.fields();
  const QDate day(fields.year, fields.month, fields.day);
  return QLocale().toString(day, QLocale::ShortFormat) + QLatin1Char(' ') + DisplayClock(date);
}

}  // namespace torvell
