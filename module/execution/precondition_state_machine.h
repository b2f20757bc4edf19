// Preconditioning of the motor: cools the cell if it is warm, then runs the rotor.
#pragma once

#include <cstdint>
#include <string_view>

#include "module/execution/sequencer.h"

namespace rvx {

class CPMStateMachine final : public Sequencer {
 public:
  explicit CPMStateMachine(LaunchRecord& launch);
  ~CPMStateMachine() override { Detach(); }

 private:
  enum class State {
    Start,             // End if no precondition time is set; fails if the instrument is not idle;
                       // with a warm cell sends CTC on: AwaitControlOn; else StartMotor
    AwaitControlOn,    // for "TC": SeekTemperature
    SeekTemperature,   // for the target: Hold; after five minutes: SwitchControlOff all the same
    Hold,              // ten seconds: SwitchControlOff
    SwitchControlOff,  // sends CTC off: AwaitControlOff
    AwaitControlOff,   // for "TC": StartMotor
    StartMotor,        // sends CPM: AwaitMotorReply
    AwaitMotorReply,   // for "PM": AwaitMotor
    AwaitMotor,        // for any operation: AwaitMotorEnd. No time limit
    AwaitMotorEnd,     // for no operation: End. No time limit
    End                // the end
  };
  // When a reply is overdue, the three states that await one send an abort and go back to Start, so
  // the whole procedure runs again; they fail when no re-send is left.

  void SetState(State state);
  int32_t Act() override;
  platform::Deadline StateDeadline() const override;
  void EnterStart() override { SetState(State::Start); }
  void EnterEnd() override { SetState(State::End); }

  void Start();
  void SeekTemperature();
  void SwitchControlOff();
  void StartMotor();
  // Waits for the reply `tag` of command number `command`; `next` follows.
  void AwaitReply(std::string_view tag, int command, State next);
  // Takes the time and goes to `next` if `condition` holds.
  void GoOnIf(bool condition, State next);

  State state_ = State::Start;
};

}  // namespace rvx
