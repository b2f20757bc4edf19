// What a fit of the cell's constants costs.
#include <benchmark/benchmark.h>

#include "module/calibration/calibration_fit.h"

namespace rvx {
namespace {

void BM_Fit(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  std::vector<CalibrationPoint> points;
  for (size_t i = 0; i < count; ++i) {
    const double speed = 0.02 + 0.78 * static_cast<double>(i) / static_cast<double>(count - 1);
    points.push_back({speed, 1100.0 / speed - 400.0 + 40.0 * speed + static_cast<double>(i % 7)});
  }
  for (auto _ : state) benchmark::DoNotOptimize(FitCalibrationConstants(points));
}
BENCHMARK(BM_Fit)->ArgName("runs")->Arg(10)->Arg(100)->Arg(10000);

}  // namespace
}  // namespace rvx

BENCHMARK_MAIN();
