// Physics of the rotor: what speed it reaches in the oil that is in the cell.
#pragma once

#include <cstdint>

namespace rvx::simulator {

// What the speed may depend on.
struct RotorConditions {
  bool on = false;          // the motor is driven
  uint16_t cellCounts = 0;  // true temperature of the cell, ADC counts
  int64_t tick = 0;         // the board's clock, half seconds; never goes back
  int oil = 0;              // tray position (from 1) whose oil is in the cell; 0: none was injected
};

class RotorModel {
 public:
  virtual ~RotorModel() = default;
  // Speed in the controller's speed counts (0.06 rpm each). Called on the simulator's main thread
  // only, any number of times in a tick.
  virtual uint16_t SpeedCounts(const RotorConditions& conditions) = 0;
  // Noise of the reading of the cell's temperature at a tick, ADC counts. Any thread.
  virtual int TemperatureNoise(int64_t /*tick*/) const { return 0; }
};

// Turns at 240 rpm as soon as it is on, in any oil.
class SteadyRotor : public RotorModel {
 public:
  static constexpr uint16_t kSpeedCounts = 4000;
  uint16_t SpeedCounts(const RotorConditions& conditions) override {
    return conditions.on ? kSpeedCounts : 0;
  }
};

}  // namespace rvx::simulator
