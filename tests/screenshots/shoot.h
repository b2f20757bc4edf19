// What the programs that draw windows into files share.
#pragma once

#include <QApplication>
#include <QLocale>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QStyleFactory>
#include <QTest>
#include <QWidget>
#include <string>

namespace rvx {

// Draws windows the same on every machine. Must be made immediately after the QApplication.
class Camera {
 public:
  // `folder` must exist. The scale is that of the application (QT_SCALE_FACTOR).
  Camera(QString folder, bool dark, const QLocale& locale)
      : folder_(std::move(folder)),
        suffix_(QStringLiteral("-%1-x%2-%3.png")
                    .arg(dark ? "dark" : "light")
                    .arg(qRound(qApp->devicePixelRatio()))
                    .arg(locale.name().left(2))) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    if (dark) QApplication::setPalette(DarkPalette());
    QLocale::setDefault(locale);
  }

  // Writes the window and the popups above it to "NAME-light-x1-en.png". Ends the process if it
  // can't.
  void Shoot(QWidget& window, const QString& name) {
    QTest::qWait(0);
    QRect area = window.geometry();
    for (const QWidget* other : Overlays(window)) area |= other->geometry();
    QPixmap picture(area.size() * window.devicePixelRatio());
    picture.setDevicePixelRatio(window.devicePixelRatio());
    picture.fill(window.palette().color(QPalette::Mid));
    QPainter painter(&picture);
    painter.drawPixmap(window.geometry().topLeft() - area.topLeft(), window.grab());
    for (QWidget* other : Overlays(window)) {
      painter.drawPixmap(other->geometry().topLeft() - area.topLeft(), other->grab());
    }
    painter.end();
    if (!picture.save(folder_ + u'/' + name + suffix_)) {
      qFatal("%s can't be written", qPrintable(folder_ + u'/' + name + suffix_));
    }
  }

 private:
  static QWidgetList Overlays(const QWidget& window) {
    QWidgetList overlays;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget != &window && widget->isVisible() && widget->windowType() == Qt::Popup) {
        overlays << widget;
      }
    }
    return overlays;
  }
  static QPalette DarkPalette() {
    QPalette palette(QColor(0x35, 0x36, 0x3a), QColor(0x2b, 0x2c, 0x30));
    palette.setColor(QPalette::Base, QColor(0x1f, 0x20, 0x23));
    palette.setColor(QPalette::AlternateBase, QColor(0x2a, 0x2c, 0x31));
    palette.setColor(QPalette::Highlight, QColor(0x4c, 0x8b, 0xf5));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
      palette.setColor(role, QColor(0xe8, 0xe8, 0xe8));
      palette.setColor(QPalette::Disabled, role, QColor(0x8a, 0x8c, 0x90));
    }
    return palette;
  }

  const QString folder_;
  const QString suffix_;
};

}  // namespace rvx
