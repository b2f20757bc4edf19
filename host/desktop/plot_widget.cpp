#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

#include "host/desktop/number_display.h"
#include "host/desktop/plot.h"
#include "host/desktop/plot_axis.h"
#include "host/desktop/theme.h"
#include "host/tray/number_text.h"

namespace torvell {
namespace {

constexpr int kDrawingMilliseconds = 200;
constexpr double kFollowedSeconds = 600.0;
// Some hours of readings; older points are dropped.
constexpr size_t kMaxPoints = 40000;
constexpr int kTicksAcross = 5;
constexpr int kTicksUp = 5;
// A curve with more visible points than this has its dashes drawn by DrawCurve.
constexpr int kFewPoints = 200;
constexpr double kDash = 6.0;  // pixels
constexpr double kDashGap = 3.0;

struct Point {
  double seconds, left, right;
};

QPen LeftPen() { return QPen(Colors().accent, 1.6); }
QPen RightPen() { return QPen(Colors().secondCurve, 1.4, Qt::DashLine); }

// Maps a range of values to pixels: `start` is the place of its low end; `length` is negative where
// values grow upwards.
struct Scale {
  PlotRange range;
  double start, length;
  double At(double value) const { return start + (value - range.low) / range.span() * length; }
};

Scale Across(const PlotRange& range, const QRectF& frame) {
  return {range, frame.left(), frame.width()};
}
Scale Up(const PlotRange& range, const QRectF& frame) {
  return {range, frame.bottom(), -frame.height()};
}

// Two curves over time, which the user can move and zoom. The window's thread only.
class PlotWidget : public QWidget, public Plot {
 public:
  PlotWidget(const PlotCurveStyle& left, const PlotCurveStyle& right, QWidget* parent)
      : QWidget(parent), left_(left), right_(right) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 130);
    setAccessibleName(QStringLiteral("Plot of %1 and %2").arg(left.name, right.name));
    setToolTip(
        QStringLiteral("Drag or use the arrow keys to move, turn the wheel to zoom; a "
                       "double click or Home follows the newest values again."));
  }

  QWidget* widget() override { return this; }

  void SetTitle(const QString& title) override {
    title_ = title;
    update();
  }

  void Restart() override {
    points_.clear();
    window_.Follow();
    update();
  }

  void Add(double seconds, double left, double right) override {
    points_.push_back({seconds, left, right});
    if (points_.size() > kMaxPoints) points_.pop_front();
    // Drawing takes most of the window's time during a run, and more pictures a second are not
    // visible.
    if (std::exchange(drawingDue_, true)) return;
    QTimer::singleShot(kDrawingMilliseconds, this, [this] {
      drawingDue_ = false;
      update();
    });
  }

 protected:
  void paintEvent(QPaintEvent*) override;

  void mousePressEvent(QMouseEvent* event) override { dragged_ = event->position().x(); }

  void mouseMoveEvent(QMouseEvent* event) override {
    if (!(event->buttons() & Qt::LeftButton)) return;
    const double moved = event->position().x() - dragged_;
    dragged_ = event->position().x();
    window_.Pan(-moved * window_.Shown(Newest()).span() / std::max(1.0, Frame().width()), Newest());
    update();
  }

  void mouseDoubleClickEvent(QMouseEvent*) override { Follow(); }

  void wheelEvent(QWheelEvent* event) override {
    const PlotRange shown = window_.Shown(Newest());
    const double share = (event->position().x() - Frame().left()) / std::max(1.0, Frame().width());
    window_.Zoom(event->angleDelta().y() > 0 ? 0.8 : 1.25, shown.low + share * shown.span(),
                 Newest());
    update();
    event->accept();
  }

  void keyPressEvent(QKeyEvent* event) override {
    const double step = window_.Shown(Newest()).span() / 10.0;
    switch (event->key()) {
      case Qt::Key_Left:
        window_.Pan(-step, Newest());
        break;
      case Qt::Key_Right:
        window_.Pan(step, Newest());
        break;
      case Qt::Key_Home:
      case Qt::Key_End:
        window_.Follow();
        break;
      default:
        QWidget::keyPressEvent(event);
        return;
    }
    update();
  }

