// Commands waiting to be sent, first in, first out.
#pragma once

#include <algorithm>
#include <deque>
#include <memory>
#include <string_view>

#include "module/instrument/command.h"
#include "module/instrument/lock_ranks.h"
#include "platform/lock.h"
#include "platform/mutant.h"

namespace rvx {

// Add, Take and the rest run between Lock and Unlock.
class CAPABILITY("mutex") CCommandQueue {
 public:
  void Lock() ACQUIRE() NO_THREAD_SAFETY_ANALYSIS { lock_.Lock(); }
  void Unlock() RELEASE() NO_THREAD_SAFETY_ANALYSIS { lock_.Unlock(); }

  void Add(std::unique_ptr<Command> command) REQUIRES(this) {
    commands_.push_back(std::move(command));
  }
  // Removes and returns the first, or null if the queue is empty.
  std::unique_ptr<Command> Take() REQUIRES(this) {
    if (commands_.empty()) return nullptr;
    if (platform::IsPlanted("queue-reversed")) std::swap(commands_.front(), commands_.back());
    std::unique_ptr<Command> first = std::move(commands_.front());
    commands_.pop_front();
    return first;
  }
  bool IsEmpty() const REQUIRES(this) { return commands_.empty(); }
  // Whether a command with this kind and tag waits, as "CAB".
  bool Holds(std::string_view kindAndTag) const REQUIRES(this) {
    return std::any_of(commands_.begin(), commands_.end(), [&](const auto& command) {
      return KindAndTag(command->text) == kindAndTag;
    });
  }
  // The commands of this client still go out; nobody hears their replies.
  void ForgetClient(const CommandClient* client) REQUIRES(this) {
    for (const std::unique_ptr<Command>& command : commands_) {
      if (command->client == client) command->client = nullptr;
    }
  }
  // The commands of this client do not go out.
  void Withdraw(const CommandClient* client) REQUIRES(this) {
    std::erase_if(commands_, [&](const auto& command) { return command->client == client; });
  }

 private:
  platform::PlainLock lock_{"command queue", kQueueLockRank};
  std::deque<std::unique_ptr<Command>> commands_;
};
using QueueGuard = platform::LockGuard<CCommandQueue>;

}  // namespace rvx
