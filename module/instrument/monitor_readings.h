// One status frame: its bytes, its time, and its values in engineering units.
#pragma once

#include <cstdint>

#include "boundary/instrument_limits.h"
#include "module/protocol/status_record.h"
#include "platform/time_base.h"

namespace rvx {

// A status frame as it was received.
struct StatusFrame {
  StatusRecord record;             // the 19 raw bytes
  uint64_t sequence = 0;           // its number; 0: none has come yet, nothing else counts
  platform::Microseconds time{0};  // when it came, MonotonicTime

  bool IsReceived() const { return sequence > 0; }
  // `now` is MonotonicTime. Meaningful only for a frame that was received.
  platform::Microseconds Age(platform::Microseconds now) const { return now - time; }
  bool IsStale(platform::Microseconds now) const { return Age(now) > kStaleAfter; }
};

// The readings of one frame, converted with the configuration and the supply pair at the moment of
// the conversion. All values, raw and converted, belong to `frame`, so no caller has to combine
// readings of two frames. A plain value without a lock.
struct MonitorReadings {
  uint16_t intCount = 0;
  double actualTemperature = 0.0;  // degrees C
  uint16_t actualTemperatureCounts = 0;
  double targetTemperature = 0.0;  // degrees C; exactly 65535.0 when control is off
  uint16_t targetTemperatureCounts = 0;
  double plusVss = 0.0;     // V, from this record alone
  double minusVss = 0.0;    // V, from this record alone
  double rotorSpeed = 0.0;  // rpm/1000
  uint8_t machineStatus = 0;
  uint8_t switchByte = 0;
  uint8_t operation = 0;
  uint8_t promptFlag = 0;
  uint8_t errorCode = 0;
  char lastTag[2] = {0, 0};
  StatusFrame frame;  // number, time and raw bytes
};

}  // namespace rvx
