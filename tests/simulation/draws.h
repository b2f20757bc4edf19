// Random draws of one purpose. Every purpose has a stream of its own, so that switching off one
// fault leaves all other draws of a seed as they were.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

#include "platform/mix.h"
#include "platform/time_base.h"

namespace rvx::soak {

class Draws {
 public:
  Draws(uint64_t seed, std::string_view purpose) : state_(Combine(seed, purpose)) {}

  uint64_t Next() { return platform::detail::Mix64(state_ += platform::detail::kGoldenGamma); }
  // 0 to bound - 1.
  int Below(int bound) {
    return static_cast<int>((Next() >> 32) * static_cast<uint64_t>(bound) >> 32);
  }
  // Both ends included.
  int Between(int low, int high) { return low + Below(high - low + 1); }
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1p-53; }
  bool Chance(double probability) { return Unit() < probability; }
  double LogUniform(double low, double high) { return low * std::pow(high / low, Unit()); }
  platform::Milliseconds LogUniform(platform::Milliseconds low, platform::Milliseconds high) {
    return platform::Milliseconds(static_cast<int64_t>(
        LogUniform(static_cast<double>(low.count()), static_cast<double>(high.count()))));
  }

 private:
  static uint64_t Combine(uint64_t seed, std::string_view purpose) {
    uint64_t mixed = platform::detail::Mix64(seed + platform::detail::kGoldenGamma);
    for (const char c : purpose) {
      mixed = platform::detail::Mix64(mixed ^ static_cast<uint8_t>(c));
    }
    return mixed;
  }
  uint64_t state_;
};

}  // namespace rvx::soak
