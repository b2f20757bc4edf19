// The clients that may handle an instrument's errors before they are reported to the host.
#pragma once

#include <cstdint>
#include <vector>

#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

// Handles an instrument's error itself, and then returns non-zero. Called on the thread that hands
// over received bytes, with the lock of the clients held, so that a client that has been removed is
// not called any more.
class InstrErrorClient {
 public:
  virtual ~InstrErrorClient() = default;
  virtual int32_t InstrumentError(uint8_t code) = 0;
};

// Any thread.
class ErrorClients {
 public:
  // Not owned: remove the client before it is destroyed.
  void Add(InstrErrorClient* client);
  // Waits for a call in progress, unless it is called from inside that call.
  void Remove(InstrErrorClient* client);
  // Calls the clients in the order in which they were added; returns true as soon as one handles
  // the error.
  bool TakeCareOf(uint8_t code);

 private:
  platform::RecursiveLock lock_{"error clients", kErrorClientsLockRank};
  std::vector<InstrErrorClient*> clients_ GUARDED_BY(lock_);
};

}  // namespace rvx
