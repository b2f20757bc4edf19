#include "module/protocol/identification.h"

#include <algorithm>

#include "module/protocol/frames.h"
#include "platform/text.h"

namespace rvx {
namespace {

constexpr std::string_view kFamilyMark = "RVX ";
constexpr size_t kFamilyMarkOffset = 4;
constexpr size_t kModelCodeOffset = 8;
constexpr size_t kOptionOffset = 9;
constexpr size_t kFirmwareOffset = 10;
constexpr size_t kFirmwareSize = 5;
constexpr size_t kSerialNumberOffset = 15;
constexpr size_t kSerialNumberSize = 10;
// The address character and the reply reader's 25 bytes.
constexpr size_t kTextSize = 26;

// A part of the text up to a NUL; a part beyond the end is empty.
std::string_view Part(std::string_view text, size_t offset, size_t size) {
  if (offset >= text.size()) return {};
  const std::string_view part = text.substr(offset, size);
  return part.substr(0, part.find('\0'));
}

}  // namespace

Identification ParseIdentification(std::string_view text) {
  Identification result;
  if (text.size() > kModelCodeOffset) result.modelCode = text[kModelCodeOffset];
  if (text.size() > kOptionOffset && text[kOptionOffset] != ' ') {
    result.optionByte = static_cast<uint8_t>(text[kOptionOffset]);
  }
  result.firmwareVersion = Part(text, kFirmwareOffset, kFirmwareSize);
  std::string_view serial = Part(text, kSerialNumberOffset, kSerialNumberSize);
  while (!serial.empty() && serial.back() == ' ') serial.remove_suffix(1);
  result.serialNumber = serial;
  return result;
}

std::string IdentificationText(char addressCharacter, std::span<const uint8_t> frame) {
  std::string text(kTextSize, '\0');
  text[0] = addressCharacter;
  const size_t size = std::min(frame.size(), kTextSize - 1);
  std::copy_n(frame.begin(), size, text.begin() + 1);
  return text;
}

bool IsWholeIdentification(std::span<const uint8_t> frame) {
  constexpr std::string_view kFamily = "QMTRVX ";
  constexpr size_t kMinBytes = 14;
  return frame.size() >= kMinBytes && std::equal(kFamily.begin(), kFamily.end(), frame.begin());
}

std::string ModelName(char modelCode, uint8_t optionByte) {
  switch (modelCode) {
    case '1':
      return "RVX-A Mark 2";
    case '2':
      return "RVX-B Mark 2";
    case '3':
      return "RVX-C TX";
    case '4':
      return (optionByte & kOptionLowTemperature) != 0 ? "RVX-D LX" : "RVX-D TX";
    default:
      return {};
  }
}

std::vector<std::string> OptionNames(uint8_t optionByte) {
  std::vector<std::string> names;
  if ((optionByte & kOptionFineSpeed) != 0) names.emplace_back("Fine Speed Scale");
  if ((optionByte & kOptionLowTemperature) != 0) names.emplace_back("Low Temperature Option");
  return names;
}

double FirmwareNumber(std::string_view version) { return platform::ParseLeadingDouble(version); }

std::optional<std::string> IdentificationListener::Feed(uint8_t c) {
  if (!inFrame_) {
    if (c == static_cast<uint8_t>(kReplyStart)) {
      inFrame_ = true;
      fill_ = 0;
      // Nothing of an earlier frame may complete this one.
      buffer_.fill('\0');
    }
    return std::nullopt;
  }
  if (c == static_cast<uint8_t>(kFrameEnd)) {
    inFrame_ = false;
    const std::string_view frame(buffer_.data(), buffer_.size());
    if (frame.substr(kFamilyMarkOffset, kFamilyMark.size()) != kFamilyMark) return std::nullopt;
    return std::string(frame);
  }
  if (fill_ >= kCapacity) {
    inFrame_ = false;
    return std::nullopt;
  }
  buffer_[fill_++] = static_cast<char>(c);
  return std::nullopt;
}

}  // namespace rvx
