#include "module/protocol/frames.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "module/protocol/conversions.h"
#include "module/protocol/identification.h"

namespace rvx {
namespace {

constexpr size_t kSerialNumberSize = 16;

// Where a value is in a payload.
struct Field {
  size_t offset;
  size_t size;
};

namespace start_test {
constexpr Field kPosition{0, 1};
constexpr Field kInjectionTime{1, 1};
constexpr Field kBurstTime{2, 1};
constexpr Field kPauseTime{3, 1};
constexpr Field kPurgeTime{4, 1};
constexpr Field kCoolDownTime{5, 1};
constexpr Field kRotorOnTime{6, 1};
constexpr Field kTestCounts{7, 2};
constexpr Field kInjectionCounts{9, 2};
constexpr Field kUndershoot{11, 2};
constexpr Field kTolerance{13, 2};
constexpr size_t kSize = kTolerance.offset + kTolerance.size;
}  // namespace start_test

namespace motor_current {
constexpr Field kPosition{0, 1};
constexpr Field kTestCounts{1, 2};
constexpr Field kInjectionCounts{3, 2};
constexpr Field kInjectionTime{5, 1};
constexpr Field kBurstTime{6, 1};
constexpr Field kPauseTime{7, 1};
constexpr Field kPurgeTime{8, 1};
constexpr Field kCoolDownTime{9, 1};
constexpr Field kMotorTime{10, 1};
constexpr Field kUndershoot{11, 2};
constexpr Field kTolerance{13, 2};
constexpr size_t kSize = kTolerance.offset + kTolerance.size;
}  // namespace motor_current

namespace precondition {
constexpr Field kMinutes{0, 1};
constexpr Field kSpeed{1, 2};
constexpr size_t kSize = kSpeed.offset + kSpeed.size;
}  // namespace precondition

namespace temperature_control {
constexpr Field kEnable{0, 1};
constexpr Field kTarget{1, 2};
constexpr size_t kSize = kTarget.offset + kTarget.size;
}  // namespace temperature_control

namespace stepper_move {
constexpr Field kSelector{0, 1};
constexpr Field kTarget{1, 2};
constexpr size_t kSize = kTarget.offset + kTarget.size;
}  // namespace stepper_move

class Payload {
 public:
  explicit Payload(size_t size) : bytes_(size) {}

  // High byte first.
  Payload& Put(const Field& field, uint16_t value) {
    for (size_t i = 0; i < field.size; ++i) {
      const size_t shift = 8 * (field.size - 1 - i);
      bytes_[field.offset + i] = static_cast<uint8_t>(value >> shift);
    }
    return *this;
  }
  std::string ToHex() const { return HexPayload(bytes_); }

 private:
  std::vector<uint8_t> bytes_;
};

std::string Text(uint8_t address, char kind, std::string_view tag, std::string_view payload = {}) {
  std::string text{AddressCharacter(address), kind};
  text += tag;
  text += payload;
  return text;
}

std::string SwitchCommand(uint8_t address, std::string_view tag, bool on) {
  return Text(address, kCommandKind, tag, on ? "01" : "00");
}

// A time or a number of minutes. A value that does not fit in a byte becomes the nearest that does,
// because wrapped around 300 s would run as 44 s.
uint16_t ByteOf(int value) { return static_cast<uint16_t>(std::clamp(value, 0, 0xFF)); }

// A position is never moved to a neighbour: one that does not fit in a byte has to be refused.
uint16_t PositionByte(int position) {
  return static_cast<uint16_t>(position >= 0 && position <= 0xFF ? position : 0xFF);
}

// The difference of two counts, truncated toward zero only here, as two's complement.
uint16_t CountsDifference(double a, double b) {
  const double difference = std::clamp(a - b, -32768.0, 65535.0);
  return std::isnan(difference) ? 0 : static_cast<uint16_t>(static_cast<int>(difference));
}

}  // namespace

char AddressCharacter(uint8_t address) {
  return static_cast<char>(address + (address < 10 ? 0x30 : 0x37));
}

bool IsOwnAddress(uint8_t character, uint8_t address) {
  if (character - 0x30 == address || character - 0x41 == address) return true;
  return address >= 10 && character == static_cast<uint8_t>(AddressCharacter(address));
}

std::string HexPayload(std::span<const uint8_t> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (const uint8_t byte : bytes) {
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 0x0F];
  }
  return hex;
}

std::vector<uint8_t> MakeFrame(std::string_view text) {
  std::vector<uint8_t> frame;
  frame.reserve(text.size() + 2);
  frame.push_back(kRequestStart);
  frame.insert(frame.end(), text.begin(), text.end());
  frame.push_back(kFrameEnd);
  return frame;
}

uint16_t TruncatedCounts(double counts) {
  if (std::isnan(counts)) return 0;
  return static_cast<uint16_t>(std::clamp(counts, 0.0, 65535.0));
}

