// The sequences of the controller's program: what each step waits for, does, and leads to.
#include <cstdlib>

#include "module/simulator/sim_firmware.h"

namespace rvx::simulator {
namespace {

constexpr uint16_t kTubeDown = 942;  // steps from the top to the bottom of a sample
// The cell counts as cold when it has been within the tolerance for this many ticks.
constexpr uint16_t kSettledTicks = 11;
// Precondition: the speed is met within this many counts, and one step of the search for it.
constexpr int kSpeedTolerance = 33;
constexpr uint16_t kSeekStep = 2047;
constexpr uint16_t kSeekHighest = 63488;

}  // namespace

void SimFirmware::Enter(Step step) {
  step_ = step;
  stepTime_ = intCount_;
  progressed_ = true;
}

void SimFirmware::EnterVia(Step step, Step then) {
  returnStep_ = then;
  Enter(step);
}

void SimFirmware::Injection(bool on) {
  board_.outputs().injection = on;
  SetSwitch(kSwitchInjection, on);
}

void SimFirmware::Rotor(bool on) {
  board_.outputs().rotor = on ? 1 : 0;
  SetSwitch(kSwitchRotor, on);
}

void SimFirmware::Control(bool on) {
  board_.outputs().temperatureControl = on ? 1 : 0;
  SetSwitch(kSwitchControl, on);
}

void SimFirmware::Seek(uint16_t counts) {
  currentTarget_ = counts;
  board_.SetTarget(counts);
}

void SimFirmware::RunStep() {
  switch (step_) {
    case Step::Ending:
    case Step::Rest:
    case Step::WaitForWarm:
    case Step::LowerTube:
    case Step::AwaitTubeDown:
    case Step::RaiseTube:
    case Step::AwaitTubeUp:
      RunCommonStep();
      break;
    case Step::Burst:
    case Step::Pause:
    case Step::Purge:
      RunInjectionStep();
      break;
    case Step::MoveTrolley:
    case Step::MoveTable:
    case Step::AwaitMove:
      RunMoveStep();
      break;
    case Step::CurrentStart:
    case Step::CurrentTrolley:
    case Step::CurrentTable:
    case Step::CurrentLocated:
    case Step::CurrentCooldown:
    case Step::CurrentEquilibration:
    case Step::CurrentRun:
      RunCurrentStep();
      break;
    case Step::SeekSpeed:
    case Step::Precondition:
      RunPreconditionStep();
      break;
    case Step::TestStart:
    case Step::TestTrolley:
    case Step::TestTable:
    case Step::TestLocated:
    case Step::TestCooldown:
    case Step::TestEquilibration:
    case Step::TestRun:
      RunTestStep();
      break;
  }
}

void SimFirmware::RunCommonStep() {
  switch (step_) {
    case Step::Ending:
      SetSwitch(kSwitchTest | kSwitchMotorRun, false);
      operation_ = SimOperation::Idle;
      returnStep_ = Step::Rest;
      step_ = Step::Rest;
      progressed_ = true;
      break;
    case Step::WaitForWarm:
      if (board_.Cell().actual < currentTarget_) break;
      Injection(false);
      EnterVia(returnStep_, Step::Ending);
      break;
    case Step::LowerTube:
      if (MoveTube(kTubeDown)) Enter(Step::AwaitTubeDown);
      break;
    case Step::AwaitTubeDown:
      if (!StepperIdle()) break;
      Injection(true);
      Rotor(true);
      Enter(Step::Burst);
      injectionStart_ = intCount_;
      phaseStart_ = intCount_;
      break;
    case Step::RaiseTube:
      if (!MoveTube(0)) break;
      Seek(currentTarget_);
      Control(true);
      Enter(Step::AwaitTubeUp);
      break;
    case Step::AwaitTubeUp:
      if (StepperIdle()) EnterVia(returnStep_, Step::Ending);
      break;
    default:  // Rest
      break;
  }
}

// The rotor is pulsed on and off each tick, through all phases; oil flows in all but the pause.
void SimFirmware::RunInjectionStep() {
  uint16_t phaseTime = program_.burstTime;
  Step nextPhase = Step::Pause;
  operation_ = SimOperation::InjectionBurst;
  if (step_ == Step::Pause) {
    phaseTime = program_.pauseTime;
    nextPhase = Step::Purge;
    operation_ = SimOperation::InjectionPause;
  } else if (step_ == Step::Purge) {
    phaseTime = program_.purgeTime;
    nextPhase = Step::Burst;
    operation_ = SimOperation::InjectionPurge;
  }
  const bool rotorOn = board_.outputs().rotor != 0;
  if (TicksSince(injectionStart_) >= program_.injectionTime) {
    Injection(false);
    Rotor(false);
    Enter(Step::RaiseTube);
  } else if (TicksSince(phaseStart_) >= phaseTime) {
    Injection(nextPhase != Step::Pause);
    Rotor(!rotorOn);
    Enter(nextPhase);
    phaseStart_ = intCount_;
  } else if (TicksSince(stepTime_) >= 1) {
    Rotor(!rotorOn);
    Enter(step_);
  }
}

void SimFirmware::RunMoveStep() {
  if (!StepperIdle()) return;
  if (step_ == Step::MoveTrolley) {
    if (MoveTrolley(trolleyTarget_)) Enter(Step::MoveTable);
  } else if (step_ == Step::MoveTable) {
    if (MoveTable(tableTarget_)) Enter(Step::AwaitMove);
  } else {
    EndRun();
  }
}

// Brings the cell to the injection temperature.
void SimFirmware::Warm(Step then) {
  operation_ = SimOperation::WarmTestCell;
  Seek(program_.injectionCounts);
  Injection(true);
  EnterVia(Step::WaitForWarm, then);
}

// Without an injection the cell begins to cool at once.
void SimFirmware::StartCooling(Step then) {
  Seek(currentTarget_);
  Control(true);
  Enter(then);
}

void SimFirmware::AwaitCooldown(Step then) {
  operation_ = SimOperation::Cooldown;
  if (std::abs(int{board_.Cell().actual} - int{currentTarget_}) > program_.tolerance) {
    stepTime_ = intCount_;
    return;
  }
  if (TicksSince(stepTime_) < kSettledTicks) return;
  operation_ = SimOperation::Equilibration;
  Enter(then);
}

void SimFirmware::AwaitEquilibration(SimOperation then, Step run) {
  if (TicksSince(stepTime_) <= program_.cooldownTime) return;
  operation_ = then;
  Seek(program_.testCounts);
  Rotor(true);
  Enter(run);
}

void SimFirmware::AwaitRunEnd() {
  if (TicksSince(stepTime_) > program_.rotorTime) EndRun();
}

void SimFirmware::RunTestStep() {
  const auto undershot = static_cast<uint16_t>(program_.testCounts - program_.undershoot);
  switch (step_) {
    case Step::TestStart:
      if (!StepperIdle()) break;
      if (program_.injectionTime == 0) {
        currentTarget_ = undershot;
        StartCooling(Step::TestCooldown);
      } else {
        Warm(Step::TestTrolley);
      }
      break;
    case Step::TestTrolley:
      if (MoveTrolley(trolleyTarget_)) Enter(Step::TestTable);
      break;
    case Step::TestTable:
      if (StepperIdle() && MoveTable(tableTarget_)) Enter(Step::TestLocated);
      break;
    case Step::TestLocated:
      if (!StepperIdle()) break;
      currentTarget_ = undershot;
      EnterVia(Step::LowerTube, Step::TestCooldown);
      break;
    case Step::TestCooldown:
      AwaitCooldown(Step::TestEquilibration);
      break;
    case Step::TestEquilibration:
      AwaitEquilibration(SimOperation::RunTest, Step::TestRun);
      break;
    default:  // TestRun
      AwaitRunEnd();
      break;
  }
}

void SimFirmware::RunCurrentStep() {
  switch (step_) {
    case Step::CurrentStart:
      if (!StepperIdle()) break;
      operation_ = SimOperation::AdjustMotorCurrent;
      // A cell that is warm enough already is taken to be over its sample.
      if (program_.injectionTime == 0 || board_.Cell().actual >= program_.injectionCounts) {
        Enter(Step::CurrentLocated);
      } else {
        Warm(Step::CurrentTrolley);
      }
      break;
    case Step::CurrentTrolley:
      if (MoveTrolley(trolleyTarget_)) Enter(Step::CurrentTable);
      break;
    case Step::CurrentTable:
      if (StepperIdle() && MoveTable(tableTarget_)) Enter(Step::CurrentLocated);
      break;
    case Step::CurrentLocated:
      if (!StepperIdle()) break;
      currentTarget_ = static_cast<uint16_t>(program_.testCounts - program_.undershoot);
      if (program_.injectionTime == 0) {
        StartCooling(Step::CurrentCooldown);
      } else {
        EnterVia(Step::LowerTube, Step::CurrentCooldown);
      }
      break;
    case Step::CurrentCooldown:
      AwaitCooldown(Step::CurrentEquilibration);
      break;
    case Step::CurrentEquilibration:
      AwaitEquilibration(SimOperation::AdjustMotorCurrent, Step::CurrentRun);
      break;
    default:  // CurrentRun
      AwaitRunEnd();
      break;
  }
}

void SimFirmware::RunPreconditionStep() {
  if (step_ == Step::Precondition) {
    if (TicksSince(stepTime_) > preconditionTime_) EndRun();
    return;
  }
  const int excess = int{board_.RotorSpeedCounts()} - int{targetSpeed_};
  // Too fast: a colder cell slows the rotor down. Too slow: a warmer one.
  if (excess > kSpeedTolerance) {
    if (currentTarget_ > kSeekStep) {
      Seek(static_cast<uint16_t>(currentTarget_ - kSeekStep));
      progressed_ = true;
    }
  } else if (excess < -kSpeedTolerance) {
    if (currentTarget_ < kSeekHighest) {
      Seek(static_cast<uint16_t>(currentTarget_ + kSeekStep));
      progressed_ = true;
    }
  } else {
    operation_ = SimOperation::PreconditionMotor;
    Enter(Step::Precondition);
    board_.SetTarget(board_.Cell().actual);
  }
}

}  // namespace rvx::simulator