 private:
  double Newest() const { return points_.empty() ? 0.0 : points_.back().seconds; }

  void Follow() {
    window_.Follow();
    update();
  }

  QRectF Frame() const {
    const QFontMetricsF metrics(font());
    const double side = metrics.horizontalAdvance(QStringLiteral("-00.00")) + 10;
    const double top = metrics.height() * 2 + 8;
    return QRectF(side, top, width() - 2 * side, height() - top - 2 * metrics.height() - 8);
  }

  PlotAxis AxisOf(double Point::*value, const PlotCurveStyle& style, const PlotRange& shown) const;
  void DrawHeading(QPainter& painter) const;
  void DrawTimeAxis(QPainter& painter, const QRectF& frame, const PlotAxis& time) const;
  enum class Side { Left, Right };
  // Only the left axis has lines across the frame; two sets could not be told apart.
  void DrawValueAxis(QPainter& painter, const QRectF& frame, const PlotAxis& axis, Side side) const;
  void DrawCurve(QPainter& painter, const QRectF& frame, const PlotRange& shown,
                 const PlotAxis& axis, double Point::*value, const QPen& pen) const;

  const PlotCurveStyle left_;
  const PlotCurveStyle right_;
  QString title_;
  std::deque<Point> points_;
  PlotWindow window_{kFollowedSeconds};
  double dragged_ = 0.0;
  bool drawingDue_ = false;
};

PlotAxis PlotWidget::AxisOf(double Point::*value, const PlotCurveStyle& style,
                            const PlotRange& shown) const {
  double low = INFINITY, high = -INFINITY;
  for (const Point& point : points_) {
    if (point.seconds < shown.low || point.seconds > shown.high) continue;
    if (!std::isfinite(point.*value)) continue;
    low = std::min(low, point.*value);
    high = std::max(high, point.*value);
  }
  if (low > high) low = high = 0.0;
  return FitAxis({low, high}, kTicksUp, style.leastSpan);
}

void PlotWidget::DrawHeading(QPainter& painter) const {
  const QFontMetricsF metrics(font());
  painter.setPen(Colors().text);
  const QString title = window_.IsFollowing() ? title_ : title_ + QStringLiteral(" (held)");
  painter.drawText(QRectF(0, 0, width(), metrics.height() + 2), Qt::AlignCenter,
                   metrics.elidedText(title, Qt::ElideRight, width()));
  // The headings of the axes serve as the legend, with a piece of the line.
  const double y = metrics.height() + 4;
  const auto legend = [&](const PlotCurveStyle& style, const QPen& pen, bool right) {
    const QString text = QStringLiteral("%1 (%2)").arg(style.name, style.unit);
    const double textWidth = metrics.horizontalAdvance(text);
    const double x = right ? width() - textWidth - 32 : 4;
    painter.setPen(pen);
    painter.drawLine(QPointF(x, y + metrics.height() / 2),
                     QPointF(x + 22, y + metrics.height() / 2));
    painter.setPen(Colors().text);
    painter.drawText(QPointF(x + 28, y + metrics.ascent()), text);
  };
  legend(left_, LeftPen(), false);
  legend(right_, RightPen(), true);
}

void PlotWidget::DrawTimeAxis(QPainter& painter, const QRectF& frame, const PlotAxis& time) const {
  const QFontMetricsF metrics(font());
  const Scale across = Across(time.range, frame);
  for (const double tick : time.ticks) {
    const double x = across.At(tick);
    painter.setPen(QPen(Colors().line, 1.0));
    painter.drawLine(QPointF(x, frame.top()), QPointF(x, frame.bottom()));
    painter.setPen(Colors().quiet);
    const QString text = QString::fromStdString(DurationText(std::lround(tick)));
    painter.drawText(QRectF(x - 40, frame.bottom() + 3, 80, metrics.height()), Qt::AlignHCenter,
                     text);
  }
  painter.setPen(Colors().text);
  painter.drawText(QRectF(0, frame.bottom() + 3 + metrics.height(), width(), metrics.height() + 2),
                   Qt::AlignCenter, QStringLiteral("Time (min:s)"));
}

