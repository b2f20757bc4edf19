// The move of tube, table and trolley to a tray position.
#pragma once

#include <cstdint>

#include "execution/sequencer.h"

namespace rvx {

class CMSStateMachine final : public Sequencer {
 public:
  // Moves to the record's position.
  explicit CMSStateMachine(LaunchRecord& launch);
  ~CMSStateMachine() override { Detach(); }

  platform::Deadline NextDeadline() const override;

 private:
  enum class State {
    Start,        // sends CMP: AwaitReply; Abort if the instrument is not idle
    AwaitReply,   // for "MP": AwaitStart; overdue: ResendAbort, and Abort when no re-send is left
    AwaitStart,   // for no stepper moving: End; for any operation: AwaitEnd. No time limit
    AwaitEnd,     // for no operation: End. No time limit
    End,          // the end
    Abort,        // sends CAB and raises the failure
    ResendAbort,  // sends CAB: AwaitAbort
    AwaitAbort    // overdue: Start
  };

  void SetState(State state);
  int32_t Act() override;
  void EnterStart() override { SetState(State::Start); }
  void EnterAbort() override { SetState(State::Abort); }
  void EnterEnd() override { SetState(State::End); }

  void Start();
  void AwaitReply();
  void AwaitStart();

  State state_ = State::Start;
};

}  // namespace rvx
