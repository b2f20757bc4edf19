// The last status record in engineering units, for sequencers and screens.
#pragma once

#include <cstdint>

namespace rvx {

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
};

}  // namespace rvx
