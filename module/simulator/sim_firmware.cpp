#include "module/simulator/sim_firmware.h"

namespace rvx::simulator {
namespace {

constexpr uint8_t kLastTrayPosition = 29;
constexpr uint8_t kLastMotorCurrentPosition = 30;
// The temperature at which a precondition begins to look for its speed: the warm end.
constexpr uint16_t kSeekStartCounts = 0xFFFE;

}  // namespace

SimFirmware::SimFirmware(SimBoard& board)
    : board_(board),
      tube_{SimAxis::Tube, 942},
      table_{SimAxis::Table, 615},
      trolley_{SimAxis::Trolley, 1620} {}

bool SimFirmware::Pass(uint16_t intCount) {
  intCount_ = intCount;
  progressed_ = false;
  RunStep();
  RunStepper();
  return progressed_;
}

SimOperation SimFirmware::ShownOperation() const {
  return StepperIdle() ? operation_ : stepperOperation_;
}

void SimFirmware::SetSwitch(uint8_t bit, bool on) {
  switchByte_ = static_cast<uint8_t>(on ? switchByte_ | bit : switchByte_ & ~bit);
}

void SimFirmware::EndRun() {
  autoReport_ = false;
  board_.outputs().injection = false;
  board_.outputs().rotor = 0;
  board_.outputs().temperatureControl = 0;
  switchByte_ = 0;
  step_ = Step::Ending;
  SetStepper(Stepper::Aborting);
}

SimError SimFirmware::SwitchInjection(uint8_t value) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  Injection(value != 0);
  return SimError::None;
}

SimError SimFirmware::SwitchAutoReport(uint8_t value) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  SetSwitch(kSwitchAutoReport, value != 0);
  autoReport_ = value != 0;
  return SimError::None;
}

SimError SimFirmware::SwitchRotor(uint8_t value) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  board_.outputs().rotor = value;
  SetSwitch(kSwitchRotor, value != 0);
  return SimError::None;
}

SimError SimFirmware::SwitchCooling(uint8_t value) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  if (switchByte_ & kSwitchControl) return SimError::ControlOn;
  board_.outputs().cooling = value;
  SetSwitch(kSwitchCooling, value != 0);
  return SimError::None;
}

SimError SimFirmware::SetTemperatureControl(uint8_t enable, uint16_t counts) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  board_.SetTarget(counts);
  board_.outputs().temperatureControl = enable;
  SetSwitch(kSwitchControl, enable != 0);
  return SimError::None;
}

SimError SimFirmware::MoveToPosition(uint8_t position) {
  if (switchByte_ != 0) return SimError::NotIdle;
  if (!homed_) return SimError::NotHomed;
  if (position > kLastTrayPosition) return SimError::BadPosition;
  if (!MoveTube(0)) return SimError::SteppersActive;
  LocatePosition(position);
  Enter(Step::MoveTrolley);
  SetSwitch(kSwitchStepper, true);
  return SimError::None;
}

SimError SimFirmware::StartRun(const SimRunProgram& program, uint8_t lastPosition, uint8_t sample,
                               bool moveTube, uint8_t runBit, Step first) {
  if (switchByte_ != 0) return SimError::NotIdle;
  if (!homed_) return SimError::NotHomed;
  if (program.position > lastPosition) return SimError::BadPosition;
  program_ = program;
  LocatePosition(program.position);
  if (sample != 0) board_.outputs().sample = sample;
  if (moveTube && !MoveTube(0)) return SimError::SteppersActive;
  autoReport_ = true;
  SetSwitch(kSwitchAutoReport, true);
  Enter(first);
  SetSwitch(runBit, true);
  return SimError::None;
}

SimError SimFirmware::StartTest(const SimRunProgram& program) {
  // A test counts its positions from 0.
  const auto sample = static_cast<uint8_t>(program.position + 1);
  return StartRun(program, kLastTrayPosition, sample, program.injectionTime != 0, kSwitchTest,
                  Step::TestStart);
}

SimError SimFirmware::StartMotorCurrent(const SimRunProgram& program) {
  return StartRun(program, kLastMotorCurrentPosition, program.position, program.position != 0,
                  kSwitchMotorRun, Step::CurrentStart);
}

SimError SimFirmware::StartPrecondition(uint16_t time, uint16_t speed) {
  if (switchByte_ != 0) return SimError::NotIdle;
  operation_ = SimOperation::SeekSpeed;
  targetSpeed_ = speed;
  currentTarget_ = kSeekStartCounts;
  preconditionTime_ = time;
  autoReport_ = true;
  switchByte_ = kSwitchAutoReport | kSwitchMotorRun;
  Seek(currentTarget_);
  Control(true);
  Rotor(true);
  Enter(Step::SeekSpeed);
  return SimError::None;
}

}  // namespace rvx::simulator
