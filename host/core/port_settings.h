// The settings text of a port.
#pragma once

#include <optional>
#include <string>

namespace torvell {

// The text has a fixed form of ten characters, "009600,u=1": the rate in baud with six digits, then
// ",u=", then the in-use flag, which the module reads and writes at character 9 (from 0): "1" once
// the port was found to have an instrument, "0" before. Always 8 data bits, no parity, 1 stop bit.
struct PortSettings {
  int rate = 9600;  // baud, one of the rates of kPortRates
  bool inUse = false;
};

inline constexpr int kPortRates[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
inline constexpr size_t kInUseFlagPosition = 9;

std::string FormatPortSettings(const PortSettings& settings);

// Reads the fixed form, and also what a person may type: the rate alone ("9600"), or without
// leading zeros ("19200,u=0"). Returns nothing for anything else.
std::optional<PortSettings> ParsePortSettings(const std::string& text);

// Describes what ParsePortSettings accepts, for messages.
std::string DescribePortSettings();

}  // namespace torvell
