// Physics of the stepper drive: the pulse train of one move, served in rounds of five milliseconds.
#pragma once

#include <cstdint>

#include "platform/time_base.h"

namespace rvx::simulator {

// The stepper drives, by their bit on the board.
enum class SimAxis : uint8_t { None = 0, Tube = 0x08, Table = 0x10, Trolley = 0x20 };

// A step is a round with the pulse output on and one with it off. Plain data, no clock.
class PulseTrain {
 public:
  static constexpr platform::Microseconds kRound = platform::Milliseconds(5);

  // Begins a move. False, and nothing happens, while one is under way.
  bool Start(SimAxis axis, bool up, uint16_t steps);

  // Serves a number of rounds at once, with the result of serving them one by one.
  void Serve(int64_t rounds);

  // Ends the move with the step that is under way. Returns the steps that will not be made; 0
  // without a move.
  uint16_t Cut();

  bool busy() const { return busy_; }
  // Rounds until the move is over; 0 without a move. A move of no steps takes one round.
  int64_t RoundsToEnd() const;

 private:
  SimAxis axis_ = SimAxis::None;
  bool up_ = false;
  uint16_t steps_ = 0;  // steps to go
  bool pulseOn_ = false;
  bool busy_ = false;
};

}  // namespace rvx::simulator
