#include "module/execution/sample_result.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "platform/text.h"

namespace rvx {
namespace {

// From the start to the sample and back: trolley, table, the tube down and up.
constexpr double kMoveSeconds = 24.0;
// Until a temperature at its target counts as steady, and the end of a test.
constexpr double kSteadySeconds = 6.0;
constexpr double kEndSeconds = 1.0;
// How long the cell takes from the injection temperature to that of a test, measured on the
// simulated instrument: 84 s to -15 degrees C, and 36 % more for every further 5 degrees. Back to
// the injection temperature it takes a little longer.
constexpr double kCoolingSeconds = 84.0;
constexpr double kCoolingGrowth = 1.36;
constexpr double kWarmingShare = 1.08;

double CoolingSeconds(double temperature) {
  // kTemperatureOff and values that are not finite count as no cooling at all.
  const double coldest = std::isfinite(temperature) ? std::clamp(temperature, -45.0, 25.0) : 25.0;
  return kCoolingSeconds * std::pow(kCoolingGrowth, (-15.0 - coldest) / 5.0);
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

RunAverages AverageRun(const std::vector<double>& speeds, const std::vector<double>& temperatures,
                       int averagingCount) {
  RunAverages result;
  const size_t n = std::min(speeds.size(), temperatures.size());
  if (averagingCount < 1 || n <= 2 * static_cast<size_t>(averagingCount)) return result;
  result.count = averagingCount;
  const size_t readings = 2 * static_cast<size_t>(averagingCount);
  double sumOfSpeeds = 0.0;
  double sumOfTemperatures = 0.0;
  for (size_t k = 0; k < readings; k += 2) {
    const double value = (speeds[n - 2 - k] + speeds[n - 1 - k]) * 0.5;
    sumOfSpeeds += value;
    if (k / 2 < result.speeds.size()) result.speeds.at(k / 2) = value;
    sumOfTemperatures += temperatures[n - 1 - k] + temperatures[n - 2 - k];
  }
  result.speed = sumOfSpeeds / averagingCount;
  result.temperature = sumOfTemperatures / (2.0 * averagingCount);
  return result;
}

double CalculateViscosity(double b0, double b1, double b2, double speed) {
  if (speed == 0.0) return 0.0;
  return b0 / speed + b1 + b2 * speed;
}

std::string GetCsvFileName(const std::string& sampleId, double temperature,
                           const platform::Date& now) {
  std::string name = sampleId;
  std::replace_if(
      name.begin(), name.end(),
      [](char c) {
        return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
      },
      '_');
  const int64_t span = now.ToMilliseconds() - platform::Date(2000, 1, 1).ToMilliseconds();
  const double seconds = std::round(static_cast<double>(span) / 1000.0);
  return platform::FormatText("%s_%3.1fC_%.f.csv", name.c_str(), temperature, seconds);
}

std::string MakeCsvText(const std::vector<double>& speeds,
                        const std::vector<double>& temperatures) {
  std::string text = "Speed,Temperature\n";
  const size_t entries = std::min(speeds.size(), temperatures.size());
  for (size_t i = 0; i + 1 < entries; ++i) {
    text += platform::FormatText("%f,%f\n", speeds[i], temperatures[i]);
  }
  return text;
}

void WriteCsvFile(const std::string& path, const std::string& text) {
  // Binary: the same bytes on every system.
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "wb"));
  if (file != nullptr) std::fwrite(text.data(), 1, text.size(), file.get());
}

int EstimateRunSeconds(const TestRecord& test, int testCount) {
  double seconds = 0.0;
  for (size_t i = 0; i < static_cast<size_t>(std::clamp(testCount, 0, kMaxTests)); ++i) {
    const double target = test.testTemperatures.at(i);
    // The sample before was most probably measured at the same temperatures.
    const double previous = i == 0 ? target : test.testTemperatures.at(i - 1);
    if (test.injectionTime > 0) {
      seconds += kWarmingShare * CoolingSeconds(previous) + kMoveSeconds + test.injectionTime +
                 CoolingSeconds(target);
    } else {
      // The same oil is in the cell, and nothing moves.
      seconds += std::abs(CoolingSeconds(target) - CoolingSeconds(previous));
    }
    seconds += kSteadySeconds + std::max(test.coolDownTime, 0) +
               std::max(test.rotorOnTimes.at(i), 0) + kEndSeconds;
  }
  return static_cast<int>(std::min(seconds, static_cast<double>(INT32_MAX)));
}

}  // namespace rvx
