// Ctrl+C, a request to end and a closed terminal (SIGINT, SIGTERM, SIGHUP), as an event that a
// thread can wait for.
#pragma once

#include <memory>

#include "platform/event.h"

namespace platform {

namespace detail {
void HandSignalsOn();
}

// One at a time, made and ended by the program's own threads. Catches the signals from its
// construction to its destruction. Real and paced base: a thread of its own waits for them. Virtual
// base: the scheduler sees them at its next point.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  // Set at each signal; auto-reset.
  Event& event();
  // Signals so far.
  int count() const;

 private:
  class State;
  friend void detail::HandSignalsOn();
  // Virtual base: the scheduler has seen that many signals.
  void CountSignals(int signals);

  std::unique_ptr<State> state_;
};

}  // namespace platform
