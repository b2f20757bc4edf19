#include "module/instrument/command_queue.h"

#include <algorithm>
#include <utility>

namespace rvx {

void CCommandQueue::Add(std::unique_ptr<Command> command) {
  commands_.push_back(std::move(command));
}

std::unique_ptr<Command> CCommandQueue::Take() {
  if (commands_.empty()) return nullptr;
  std::unique_ptr<Command> first = std::move(commands_.front());
  commands_.pop_front();
  return first;
}

bool CCommandQueue::Holds(std::string_view kindAndTag) const {
  return std::any_of(commands_.begin(), commands_.end(),
                     [&](const auto& command) { return KindAndTag(command->text) == kindAndTag; });
}

void CCommandQueue::ForgetClient(const CommandClient* client) {
  for (const std::unique_ptr<Command>& command : commands_) {
    if (command->client == client) command->client = nullptr;
  }
}

void CCommandQueue::Withdraw(const CommandClient* client) {
  std::erase_if(commands_, [&](const auto& command) { return command->client == client; });
}

}  // namespace rvx
