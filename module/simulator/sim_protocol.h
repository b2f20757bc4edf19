// The controller's protocol as the controller itself sees it. Written apart from the module's own
// tables on purpose: two readings of one protocol that meet only on the line find each other's
// mistakes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rvx::simulator {

// Outcome of a command, in the error byte of the status frame that answers it.
enum class SimError : uint8_t {
  None = 0,
  NotIdle = 0x40,          // a sequence is to start while something is on
  BadPosition = 0x41,      // no such place in the tray
  NotHomed = 0x42,         // the steppers' positions are not known yet
  BadCommand = 0x80,       // unknown tag, or a payload of another length
  SequenceRunning = 0x82,  // a manual operation during a test or motor run
  ControlOn = 0x83,        // manual cooling under temperature control
  SteppersActive = 0x84,   // a manual move or homing during a move
  BadPacket = 0x87         // the frame itself is damaged
};

// Bits of the switch byte.
enum SimSwitch : uint8_t {
  kSwitchInjection = 0x01,
  kSwitchRotor = 0x02,
  kSwitchCooling = 0x04,
  kSwitchStepper = 0x08,
  kSwitchControl = 0x10,
  kSwitchTest = 0x20,
  kSwitchMotorRun = 0x40,
  kSwitchAutoReport = 0x80
};

// What the controller says that it is doing.
enum class SimOperation : uint8_t {
  Idle = 0,
  AdjustMotorCurrent = 1,
  SeekSpeed = 2,
  PreconditionMotor = 3,
  LocateSample = 4,
  LowerTube = 5,
  RaiseTube = 6,
  WarmTestCell = 7,
  InjectionBurst = 8,
  InjectionPause = 9,
  InjectionPurge = 10,
  Cooldown = 11,
  Equilibration = 12,
  RunTest = 13
};

// Bits of the machine status, byte 12 of the record. Both are set until the steppers are homed.
inline constexpr uint8_t kMachineNotReady = 0x02;
inline constexpr uint8_t kMachineInitSteppers = 0x04;

// Status record: offset of each field. Two-byte fields have the low byte first here, unlike in real
// controllers.
struct SimStatusOffset {
  static constexpr size_t kIntCount = 0;
  static constexpr size_t kActualTemperature = 2;
  static constexpr size_t kTargetTemperature = 4;
  static constexpr size_t kPlusVss = 6;
  static constexpr size_t kMinusVss = 8;
  static constexpr size_t kRotorSpeed = 10;
  static constexpr size_t kMachineStatus = 12;
  static constexpr size_t kSwitchByte = 13;
  static constexpr size_t kOperation = 14;
  static constexpr size_t kPromptFlag = 15;  // stays 0: there is no user beside this instrument
  static constexpr size_t kErrorCode = 16;
  static constexpr size_t kLastTag = 17;
  static constexpr size_t kSize = 19;
};

inline constexpr uint16_t kSimPlusVss = 0xE000;   // 15 V
inline constexpr uint16_t kSimMinusVss = 0x2000;  // -15 V
inline constexpr uint16_t kSimTargetOff = 0xFFFF;

// Frames.
inline constexpr uint8_t kRequestStart = '/';
inline constexpr uint8_t kReplyStart = '-';
inline constexpr uint8_t kSimAddress = '0';  // this controller always has the address 0
inline constexpr uint8_t kFrameEnd = '\r';
inline constexpr size_t kTagBytes = 3;          // kind and two letters, sent as they are
inline constexpr size_t kMaxRequestBytes = 51;  // kind, tag and decoded payload

}  // namespace rvx::simulator
