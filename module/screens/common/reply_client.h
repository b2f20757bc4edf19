// Commands of a screen that waits for their replies.
#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <string>

#include "module/instrument/c_rvx.h"
#include "module/instrument/reply_error.h"
#include "platform/lock.h"
#include "platform/time_base.h"

namespace rvx {

struct CommandResult {
  enum class Kind {
    Replied,  // `tag` is the reply's
    Refused,  // the instrument did not accept the command; nobody else reports it
    NoReply   // nothing came in time; the command was withdrawn if it was still queued
  };
  Kind kind = Kind::NoReply;
  std::string tag;
  uint8_t error = 0;  // of a refused command; 0 if the instrument gave no reason
};

// Sends one command at a time and reports on the GUI thread its reply, or that none has come: it
// has its own time-out, because nothing else ends the wait for an instrument that does not reply.
// Made, used and destroyed on the GUI thread; it may be destroyed before the reply.
class ReplyClient final : private CommandClient {
 public:
  using Done = std::function<void(const CommandResult& result)>;

  explicit ReplyClient(C_RVX& instrument);
  ~ReplyClient() override;

  // Has `send` queue one command with the client that it is given. `done` is called once, unless
  // this object is destroyed or Cancel is called before. `timeout` counts from now, in the time of
  // platform/. Returns false and sends nothing while an earlier command still waits.
  bool Send(const std::function<void(CommandClient* client)>& send, platform::Milliseconds timeout,
            Done done);
  // Takes the command back if it was not sent yet; `done` is not called.
  void Cancel();
  bool IsWaiting() const { return done_ != nullptr; }

 private:
  // What a posted reply uses, since this object may have been destroyed.
  struct Link {
    ReplyClient* client = nullptr;  // GUI thread
  };

  void CommandReply(const std::string& tag) override;
  void TakeReply(uint64_t number, const CommandResult& result);

  C_RVX& instrument_;
  ReplyError replyError_;
  Done done_;  // null when nothing waits
  platform::Deadline deadline_ = platform::Deadline::Never();
  QTimer look_;
  const std::shared_ptr<Link> link_;

  platform::PlainLock lock_{"screen reply", platform::kLeafRank};
  // Of the present command: a reply to an earlier one may still be on its way to the GUI thread.
  uint64_t number_ GUARDED_BY(lock_) = 0;
};

}  // namespace rvx