std::string AbortCommand(uint8_t address) { return Text(address, kCommandKind, kAbortTag); }
std::string InjectionCommand(uint8_t address, bool on) {
  return SwitchCommand(address, kInjectionTag, on);
}
std::string AutoReportCommand(uint8_t address, bool on) {
  return SwitchCommand(address, kAutoReportTag, on);
}
std::string TestMotorCommand(uint8_t address, bool on) {
  return SwitchCommand(address, kTestMotorTag, on);
}
std::string CoolingCommand(uint8_t address, bool on) {
  return SwitchCommand(address, kCoolingTag, on);
}
std::string HomeFlagCommand(uint8_t address) { return Text(address, kCommandKind, kHomeFlagTag); }

std::string MotorCurrentCommand(uint8_t address, const MotorCurrentPayload& p) {
  using namespace motor_current;
  Payload payload(kSize);
  payload.Put(kPosition, PositionByte(p.position))
      .Put(kTestCounts, TruncatedCounts(p.testCounts))
      .Put(kInjectionCounts, TruncatedCounts(p.injectionCounts))
      .Put(kInjectionTime, p.position == 0 ? uint16_t{0} : ByteOf(p.injectionTime))
      .Put(kBurstTime, ByteOf(p.burstTime))
      .Put(kPauseTime, ByteOf(p.pauseTime))
      .Put(kPurgeTime, ByteOf(p.purgeTime))
      .Put(kCoolDownTime, ByteOf(p.coolDownTime))
      .Put(kMotorTime, kMotorCurrentSeconds)
      .Put(kUndershoot, CountsDifference(p.undershootCounts, p.testCounts))
      .Put(kTolerance, CountsDifference(p.toleranceCounts, p.testCounts));
  return Text(address, kCommandKind, kMotorCurrentTag, payload.ToHex());
}

std::string MoveStepperCommand(uint8_t address, uint8_t selector, uint16_t target) {
  Payload payload(stepper_move::kSize);
  payload.Put(stepper_move::kSelector, selector).Put(stepper_move::kTarget, target);
  return Text(address, kCommandKind, kMoveStepperTag, payload.ToHex());
}

std::string MoveToPositionCommand(uint8_t address, int position) {
  Payload payload(1);
  payload.Put(Field{0, 1}, PositionByte(position));
  return Text(address, kCommandKind, kMoveToPositionTag, payload.ToHex());
}

std::string PreconditionCommand(uint8_t address, int minutes, double speed, uint8_t optionByte) {
  Payload payload(precondition::kSize);
  payload.Put(precondition::kMinutes, ByteOf(minutes))
      .Put(precondition::kSpeed, TruncatedCounts(speed / SpeedScale(optionByte)));
  return Text(address, kCommandKind, kPreconditionTag, payload.ToHex());
}

std::string ModelCommand(uint8_t address, char modelCode, uint8_t optionBits,
                         double firmwareNumber) {
  std::vector<uint8_t> payload{static_cast<uint8_t>(modelCode)};
  if (firmwareNumber >= kFirmwareWithOptions) {
    payload.push_back(static_cast<uint8_t>('0' | optionBits));
  }
  return Text(address, kCommandKind, kModelTag, HexPayload(payload));
}

std::string SerialNumberCommand(uint8_t address, std::string_view text) {
  std::vector<uint8_t> payload(kSerialNumberSize, ' ');
  text = text.substr(0, kSerialNumberSize);
  std::copy(text.begin(), text.end(), payload.begin());
  return Text(address, kCommandKind, kSerialNumberTag, HexPayload(payload));
}

std::string StartTestCommand(uint8_t address, const StartTestPayload& p) {
  using namespace start_test;
  Payload payload(kSize);
  payload.Put(kPosition, PositionByte(p.position))
      .Put(kInjectionTime, ByteOf(p.injectionTime))
      .Put(kBurstTime, ByteOf(p.burstTime))
      .Put(kPauseTime, ByteOf(p.pauseTime))
      .Put(kPurgeTime, ByteOf(p.purgeTime))
      .Put(kCoolDownTime, ByteOf(p.coolDownTime))
      .Put(kRotorOnTime, ByteOf(p.rotorOnTime))
      .Put(kTestCounts, TruncatedCounts(p.testCounts))
      .Put(kInjectionCounts, TruncatedCounts(p.injectionCounts))
      .Put(kUndershoot, CountsDifference(p.undershootCounts, p.testCounts))
      .Put(kTolerance, CountsDifference(p.toleranceCounts, p.testCounts));
  return Text(address, kCommandKind, kStartTestTag, payload.ToHex());
}

std::string TemperatureControlCommand(uint8_t address, bool on, double counts) {
  Payload payload(temperature_control::kSize);
  payload.Put(temperature_control::kEnable, on ? 1 : 0)
      .Put(temperature_control::kTarget, TruncatedCounts(counts));
  return Text(address, kCommandKind, kTemperatureControlTag, payload.ToHex());
}

std::string UserAcknowledgeCommand(uint8_t address) {
  return Text(address, kCommandKind, kUserAcknowledgeTag);
}
std::string IdentityQuery(uint8_t address) { return Text(address, kQueryKind, kIdentityTag); }
std::string StatusQuery(uint8_t address) { return Text(address, kQueryKind, kStatusTag); }
std::string SelfTestQuery(uint8_t address) { return Text(address, kQueryKind, kSelfTestTag); }

}  // namespace rvx
