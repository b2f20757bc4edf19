// The serial conversation with one instrument: the command queue, the communications thread, and
// the routing of replies to those who wait for them.
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
  // Keeps the record; called before the client of the answered command hears of it. Empty if the
  // data are none.
  virtual std::optional<StatusRecord> KeepStatus(std::span<const uint8_t> data) = 0;
  // All that follows from a record, after the client's call.
  virtual void FollowStatus(const StatusRecord& record) = 0;
  virtual void KeepIdentity(std::span<const uint8_t> frame) = 0;
  virtual void KeepSelfTest(uint16_t word) = 0;
  // After everything that a frame has changed: wakes those who wait for a new status.
  virtual void FrameProcessed() = 0;
};

// Locks: delivery, then queue, then pending. A client is called under the delivery lock alone, so
// it may queue commands from inside, and ForgetClient, which takes the same lock, waits out a call.
class Conversation : private FrameHandler {
 public:
  // `peer` is not owned and must outlive this.
  Conversation(ConversationPeer& peer, uint8_t address);
  // Stop must have been called.
  ~Conversation() override = default;

  // Starts the communications thread. If the system has no thread left, no communication ever
  // happens.
  void Start();
  // Ends the thread and waits for its end. Of what is still queued only an abort goes out.
  void Stop();
  // The same for a caller that must not wait for ever: false at the deadline.
  bool StopWithin(const platform::Deadline& deadline);

  // Queues a command; returns at once. `client` must not be null. Any thread.
  void Queue(const std::string& text, CommandClient* client);
  // No reply reaches the client afterwards; its commands still go out. Any thread, also from the
  // client's own call.
  void ForgetClient(CommandClient* client);
  // The client's commands so far are over: what has not been sent is not sent any more, the one
  // that waits for its reply is not sent again, and no reply to them reaches the client. Any
  // thread.
  void Withdraw(const CommandClient* client);
  // After the queueing of CAR: polling stops at once when Auto Report is asked for, and goes on
  // with the first status frame that shows it off.
  void SetAutoReportAsked(bool asked);
  // Whether the caller is the communications thread.
  bool IsOnSender() const;
  // Whether it is that thread or inside Receive.
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
  // When the next poll is due; only after a long silence while Auto Report is on or asked for.
  platform::Deadline NextPoll() const;
  void Exchange(const std::string& text);
  // Counts an exchange, just before its frame goes out.
  void BeginExchange();
  // Whether a frame has come after the one that was sent last.
  bool IsAnswered();
  // The frame under way ends the exchange that it belongs to.
  void EndExchange();
  void DropPending();
  // The thread's last act: an abort that still waits in the queue.
  void SendLastAbort();

  bool StatusReceived(std::span<const uint8_t> data);  // false if it is no status
  void FollowAutoReport(uint8_t switchByte);
  // The pending command, if the frame under way can be its answer. On the thread that hands over
  // received bytes.
  std::unique_ptr<Command> TakeAnswered();
  // Completes the pending command, if any, with a tag.
  void Answer(const std::string& tag);
  // Completes it by a status frame: refused commands go back into the queue.
  void AnswerByStatus(const StatusRecord& record);
  std::unique_ptr<Command> TakePending();

  ConversationPeer& peer_;
  const uint8_t address_;

  // Held while a client is called, and by whoever moves a client between queue and pending command.
  platform::RecursiveLock deliveryLock_ ACQUIRED_BEFORE(queue_){"reply delivery",
                                                                kDeliveryLockRank};

  CCommandQueue queue_ ACQUIRED_BEFORE(pendingLock_);

  mutable platform::PlainLock pendingLock_{"pending command", kPendingLockRank};
  std::unique_ptr<Command> pending_ GUARDED_BY(pendingLock_);  // sent and not yet answered
  bool idle_ GUARDED_BY(pendingLock_) = true;                  // no exchange is going on
  // A frame answers what was sent before it came, so each frame is told by the number of exchanges
  // at its arrival: the last one may still be in the works when the next frame goes out.
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
  platform::Microseconds notifiedOf_{-1};  // when the outage began that was reported last

  // Only the thread that hands over received bytes.
  ReplyReader reader_;
  uint64_t frameExchange_ = 0;  // exchanges begun when the frame under way arrived

  platform::Event work_{"conversation: work"};    // queued, or polling goes on
  platform::Event reply_{"conversation: reply"};  // a frame has been processed
  platform::Event becameIdle_{"conversation: idle"};
  platform::Event stop_{"conversation: stop", platform::Event::Mode::ManualReset};
  platform::Event ended_{"conversation: ended", platform::Event::Mode::ManualReset};
  std::shared_ptr<platform::Thread> thread_;  // set by Start, taken by Stop
};

}  // namespace rvx
