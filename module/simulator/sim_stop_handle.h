// Connects an instrument with its simulator: carries reply frames to the instrument, and stops the
// simulator.
#pragma once

#include <cstdint>
#include <span>

#include "platform/annotations.h"
#include "platform/event.h"
#include "platform/lock.h"

namespace rvx::simulator {

// Receives what the simulated controller sends, as a port's watcher receives what comes from a
// line.
class SimReceiver {
 public:
  virtual ~SimReceiver() = default;
  // One whole reply frame, from its start character to its CR. Called on the simulator's main
  // thread with the stop handle's lock held: it must not destroy the simulator and must not wait
  // for its threads.
  virtual void Receive(std::span<const uint8_t> frame) = 0;
};

// Comes before all locks of the instrument, since a receiver takes those while a frame is handed
// over. For the same reason RequestStop must not be called with one of them held.
inline constexpr platform::LockRank kSimStopLockRank = 50;

// Owned by the instrument; outlives the simulator.
class SimStopHandle {
 public:
  // `receiver` must live until RequestStop has returned.
  explicit SimStopHandle(SimReceiver& receiver);

  // Ends the simulator's threads soon. When it returns, no frame is being delivered and none will
  // be. Any thread may call it, also again; not from inside Receive.
  void RequestStop() EXCLUDES(lock_);

  // Hands a frame to the receiver, or drops it after RequestStop. Simulator's main thread only.
  void Deliver(std::span<const uint8_t> frame) EXCLUDES(lock_);

  // Set from RequestStop on, and never cleared.
  platform::Event& event() { return event_; }

 private:
  platform::PlainLock lock_{"simulator stop", kSimStopLockRank};
  bool stopped_ GUARDED_BY(lock_) = false;
  SimReceiver& receiver_ GUARDED_BY(lock_);
  platform::Event event_{"simulator stop", platform::Event::Mode::ManualReset};
};

}  // namespace rvx::simulator
