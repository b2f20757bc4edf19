// The controller's hardware: clock, outputs, cell temperature and stepper drive.
#pragma once

#include <cstdint>
#include <memory>

#include "module/simulator/pulse_train.h"
#include "module/simulator/rotor_model.h"
#include "platform/annotations.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/time_base.h"

namespace rvx::simulator {

// A temperature and its target, in ADC counts.
struct SimCell {
  uint16_t actual = 0xE200;  // -2.2 degrees C with the probe constants of a new instrument
  uint16_t target = 0xFFFF;
};

// What the firmware drives directly. The bytes are what a command gave; 0 is off.
struct SimOutputs {
  bool injection = false;
  uint8_t temperatureControl =
      0;  // a flag of the thermoelectrics; the model follows its target anyway
  uint8_t rotor = 0;
  uint8_t cooling = 0;
  uint8_t sample = 0;  // tray position (from 1) that is under the tube; 0: none yet
};

// Nothing here runs by itself: the clock is brought up to the present by the simulator's main
// thread, the temperature follows the clock, and the motion is brought up to date when it is read,
// with the same result as if each round had been served on time. The board's thread only announces
// the end of a move.
class SimBoard {
 public:
  static constexpr platform::Microseconds kTick = platform::Milliseconds(500);

  // `ownStop` ends Run. A null `rotorModel` means SteadyRotor.
  SimBoard(platform::Event& ownStop, std::unique_ptr<RotorModel> rotorModel);

  // The board's thread: returns when `ownStop` is set.
  void Run();

  // Brings the clock up to date and returns its ticks, half seconds since the board was made. The
  // temperature makes its steps by the same clock. With `stepwise` the clock advances by one tick
  // at most, so a thread that was held up stretches it: a run counts the ticks and must see each of
  // them, or it would end before its readings are complete. Main thread of the simulator only.
  int64_t AdvanceClock(bool stepwise) EXCLUDES(temperatureLock_);
  // The moment of the next tick. Main thread only.
  platform::Microseconds NextTick() const { return lastTick_ + kTick; }

  // Main thread of the simulator only.
  SimOutputs& outputs() { return outputs_; }
  // The oil is as cold as the cell really is; the noise of the probe does not change it.
  uint16_t RotorSpeedCounts() EXCLUDES(temperatureLock_);

  // The cell at the clock's present tick, as its probe reads it; any thread.
  SimCell Cell() EXCLUDES(temperatureLock_);
  void SetTarget(uint16_t counts) EXCLUDES(temperatureLock_);

  // Begins a move of `steps` steps, 10 ms each. False while a move is under way. Any thread.
  bool StartMove(SimAxis axis, bool up, uint16_t steps) EXCLUDES(motionLock_);
  bool IsMoving() EXCLUDES(motionLock_);
  // Ends the move with the step under way. Returns the steps that will not be made.
  uint16_t CutMove() EXCLUDES(motionLock_);
  // Set once after each move has come to its end.
  platform::Event& moveEnded() { return moveEnded_; }

 private:
  platform::Deadline ServeMotion() EXCLUDES(motionLock_);
  void CatchUpMotion() REQUIRES(motionLock_);
  void CatchUpCell() REQUIRES(temperatureLock_);

  platform::Event& ownStop_;                // constant after construction
  std::unique_ptr<RotorModel> rotorModel_;  // constant after construction

  // Main thread of the simulator only.
  platform::Microseconds lastTick_;
  SimOutputs outputs_;
  uint8_t oilInCell_ = 0;  // as SimOutputs::sample

  platform::PlainLock temperatureLock_{"simulator temperature", platform::kLeafRank};
  SimCell cell_ GUARDED_BY(temperatureLock_);
  int64_t ticks_ GUARDED_BY(temperatureLock_) = 0;
  int64_t cellTicks_ GUARDED_BY(temperatureLock_) = 0;  // steps of the model made so far

  platform::PlainLock motionLock_{"simulator motion", platform::kLeafRank};
  PulseTrain train_ GUARDED_BY(motionLock_);
  platform::Microseconds servedUntil_ GUARDED_BY(motionLock_){0};
  bool endToTell_ GUARDED_BY(motionLock_) =
      false;  // a move was begun and its end is not announced yet

  platform::Event motionChanged_{"simulator motion changed"};
  platform::Event moveEnded_{"simulator move ended"};
};

}  // namespace rvx::simulator