void PlotWidget::DrawValueAxis(QPainter& painter, const QRectF& frame, const PlotAxis& axis,
                               Side side) const {
  const QFontMetricsF metrics(font());
  const Scale up = Up(axis.range, frame);
  for (const double tick : axis.ticks) {
    const double y = up.At(tick);
    if (side == Side::Left) {
      painter.setPen(QPen(Colors().line, 1.0));
      painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));
    }
    painter.setPen(Colors().quiet);
    const QRectF box(side == Side::Right ? frame.right() + 4 : 0, y - metrics.height() / 2,
                     frame.left() - 4, metrics.height());
    painter.drawText(box, side == Side::Right ? Qt::AlignLeft : Qt::AlignRight,
                     DisplayNumber(tick, axis.decimals));
  }
}

void PlotWidget::DrawCurve(QPainter& painter, const QRectF& frame, const PlotRange& shown,
                           const PlotAxis& axis, double Point::*value, const QPen& pen) const {
  const auto isShown = [&](const Point& point) {
    return point.seconds >= shown.low && point.seconds <= shown.high && std::isfinite(point.*value);
  };
  // A pen's dashes follow the line, and a speed that switches on and off makes that line thousands
  // of pixels long, which is slow to dash. Dense curves are dashed along the time axis instead.
  const bool dense = std::count_if(points_.begin(), points_.end(), isShown) > kFewPoints;
  const bool gaps = dense && pen.style() == Qt::DashLine;
  QPen solid = pen;
  if (gaps) solid.setStyle(Qt::SolidLine);
  painter.setPen(solid);
  QPolygonF run;
  const auto flush = [&] {
    if (run.size() > 1) painter.drawPolyline(run);
    run.clear();
  };
  const Scale across = Across(shown, frame);
  const Scale up = Up(axis.range, frame);
  double lastX = -1e9;
  for (const Point& point : points_) {
    const double x = across.At(point.seconds);
    if (!isShown(point) || (gaps && std::fmod(x - frame.left(), kDash + kDashGap) >= kDash)) {
      flush();
      continue;
    }
    // Points closer than a pixel are not visible.
    if (!run.isEmpty() && x - lastX < 1.0) continue;
    lastX = x;
    run << QPointF(x, up.At(point.*value));
  }
  flush();
}

void PlotWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), Colors().base);
  const QRectF frame = Frame();
  if (points_.empty()) {
    painter.setPen(Colors().quiet);
    painter.drawText(
        rect(), Qt::AlignCenter | Qt::TextWordWrap,
        QStringLiteral("Temperature and rotor speed of the running test appear here."));
    return;
  }
  const PlotRange shown = window_.Shown(Newest());
  const PlotAxis time = TicksWithin(shown, kTicksAcross);
  const PlotAxis left = AxisOf(&Point::left, left_, shown);
  const PlotAxis right = AxisOf(&Point::right, right_, shown);
  DrawHeading(painter);
  DrawTimeAxis(painter, frame, time);
  DrawValueAxis(painter, frame, left, Side::Left);
  DrawValueAxis(painter, frame, right, Side::Right);
  painter.setPen(QPen(Colors().line, 1.0));
  painter.drawRect(frame);
  painter.setClipRect(frame);
  DrawCurve(painter, frame, shown, left, &Point::left, LeftPen());
  DrawCurve(painter, frame, shown, right, &Point::right, RightPen());
}

}  // namespace

Plot* MakePlot(const PlotCurveStyle& left, const PlotCurveStyle& right, QWidget* parent) {
  return new PlotWidget(left, right, parent);
}

}  // namespace torvell
