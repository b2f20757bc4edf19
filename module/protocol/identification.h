// The identification reply: who an instrument is, and the listener that hears it during discovery.
//
// Identification text: the address character and the plain characters that follow it in the reply:
//
//   offset  size  content
//   0       1     address character
//   1       3     "QMT"
//   4       4     "RVX ", the mark of this instrument family
//   8       1     model code, "1" to "4"
//   9       1     option byte; a blank means 0
//   10      5     firmware version, "02.17"
//   15      10    serial number; a NUL ends it early, blanks at its end do not count
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rvx {

// Bits of the option byte.
enum OptionBit : uint8_t {
  kOptionFineSpeed = 0x01,      // 0.015 rpm a speed count instead of 0.06
  kOptionLowTemperature = 0x02  // nine calibration temperatures instead of eight
};

// The first firmware that knows the option byte.
inline constexpr double kFirmwareWithOptions = 2.17;

// The identification that is used for the built-in simulator, which has no reply of its own.
inline constexpr std::string_view kSimulatorIdentification{
    "FQMTRVX 4\x02"
    "02.17Simulator ",
    25};

struct Identification {
  char modelCode = 0;
  uint8_t optionByte = 0;
  std::string firmwareVersion;
  std::string serialNumber;
};

// Reads an identification text; what a short one lacks is 0 or empty.
Identification ParseIdentification(std::string_view text);

// The identification text of an identity frame (kind, tag and data as the reply reader gives them):
// the address character and 25 bytes, zeros where the frame is shorter.
std::string IdentificationText(char addressCharacter, std::span<const uint8_t> frame);

// Whether an identity frame names this instrument family and holds model code, option byte and
// firmware version. A frame that has lost some of them would name another model.
bool IsWholeIdentification(std::span<const uint8_t> frame);

// "RVX-D TX"; the empty text for a code that is none.
std::string ModelName(char modelCode, uint8_t optionByte);
// Readable names of the option bits that are set.
std::vector<std::string> OptionNames(uint8_t optionByte);
// The firmware version as a decimal number with a point, in every locale; 0 if it is none.
double FirmwareNumber(std::string_view version);

// Models "1" and "3": the user injects the sample by hand.
constexpr bool IsManualInjection(char modelCode) { return modelCode == '1' || modelCode == '3'; }
// Models "2" and "4": a person may move the steppers one by one.
constexpr bool HasStepperService(char modelCode) { return modelCode == '2' || modelCode == '4'; }
// Models "3" and above: readings and targets are moved by the temperature offset.
constexpr bool UsesTemperatureOffset(char modelCode) {
  return static_cast<unsigned char>(modelCode) >= '3';
}

// Finds identification replies in what a port receives while no instrument is known yet. No lock:
// it belongs to the port's thread.
class IdentificationListener {
 public:
  // Takes one byte. Returns the identification text if the byte ends a frame of this instrument
  // family, else nothing. The text has 25 characters, with zeros where the frame was shorter. Its
  // first character is the sender's address: compare it by IsOwnAddress with the address that is
  // tried.
  std::optional<std::string> Feed(uint8_t c);

 private:
  static constexpr size_t kCapacity = 25;
  bool inFrame_ = false;  // after a "-", until CR or a frame that grows too long
  std::array<char, kCapacity> buffer_{};
  size_t fill_ = 0;
};

}  // namespace rvx
