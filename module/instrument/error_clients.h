// Who takes care of an instrument's errors before they are reported to the host.
#pragma once

#include <cstdint>
#include <vector>

#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

// Takes care of an instrument's error itself by answering non-zero. Called on the reader's thread,
// with the lock of the clients held, so that a client that has been removed is not called any more.
class InstrErrorClient {
 public:
  virtual ~InstrErrorClient() = default;
  virtual int32_t InstrumentError(uint8_t code) = 0;
};

// Any thread.
class ErrorClients {
 public:
  // Not owned: remove it before it goes.
  void Add(InstrErrorClient* client);
  // Waits out a call that is under way, except from inside that call.
  void Remove(InstrErrorClient* client);
  // Asks the clients in the order in which they were added: true if one takes care of the error.
  bool TakeCareOf(uint8_t code);

 private:
  platform::RecursiveLock lock_{"error clients", kErrorClientsLockRank};
  std::vector<InstrErrorClient*> clients_ GUARDED_BY(lock_);
};

}  // namespace rvx
