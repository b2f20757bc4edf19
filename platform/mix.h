// Small deterministic mixing of 64-bit numbers, the same on every machine and compiler (the
// finaliser of the SplitMix64 generator).
#pragma once

#include <cstdint>

namespace platform::detail {

inline constexpr uint64_t kGoldenGamma = 0x9E3779B97F4A7C15ULL;

// A bijection whose results look unrelated for neighbouring arguments.
constexpr uint64_t Mix64(uint64_t value) {
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

}  // namespace platform::detail
