// The controller's serial side: reads request frames, carries them out on the firmware, and sends
// status frames.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "module/simulator/sim_board.h"
#include "module/simulator/sim_firmware.h"
#include "module/simulator/sim_protocol.h"
#include "module/simulator/sim_stop_handle.h"

namespace rvx::simulator {

// All operations belong to the simulator's main thread.
class SimLink {
 public:
  SimLink(SimStopHandle& stop, SimBoard& board, SimFirmware& firmware);

  // Takes one character of the line. A frame that the character completes or breaks is answered
  // before the call returns.
  void Accept(uint8_t c);

  // Brings the status record up to date after a pass of the firmware, and sends it if auto report
  // is on.
  void StatusPass(uint16_t intCount);

  // True while the next tick of the clock has to be reported, so that passes are due at each tick.
  bool WantsTick() const { return firmware_.autoReport() || lastReportPending_; }

  // Puts a code into the status record, or into the queue of codes that wait: each frame carries
  // one.
  void RaiseError(SimError error);

 private:
  enum class ReaderState : uint8_t {
    AwaitStart,    // anything but a start character is noise
    AwaitAddress,  // decides whether the frame is for this controller
    InFrame        // until CR, or the first character that cannot be right
  };
  using Status = SimStatusOffset;
  struct Command;

  void BeginFrame();
  bool TakeFrameCharacter(uint8_t c);
  void ExecuteFrame();
  SimError ExecuteCommand();
  void TakeWaitingError();
  void SendStatus();
  void SendSelfTest();
  void Send(uint8_t first, uint8_t second, std::span<const uint8_t> data);

  uint8_t Payload(size_t index) const { return input_[kTagBytes + index]; }
  uint16_t PayloadWord(size_t index) const;
  SimError StartTest();
  SimError StartMotorCurrent();

  void PutWord(size_t offset, uint16_t value);
  uint16_t Word(size_t offset) const;

  static const std::array<Command, 12> kCommands;

  SimStopHandle& stop_;
  SimBoard& board_;
  SimFirmware& firmware_;

  ReaderState readerState_ = ReaderState::AwaitStart;
  std::array<uint8_t, kMaxRequestBytes + 1> input_{};  // with room for the CR
  size_t inputCount_ = 0;
  bool halfByte_ = false;  // the high half of the next byte has come

  std::array<uint8_t, 10> errorRing_{};
  size_t ringWrite_ = 0;
  size_t ringRead_ = 0;

  bool lastReportPending_ = false;  // one more frame is due after auto report has ended
  std::array<uint8_t, Status::kSize> status_{};
};

}  // namespace rvx::simulator
