// The client of commands whose reply nobody waits for.
#pragma once

#include <string>

#include "module/instrument/command.h"
#include "module/instrument/configuration_record.h"

namespace rvx {

// Keeps a non-empty tag as the instrument's last reply.
class LastReplyClient : public CommandClient {
 public:
  // `configuration` is the instrument's.
  LastReplyClient(C_RVX& instrument, ConfigurationRecord& configuration)
      : CommandClient(&instrument), configuration_(configuration) {}
  ~LastReplyClient() override { Detach(); }
  void CommandReply(const std::string& tag) override {
    if (tag.empty()) return;
    ConfigurationGuard guard(configuration_);
    configuration_.fields.lastReply = tag;
  }

 private:
  ConfigurationRecord& configuration_;
};

}  // namespace rvx
