#include "module/entry/rvx_listener.h"

#include "module/protocol/frames.h"

namespace rvx {

void RVXListener::Try(uint8_t address) {
  platform::PlainGuard guard(lock_);
  address_ = address;
  reply_.reset();
}

std::optional<std::string> RVXListener::Found() {
  platform::PlainGuard guard(lock_);
  return reply_;
}

void RVXListener::Receive(std::span<const uint8_t> bytes) {
  for (const uint8_t c : bytes) {
    std::optional<std::string> reply = listener_.Feed(c);
    if (!reply) continue;
    platform::PlainGuard guard(lock_);
    if (IsOwnAddress(static_cast<uint8_t>(reply->front()), address_)) reply_ = std::move(reply);
  }
}

}  // namespace rvx
