// The requests of the wire protocol: one table of tags, one of each payload, and the functions that
// make a command's text and frame from them.
//
// Request frame, module to instrument:
//
//   offset  size  content
//   0       1     "/"
//   1       1     address character
//   2       1     kind: "C" command, "Q" query
//   3       2     tag, two capital letters
//   5       2n    payload of n bytes, two upper-case hex digits each, high nibble first
//   end     1     CR
//
// Numbers of two bytes travel high byte first. The text of a command is the frame without "/" and
// CR: that is what waits in the queue. Everything here is a plain function of its arguments, safe
// on any thread, and throws nothing.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rvx {

inline constexpr char kRequestStart = '/';
inline constexpr char kReplyStart = '-';
inline constexpr char kFrameEnd = '\r';
inline constexpr char kCommandKind = 'C';
inline constexpr char kQueryKind = 'Q';

// Tags of commands; the status reply to a command repeats its tag.
inline constexpr std::string_view kAbortTag = "AB";
inline constexpr std::string_view kInjectionTag = "AI";
inline constexpr std::string_view kAutoReportTag = "AR";
inline constexpr std::string_view kTestMotorTag = "AS";
inline constexpr std::string_view kCoolingTag = "AV";
inline constexpr std::string_view kHomeFlagTag = "HO";
inline constexpr std::string_view kMotorCurrentTag = "MC";
inline constexpr std::string_view kMoveStepperTag = "MM";
inline constexpr std::string_view kMoveToPositionTag = "MP";
inline constexpr std::string_view kPreconditionTag = "PM";
inline constexpr std::string_view kModelTag = "SM";
inline constexpr std::string_view kSerialNumberTag = "SN";
inline constexpr std::string_view kStartTestTag = "ST";
inline constexpr std::string_view kTemperatureControlTag = "TC";
inline constexpr std::string_view kUserAcknowledgeTag = "UA";
// Tags of queries and of their replies.
inline constexpr std::string_view kIdentityTag = "MT";
inline constexpr std::string_view kStatusTag = "ST";
inline constexpr std::string_view kSelfTestTag = "TR";

// A number of counts that no temperature has: as a target, temperature control is off.
inline constexpr uint16_t kCountsOff = 0xFFFF;
// The target temperature that is sent as kCountsOff, and the counts it converts to.
inline constexpr double kCountsOffValue = 65535.0;

// The address character of a request: "0" to "9", "A" to "F" for the addresses 10 to 15.
char AddressCharacter(uint8_t address);

// Whether a reply with this address character comes from the instrument at `address`. Instruments
// reply with "0" + address or with "A" + address, whatever the address. Above 9 the character of
// the request is accepted too, because an instrument that repeats it would otherwise never be
// heard.
bool IsOwnAddress(uint8_t character, uint8_t address);

// Two upper-case hex digits for each byte.
std::string HexPayload(std::span<const uint8_t> bytes);

// The bytes of the frame: "/", the text, CR.
std::vector<uint8_t> MakeFrame(std::string_view text);

// Bits of the stepper selector of CMM.
enum class StepperSelector : uint8_t { Tube = 0x08, Table = 0x10, Trolley = 0x20 };

// What CST carries. Times in seconds (0 to 255; more or less is sent as the nearest of these).
// Temperatures as unrounded counts: counts are sent truncated, the differences are formed on the
// unrounded values and then truncated toward zero (a negative one as its two's complement).
struct StartTestPayload {
  int position = 0;  // from 0
  int injectionTime = 0;
  int burstTime = 0;
  int pauseTime = 0;
  int purgeTime = 0;
  int coolDownTime = 0;
  int rotorOnTime = 0;
  double testCounts = 0.0;        // of the test temperature T
  double injectionCounts = 0.0;   // of the injection temperature
  double undershootCounts = 0.0;  // of T + undershoot
  double toleranceCounts = 0.0;   // of T + tolerance
};

// What CMC carries, by the same rules. The test temperature is kMotorCurrentTemperature.
struct MotorCurrentPayload {
  int position = 0;  // 0: no sample, the oil in the stator block; then no injection time is sent
  int injectionTime = 0;  // s
  int burstTime = 0;      // s
  int pauseTime = 0;      // s
  int purgeTime = 0;      // s
  int coolDownTime = 0;   // s
  double testCounts = 0.0;
  double injectionCounts = 0.0;
  double undershootCounts = 0.0;  // of the test temperature + undershoot
  double toleranceCounts = 0.0;   // of the test temperature + tolerance
};
inline constexpr double kMotorCurrentTemperature = -20.0;  // degrees C
inline constexpr uint8_t kMotorCurrentSeconds = 240;

// The texts of all commands and queries. A tray position that fits in no byte is sent as 0xFF,
// which the instrument refuses.
std::string AbortCommand(uint8_t address);                                       // CAB
std::string InjectionCommand(uint8_t address, bool on);                          // CAI
std::string AutoReportCommand(uint8_t address, bool on);                         // CAR
std::string TestMotorCommand(uint8_t address, bool on);                          // CAS
std::string CoolingCommand(uint8_t address, bool on);                            // CAV
std::string HomeFlagCommand(uint8_t address);                                    // CHO
std::string MotorCurrentCommand(uint8_t address, const MotorCurrentPayload& p);  // CMC
// target in stepper steps.
std::string MoveStepperCommand(uint8_t address, uint8_t selector, uint16_t target);  // CMM
std::string MoveToPositionCommand(uint8_t address, int position);                    // CMP
// speed in rpm, sent as the counts of the instrument's scale, truncated.
std::string PreconditionCommand(uint8_t address, int minutes, double speed,
                                uint8_t optionByte);  // CPM
// The option bits are sent as the character "0" with the bits or-ed in, and only to firmware from
// 2.17 on; older firmware knows only the model.
std::string ModelCommand(uint8_t address, char modelCode, uint8_t optionBits,
                         double firmwareNumber);  // CSM
// The text cut or padded with blanks to 16 characters.
std::string SerialNumberCommand(uint8_t address, std::string_view text);   // CSN
std::string StartTestCommand(uint8_t address, const StartTestPayload& p);  // CST
// counts of the target, unrounded; kCountsOffValue is sent as 0xFF, 0xFF.
std::string TemperatureControlCommand(uint8_t address, bool on, double counts);  // CTC
std::string UserAcknowledgeCommand(uint8_t address);                             // CUA
std::string IdentityQuery(uint8_t address);                                      // QMT
std::string StatusQuery(uint8_t address);                                        // QST
std::string SelfTestQuery(uint8_t address);                                      // QTR

// A count as it travels: truncated, in the range 0 to 65535.
uint16_t TruncatedCounts(double counts);

}  // namespace rvx
