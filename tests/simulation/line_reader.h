// Reads the frames on the line for the observer. It implements the protocol separately and shares
// no code with the module.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rvx::soak {

// A whole reply as the module must understand it.
struct SeenReply {
  std::string tag;            // "ST", "TR", "MT" or anything
  std::vector<uint8_t> data;  // after the tag
  bool IsStatus() const { return tag == "ST" && data.size() >= 19; }
};

// Takes the line's bytes one by one; Feed returns the reply that a byte ends.
class ReplyWatcher {
 public:
  std::optional<SeenReply> Feed(uint8_t c);

 private:
  enum class State { Waiting, Address, Data } state_ = State::Waiting;
  std::vector<uint8_t> bytes_;
  int half_ = -1;
};

// One status frame, decoded.
struct SeenStatus {
  explicit SeenStatus(const std::vector<uint8_t>& data);
  uint16_t Word(size_t offset) const {
    return static_cast<uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
  }
  uint16_t intCount() const { return Word(0); }
  uint8_t machine() const { return bytes[12]; }
  uint8_t switches() const { return bytes[13]; }
  uint8_t operation() const { return bytes[14]; }
  uint8_t error() const { return bytes[16]; }
  std::string tag() const;

  std::array<uint8_t, 19> bytes{};
};

// Why a frame of the module is not a well-formed request; empty if it is one.
std::string WhyNoRequest(std::string_view frame);

// The bytes of a hexadecimal text; nothing if it is not one.
std::optional<std::vector<uint8_t>> FromHex(std::string_view text);

}  // namespace rvx::soak
