// The readable ticks of an axis, and the part of the time that it shows.
#include "host/desktop/plot_axis.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>

namespace torvell {
namespace {

TEST(PlotAxisTest, StepsAreRoundAndReachAroundTheValues) {
  const PlotAxis axis = FitAxis({-20.3, -4.8}, 6, 1.0);
  EXPECT_EQ(axis.step, 5.0);
  EXPECT_EQ(axis.range, (PlotRange{-25.0, 0.0}));
  EXPECT_EQ(axis.ticks.size(), 6u);
  EXPECT_EQ(axis.decimals, 0);
  EXPECT_EQ(FitAxis({0.201, 0.209}, 6, 0.001).decimals, 3);
}

TEST(PlotAxisTest, AFlatCurveLiesInTheMiddleOfAnAxisWithASpan) {
  const PlotAxis axis = FitAxis({-20.0, -20.0}, 6, 1.0);
  EXPECT_GE(axis.range.span(), 1.0);
  EXPECT_LT(axis.range.low, -20.0);
  EXPECT_GT(axis.range.high, -20.0);
}

RC_GTEST_PROP(PlotAxisTest, HoldsAllValuesWithFewTicks, ()) {
  const double low = *rc::gen::inRange(-100000, 100000) / 97.0;
  const double span = *rc::gen::inRange(0, 1000000) / 1013.0;
  const int ticks = *rc::gen::inRange(3, 12);
  const PlotAxis axis = FitAxis({low, low + span}, ticks, 0.01);
  RC_ASSERT(axis.range.low <= low + 1e-6);
  RC_ASSERT(axis.range.high >= low + span - 1e-6);
  RC_ASSERT(axis.ticks.size() >= 2u);
  RC_ASSERT(static_cast<int>(axis.ticks.size()) <= ticks + 1);
}

TEST(PlotWindowTest, FollowsUntilItIsMovedAndAgainWhenAsked) {
  PlotWindow window(100.0);
  EXPECT_EQ(window.Shown(20.0), (PlotRange{0.0, 100.0}));
  EXPECT_EQ(window.Shown(250.0), (PlotRange{150.0, 250.0}));
  window.Pan(-50.0, 250.0);
  EXPECT_EQ(window.Shown(300.0), (PlotRange{100.0, 200.0})) << "held, though time goes on";
  window.Pan(-1000.0, 300.0);
  EXPECT_EQ(window.Shown(300.0).low, 0.0);
  window.Follow();
  EXPECT_EQ(window.Shown(300.0), (PlotRange{200.0, 300.0}));
}

TEST(PlotWindowTest, ZoomingKeepsTheMomentUnderThePointer) {
  PlotWindow window(100.0);
  window.Zoom(0.5, 225.0, 250.0);
  const PlotRange shown = window.Shown(250.0);
  EXPECT_EQ(shown.span(), 50.0);
  EXPECT_DOUBLE_EQ((225.0 - shown.low) / shown.span(), 0.75);
  for (int i = 0; i < 50; ++i) window.Zoom(0.5, 225.0, 250.0);
  EXPECT_GE(window.Shown(250.0).span(), 10.0);
}

}  // namespace
}  // namespace torvell
