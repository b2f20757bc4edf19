// The arithmetic of a plot's axes and of what part of the time it shows. No widgets.
#pragma once

#include <vector>

namespace torvell {

struct PlotRange {
  double low = 0.0;
  double high = 1.0;

  double span() const { return high - low; }
  bool operator==(const PlotRange& other) const = default;
};

struct PlotAxis {
  PlotRange range;            // whole steps, around all values
  double step = 1.0;          // 1, 2 or 5 times a power of ten
  int decimals = 0;           // that the labels of the steps need
  std::vector<double> ticks;  // rising, within the range
};

// An axis around `values` with at most `mostTicks` (2 or more) ticks. A range without a span, or
// narrower than `leastSpan`, is widened around its middle.
PlotAxis FitAxis(const PlotRange& values, int mostTicks, double leastSpan);
// The ticks of a range of seconds that is kept as it is, in steps that a clock has too.
PlotAxis TicksWithin(const PlotRange& range, int mostTicks);

// What part of the time is shown: it follows the newest value until somebody moves it.
class PlotWindow {
 public:
  // Seconds that are shown while following.
  explicit PlotWindow(double span) : span_(span), fullSpan_(span) {}

  // The window for a curve that reaches to `newest` (seconds from its start).
  PlotRange Shown(double newest) const;
  bool IsFollowing() const { return following_; }
  // Moves by seconds, positive towards the newer; following ends. It stays where there is a curve.
  void Pan(double seconds, double newest);
  // Shows more (above 1) or less (below 1) around the moment `at`.
  void Zoom(double factor, double at, double newest);
  void Follow();

 private:
  void Keep(double newest);

  double span_;
  const double fullSpan_;
  double low_ = 0.0;
  bool following_ = true;
};

}  // namespace torvell
