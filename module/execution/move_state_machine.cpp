#include "module/execution/move_state_machine.h"

#include "module/protocol/frames.h"
#include "module/protocol/status_record.h"
#include "module/resources/string_ids.h"

namespace rvx {
namespace {

constexpr int kMoveCommand = 1;

}  // namespace

CMSStateMachine::CMSStateMachine(LaunchRecord& launch)
    : Sequencer(launch, kTextActionTimeout, kTextActionInUse) {
  ExecuteLoadResources(this);
}

void CMSStateMachine::SetState(State state) {
  state_ = state;
  NoteProgress();
}

platform::Deadline CMSStateMachine::StateDeadline() const {
  switch (state_) {
    case State::AwaitReply:
      return ResponseDeadline();
    case State::Start:
    case State::AwaitStart:
    case State::AwaitEnd:
    case State::End:
      return platform::Deadline::Never();
  }
  return platform::Deadline::Never();
}

int32_t CMSStateMachine::Act() {
  switch (state_) {
    case State::Start:
      Start();
      return 1;
    case State::AwaitReply:
      AwaitReply();
      return 1;
    case State::AwaitStart:
      AwaitStart();
      return 1;
    case State::AwaitEnd:
      if (status_.operation == 0) {
        Tick();
        SetState(State::End);
      }
      return 1;
    case State::End:
      SetState(State::Start);
      return 0;
  }
  return 1;
}

void CMSStateMachine::Start() {
  if (!ReadPresentStatus()) return;
  if (status_.operation != 0) {
    FailInUse();
    return;
  }
  TakeResponseTimeout();
  launch_.SendUnlessStopped([this] { instrument_.MoveToPosition(launch_.position, this); });
  BeginRetries(kMoveCommand);
  Tick();
  SetState(State::AwaitReply);
}

void CMSStateMachine::AwaitReply() {
  const Reply reply = LookForReply(kMoveToPositionTag, kMoveCommand);
  if (reply == Reply::Come) SetState(State::AwaitStart);
  if (reply == Reply::Resend) SetState(State::Start);
}

void CMSStateMachine::AwaitStart() {
  if ((status_.switchByte & kSwitchStepperMoving) == 0) {
    SetState(State::End);
  } else if (status_.operation != 0) {
    Tick();
    SetState(State::AwaitEnd);
  }
}

}  // namespace rvx
