#include "module/execution/sequencer.h"

#include <utility>

#include "module/protocol/status_record.h"
#include "module/resources/string_ids.h"
#include "module/resources/string_table.h"

namespace rvx {
namespace {

constexpr int kResends = 3;

}  // namespace

Sequencer::Sequencer(LaunchRecord& launch, int noReplyTextId, int inUseTextId)
    : CommandClient(&launch.instrument),
      instrument_(launch.instrument),
      launch_(launch),
      noReplyTextId_(noReplyTextId),
      inUseTextId_(inUseTextId),
      statusSequence_(launch.instrument.GetStatusSequence()) {
  Tick();
  instrument_.AddStatusEvent(&wakeEvent_);
}

Sequencer::~Sequencer() {
  Detach();
  instrument_.RemoveStatusEvent(&wakeEvent_);
}

int32_t Sequencer::LoadResources() {
  noReplyText_ = LoadResourceString(noReplyTextId_);
  inUseText_ = LoadResourceString(inUseTextId_);
  notReadyText_ = LoadResourceString(kTextNotReady);
  return 0;
}

int32_t Sequencer::Step() {
  // A new state first examines the frame that led to it, as it does when the thread is not late.
  // Otherwise a late thread would lose one reading of the run at each change of state.
  const bool looksAgain = std::exchange(progressed_, false);
  // The next frame and not the last one: a delayed thread would lose readings of the run, and an
  // error that is in one frame only.
  if (!looksAgain) instrument_.GetNextReadings(statusSequence_, status_);
  if (status_.machineStatus != 0) Fail(notReadyText_, MessageCode::NotReady);
  // After the machine status: an error says more, so its text replaces the other.
  if (status_.errorCode != 0) {
    Fail(instrument_.GetErrorText(status_.errorCode),
         MessageCodeOf(ErrorTextId(status_.errorCode)));
  }
  ReportOperation();
  switch (interlude_) {
    case Interlude::Abort:
      AbortAndRaise();
    case Interlude::ResendAbort:
      AbortForResend();
      return 1;
    case Interlude::AwaitAbort:
      // The reply to the abort goes to the instrument's own client and not here. The state ends
      // after a time in which the controller settles before the command is sent again.
      if (IsResponseOverdue()) {
        Tick();
        SetInterlude(Interlude::None);
      }
      return 1;
    case Interlude::None:
      break;
  }
  return Act();
}

platform::Deadline Sequencer::NextDeadline() const {
  if (interlude_ == Interlude::None) return StateDeadline();
  return interlude_ == Interlude::AwaitAbort ? ResponseDeadline() : platform::Deadline::Never();
}

void Sequencer::SetInterlude(Interlude interlude) {
  interlude_ = interlude;
  NoteProgress();
}

bool Sequencer::ReadPresentStatus() {
  while (instrument_.GetNextReadings(statusSequence_, status_)) {
  }
  return status_.machineStatus == 0 && status_.errorCode == 0;
}

void Sequencer::SendAbort() {
  launch_.SendUnlessStopped([this] { instrument_.SendAbort(nullptr); });
}

// Withdraws what the run has sent so far: a computer that was delayed would otherwise send it after
// the abort, as a new start, or take its late reply for the reply to the next command.
void Sequencer::AbortForResend() {
  instrument_.WithdrawCommands(this);
  {
    platform::PlainGuard guard(replyLock_);
    replyTag_.clear();
  }
  SendAbort();
  Tick();
  SetInterlude(Interlude::AwaitAbort);
}

void Sequencer::AbortRun() {
  SendAbort();
  SetInterlude(Interlude::None);
  EnterStart();
  ReportOperation();
}

void Sequencer::ReportOperation() {
  if (status_.operation == reportedOperation_) return;
  reportedOperation_ = status_.operation;
  const std::string name = instrument_.GetOperationText(status_.operation);
  if (!name.empty()) launch_.ReportStatus(name);
}

void Sequencer::CommandReply(const std::string& tag) {
  // The frame of the reply is kept before its client is called.
  const uint64_t sequence = instrument_.GetStatusSequence();
  {
    platform::PlainGuard guard(replyLock_);
    replyTag_ = tag;
    untaggedReply_ = untaggedReply_ || tag.empty();
    replySequence_ = sequence;
  }
  wakeEvent_.Set();
}

bool Sequencer::TakeReply(std::string_view tag) {
  platform::PlainGuard guard(replyLock_);
  // Not before the frames up to that of the reply have been read: an older one still shows the
  // instrument at rest.
  if (replyTag_ != tag || statusSequence_ < replySequence_) return false;
  replyTag_.clear();
  return true;
}

bool Sequencer::HasUnreadReply() {
  platform::PlainGuard guard(replyLock_);
  return statusSequence_ < replySequence_;
}

bool Sequencer::TakeUntaggedReply() {
  platform::PlainGuard guard(replyLock_);
  return std::exchange(untaggedReply_, false);
}

int64_t Sequencer::GetElapsed() const {
  return std::chrono::duration_cast<platform::Milliseconds>(platform::MonotonicTime() - stateTime_)
      .count();
}

platform::Deadline Sequencer::AfterState(int64_t milliseconds) const {
  return platform::Deadline::At(stateTime_ + platform::Milliseconds(milliseconds));
}

void Sequencer::BeginRetries(int command) {
  retries_ = failedCommand_ >= command ? failedRetries_ : kResends;
}

Sequencer::Reply Sequencer::LookForReply(std::string_view tag, int command) {
  if (TakeReply(tag)) {
    EndCommand(command);
    return Reply::Come;
  }
  return IsResponseOverdue() && Resend(command) ? Reply::Resend : Reply::Awaited;
}

void Sequencer::EndCommand(int command) {
  retries_ = 0;
  if (failedCommand_ <= command) failedCommand_ = 0;
  Tick();
}

bool Sequencer::Resend(int command) {
  if (retries_ == 0) {
    FailNoReply();
    return false;
  }
  --retries_;
  if (failedCommand_ < command) failedCommand_ = command;
  failedRetries_ = retries_;
  Tick();
  SetInterlude(Interlude::ResendAbort);
  return true;
}

void Sequencer::Fail(const std::string& message, MessageCode code) {
  abortMessage_ = message;
  abortCode_ = code;
  Tick();
  SetInterlude(Interlude::Abort);
}

void Sequencer::AbortAndRaise() {
  SendAbort();
  ActionErrorRecord record = instrument_.MakeErrorRecord();
  record.message = abortMessage_;
  record.code = abortCode_;
  record.kind = 0;
  record.sampleFailure = 1;
  CompleteFailure(record);
  SetInterlude(Interlude::None);
  EnterEnd();
  ReportOperation();
  throw new ActionException(std::move(record));
}

SequencerEnd RunSequencer(Sequencer& sequencer, LaunchRecord& record) {
  for (;;) {
    // Before the first step: a run that was stopped before it began must not start anything.
    if (record.stopEvent.TryWait()) return SequencerEnd::Stopped;
    if (sequencer.Step() == 0) break;
    if (sequencer.HasProgressed()) continue;
    const int which =
        platform::WaitForAny({&record.stopEvent, &sequencer.wakeEvent()}, sequencer.NextDeadline());
    if (which == 0) return SequencerEnd::Stopped;
  }
  return record.stopEvent.TryWait() ? SequencerEnd::Stopped : SequencerEnd::Finished;
}

}  // namespace rvx
