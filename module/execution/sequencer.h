// The base of the sequencers: a state machine that commands the instrument, follows its status, and
// ends in an ActionException when something goes wrong.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "module/execution/launch_record.h"
#include "module/instrument/c_rvx.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/time_base.h"

namespace rvx {

// Lives on the stack of a run's thread, which alone calls it; replies come from the thread that
// parses them. A concrete class calls Detach at the beginning of its destructor.
class Sequencer : public UserInterfaceClient, public CommandClient {
 public:
  ~Sequencer() override;

  // Reads the next status, unless the last call changed something, and takes one transition.
  // Returns 1 while the run goes on, 0 at its end. Throws ActionException when the run fails, after
  // it has told the instrument to abort.
  int32_t Step();
  // Ends a run from outside: tells the instrument to abort, throws nothing.
  void AbortRun();

  // Whether the last Step changed something or left a status unread, so that the next one has to
  // follow at once.
  bool HasProgressed() const {
    return progressed_ || instrument_.GetStatusSequence() > statusSequence_;
  }
  // Set when a status or a reply has come.
  platform::Event& wakeEvent() { return wakeEvent_; }
  // When Step has to be called even if nothing new has come.
  platform::Deadline NextDeadline() const;

  void CommandReply(const std::string& tag) override;
  FrameWindow* PerformCreation() override { return nullptr; }
  int32_t LoadResources() override;

 protected:
  // Ids of the messages for a command without reply, and for an instrument that is not idle.
  Sequencer(LaunchRecord& launch, int noReplyTextId, int inUseTextId);

  // Acts on the present state; the result is that of Step.
  virtual int32_t Act() = 0;
  // NextDeadline of the present state.
  virtual platform::Deadline StateDeadline() const = 0;
  virtual void EnterStart() = 0;
  // The state in which a failed run is left.
  virtual void EnterEnd() = 0;
  // Lets a kind of run add its details to the record of its failure.
  virtual void CompleteFailure(ActionErrorRecord& /*record*/) {}

  // Skips to the last status: a run that begins needs to know whether the instrument is idle now,
  // not what it did while the thread was delayed. Returns false if that status makes the run fail;
  // the next Step does so.
  bool ReadPresentStatus();
  // Sends CAB, unless the run was stopped: the stop has sent it then.
  void SendAbort();

  // Notes a change of state or a reading taken.
  void NoteProgress() { progressed_ = true; }
  // Takes the present moment as the one from which the state's time is measured.
  void Tick() { stateTime_ = platform::MonotonicTime(); }
  // Whole milliseconds since then.
  int64_t GetElapsed() const;
  // More than the response time-out has passed since then, and there is no reply that came with a
  // frame which a late thread has yet to read.
  bool IsResponseOverdue() { return GetElapsed() > responseTimeout_ && !HasUnreadReply(); }
  platform::Deadline AfterState(int64_t milliseconds) const;
  // The first moment at which IsResponseOverdue returns true.
  platform::Deadline ResponseDeadline() const { return AfterState(responseTimeout_ + 1); }
  void TakeResponseTimeout() { responseTimeout_ = instrument_.GetResponseTimeout(); }

  // Returns true and clears the last reply tag if it is this one; any other tag stays.
  bool TakeReply(std::string_view tag);
  bool HasUnreadReply();
  // Whether a reply without a tag has come since the last call: a frame that was under way when the
  // command was sent has ended the wait for its reply, and the tag of the real reply is then lost.
  bool TakeUntaggedReply();

  // A command is sent up to four times. Commands are numbered in the order in which a run sends
  // them; a re-send may lead through earlier commands again, and then the count of the command that
  // failed goes on, so that a run ends if the instrument does not respond.
  void BeginRetries(int command);
  // The outcome of one look for a reply.
  enum class Reply { Awaited, Come, Resend };
  // Whether the reply `tag` of command number `command` has come. If it is overdue, does what
  // Resend does.
  Reply LookForReply(std::string_view tag, int command);
  // Call it when the reply has come, by its tag or because the instrument's status shows it.
  void EndCommand(int command);
  // Call it when the reply is overdue. Returns true if a re-send is left: tells the instrument to
  // abort, and a response time-out later the run goes on in the state that the caller sets, which
  // sends the command again. Otherwise the run fails, and it returns false.
  bool Resend(int command);

  void Fail(const std::string& message, MessageCode code);
  void FailNoReply() { Fail(noReplyText_, MessageCodeOf(noReplyTextId_)); }
  void FailInUse() { Fail(inUseText_, MessageCodeOf(inUseTextId_)); }

  C_RVX& instrument_;
  LaunchRecord& launch_;
  MonitorReadings status_;  // of the present Step

 private:
  // Work that is done before that of the present state: a failure, or an abort for a re-send.
  enum class Interlude { None, Abort, ResendAbort, AwaitAbort };

  void SetInterlude(Interlude interlude);
  // Aborts the instrument and throws the failure that Fail has noted.
  [[noreturn]] void AbortAndRaise();
  void AbortForResend();
  void ReportOperation();

  const int noReplyTextId_;
  const int inUseTextId_;
  std::string noReplyText_;
  std::string inUseText_;
  std::string notReadyText_;

  // Only the run's thread.
  bool progressed_ = false;
  Interlude interlude_ = Interlude::None;
  uint64_t statusSequence_;  // number of the status frame of the present Step
  uint8_t reportedOperation_ = 0;
  platform::Microseconds stateTime_{0};
  int64_t responseTimeout_ = 0;  // ms
  int retries_ = 0;              // re-sends left of the present command
  int failedCommand_ = 0;        // the last one in order that had to be sent again; 0: none
  int failedRetries_ = 0;        // its re-sends left
  std::string abortMessage_;
  MessageCode abortCode_ = MessageCode::None;

  platform::Event wakeEvent_{"sequencer wake"};
  // A leaf: replies come in under the locks of the conversation.
  platform::PlainLock replyLock_{"sequencer reply", platform::kLeafRank};
  std::string replyTag_ GUARDED_BY(replyLock_);  // empty when there is none to take
  bool untaggedReply_ GUARDED_BY(replyLock_) = false;
  uint64_t replySequence_ GUARDED_BY(replyLock_) = 0;  // of the status frame it came with
};

enum class SequencerEnd { Finished, Stopped };

// Steps a sequencer to its end, or until the record's stop event is set; the caller then aborts it.
// Sleeps while there is nothing new. Passes on the failures of Step.
SequencerEnd RunSequencer(Sequencer& sequencer, LaunchRecord& record);

}  // namespace rvx
