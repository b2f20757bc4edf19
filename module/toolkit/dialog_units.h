// Sizes in dialog units, which follow the font: the measures of the dialog templates.
#pragma once

#include <QSize>

class QWidget;

namespace rvx {

// `width` and `height` in dialog units (a quarter of the mean character's width, an eighth of the
// line height of the widget's font) as pixels, rounded up. GUI thread.
QSize DialogUnits(const QWidget& widget, int width, int height);

}  // namespace rvx
