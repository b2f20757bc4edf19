// A live plot of two quantities over time. The window uses this interface, so the drawing can be
// replaced.
#pragma once

#include <QString>
#include <QWidget>

namespace torvell {

struct PlotCurveStyle {
  QString name;            // "Temperature"
  QString unit;            // "°C"
  double leastSpan = 1.0;  // smallest span of its axis, in the unit
};

// Two curves that grow to the right, with one axis each. The window's thread only.
class Plot {
 public:
  virtual ~Plot() = default;
  virtual QWidget* widget() = 0;
  // Sets the heading: "Position 7, OIL-A".
  virtual void SetTitle(const QString& title) = 0;
  // Removes the curves; time begins at 0 again.
  virtual void Restart() = 0;
  // Adds a point to both curves. `seconds` since the start, in rising order; a NaN is a gap.
  virtual void Add(double seconds, double left, double right) = 0;
};

// Makes the plot as a widget, owned by the parent. The left axis has a solid curve and the right
// axis a dashed one, so that they differ without colour. Dragging and arrow keys pan, the wheel
// zooms, a double click or Home follows the newest value again.
Plot* MakePlot(const PlotCurveStyle& left, const PlotCurveStyle& right, QWidget* parent);

}  // namespace torvell
