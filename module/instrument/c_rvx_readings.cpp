// The readings: the last status record, converted with the configuration.
#include <algorithm>

#include "module/instrument/c_rvx.h"
#include "module/protocol/identification.h"
#include "module/resources/string_ids.h"
#include "platform/text.h"

namespace rvx {

StatusRecord C_RVX::GetStatusRecord() {
  platform::PlainGuard guard(statusLock_);
  return status_;
}

uint64_t C_RVX::GetStatusSequence() {
  platform::PlainGuard guard(statusLock_);
  return statusSequence_;
}

C_RVX::Conversion C_RVX::GetConversion() {
  Conversion conversion;
  {
    ConfigurationGuard guard(configuration_);
    conversion.probe = {configuration_.a0, configuration_.a1, configuration_.a2};
    conversion.modelCode = configuration_.modelCode;
    conversion.offset = configuration_.temperatureOffset;
    conversion.optionByte = configuration_.optionByte;
  }
  platform::PlainGuard guard(supplyLock_);
  conversion.pair = supply_.inUse();
  return conversion;
}

uint16_t C_RVX::GetIntCount() { return GetStatusRecord().intCount(); }

double C_RVX::GetTemperature() {
  const Conversion c = GetConversion();
  return CountsToTemperature(GetTemperatureCounts(), c.probe, c.pair, c.modelCode, c.offset);
}

double C_RVX::GetTargetTemperature() {
  const Conversion c = GetConversion();
  return TargetCountsToTemperature(GetTargetCounts(), c.probe, c.pair, c.modelCode, c.offset);
}

uint16_t C_RVX::GetTemperatureCounts() { return GetStatusRecord().temperatureCounts(); }
uint16_t C_RVX::GetTargetCounts() { return GetStatusRecord().targetCounts(); }
double C_RVX::GetPlusVss() { return CountsToSupplyVolts(GetStatusRecord().plusVssCounts()); }
double C_RVX::GetMinusVss() { return CountsToSupplyVolts(GetStatusRecord().minusVssCounts()); }

void C_RVX::GetPairInUse(double& plus, double& minus) {
  platform::PlainGuard guard(supplyLock_);
  plus = supply_.inUse().plus;
  minus = supply_.inUse().minus;
}

double C_RVX::GetRotorSpeed() {
  return SpeedFromCounts(GetStatusRecord().speedCounts(), GetConversion().optionByte);
}

uint8_t C_RVX::GetMachineStatus() { return GetStatusRecord().machineStatus(); }
uint8_t C_RVX::GetSwitchByte() { return GetStatusRecord().switchByte(); }
uint8_t C_RVX::GetOperation() { return GetStatusRecord().operation(); }
uint8_t C_RVX::GetErrorCode() { return GetStatusRecord().errorCode(); }

uint8_t C_RVX::GetPromptFlag() {
  return IsManualInjectionModel() ? GetStatusRecord().promptFlag() : uint8_t{0};
}

std::string C_RVX::GetLastTag() { return GetStatusRecord().lastTag(); }

void C_RVX::GetRawStatus(std::array<uint8_t, kStatusRecordSize>& out) {
  out = GetStatusRecord().bytes();
}

void C_RVX::GetMonitorReadings(MonitorReadings& out) { ConvertStatus(GetStatusRecord(), out); }

bool C_RVX::GetNextReadings(uint64_t& sequence, MonitorReadings& out) {
  StatusRecord record;
  bool isNew;
  {
    platform::PlainGuard guard(statusLock_);
    isNew = statusSequence_ > sequence;
    record = status_;
    if (isNew) {
      const uint64_t lost = statusSequence_ > kStatusHistory ? statusSequence_ - kStatusHistory : 0;
      sequence = std::max(sequence, lost) + 1;
      record = statusHistory_[sequence % kStatusHistory];
    }
  }
  ConvertStatus(record, out);
  return isNew;
}

void C_RVX::ConvertStatus(const StatusRecord& record, MonitorReadings& out) {
  const Conversion c = GetConversion();
  out.intCount = record.intCount();
  out.actualTemperatureCounts = record.temperatureCounts();
  out.actualTemperature =
      CountsToTemperature(record.temperatureCounts(), c.probe, c.pair, c.modelCode, c.offset);
  out.targetTemperatureCounts = record.targetCounts();
  out.targetTemperature =
      TargetCountsToTemperature(record.targetCounts(), c.probe, c.pair, c.modelCode, c.offset);
  out.plusVss = CountsToSupplyVolts(record.plusVssCounts());
  out.minusVss = CountsToSupplyVolts(record.minusVssCounts());
  out.rotorSpeed = SpeedFromCounts(record.speedCounts(), c.optionByte);
  out.machineStatus = record.machineStatus();
  out.switchByte = record.switchByte();
  out.operation = record.operation();
  out.promptFlag = record.promptFlag();
  out.errorCode = record.errorCode();
  const std::array<char, 2> tag = record.lastTagBytes();
  std::copy(tag.begin(), tag.end(), out.lastTag);
}

uint16_t C_RVX::GetSelfTestWord() {
  ConfigurationGuard guard(configuration_);
  return configuration_.selfTestWord;
}

int32_t C_RVX::GetOperationTimer(int32_t& seconds) {
  const StatusRecord record = GetStatusRecord();
  OperationTimes times;
  {
    ConfigurationGuard guard(configuration_);
    times.preconditionTime = configuration_.testRecord.preconditionTime * 60;
    times.sentInjectionTime = configuration_.testRecord.sentInjectionTime;
    times.coolDownTime = configuration_.testRecord.coolDownTime;
  }
  {
    platform::PlainGuard guard(rotorTimeLock_);
    times.rotorTime = rotorTime_;
  }
  platform::PlainGuard guard(timerLock_);
  return timer_.Update(record.intCount(), record.operation(), times, seconds) ? 1 : 0;
}

std::string C_RVX::GetOperationText(uint8_t code) { return statusTexts_.OperationText(code); }
std::string C_RVX::GetErrorText(uint8_t code) { return statusTexts_.ErrorText(code); }

std::string C_RVX::GetMachineStatusText(uint8_t status) {
  return statusTexts_.MachineStatusText(status);
}

double C_RVX::GetFirmwareNumber() {
  ConfigurationGuard guard(configuration_);
  return FirmwareNumber(configuration_.firmwareVersion);
}

bool C_RVX::IsManualInjectionModel() {
  ConfigurationGuard guard(configuration_);
  return IsManualInjection(configuration_.modelCode);
}

void C_RVX::SetRotorTime(int32_t seconds) {
  platform::PlainGuard guard(rotorTimeLock_);
  rotorTime_ = seconds;
}

void C_RVX::LatchSupplyPair() {
  platform::PlainGuard guard(supplyLock_);
  supply_.Latch();
}

void C_RVX::GetCellConstants(double temperature, double& b0, double& b1, double& b2) {
  configuration_.GetCellConstants(temperature, b0, b1, b2);
}

bool C_RVX::HasCellConstants(double temperature) {
  return configuration_.HasCellConstants(temperature);
}

int32_t C_RVX::GetResponseTimeout() {
  ConfigurationGuard guard(configuration_);
  return configuration_.responseTimeout;
}

void C_RVX::AddStatusEvent(platform::Event* event) {
  platform::PlainGuard guard(statusEventsLock_);
  statusEvents_.push_back(event);
}

void C_RVX::RemoveStatusEvent(platform::Event* event) {
  platform::PlainGuard guard(statusEventsLock_);
  std::erase(statusEvents_, event);
}

}  // namespace rvx
