// The seconds of the present operation, as the status window and programs show them.
#pragma once

#include <cstdint>

#include "module/instrument/configuration_record.h"
#include "module/instrument/monitor_readings.h"
#include "module/instrument/operation_timer.h"
#include "platform/lock.h"

namespace rvx {

// Any thread.
class OperationClock {
 public:
  // `configuration` is not owned and must outlive this.
  explicit OperationClock(const ConfigurationRecord& configuration)
      : configuration_(configuration) {}

  // Rotor ON time of the present test point; -1: none.
  void SetRotorTime(int32_t seconds);
  // Elapsed or remaining seconds at the time of `frame`; returns true if they count down. The call
  // itself advances the clock; a frame that is older than that of an earlier call gives the figure
  // of the newest one.
  bool GetSeconds(const StatusFrame& frame, int32_t& seconds);

 private:
  const ConfigurationRecord& configuration_;

  platform::PlainLock rotorTimeLock_{"rotor time", platform::kLeafRank};
  int32_t rotorTime_ GUARDED_BY(rotorTimeLock_) = -1;  // s

  platform::PlainLock timerLock_{"operation timer", platform::kLeafRank};
  OperationTimer timer_ GUARDED_BY(timerLock_);
  uint64_t sequence_ GUARDED_BY(timerLock_) = 0;  // of the newest frame so far
};

}  // namespace rvx
