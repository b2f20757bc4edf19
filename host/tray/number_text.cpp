#include "host/tray/number_text.h"

#include <fmt/format.h>

#include <cmath>

namespace torvell {

std::string ExactNumber(double value) {
  if (!std::isfinite(value)) return "";
  return fmt::format("{}", value);
}

std::string FixedNumber(double value, int decimals) {
  if (!std::isfinite(value)) return "";
  std::string text = fmt::format("{:.{}f}", value, decimals);
  // A small negative value that rounds to zero would otherwise read "-0.0".
  if (text.find_first_not_of("-0.") == std::string::npos && text[0] == '-') text.erase(0, 1);
  return text;
}

std::string DurationText(long seconds) {
  if (seconds < 0) seconds = 0;
  if (seconds < 3600) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
  return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace torvell
