// Signals that arrived under virtual time, for the scheduler to hand on.
#pragma once

#include <atomic>

namespace platform::detail {

// Set by the signal handler.
extern std::atomic<bool> signalPending;

// Sets the event of the interrupt watch once for each signal that came.
void HandSignalsOn();

inline void DeliverSignals() {
  if (signalPending.load(std::memory_order_relaxed)) HandSignalsOn();
}

}  // namespace platform::detail
