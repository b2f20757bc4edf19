// Counts to engineering units and back, with the present configuration and supply voltages of the
// instrument.
#pragma once

#include <cstdint>

#include "module/instrument/configuration_record.h"
#include "module/instrument/monitor_readings.h"
#include "module/protocol/conversions.h"
#include "platform/lock.h"

namespace rvx {

// Everything that a conversion of counts needs, as it was at one moment. A plain value.
struct Conversion {
  ProbeConstants probe;
  SupplyPair pair;
  char modelCode = 0;
  double offset = 0.0;  // degrees C
  uint8_t optionByte = 0;

  double Temperature(uint16_t counts) const;        // degrees C
  double TargetTemperature(uint16_t counts) const;  // degrees C; exactly 65535.0 when off
  double Speed(uint16_t counts) const;              // rpm/1000
  // All readings of a frame.
  MonitorReadings Readings(const StatusFrame& frame) const;
};

// Any thread.
class CountConversion {
 public:
  // `configuration` is not owned and must outlive this.
  explicit CountConversion(const ConfigurationRecord& configuration)
      : configuration_(configuration) {}

  // With the supply pair in use.
  Conversion Present();
  // The counts of a temperature that a command carries; latches the supply pair first.
  double CountsForCommand(double temperature);

  // Adds the supply readings of a status record to the means.
  void UpdateSupply(const StatusRecord& record);
  // Makes the supply means the pair in use.
  SupplyPair LatchSupplyPair();
  SupplyPair GetPairInUse();

 private:
  Conversion FromConfiguration() const;

  const ConfigurationRecord& configuration_;

  platform::PlainLock supplyLock_{"supply means", platform::kLeafRank};
  SupplyMeans supply_ GUARDED_BY(supplyLock_);
};

}  // namespace rvx
