// The serial conversation with one instrument: the command queue, the communications thread, and
// the routing of replies to the clients that wait for them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "module/instrument/command.h"
#include "module/instrument/command_queue.h"
#include "module/instrument/lock_ranks.h"
#include "module/protocol/reply_reader.h"
#include "module/protocol/status_record.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"

namespace rvx {

// What the conversation needs of its instrument. Calls come on the communications thread (Send,
// NotResponding, GetStatusPeriod) and on the thread that hands over received bytes (the rest),
// without any lock of the conversation held.
class ConversationPeer {
 public:
  virtual ~ConversationPeer() = default;
  virtual void SendFrame(std::span<const uint8_t> frame) = 0;
  virtual void PurgePort() = 0;
  virtual platform::Milliseconds GetStatusPeriod() = 0;
  virtual void InstrumentNotResponding() = 0;
  // Keeps the record; called before the client of the command that it replies to. Returns nothing
  // if the data are not a status record.
  virtual std::optional<StatusRecord> KeepStatus(std::span<const uint8_t> data) = 0;
  // Reacts to a record; called after the client.
  virtual void FollowStatus(const StatusRecord& record) = 0;
  virtual void KeepIdentity(std::span<const uint8_t> frame) = 0;
  virtual void KeepSelfTest(uint16_t word) = 0;
  // Called after all changes that a frame causes: wakes the threads that wait for a new status.
  virtual void FrameProcessed() = 0;
};

// Locks: delivery, then queue, then pending. A client is called under the delivery lock alone, so
// it may queue commands from inside, and ForgetClient, which takes the same lock, waits for a call
// in progress.
class Conversation : private FrameHandler {
 public:
  // `peer` is not owned and must outlive this.
  Conversation(ConversationPeer& peer, uint8_t address);
  // Stop must have been called.
  ~Conversation() override = default;

  // Starts the communications thread. If the system has no thread left, no communication ever
  // happens.
  void Start();
  // Ends the thread and waits for its end. Of what is still queued only an abort is sent.
  void Stop();
  // The same for a caller that must not wait for ever: returns false at the deadline.
  bool StopWithin(const platform::Deadline& deadline);

  // Queues a command; returns at once. `client` must not be null. Any thread.
  void Queue(const std::string& text, CommandClient* client);
  // No reply reaches the client afterwards; its commands are still sent. Any thread, also from the
  // client's own call.
  void ForgetClient(CommandClient* client);
  // Cancels the client's commands: those in the queue are not sent any more, the one that waits for
  // its reply is not sent again, and no reply to them reaches the client. Any thread.
  void Withdraw(const CommandClient* client);
  // Called after CAR was queued: polling stops at once when Auto Report is requested, and goes on
  // with the first status frame that shows it off.
  void SetAutoReportAsked(bool asked);
  // Whether the caller is the communications thread.
  bool IsOnSender() const;
  // Whether the caller is the communications thread or is inside Receive.
  bool IsOnItsThreads() const;
  // Waits until nothing is queued and no reply is awaited: false at the deadline.
  bool WaitUntilIdle(const platform::Deadline& deadline);
  // Takes received bytes. One thread at a time.
  void Receive(std::span<const uint8_t> bytes);

 private:
  void FrameReceived(std::span<const uint8_t> frame) override;

  void RunThread();
  bool HasQueued();
  // Makes the first queued command pending: its text, or nothing if the queue is empty.
  std::optional<std::string> TakeCommand();
  // When the next poll is due; only after a long silence while Auto Report is on or requested.
  platform::Deadline NextPoll() const;
  void Exchange(const std::string& text);
  // Counts an exchange, just before its frame goes out.
  void BeginExchange();
  // Whether a frame has come after the one that was sent last.
  bool IsAnswered();
  // The frame in hand ends the exchange that it belongs to.
  void EndExchange();
  void DropPending();
  // The thread's last act: an abort that still waits in the queue.
  void SendLastAbort();

  bool StatusReceived(std::span<const uint8_t> data);  // false if the data are not a status
  void FollowAutoReport(uint8_t switchByte);
  // The pending command, if the frame in hand can be its reply. On the thread that hands over
  // received bytes.
  std::unique_ptr<Command> TakeAnswered();
  // Completes the pending command, if any, with a tag.
  void Answer(const std::string& tag);
  // Completes the pending command by a status frame: a refused command goes back into the queue.
  void AnswerByStatus(const StatusRecord& record);
  std::unique_ptr<Command> TakePending();

  ConversationPeer& peer_;
  const uint8_t address_;

  // Held while a client is called, and while a client moves between queue and pending command.
  platform::RecursiveLock deliveryLock_ ACQUIRED_BEFORE(queue_){"reply delivery",
                                                                kDeliveryLockRank};

  CCommandQueue queue_ ACQUIRED_BEFORE(pendingLock_);

  mutable platform::PlainLock pendingLock_{"pending command", kPendingLockRank};
  std::unique_ptr<Command> pending_ GUARDED_BY(pendingLock_);  // sent and not yet answered
  bool idle_ GUARDED_BY(pendingLock_) = true;                  // no exchange is going on
  // A frame is the reply to what was sent before it came, so each frame is marked with the number
  // of exchanges at its arrival: it may still be in processing when the next frame is sent.
  uint64_t exchanges_ GUARDED_BY(pendingLock_) = 0;         // begun so far
  uint64_t answeredExchange_ GUARDED_BY(pendingLock_) = 0;  // the last one that a frame ended
  uint64_t pendingExchange_ GUARDED_BY(pendingLock_) = 0;   // the one that sends pending_

  mutable platform::PlainLock autoReportLock_{"auto report", kAutoReportLockRank};
  bool autoReportAsked_ GUARDED_BY(autoReportLock_) = false;  // until the switch byte confirms it
  bool autoReportSeen_ GUARDED_BY(autoReportLock_) = false;   // the switch byte shows it

  std::atomic<platform::ThreadId> sender_{0};    // the communications thread
  std::atomic<platform::ThreadId> receiver_{0};  // the thread inside Receive
  platform::Microseconds LastFrame() const { return platform::Microseconds(lastFrame_.load()); }
  std::atomic<int64_t> lastFrame_{0};  // when the last frame came, microseconds

  // Only the communications thread.
  platform::Microseconds lastSend_{0};
  platform::Microseconds lastReply_{0};
  bool awaitsReply_ = false;               // the stop came in the middle of an exchange
  platform::Microseconds notifiedOf_{-1};  // when the last reported outage began

  // Only the thread that hands over received bytes.
  ReplyReader reader_;
  uint64_t frameExchange_ = 0;  // exchanges begun when the frame in hand arrived

  platform::Event work_{"conversation: work"};    // queued, or polling goes on
  platform::Event reply_{"conversation: reply"};  // a frame has been processed
  platform::Event becameIdle_{"conversation: idle"};
  platform::Event stop_{"conversation: stop", platform::Event::Mode::ManualReset};
  platform::Event ended_{"conversation: ended", platform::Event::Mode::ManualReset};
  std::shared_ptr<platform::Thread> thread_;  // set by Start, taken by Stop
};

}  // namespace rvx
