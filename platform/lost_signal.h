// A watch for signals that never come: a thread waits for an event with a time-out, the time-out
// ends the wait, and what the event announces has happened long ago.
#pragma once

#include <utility>

#include "platform/event.h"

namespace platform {

namespace detail {
bool WatchesForLostSignals();
void SuspectLostSignal(Event& event);
}  // namespace detail

// To be called after a wait for `event` that its deadline has ended. `holds` returns whether what
// the event announces is the case; it may take locks. If it is, and nobody sets the event during
// the next minute (the thread that announces it may be about to), the signal was lost: the run is
// reported and ends. Under virtual time with VirtualOptions::lostSignals; otherwise `holds` is not
// called.
template <class Condition>
void ExpectNoLostSignal(Event& event, Condition&& holds) {
  if (detail::WatchesForLostSignals() && std::forward<Condition>(holds)()) {
    detail::SuspectLostSignal(event);
  }
}

}  // namespace platform
