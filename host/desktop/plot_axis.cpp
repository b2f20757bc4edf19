#include "host/desktop/plot_axis.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace torvell {
namespace {

constexpr double kMinWindow = 10.0;
constexpr double kMaxWindow = 24.0 * 3600.0;
// Steps of a time axis that are common on clocks, in seconds.
constexpr std::array<double, 14> kTimeSteps = {1,   2,   5,    10,   30,   60,   120,
                                               300, 600, 1200, 1800, 3600, 7200, 21600};

// Returns the smallest round step with which `mostTicks` cover the span.
double RoundStep(double span, int mostTicks) {
  const double least = span / std::max(1, mostTicks - 1);
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    // A small tolerance, so that rounding does not skip a step that fits.
    if (factor * power >= least * (1.0 - 1e-9)) return factor * power;
  }
  return 10.0 * power;
}

int DecimalsOf(double step) {
  return std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
}

void AddTicks(PlotAxis& axis) {
  const double first = std::ceil(axis.range.low / axis.step - 1e-9);
  const double last = std::floor(axis.range.high / axis.step + 1e-9);
  for (double i = first; i <= last; i += 1.0) axis.ticks.push_back(i * axis.step);
}

}  // namespace

PlotAxis FitAxis(const PlotRange& values, int mostTicks, double leastSpan) {
  PlotRange wanted = values;
  if (!(wanted.span() >= leastSpan)) {
    const double middle = (values.low + values.high) / 2.0;
    wanted = {middle - leastSpan / 2.0, middle + leastSpan / 2.0};
  }
  PlotAxis axis;
  // Rounding outwards may add a step at either end.
  axis.step = RoundStep(wanted.span(), std::max(2, mostTicks - 1));
  axis.range.low = std::floor(wanted.low / axis.step + 1e-9) * axis.step;
  axis.range.high = std::ceil(wanted.high / axis.step - 1e-9) * axis.step;
  axis.decimals = DecimalsOf(axis.step);
  AddTicks(axis);
  return axis;
}

PlotAxis TicksWithin(const PlotRange& range, int mostTicks) {
  PlotAxis axis;
  axis.range = range;
  const double least = range.span() / std::max(1, mostTicks - 1);
  axis.step = kTimeSteps.back();
  for (const double step : kTimeSteps) {
    if (step >= least * (1.0 - 1e-9)) {
      axis.step = step;
      break;
    }
  }
  AddTicks(axis);
  return axis;
}

PlotRange PlotWindow::Shown(double newest) const {
  if (!following_) return {low_, low_ + span_};
  const double high = std::max(newest, span_);
  return {high - span_, high};
}

void PlotWindow::Pan(double seconds, double newest) {
  low_ = Shown(newest).low + seconds;
  following_ = false;
  Keep(newest);
}

void PlotWindow::Zoom(double factor, double at, double newest) {
  const PlotRange shown = Shown(newest);
  const double span = std::clamp(span_ * factor, kMinWindow, kMaxWindow);
  const double share = shown.span() > 0.0 ? (at - shown.low) / shown.span() : 0.5;
  low_ = at - share * span;
  span_ = span;
  following_ = false;
  Keep(newest);
}

void PlotWindow::Follow() {
  following_ = true;
  span_ = fullSpan_;
}

void PlotWindow::Keep(double newest) {
  low_ = std::clamp(low_, 0.0, std::max(0.0, newest - kMinWindow / 2.0));
}

}  // namespace torvell
