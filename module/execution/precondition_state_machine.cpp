#include "module/execution/precondition_state_machine.h"

#include <cmath>

#include "module/protocol/frames.h"
#include "module/resources/string_ids.h"

namespace rvx {
namespace {

// Above this the oil in the cell is too thin for preconditioning.
constexpr double kPreconditionTemperature = -15.0;  // degrees C
constexpr double kNearTarget = 0.5;                 // degrees C
constexpr int64_t kMaxSeek = 300000;                // ms
constexpr int64_t kHoldTime = 10000;                // ms
// The commands in the order in which a run sends them.
enum Command { kControlOnCommand = 1, kControlOffCommand, kMotorCommand };

}  // namespace

CPMStateMachine::CPMStateMachine(LaunchRecord& launch)
    : Sequencer(launch, kTextActionTimeout, kTextActionInUse) {
  ExecuteLoadResources(this);
}

void CPMStateMachine::SetState(State state) {
  state_ = state;
  NoteProgress();
}

platform::Deadline CPMStateMachine::StateDeadline() const {
  switch (state_) {
    case State::AwaitControlOn:
    case State::AwaitControlOff:
    case State::AwaitMotorReply:
      return ResponseDeadline();
    case State::SeekTemperature:
      return AfterState(kMaxSeek);
    case State::Hold:
      return AfterState(kHoldTime);
    case State::Start:
    case State::SwitchControlOff:
    case State::StartMotor:
    case State::AwaitMotor:
    case State::AwaitMotorEnd:
    case State::End:
      return platform::Deadline::Never();
  }
  return platform::Deadline::Never();
}

int32_t CPMStateMachine::Act() {
  switch (state_) {
    case State::Start:
      Start();
      return 1;
    case State::AwaitControlOn:
      AwaitReply(kTemperatureControlTag, kControlOnCommand, State::SeekTemperature);
      return 1;
    case State::SeekTemperature:
      SeekTemperature();
      return 1;
    case State::Hold:
      GoOnIf(GetElapsed() >= kHoldTime, State::SwitchControlOff);
      return 1;
    case State::SwitchControlOff:
      SwitchControlOff();
      return 1;
    case State::AwaitControlOff:
      AwaitReply(kTemperatureControlTag, kControlOffCommand, State::StartMotor);
      return 1;
    case State::StartMotor:
      StartMotor();
      return 1;
    case State::AwaitMotorReply:
      AwaitReply(kPreconditionTag, kMotorCommand, State::AwaitMotor);
      return 1;
    case State::AwaitMotor:
      GoOnIf(status_.operation != 0, State::AwaitMotorEnd);
      return 1;
    case State::AwaitMotorEnd:
      GoOnIf(status_.operation == 0, State::End);
      return 1;
    case State::End:
      SetState(State::Start);
      return 0;
  }
  return 1;
}

void CPMStateMachine::GoOnIf(bool condition, State next) {
  if (!condition) return;
  Tick();
  SetState(next);
}

void CPMStateMachine::Start() {
  instrument_.Lock();
  const int32_t minutes = instrument_.configuration().fields.testRecord.preconditionTime;
  instrument_.Unlock();
  if (minutes == 0) {
    SetState(State::End);
    return;
  }
  if (!ReadPresentStatus()) return;
  if (status_.operation != 0) {
    FailInUse();
    return;
  }
  TakeResponseTimeout();
  if (status_.actualTemperature > kPreconditionTemperature) {
    launch_.SendUnlessStopped(
        [this] { instrument_.SetTemperatureControl(true, kPreconditionTemperature, this); });
    BeginRetries(kControlOnCommand);
    SetState(State::AwaitControlOn);
  } else {
    SetState(State::StartMotor);
  }
  Tick();
}

void CPMStateMachine::SeekTemperature() {
  const double distance = std::abs(status_.actualTemperature - status_.targetTemperature);
  if (distance < kNearTarget) {
    GoOnIf(true, State::Hold);
  } else {
    GoOnIf(GetElapsed() >= kMaxSeek, State::SwitchControlOff);
  }
}

void CPMStateMachine::SwitchControlOff() {
  launch_.SendUnlessStopped(
      [this] { instrument_.SetTemperatureControl(false, kTemperatureOff, this); });
  BeginRetries(kControlOffCommand);
  Tick();
  SetState(State::AwaitControlOff);
}

void CPMStateMachine::StartMotor() {
  launch_.SendUnlessStopped([this] { instrument_.PreconditionMotor(this); });
  BeginRetries(kMotorCommand);
  Tick();
  SetState(State::AwaitMotorReply);
}

void CPMStateMachine::AwaitReply(std::string_view tag, int command, State next) {
  const Reply reply = LookForReply(tag, command);
  if (reply == Reply::Come) SetState(next);
  if (reply == Reply::Resend) SetState(State::Start);
}

}  // namespace rvx
