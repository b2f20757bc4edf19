// The figure for "Elapsed Time" or "Time Remaining" of the present operation.
#pragma once

#include <cstdint>

namespace rvx {

// What the operations count from; all in seconds.
struct OperationTimes {
  int32_t preconditionTime = 0;
  int32_t sentInjectionTime = 0;
  int32_t coolDownTime = 0;
  int32_t rotorTime = 0;
};

// Steps once a second by the instrument's int count, which advances each half second. Not for two
// threads at once.
class OperationTimer {
 public:
  // True if the seconds count down.
  bool Update(uint16_t intCount, uint8_t operation, const OperationTimes& times, int32_t& seconds);
  // What the last Update said.
  bool Read(int32_t& seconds) const;

 private:
  uint8_t lastOperation_ = 0;
  int32_t seconds_ = 0;
  uint16_t lastCount_ = 0;
  bool down_ = false;
};

}  // namespace rvx
