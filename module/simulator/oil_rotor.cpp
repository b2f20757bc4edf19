#include "module/simulator/oil_rotor.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include "platform/mix.h"

namespace rvx::simulator {
namespace {

constexpr double kRpmOfCount = 0.06;
constexpr double kCountsOfSpeed = 1000.0 / kRpmOfCount;  // speed in rpm/1000
constexpr double kMaxCounts = 65535.0;

// Of an oil whose viscosity is known at one temperature only: it doubles over some 6 degrees.
constexpr double kUsualSlope = -0.115;  // of the logarithm, for each degree C
// Keeps the exponential within what a double holds, far outside every oil.
constexpr double kMaxLogViscosity = 30.0;

// The rotor comes up to its speed within seconds.
constexpr double kTickSeconds = 0.5;
constexpr double kLagSeconds = 1.0;
// Standard deviations: of a speed reading, relative; of the probe's reading, counts.
constexpr double kSpeedNoise = 0.001;
constexpr double kTemperatureNoise = 3.0;
// Noise beyond this would be a fault.
constexpr double kMaxDeviations = 4.0;

constexpr uint64_t kNext = 0x9E3779B97F4A7C15ULL;  // keeps zeros apart from what follows them

enum Stream : uint64_t { kSpeedStream = 1, kTemperatureStream = 2 };

// 0 < result <= 1.
double Uniform(uint64_t bits) { return (static_cast<double>(bits >> 11) + 1.0) * 0x1p-53; }

}  // namespace

TrueCellConstants TrueConstantsAt(double celsius) {
  // Made up so that the rotor turns at 20 to 800 rpm between 50000 and 1000 mPa*s.
  const double colder = -20.0 - celsius;
  return {1104.0 + 9.0 * colder, -396.0 - 4.0 * colder, 37.0 + 0.5 * colder};
}

double SpeedInOil(const TrueCellConstants& constants, double viscosity) {
  // b2 x^2 + (b1 - viscosity) x + b0 = 0, in the form that also holds for b2 = 0.
  const double drag = viscosity - constants.b1;
  const double discriminant = drag * drag - 4.0 * constants.b2 * constants.b0;
  if (!(drag > 0.0) || !(discriminant >= 0.0)) return 0.0;
  return 2.0 * constants.b0 / (drag + std::sqrt(discriminant));
}

double ViscosityAt(const OilCurve& oil, double celsius) {
  if (oil.empty()) return 0.0;
  double slope = kUsualSlope;
  auto right = oil.lower_bound(celsius);
  if (oil.size() == 1) {
    right = oil.begin();
  } else {
    if (right == oil.end()) right = std::prev(oil.end());
    if (right == oil.begin()) ++right;
    const auto left = std::prev(right);
    slope = std::log(right->second / left->second) / (right->first - left->first);
  }
  const double logarithm = std::log(right->second) + slope * (celsius - right->first);
  return std::exp(std::clamp(logarithm, -kMaxLogViscosity, kMaxLogViscosity));
}

OilRotor::OilRotor(std::map<int, OilCurve> oils, CountsToCelsius celsius, uint64_t seed)
    : oils_(std::move(oils)), celsius_(std::move(celsius)), seed_(seed) {}

double OilRotor::Noise(uint64_t stream, int64_t tick) const {
  using platform::detail::Mix64;
  const uint64_t first = Mix64(seed_ ^ Mix64(stream) ^ Mix64(static_cast<uint64_t>(tick) + kNext));
  const uint64_t second = Mix64(first + kNext);
  const double radius = std::sqrt(-2.0 * std::log(Uniform(first)));
  const double normal = radius * std::cos(2.0 * std::numbers::pi * Uniform(second));
  return std::clamp(normal, -kMaxDeviations, kMaxDeviations);
}

int OilRotor::TemperatureNoise(int64_t tick) const {
  return static_cast<int>(std::lround(kTemperatureNoise * Noise(kTemperatureStream, tick)));
}

double OilRotor::TargetCounts(const RotorConditions& conditions) const {
  if (!conditions.on) return 0.0;
  const auto oil = oils_.find(conditions.oil);
  if (oil == oils_.end()) return SteadyRotor::kSpeedCounts;
  const double celsius = celsius_(conditions.cellCounts);
  if (!std::isfinite(celsius)) return SteadyRotor::kSpeedCounts;
  const double speed = SpeedInOil(TrueConstantsAt(celsius), ViscosityAt(oil->second, celsius));
  return std::min(speed * kCountsOfSpeed, kMaxCounts);
}

uint16_t OilRotor::SpeedCounts(const RotorConditions& conditions) {
  const double target = TargetCounts(conditions);
  const auto passed = static_cast<double>(conditions.tick - tick_);
  tick_ = conditions.tick;
  counts_ = target + (counts_ - target) * std::exp(-passed * kTickSeconds / kLagSeconds);
  // There is no noise for a rotor at rest, nor for one whose speed does not come from an oil.
  if (!conditions.on || oils_.count(conditions.oil) == 0) {
    return static_cast<uint16_t>(std::lround(counts_));
  }
  const double noisy = counts_ * (1.0 + kSpeedNoise * Noise(kSpeedStream, conditions.tick));
  return static_cast<uint16_t>(std::lround(std::clamp(noisy, 0.0, kMaxCounts)));
}

}  // namespace rvx::simulator
