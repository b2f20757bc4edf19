// The command builders: each makes a command's text from the configuration and queues it.
#include <algorithm>

#include "module/instrument/c_rvx.h"
#include "module/instrument/own_client.h"
#include "module/protocol/frames.h"
#include "module/protocol/identification.h"

namespace rvx {

void C_RVX::QueueCommand(const std::string& text, CommandClient* client) {
  conversation_->Queue(text, client != nullptr ? client : ownClient_.get());
}

void C_RVX::WithdrawCommands(const CommandClient* client) {
  if (conversation_) conversation_->Withdraw(client);
}

void C_RVX::ForgetClient(CommandClient* client) {
  if (conversation_) conversation_->ForgetClient(client);
}

uint8_t C_RVX::GetAddress() {
  ConfigurationGuard guard(configuration_);
  return configuration_.address;
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
  conversation_->SetAutoReportAsked(on);
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
    ConfigurationGuard guard(configuration_);
    test = configuration_.testRecord;
  }
  MotorCurrentPayload payload;
  payload.position = position;
  payload.injectionTime = position == 0 ? 0 : test.injectionTime;
  payload.burstTime = test.burstTime;
  payload.pauseTime = test.pauseTime;
  payload.purgeTime = test.purgeTime;
  payload.coolDownTime = test.coolDownTime;
  payload.testCounts = CountsForCommand(kMotorCurrentTemperature);
  payload.undershootCounts = CountsForCommand(kMotorCurrentTemperature + test.undershoot);
  payload.toleranceCounts = CountsForCommand(kMotorCurrentTemperature + test.tolerance);
  payload.injectionCounts = CountsForCommand(GetInjectionTemperature());
  KeepSentInjectionTime(payload.injectionTime);
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
    ConfigurationGuard guard(configuration_);
    text =
        PreconditionCommand(configuration_.address, configuration_.testRecord.preconditionTime,
                            configuration_.testRecord.preconditionSpeed, configuration_.optionByte);
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
  StartTestPayload payload;
  payload.position = position;
  payload.injectionTime = test.injectionTime;
  payload.burstTime = test.burstTime;
  payload.pauseTime = test.pauseTime;
  payload.purgeTime = test.purgeTime;
  payload.coolDownTime = test.coolDownTime;
  payload.rotorOnTime = test.rotorOnTimes[point];
  payload.testCounts = CountsForCommand(temperature);
  payload.undershootCounts = CountsForCommand(temperature + test.undershoot);
  payload.toleranceCounts = CountsForCommand(temperature + test.tolerance);
  payload.injectionCounts = CountsForCommand(GetInjectionTemperature());
  test.sentInjectionTime = payload.injectionTime;
  KeepSentInjectionTime(payload.injectionTime);
  QueueCommand(StartTestCommand(GetAddress(), payload), client);
  return 1;
}

int32_t C_RVX::SetTemperatureControl(bool on, double temperature, CommandClient* client) {
  QueueCommand(TemperatureControlCommand(GetAddress(), on, CountsForCommand(temperature)), client);
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

double C_RVX::GetInjectionTemperature() {
  ConfigurationGuard guard(configuration_);
  return configuration_.injectionTemperature;
}

// The display of the remaining injection time counts down from the time that was sent.
void C_RVX::KeepSentInjectionTime(int32_t seconds) {
  ConfigurationGuard guard(configuration_);
  configuration_.testRecord.sentInjectionTime = seconds;
}

double C_RVX::CountsForCommand(double temperature) {
  ProbeConstants probe;
  char modelCode = 0;
  double offset = 0.0;
  {
    ConfigurationGuard guard(configuration_);
    probe = {configuration_.a0, configuration_.a1, configuration_.a2};
    modelCode = configuration_.modelCode;
    offset = configuration_.temperatureOffset;
  }
  SupplyPair pair;
  {
    platform::PlainGuard guard(supplyLock_);
    pair = supply_.Latch();
  }
  return TemperatureToCounts(temperature, probe, pair, modelCode, offset);
}

}  // namespace rvx
