// The command builders: each makes a command's text from the configuration and queues it.
#include <algorithm>

#include "module/instrument/c_rvx_parts.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"

namespace rvx {
namespace {

double GetInjectionTemperature(const ConfigurationRecord& configuration) {
  const ConfigurationGuard guard(configuration);
  return configuration.fields.injectionTemperature;
}

// The display of the remaining injection time counts down from the time that was sent.
void KeepSentInjectionTime(ConfigurationRecord& configuration, int32_t seconds) {
  const ConfigurationGuard guard(configuration);
  configuration.fields.testRecord.sentInjectionTime = seconds;
}

}  // namespace

void C_RVX::QueueCommand(const std::string& text, CommandClient* client) {
  parts_->conversation->Queue(text, client != nullptr ? client : parts_->lastReply.get());
}

void C_RVX::WithdrawCommands(const CommandClient* client) {
  if (parts_->conversation) parts_->conversation->Withdraw(client);
}

void C_RVX::ForgetClient(CommandClient* client) {
  if (parts_->conversation) parts_->conversation->ForgetClient(client);
}

uint8_t C_RVX::GetAddress() {
  const ConfigurationGuard guard(configuration_);
  return configuration_.fields.address;
}

int32_t C_RVX::SendAbort(CommandClient* client) {
  QueueCommand(AbortCommand(GetAddress()), client);
  return 1;
}

int32_t C_RVX::SetInjection(bool on, CommandClient* client) {
  QueueCommand(InjectionCommand(GetAddress(), on), client);
  return 1;
}

int32_t C_RVX::SetAutoReport(bool on, CommandClient* client) {
  QueueCommand(AutoReportCommand(GetAddress(), on), client);
  parts_->conversation->SetAutoReportAsked(on);
  return 1;
}

int32_t C_RVX::SetTestMotor(bool on, CommandClient* client) {
  QueueCommand(TestMotorCommand(GetAddress(), on), client);
  return 1;
}

int32_t C_RVX::SetCooling(bool on, CommandClient* client) {
  QueueCommand(CoolingCommand(GetAddress(), on), client);
  return 1;
}

int32_t C_RVX::SetHomeFlag(CommandClient* client) {
  QueueCommand(HomeFlagCommand(GetAddress()), client);
  return 1;
}

int32_t C_RVX::RunMotorCurrent(int32_t position, CommandClient* client) {
  TestRecord test;
  {
    const ConfigurationGuard guard(configuration_);
    test = configuration_.fields.testRecord;
  }
  CountConversion& conversion = parts_->conversion;
  MotorCurrentPayload payload;
  payload.position = position;
  payload.injectionTime = position == 0 ? 0 : test.injectionTime;
  payload.burstTime = test.burstTime;
  payload.pauseTime = test.pauseTime;
  payload.purgeTime = test.purgeTime;
  payload.coolDownTime = test.coolDownTime;
  payload.testCounts = conversion.CountsForCommand(kMotorCurrentTemperature);
  payload.undershootCounts =
      conversion.CountsForCommand(kMotorCurrentTemperature + test.undershoot);
  payload.toleranceCounts = conversion.CountsForCommand(kMotorCurrentTemperature + test.tolerance);
  payload.injectionCounts = conversion.CountsForCommand(GetInjectionTemperature(configuration_));
  KeepSentInjectionTime(configuration_, payload.injectionTime);
  QueueCommand(MotorCurrentCommand(GetAddress(), payload), client);
  return 1;
}

int32_t C_RVX::MoveStepper(uint8_t selector, uint16_t target, CommandClient* client) {
  QueueCommand(MoveStepperCommand(GetAddress(), selector, target), client);
  return 1;
}

int32_t C_RVX::MoveToPosition(int32_t position, CommandClient* client) {
  QueueCommand(MoveToPositionCommand(GetAddress(), position), client);
  return 1;
}

int32_t C_RVX::PreconditionMotor(CommandClient* client) {
  std::string text;
  {
    const ConfigurationGuard guard(configuration_);
    ConfigurationFields& fields = configuration_.fields;
    text = PreconditionCommand(fields.address, fields.testRecord.preconditionTime,
                               fields.testRecord.preconditionSpeed, fields.optionByte);
  }
  QueueCommand(text, client);
  return 1;
}

int32_t C_RVX::SetModel(char model, uint8_t option, CommandClient* client) {
  QueueCommand(ModelCommand(GetAddress(), model, option, GetFirmwareNumber()), client);
  return 1;
}

int32_t C_RVX::SetSerialNumber(const std::string& text, CommandClient* client) {
  QueueCommand(SerialNumberCommand(GetAddress(), text), client);
  return 1;
}

int32_t C_RVX::StartTest(int32_t position, int32_t index, TestRecord& test, CommandClient* client) {
  const size_t point = static_cast<size_t>(std::clamp(index, 0, kMaxTests - 1));
  const double temperature = test.testTemperatures[point];
  CountConversion& conversion = parts_->conversion;
  StartTestPayload payload;
  payload.position = position;
  payload.injectionTime = test.injectionTime;
  payload.burstTime = test.burstTime;
  payload.pauseTime = test.pauseTime;
  payload.purgeTime = test.purgeTime;
  payload.coolDownTime = test.coolDownTime;
  payload.rotorOnTime = test.rotorOnTimes[point];
  payload.testCounts = conversion.CountsForCommand(temperature);
  payload.undershootCounts = conversion.CountsForCommand(temperature + test.undershoot);
  payload.toleranceCounts = conversion.CountsForCommand(temperature + test.tolerance);
  payload.injectionCounts = conversion.CountsForCommand(GetInjectionTemperature(configuration_));
  test.sentInjectionTime = payload.injectionTime;
  KeepSentInjectionTime(configuration_, payload.injectionTime);
  QueueCommand(StartTestCommand(GetAddress(), payload), client);
  return 1;
}

int32_t C_RVX::SetTemperatureControl(bool on, double temperature, CommandClient* client) {
  const double counts = parts_->conversion.CountsForCommand(temperature);
  QueueCommand(TemperatureControlCommand(GetAddress(), on, counts), client);
  return 1;
}

int32_t C_RVX::UserAcknowledge(CommandClient* client) {
  QueueCommand(UserAcknowledgeCommand(GetAddress()), client);
  return 1;
}

int32_t C_RVX::QueryIdentity(CommandClient* client) {
  QueueCommand(IdentityQuery(GetAddress()), client);
  return 1;
}

int32_t C_RVX::QuerySelfTest(CommandClient* client) {
  QueueCommand(SelfTestQuery(GetAddress()), client);
  return 1;
}

}  // namespace rvx
