#include "module/instrument/count_conversion.h"

#include <algorithm>

namespace rvx {

double Conversion::Temperature(uint16_t counts) const {
  return CountsToTemperature(counts, probe, pair, modelCode, offset);
}

double Conversion::TargetTemperature(uint16_t counts) const {
  return TargetCountsToTemperature(counts, probe, pair, modelCode, offset);
}

double Conversion::Speed(uint16_t counts) const { return SpeedFromCounts(counts, optionByte); }

MonitorReadings Conversion::Readings(const StatusFrame& frame) const {
  const StatusRecord& record = frame.record;
  MonitorReadings readings;
  readings.intCount = record.intCount();
  readings.actualTemperatureCounts = record.temperatureCounts();
  readings.actualTemperature = Temperature(record.temperatureCounts());
  readings.targetTemperatureCounts = record.targetCounts();
  readings.targetTemperature = TargetTemperature(record.targetCounts());
  readings.plusVss = CountsToSupplyVolts(record.plusVssCounts());
  readings.minusVss = CountsToSupplyVolts(record.minusVssCounts());
  readings.rotorSpeed = Speed(record.speedCounts());
  readings.machineStatus = record.machineStatus();
  readings.switchByte = record.switchByte();
  readings.operation = record.operation();
  readings.promptFlag = record.promptFlag();
  readings.errorCode = record.errorCode();
  const std::array<char, 2> tag = record.lastTagBytes();
  std::copy(tag.begin(), tag.end(), readings.lastTag);
  readings.frame = frame;
  return readings;
}

Conversion CountConversion::FromConfiguration() const {
  Conversion conversion;
  const ConfigurationGuard guard(configuration_);
  const ConfigurationFields& fields = configuration_.fields;
  conversion.probe = {fields.a0, fields.a1, fields.a2};
  conversion.modelCode = fields.modelCode;
  conversion.offset = fields.temperatureOffset;
  conversion.optionByte = fields.optionByte;
  return conversion;
}

Conversion CountConversion::Present() {
  Conversion conversion = FromConfiguration();
  conversion.pair = GetPairInUse();
  return conversion;
}

double CountConversion::CountsForCommand(double temperature) {
  const Conversion c = FromConfiguration();
  return TemperatureToCounts(temperature, c.probe, LatchSupplyPair(), c.modelCode, c.offset);
}

void CountConversion::UpdateSupply(const StatusRecord& record) {
  platform::PlainGuard guard(supplyLock_);
  supply_.Update(CountsToSupplyVolts(record.plusVssCounts()),
                 CountsToSupplyVolts(record.minusVssCounts()));
}

SupplyPair CountConversion::LatchSupplyPair() {
  platform::PlainGuard guard(supplyLock_);
  return supply_.Latch();
}

SupplyPair CountConversion::GetPairInUse() {
  platform::PlainGuard guard(supplyLock_);
  return supply_.inUse();
}

}  // namespace rvx
