// Physics of a rotor in real oils, for rehearsing measurements and calibrations whose true results
// are known.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "module/simulator/rotor_model.h"

namespace rvx::simulator {

// The true constants of the simulated cell at a temperature in degrees C:
//   viscosity = b0 / speed + b1 + b2 * speed, with mPa*s and rpm/1000.
// A calibration of the cell has to find them.
struct TrueCellConstants {
  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
};
TrueCellConstants TrueConstantsAt(double celsius);

// The speed in rpm/1000 at which a cell of these constants shows a viscosity (mPa*s): the root that
// falls with rising viscosity; 0 if there is none.
double SpeedInOil(const TrueCellConstants& constants, double viscosity);

// True viscosities of one oil: degrees C to mPa*s.
using OilCurve = std::map<double, double>;

// The viscosity at a temperature: the logarithm is straight between two given points, and goes on
// beyond the first and the last of them; a curve of one point falls as engine oils do.
double ViscosityAt(const OilCurve& oil, double celsius);

// Turns as fast as the oil in the cell allows, with a lag and a little noise. In an oil that is not
// described it reaches the speed of a SteadyRotor, without noise.
class OilRotor : public RotorModel {
 public:
  // Degrees C of the cell at a reading of its probe.
  using CountsToCelsius = std::function<double(uint16_t)>;

  // `oils` by tray position, from 1. All noise comes from `seed`.
  OilRotor(std::map<int, OilCurve> oils, CountsToCelsius celsius, uint64_t seed);

  uint16_t SpeedCounts(const RotorConditions& conditions) override;
  int TemperatureNoise(int64_t tick) const override;

 private:
  double TargetCounts(const RotorConditions& conditions) const;
  // Standard normal, the same at every call for a stream and a tick.
  double Noise(uint64_t stream, int64_t tick) const;

  // Constant after construction.
  const std::map<int, OilCurve> oils_;
  const CountsToCelsius celsius_;
  const uint64_t seed_;

  // Simulator's main thread only.
  double counts_ = 0.0;  // without noise
  int64_t tick_ = 0;     // of counts_
};

}  // namespace rvx::simulator
