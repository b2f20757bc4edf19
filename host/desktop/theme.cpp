#include "host/desktop/theme.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QStyleFactory>
#include <QToolTip>

namespace torvell {
namespace {

ThemeColors LightColors() {
  ThemeColors colors;
  colors.background = QColor(0xF3F4F6);
  colors.base = QColor(0xFFFFFF);
  colors.text = QColor(0x1B2026);
  colors.quiet = QColor(0x5B6570);
  colors.line = QColor(0xD3D8DD);
  colors.accent = QColor(0x0B5CAD);
  colors.accentText = QColor(0xFFFFFF);
  colors.running = QColor(0xD6E6F7);
  colors.selected = QColor(0xDDE1E6);
  colors.warning = QColor(0xFCE9C8);
  colors.warningText = QColor(0x4A2F00);
  colors.secondCurve = QColor(0x555E68);
  return colors;
}

ThemeColors DarkColors() {
  ThemeColors colors;
  colors.background = QColor(0x1D2125);
  colors.base = QColor(0x24292E);
  colors.text = QColor(0xE6E9EC);
  colors.quiet = QColor(0xA0A9B2);
  colors.line = QColor(0x3C444C);
  colors.accent = QColor(0x66AEEB);
  colors.accentText = QColor(0x0C1116);
  colors.running = QColor(0x26415C);
  colors.selected = QColor(0x3A424A);
  colors.warning = QColor(0x53401A);
  colors.warningText = QColor(0xFBE7C0);
  colors.secondCurve = QColor(0xB6BEC6);
  return colors;
}

ThemeColors& ColorsInForce() {
  static ThemeColors colors = LightColors();
  return colors;
}

QPalette MakePalette(const ThemeColors& colors) {
  QPalette palette;
  palette.setColor(QPalette::Window, colors.background);
  palette.setColor(QPalette::WindowText, colors.text);
  palette.setColor(QPalette::Base, colors.base);
  palette.setColor(QPalette::AlternateBase, colors.background);
  palette.setColor(QPalette::Text, colors.text);
  palette.setColor(QPalette::Button, colors.background);
  palette.setColor(QPalette::ButtonText, colors.text);
  palette.setColor(QPalette::ToolTipBase, colors.base);
  palette.setColor(QPalette::ToolTipText, colors.text);
  palette.setColor(QPalette::PlaceholderText, colors.quiet);
  palette.setColor(QPalette::Highlight, colors.accent);
  palette.setColor(QPalette::HighlightedText, colors.accentText);
  palette.setColor(QPalette::Link, colors.accent);
  palette.setColor(QPalette::BrightText, colors.text);
  palette.setColor(QPalette::Light, colors.base);
  palette.setColor(QPalette::Midlight, colors.line);
  palette.setColor(QPalette::Mid, colors.line);
  palette.setColor(QPalette::Dark, colors.quiet);
  palette.setColor(QPalette::Shadow, colors.line.darker(150));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    QColor faded = colors.quiet;
    faded.setAlpha(150);
    palette.setColor(QPalette::Disabled, role, faded);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, colors.line);
  palette.setColor(QPalette::Disabled, QPalette::HighlightedText, colors.quiet);
  return palette;
}

QPainterPath Letter(const QRectF& box, const QString& text) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setBold(true);
  font.setPixelSize(10);
  QPainterPath path;
  path.addText(0, 0, font, text);
  const QRectF bounds = path.boundingRect();
  path.translate(box.center() - bounds.center());
  return path;
}

