#include "module/simulator/sim_link.h"

#include <algorithm>

namespace rvx::simulator {
namespace {

constexpr size_t kAnyLength = static_cast<size_t>(-1);
constexpr char kDigits[] = "0123456789ABCDEF";

// Value of a hex digit as the controller takes it, above 15 for a character that is none.
unsigned DigitValue(uint8_t c) {
  if (c < '0') return 0xFF;
  return c < 'A' ? c - '0' : c - 'A' + 10u;
}

// The line counts in seconds or minutes, the controller in ticks of half a second.
uint16_t TicksOfSeconds(uint8_t seconds) { return static_cast<uint16_t>(seconds * 2); }
uint16_t TicksOfMinutes(uint8_t minutes) { return static_cast<uint16_t>(minutes * 120); }

}  // namespace

// What a command's tag leads to. The payload follows the tag and must have exactly this length.
struct SimLink::Command {
  char tag[3];
  size_t payload;
  SimError (*run)(SimLink& link);
};

const std::array<SimLink::Command, 12> SimLink::kCommands = {{
    {"AB", kAnyLength,
     [](SimLink& link) {
       link.firmware_.EndRun();
       return SimError::None;
     }},
    {"AI", 1, [](SimLink& link) { return link.firmware_.SwitchInjection(link.Payload(0)); }},
    {"AR", 1, [](SimLink& link) { return link.firmware_.SwitchAutoReport(link.Payload(0)); }},
    {"AS", 1, [](SimLink& link) { return link.firmware_.SwitchRotor(link.Payload(0)); }},
    {"AV", 1, [](SimLink& link) { return link.firmware_.SwitchCooling(link.Payload(0)); }},
    {"HO", kAnyLength, [](SimLink& link) { return link.firmware_.SetHome(); }},
    {"MC", 15, [](SimLink& link) { return link.StartMotorCurrent(); }},
    {"MM", 3,
     [](SimLink& link) {
       return link.firmware_.MoveManually(link.Payload(0), link.PayloadWord(1));
     }},
    {"MP", 1, [](SimLink& link) { return link.firmware_.MoveToPosition(link.Payload(0)); }},
    {"PM", 3,
     [](SimLink& link) {
       return link.firmware_.StartPrecondition(TicksOfMinutes(link.Payload(0)),
                                               link.PayloadWord(1));
     }},
    {"ST", 15, [](SimLink& link) { return link.StartTest(); }},
    {"TC", 3,
     [](SimLink& link) {
       return link.firmware_.SetTemperatureControl(link.Payload(0), link.PayloadWord(1));
     }},
}};

SimLink::SimLink(SimStopHandle& stop, SimBoard& board, SimFirmware& firmware)
    : stop_(stop), board_(board), firmware_(firmware) {
  status_[Status::kMachineStatus] = kMachineNotReady | kMachineInitSteppers;
}

uint16_t SimLink::PayloadWord(size_t index) const {
  return static_cast<uint16_t>(Payload(index) << 8 | Payload(index + 1));
}

void SimLink::PutWord(size_t offset, uint16_t value) {
  status_[offset] = static_cast<uint8_t>(value & 0xFF);
  status_[offset + 1] = static_cast<uint8_t>(value >> 8);
}

uint16_t SimLink::Word(size_t offset) const {
  return static_cast<uint16_t>(status_[offset] | status_[offset + 1] << 8);
}

void SimLink::BeginFrame() {
  inputCount_ = 0;
  // A frame that broke off inside a byte must not shift the next one.
  halfByte_ = false;
  readerState_ = ReaderState::InFrame;
}

void SimLink::Accept(uint8_t c) {
  switch (readerState_) {
    case ReaderState::AwaitStart:
      if (c == kRequestStart) readerState_ = ReaderState::AwaitAddress;
      break;
    case ReaderState::AwaitAddress:
      if (c == kSimAddress) {
        BeginFrame();
      } else {
        readerState_ = ReaderState::AwaitStart;
      }
      break;
    case ReaderState::InFrame:
      if (c == kFrameEnd) {
        readerState_ = ReaderState::AwaitStart;
        // The rest is cleared, so that a short frame does not show the tag of an earlier one.
        std::fill(input_.begin() + static_cast<std::ptrdiff_t>(inputCount_), input_.end(),
                  uint8_t{0});
        input_[inputCount_] = kFrameEnd;
        ExecuteFrame();
      } else if (!TakeFrameCharacter(c)) {
        readerState_ = ReaderState::AwaitStart;
        RaiseError(SimError::BadPacket);
        SendStatus();
      }
      break;
  }
}

// False when the frame can't be valid any more.
bool SimLink::TakeFrameCharacter(uint8_t c) {
  if (inputCount_ >= kMaxRequestBytes) return false;
  if (inputCount_ < kTagBytes) {
    input_[inputCount_++] = c;
    return true;
  }
  const unsigned value = DigitValue(c);
  if (value > 15) return false;
  if (!halfByte_) {
    input_[inputCount_] = static_cast<uint8_t>(value << 4);
    halfByte_ = true;
  } else {
    input_[inputCount_] = static_cast<uint8_t>(input_[inputCount_] | value);
    ++inputCount_;
    halfByte_ = false;
  }
  return true;
}

void SimLink::ExecuteFrame() {
  SimError result = SimError::BadPacket;
  if (input_[0] == 'C') {
    // A word like the others: its low byte, the second letter, goes first.
    PutWord(Status::kLastTag, static_cast<uint16_t>(input_[1] << 8 | input_[2]));
    result = ExecuteCommand();
  } else if (input_[0] == 'Q') {
    PutWord(Status::kLastTag, 0);
    if (input_[1] == 'S' && input_[2] == 'T') return SendStatus();
    if (input_[1] == 'T' && input_[2] == 'R') return SendSelfTest();
    result = SimError::BadCommand;
  }
  if (result != SimError::None) RaiseError(result);
  status_[Status::kSwitchByte] = firmware_.switchByte();
  SendStatus();
}

SimError SimLink::ExecuteCommand() {
  for (const Command& command : kCommands) {
    if (input_[1] != command.tag[0] || input_[2] != command.tag[1]) continue;
    // A single half byte before the CR makes the length wrong as well.
    const bool fits =
        command.payload == kAnyLength || (inputCount_ == kTagBytes + command.payload && !halfByte_);
    return fits ? command.run(*this) : SimError::BadCommand;
  }
  return SimError::BadCommand;
}

SimError SimLink::StartTest() {
  SimRunProgram program;
  program.position = Payload(0);
  program.injectionTime = TicksOfSeconds(Payload(1));
  program.burstTime = TicksOfSeconds(Payload(2));
  program.pauseTime = TicksOfSeconds(Payload(3));
  program.purgeTime = TicksOfSeconds(Payload(4));
  program.cooldownTime = TicksOfSeconds(Payload(5));
  program.rotorTime = TicksOfSeconds(Payload(6));
  program.testCounts = PayloadWord(7);
  program.injectionCounts = PayloadWord(9);
  program.undershoot = PayloadWord(11);
  program.tolerance = PayloadWord(13);
  return firmware_.StartTest(program);
}

// The same figures as a test, in another order.
SimError SimLink::StartMotorCurrent() {
  SimRunProgram program;
  program.position = Payload(0);
  program.testCounts = PayloadWord(1);
  program.injectionCounts = PayloadWord(3);
  program.injectionTime = TicksOfSeconds(Payload(5));
  program.burstTime = TicksOfSeconds(Payload(6));
  program.pauseTime = TicksOfSeconds(Payload(7));
  program.purgeTime = TicksOfSeconds(Payload(8));
  program.cooldownTime = TicksOfSeconds(Payload(9));
  program.rotorTime = TicksOfSeconds(Payload(10));
  program.undershoot = PayloadWord(11);
  program.tolerance = PayloadWord(13);
  return firmware_.StartMotorCurrent(program);
}

void SimLink::RaiseError(SimError error) {
  const auto code = static_cast<uint8_t>(error);
  if (status_[Status::kErrorCode] == 0) {
    status_[Status::kErrorCode] = code;
    return;
  }
  errorRing_[ringWrite_] = code;
  ringWrite_ = (ringWrite_ + 1) % errorRing_.size();
}

void SimLink::TakeWaitingError() {
  if (status_[Status::kErrorCode] != 0 || errorRing_[ringRead_] == 0) return;
  status_[Status::kErrorCode] = errorRing_[ringRead_];
  errorRing_[ringRead_] = 0;
  ringRead_ = (ringRead_ + 1) % errorRing_.size();
  if (errorRing_[ringRead_] == 0) {
    ringRead_ = 0;
    ringWrite_ = 0;
  }
}

void SimLink::StatusPass(uint16_t intCount) {
  const bool newTick = Word(Status::kIntCount) != intCount;
  const SimCell cell = board_.Cell();
  PutWord(Status::kIntCount, intCount);
  PutWord(Status::kActualTemperature, cell.actual);
  PutWord(Status::kTargetTemperature,
          board_.outputs().temperatureControl != 0 ? cell.target : kSimTargetOff);
  PutWord(Status::kPlusVss, kSimPlusVss);
  PutWord(Status::kMinusVss, kSimMinusVss);
  PutWord(Status::kRotorSpeed, board_.RotorSpeedCounts());
  if (firmware_.homed()) status_[Status::kMachineStatus] = 0;
  status_[Status::kSwitchByte] = firmware_.switchByte();
  status_[Status::kOperation] = static_cast<uint8_t>(firmware_.ShownOperation());
  TakeWaitingError();
  if (!WantsTick()) return;
  if (newTick) {
    SendStatus();
    lastReportPending_ = false;
  }
  if (firmware_.autoReport()) lastReportPending_ = true;
}

void SimLink::SendStatus() {
  Send('S', 'T', status_);
  status_[Status::kErrorCode] = 0;  // a frame shows an error once
}

void SimLink::SendSelfTest() {
  static constexpr std::array<uint8_t, 2> kAllPassed{};
  Send('T', 'R', kAllPassed);
}

void SimLink::Send(uint8_t first, uint8_t second, std::span<const uint8_t> data) {
  std::array<uint8_t, 5 + 2 * Status::kSize + 1> frame{kReplyStart, kSimAddress, 'Q', first,
                                                       second};
  size_t end = 5;
  for (const uint8_t byte : data) {
    frame[end++] = static_cast<uint8_t>(kDigits[byte >> 4]);
    frame[end++] = static_cast<uint8_t>(kDigits[byte & 15]);
  }
  frame[end++] = kFrameEnd;
  stop_.Deliver(std::span<const uint8_t>(frame.data(), end));
}

}  // namespace rvx::simulator
