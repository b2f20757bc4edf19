#include "module/protocol/conversions.h"

#include <algorithm>
#include <cmath>

#include "module/protocol/frames.h"
#include "module/protocol/identification.h"

namespace rvx {
namespace {

// The converter: 16 bits over 20 V, from -10 V.
constexpr double kConverterStep = 1.52587890625e-05;
constexpr double kConverterCounts = 65536.0;
constexpr double kConverterRange = 20.0;
constexpr double kConverterLow = 10.0;

// The bridge, in ohms: the probe in series with two resistors between the supplies. The voltage
// over the second resistor is amplified.
constexpr double kBridgeGain = 11.0;
constexpr double kBridgeTap = 525930.0;
constexpr double kBridgeSeries = 462000.0;
constexpr double kBridgeTotal = 987930.0;
static_assert(kBridgeTap + kBridgeSeries == kBridgeTotal);

// The instruments' own calibration rests on this offset, not on 273.15.
constexpr double kKelvin = 273.0;

constexpr int kMaxSearchSteps = 100;
constexpr double kSearchTolerance = 1e-06;
// The highest count that is a temperature; the next one means off.
constexpr double kMaxCounts = 65534.0;

constexpr double kSpeedScaleCoarse = 0.06;  // rpm a count
constexpr double kSpeedScaleFine = 0.015;
constexpr double kSpeedRounding = 1e-05;  // rpm/1000

}  // namespace

double CountsToVolts(uint16_t counts) {
  return counts * kConverterStep * kConverterRange - kConverterLow;
}

double CountsToSupplyVolts(uint16_t counts) { return 2.0 * CountsToVolts(counts); }

double CountsToTemperature(uint16_t counts, const ProbeConstants& probe, const SupplyPair& supply,
                           char modelCode, double offset) {
  const double tapVolts = CountsToVolts(counts) / kBridgeGain - supply.minus;
  const double resistance = (supply.plus - supply.minus) / (tapVolts / kBridgeTap) - kBridgeTotal;
  const double l = std::log(resistance);
  const double temperature = 1000.0 / (probe.a0 + probe.a1 * l + probe.a2 * l * l * l) - kKelvin;
  return UsesTemperatureOffset(modelCode) ? temperature + offset : temperature;
}

double TemperatureToCounts(double temperature, const ProbeConstants& probe,
                           const SupplyPair& supply, char modelCode, double offset) {
  if (temperature == kCountsOffValue) return kCountsOffValue;
  if (UsesTemperatureOffset(modelCode)) temperature -= offset;
  const double goal = 1000.0 / (temperature + kKelvin);
  double l = (goal - probe.a0) / probe.a1;
  // A constant slope in place of the derivative: it converges more slowly, but the result has to
  // agree with the one that the instruments were calibrated with.
  const double slope = probe.a1 + 3.0 * probe.a2;
  bool found = false;
  for (int step = 0; step < kMaxSearchSteps; ++step) {
    const double error = probe.a0 + probe.a1 * l + probe.a2 * l * l * l - goal;
    if (std::fabs(error) < kSearchTolerance) {
      found = true;
      break;
    }
    l -= error / slope;
  }
  if (!found) return kMaxCounts;
  const double resistance = std::exp(l);
  const double volts =
      ((supply.plus - supply.minus) / (resistance + kBridgeSeries + kBridgeTap) * kBridgeTap +
       supply.minus) *
      kBridgeGain;
  const double counts = (volts + kConverterLow) / kConverterRange * kConverterCounts;
  return std::clamp(counts, 0.0, kMaxCounts);
}

double TargetCountsToTemperature(uint16_t counts, const ProbeConstants& probe,
                                 const SupplyPair& supply, char modelCode, double offset) {
  if (counts == kCountsOff) return kCountsOffValue;
  return CountsToTemperature(counts, probe, supply, modelCode, offset);
}

double SpeedScale(uint8_t optionByte) {
  return (optionByte & kOptionFineSpeed) != 0 ? kSpeedScaleFine : kSpeedScaleCoarse;
}

double SpeedFromCounts(uint16_t counts, uint8_t optionByte) {
  const double speed = counts * ((optionByte & kOptionFineSpeed) != 0 ? 1.5e-05 : 6e-05);
  const double quotient = speed / kSpeedRounding;
  double steps = std::trunc(quotient);
  if (std::fabs(quotient - steps) >= 0.5) steps += quotient < 0 ? -1.0 : 1.0;
  return steps * kSpeedRounding;
}

void SupplyMeans::Update(double plus, double minus) {
  plus_[next_] = plus;
  minus_[next_] = minus;
  next_ = (next_ + 1) % kReadings;
  double plusSum = 0.0;
  double minusSum = 0.0;
  size_t count = 0;
  // An exact 0.0 marks a slot that no reading has filled yet.
  while (count < kReadings && plus_[count] != 0.0) {
    plusSum += plus_[count];
    minusSum += minus_[count];
    ++count;
  }
  if (count == 0) return;
  means_.plus = plusSum / static_cast<double>(count);
  means_.minus = minusSum / static_cast<double>(count);
}

}  // namespace rvx
