// Events: the one thing that a thread waits for. A wait ends when the event is set or the deadline
// has passed, whichever the thread sees first.
#pragma once

#include <initializer_list>
#include <memory>
#include <span>

#include "platform/time_base.h"

namespace platform {

class EventState;
class Event;

namespace detail {
void SuspectLostSignal(Event& event);
}

class Event {
 public:
  enum class Mode {
    AutoReset,   // a wait that succeeds clears it: one Set wakes one waiter
    ManualReset  // stays set until Reset
  };
  // `name` must live as long as the event; a literal does.
  explicit Event(const char* name, Mode mode = Mode::AutoReset);
  ~Event();
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  // True if the event was set (and, for AutoReset, is cleared by this), false at the deadline.
  bool Wait(const Deadline& deadline = Deadline::Never());
  bool Wait(Milliseconds timeout) { return Wait(Deadline::After(timeout)); }
  // Wait with no time: a test that clears an AutoReset event. Gives no other thread a turn.
  bool TryWait();

 private:
  friend int WaitForAny(std::span<Event* const> events, const Deadline& deadline);
  friend void detail::SuspectLostSignal(Event& event);
  std::unique_ptr<EventState> state_;
};

inline constexpr int kTimedOut = -1;

// Waits for the first of several events, tested in the order given: its index, which clears it if
// it is AutoReset; or kTimedOut. The others are left as they are.
int WaitForAny(std::span<Event* const> events, const Deadline& deadline);
inline int WaitForAny(std::initializer_list<Event*> events, const Deadline& deadline) {
  return WaitForAny(std::span<Event* const>(events.begin(), events.size()), deadline);
}

// Sleeps for a duration of the base's time.
void Sleep(Milliseconds duration);

}  // namespace platform
