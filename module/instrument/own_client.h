// The client of commands that nobody waits for.
#pragma once

#include <string>

#include "module/instrument/c_rvx.h"

namespace rvx {

// Keeps a non-empty tag as the instrument's last reply.
class C_RVX::OwnClient : public CommandClient {
 public:
  explicit OwnClient(C_RVX& instrument) : CommandClient(&instrument), owner_(instrument) {}
  ~OwnClient() override { Detach(); }
  void CommandReply(const std::string& tag) override {
    if (tag.empty()) return;
    ConfigurationGuard guard(owner_.configuration_);
    owner_.configuration_.lastReply = tag;
  }

 private:
  C_RVX& owner_;
};

}  // namespace rvx
