// Commands waiting to be sent, first in, first out.
#pragma once

#include <deque>
#include <memory>
#include <string_view>

#include "module/instrument/command.h"
#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"

namespace rvx {

// Add, Take and the rest run between Lock and Unlock.
class CAPABILITY("mutex") CCommandQueue {
 public:
  void Lock() ACQUIRE() { lock_.Lock(); }
  void Unlock() RELEASE() { lock_.Unlock(); }

  void Add(std::unique_ptr<Command> command) REQUIRES(this);
  // Removes and returns the first, or null if the queue is empty.
  std::unique_ptr<Command> Take() REQUIRES(this);
  bool IsEmpty() const REQUIRES(this) { return commands_.empty(); }
  // Whether a command with this kind and tag, such as "CAB", is in the queue.
  bool Holds(std::string_view kindAndTag) const REQUIRES(this);
  // The commands of this client are still sent; their replies go to no client.
  void ForgetClient(const CommandClient* client) REQUIRES(this);
  // Removes the commands of this client.
  void Withdraw(const CommandClient* client) REQUIRES(this);

 private:
  platform::PlainLock lock_{"command queue", kQueueLockRank};
  std::deque<std::unique_ptr<Command>> commands_;
};
using QueueGuard = platform::LockGuard<CCommandQueue>;

}  // namespace rvx
