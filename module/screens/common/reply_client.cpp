#include "module/screens/common/reply_client.h"

#include <utility>

#include "module/toolkit/gui_thread.h"

namespace rvx {
namespace {

constexpr int kLookInterval =
    50;  // ms, of checks of the deadline, which is in the time of platform/

}  // namespace

ReplyClient::ReplyClient(C_RVX& instrument)
    : CommandClient(&instrument),
      instrument_(instrument),
      replyError_(instrument),
      link_(std::make_shared<Link>()) {
  AssertGuiThread("ReplyClient");
  link_->client = this;
  QObject::connect(&look_, &QTimer::timeout, &look_, [this] {
    if (!deadline_.HasPassed()) return;
    const Done done = std::exchange(done_, nullptr);
    Cancel();
    if (done) done({});
  });
}

ReplyClient::~ReplyClient() {
  Cancel();
  Detach();
  link_->client = nullptr;
}

bool ReplyClient::Send(const std::function<void(CommandClient*)>& send,
                       platform::Milliseconds timeout, Done done) {
  AssertGuiThread("ReplyClient::Send");
  if (IsWaiting()) return false;
  {
    platform::PlainGuard guard(lock_);
    ++number_;
  }
  done_ = std::move(done);
  deadline_ = platform::Deadline::After(timeout);
  look_.start(kLookInterval);
  send(this);
  return true;
}

void ReplyClient::Cancel() {
  look_.stop();
  done_ = nullptr;
  {
    platform::PlainGuard guard(lock_);
    ++number_;
  }
  instrument_.WithdrawCommands(this);
}

void ReplyClient::CommandReply(const std::string& tag) {
  uint64_t number = 0;
  {
    platform::PlainGuard guard(lock_);
    number = number_;
  }
  const uint8_t error = replyError_.Take(tag);
  const auto kind =
      tag.empty() || error != 0 ? CommandResult::Kind::Refused : CommandResult::Kind::Replied;
  PostToGuiThread([link = link_, number, result = CommandResult{kind, tag, error}] {
    if (link->client != nullptr) link->client->TakeReply(number, result);
  });
}

void ReplyClient::TakeReply(uint64_t number, const CommandResult& result) {
  {
    platform::PlainGuard guard(lock_);
    if (number != number_) return;
  }
  look_.stop();
  // Taken out first: after the call this object may be destroyed, as its screen may have closed.
  const Done done = std::exchange(done_, nullptr);
  if (!done) return;
  done(result);
}

}  // namespace rvx