// All shapes are drawn in a square of 16 units.
void DrawShape(QPainter& painter, Shape shape, const QColor& color) {
  QPen pen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  switch (shape) {
    case Shape::None:
      return;
    case Shape::Waiting:
      painter.drawEllipse(QPointF(8, 8), 4.2, 4.2);
      return;
    case Shape::Running:
      painter.setBrush(color);
      painter.drawPolygon(QPolygonF({{5, 3}, {13, 8}, {5, 13}}));
      return;
    case Shape::Done:
      painter.drawPolyline(QPolygonF({{3, 8.5}, {6.5, 12}, {13, 4.5}}));
      return;
    case Shape::Failed:
      painter.drawLine(QPointF(4, 4), QPointF(12, 12));
      painter.drawLine(QPointF(12, 4), QPointF(4, 12));
      return;
    case Shape::Paused:
      painter.setBrush(color);
      painter.drawRect(QRectF(4.5, 4, 1.6, 8));
      painter.drawRect(QRectF(9.9, 4, 1.6, 8));
      return;
    case Shape::NotRun:
      painter.drawLine(QPointF(4, 8), QPointF(12, 8));
      return;
    case Shape::Warning:
      painter.drawPolygon(QPolygonF({{8, 2}, {14.5, 13.5}, {1.5, 13.5}}));
      painter.drawLine(QPointF(8, 6.2), QPointF(8, 9));
      painter.drawPoint(QPointF(8, 11.4));
      return;
    case Shape::Info:
      painter.drawEllipse(QPointF(8, 8), 6.2, 6.2);
      painter.setPen(Qt::NoPen);
      painter.setBrush(color);
      painter.drawPath(Letter(QRectF(0, 0, 16, 16), QStringLiteral("i")));
      return;
    case Shape::Lost:
      painter.drawLine(QPointF(2, 8), QPointF(5.5, 8));
      painter.drawLine(QPointF(10.5, 8), QPointF(14, 8));
      painter.drawLine(QPointF(6.5, 4.5), QPointF(9.5, 11.5));
      return;
    case Shape::Locked:
      painter.drawRoundedRect(QRectF(3.5, 7.5, 9, 6.5), 1, 1);
      painter.drawArc(QRectF(5, 2.5, 6, 9), 0, 180 * 16);
      return;
  }
}

// Draws at the requested size, so that nothing is scaled up.
class ShapeEngine : public QIconEngine {
 public:
  ShapeEngine(Shape shape, QColor color) : shape_(shape), color_(std::move(color)) {}

  void paint(QPainter* painter, const QRect& box, QIcon::Mode mode, QIcon::State) override {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const double side = std::min(box.width(), box.height());
    painter->translate(box.x() + (box.width() - side) / 2, box.y() + (box.height() - side) / 2);
    painter->scale(side / 16.0, side / 16.0);
    QColor color = color_.isValid() ? color_ : Colors().text;
    if (mode == QIcon::Disabled) color.setAlpha(110);
    DrawShape(*painter, shape_, color);
    painter->restore();
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, QRect(QPoint(0, 0), size), mode, state);
    return picture;
  }

  QIconEngine* clone() const override { return new ShapeEngine(shape_, color_); }

 private:
  const Shape shape_;
  const QColor color_;
};

}  // namespace

const ThemeColors& Colors() { return ColorsInForce(); }

ThemeKind DesktopTheme() {
  return QApplication::palette().color(QPalette::Window).lightness() < 128 ? ThemeKind::Dark
                                                                           : ThemeKind::Light;
}

void ApplyTheme(QApplication& application, ThemeKind kind) {
  ColorsInForce() = kind == ThemeKind::Dark ? DarkColors() : LightColors();
  application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  const QPalette palette = MakePalette(Colors());
  QApplication::setPalette(palette);
  QToolTip::setPalette(palette);
  // What a palette can't express: plain headings, and space around a tab's text.
  application.setStyleSheet(
      QStringLiteral("QHeaderView::section { background: %1; color: %2; border: none;"
                     " border-bottom: 1px solid %3; padding: 3px 6px; }"
                     "QTableView { border: 1px solid %3; gridline-color: %3; }"
                     "QTableView { selection-background-color: %6; selection-color: %4; }"
                     "QTabBar::tab { padding: 4px 12px; }"
                     "QToolTip { color: %4; background: %5; border: 1px solid %3; padding: 3px; }")
          .arg(Colors().background.name(), Colors().quiet.name(), Colors().line.name(),
               Colors().text.name(), Colors().base.name(), Colors().selected.name()));
}

QIcon ShapeIcon(Shape shape) { return ShapeIcon(shape, QColor()); }

QIcon ShapeIcon(Shape shape, const QColor& color) {
  if (shape == Shape::None) return QIcon();
  return QIcon(new ShapeEngine(shape, color));
}

}  // namespace torvell
