#include "module/simulator/sim_board.h"

#include <algorithm>
#include <utility>

#include "module/simulator/cell_temperature.h"

namespace rvx::simulator {
namespace {

constexpr int kMaxReading = 0xFFFF;

}  // namespace

SimBoard::SimBoard(platform::Event& ownStop, std::unique_ptr<RotorModel> rotorModel)
    : ownStop_(ownStop),
      rotorModel_(rotorModel ? std::move(rotorModel) : std::make_unique<SteadyRotor>()),
      lastTick_(platform::MonotonicTime()) {}

int64_t SimBoard::AdvanceClock(bool stepwise) {
  const platform::Microseconds now = platform::MonotonicTime();
  int64_t due = (now - lastTick_) / kTick;
  if (stepwise && due > 1) {
    due = 1;
    lastTick_ = now;
  } else {
    lastTick_ += due * kTick;
  }
  // What is injected stays in the cell until the next injection.
  if (outputs_.injection && outputs_.sample != 0) oilInCell_ = outputs_.sample;
  platform::PlainGuard guard(temperatureLock_);
  return ticks_ += due;
}

uint16_t SimBoard::RotorSpeedCounts() {
  RotorConditions conditions{outputs_.rotor > 0, 0, 0, oilInCell_};
  {
    platform::PlainGuard guard(temperatureLock_);
    CatchUpCell();
    conditions.cellCounts = cell_.actual;
    conditions.tick = ticks_;
  }
  return rotorModel_->SpeedCounts(conditions);
}

void SimBoard::CatchUpCell() {
  cell_.actual = AdvanceCell(cell_.actual, cell_.target, ticks_ - cellTicks_);
  cellTicks_ = ticks_;
}

SimCell SimBoard::Cell() {
  platform::PlainGuard guard(temperatureLock_);
  CatchUpCell();
  SimCell reading = cell_;
  const int noisy = int{cell_.actual} + rotorModel_->TemperatureNoise(ticks_);
  reading.actual = static_cast<uint16_t>(std::clamp(noisy, 0, kMaxReading));
  return reading;
}

void SimBoard::SetTarget(uint16_t counts) {
  platform::PlainGuard guard(temperatureLock_);
  // The steps that are due go towards the old target, so they are made first.
  CatchUpCell();
  cell_.target = counts;
}

void SimBoard::CatchUpMotion() {
  const int64_t rounds = (platform::MonotonicTime() - servedUntil_) / PulseTrain::kRound;
  train_.Serve(rounds);
  servedUntil_ += rounds * PulseTrain::kRound;
}

bool SimBoard::StartMove(SimAxis axis, bool up, uint16_t steps) {
  {
    platform::PlainGuard guard(motionLock_);
    CatchUpMotion();
    if (!train_.Start(axis, up, steps)) return false;
    servedUntil_ = platform::MonotonicTime();
    endToTell_ = true;
  }
  motionChanged_.Set();
  return true;
}

bool SimBoard::IsMoving() {
  platform::PlainGuard guard(motionLock_);
  CatchUpMotion();
  return train_.busy();
}

uint16_t SimBoard::CutMove() {
  uint16_t remaining = 0;
  {
    platform::PlainGuard guard(motionLock_);
    CatchUpMotion();
    remaining = train_.Cut();
  }
  motionChanged_.Set();
  return remaining;
}

platform::Deadline SimBoard::ServeMotion() {
  {
    platform::PlainGuard guard(motionLock_);
    if (!endToTell_) return platform::Deadline::Never();
    CatchUpMotion();
    if (train_.busy()) {
      return platform::Deadline::At(servedUntil_ + train_.RoundsToEnd() * PulseTrain::kRound);
    }
    endToTell_ = false;
  }
  moveEnded_.Set();
  return platform::Deadline::Never();
}

void SimBoard::Run() {
  for (;;) {
    const platform::Deadline wakeUp = ServeMotion();
    if (platform::WaitForAny({&ownStop_, &motionChanged_}, wakeUp) == 0) return;
  }
}

}  // namespace rvx::simulator
