#include "module/simulator/pulse_train.h"

namespace rvx::simulator {

bool PulseTrain::Start(SimAxis axis, bool up, uint16_t steps) {
  if (busy_) return false;
  axis_ = axis;
  up_ = up;
  steps_ = steps;
  pulseOn_ = false;
  busy_ = true;
  return true;
}

int64_t PulseTrain::RoundsToEnd() const {
  if (!busy_) return 0;
  if (steps_ == 0) return 1;
  return 2 * int64_t{steps_} - (pulseOn_ ? 1 : 0);
}

void PulseTrain::Serve(int64_t rounds) {
  if (!busy_) return;
  if (rounds >= RoundsToEnd()) {
    steps_ = 0;
    pulseOn_ = false;
    busy_ = false;
    return;
  }
  // Half steps made since the beginning of the step under way.
  const int64_t halfSteps = rounds + (pulseOn_ ? 1 : 0);
  steps_ = static_cast<uint16_t>(steps_ - halfSteps / 2);
  pulseOn_ = halfSteps % 2 != 0;
}

uint16_t PulseTrain::Cut() {
  // A move of no steps has no step to leave out; it ends by itself with its round.
  if (!busy_ || steps_ == 0) return 0;
  const auto remaining = static_cast<uint16_t>(steps_ - 1);
  steps_ = 1;
  return remaining;
}

}  // namespace rvx::simulator
