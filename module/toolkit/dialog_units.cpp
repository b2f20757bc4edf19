#include "module/toolkit/dialog_units.h"

#include <QFontMetricsF>
#include <QWidget>
#include <cmath>

namespace rvx {

QSize DialogUnits(const QWidget& widget, int width, int height) {
  const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  const QFontMetricsF metrics(widget.font());
  const double mean = metrics.horizontalAdvance(letters) / static_cast<double>(letters.size());
  return {static_cast<int>(std::ceil(width * mean / 4.0)),
          static_cast<int>(std::ceil(height * metrics.height() / 8.0))};
}

}  // namespace rvx
