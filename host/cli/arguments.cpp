#include "host/cli/arguments.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <optional>

#include "platform/text.h"

namespace torvell {

namespace {

std::string Refusal(const std::string& found, const std::string& accepted) {
  return fmt::format("found \"{}\"; accepted: {}", found, accepted);
}

std::optional<int64_t> ParseWhole(const std::string& text) {
  int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

}  // namespace

CLI::Validator WholeNumber(int64_t least, int64_t most) {
  const auto check = [least, most](std::string& text) {
    const std::optional<int64_t> value = ParseWhole(text);
    if (value && *value >= least && *value <= most) return std::string();
    return Refusal(text, most == kNoLimit
                             ? fmt::format("a whole number from {}", least)
                             : fmt::format("a whole number from {} to {}", least, most));
  };
  return CLI::Validator(check, "");
}

CLI::Validator DecimalNumber() {
  const auto check = [](std::string& text) {
    const std::optional<double> value = platform::ParseDouble(text);
    if (value && std::isfinite(*value)) return std::string();
    return Refusal(text, "a number with a point as decimal sign");
  };
  return CLI::Validator(check, "");
}

CLI::Validator OneOf(const std::map<std::string, int>& choices) {
  const auto check = [choices](std::string& text) {
    std::string accepted;
    for (const auto& [name, value] : choices) {
      if (platform::CompareNoCase(name, text) == 0) {
        text = std::to_string(value);
        return std::string();
      }
      accepted += (accepted.empty() ? "" : ", ") + name;
    }
    return Refusal(text, accepted);
  };
  return CLI::Validator(check, "");
}

}  // namespace torvell
