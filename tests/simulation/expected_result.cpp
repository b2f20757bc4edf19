#include "tests/simulation/expected_result.h"

#include <cmath>

namespace rvx::soak {
namespace {

constexpr uint8_t kRunTest = 13;
constexpr int kAveraged = 5;  // seconds at the end of a run

double Volts(uint16_t counts) { return 2.0 * (counts / 65536.0 * 20.0 - 10.0); }

// The default probe, by the equation of its bridge.
double Celsius(const SeenStatus& frame, char modelCode) {
  const double plus = Volts(frame.Word(6));
  const double minus = Volts(frame.Word(8));
  const double x = (frame.Word(2) / 65536.0 * 20.0 - 10.0) / 11.0 - minus;
  const double l = std::log((plus - minus) / (x / 525930.0) - 987930.0);
  const double kelvin = 1000.0 / (1.292035 + 0.22621 * l + 0.000210003 * l * l * l);
  return kelvin - 273.0 + (modelCode >= '3' ? 0.12 : 0.0);
}

// The speed in rpm/1000, rounded to steps of 0.01 rpm.
double Speed(const SeenStatus& frame) { return std::round(frame.Word(10) * 6e-5 / 1e-5) * 1e-5; }

}  // namespace

ExpectedResult ExpectResult(const std::vector<SeenStatus>& frames, int rotorTime, char modelCode,
                            bool suppliesSteady) {
  ExpectedResult result;
  const auto size = static_cast<size_t>(rotorTime) * 2;
  std::vector<double> speeds;
  std::vector<double> temperatures;
  uint16_t lastCount = 0;
  for (const SeenStatus& frame : frames) {
    if (!result.hasRun && frame.operation() != kRunTest) continue;
    result.hasRun = true;
    if (frame.operation() == 0 || speeds.size() == size) break;
    if (frame.intCount() == lastCount) continue;
    lastCount = frame.intCount();
    speeds.push_back(Speed(frame));
    temperatures.push_back(suppliesSteady ? Celsius(frame, modelCode) : 0.0);
  }
  result.isWhole = speeds.size() == size;
  speeds.resize(size, 0.0);
  temperatures.resize(size, 0.0);
  if (size <= 2 * kAveraged) return result;
  for (size_t i = size - 2 * kAveraged; i < size; ++i) {
    result.speed += speeds[i] / (2 * kAveraged);
    result.temperature += temperatures[i] / (2 * kAveraged);
  }
  return result;
}

size_t SlotOf(double temperature) {
  constexpr double kLimits[] = {-7.5, -12.5, -16.5, -19.0, -22.5, -27.5, -32.5};
  size_t slot = 0;
  while (slot < std::size(kLimits) && temperature <= kLimits[slot]) ++slot;
  return slot;
}

}  // namespace rvx::soak
