#include "module/instrument/conversation.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "module/protocol/frames.h"
#include "module/protocol/identification.h"
#include "platform/log.h"
#include "platform/lost_signal.h"

namespace rvx {
namespace {

constexpr platform::Milliseconds kReplyTimeout{2000};
constexpr platform::Milliseconds kSilence{20000};
constexpr int kMaxResends = 101;

constexpr std::string_view kAbort = "CAB";

// Whether a command starts a run or a motion; an abort ends these.
bool IsEndedByAbort(std::string_view text) {
  const std::string_view command = KindAndTag(text);
  return command == "CST" || command == "CMC" || command == "CPM" || command == "CMP" ||
         command == "CMM";
}

}  // namespace

Conversation::Conversation(ConversationPeer& peer, uint8_t address)
    : peer_(peer), address_(address), reader_(address, this) {}

void Conversation::Start() {
  lastSend_ = lastReply_ = platform::MonotonicTime();
  try {
    thread_ = platform::StartThread("communications", [this] { RunThread(); });
  } catch (const std::system_error& error) {
    platform::Log(platform::LogLevel::Error,
                  std::string("no communications thread: ") + error.what());
  }
}

void Conversation::Stop() {
  stop_.Set();
  if (thread_) thread_->Join();
  thread_.reset();
}

bool Conversation::StopWithin(const platform::Deadline& deadline) {
  stop_.Set();
  return !thread_ || ended_.Wait(deadline);
}

void Conversation::Queue(const std::string& text, CommandClient* client) {
  auto command = std::make_unique<Command>(Command{text, client});
  {
    QueueGuard guard(queue_);
    queue_.Add(std::move(command));
  }
  work_.Set();
}

void Conversation::ForgetClient(CommandClient* client) {
  platform::RecursiveGuard delivery(deliveryLock_);
  {
    QueueGuard guard(queue_);
    queue_.ForgetClient(client);
    // With the queue still locked: the thread moves a command from queue to pending under it.
    platform::PlainGuard pendingGuard(pendingLock_);
    if (pending_ && pending_->client == client) pending_->client = nullptr;
  }
}

void Conversation::Withdraw(const CommandClient* client) {
  platform::RecursiveGuard delivery(deliveryLock_);
  QueueGuard guard(queue_);
  queue_.Withdraw(client);
  platform::PlainGuard pendingGuard(pendingLock_);
  if (!pending_ || pending_->client != client) return;
  pending_->client = nullptr;
  pending_->resends = kMaxResends;
}

void Conversation::SetAutoReportAsked(bool asked) {
  {
    platform::PlainGuard guard(autoReportLock_);
    autoReportAsked_ = asked;
  }
  work_.Set();
}

bool Conversation::WaitUntilIdle(const platform::Deadline& deadline) {
  if (!thread_) return false;
  for (;;) {
    {
      QueueGuard guard(queue_);
      platform::PlainGuard pendingGuard(pendingLock_);
      if (queue_.IsEmpty() && idle_) return true;
    }
    if (!becameIdle_.Wait(deadline)) return false;
  }
}

void Conversation::Receive(std::span<const uint8_t> bytes) {
  receiver_ = platform::CurrentThreadId();
  reader_.Feed(bytes);
  receiver_ = 0;
}

bool Conversation::IsOnSender() const { return platform::CurrentThreadId() == sender_; }

bool Conversation::IsOnItsThreads() const {
  return IsOnSender() || platform::CurrentThreadId() == receiver_;
}

// --- The communications thread ---

void Conversation::RunThread() {
  sender_ = platform::CurrentThreadId();
  while (!stop_.TryWait()) {
    if (const std::optional<std::string> text = TakeCommand()) {
      Exchange(*text);
      continue;
    }
    becameIdle_.Set();
    const platform::Deadline poll = NextPoll();
    if (poll.HasPassed()) {
      {
        platform::PlainGuard guard(pendingLock_);
        idle_ = false;
      }
      Exchange(StatusQuery(address_));
    } else {
      const int woken = platform::WaitForAny({&stop_, &work_}, poll);
      if (woken == platform::kTimedOut)
        platform::ExpectNoLostSignal(work_, [this] { return HasQueued(); });
    }
  }
  SendLastAbort();
  ended_.Set();
}

// The destruction of an instrument waits only some seconds for its last commands, and this thread
// may have been delayed all that time. The instrument must not be left running.
void Conversation::SendLastAbort() {
  std::unique_ptr<Command> abort;
  {
    QueueGuard guard(queue_);
    while (!queue_.IsEmpty() && (!abort || KindAndTag(abort->text) != kAbort))
      abort = queue_.Take();
  }
  if (!abort || KindAndTag(abort->text) != kAbort) return;
  // Sent like any other frame: after the reply to the previous frame, or after its time-out.
  if (awaitsReply_) reply_.Wait(platform::Deadline::At(lastSend_ + kReplyTimeout));
  peer_.SendFrame(MakeFrame(abort->text));
}

bool Conversation::HasQueued() {
  QueueGuard guard(queue_);
  return !queue_.IsEmpty();
}

std::optional<std::string> Conversation::TakeCommand() {
  QueueGuard guard(queue_);
  std::unique_ptr<Command> command = queue_.Take();
  if (!command) return std::nullopt;
  std::string text = command->text;
  platform::PlainGuard pendingGuard(pendingLock_);
  // A command is still pending here only if its wait was ended by a frame that is not its reply: it
  // is dropped as after a time-out.
  pending_ = std::move(command);
  pendingExchange_ = exchanges_ + 1;
  idle_ = false;
  return text;
}

platform::Deadline Conversation::NextPoll() const {
  {
    platform::PlainGuard guard(autoReportLock_);
    if (autoReportAsked_ || autoReportSeen_) {
      // The instrument reports without a poll. If no report comes for long, it has been switched
      // off or restarted in the middle of a run, which only a poll can detect.
      return platform::Deadline::At(std::max(lastSend_, LastFrame()) + kSilence);
    }
  }
  return platform::Deadline::At(lastSend_ + peer_.GetStatusPeriod());
}

void Conversation::Exchange(const std::string& text) {
  BeginExchange();
  peer_.SendFrame(MakeFrame(text));
  lastSend_ = platform::MonotonicTime();
  const int ended =
      platform::WaitForAny({&reply_, &stop_}, platform::Deadline::At(lastSend_ + kReplyTimeout));
  awaitsReply_ = ended == 1;
  if (ended == 0) {
    lastReply_ = platform::MonotonicTime();
  } else {
    if (ended == platform::kTimedOut) {
      platform::ExpectNoLostSignal(reply_, [this] { return IsAnswered(); });
    }
    DropPending();
  }
  {
    platform::PlainGuard guard(pendingLock_);
    idle_ = true;
  }
  // Frames that came without a poll end an outage as a reply does.
  const platform::Microseconds heard = std::max(lastReply_, LastFrame());
  if (ended != 1 && heard > notifiedOf_ && platform::MonotonicTime() - heard > kSilence) {
    notifiedOf_ = heard;
    peer_.InstrumentNotResponding();
  }
}

bool Conversation::IsAnswered() {
  platform::PlainGuard guard(pendingLock_);
  return answeredExchange_ == exchanges_;
}

void Conversation::BeginExchange() {
  platform::PlainGuard guard(pendingLock_);
  ++exchanges_;
  reply_.Reset();
}

void Conversation::EndExchange() {
  {
    platform::PlainGuard guard(pendingLock_);
    if (frameExchange_ != exchanges_) return;
  }
  // Before the event is set: after it the next frame may be sent, and its reply must not be purged.
  peer_.PurgePort();
  platform::PlainGuard guard(pendingLock_);
  if (frameExchange_ != exchanges_) return;
  answeredExchange_ = exchanges_;
  reply_.Set();
}

void Conversation::DropPending() {
  std::unique_ptr<Command> dropped = TakePending();
  if (!dropped) return;
  // Polling goes on even if the command arrived: a status frame that shows Auto Report stops it
  // again.
  if (dropped->text.compare(1, 3, "CAR") == 0) SetAutoReportAsked(false);
}

// --- Replies, on the thread that hands over received bytes ---

void Conversation::FrameReceived(std::span<const uint8_t> frame) {
  {
    platform::PlainGuard guard(pendingLock_);
    frameExchange_ = exchanges_;
  }
  const std::span<const uint8_t> data = ReplyData(frame);
  switch (ClassifyReply(frame)) {
    case ReplyKind::Status:
      if (!StatusReceived(data)) return;  // damaged: the same as no frame
      break;
    case ReplyKind::SelfTest: {
      const std::optional<uint16_t> word = ParseSelfTestWord(data);
      if (!word) return;
      peer_.KeepSelfTest(*word);
      Answer(std::string(kSelfTestTag));
      break;
    }
    case ReplyKind::Identity:
      if (!IsWholeIdentification(frame)) return;  // damaged: the same as no frame
      peer_.KeepIdentity(frame);
      Answer(std::string(kIdentityTag));
      break;
    case ReplyKind::Unknown:
      break;  // a reply to no command, but a frame has come
  }
  lastFrame_ = platform::MonotonicTime().count();
  peer_.FrameProcessed();
  EndExchange();
}

bool Conversation::StatusReceived(std::span<const uint8_t> data) {
  const std::optional<StatusRecord> record = peer_.KeepStatus(data);
  if (!record) return false;
  AnswerByStatus(*record);
  peer_.FollowStatus(*record);
  FollowAutoReport(record->switchByte());
  return true;
}

void Conversation::FollowAutoReport(uint8_t switchByte) {
  bool pollAgain = false;
  {
    platform::PlainGuard guard(autoReportLock_);
    if ((switchByte & kSwitchAutoReport) != 0) {
      autoReportSeen_ = true;
      autoReportAsked_ = false;
    } else if (!autoReportAsked_) {
      pollAgain = autoReportSeen_;
      autoReportSeen_ = false;
    }
  }
  if (pollAgain) work_.Set();
}

std::unique_ptr<Command> Conversation::TakePending() {
  platform::PlainGuard guard(pendingLock_);
  return std::move(pending_);
}

std::unique_ptr<Command> Conversation::TakeAnswered() {
  platform::PlainGuard guard(pendingLock_);
  if (pendingExchange_ > frameExchange_) return nullptr;
  return std::move(pending_);
}

void Conversation::Answer(const std::string& tag) {
  platform::RecursiveGuard delivery(deliveryLock_);
  const std::unique_ptr<Command> command = TakeAnswered();
  if (command && command->client != nullptr) command->client->CommandReply(tag);
}

void Conversation::AnswerByStatus(const StatusRecord& record) {
  platform::RecursiveGuard delivery(deliveryLock_);
  std::unique_ptr<Command> command = TakeAnswered();
  if (!command) return;
  const bool asksForResend = AsksForResend(record.errorCode());
  if (asksForResend && command->resends < kMaxResends) {
    ++command->resends;
    {
      // Goes after what has been queued meanwhile; the client is not called.
      QueueGuard guard(queue_);
      // After a queued abort the command would start again what the abort is to end, and nothing
      // would supervise it.
      if (!IsEndedByAbort(command->text) || !queue_.Holds(kAbort)) queue_.Add(std::move(command));
    }
    // The communications thread may have ended the refused exchange already and be waiting for
    // work.
    work_.Set();
    return;
  }
  // The empty tag: the instrument did not accept the command.
  const std::string tag = asksForResend ? std::string() : record.lastTag();
  if (command->client != nullptr) command->client->CommandReply(tag);
  if (asksForResend) SetAutoReportAsked(false);
}

}  // namespace rvx
