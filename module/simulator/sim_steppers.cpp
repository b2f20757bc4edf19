// The motion part of the controller's program: starting, following and aborting moves.
#include "module/simulator/sim_firmware.h"

namespace rvx::simulator {
namespace {

// Geometry of the tray: five places to a row, in steps of table and trolley.
constexpr int kPlacesPerRow = 5;
constexpr int kTableStepsPerRow = 123;
constexpr int kTrolleyStepsPerPlace = 405;

}  // namespace

void SimFirmware::SetStepper(Stepper state) {
  stepper_ = state;
  progressed_ = true;
}

void SimFirmware::AskForMove(Axis& axis, Stepper start, uint16_t target) {
  axis.up = axis.position < target;
  axis.steps = static_cast<uint16_t>(axis.up ? target - axis.position : axis.position - target);
  SetStepper(start);
}

// The three moves return whether the move was started or is not needed.
bool SimFirmware::MoveTube(uint16_t target) {
  if (!StepperIdle()) return false;
  if (homed_ && tube_.position == target) return true;
  AskForMove(tube_, Stepper::TubeStart, target);
  return true;
}

bool SimFirmware::MoveTable(uint16_t target) {
  return MoveUnderTube(table_, Stepper::TableStart, target);
}

bool SimFirmware::MoveTrolley(uint16_t target) {
  return MoveUnderTube(trolley_, Stepper::TrolleyStart, target);
}

bool SimFirmware::MoveUnderTube(Axis& axis, Stepper start, uint16_t target) {
  if (!StepperIdle()) return false;
  if (homed_ && axis.position == target) return true;
  AskForMove(axis, start, target);
  if (homed_ && tube_.position != 0) {
    // Nothing may pass under a lowered tube: it is raised first.
    stepperNext_ = start;
    AskForMove(tube_, Stepper::TubeStart, 0);
  }
  return true;
}

void SimFirmware::LocatePosition(uint8_t position) {
  tableTarget_ = 0;
  trolleyTarget_ = 0;
  if (position == 0) return;
  const int row = (position - 1) / kPlacesPerRow;
  const int place = position - kPlacesPerRow * row;
  tableTarget_ = static_cast<uint16_t>(row * kTableStepsPerRow);
  trolleyTarget_ = static_cast<uint16_t>(place * kTrolleyStepsPerPlace);
}

SimError SimFirmware::SetHome() {
  if (switchByte_ & kSwitchStepper) return SimError::SteppersActive;
  if (!homed_) {
    homed_ = true;
    tube_.position = 0;
    table_.position = 0;
    trolley_.position = 0;
  }
  return SimError::None;
}

SimError SimFirmware::MoveManually(uint8_t selector, uint16_t target) {
  if (SequenceRuns()) return SimError::SequenceRunning;
  bool started = false;
  switch (selector & 0x38) {
    case static_cast<uint8_t>(SimAxis::Tube):
      started = MoveTube(target);
      break;
    case static_cast<uint8_t>(SimAxis::Table):
      started = MoveTable(target);
      break;
    case static_cast<uint8_t>(SimAxis::Trolley):
      started = MoveTrolley(target);
      break;
    default:
      return SimError::BadCommand;
  }
  if (!started) return SimError::SteppersActive;
  SetSwitch(kSwitchStepper, true);
  // An axis that is there already is reported as a move that ends at once; without this nothing
  // would ever clear the bit again.
  if (StepperIdle()) SetStepper(Stepper::Finishing);
  return SimError::None;
}

void SimFirmware::BeginMove(Axis& axis, SimOperation operation) {
  stepperOperation_ = operation;
  // Refused only while the last step of an aborted move is still being made; tried again then.
  if (!board_.StartMove(axis.drive, axis.up, axis.steps)) return;
  movingAxis_ = &axis;
  SetStepper(Stepper::Moving);
}

void SimFirmware::AbortMove() {
  const uint16_t remaining = board_.CutMove();
  if (movingAxis_) {
    const int made = movingAxis_->steps - remaining;
    movingAxis_->position =
        static_cast<uint16_t>(movingAxis_->position + (movingAxis_->up ? made : -made));
  }
  movingAxis_ = nullptr;
  // A second leg that waited for this one is dropped with it.
  stepperNext_ = Stepper::Finishing;
  SetStepper(Stepper::Finishing);
}

void SimFirmware::RunStepper() {
  switch (stepper_) {
    case Stepper::Finishing:
      SetSwitch(kSwitchStepper, false);
      stepperOperation_ = SimOperation::Idle;
      movingAxis_ = nullptr;
      SetStepper(Stepper::AtRest);
      break;
    case Stepper::AtRest:
      break;
    case Stepper::Aborting:
      AbortMove();
      break;
    case Stepper::TubeStart:
      BeginMove(tube_, tube_.up ? SimOperation::LowerTube : SimOperation::RaiseTube);
      break;
    case Stepper::TableStart:
      BeginMove(table_, SimOperation::LocateSample);
      break;
    case Stepper::TrolleyStart:
      BeginMove(trolley_, SimOperation::LocateSample);
      break;
    case Stepper::Moving:
      if (board_.IsMoving()) break;
      movingAxis_->position = static_cast<uint16_t>(
          movingAxis_->position + (movingAxis_->up ? movingAxis_->steps : -movingAxis_->steps));
      movingAxis_ = nullptr;  // counted: an abort from here on must not count it again
      SetStepper(stepperNext_);
      stepperNext_ = Stepper::Finishing;
      break;
  }
}

}  // namespace rvx::simulator
