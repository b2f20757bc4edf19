// A live plot of two quantities over time, as the window uses it: another drawing library could
// take the place of ours.
#pragma once

#include <QString>
#include <QWidget>

namespace torvell {

struct PlotCurveStyle {
  QString name;            // "Temperature"
  QString unit;            // "°C"
  double leastSpan = 1.0;  // of its axis
};

// Two curves that grow to the right, with one axis each. The window's thread only.
class Plot {
 public:
  virtual ~Plot() = default;
  virtual QWidget* widget() = 0;
  // What the plot is of: "Position 7, OIL-A".
  virtual void SetTitle(const QString& title) = 0;
  // Forgets the curves; time begins at 0 again.
  virtual void Restart() = 0;
  // One point of both curves, seconds since the start, in rising order; a NaN is a gap.
  virtual void Add(double seconds, double left, double right) = 0;
};

// Our own widget: left axis solid curve, right axis dashed curve, so that they differ without
// colour; owned by the parent. Dragging and arrow keys pan, the wheel zooms, a double click or Home
// follows again.
Plot* MakePlot(const PlotCurveStyle& left, const PlotCurveStyle& right, QWidget* parent);

}  // namespace torvell
