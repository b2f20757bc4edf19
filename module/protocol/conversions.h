// Counts of the instrument's converters to engineering units and back: plain arithmetic over
// explicit parameters, without state or lock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace rvx {

// The thermistor's polynomial: 1000 / T = a0 + a1 L + a2 L^3, L the natural logarithm of its
// resistance in ohms, T in kelvin. Each instrument has its own.
struct ProbeConstants {
  double a0 = 1.292035;
  double a1 = 0.22621;
  double a2 = 0.000210003;
};

// The supply voltages of the probe's bridge, in volts.
struct SupplyPair {
  double plus = 15.0;
  double minus = -15.0;
};

// Volts at the converter, -10 to just below 10.
double CountsToVolts(uint16_t counts);
// Volts of a supply, which reaches the converter halved.
double CountsToSupplyVolts(uint16_t counts);

// Degrees C. `offset` (degrees C) is added for models "3" and above. Not a number, or infinite, for
// counts that no probe gives.
double CountsToTemperature(uint16_t counts, const ProbeConstants& probe, const SupplyPair& supply,
                           char modelCode, double offset);

// The unrounded counts, 0.0 to 65534.0, of a temperature in degrees C; a command takes them
// truncated. Exactly 65535.0 (off) gives 65535.0. A temperature for which the search finds no
// resistance gives 65534.0.
double TemperatureToCounts(double temperature, const ProbeConstants& probe,
                           const SupplyPair& supply, char modelCode, double offset);

// Degrees C as above; exactly 65535.0 for the counts 0xFFFF (off).
double TargetCountsToTemperature(uint16_t counts, const ProbeConstants& probe,
                                 const SupplyPair& supply, char modelCode, double offset);

// rpm of one speed count by the option byte: 0.06, or 0.015 on the fine scale.
double SpeedScale(uint8_t optionByte);
// rpm/1000, rounded to a multiple of 1e-05.
double SpeedFromCounts(uint16_t counts, uint8_t optionByte);

// Rolling means over the last 20 supply readings, and the pair that temperatures are converted
// with. The means and the pair are separate so that a shown temperature and the target that was
// sent use the same voltages: the pair changes only when Latch is called. No lock: its owner has
// one.
class SupplyMeans {
 public:
  // One status record's two readings, volts.
  void Update(double plus, double minus);
  const SupplyPair& means() const { return means_; }
  // Makes the means the pair in use; call it before each conversion of a temperature to counts.
  const SupplyPair& Latch() { return inUse_ = means_; }
  const SupplyPair& inUse() const { return inUse_; }

 private:
  static constexpr size_t kReadings = 20;
  std::array<double, kReadings> plus_{};
  std::array<double, kReadings> minus_{};
  size_t next_ = 0;
  SupplyPair means_;
  SupplyPair inUse_;
};

}  // namespace rvx
