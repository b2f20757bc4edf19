// The status record, what its codes and bits mean, and their texts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rvx {

inline constexpr size_t kStatusRecordSize = 19;

// Bits of the machine status.
enum MachineStatusBit : uint8_t {
  kMachineFault = 0x01,
  kMachineNotReady = 0x02,
  kMachineInitSteppers = 0x04,
  kMachineSelfTest = 0x20
};

// Bits of the switch byte. The instrument is idle only when the whole byte is 0.
enum SwitchBit : uint8_t {
  kSwitchInjection = 0x01,
  kSwitchTestMotor = 0x02,
  kSwitchCooling = 0x04,  // by the manual switch
  kSwitchStepperMoving = 0x08,
  kSwitchTemperatureControl = 0x10,  // the cooling lamp shows this too
  kSwitchTestRunning = 0x20,
  kSwitchMotorRun = 0x40,  // CMC or CPM
  kSwitchAutoReport = 0x80
};

enum class Operation : uint8_t {
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
inline constexpr int kOperationCount = 14;

// Codes of the error byte. The first three say that the command can't be done now, the 0x80s that
// it was not understood or not allowed, the 0xE0s that the instrument itself has failed.
enum class ErrorCode : uint8_t {
  None = 0x00,
  NotIdle = 0x40,
  InvalidTrayPosition = 0x41,
  NotHomed = 0x42,
  Reserved43 = 0x43,  // without a message
  Reserved44 = 0x44,  // without a message
  InvalidCommand = 0x80,
  InvalidManualCommand = 0x81,
  ManualWhileTesting = 0x82,
  CoolingUnderControl = 0x83,
  StepperActive = 0x84,
  ConfigurationNotStored = 0x85,
  InvalidStepperCommand = 0x86,
  InvalidPacket = 0x87,
  ConfigurationNotLoaded = 0xE0,
  SelfTestFailed = 0xE1
};

// Whether a code means that the command did not arrive whole, so that it is sent again.
constexpr bool AsksForResend(uint8_t code) {
  return code == static_cast<uint8_t>(ErrorCode::InvalidCommand) ||
         code == static_cast<uint8_t>(ErrorCode::InvalidPacket);
}

// The 19 bytes that the instrument last reported:
//
//   bytes  field
//   0-1    int count: one tick every half second
//   2-3    actual temperature, ADC counts
//   4-5    target temperature, ADC counts; 0xFFFF: control off
//   6-7    +VSS, ADC counts
//   8-9    -VSS, ADC counts
//   10-11  rotor speed, speed counts
//   12     machine status
//   13     switch byte
//   14     operation
//   15     prompt flag: non-zero while the instrument waits for the user and CUA
//   16     error code
//   17-18  tag of the command that this frame answers, else zero
//
// A plain value without a lock.
class StatusRecord {
 public:
  StatusRecord() = default;

  // The record of a status frame's data. Nothing if there are fewer than 19 bytes: zeros in place
  // of the lost ones would read as an idle instrument.
  static std::optional<StatusRecord> FromData(std::span<const uint8_t> data);
  // The same for the built-in simulator, which sends the low byte of each pair first.
  static std::optional<StatusRecord> FromSimulatorData(std::span<const uint8_t> data);

  uint16_t intCount() const { return Word(0); }
  uint16_t temperatureCounts() const { return Word(2); }
  uint16_t targetCounts() const { return Word(4); }
  uint16_t plusVssCounts() const { return Word(6); }
  uint16_t minusVssCounts() const { return Word(8); }
  uint16_t speedCounts() const { return Word(10); }
  uint8_t machineStatus() const { return bytes_[12]; }
  uint8_t switchByte() const { return bytes_[13]; }
  uint8_t operation() const { return bytes_[14]; }
  uint8_t promptFlag() const { return bytes_[15]; }
  uint8_t errorCode() const { return bytes_[16]; }
  // Two letters, or the empty text if both bytes are zero.
  std::string lastTag() const;
  std::array<char, 2> lastTagBytes() const;
  // A reply with another tag leaves its tag in the record; `tag` has two letters.
  void SetLastTag(std::string_view tag);

  const std::array<uint8_t, kStatusRecordSize>& bytes() const { return bytes_; }

 private:
  uint16_t Word(size_t offset) const {
    return static_cast<uint16_t>(bytes_[offset] << 8 | bytes_[offset + 1]);
  }
  std::array<uint8_t, kStatusRecordSize> bytes_{};
};

// String table ids. An operation beyond the table gives the one of "Unknown Op".
int OperationTextId(uint8_t operation);
// 0 for a code without a message (0, 0x43, 0x44). kUnknownErrorTextId for a code that has no row;
// its text is a format for the code.
int ErrorTextId(uint8_t code);
inline constexpr int kUnknownErrorTextId = 345;
// In the order in which they are joined: one for each set bit from bit 0 up, bit 7 has none.
std::vector<int> MachineStatusTextIds(uint8_t machineStatus);

// The texts of operations, errors and machine status. Load them on the user-interface thread; the
// loaded table may be read on any thread.
class StatusTexts {
 public:
  // With every text empty.
  StatusTexts() = default;
  // From the string table. User-interface thread only.
  static StatusTexts Load();

  std::string OperationText(uint8_t operation) const;
  std::string ErrorText(uint8_t code) const;  // empty for 0
  std::string MachineStatusText(uint8_t machineStatus) const;

 private:
  std::string Find(int id) const;
  std::vector<std::pair<int, std::string>> texts_;  // in order of id
};

// The word of a self-test reply; nothing if there are fewer than 2 data bytes.
std::optional<uint16_t> ParseSelfTestWord(std::span<const uint8_t> data);
// The failures of a self-test word, from bit 0 up; empty when all passed.
std::vector<std::string> SelfTestFailures(uint16_t word);

}  // namespace rvx
