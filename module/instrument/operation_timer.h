// The figure for "Elapsed Time" or "Time Remaining" of the present operation.
#pragma once

#include <cstdint>

namespace rvx {

// The times from which the operations count down; all in seconds.
struct OperationTimes {
  int32_t preconditionTime = 0;
  int32_t sentInjectionTime = 0;
  int32_t coolDownTime = 0;
  int32_t rotorTime = 0;
};

// Steps once a second by the instrument's int count, which advances each half second. One thread at
// a time.
class OperationTimer {
 public:
  // True if the seconds count down.
  bool Update(uint16_t intCount, uint8_t operation, const OperationTimes& times, int32_t& seconds);
  // The result of the last Update again.
  bool Read(int32_t& seconds) const;

 private:
  uint8_t lastOperation_ = 0;
  int32_t seconds_ = 0;
  uint16_t lastCount_ = 0;
  bool down_ = false;
};

}  // namespace rvx
