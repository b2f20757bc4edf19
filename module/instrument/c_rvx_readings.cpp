// The readings: the last status frame, converted with the configuration.
#include "module/instrument/c_rvx_parts.h"
#include "module/protocol/identification.h"

namespace rvx {

uint64_t C_RVX::GetStatusSequence() { return parts_->status.GetSequence(); }
void C_RVX::AddStatusEvent(platform::Event* event) { parts_->status.AddEvent(event); }
void C_RVX::RemoveStatusEvent(platform::Event* event) { parts_->status.RemoveEvent(event); }

void C_RVX::GetMonitorReadings(MonitorReadings& out) {
  const StatusFrame frame = parts_->status.Last();
  out = parts_->conversion.Present().Readings(frame);
}

bool C_RVX::GetNextReadings(uint64_t& sequence, MonitorReadings& out) {
  StatusFrame frame;
  const bool isNew = parts_->status.Next(sequence, frame);
  out = parts_->conversion.Present().Readings(frame);
  return isNew;
}

double C_RVX::GetTemperature() {
  const Conversion conversion = parts_->conversion.Present();
  return conversion.Temperature(GetTemperatureCounts());
}

double C_RVX::GetTargetTemperature() {
  const Conversion conversion = parts_->conversion.Present();
  return conversion.TargetTemperature(GetTargetCounts());
}

double C_RVX::GetRotorSpeed() {
  const StatusRecord record = parts_->status.Last().record;
  return parts_->conversion.Present().Speed(record.speedCounts());
}

uint16_t C_RVX::GetIntCount() { return parts_->status.Last().record.intCount(); }
uint16_t C_RVX::GetTemperatureCounts() { return parts_->status.Last().record.temperatureCounts(); }
uint16_t C_RVX::GetTargetCounts() { return parts_->status.Last().record.targetCounts(); }
uint8_t C_RVX::GetMachineStatus() { return parts_->status.Last().record.machineStatus(); }
uint8_t C_RVX::GetSwitchByte() { return parts_->status.Last().record.switchByte(); }
uint8_t C_RVX::GetOperation() { return parts_->status.Last().record.operation(); }
uint8_t C_RVX::GetErrorCode() { return parts_->status.Last().record.errorCode(); }
std::string C_RVX::GetLastTag() { return parts_->status.Last().record.lastTag(); }

double C_RVX::GetPlusVss() {
  return CountsToSupplyVolts(parts_->status.Last().record.plusVssCounts());
}

double C_RVX::GetMinusVss() {
  return CountsToSupplyVolts(parts_->status.Last().record.minusVssCounts());
}

uint8_t C_RVX::GetPromptFlag() {
  return IsManualInjectionModel() ? parts_->status.Last().record.promptFlag() : uint8_t{0};
}

void C_RVX::GetRawStatus(std::array<uint8_t, kStatusRecordSize>& out) {
  out = parts_->status.Last().record.bytes();
}

void C_RVX::GetPairInUse(double& plus, double& minus) {
  const SupplyPair pair = parts_->conversion.GetPairInUse();
  plus = pair.plus;
  minus = pair.minus;
}

void C_RVX::LatchSupplyPair() { parts_->conversion.LatchSupplyPair(); }

void C_RVX::SetRotorTime(int32_t seconds) { parts_->operationClock.SetRotorTime(seconds); }

int32_t C_RVX::GetOperationTimer(int32_t& seconds) {
  return parts_->operationClock.GetSeconds(parts_->status.Last(), seconds) ? 1 : 0;
}

int32_t C_RVX::GetOperationTimer(const MonitorReadings& readings, int32_t& seconds) {
  return parts_->operationClock.GetSeconds(readings.frame, seconds) ? 1 : 0;
}

StatusReadings C_RVX::ReadForStatusWindow() {
  MonitorReadings status;
  GetMonitorReadings(status);
  StatusReadings readings;
  readings.received = status.frame.IsReceived();
  // A window that opens on a silent instrument must not show its last values as new.
  readings.time = status.frame.time;
  readings.temperature = status.actualTemperature;
  readings.targetTemperature = status.targetTemperature;
  readings.speed = status.rotorSpeed;
  readings.countsDown = GetOperationTimer(status, readings.seconds) != 0;
  readings.machineStatusText = GetMachineStatusText(status.machineStatus);
  return readings;
}

std::string C_RVX::GetOperationText(uint8_t code) {
  return parts_->texts.status().OperationText(code);
}

std::string C_RVX::GetErrorText(uint8_t code) { return parts_->texts.status().ErrorText(code); }

std::string C_RVX::GetMachineStatusText(uint8_t status) {
  return parts_->texts.status().MachineStatusText(status);
}

uint16_t C_RVX::GetSelfTestWord() {
  const ConfigurationGuard guard(configuration_);
  return configuration_.fields.selfTestWord;
}

double C_RVX::GetFirmwareNumber() {
  const ConfigurationGuard guard(configuration_);
  return FirmwareNumber(configuration_.fields.firmwareVersion);
}

bool C_RVX::IsManualInjectionModel() {
  const ConfigurationGuard guard(configuration_);
  return IsManualInjection(configuration_.fields.modelCode);
}

int32_t C_RVX::GetResponseTimeout() {
  const ConfigurationGuard guard(configuration_);
  return configuration_.fields.responseTimeout;
}

void C_RVX::GetCellConstants(double temperature, double& b0, double& b1, double& b2) {
  configuration_.GetCellConstants(temperature, b0, b1, b2);
}

bool C_RVX::HasCellConstants(double temperature) {
  return configuration_.HasCellConstants(temperature);
}

}  // namespace rvx
