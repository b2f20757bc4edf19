// The move of tube, table and trolley to a tray position.
#pragma once

#include <cstdint>

#include "module/execution/sequencer.h"

namespace rvx {

class CMSStateMachine final : public Sequencer {
 public:
  // Moves to the record's position.
  explicit CMSStateMachine(LaunchRecord& launch);
  ~CMSStateMachine() override { Detach(); }

 private:
  enum class State {
    Start,       // sends CMP: AwaitReply; fails if the instrument is not idle
    AwaitReply,  // for "MP": AwaitStart; overdue: an abort and Start, and fails without a re-send
                 // left
    AwaitStart,  // for no stepper moving: End; for any operation: AwaitEnd. No time limit
    AwaitEnd,    // for no operation: End. No time limit
    End          // the end
  };

  void SetState(State state);
  int32_t Act() override;
  platform::Deadline StateDeadline() const override;
  void EnterStart() override { SetState(State::Start); }
  void EnterEnd() override { SetState(State::End); }

  void Start();
  void AwaitReply();
  void AwaitStart();

  State state_ = State::Start;
};

}  // namespace rvx
