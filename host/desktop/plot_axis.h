// Computes a plot's axes and the part of the time that it shows. No widgets.
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
  int decimals = 0;           // decimals that the labels of the ticks need
  std::vector<double> ticks;  // rising, within the range
};

// An axis around `values` with at most `mostTicks` (2 or more) ticks. A range without a span, or
// narrower than `leastSpan`, is widened around its middle.
PlotAxis FitAxis(const PlotRange& values, int mostTicks, double leastSpan);
// Returns the ticks of a range of seconds that is kept as it is, in steps that are common on
// clocks.
PlotAxis TicksWithin(const PlotRange& range, int mostTicks);

// The part of the time that is shown: it follows the newest value until the user moves it.
class PlotWindow {
 public:
  // `span` is how many seconds are shown while following.
  explicit PlotWindow(double span) : span_(span), fullSpan_(span) {}

  // Returns the range to show for a curve that reaches to `newest` (seconds from its start).
  PlotRange Shown(double newest) const;
  bool IsFollowing() const { return following_; }
  // Moves by seconds, positive towards newer values, within the curve; following ends.
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
