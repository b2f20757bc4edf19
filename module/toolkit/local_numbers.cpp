#include "module/toolkit/local_numbers.h"

#include <QLocale>

namespace rvx {

QChar DecimalSign() {
  const QString sign = QLocale().decimalPoint();
  return sign.isEmpty() ? QChar(u'.') : sign.front();
}

std::string ToLocal(const std::string& number) {
  return QString::fromStdString(number).replace(u'.', DecimalSign()).toStdString();
}

std::string FromLocal(const std::string& number) {
  return QString::fromStdString(number).replace(DecimalSign(), u'.').toStdString();
}

}  // namespace rvx
