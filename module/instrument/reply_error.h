// The error that an instrument reports together with the reply to a command.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "module/instrument/error_clients.h"

namespace rvx {

class C_RVX;

// For a client that waits for a reply and tells its user itself what became of the command: the
// error is then not reported to the host too. Made and destroyed on any thread, with no lock held.
class ReplyError final : private InstrErrorClient {
 public:
  // `instrument` must outlive it.
  explicit ReplyError(C_RVX& instrument);
  ~ReplyError() override;
  ReplyError(const ReplyError&) = delete;
  ReplyError& operator=(const ReplyError&) = delete;

  // Call it in CommandReply with the tag of the reply: returns the error code beside the tag, 0 if
  // there is none, or if the instrument has only asked for the command again.
  uint8_t Take(const std::string& tag);

 private:
  int32_t InstrumentError(uint8_t code) override;

  C_RVX& instrument_;
  // The number of the status frame with the error; 0 for none. The error is reported after the
  // reply, with the same frame.
  std::atomic<uint64_t> frame_{0};
};

}  // namespace rvx
