#include "host/core/port_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "platform/text.h"

namespace torvell {

std::string FormatPortSettings(const PortSettings& settings) {
  return fmt::format("{:06},u={}", settings.rate, settings.inUse ? 1 : 0);
}

std::optional<PortSettings> ParsePortSettings(const std::string& text) {
  PortSettings settings;
  std::string rate = platform::Trim(text);
  const size_t comma = rate.find(',');
  if (comma != std::string::npos) {
    const std::string flag = rate.substr(comma);
    if (flag != ",u=0" && flag != ",u=1") return std::nullopt;
    settings.inUse = flag.back() == '1';
    rate.resize(comma);
  }
  const bool digits =
      !rate.empty() && rate.size() <= 6 &&
      std::all_of(rate.begin(), rate.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (!digits) return std::nullopt;
  settings.rate = platform::ParseLeadingInt(rate);
  const bool known = std::find(std::begin(kPortRates), std::end(kPortRates), settings.rate) !=
                     std::end(kPortRates);
  if (!known) return std::nullopt;
  return settings;
}

std::string DescribePortSettings() {
  std::string rates;
  for (int rate : kPortRates) rates += fmt::format("{}{}", rates.empty() ? "" : ", ", rate);
  return fmt::format("a rate ({}), or the whole text as \"009600,u=0\"", rates);
}

}  // namespace torvell
